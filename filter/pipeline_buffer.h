// Sizes of the work buffers of the row and column filters.
#pragma once

#include "check.h"
#include "work_buffer.h"

namespace VEKCV_VARIANT {

/** Integer filters round a part of each row in another way than the rest; those of low precision do not. */
enum class Precision { kFull, kLow };

/** `each` bytes for each pixel or tap, and `more` bytes once. */
struct LinearBytes {
    int64_t each, more;

    constexpr int64_t of(int64_t count) const { return each * count + more; }
};

/** What a thread of a row filter needs for each tap of the kernel. */
template <typename Source, int32_t kChannels, Precision kPrecision>
constexpr LinearBytes kRowPipelineBytes{};
template <>
inline constexpr LinearBytes kRowPipelineBytes<uint8_t, 1, Precision::kFull>{36, 112};
template <>
inline constexpr LinearBytes kRowPipelineBytes<uint8_t, 3, Precision::kFull>{60, 112};
template <>
inline constexpr LinearBytes kRowPipelineBytes<int16_t, 1, Precision::kFull>{48, 80};
template <>
inline constexpr LinearBytes kRowPipelineBytes<int16_t, 3, Precision::kFull>{40, 64};
template <>
inline constexpr LinearBytes kRowPipelineBytes<int16_t, 1, Precision::kLow>{24, 64};
template <>
inline constexpr LinearBytes kRowPipelineBytes<int16_t, 3, Precision::kLow>{208, 64};
template <>
inline constexpr LinearBytes kRowPipelineBytes<float, 1, Precision::kFull>{64, 64 + 16};
template <>
inline constexpr LinearBytes kRowPipelineBytes<float, 3, Precision::kFull>{192, 32};

/** What every thread needs for the addresses of its rows. */
constexpr int64_t rowAddressBytes(RoiSize roi, int32_t kernelSize) {
    return int64_t{sizeof(void*)} * (int64_t{roi.height} + kernelSize);
}

/** Bytes that a row filter needs for each thread, without those that align a slice. */
template <typename Source, int32_t kChannels, Precision kPrecision = Precision::kFull>
constexpr int64_t rowPipelineThreadBytes(RoiSize roi, int32_t kernelSize) {
    return rowAddressBytes(roi, kernelSize) + kRowPipelineBytes<Source, kChannels, kPrecision>.of(kernelSize);
}

/** Bytes that a column filter from rows of 16-bit elements needs for each thread, without those that align a slice. */
template <int32_t kChannels, Precision kPrecision = Precision::kFull>
constexpr int64_t columnPipelineThreadBytes(RoiSize roi, int32_t kernelSize) {
    constexpr int64_t kUnit = kPrecision == Precision::kLow ? 8 : 4;
    return rowAddressBytes(roi, kernelSize) + LinearBytes{12 * kChannels, 32}.of(alignUp(int64_t{roi.width}, kUnit));
}

/** The size of the buffer of a row filter, which may not fit 32 bits. */
template <typename Source, int32_t kChannels, Precision kPrecision = Precision::kFull>
int64_t rowPipelineBytes(RoiSize roi, int32_t kernelSize) {
    return WorkBuffer::bytes(rowPipelineThreadBytes<Source, kChannels, kPrecision>(roi, kernelSize));
}

/** The size of the buffer of a column filter from rows of `Source`; from rows of floats it is always the same. */
template <typename Source, int32_t kChannels, Precision kPrecision = Precision::kFull>
int64_t columnPipelineBytes(RoiSize roi, int32_t kernelSize) {
    if constexpr (std::is_same_v<Source, float>)
        return 32;
    else
        return WorkBuffer::bytes(columnPipelineThreadBytes<kChannels, kPrecision>(roi, kernelSize));
}

/** The query of a filter whose buffer has kBytes(roi, kernelSize) bytes. */
template <int64_t (*kBytes)(RoiSize, int32_t)>
Status pipelineBufferSize(RoiSize roi, int32_t kernelSize, int32_t* bufferSize) {
    if (Status status = Check().pointers(bufferSize).roi(roi).require(kernelSize >= 1, StatusSizeError))
        return status;
    return writeBufferSize(kBytes(roi, kernelSize), bufferSize);
}

}  // namespace VEKCV_VARIANT
