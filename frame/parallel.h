#pragma once

#include <omp.h>

#include <cstdint>
#include <type_traits>

#include "allocation.h"
#include "float_modes.h"

namespace VEKCV_VARIANT {

/** The number of threads to decide with; a team asks for its own once it is opened. */
inline int32_t configuredThreads() {
    int threads = 1;
    vekGetNumThreads(&threads);
    return threads;
}

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

/**
 * Runs body(thread, firstRow, rowCount) on every thread of a team that has rows, with the floating-point modes of the
 * calling thread. The team may be smaller than what the core library asks for, so its master calls prepare(threads)
 * before any body starts.
 */
template <typename Prepare, typename Body>
void runTeam(int32_t height, Prepare prepare, Body body) {
    RowStripes stripes{};
    const auto modes = FloatModes::ofThread();
    const int32_t requested = ownGetNumThreads();  // once for each team
#pragma omp parallel num_threads(requested)
    {
#pragma omp master
        {
            stripes = RowStripes::of(height, omp_get_num_threads());
            prepare(stripes.threads);
        }
#pragma omp barrier
        const int32_t thread = omp_get_thread_num();
        if (stripes.rowCount(thread) > 0) {
            const FloatModesGuard guard(modes);
            body(thread, stripes.firstRow(thread), stripes.rowCount(thread));
        }
    }
}

/** Runs body(thread, firstRow, rowCount): on the calling thread, or in one stripe for each thread of a team. */
template <typename Body>
void forThreadStripes(bool isForTeam, int32_t height, Body body) {
    if (isForTeam)
        runTeam(
            height, [](int32_t) {}, body);
    else
        body(0, 0, height);
}

/** Runs body(firstRow, rowCount) over all rows: at once, or from the threshold on in one stripe for each thread. */
template <typename Body>
void forRowStripes(RoiSize roi, ParallelFrom threshold, Body body) {
    forThreadStripes(isForTeam(roi, threshold), roi.height,
                     [&](int32_t, int32_t first, int32_t rows) { body(first, rows); });
}

/**
 * A reduction over rows: body(firstRow, rowCount) gives the partial result of a stripe, combine(total, partial) joins
 * them in the order of the threads. Partial{} must be the result of no rows. Without memory for the slots of more than
 * 32 threads the calling thread does all the work.
 */
template <typename Body, typename Combine, typename Partial = std::invoke_result_t<Body, int32_t, int32_t>>
Partial reduceRows(RoiSize roi, ParallelFrom threshold, Body body, Combine combine) {
    static_assert(std::is_trivially_copyable_v<Partial>);
    if (!isForTeam(roi, threshold))
        return body(0, roi.height);

    constexpr int32_t kFrameSlots = 32;
    Partial frameSlots[kFrameSlots];
    Partial* slots = frameSlots;
    int32_t team = 0;
    runTeam(
        roi.height,
        [&](int32_t threads) {
            team = threads;
            if (threads > kFrameSlots)
                slots = static_cast<Partial*>(allocateBytes(int64_t{threads} * int64_t{sizeof(Partial)}));
            for (int32_t t = 0; slots != nullptr && t < threads; ++t)
                slots[t] = Partial{};
        },
        [&](int32_t thread, int32_t first, int32_t rows) {
            if (slots != nullptr)
                slots[thread] = body(first, rows);
        });
    if (slots == nullptr)
        return body(0, roi.height);

    Partial total = slots[0];
    for (int32_t t = 1; t < team; ++t)
        combine(total, slots[t]);
    if (slots != frameSlots)
        release(slots);
    return total;
}

}  // namespace VEKCV_VARIANT
