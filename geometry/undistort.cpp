// Images without the distortion of a lens, and maps of it.
#include <hwy/cache_control.h>

#include "bind.h"
#include "check.h"
#include "lens.h"
#include "mask_bits.h"
#include "parallel.h"
#include "promote.h"
#include "rest.h"
#include "rounding.h"
#include "squares.h"
#include "stores.h"
#include "work_buffer.h"

namespace VEKCV_VARIANT {
namespace {

/** Writes the lowest bytes of the lanes of three vectors as pixels of three channels. */
template <typename D>
HWY_INLINE void storeTriples(D /*d*/, hn::Vec<D> first, hn::Vec<D> second, hn::Vec<D> third, uint8_t* pixels) {
    if constexpr (hn::MaxLanes(D()) > 4) {
        const hn::Half<D> half;
        const auto lower = [=](hn::Vec<D> v) { return hn::LowerHalf(half, v); };
        const auto upper = [=](hn::Vec<D> v) { return hn::UpperHalf(half, v); };
        storeTriples(half, lower(first), lower(second), lower(third), pixels);
        storeTriples(half, upper(first), upper(second), upper(third), pixels + 3 * ptrdiff_t{hn::MaxLanes(half)});
    } else {
        constexpr uint8_t k0 = 0x80;  // gives 0
        alignas(16) static constexpr uint8_t kTriples[] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, k0, k0, k0, k0};
        const hn::Repartition<uint8_t, D> bytes;
        const hn::Half<decltype(bytes)> eight;
        const hn::Half<decltype(eight)> four;
        const auto words = hn::Or(first, hn::Or(hn::ShiftLeft<8>(second), hn::ShiftLeft<16>(third)));
        const auto triples = hn::TableLookupBytesOr0(hn::BitCast(bytes, words), hn::Load(bytes, kTriples));
        hn::StoreU(hn::LowerHalf(eight, triples), eight, pixels);
        hn::StoreU(hn::LowerHalf(four, hn::UpperHalf(eight, triples)), four, pixels + 8);
    }
}

/** Writes the pixels of a vector whose bits are set; each channel is a vector of floats or 32-bit integers. */
template <int32_t kChannels, typename T, typename D>
HWY_INLINE void storePixels(D d, const hn::Vec<D> (&channels)[kChannels], uint64_t bits, T* pixels) {
    constexpr size_t kLanes = hn::MaxLanes(D());
    if (bits == (uint64_t{1} << kLanes) - 1) {
        const hn::Rebind<T, D> narrow;
        const auto narrowed = [=](hn::Vec<D> v) __attribute__((always_inline)) {
            if constexpr (sizeof(T) == 4)
                return v;
            else
                return hn::DemoteTo(narrow, v);
        };
        if constexpr (kChannels == 1)
            return hn::StoreU(narrowed(channels[0]), narrow, pixels);
        else if constexpr (sizeof(T) == 1 && kLanes >= 4)
            return storeTriples(d, channels[0], channels[1], channels[2], pixels);
        else if constexpr (kLanes * sizeof(T) >= 16)  // of shorter vectors Highway needs BMI2 with AVX-512
            return hn::StoreInterleaved3(narrowed(channels[0]), narrowed(channels[1]), narrowed(channels[2]), narrow,
                                         pixels);
    }
    HWY_ALIGN hn::TFromD<D> elements[kChannels][kLanes];
    for (int32_t c = 0; c < kChannels; ++c)
        hn::Store(channels[c], d, elements[c]);
    for (; bits != 0; bits &= bits - 1) {
        const auto i = static_cast<ptrdiff_t>(__builtin_ctzll(bits));
        for (int32_t c = 0; c < kChannels; ++c)
            pixels[i * kChannels + c] = static_cast<T>(elements[c][i]);
    }
}

/** Writes a row of an image, but for pixels that lie outside the source. */
template <typename Pairs, typename T, int32_t kChannels>
HWY_INLINE void undistortRow(const LensRow& row, const Pairs& source, RoiSize roi, T* out) {
    const LensRow lens = row;  // copies stay in registers: no store can change them
    const Pairs pairs = source;
    const auto right = static_cast<float>(roi.width - 1), bottom = static_cast<float>(roi.height - 1);
    const auto write = [=](auto d, ptrdiff_t x) __attribute__((always_inline)) {
        using V = hn::Vec<decltype(d)>;
        using Pair = typename Pairs::Pair;
        const hn::RebindToSigned<decltype(d)> integers;
        using IsFloat = std::is_same<T, float>;
        const std::conditional_t<IsFloat::value, decltype(d), decltype(integers)> results;
        const auto places = lens.radial(d, x);
        const auto isWithin = [=](V place, float end) __attribute__((always_inline)) {
            return hn::And(hn::Ge(place, hn::Zero(d)), hn::Lt(place, hn::Set(d, end)));
        };
        const auto isInside = hn::And(isWithin(places.x, right), isWithin(places.y, bottom));
        const uint64_t bits = maskBits(d, isInside);
        if (bits == 0)
            return;
        const V xs = hn::IfThenElseZero(isInside, places.x), ys = hn::IfThenElseZero(isInside, places.y);
        const auto columns = truncatedIntegers(integers, xs), rows = truncatedIntegers(integers, ys);
        hn::Vec<hn::RebindToUnsigned<decltype(d)>> upper[Pair::kWords], lower[Pair::kWords];
        pairs.read(d, columns, rows, upper, lower);
        const V one = hn::Set(d, 1), rightPart = hn::Sub(xs, hn::ConvertTo(d, columns)),
                lowerPart = hn::Sub(ys, hn::ConvertTo(d, rows)), leftPart = hn::Sub(one, rightPart),
                upperPart = hn::Sub(one, lowerPart);
        hn::Vec<decltype(results)> channels[kChannels];
#pragma GCC unroll 3
        for (int32_t c = 0; c < kChannels; ++c) {
            const auto product = [=](V value, V part, V otherPart) __attribute__((always_inline)) {
                return hn::Mul(hn::Mul(value, part), otherPart);
            };
            V sum = product(elementOf<Pair>(d, upper, c), leftPart, upperPart);
            sum = hn::Add(sum, product(elementOf<Pair>(d, upper, c + kChannels), rightPart, upperPart));
            sum = hn::Add(sum, product(elementOf<Pair>(d, lower, c), leftPart, lowerPart));
            sum = hn::Add(sum, product(elementOf<Pair>(d, lower, c + kChannels), rightPart, lowerPart));
            if constexpr (IsFloat::value)
                channels[c] = sum;
            else
                channels[c] = truncatedIntegers(integers, hn::Add(sum, hn::Set(d, 0.5f)));
        }
        storePixels<kChannels>(results, channels, bits, out + x * kChannels);
    };
    constexpr size_t kLanes = hn::MaxLanes(typename Pairs::Tag());
    if (!forOverlapping<kLanes>(typename Pairs::Tag(), 0, 0, roi.width, write))
        forHalves(hn::Half<typename Pairs::Tag>(), 0, roi.width, write);
}

template <typename Pairs, typename T, int32_t kChannels>
void undistortRows(const Camera& camera, Image<const T, kChannels> in, Image<T, kChannels> out, RoiSize roi) {
    forRowStripes(roi, kParallelFrom, [=](int32_t first, int32_t rows) {
        for (int32_t y = first; y < first + rows; ++y)
            undistortRow<Pairs, T, kChannels>(LensRow(camera, y), Pairs{in, roi}, roi, out.row(y));
    });
}

template <int32_t kChannels, typename T>
Status undistort(const T* source, int32_t sourceStep, T* destination, int32_t destinationStep, RoiSize roi, float fx,
                 float fy, float cx, float cy, float k1, float k2, uint8_t* /*buffer*/) {
    const Image<const T, kChannels> in{source, sourceStep};
    const Image<T, kChannels> out{destination, destinationStep};
    if (Status status = Check()
                            .pointers(in, out)
                            .roi(roi)
                            .steps(roi.width, in, out)
                            .require(!isZero(fx) && !isZero(fy), StatusBadArgument))
        return status;
    const Camera camera{fx, fy, cx, cy, k1, k2};
    inUsualModes([&] {
        if constexpr (HWY_TARGET != HWY_SSSE3)
            if (GatheredPairs<T, kChannels>::canRead(in, roi))
                return undistortRows<GatheredPairs<T, kChannels>>(camera, in, out, roi);
        undistortRows<LoadedPairs<T, kChannels>>(camera, in, out, roi);
    });
    return StatusOk;
}

/** Stores a vector to an address that is a multiple of 16, past the caches. */
template <typename D>
HWY_INLINE void streamBlocks(D d, hn::Vec<D> v, hn::TFromD<D>* out) {
    if constexpr (sizeof(v.raw) == 16) {
        hn::Stream(v, d, out);
    } else {
        const hn::Half<D> half;
        streamBlocks(half, hn::LowerHalf(half, v), out);
        streamBlocks(half, hn::UpperHalf(half, v), out + ptrdiff_t{hn::MaxLanes(half)});
    }
}

template <Stores kStores, bool kIsTangential>
HWY_NOINLINE void mapRow(const LensRow& row, int32_t width, float* xs, float* ys) {
    const LensRow lens = row;  // a copy stays in registers: no store can change it
    forHalves(
        hn::ScalableTag<float>(), 0, width, [=](auto d, ptrdiff_t x) __attribute__((always_inline)) {
            const auto places = kIsTangential ? lens.tangential(d, x) : lens.radial(d, x);
            if constexpr (kStores == Stores::kStreaming && hn::MaxLanes(d) >= 4) {
                streamBlocks(d, places.x, xs + x);
                streamBlocks(d, places.y, ys + x);
            } else {
                hn::StoreU(places.x, d, xs + x);
                hn::StoreU(places.y, d, ys + x);
            }
        });
}

template <Stores kStores>
void writeMap(const Camera& camera, Image<float> xMap, Image<float> yMap, RoiSize roi) {
    const bool isTangential = !isZero(camera.p1) || !isZero(camera.p2);
    forRowStripes(roi, kParallelFrom, [=](int32_t first, int32_t rows) {
        for (int32_t y = first; y < first + rows; ++y)
            (isTangential ? mapRow<kStores, true> : mapRow<kStores, false>)(LensRow(camera, y), roi.width, xMap.row(y),
                                                                            yMap.row(y));
        if constexpr (kStores == Stores::kStreaming)
            hwy::FlushStream();
    });
}

Status createMap(float* xs, int32_t xStep, float* ys, int32_t yStep, RoiSize roi, float fx, float fy, float cx,
                 float cy, float k1, float k2, float p1, float p2, uint8_t* /*buffer*/) {
    const Image<float> xMap{xs, xStep}, yMap{ys, yStep};
    if (Status status = Check()
                            .pointers(xMap, yMap)
                            .roi(roi)
                            .steps(roi.width, xMap, yMap)
                            .require(!isZero(fx) && !isZero(fy), StatusBadArgument))
        return status;
    constexpr ParallelFrom kStreamFrom{131072};
    const bool isAligned = (reinterpret_cast<uintptr_t>(xs) | reinterpret_cast<uintptr_t>(ys) |
                            static_cast<uintptr_t>(xStep) | static_cast<uintptr_t>(yStep)) %
                               16 ==
                           0;
    const Camera camera{fx, fy, cx, cy, k1, k2, p1, p2};
    inUsualModes([&] {
        if (isAligned && kStreamFrom.isReachedBy(roi))
            writeMap<Stores::kStreaming>(camera, xMap, yMap, roi);
        else
            writeMap<Stores::kCached>(camera, xMap, yMap, roi);
    });
    return StatusOk;
}

int64_t bufferBytes(RoiSize roi) {
    return alignUp(int64_t{roi.width}, int64_t{4}) * 24 + 32;
}

}  // namespace

VEKCV_BIND(vekiUndistortGetSize, roiBufferSize<bufferBytes>);
VEKCV_BIND(vekiUndistortRadial_8u_C1R, undistort<1>);
VEKCV_BIND(vekiUndistortRadial_8u_C3R, undistort<3>);
VEKCV_BIND(vekiUndistortRadial_16u_C1R, undistort<1>);
VEKCV_BIND(vekiUndistortRadial_16u_C3R, undistort<3>);
VEKCV_BIND(vekiUndistortRadial_32f_C1R, undistort<1>);
VEKCV_BIND(vekiUndistortRadial_32f_C3R, undistort<3>);
VEKCV_BIND(vekiCreateMapCameraUndistort_32f_C1R, createMap);
}  // namespace VEKCV_VARIANT
