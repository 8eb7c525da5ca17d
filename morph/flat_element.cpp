#include "flat_element.h"

namespace VEKCV_VARIANT {
namespace {

/** Calls body(row, column, length) for all members of a mask, as runs that are as long as can be. */
template <typename Body>
void forRuns(const uint8_t* mask, RoiSize size, const Body& body) {
    for (int32_t column = 0; column < size.width; ++column) {
        const auto isMember = [=](int32_t row) { return mask[ptrdiff_t{row} * size.width + column] != 0; };
        for (int32_t row = 0; row < size.height; ++row) {
            const int32_t first = row;
            while (row < size.height && isMember(row))
                ++row;
            if (row > first)
                body(first, column, row - first);
        }
    }
}

/** Calls body(row, index of the length) for the runs of one length, the last of which may overlap, in a run. */
template <typename Body>
void forParts(const RunLengths& lengths, int32_t row, int32_t length, const Body& body) {
    const int32_t index = lengths.find(length), part = lengths.values[index], last = row + length - part;
    for (; row < last; row += part)
        body(row, index);
    body(last, index);
}

class Splitter {
  public:
    Splitter(const uint8_t* mask, RoiSize size, const RunLengths& lengths, uint8_t* marks)
        : mask_(mask), size_(size), lengths_(lengths), marks_(marks) {
        for (ptrdiff_t i = 0; i < ptrdiff_t{size.width} * size.height; ++i)
            marks_[i] = 0;
        forRuns(mask, size, [this](int32_t row, int32_t column, int32_t length) {
            forParts(lengths_, row, length,
                     [&](int32_t y, int32_t index) { mark(y, column) = static_cast<uint8_t>(index + 1); });
        });
    }

    /** The strand through a run that has the most marked ones, which are half of its runs or more; else no runs. */
    Strand findStrand(MaskRun run) const {
        Strand best{};
        int32_t most = 0;
        for (const auto kind : {Strand::kBar, Strand::kDownwards, Strand::kRightwards, Strand::kLeftwards}) {
            if (kind == Strand::kDownwards && lengths_.count > 1)
                continue;  // runs of greater lengths are for that
            Strand strand{run, 1, kind};
            for (; hasMembers(strand[-1]); ++strand.runs)
                strand.first = strand[-1];
            while (hasMembers(strand[strand.runs]))
                ++strand.runs;
            int32_t marked = 0;
            for (int32_t k = 0; k < strand.runs; ++k)
                marked += isMarked(strand[k]) ? 1 : 0;
            if (marked > most && 2 * marked >= strand.runs) {
                most = marked;
                best = strand;
            }
        }
        return most < kLeastStrand ? Strand{} : best;
    }

    void unmark(const Strand& strand) {
        for (int32_t k = 0; k < strand.runs; ++k)
            if (const MaskRun run = strand[k]; isMarked(run))
                mark(run.row, run.column) = 0;
    }

    /** Calls body(run) for the runs that are marked, from the topmost on; it may unmark some. */
    template <typename Body>
    void forMarked(const Body& body) {
        for (int32_t row = 0; row < size_.height; ++row)
            for (int32_t column = 0; column < size_.width; ++column)
                if (const int32_t marked = mark(row, column); marked > 0)
                    body(MaskRun{row, column, marked - 1});
    }

  private:
    ptrdiff_t place(int32_t row, int32_t column) const { return ptrdiff_t{row} * size_.width + column; }
    uint8_t& mark(int32_t row, int32_t column) { return marks_[place(row, column)]; }
    bool isMarked(MaskRun run) const { return marks_[place(run.row, run.column)] == run.length + 1; }

    /** Whether the mask has all members of a run, which may lie outside of it. */
    bool hasMembers(MaskRun run) const {
        const int32_t length = lengths_.values[run.length];
        if (run.column < 0 || run.column >= size_.width || run.row < 0 || run.row > size_.height - length)
            return false;
        for (int32_t i = 0; i < length; ++i)
            if (mask_[place(run.row + i, run.column)] == 0)
                return false;
        return true;
    }

    const uint8_t* mask_;
    RoiSize size_;
    const RunLengths& lengths_;
    uint8_t* marks_;  // 1 + the length of the run that begins there and is in no strand yet; 0 where there is none
};

}  // namespace

RunLengths RunLengths::of(const uint8_t* mask, RoiSize size) {
    constexpr int32_t kMostDistinct = 8;
    RunLengths distinct{};
    int32_t longest = 1;
    forRuns(mask, size, [&](int32_t /*row*/, int32_t /*column*/, int32_t length) {
        longest = HWY_MAX(longest, length);
        int32_t place = 0;
        while (place < distinct.count && distinct.values[place] < length)
            ++place;
        if (distinct.count > kMostDistinct || (place < distinct.count && distinct.values[place] == length))
            return;
        for (int32_t i = distinct.count++; i > place; --i)
            distinct.values[i] = distinct.values[i - 1];
        distinct.values[place] = length;
    });

    RunLengths lengths{1, {1}};
    if (distinct.count > kMostDistinct) {
        for (int64_t length = 2; length <= longest; length *= 2)
            lengths.values[lengths.count++] = static_cast<int32_t>(length);
        return lengths;
    }
    for (int32_t i = 0; i < distinct.count; ++i) {
        const int32_t length = distinct.values[i];
        const auto last = [&] { return lengths.values[lengths.count - 1]; };
        while (length > int64_t{last()} * kMostJoined)
            lengths.values[lengths.count++] = 4 * last();
        if (length > last())
            lengths.values[lengths.count++] = length;
    }
    return lengths;
}

MaskSummary MaskSummary::of(const uint8_t* mask, RoiSize size) {
    MaskSummary summary{true, true, RunLengths::of(mask, size), 0};
    constexpr int32_t kSlope = 5;
    int32_t fullColumns = 0;
    int64_t members = 0, loads = 0;  // where all runs are single members, but some in slopes
    forRuns(mask, size, [&](int32_t row, int32_t /*column*/, int32_t length) {
        summary.isEmpty = false;
        members += length;
        loads += length < kLeastStrand ? length : kSlope;
        fullColumns += length == size.height ? 1 : 0;
        forParts(summary.lengths, row, length, [&](int32_t, int32_t) { ++summary.runs; });
    });
    summary.isFull = fullColumns == size.width;
    if (loads <= summary.runs + summary.lengths.cost()) {
        summary.lengths.count = 1;
        summary.runs = static_cast<int32_t>(members);
    }
    return summary;
}

int32_t RunLengths::cost() const {
    constexpr int32_t kStore = 2;
    int32_t cost = 0;
    for (int32_t i = 1; i < count; ++i)
        cost += (values[i] + values[i - 1] - 1) / values[i - 1] + kStore;
    return cost;
}

RunElement splitMask(const uint8_t* mask, RoiSize size, const MaskSummary& summary, MaskRun* runs, Strand* strands,
                     uint8_t* marks) {
    RunElement element{summary.lengths, runs, strands, 0, 0};
    Splitter splitter(mask, size, summary.lengths, marks);
    splitter.forMarked([&](MaskRun run) {
        if (const Strand strand = splitter.findStrand(run); strand.runs > 0) {
            strands[element.strandCount++] = strand;
            splitter.unmark(strand);
        }
    });
    splitter.forMarked([&](MaskRun run) { runs[element.runCount++] = run; });
    return element;
}

}  // namespace VEKCV_VARIANT
