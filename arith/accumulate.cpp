// Accumulation of image sequences in float images.
#include <array>

#include "bind.h"
#include "check.h"
#include "pixelwise.h"

namespace VEKCV_VARIANT {
namespace {

struct Add {
    template <typename V>
    HWY_INLINE V operator()(V accumulator, V source) const {
        return hn::Add(accumulator, source);
    }
};

struct AddSquare {
    template <typename V>
    HWY_INLINE V operator()(V accumulator, V source) const {
        return hn::Add(accumulator, hn::Mul(source, source));
    }
};

struct AddWeighted {
    float alpha;

    template <typename V>
    HWY_INLINE V operator()(V accumulator, V source) const {
        return hn::Add(hn::Mul(hn::Sub(source, accumulator), hn::Set(hn::DFromV<V>(), alpha)), accumulator);
    }
};

/** What a pixel contributes, as a float: the value of one source, or the product of two. */
template <typename D, typename T>
HWY_INLINE hn::Vec<D> term(D d, const T* source) {
    return loadFloats(d, source);
}

/** Products of bytes, formed in 16 bits, where they are exact and a zero has no sign. */
template <typename V>
HWY_INLINE auto byteProducts(V a, V b) {
    const hn::Rebind<hwy::MakeWide<hn::TFromV<V>>, hn::DFromV<V>> wide;
    return hn::Mul(hn::PromoteTo(wide, a), hn::PromoteTo(wide, b));
}

template <typename D, typename V>
HWY_INLINE hn::Vec<D> floatsFrom(D d, V words) {
    return hn::ConvertTo(d, hn::PromoteTo(hn::Rebind<int32_t, D>(), words));
}

template <typename D, typename T>
HWY_INLINE hn::Vec<D> term(D d, const T* a, const T* b) {
    if constexpr (sizeof(T) == 1) {
        const hn::Rebind<T, D> bytes;
        return floatsFrom(d, byteProducts(hn::LoadU(bytes, a), hn::LoadU(bytes, b)));
    } else {
        return hn::Mul(loadFloats(d, a), loadFloats(d, b));
    }
}

/**
 * Whether there is a faster way to the products of a batch: with SSSE3, where widening bytes takes several
 * instructions, one load and one multiplication of 16 bits serve several vectors of floats.
 */
template <typename... T>
constexpr bool kHasBatchOfProducts = HWY_TARGET == HWY_SSSE3 && sizeof...(T) == 2 && ((sizeof(T) == 1) && ...);

template <typename D, typename T>
HWY_INLINE std::array<hn::Vec<D>, kBatchVectors> productsOfBatch(D d, const T* a, const T* b) {
    const hn::Repartition<T, D> bytes;
    const auto lower = [](auto v) { return hn::LowerHalf(v); };
    const auto upper = [](auto v) { return hn::UpperHalf(hn::Half<hn::DFromV<decltype(v)>>(), v); };
    const auto v = hn::LoadU(bytes, a), w = hn::LoadU(bytes, b);
    const auto first = byteProducts(lower(v), lower(w)), second = byteProducts(upper(v), upper(w));
    return {floatsFrom(d, lower(first)), floatsFrom(d, upper(first)), floatsFrom(d, lower(second)),
            floatsFrom(d, upper(second))};
}

/** The rules sum = op(sum, term of the sources), row by row. */
template <typename Op, typename... T>
auto accumulation(Op op, Image<float> sum, Image<const T>... in) {
    return [=](int32_t y) {
        const auto rule = [=, a = sum.row(y), ... s = in.row(y)](auto d, ptrdiff_t x) {
            return op(hn::LoadU(d, a + x), term(d, (s + x)...));
        };
        if constexpr (kHasBatchOfProducts<T...>)
            return BatchRule{rule, [=, a = sum.row(y), ... s = in.row(y)](auto d, ptrdiff_t x) {
                                 auto sums = productsOfBatch(d, (s + x)...);
                                 for (size_t i = 0; i < sums.size(); ++i)
                                     sums[i] = op(hn::LoadU(d, a + x + i * hn::MaxLanes(d)), sums[i]);
                                 return sums;
                             }};
        else
            return rule;
    };
}

template <typename Op, typename... Sources>
Status write(Op op, Image<float> sum, RoiSize roi, Sources... in) {
    if (Status status = Check().pointers(in..., sum).roi(roi).steps(roi.width, in..., sum))
        return status;
    writePixels<0>(roi, kParallelFrom, accumulation(op, sum, in...), sum, in...);
    return StatusOk;
}

template <typename Op, typename... Sources>
Status writeMasked(Op op, Image<float> sum, Image<const uint8_t> mask, RoiSize roi, Sources... in) {
    if (Status status = Check().pointers(in..., mask, sum).roi(roi).steps(roi.width, in..., mask, sum))
        return status;
    writeMaskedPixels(roi, kParallelFrom, accumulation(op, sum, in...), sum, mask, in...);
    return StatusOk;
}

/** Parameters are those of the operation. */
template <typename Op, typename T, typename... Parameters>
Status accumulate(const T* source, int32_t sourceStep, float* accumulator, int32_t accumulatorStep, RoiSize roi,
                  Parameters... parameters) {
    return write(Op{parameters...}, {accumulator, accumulatorStep}, roi, Image<const T>{source, sourceStep});
}

template <typename Op, typename T, typename... Parameters>
Status accumulateMasked(const T* source, int32_t sourceStep, const uint8_t* mask, int32_t maskStep, float* accumulator,
                        int32_t accumulatorStep, RoiSize roi, Parameters... parameters) {
    return writeMasked(Op{parameters...}, {accumulator, accumulatorStep}, {mask, maskStep}, roi,
                       Image<const T>{source, sourceStep});
}

template <typename T>
Status accumulateProduct(const T* source1, int32_t source1Step, const T* source2, int32_t source2Step,
                         float* accumulator, int32_t accumulatorStep, RoiSize roi) {
    return write(Add(), {accumulator, accumulatorStep}, roi, Image<const T>{source1, source1Step},
                 Image<const T>{source2, source2Step});
}

template <typename T>
Status accumulateProductMasked(const T* source1, int32_t source1Step, const T* source2, int32_t source2Step,
                               const uint8_t* mask, int32_t maskStep, float* accumulator, int32_t accumulatorStep,
                               RoiSize roi) {
    return writeMasked(Add(), {accumulator, accumulatorStep}, {mask, maskStep}, roi,
                       Image<const T>{source1, source1Step}, Image<const T>{source2, source2Step});
}

/** destination = (source1 - source2) * alpha + source2, on the calling thread. */
Status weightedSum(const float* source1, int32_t source1Step, const float* source2, int32_t source2Step,
                   float* destination, int32_t destinationStep, RoiSize roi, float alpha) {
    const Image<const float> in1{source1, source1Step}, in2{source2, source2Step};
    const Image<float> out{destination, destinationStep};
    if (Status status = Check().pointers(in1, in2, out).roi(roi).steps(roi.width, in1, in2, out))
        return status;
    const auto rules = [=, op = AddWeighted{alpha}](int32_t y) {
        return [=, s1 = in1.row(y), s2 = in2.row(y)](auto d, ptrdiff_t x) {
            return op(hn::LoadU(d, s2 + x), hn::LoadU(d, s1 + x));
        };
    };
    writePixels<12>(roi, ParallelFrom::never(), rules, out, in1, in2);
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiAdd_8u32f_C1IR, accumulate<Add>);
VEKCV_BIND(vekiAdd_8s32f_C1IR, accumulate<Add>);
VEKCV_BIND(vekiAdd_16u32f_C1IR, accumulate<Add>);
VEKCV_BIND(vekiAdd_8u32f_C1IMR, accumulateMasked<Add>);
VEKCV_BIND(vekiAdd_8s32f_C1IMR, accumulateMasked<Add>);
VEKCV_BIND(vekiAdd_16u32f_C1IMR, accumulateMasked<Add>);
VEKCV_BIND(vekiAdd_32f_C1IMR, accumulateMasked<Add>);

VEKCV_BIND(vekiAddSquare_8u32f_C1IR, accumulate<AddSquare>);
VEKCV_BIND(vekiAddSquare_8s32f_C1IR, accumulate<AddSquare>);
VEKCV_BIND(vekiAddSquare_16u32f_C1IR, accumulate<AddSquare>);
VEKCV_BIND(vekiAddSquare_32f_C1IR, accumulate<AddSquare>);
VEKCV_BIND(vekiAddSquare_8u32f_C1IMR, accumulateMasked<AddSquare>);
VEKCV_BIND(vekiAddSquare_8s32f_C1IMR, accumulateMasked<AddSquare>);
VEKCV_BIND(vekiAddSquare_16u32f_C1IMR, accumulateMasked<AddSquare>);
VEKCV_BIND(vekiAddSquare_32f_C1IMR, accumulateMasked<AddSquare>);

VEKCV_BIND(vekiAddProduct_8u32f_C1IR, accumulateProduct);
VEKCV_BIND(vekiAddProduct_8s32f_C1IR, accumulateProduct);
VEKCV_BIND(vekiAddProduct_16u32f_C1IR, accumulateProduct);
VEKCV_BIND(vekiAddProduct_32f_C1IR, accumulateProduct);
VEKCV_BIND(vekiAddProduct_8u32f_C1IMR, accumulateProductMasked);
VEKCV_BIND(vekiAddProduct_8s32f_C1IMR, accumulateProductMasked);
VEKCV_BIND(vekiAddProduct_16u32f_C1IMR, accumulateProductMasked);
VEKCV_BIND(vekiAddProduct_32f_C1IMR, accumulateProductMasked);

VEKCV_BIND(vekiAddWeighted_8u32f_C1IR, accumulate<AddWeighted>);
VEKCV_BIND(vekiAddWeighted_8s32f_C1IR, accumulate<AddWeighted>);
VEKCV_BIND(vekiAddWeighted_16u32f_C1IR, accumulate<AddWeighted>);
VEKCV_BIND(vekiAddWeighted_32f_C1IR, accumulate<AddWeighted>);
VEKCV_BIND(vekiAddWeighted_8u32f_C1IMR, accumulateMasked<AddWeighted>);
VEKCV_BIND(vekiAddWeighted_8s32f_C1IMR, accumulateMasked<AddWeighted>);
VEKCV_BIND(vekiAddWeighted_16u32f_C1IMR, accumulateMasked<AddWeighted>);
VEKCV_BIND(vekiAddWeighted_32f_C1IMR, accumulateMasked<AddWeighted>);
VEKCV_BIND(vekiAddWeighted_32f_C1R, weightedSum);
}  // namespace VEKCV_VARIANT
