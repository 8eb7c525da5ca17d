// The same component of the mixtures of several pixels, in vectors with a lane for each pixel.
#pragma once

#include "gaussian_model.h"
#include "strided_groups.h"

namespace VEKCV_VARIANT {

/** At most four lanes: wider vectors divide no faster, and more pixels have fewer components in common. */
using PixelLanes = hn::CappedTag<double, 4>;
constexpr auto kPixelLanes = static_cast<int32_t>(hn::MaxLanes(PixelLanes()));
using LaneVec = hn::Vec<PixelLanes>;
using LaneMask = hn::Mask<PixelLanes>;

/**
 * Two neighbouring doubles of each pixel of a group, of which the second pixel's are `stride` behind the first one's:
 * the first ones to `a`, the second ones to `b`.
 */
HWY_INLINE void loadFields(const double* first, ptrdiff_t stride, LaneVec& a, LaneVec& b) {
    const PixelLanes d;
    const auto even = loadGroups(d, first, 2 * stride), odd = loadGroups(d, first + stride, 2 * stride);
    a = hn::InterleaveLower(d, even, odd);
    b = hn::InterleaveUpper(d, even, odd);
}

HWY_INLINE void storeFields(double* first, ptrdiff_t stride, LaneVec a, LaneVec b) {
    const PixelLanes d;
    storeGroups(d, hn::InterleaveLower(d, a, b), first, 2 * stride);
    storeGroups(d, hn::InterleaveUpper(d, a, b), first + stride, 2 * stride);
}

/** A component of each pixel of a group. */
template <int32_t kChannels>
struct ComponentLanes {
    using Component = GaussianComponent<kChannels>;
    static_assert(sizeof(Component) % (2 * sizeof(double)) == 0 && offsetof(Component, weight) == sizeof(double) &&
                  offsetof(Component, variance) == 2 * sizeof(double) &&
                  offsetof(Component, mean) == 3 * sizeof(double));

    LaneVec count, weight, variance, mean[kChannels];

    /** The doubles from one pixel's component to the next one's. */
    static constexpr ptrdiff_t kStride = kComponents * ptrdiff_t{sizeof(Component) / sizeof(double)};
    /** An integer below 2^52 plus this number, as a double, has the bits of the integer in its low part. */
    static constexpr double kIntegers = 4503599627370496;

    HWY_INLINE static ComponentLanes load(const Component* first) {
        const PixelLanes d;
        const hn::RebindToUnsigned<PixelLanes> integers;
        const auto* const doubles = reinterpret_cast<const double*>(first);
        ComponentLanes all;
        loadFields(doubles, kStride, all.count, all.weight);
        const auto bias = hn::Set(d, kIntegers);
        // Only the low half is the count.
        const auto low = hn::And(hn::BitCast(integers, all.count), hn::Set(integers, 0xFFFFFFFFu));
        all.count = hn::Sub(hn::BitCast(d, hn::Or(low, hn::BitCast(integers, bias))), bias);
        loadFields(doubles + 2, kStride, all.variance, all.mean[0]);
        if constexpr (kChannels == 3)
            loadFields(doubles + 4, kStride, all.mean[1], all.mean[2]);
        return all;
    }

    HWY_INLINE void store(Component* first) const {
        const PixelLanes d;
        const auto bias = hn::Set(d, kIntegers);
        auto* const doubles = reinterpret_cast<double*>(first);
        storeFields(doubles, kStride, hn::Xor(hn::Add(count, bias), bias), weight);
        storeFields(doubles + 2, kStride, variance, mean[0]);
        if constexpr (kChannels == 3)
            storeFields(doubles + 4, kStride, mean[1], mean[2]);
    }

    /** Where the mask is set the fields of another component. */
    HWY_INLINE void setWhere(LaneMask mask, const ComponentLanes& other) {
        count = hn::IfThenElse(mask, other.count, count);
        weight = hn::IfThenElse(mask, other.weight, weight);
        variance = hn::IfThenElse(mask, other.variance, variance);
        for (int32_t c = 0; c < kChannels; ++c)
            mean[c] = hn::IfThenElse(mask, other.mean[c], mean[c]);
    }
};

/** The pixels of a group as doubles, a vector for each channel. */
template <int32_t kChannels>
HWY_INLINE void loadPixelLanes(const uint8_t* pixels, LaneVec (&x)[kChannels]) {
    const PixelLanes d;
    const hn::Rebind<int32_t, PixelLanes> integers;
    const hn::Rebind<uint8_t, PixelLanes> bytes;
    if constexpr (kChannels == 1) {
        x[0] = hn::PromoteTo(d, hn::PromoteTo(integers, hn::LoadU(bytes, pixels)));
    } else {
        HWY_ALIGN int32_t values[kChannels][kPixelLanes];
        for (int32_t lane = 0; lane < kPixelLanes; ++lane)
            for (int32_t c = 0; c < kChannels; ++c)
                values[c][lane] = pixels[lane * kChannels + c];
        for (int32_t c = 0; c < kChannels; ++c)
            x[c] = hn::PromoteTo(d, hn::Load(integers, values[c]));
    }
}

/** Numbers from 0 to 255 without their fractions. */
HWY_INLINE void storeByteLanes(LaneVec v, uint8_t* bytes, ptrdiff_t stride = 1) {
    const hn::Rebind<int32_t, PixelLanes> integers;
    const hn::Rebind<uint8_t, PixelLanes> narrow;
    const auto values = hn::DemoteTo(narrow, hn::DemoteTo(integers, v));
    if (stride == 1) {
        hn::StoreU(values, narrow, bytes);
    } else {
        uint8_t lanes[kPixelLanes];
        hn::StoreU(values, narrow, lanes);
        for (int32_t lane = 0; lane < kPixelLanes; ++lane)
            bytes[lane * stride] = lanes[lane];
    }
}

}  // namespace VEKCV_VARIANT
