#pragma once

#include <omp.h>

#include <cstdint>
#include <type_traits>

#include "allocation.h"
#include "configured_threads.h"
#include "float_modes.h"
#include "upper_halves.h"

namespace VEKCV_VARIANT {

/** The number of pixels from which on a region is shared among threads. */
struct ParallelFrom {
    int64_t pixels;

    /** So many pixels for each of the configured threads. */
    static ParallelFrom perThread(int64_t pixels) { return {pixels * configuredThreads()}; }
    static constexpr ParallelFrom never() { return {INT64_MAX}; }

    constexpr bool isReachedBy(RoiSize roi) const { return int64_t{roi.width} * roi.height >= pixels; }
};

/** The threshold of most operations that compute every pixel on its own. */
constexpr ParallelFrom kParallelFrom{262144};

/** Whether a region is for a team. One thread needs none; in 32 bits an empty OpenMP region takes 8 microseconds. */
inline bool isForTeam(RoiSize roi, ParallelFrom threshold) {
    return threshold.isReachedBy(roi) && configuredThreads() > 1;
}

/** How the rows of a region are split: the same number for each thread, the remainder for the last one. */
struct RowStripes {
    int32_t threads, rows, remainder;

    static constexpr RowStripes of(int32_t height, int32_t threads) {
        return {threads, height / threads, height % threads};
    }
    constexpr int32_t firstRow(int32_t thread) const { return thread * rows; }
    constexpr int32_t rowCount(int32_t thread) const { return rows + (thread == threads - 1 ? remainder : 0); }
};

/** What the threads of a team do, without its types, so that the code that opens teams exists once. */
struct TeamWork {
    int32_t height;
    const void* context;
    void (*prepare)(const void* context, int32_t threads);
    void (*body)(const void* context, int32_t thread, int32_t firstRow, int32_t rowCount);
};

/**
 * Calls the body of each work on every thread of a team that has rows, with the floating-point modes of the calling
 * thread. A work begins when the one before is done. The team may be smaller than what the core library asks for, so
 * its master calls prepare(threads) before any body starts.
 */
template <size_t kWorks>
[[gnu::noinline]] inline void runTeam(const TeamWork (&works)[kWorks], int32_t mostThreads = INT32_MAX) {
    const auto modes = FloatModes::ofThread();
    const int32_t asked = ownGetNumThreads();  // once for each team
    const int32_t requested = asked < mostThreads ? asked : mostThreads;
#pragma omp parallel num_threads(requested)
    for (const TeamWork& work : works) {
        const int32_t threads = omp_get_num_threads(), thread = omp_get_thread_num();
#pragma omp master
        work.prepare(work.context, threads);
#pragma omp barrier
        const auto stripes = RowStripes::of(work.height, threads);
        if (stripes.rowCount(thread) > 0) {
            clearUpperHalves();
            const FloatModesGuard guard(modes);
            work.body(work.context, thread, stripes.firstRow(thread), stripes.rowCount(thread));
        }
    }
}

/** The work of a body(thread, firstRow, rowCount) that needs no preparation. */
template <typename Body>
TeamWork teamWork(int32_t height, const Body& body) {
    return {height, &body, [](const void*, int32_t) {},
            [](const void* context, int32_t thread, int32_t first, int32_t rows) {
                callBody(*static_cast<const Body*>(context), thread, first, rows);
            }};
}

/** Runs body(thread, firstRow, rowCount): on the calling thread, or in one stripe for each thread of a team. */
template <typename Body>
void forThreadStripes(bool isForTeam, int32_t height, const Body& body, int32_t mostThreads = INT32_MAX) {
    if (!isForTeam)
        return callBody(body, int32_t{0}, int32_t{0}, height);
    runTeam({teamWork(height, body)}, mostThreads);
}

/** The same with two bodies, each over rows of its own; the second one when the first one is done with all of its. */
template <typename First, typename Second>
void forThreadStripes(bool isForTeam, int32_t firstHeight, const First& first, int32_t secondHeight,
                      const Second& second) {
    if (isForTeam)
        return runTeam({teamWork(firstHeight, first), teamWork(secondHeight, second)});
    callBody(first, int32_t{0}, int32_t{0}, firstHeight);
    callBody(second, int32_t{0}, int32_t{0}, secondHeight);
}

/** Runs body(firstRow, rowCount) over all rows: at once, or from the threshold on in one stripe for each thread. */
template <typename Body>
void forRowStripes(RoiSize roi, ParallelFrom threshold, Body body) {
    forThreadStripes(isForTeam(roi, threshold), roi.height,
                     [&](int32_t, int32_t first, int32_t rows) { body(first, rows); });
}

/** How a reduction gives the partial result of a stripe, and joins two. */
struct ReductionWork {
    const void* context;
    void (*body)(const void* context, int32_t firstRow, int32_t rowCount, void* partial);
    void (*combine)(const void* context, void* total, const void* partial);
};

/** The team of a reduction. `total` is the result of no rows, and becomes that of all. */
[[gnu::noinline]] inline void reduceWithTeam(int32_t height, const ReductionWork& work, void* total, size_t bytes) {
    constexpr int32_t kFrameSlots = 32;
    constexpr size_t kMostBytes = 32;
    struct Team {
        const ReductionWork& work;
        void* total;
        size_t bytes;
        uint8_t* slots;
        int32_t threads;

        void* slot(int32_t thread) const { return slots + static_cast<size_t>(thread) * bytes; }
    };
    alignas(kMostBytes) uint8_t frameSlots[kFrameSlots * kMostBytes];
    Team team{work, total, bytes, frameSlots, 0};
    runTeam({{height, &team,
              [](const void* context, int32_t threads) {
                  auto& t = *static_cast<Team*>(const_cast<void*>(context));
                  t.threads = threads;
                  if (threads > kFrameSlots)
                      t.slots = static_cast<uint8_t*>(allocateBytes(threads * static_cast<int64_t>(t.bytes)));
                  for (int32_t i = 0; t.slots != nullptr && i < threads; ++i)
                      __builtin_memcpy(t.slot(i), t.total, t.bytes);
              },
              [](const void* context, int32_t thread, int32_t first, int32_t rows) {
                  const auto& t = *static_cast<const Team*>(context);
                  if (t.slots != nullptr)
                      t.work.body(t.work.context, first, rows, t.slot(thread));
              }}});
    if (team.slots == nullptr)
        return work.body(work.context, 0, height, total);
    for (int32_t thread = 0; thread < team.threads; ++thread)
        work.combine(work.context, total, team.slot(thread));
    if (team.slots != frameSlots)
        release(team.slots);
}

/**
 * A reduction over rows: body(firstRow, rowCount) gives the partial result of a stripe, combine(total, partial) joins
 * them in the order of the threads. Partial{} must be the result of no rows. Without memory for the slots of more than
 * 32 threads the calling thread does all the work.
 */
template <typename Body, typename Combine, typename Partial = std::invoke_result_t<Body, int32_t, int32_t>>
Partial reduceRows(RoiSize roi, ParallelFrom threshold, const Body& body, const Combine& combine) {
    static_assert(std::is_trivially_copyable_v<Partial> && sizeof(Partial) <= 32 && alignof(Partial) <= 32);
    if (!isForTeam(roi, threshold))
        return callBody(body, int32_t{0}, roi.height);

    struct Context {
        const Body& body;
        const Combine& combine;
    };
    const Context context{body, combine};
    const ReductionWork work{&context,
                             [](const void* c, int32_t first, int32_t rows, void* partial) {
                                 *static_cast<Partial*>(partial) =
                                     callBody(static_cast<const Context*>(c)->body, first, rows);
                             },
                             [](const void* c, void* total, const void* partial) {
                                 static_cast<const Context*>(c)->combine(*static_cast<Partial*>(total),
                                                                         *static_cast<const Partial*>(partial));
                             }};
    Partial total{};
    reduceWithTeam(roi.height, work, &total, sizeof(Partial));
    return total;
}

}  // namespace VEKCV_VARIANT
