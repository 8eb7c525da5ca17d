// Inpainting: pixels restored from those around them.
#include "bind.h"
#include "check.h"
#include "float_modes.h"
#include "fold_halves.h"
#include "inpaint_state.h"
#include "promote.h"
#include "rest.h"

namespace VEKCV_VARIANT {
namespace {

using Lanes = hn::CappedTag<float, kTapLanes>;
constexpr auto kLanes = static_cast<int32_t>(hn::MaxLanes(Lanes()));

/** kTapLanes running sums. */
class TapSums {
  public:
    HWY_INLINE TapSums() {
        for (auto& sums : sums_)
            sums = hn::Zero(Lanes());
    }
    HWY_INLINE void add(int32_t lane, hn::Vec<Lanes> v) {
        auto& sums = sums_[lane / kLanes];
        sums = hn::Add(sums, v);
    }
    HWY_INLINE float total() const {
        auto all = sums_[0];
        if constexpr (kLanes < kTapLanes)
            all = hn::Add(all, sums_[1]);
        return foldHalves(Lanes(), all, [](auto lower, auto upper) { return hn::Add(lower, upper); });
    }

  private:
    static_assert(kTapLanes <= 2 * kLanes);
    hn::Vec<Lanes> sums_[kTapLanes / kLanes];
};

/** The least factor of the direction, and the least sum of weights that gives a pixel a value other than 0. */
constexpr float kLeastAlong = 2.5e-25F, kLeastWeight = 1e-4F;

/** The weighted means of the channels of the pixels around an unknown one. */
template <Method kMethod, int32_t kChannels>
HWY_INLINE void restore(const InpaintRecord& state, const Unknown& pixel, uint8_t (&result)[kChannels]) {
    const Lanes d;
    const auto one = hn::Set(d, 1), time = hn::Set(d, pixel.time);
    const auto slopeX = hn::Set(d, pixel.slopeX), slopeY = hn::Set(d, pixel.slopeY);
    TapSums weights, sums[kChannels];
    for (const Taps *taps = state.taps, *const end = taps + state.tapsCount; taps < end; ++taps) {
        const ptrdiff_t offset = ptrdiff_t{pixel.offset} + taps->offset;
#pragma GCC unroll 2
        for (int32_t lane = 0; lane < kTapLanes; lane += kLanes) {
            auto weight = hn::LoadU(d, taps->factors + lane);
            if constexpr (kMethod == Method::kDirection) {
                const auto along = hn::Abs(
                    hn::Add(hn::Mul(slopeX, hn::LoadU(d, taps->dx + lane)), hn::Mul(slopeY, hn::Set(d, taps->dy))));
                weight = hn::Mul(weight, hn::Max(along, hn::Set(d, kLeastAlong)));
            }
            const auto difference = hn::Abs(hn::Sub(time, hn::LoadU(d, state.times + offset + lane)));
            weight = hn::Div(weight, hn::Add(one, difference));
            weights.add(lane, weight);
#pragma GCC unroll 3
            for (int32_t c = 0; c < kChannels; ++c)
                sums[c].add(lane, hn::Mul(weight, loadFloats(d, state.plane(c) + offset + lane)));
        }
    }
    const float total = weights.total();
    for (int32_t c = 0; c < kChannels; ++c)
        result[c] = total < kLeastWeight ? uint8_t{0} : static_cast<uint8_t>(sums[c].total() / total + 0.5F);
}

/** Copies a row of pixels to the planes, from a position on. */
template <int32_t kChannels>
void splitRow(const InpaintRecord& state, const uint8_t* pixels, ptrdiff_t position) {
    if constexpr (kChannels == 1) {
        __builtin_memcpy(state.plane(0) + position, pixels, static_cast<size_t>(state.part.width));
    } else {
        uint8_t *const first = state.plane(0) + position, *const second = state.plane(1) + position,
                       *const third = state.plane(2) + position;
        const auto split = [=](auto d, ptrdiff_t x) __attribute__((always_inline)) {
            hn::Vec<decltype(d)> a, b, c;
            hn::LoadInterleaved3(d, pixels + 3 * x, a, b, c);
            hn::StoreU(a, d, first + x);
            hn::StoreU(b, d, second + x);
            hn::StoreU(c, d, third + x);
        };
        const hn::CappedTag<uint8_t, 16> d;
        const ptrdiff_t width = state.part.width;
        if (!forOverlapping<16>(d, 0, 0, width, split))
            for (ptrdiff_t x = 0; x < width; ++x) {
                first[x] = pixels[3 * x];
                second[x] = pixels[3 * x + 1];
                third[x] = pixels[3 * x + 2];
            }
    }
}

template <Method kMethod, int32_t kChannels>
HWY_NOINLINE void restoreAll(const InpaintRecord& state, Image<uint8_t, kChannels> image) {
    const ImageRect part = state.part;
    for (int32_t y = 0; y < part.height; ++y)
        splitRow<kChannels>(state, image.row(ptrdiff_t{part.y} + y) + ptrdiff_t{part.x} * kChannels,
                            state.offsetOf(part.x, part.y + y));
    const Unknown *const begin = state.unknowns, *const end = begin + state.unknownCount;
    for (const Unknown* pixel = begin; pixel < end; ++pixel)
        state.times[pixel->offset] = kNever;
    for (const Unknown* pixel = begin; pixel < end; ++pixel) {
        uint8_t value[kChannels];
        restore<kMethod>(state, *pixel, value);
        uint8_t* const out = image.row(pixel->y) + ptrdiff_t{pixel->x} * kChannels;
        for (int32_t c = 0; c < kChannels; ++c)
            state.plane(c)[pixel->offset] = out[c] = value[c];
        state.times[pixel->offset] = pixel->time;
    }
}

template <int32_t kChannels>
Status inpaint(const uint8_t* source, int32_t sourceStep, uint8_t* destination, int32_t destinationStep, RoiSize roi,
               InpaintState* inpaintState) {
    const Image<const uint8_t, kChannels> in{source, sourceStep};
    const Image<uint8_t, kChannels> out{destination, destinationStep};
    const auto* const state = reinterpret_cast<const InpaintRecord*>(inpaintState);
    if (Status status = Check().pointers(in, out, state).roi(roi))
        return status;
    if (Status status = Check()
                            .roiOfState(roi, state->roi)
                            .steps(roi.width, in, out)
                            .require(state->channels == kChannels, StatusBadArgument))
        return status;
    if (source != destination)
        for (int32_t y = 0; y < roi.height; ++y)
            __builtin_memcpy(out.row(y), in.row(y), static_cast<size_t>(roi.width) * kChannels);
    if (state->unknownCount > 0)
        inUsualModes([=] {
            if (state->method == Method::kDirection)
                restoreAll<Method::kDirection>(*state, out);
            else
                restoreAll<Method::kDistance>(*state, out);
        });
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiInpaint_8u_C1R, inpaint<1>);
VEKCV_BIND(vekiInpaint_8u_C3R, inpaint<3>);
}  // namespace VEKCV_VARIANT
