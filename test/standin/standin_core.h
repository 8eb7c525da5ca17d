// A core library whose answers a test chooses, in the place of the real one. The environment gives the first answers,
// for those are asked for before a program begins: STANDIN_FEATURES (a number), STANDIN_THREADS, STANDIN_CORES,
// STANDIN_CACHE_BYTES.
#pragma once

#include "vekcore.h"

extern "C" {
/** From now on vekMalloc gives null after so many more blocks. */
VEKCORE_API void standInFailAfter(int blocks);
/** The number of blocks that were allocated and not released. */
VEKCORE_API int standInBlocks(void);
/** The size of the block that was allocated last. */
VEKCORE_API int standInLatestBytes(void);
/** How often ownGetNumThreads was called, as the library does once for each team of threads that it opens. */
VEKCORE_API int standInTeams(void);
/** From now on vekSqrt_32f_I gives this status, and computes nothing unless it is StatusOk. */
VEKCORE_API void standInGiveForSqrt(Status status);
}
