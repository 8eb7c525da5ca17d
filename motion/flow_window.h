// The window of the previous image around a point, and what it has to be compared with in the next image. A window is
// sampled between pixels, so it is computed from a patch: floats from all pixels that its samples take, where those
// outside of the image are like the nearest ones in it.
#pragma once

#include "allocation.h"
#include "image.h"
#include "optical_flow_state.h"
#include "promote.h"
#include "rest.h"
#include "sums.h"

namespace VEKCV_VARIANT {

/** A level of a pyramid. */
template <typename T>
struct FlowLevel {
    Image<const T> image;
    RoiSize size;
};

/** A place between pixels of a level: the pixel to the upper left, and the distances from it. */
struct FlowPlace {
    int64_t x, y;
    float fractionX, fractionY;

    static FlowPlace of(float x, float y, RoiSize size) {
        FlowPlace place;
        split(x, size.width, place.x, place.fractionX);
        split(y, size.height, place.y, place.fractionY);
        return place;
    }

  private:
    /** Beyond kFar pixels outside all samples of a window are those of the edge, so places are cut to that. */
    static void split(float position, int32_t length, int64_t& whole, float& fraction) {
        constexpr float kFar = 64;
        const float least = -kFar, most = static_cast<float>(length) + kFar;
        const float near = position < least ? least : position > most ? most : position;
        whole = near == near ? static_cast<int64_t>(near) : 0;
        if (static_cast<float>(whole) > near)
            --whole;
        fraction = near - static_cast<float>(whole);
    }
};

/** A sum over the window for each element of the matrix of products of derivatives. */
struct FlowMatrix {
    float xx, xy, yy;
};

/** What a thread knows of a point at a level. The sums run over column after column, each of them from its top. */
class FlowWindow {
    using D = hn::ScalableTag<float>;
    using V = hn::Vec<D>;
    static constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
    static constexpr ptrdiff_t kRunningSums = 16;

    // A patch has a pixel more on each side than the windows in it, so that a window may move a little in its patch;
    // derivatives take it too. Vectors reach less than this number of floats beyond the last row.
    static constexpr int32_t kPatchExcess = 3, kSpare = 16;

    static constexpr int32_t strideOf(int32_t size) { return alignUp(size + kPatchExcess, 16); }
    static constexpr int32_t floatsOf(int32_t size, int32_t rows) { return rows * strideOf(size) + kSpare; }

  public:
    /** The scratch memory of a thread. Vectors find zeros beside the windows, if it is made of zeros. */
    static constexpr int32_t scratchFloats(int32_t size) {
        return floatsOf(size, size + kPatchExcess) + floatsOf(size, size + 2) + 3 * floatsOf(size, size);
    }

    FlowWindow(const FlowRecord& state, int32_t thread)
        : size_(state.windowSize),
          stride_(strideOf(size_)),
          patch_(state.scratch + ptrdiff_t{thread} * state.floats),
          samples_(patch_ + floatsOf(size_, size_ + kPatchExcess)),
          values_(samples_ + floatsOf(size_, size_ + 2)),
          slopesX_(values_ + floatsOf(size_, size_)),
          slopesY_(slopesX_ + floatsOf(size_, size_)) {}

    float area() const { return static_cast<float>(size_ * size_); }

    /** Keeps the window around a place of the previous image with its derivatives, and gives their matrix. */
    template <typename T>
    FlowMatrix keep(const FlowLevel<T>& level, const FlowPlace& place) {
        copyPatch(level, place);
        samplePatch(place);
        hasPatch_ = false;
        return derive();
    }

    /** The sums of the differences to the window around a place of the next image, times the derivatives. */
    template <typename T>
    HWY_INLINE void mismatch(const FlowLevel<T>& level, const FlowPlace& place, float& x, float& y) {
        float totals[2];
        sumMismatches(goTo(level, place), place, totals);
        x = totals[0];
        y = totals[1];
    }

    /** The sum of the absolute differences. */
    template <typename T>
    float difference(const FlowLevel<T>& level, const FlowPlace& place) {
        return sumMagnitudes(goTo(level, place), place);
    }

  private:
    /** Where the patch has the window around a place; from a new patch where the present one does not have it. */
    template <typename T>
    HWY_INLINE const float* goTo(const FlowLevel<T>& level, const FlowPlace& place) {
        const auto isIn = [](int64_t offset) { return offset >= 0 && offset < kPatchExcess; };
        if (!hasPatch_ || !isIn(place.x - size_ / 2 - left_) || !isIn(place.y - size_ / 2 - top_))
            copyPatch(level, place);
        return patch_ + (place.y - size_ / 2 - top_) * stride_ + (place.x - size_ / 2 - left_);
    }

    /** Reads the pixels of the patch around a place. */
    template <typename T>
    HWY_NOINLINE void copyPatch(const FlowLevel<T>& level, const FlowPlace& place) {
        left_ = place.x - size_ / 2 - 1;
        top_ = place.y - size_ / 2 - 1;
        hasPatch_ = true;
        const ptrdiff_t count = size_ + kPatchExcess, stride = stride_;
        const auto within = [](int64_t i, int64_t most) { return i < 0 ? 0 : i > most ? most : i; };
        const auto rowOf = [&](ptrdiff_t y) {
            return level.image.row(static_cast<ptrdiff_t>(within(top_ + y, level.size.height - 1)));
        };
        const auto begin = static_cast<ptrdiff_t>(within(-left_, count));
        const auto end = static_cast<ptrdiff_t>(within(level.size.width - left_, count));
        const auto first = static_cast<ptrdiff_t>(left_ + begin);
        float* out = patch_;
        if (end - begin == count) {
            for (ptrdiff_t y = 0; y < count; ++y, out += stride)
                copyPixels(rowOf(y) + first, out, count);
            return;
        }
        for (ptrdiff_t y = 0; y < count; ++y, out += stride) {
            const T* const row = rowOf(y);
            repeatPixel(row, out, begin);
            copyPixels(row + first, out + begin, end - begin);
            repeatPixel(row + level.size.width - 1, out + end, count - end);
        }
    }

    template <typename T>
    static HWY_INLINE void copyPixels(const T* pixels, float* out, ptrdiff_t count) {
        forOverlapping(
            D(), 0, 0, count, [=](auto d, ptrdiff_t x) __attribute__((always_inline)) {
                hn::StoreU(loadFloats(d, pixels + x), d, out + x);
            });
    }
    /** Whole vectors: what is behind `count` is written later, or of no meaning. */
    template <typename T>
    static HWY_INLINE void repeatPixel(const T* pixel, float* out, ptrdiff_t count) {
        const auto value = hn::Set(D(), hn::GetLane(loadFloats(hn::CappedTag<float, 1>(), pixel)));
        for (ptrdiff_t x = 0; x < count; x += kLanes)
            hn::StoreU(value, D(), out + x);
    }

    /** Interpolates along the rows of a patch, then between them. */
    struct Interpolation {
        V fractionX, fractionY;

        explicit HWY_INLINE Interpolation(const FlowPlace& place)
            : fractionX(hn::Set(D(), place.fractionX)), fractionY(hn::Set(D(), place.fractionY)) {}

        static HWY_INLINE V between(V a, V b, V fraction) { return hn::Add(a, hn::Mul(fraction, hn::Sub(b, a))); }
        HWY_INLINE V alongRow(const float* pixels) const {
            return between(hn::LoadU(D(), pixels), hn::LoadU(D(), pixels + 1), fractionX);
        }
        HWY_INLINE V betweenRows(V upper, V lower) const { return between(upper, lower, fractionY); }
    };

    /** The samples of the window around a place, with one more on each side. */
    HWY_NOINLINE void samplePatch(const FlowPlace& place) {
        const Interpolation interpolation(place);
        const int32_t count = size_ + 2;
        for (ptrdiff_t x = 0; x < count; x += kLanes) {
            const float* row = patch_ + x;
            float* out = samples_ + x;
            auto upper = interpolation.alongRow(row);
            for (int32_t y = 0; y < count; ++y, out += stride_) {
                row += stride_;
                const auto lower = interpolation.alongRow(row);
                hn::StoreU(interpolation.betweenRows(upper, lower), D(), out);
                upper = lower;
            }
        }
    }

    /** Sums over the window in sixteen running sums each, column x in those of x mod 16. */
    template <int32_t kSums>
    class RunningSums {
      public:
        HWY_INLINE RunningSums() {
            for (auto& sums : sums_)
                for (ptrdiff_t i = 0; i < kRunningSums; i += kLanes)
                    hn::StoreU(hn::Zero(D()), D(), sums + i);
        }
        HWY_INLINE void load(ptrdiff_t x, V (&sums)[kSums]) const {
            for (int32_t i = 0; i < kSums; ++i)
                sums[i] = hn::LoadU(D(), sums_[i] + x % kRunningSums);
        }
        HWY_INLINE void store(ptrdiff_t x, const V (&sums)[kSums]) {
            for (int32_t i = 0; i < kSums; ++i)
                hn::StoreU(sums[i], D(), sums_[i] + x % kRunningSums);
        }
        HWY_INLINE float total(int32_t i) const {
            SixteenSums<float> all;
            for (ptrdiff_t vector = 0; vector < kRunningSums / kLanes; ++vector)
                all.add(vector, hn::LoadU(D(), sums_[i] + vector * kLanes));
            return all.total();
        }

      private:
        float sums_[kSums][kRunningSums];
    };

    /** Which lanes of a vector that begins at column x are columns of the window. */
    HWY_INLINE hn::Mask<D> insideFrom(ptrdiff_t x) const {
        return hn::Lt(hn::Iota(D(), static_cast<float>(x)), hn::Set(D(), static_cast<float>(size_)));
    }

    /** Adds a vector to a running sum. */
    static HWY_INLINE void addTo(V& sum, V v) { sum = hn::Add(sum, v); }

    HWY_NOINLINE FlowMatrix derive() {
        const D d;
        const auto half = hn::Set(d, 0.5F);
        RunningSums<3> all;
        for (ptrdiff_t x = 0; x < size_; x += kLanes) {
            const auto isInside = insideFrom(x);
            const auto slope = [=](const float* before, const float* after) __attribute__((always_inline)) {
                return hn::IfThenElseZero(isInside, hn::Mul(half, hn::Sub(hn::LoadU(d, after), hn::LoadU(d, before))));
            };
            V sums[3];
            all.load(x, sums);
            const float* sample = samples_ + stride_ + x + 1;
            for (ptrdiff_t i = x, end = size_ * stride_; i < end; i += stride_, sample += stride_) {
                const auto slopeX = slope(sample - 1, sample + 1), slopeY = slope(sample - stride_, sample + stride_);
                hn::StoreU(hn::LoadU(d, sample), d, values_ + i);
                hn::StoreU(slopeX, d, slopesX_ + i);
                hn::StoreU(slopeY, d, slopesY_ + i);
                addTo(sums[0], hn::Mul(slopeX, slopeX));
                addTo(sums[1], hn::Mul(slopeX, slopeY));
                addTo(sums[2], hn::Mul(slopeY, slopeY));
            }
            all.store(x, sums);
        }
        return {all.total(0), all.total(1), all.total(2)};
    }

    /** Calls add(sums, i, difference) for vectors of the window, i being their first elements in the arrays. */
    template <int32_t kSums, typename Add>
    HWY_INLINE RunningSums<kSums> sumDifferences(const float* window, const FlowPlace& place, const Add& add) const {
        const D d;
        const Interpolation interpolation(place);
        RunningSums<kSums> all;
        const ptrdiff_t stride = stride_;
        const float* const values = values_;
        for (ptrdiff_t x = 0; x < size_; x += kLanes) {
            const auto isInside = insideFrom(x);
            V sums[kSums];
            all.load(x, sums);
            const float* row = window + x;
            auto upper = interpolation.alongRow(row);
            for (ptrdiff_t i = x, end = size_ * stride; i < end; i += stride) {
                row += stride;
                const auto lower = interpolation.alongRow(row);
                const auto next = interpolation.betweenRows(upper, lower);
                upper = lower;
                add(sums, i, hn::IfThenElseZero(isInside, hn::Sub(hn::LoadU(d, values + i), next)));
            }
            all.store(x, sums);
        }
        return all;
    }

    HWY_NOINLINE void sumMismatches(const float* window, const FlowPlace& place, float (&totals)[2]) const {
        const float *const slopesX = slopesX_, *const slopesY = slopesY_;
        const auto all = sumDifferences<2>(
            window, place, [=](V(&sums)[2], ptrdiff_t i, V difference) __attribute__((always_inline)) {
                addTo(sums[0], hn::Mul(difference, hn::LoadU(D(), slopesX + i)));
                addTo(sums[1], hn::Mul(difference, hn::LoadU(D(), slopesY + i)));
            });
        totals[0] = all.total(0);
        totals[1] = all.total(1);
    }

    HWY_NOINLINE float sumMagnitudes(const float* window, const FlowPlace& place) const {
        return sumDifferences<1>(
                   window, place, [](V(&sums)[1], ptrdiff_t, V difference) __attribute__((always_inline)) {
                       addTo(sums[0], hn::Abs(difference));
                   })
            .total(0);
    }

    int32_t size_;
    ptrdiff_t stride_;
    float *patch_, *samples_, *values_, *slopesX_, *slopesY_;
    int64_t left_ = 0, top_ = 0;  // of the patch in its level
    bool hasPatch_ = false;       // of the next image
};

}  // namespace VEKCV_VARIANT
