// Straight lines by the Hough transform.
#include "best_lines.h"
#include "bind.h"
#include "check.h"
#include "float_modes.h"
#include "hough_points.h"
#include "mask_bits.h"

namespace VEKCV_VARIANT {
namespace {

/** Indices from `first` to `end` - 1. */
struct Range {
    int32_t first, end;

    /** Those of `count` indices whose values, which grow with them, are neither below `least` nor above `largest`. */
    template <typename ValueOf>
    static Range ofValues(int32_t count, float least, float largest, const ValueOf& valueOf) {
        const auto firstWhere = [&](auto condition) {
            int32_t low = 0, high = count;
            while (low < high) {
                const int32_t middle = low + (high - low) / 2;
                if (condition(valueOf(middle)))
                    high = middle;
                else
                    low = middle + 1;
            }
            return low;
        };
        return {firstWhere([=](float value) { return value >= least; }),
                firstWhere([=](float value) { return value > largest; })};
    }
};

/** The cells that may be lines. */
struct HoughRegion {
    float minRho, maxRho, minTheta, maxTheta;

    static constexpr HoughRegion all() { return {-HUGE_VALF, HUGE_VALF, -HUGE_VALF, HUGE_VALF}; }

    Range rowsOf(const HoughAxes& axes) const {
        return Range::ofValues(axes.lastRow + 1, minTheta, maxTheta, [&](int32_t row) { return axes.thetaOf(row); });
    }
    Range cellsOf(const HoughAxes& axes) const {
        return Range::ofValues(axes.rhoCount, minRho, maxRho, [&](int32_t cell) { return axes.rhoOf(cell); });
    }
};

/** Bytes of the work buffer, for regions of less than 2^30 pixels; for others modulo 2^32. */
uint64_t bufferBytes(RoiSize roi, const HoughAxes& axes, int32_t maxLineCount) {
    const auto width = static_cast<uint64_t>(roi.width), height = static_cast<uint64_t>(roi.height);
    return (4 * width + 48) * height + static_cast<uint64_t>(16 * int64_t{maxLineCount}) +
           8 * (static_cast<uint64_t>(axes.lastRow) + 1) + 16 * static_cast<uint64_t>(axes.rhoCount) + 256;
}

/** Three rows of the accumulator, of which the middle one is searched, each between zeros; and one more for votes. */
class Accumulator {
  public:
    Accumulator(Scratch& scratch, int32_t rhoCount) : count_(rhoCount) {
        const ptrdiff_t pitch = ptrdiff_t{rhoCount} + 1;
        auto* const memory = scratch.take<int32_t>(4 * pitch + 1);
        for (ptrdiff_t i = 0; i < 4 * pitch + 1; ++i)
            memory[i] = 0;
        for (int32_t k = 0; k < 3; ++k)
            rows_[k] = memory + 1 + k * pitch;
        moreVotes_ = memory + 1 + 3 * pitch;
    }

    /** Goes on to the next row, which has no votes yet. */
    void advance() {
        int32_t* const first = rows_[0];
        rows_[0] = rows_[1];
        rows_[1] = rows_[2];
        rows_[2] = first;
        for (ptrdiff_t i = 0; i < count_; ++i)
            first[i] = 0;
    }

    /** Adds the votes of all points to the last row, and makes those of cells beside the range 0. */
    void vote(const Points& points, const CellRule& rule, Range cells) {
        int32_t *const votes = rows_[2], *const moreVotes = moreVotes_;
        points.vote(rule, votes, moreVotes);
        forHalves(
            hn::ScalableTag<int32_t>(), 0, count_, [=](auto d, ptrdiff_t i) __attribute__((always_inline)) {
                hn::StoreU(hn::Add(hn::LoadU(d, votes + i), hn::LoadU(d, moreVotes + i)), d, votes + i);
                hn::StoreU(hn::Zero(d), d, moreVotes + i);
            });
        votes[cells.first - 1] = votes[cells.end] = 0;
    }

    /** Offers all lines of the middle row, whose number is `row`. */
    void findLines(int32_t row, Range cells, int32_t threshold, BestLines& lines) const {
        const int32_t *const before = rows_[0], *const here = rows_[1], *const behind = rows_[2];
        forHalves(
            hn::ScalableTag<int32_t>(), cells.first,
            cells.end, [&](auto d, ptrdiff_t i) __attribute__((always_inline)) {
                const auto votes = hn::LoadU(d, here + i);
                const auto isTooWeak = hn::Lt(votes, hn::Set(d, threshold));
                if (hn::AllTrue(d, isTooWeak))
                    return;
                const auto isMoreThan = [=](const int32_t* others) { return hn::Gt(votes, hn::LoadU(d, others + i)); };
                const auto isLessThan = [=](const int32_t* others) { return hn::Lt(votes, hn::LoadU(d, others + i)); };
                const auto isAhead = hn::And(isMoreThan(before), isMoreThan(here - 1));
                const auto isBehind = hn::Or(isTooWeak, hn::Or(isLessThan(behind), isLessThan(here + 1)));
                for (uint64_t bits = maskBits(d, hn::AndNot(isBehind, isAhead)); bits != 0; bits &= bits - 1) {
                    const ptrdiff_t cell = i + __builtin_ctzll(bits);
                    lines.offer({here[cell], row, static_cast<int32_t>(cell)});
                }
            });
    }

  private:
    ptrdiff_t count_;
    int32_t *rows_[3], *moreVotes_;
};

/** Writes the lines and gives their number. */
int32_t findLines(Image<const uint8_t> image, RoiSize roi, const HoughAxes& axes, int32_t threshold,
                  const HoughRegion& region, float* out, int32_t maxLineCount, uint8_t* buffer) {
    const Range rows = region.rowsOf(axes), cells = region.cellsOf(axes);
    if (rows.first == rows.end || cells.first == cells.end)
        return 0;
    // The buffer has at least 300 bytes beyond the arrays' elements. Zeros beside cells and aligning the arrays take up
    // to 140, and the last vector of points reads up to 60 behind them.
    Scratch scratch(buffer, static_cast<int64_t>(bufferBytes(roi, axes, maxLineCount)));
    Accumulator accumulator(scratch, axes.rhoCount);
    const Points points(scratch, image, roi);
    BestLines lines(scratch.take<HoughLine>(maxLineCount), maxLineCount);
    for (int32_t row = rows.first; row <= rows.end; ++row) {
        accumulator.advance();
        if (row < rows.end)
            accumulator.vote(points, CellRule(axes, row), cells);
        // One that is as strong as the last of enough lines comes behind it.
        if (row > rows.first)
            accumulator.findLines(row - 1, cells, lines.isFull() ? lines.last().votes + 1 : threshold, lines);
    }
    const int32_t count = lines.count();
    for (ptrdiff_t i = count - 1; i >= 0; --i) {
        out[2 * i] = axes.rhoOf(lines.last().cell);
        out[2 * i + 1] = axes.thetaOf(lines.last().row);
        lines.removeLast();
    }
    return count;
}

/** body(axes), in the floating-point modes that a program begins with. */
template <typename Body>
Status withAxes(RoiSize roi, float deltaRho, float deltaTheta, const Body& body) {
    return inUsualModes([&] { return body(HoughAxes::of(roi, deltaRho, deltaTheta)); });
}

Status hough(const uint8_t* source, int32_t sourceStep, RoiSize roi, float deltaRho, float deltaTheta,
             int32_t threshold, const HoughRegion& region, float* lines, int32_t maxLineCount, int32_t* lineCount,
             uint8_t* buffer) {
    const Image<const uint8_t> image{source, sourceStep};
    const double side = static_cast<double>(roi.width) + roi.height;
    if (Status status = Check()
                            .pointers(image, lines, lineCount, buffer)
                            .require(sourceStep >= 1, StatusStepError)
                            .roi(roi)
                            .require(maxLineCount >= 1, StatusSizeError)
                            .require(deltaRho > 0 && deltaRho <= side, StatusBadArgument)
                            .require(deltaTheta > 0 && deltaTheta <= 3.14159F, StatusBadArgument)
                            .require(threshold >= 1, StatusBadArgument)
                            .require(region.minRho <= region.maxRho, StatusRangeError)
                            .require(region.minTheta <= region.maxTheta, StatusRangeError)
                            .require(int64_t{roi.width} * roi.height < int64_t{1} << 30, StatusSizeError))
        return status;
    return withAxes(roi, deltaRho, deltaTheta, [=](const HoughAxes& axes) -> Status {
        if (bufferBytes(roi, axes, maxLineCount) > UINT32_MAX)
            return StatusSizeError;
        *lineCount = findLines(image, roi, axes, threshold, region, lines, maxLineCount, buffer);
        return StatusOk;
    });
}

Status houghLine(const uint8_t* source, int32_t sourceStep, RoiSize roi, float deltaRho, float deltaTheta,
                 int32_t threshold, float* lines, int32_t maxLineCount, int32_t* lineCount, uint8_t* buffer) {
    return hough(source, sourceStep, roi, deltaRho, deltaTheta, threshold, HoughRegion::all(), lines, maxLineCount,
                 lineCount, buffer);
}

Status houghLineRegion(const uint8_t* source, int32_t sourceStep, RoiSize roi, float deltaRho, float deltaTheta,
                       int32_t threshold, float minRho, float maxRho, float minTheta, float maxTheta, float* lines,
                       int32_t maxLineCount, int32_t* lineCount, uint8_t* buffer) {
    return hough(source, sourceStep, roi, deltaRho, deltaTheta, threshold, {minRho, maxRho, minTheta, maxTheta}, lines,
                 maxLineCount, lineCount, buffer);
}

Status houghLineSize(RoiSize roi, float deltaRho, float deltaTheta, int32_t maxLineCount, int32_t* bufferSize) {
    if (Status status =
            Check().pointers(bufferSize).roi(roi).require(deltaRho > 0 && deltaTheta > 0, StatusBadArgument))
        return status;
    return withAxes(roi, deltaRho, deltaTheta, [=](const HoughAxes& axes) -> Status {
        const auto bytes = static_cast<uint32_t>(bufferBytes(roi, axes, maxLineCount));
        *bufferSize = static_cast<int32_t>(bytes);
        return bytes > INT32_MAX ? StatusBufferSizeWarning : StatusOk;
    });
}

}  // namespace

VEKCV_BIND(vekiHoughLineGetSize_8u_C1R, houghLineSize);
VEKCV_BIND(vekiHoughLine_8u32f_C1R, houghLine);
VEKCV_BIND(vekiHoughLine_Region_8u32f_C1R, houghLineRegion);
}  // namespace VEKCV_VARIANT
