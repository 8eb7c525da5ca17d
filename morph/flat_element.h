// Flat structuring elements, split into runs of members.
#pragma once

#include "rectangle_filter.h"

namespace VEKCV_VARIANT {

/** Lengths of runs whose ranks are computed for all places: in ascending order, each from those of the one before. */
struct RunLengths {
    static constexpr int32_t kMost = 32;

    int32_t count;
    int32_t values[kMost];

    /** Those of the runs of a mask; where there are many, powers of two, of which two make up a run of any length. */
    static RunLengths of(const uint8_t* mask, RoiSize size);

    /** What it costs to compute these ranks for a row, in loads of the row. */
    int32_t cost() const;

    /** The index of the greatest length up to the given one. */
    int32_t find(int32_t length) const {
        int32_t index = 0;
        while (index + 1 < count && values[index + 1] <= length)
            ++index;
        return index;
    }
};

/** Members in a column of a mask from a row on, as many as the length at an index of RunLengths. */
struct MaskRun {
    int32_t row, column, length;
};

/**
 * Runs of the same length, of which each begins beside the one before. A bar has them side by side; in a slope each
 * begins a row below, either in the same column or in the next one to the right or to the left.
 */
struct Strand {
    enum Kind : int32_t { kBar, kDownwards, kRightwards, kLeftwards };

    MaskRun first;  // the leftmost of a bar, the topmost of a slope
    int32_t runs;
    Kind kind;

    /** How many columns a run of a slope lies to the right of the one before. */
    int32_t shift() const { return kind == kRightwards ? 1 : kind == kLeftwards ? -1 : 0; }

    MaskRun operator[](int32_t k) const {
        return kind == kBar ? MaskRun{first.row, first.column + k, first.length}
                            : MaskRun{first.row + k, first.column + k * shift(), first.length};
    }
};

/** How many runs a strand has at least: it takes fewer loads than they do then. */
constexpr int32_t kLeastStrand = 8;

/** The members of a mask that is not full, as runs, some of them in strands. */
struct RunElement {
    RunLengths lengths;
    const MaskRun* runs;
    const Strand* strands;
    int32_t runCount, strandCount;
};

/** What is known of a mask without its anchor. */
struct MaskSummary {
    bool isEmpty, isFull;
    RunLengths lengths;
    int32_t runs;  // that make up the mask

    static MaskSummary of(const uint8_t* mask, RoiSize size);
};

/**
 * Splits a mask that is not full into runs and strands, for which there is memory as the summary says, and a byte for
 * every place of the mask.
 */
RunElement splitMask(const uint8_t* mask, RoiSize size, const MaskSummary& summary, MaskRun* runs, Strand* strands,
                     uint8_t* marks);

}  // namespace VEKCV_VARIANT
