// The rows of pyramid layers, in steps that take rows of floats from the step before: along the rows of the source, by
// LayerRow, then across them, by SmoothedRows and InterpolatedRows. Each step gives row y by write(y, out).
#pragma once

#include "extended_row.h"
#include "float_sums.h"
#include "pixelwise.h"
#include "pyramid_layer_state.h"
#include "rounding.h"
#include "row_ring.h"
#include "tap_elements.h"

namespace VEKCV_VARIANT {

/** The vector of results that a vector of floats becomes: rounded to the nearest integers, and saturated. */
template <typename D, typename Rule>
HWY_INLINE hn::Vec<D> resultsOf(D d, ptrdiff_t x, const Rule& floats) {
    using T = hn::TFromD<D>;
    if constexpr (std::is_same_v<T, float>) {
        return floats(d, x);
    } else if constexpr (hn::MaxLanes(D()) > hn::MaxLanes(hn::ScalableTag<float>())) {
        return byHalves(
            d, x, [&](auto half, ptrdiff_t i) __attribute__((always_inline)) { return resultsOf(half, i, floats); });
    } else {
        const hn::Rebind<float, D> wide;
        const auto least = hn::Zero(wide), most = hn::Set(wide, static_cast<float>(hwy::LimitsMax<T>()));
        return hn::DemoteTo(d,
                            nearestIntegers(hn::Rebind<int32_t, D>(), hn::Min(hn::Max(floats(wide, x), least), most)));
    }
}

// Rows of elements of type T, from and to rows of floats. Once for each type, whatever the steps.

/** Copies a row as floats. */
template <typename T>
HWY_NOINLINE void copyAsFloats(const T* row, ptrdiff_t length, float* out) {
    writeRow<Stores::kCached>(
        out, length, [=](auto d, ptrdiff_t x) __attribute__((always_inline)) { return loadFloats(d, row + x); });
}

/** Writes a row of sums of products with the taps of the layer's kernel. */
template <typename Taps>
void writeSmoothed(Taps taps, const LayerRecord& state, float* out, ptrdiff_t length) {
    withKernelSize(
        state.kernelSize, [&](auto size)
                              __attribute__((always_inline)) { writeFloatSums(taps, state.taps, size, out, length); });
}

/** Copies every step-th one of the pixels of a row, the first one included. */
template <int32_t kChannels>
HWY_NOINLINE void copyEvery(ptrdiff_t step, const float* row, ptrdiff_t pixels, float* out) {
    ptrdiff_t x = 0;
    if (kChannels == 1 && step == 2) {
        const hn::ScalableTag<float> d;
        constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(d));
        for (; x + 2 * kLanes <= pixels; x += 2 * kLanes, out += kLanes)
            hn::StoreU(hn::ConcatEven(d, hn::LoadU(d, row + x + kLanes), hn::LoadU(d, row + x)), d, out);
    }
    if (kChannels == 3) {  // with a float of the next pixel, which is overwritten
        const hn::Full128<float> d;
        for (; x + step < pixels; x += step, out += kChannels)
            hn::StoreU(hn::LoadU(d, row + x * kChannels), d, out);
    }
    for (; x < pixels; x += step, out += kChannels)
        __builtin_memcpy(out, row + x * kChannels, kChannels * sizeof(float));
}

/** left * (1 - fraction) + right * fraction */
template <typename D, typename V = hn::Vec<D>>
HWY_INLINE V interpolate(D d, V left, V right, V fraction) {
    return hn::Add(hn::Mul(left, hn::Sub(hn::Set(d, 1.0f), fraction)), hn::Mul(right, fraction));
}

/** Writes a row between two others. */
template <typename T>
HWY_NOINLINE void writeInterpolated(const float* above, const float* below, float fraction, T* out, ptrdiff_t length) {
    writeRow<Stores::kCached>(
        out, length, [=](auto results, ptrdiff_t begin) __attribute__((always_inline)) {
            return resultsOf(
                results, begin, [=](auto d, ptrdiff_t x) __attribute__((always_inline)) {
                    return interpolate(d, hn::LoadU(d, above + x), hn::LoadU(d, below + x), hn::Set(d, fraction));
                });
        });
}

/** Writes a row of floats. */
template <typename T>
HWY_NOINLINE void writeFloats(const float* floats, T* out, ptrdiff_t length) {
    writeRow<Stores::kCached>(
        out, length, [=](auto results, ptrdiff_t begin) __attribute__((always_inline)) {
            return resultsOf(
                results,
                begin, [=](auto d, ptrdiff_t x) __attribute__((always_inline)) { return hn::LoadU(d, floats + x); });
        });
}

/** Interpolates along a row of `sourceLength` elements. */
HWY_NOINLINE inline void interpolateAlong(const float* row, ptrdiff_t sourceLength, const LayerRecord& state,
                                          float* out, ptrdiff_t length) {
    const ptrdiff_t channels = state.kind.channels;
    const int32_t* const elements = state.elements;
    const float* const fractions = state.fractions;
    ptrdiff_t inside = length;  // results whose right neighbours there are
    while (inside > 0 && elements[inside - 1] + channels >= sourceLength)
        --inside;
    const auto single = [=](ptrdiff_t left, ptrdiff_t right, ptrdiff_t x) __attribute__((always_inline)) {
        const float fraction = fractions[x];
        out[x] = fraction == 0 ? row[left] : row[left] * (1.0f - fraction) + row[right] * fraction;
    };
    ptrdiff_t x = 0;
#if HWY_TARGET != HWY_SSSE3  // which has no gathers
    const hn::ScalableTag<float> d;
    const hn::RebindToSigned<decltype(d)> integers;
    for (constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(d)); x + kLanes <= inside; x += kLanes) {
        const auto places = hn::LoadU(integers, elements + x);
        const auto left = hn::GatherIndex(d, row, places), right = hn::GatherIndex(d, row + channels, places);
        const auto fraction = hn::LoadU(d, fractions + x);
        hn::StoreU(hn::IfThenElse(hn::Eq(fraction, hn::Zero(d)), left, interpolate(d, left, right, fraction)), d,
                   out + x);
    }
#endif
    for (; x < inside; ++x)
        single(elements[x], elements[x] + channels, x);
    for (; x < length; ++x) {
        const ptrdiff_t last = sourceLength - channels + x % channels, left = elements[x];
        single(HWY_MIN(left, last), HWY_MIN(left + channels, last), x);
    }
}

constexpr Border<float> kMirror{BorderReflect, false, false, false, false, 0};

/**
 * Rows of the source, smoothed and interpolated along the row in the order of the direction. Where every n-th smoothed
 * pixel is a result, only these are computed: each tap meets pixels n apart, which are copied together first.
 */
template <Direction kDirection, typename T, int32_t kChannels>
class LayerRow {
  public:
    /** `width` and `columns` are the widths of the source and of the interpolated image. */
    LayerRow(Scratch& scratch, const LayerRecord& state, Image<const T, kChannels> source, int32_t width,
             int32_t columns)
        : state_(state),
          source_(source),
          sourceLength_(ptrdiff_t{width} * kChannels),
          length_(ptrdiff_t{columns} * kChannels),
          reach_(ptrdiff_t{state.kernelSize / 2} * kChannels),
          ends_(scratch, kMirror, smoothedWidth(width, columns), state.kernelSize / 2, state.kernelSize / 2),
          extended_(scratch.take<float>(2 * reach_ + smoothedWidth(width, columns) * ptrdiff_t{kChannels})),
          plain_(scratch.take<float>(sourceLength_ + (2 * reach_ + kMostRate * kChannels))),
          tapRows_(scratch.take<const float*>(state.kernelSize)) {
        for (int32_t k = 0; k < state.kernelSize && state.wholeRate > 0; ++k)
            tapRows_[k] = everyFrom(k % state.wholeRate) + ptrdiff_t{k / state.wholeRate} * kChannels;
    }

    HWY_NOINLINE void write(int32_t y, float* out) const {
        float* const middle = extended_ + reach_;
        if constexpr (kDirection == Direction::kDown) {
            copyAsFloats(source_.row(y), sourceLength_, middle);
            if (state_.wholeRate > 0)
                return smoothEvery(out);
            smooth(sourceLength_, plain_);
            interpolateAlong(plain_, sourceLength_, state_, out, length_);
        } else {
            copyAsFloats(source_.row(y), sourceLength_, plain_);
            interpolateAlong(plain_, sourceLength_, state_, middle, length_);
            smooth(length_, out);
        }
    }

  private:
    static constexpr int32_t smoothedWidth(int32_t width, int32_t columns) {
        return kDirection == Direction::kDown ? width : columns;
    }

    void extend(ptrdiff_t length) const {
        const float* const middle = extended_ + reach_;
        ends_.copyLeft(middle, extended_);
        ends_.copyRight(middle, extended_ + reach_ + length);
    }

    void smooth(ptrdiff_t length, float* out) const {
        extend(length);
        writeSmoothed(AnyStrideTaps<float>{extended_, kChannels}, state_, out, length);
    }

    /** Smooths at every n-th pixel, from the row in the middle of extended_. */
    void smoothEvery(float* out) const {
        extend(sourceLength_);
        for (int32_t first = 0; first < state_.wholeRate; ++first)
            if (const ptrdiff_t pixels = extendedPixels() - first; pixels > 0)
                copyEvery<kChannels>(state_.wholeRate, extended_ + first * kChannels, pixels, everyFrom(first));
        writeSmoothed(RowTaps<float>{tapRows_}, state_, out, length_);
    }

    ptrdiff_t extendedPixels() const { return (sourceLength_ + 2 * reach_) / kChannels; }

    /** Where every n-th pixel from this one on is copied to. */
    float* everyFrom(int32_t first) const {
        return plain_ + first * (extendedPixels() / state_.wholeRate + 1) * ptrdiff_t{kChannels};
    }

    const LayerRecord& state_;
    Image<const T, kChannels> source_;
    ptrdiff_t sourceLength_, length_, reach_;  // in elements
    ExtendedRow<float, kChannels> ends_;
    float *extended_, *plain_;
    const float** tapRows_;
};

/** Smooths across rows, of which a source gives `height`. */
template <typename Source>
class SmoothedRows {
  public:
    SmoothedRows(Scratch& scratch, const LayerRecord& state, Source& source, int32_t height, ptrdiff_t length)
        : state_(state),
          source_(source),
          height_(height),
          length_(length),
          ring_(scratch, state.kernelSize, length),
          sums_(scratch.take<float>(length)) {}

    /** Calls go down the rows. */
    template <typename T>
    HWY_NOINLINE void write(int32_t y, T* out) {
        const int64_t reach = state_.kernelSize / 2, end = y + reach + 1;
        for (int64_t row = HWY_MAX(end_, y - reach); row < end; ++row) {
            ring_.advance();
            source_.write(borderIndex(BorderReflect, row, height_), ring_.bottom());
        }
        end_ = end;
        const RowTaps<float> taps{ring_.rows()};
        if constexpr (std::is_same_v<T, float>) {
            writeSmoothed(taps, state_, out, length_);
        } else {
            writeSmoothed(taps, state_, sums_, length_);
            writeFloats(sums_, out, length_);
        }
    }

  private:
    const LayerRecord& state_;
    Source& source_;
    int32_t height_;
    ptrdiff_t length_;
    RowRing<float> ring_;
    int64_t end_ = INT64_MIN;  // of the rows in the ring
    float* sums_;
};

/** Interpolates between rows, of which a source gives `height`. */
template <Direction kDirection, typename Source>
class InterpolatedRows {
  public:
    InterpolatedRows(Scratch& scratch, const LayerRecord& state, Source& source, int32_t height, ptrdiff_t length)
        : rate_(state.rate),
          source_(source),
          height_(height),
          length_(length),
          rows_{scratch.take<float>(length), scratch.take<float>(length)} {}

    template <typename T>
    void write(int32_t y, T* out) {
        const auto [whole, fraction] = LayerPosition::of(kDirection, y, rate_, height_);
        if (fraction != 0) {
            const float* const above = row(whole);
            const float* const below = whole < height_ - 1 ? row(whole + 1) : above;
            return writeInterpolated(above, below, fraction, out, length_);
        }
        if constexpr (kDirection == Direction::kDown)
            if (inPlace_[whole & 1] != whole)
                return source_.write(whole, out);  // the results below take other rows
        writeFloats(row(whole), out, length_);
    }

  private:
    /** Neighbouring rows have a place each. */
    const float* row(int32_t y) {
        const int32_t place = y & 1;
        if (inPlace_[place] != y)
            source_.write(y, rows_[place]);
        inPlace_[place] = y;
        return rows_[place];
    }

    float rate_;
    Source& source_;
    int32_t height_;
    ptrdiff_t length_;
    float* rows_[2];
    int32_t inPlace_[2] = {-1, -1};
};

/** Bytes of scratch memory for the steps from sources of `width` pixels to interpolated images of `columns`. */
constexpr int64_t layerScratchBytes(const LayerKind& kind, int32_t width, int32_t columns, int32_t kernelSize) {
    constexpr int64_t kFloat = sizeof(float), kSpare = Scratch::kAlignment;
    const auto row = [&](int64_t pixels) { return pixels * kind.channels * kFloat + kSpare; };
    const int64_t wider = HWY_MAX(width, columns), taps = kernelSize;
    const int64_t alongRows = taps * int64_t{sizeof(int32_t)} + kSpare + row(wider + taps) +
                              row(width + taps + int64_t{kMostRate}) + taps * int64_t{sizeof(float*)} + kSpare;
    const int64_t smoothed = taps * (int64_t{sizeof(float*)} + row(columns)) + kSpare + row(columns);
    return kSpare + alongRows + smoothed + 2 * row(columns);
}

}  // namespace VEKCV_VARIANT
