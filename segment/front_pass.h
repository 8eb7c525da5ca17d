// Chamfer distances in floats: a front that moves over an image.
#pragma once

#include "chamfer_front.h"
#include "image.h"
#include "promote.h"
#include "strided_groups.h"

namespace VEKCV_VARIANT {

/** One pass over an image, from its first pixel to the last or back. */
template <int kReach, bool kIsBackward>
class FrontPass {
  public:
    FrontPass(Image<const uint8_t> source, Image<float> out, RoiSize roi, const ChamferCosts<float>& costs)
        : source_(source), out_(out), width_(roi.width), height_(roi.height), costs_(costs) {}

    HWY_NOINLINE void run() {
        for (firstRow_ = 0;; firstRow_ += Front::kRows - kReach) {
            rows_ = HWY_MIN(Front::kRows, height_ - firstRow_);
            steps_.clear();
            const ptrdiff_t lag = (rows_ - 1) * kLag, end = width_ + lag;
            for (ptrdiff_t column = 0; column < end; column += kColumns)
                if (rows_ == Front::kRows && column >= lag && column + kColumns <= width_)
                    computeColumns<false>(column);
                else
                    computeColumns<true>(column);
            if (firstRow_ + rows_ == height_)
                return;
        }
    }

  private:
    using Steps = FrontSteps<kReach>;
    static constexpr ptrdiff_t kLag = Steps::kLag;
    static constexpr ptrdiff_t kColumns = HWY_MAX(8, hn::MaxLanes(hn::ScalableTag<float>()));
    using D = hn::ScalableTag<float>;
    using V = hn::Vec<D>;
    static constexpr ptrdiff_t kLanes = hn::MaxLanes(D());

    /** Columns of the image, counted in the direction of the pass: those of row r begin r * kLag before `column`. */
    template <bool kIsEdge>
    HWY_NOINLINE void computeColumns(ptrdiff_t column) {
        alignas(64) float fronts[kColumns * Front::kRows];
        kIsEdge ? loadEdge(column, fronts) : loadColumns<false>(column, fronts);
        Steps steps = steps_;
        const auto costs = costs_;
#pragma GCC unroll 4
        for (ptrdiff_t i = 0; i < kColumns; ++i) {
            float* const place = fronts + (kIsBackward ? kColumns - 1 - i : i) * Front::kRows;
            steps
                .next(
                    Front(place), costs, [ =, this ](const Front& front) __attribute__((always_inline)) {
                        return kIsEdge ? front.within(column + i, width_, kLag) : front;
                    })
                .store(place);
        }
        steps_ = steps;
        kIsEdge ? storeEdge(column, fronts) : storeColumns<false>(column, fronts);
    }

    /** Whether a row of the front has its distances from the rows before, and those after the first pass all have. */
    bool isComplete(ptrdiff_t row) const {
        return kIsBackward || (firstRow_ > 0 && row < kReach);
    }

    ptrdiff_t imageRow(ptrdiff_t row) const {
        return kIsBackward ? height_ - 1 - firstRow_ - row : firstRow_ + row;
    }
    ptrdiff_t imageColumn(ptrdiff_t column, ptrdiff_t row) const {
        return kIsBackward ? width_ - kColumns - (column - row * kLag) : column - row * kLag;
    }

    /** Four rows of as many columns as there are lanes become their fronts, and the other way round. */
    HWY_INLINE static void transpose(V (&v)[4]) {
        const D d;
        const hn::Repartition<uint64_t, D> pairs;
        const auto low = [=](V a, V b) { return hn::BitCast(pairs, hn::InterleaveLower(d, a, b)); };
        const auto high = [=](V a, V b) { return hn::BitCast(pairs, hn::InterleaveUpper(d, a, b)); };
        const auto a = low(v[0], v[1]), b = low(v[2], v[3]), c = high(v[0], v[1]), e = high(v[2], v[3]);
        v[0] = hn::BitCast(d, hn::InterleaveLower(pairs, a, b));
        v[1] = hn::BitCast(d, hn::InterleaveUpper(pairs, a, b));
        v[2] = hn::BitCast(d, hn::InterleaveLower(pairs, c, e));
        v[3] = hn::BitCast(d, hn::InterleaveUpper(pairs, c, e));
    }

    /** The columns of one row in a vector. */
    HWY_INLINE V loadPixels(ptrdiff_t row, ptrdiff_t x) const {
        const D d;
        if (isComplete(row))
            return hn::LoadU(d, out_.row(imageRow(row)) + x);
        return hn::IfThenZeroElse(isZero(d, source_.row(imageRow(row)) + x), hn::Set(d, FLT_MAX));
    }
    HWY_NOINLINE V loadPixelsWithin(ptrdiff_t row, ptrdiff_t x) const {
        const D d;
        if (row >= rows_ || x >= width_ || x + kLanes <= 0)
            return hn::Set(d, FLT_MAX);
        if (x >= 0 && x + kLanes <= width_)
            return loadPixels(row, x);
        float pixels[kLanes];
        for (ptrdiff_t i = 0; i < kLanes; ++i)
            if (x + i < 0 || x + i >= width_)
                pixels[i] = FLT_MAX;
            else if (isComplete(row))
                pixels[i] = out_.row(imageRow(row))[x + i];
            else
                pixels[i] = source_.row(imageRow(row))[x + i] == 0 ? 0 : FLT_MAX;
        return hn::LoadU(d, pixels);
    }
    HWY_NOINLINE void storePixelsWithin(V v, ptrdiff_t row, ptrdiff_t x) const {
        const D d;
        if (row >= rows_ || x >= width_ || x + kLanes <= 0)
            return;
        float* const out = out_.row(imageRow(row));
        if (x >= 0 && x + kLanes <= width_)
            return hn::StoreU(v, d, out + x);
        float pixels[kLanes];
        hn::StoreU(v, d, pixels);
        for (ptrdiff_t i = 0; i < kLanes; ++i)
            if (x + i >= 0 && x + i < width_)
                out[x + i] = pixels[i];
    }

    template <bool kIsEdge>
    HWY_INLINE void loadColumns(ptrdiff_t column, float* fronts) const {
        for (ptrdiff_t row = 0; row < Front::kRows; row += 4)
            for (ptrdiff_t first = 0; first < kColumns; first += kLanes) {
                V v[4];
                for (ptrdiff_t i = 0; i < 4; ++i) {
                    const ptrdiff_t x = imageColumn(column, row + i) + first;
                    v[i] = kIsEdge ? loadPixelsWithin(row + i, x) : loadPixels(row + i, x);
                }
                transpose(v);
                for (ptrdiff_t i = 0; i < 4; ++i)
                    storeGroups(D(), v[i], fronts + (first + i) * Front::kRows + row, 4 * Front::kRows);
            }
    }
    template <bool kIsEdge>
    HWY_INLINE void storeColumns(ptrdiff_t column, const float* fronts) const {
        for (ptrdiff_t row = 0; row < Front::kRows; row += 4)
            for (ptrdiff_t first = 0; first < kColumns; first += kLanes) {
                V v[4];
                for (ptrdiff_t i = 0; i < 4; ++i)
                    v[i] = loadGroups(D(), fronts + (first + i) * Front::kRows + row, 4 * Front::kRows);
                transpose(v);
                for (ptrdiff_t i = 0; i < 4; ++i) {
                    const ptrdiff_t x = imageColumn(column, row + i) + first;
                    if (kIsEdge)
                        storePixelsWithin(v[i], row + i, x);
                    else
                        hn::StoreU(v[i], D(), out_.row(imageRow(row + i)) + x);
                }
            }
    }

    /** Out of line, so that no function needs much stack. */
    HWY_NOINLINE void loadEdge(ptrdiff_t column, float* fronts) const {
        loadColumns<true>(column, fronts);
    }
    HWY_NOINLINE void storeEdge(ptrdiff_t column, const float* fronts) const {
        storeColumns<true>(column, fronts);
    }

    Image<const uint8_t> source_;
    Image<float> out_;
    ptrdiff_t width_, height_, firstRow_ = 0, rows_ = 0;
    ChamferCosts<float> costs_;
    Steps steps_;
};

/** Distances to the pixels of the source that are 0. */
template <int kReach>
void transformDistances(Image<const uint8_t> source, Image<float> out, RoiSize roi, const ChamferCosts<float>& costs) {
    FrontPass<kReach, false>(source, out, roi, costs).run();
    FrontPass<kReach, true>(source, out, roi, costs).run();
}

}  // namespace VEKCV_VARIANT
