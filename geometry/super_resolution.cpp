// Super-resolution: what samples differ from an estimate of the image, and the gradient that follows from that.
#include "allocation.h"
#include "bind.h"
#include "check.h"
#include "float_modes.h"
#include "promote.h"

namespace VEKCV_VARIANT {
namespace {

using Lanes = hn::Full128<float>;
using Vector = hn::Vec<Lanes>;
constexpr ptrdiff_t kLanes = 4;

/** The record behind an SrhnState. */
struct SrhnRecord {
    int32_t size;  // of the blocks, in columns and rows
    float* psfs;   // entries of kEntryLength floats
};

/** The floats of a row of an entry: its coefficients, and a zero behind three of them. */
template <int32_t kSize>
constexpr ptrdiff_t kRowLength = kSize == 2 ? 2 : kLanes;
template <int32_t kSize>
constexpr ptrdiff_t kEntryLength = kRowLength<kSize>* kSize;

template <int32_t kSize>
Status initAlloc(SrhnState** state, const float* psfTable, int32_t count) {
    if (Status status = Check().pointers(state, psfTable).require(count >= 1, StatusSizeError))
        return status;
    auto record = Owned<SrhnRecord>::forObjects(1);
    if (!record)
        return StatusMemoryAllocation;
    record->size = kSize;
    record->psfs = Owned<float>::forObjects(count * int64_t{kEntryLength<kSize>}).keep();
    if (record->psfs == nullptr)
        return StatusMemoryAllocation;
    float* to = record->psfs;
    for (ptrdiff_t row = 0; row < ptrdiff_t{count} * kSize; ++row)
        for (ptrdiff_t column = 0; column < kRowLength<kSize>; ++column)
            *to++ = column < kSize ? *psfTable++ : 0;
    *state = reinterpret_cast<SrhnState*>(record.keep());
    return StatusOk;
}

Status freeState(SrhnState* state) {
    if (state == nullptr)
        return StatusNullPointer;
    const Owned<SrhnRecord> record(reinterpret_cast<SrhnRecord*>(state));
    release(record->psfs);
    return StatusOk;
}

/** Samples of an image, each of a block of its pixels under an entry of the table. */
template <int32_t kSize, typename T>
struct Samples {
    Image<T> image;
    const uint32_t* offsets;
    const uint16_t* psfIndex;

    /** The checks of a call with a state and more pointers. */
    template <typename... Pointers>
    Status check(int32_t count, const SrhnRecord* state, const Pointers*... pointers) const {
        constexpr int32_t kBytes = sizeof(T);
        if (Status status = Check()
                                .pointers(image, offsets, psfIndex, state, pointers...)
                                .require(count >= 1, StatusSizeError)
                                .require(image.step >= kSize * kBytes && image.step % kBytes == 0, StatusStepError))
            return status;
        return state->size == kSize ? StatusOk : StatusBadArgument;
    }

    /** In 32 bits an offset may exceed what a difference of pointers can tell. */
    HWY_INLINE Image<T> block(ptrdiff_t i) const {
        return {reinterpret_cast<T*>(reinterpret_cast<uintptr_t>(image.pixels) + uintptr_t{offsets[i]} * sizeof(T)),
                image.step};
    }
    HWY_INLINE const float* psf(ptrdiff_t i, const SrhnRecord& state) const {
        return state.psfs + psfIndex[i] * kEntryLength<kSize>;
    }
};

/** Pixels of a block by their coefficients: the four of 2 x 2, or the three of a row and a lane of no meaning. */
template <int32_t kSize>
HWY_INLINE Vector products(Image<const float> block, const float* psf, ptrdiff_t row) {
    const hn::Half<Lanes> half;
    const float* const pixels = block.row(row);
    const auto others = kSize == 2 ? hn::LoadU(half, block.row(1)) : hn::Set(half, pixels[kSize - 1]);
    return hn::Mul(hn::Combine(Lanes(), others, hn::LoadU(half, pixels)), hn::LoadU(Lanes(), psf + row * kLanes));
}

/** What the estimate gives for four samples, or for one of them four times. */
template <int32_t kSize>
HWY_INLINE Vector values(const Samples<kSize, const float>& samples, const SrhnRecord& state,
                         const ptrdiff_t (&i)[kLanes]) {
    const Lanes d;
    Vector sum = hn::Zero(d);
    for (ptrdiff_t row = 0; row < (kSize == 2 ? 1 : kSize); ++row) {
        Vector p[kLanes];
        for (ptrdiff_t k = 0; k < kLanes; ++k)
            p[k] = products<kSize>(samples.block(i[k]), samples.psf(i[k], state), row);
        const Vector lower0 = hn::InterleaveLower(d, p[0], p[1]), lower1 = hn::InterleaveLower(d, p[2], p[3]);
        const Vector upper0 = hn::InterleaveUpper(d, p[0], p[1]), upper1 = hn::InterleaveUpper(d, p[2], p[3]);
        const Vector first = hn::ConcatLowerLower(d, lower1, lower0);
        sum = row == 0 ? first : hn::Add(sum, first);
        sum = hn::Add(sum, hn::ConcatUpperUpper(d, lower1, lower0));
        sum = hn::Add(sum, hn::ConcatLowerLower(d, upper1, upper0));
        if (kSize == 2)
            sum = hn::Add(sum, hn::ConcatUpperUpper(d, upper1, upper0));
    }
    return sum;
}

template <int32_t kSize, typename T>
void residuals(Samples<kSize, const float> samples, SrhnRecord state, const T* lowRes, float* residual,
               ptrdiff_t count) {
    ptrdiff_t i = 0;
    for (; i + kLanes <= count; i += kLanes)
        hn::StoreU(hn::Sub(values(samples, state, {i, i + 1, i + 2, i + 3}), loadFloats(Lanes(), lowRes + i)), Lanes(),
                   residual + i);
    for (; i < count; ++i)
        residual[i] = hn::GetLane(values(samples, state, {i, i, i, i})) - static_cast<float>(lowRes[i]);
}

/**
 * One sample after the other, as their blocks may overlap. Pixel by pixel: vectors of pixels that the sample before has
 * just stored in part would have to wait for them.
 */
template <int32_t kSize>
void addToGradient(Samples<kSize, float> samples, SrhnRecord state, const float* residual, const uint8_t* weightIndex,
                   const float* weights, ptrdiff_t count) {
    for (ptrdiff_t i = 0; i < count; ++i) {
        const Image<float> block = samples.block(i);
        const float* const psf = samples.psf(i, state);
        const float g = weights[weightIndex[i]] * residual[i];
        for (ptrdiff_t row = 0; row < kSize; ++row)
            for (ptrdiff_t column = 0; column < kSize; ++column)
                block.row(row)[column] += psf[row * kRowLength<kSize> + column] * g;
    }
}

template <int32_t kSize, typename T>
Status calcResidual(const float* highRes, int32_t highResStep, const T* lowRes, const uint32_t* offsets,
                    const uint16_t* psfIndex, float* residual, int32_t count, const SrhnState* state) {
    const Samples<kSize, const float> samples{{highRes, highResStep}, offsets, psfIndex};
    const auto* const record = reinterpret_cast<const SrhnRecord*>(state);
    if (Status status = samples.check(count, record, lowRes, residual))
        return status;
    inUsualModes([=] { residuals(samples, *record, lowRes, residual, count); });
    return StatusOk;
}

template <int32_t kSize>
Status updateGradient(float* gradient, int32_t gradientStep, const uint32_t* offsets, const uint16_t* psfIndex,
                      const float* residual, const uint8_t* weightIndex, int32_t count, const float* weights,
                      const SrhnState* state) {
    const Samples<kSize, float> samples{{gradient, gradientStep}, offsets, psfIndex};
    const auto* const record = reinterpret_cast<const SrhnRecord*>(state);
    if (Status status = samples.check(count, record, residual, weightIndex, weights))
        return status;
    inUsualModes([=] { addToGradient(samples, *record, residual, weightIndex, weights, count); });
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiSRHNInitAlloc_PSF2x2, initAlloc<2>);
VEKCV_BIND(vekiSRHNInitAlloc_PSF3x3, initAlloc<3>);
VEKCV_BIND(vekiSRHNCalcResidual_PSF2x2_8u32f_C1R, calcResidual<2>);
VEKCV_BIND(vekiSRHNCalcResidual_PSF2x2_16u32f_C1R, calcResidual<2>);
VEKCV_BIND(vekiSRHNCalcResidual_PSF3x3_8u32f_C1R, calcResidual<3>);
VEKCV_BIND(vekiSRHNCalcResidual_PSF3x3_16u32f_C1R, calcResidual<3>);
VEKCV_BIND(vekiSRHNUpdateGradient_PSF2x2_32f_C1R, updateGradient<2>);
VEKCV_BIND(vekiSRHNUpdateGradient_PSF3x3_32f_C1R, updateGradient<3>);
VEKCV_BIND(vekiSRHNFree_PSF2x2, freeState);
VEKCV_BIND(vekiSRHNFree_PSF3x3, freeState);
}  // namespace VEKCV_VARIANT
