/**
 * @file vekcore.h
 * The core library.
 */
#ifndef VEKCORE_H
#define VEKCORE_H

#include "vekcv.h"

/**
 * @def VEKCORE_API
 * Begins the declaration of each function of the core library.
 */
#if defined(_WIN32)
#if defined(VEKCORE_BUILD)
#define VEKCORE_API __declspec(dllexport)
#elif defined(VEKCV_STATIC)
#define VEKCORE_API
#else
#define VEKCORE_API __declspec(dllimport)
#endif
#else
#define VEKCORE_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup Core Core library
 * Memory, processor features, caches and thread count, shared by the domain libraries built on it.
 *
 * vekcv takes memory, processor features and the number of its OpenMP threads from these functions alone, so an
 * application that decides on them itself can put a library of the same name and the same functions in the place of
 * this one. Every function may be called from any thread.
 * @{
 */
/** Bits of vekGetEnabledCpuFeatures. A bit is set when both the processor and the operating system support it. */
enum {
    VekCpuSsse3 = 0x10,  /**< SSSE3 */
    VekCpuMovbe = 0x20,  /**< MOVBE */
    VekCpuAvx2 = 0x100,  /**< AVX2 */
    VekCpuAvx512 = 0x200 /**< the F, BW, DQ and VL groups of AVX-512 together */
};

/**
 * A block of at least this many bytes, aligned to 64 bytes; null for bytes < 1 or when there is no memory. Released by
 * vekFree.
 */
VEKCORE_API void* vekMalloc(int bytes);

/** Releases a block of vekMalloc; null is ignored. */
VEKCORE_API void vekFree(void* block);

/**
 * The processor features that code may use, read once from the processor. The environment variable VEKCORE_FEATURES
 * caps them: "ssse3", "nubo" (adds MOVBE), "avx2" or "avx512"; any other value caps nothing.
 */
VEKCORE_API uint64_t vekGetEnabledCpuFeatures(void);

/**
 * Number of threads for parallel regions. At first the number that the environment variable VEKCORE_NUM_THREADS gives
 * (1 to 1024; anything else is ignored) or, without it, vekGetNumCoresOnDie or the CPU quota of the process' control
 * group (cgroup) and its ancestors, rounded up, whichever is less.
 *
 * @retval StatusNullPointer   count is null
 */
VEKCORE_API Status vekGetNumThreads(int* count);

/**
 * Sets the number of threads for the whole process, from the next call of an operation on. Work buffers may have to
 * grow with it: query their sizes again, and do not raise it while a call runs on a buffer of the old size.
 *
 * The OpenMP runtime ends the process where the system refuses it a thread: ask for no more than the limits of the
 * process on threads and on memory, of which each thread takes a stack (OMP_STACKSIZE), allow.
 *
 * A child made by fork has none of the threads of its parent, and OpenMP runtimes may wait for them forever. So once
 * ownGetNumThreads has given more than 1, which it does for the first team, children have 1 thread and cannot have
 * more, unless they run another program. A program that computes in several processes forks before its first large
 * call. Threads of teams that the program itself opened are not seen here.
 *
 * @retval StatusBadArgument   count is below 1 or above 1024, or above 1 in such a child; the number stays as it was
 */
VEKCORE_API Status vekSetNumThreads(int count);

/** The number of threads that a parallel region asks for, once for each; the value of vekGetNumThreads. */
VEKCORE_API int ownGetNumThreads(void);

/**
 * Size in bytes of the largest cache of the processor, at most 2147483647; 1048576 where the processor does not tell.
 *
 * @retval StatusNullPointer   bytes is null
 */
VEKCORE_API Status vekGetMaxCacheSizeB(int* bytes);

/** Number of processors that the process may run on, at least 1; a quota of their time does not change it. */
VEKCORE_API int vekGetNumCoresOnDie(void);

/**
 * Replaces each of count floats by its square root, correctly rounded; a negative value becomes NaN.
 *
 * @retval StatusNullPointer   values is null
 * @retval StatusSizeError     count is below 1
 */
VEKCORE_API Status vekSqrt_32f_I(float* values, int count);

/** Name and meaning of a status in one line, as in "StatusOk: success"; "unknown status" for any other value. */
VEKCORE_API const char* vekGetStatusString(Status status);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
