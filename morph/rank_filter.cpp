// Minimum and maximum filters.
#include "bind.h"
#include "check.h"
#include "rectangle_filter.h"

namespace VEKCV_VARIANT {
namespace {

template <typename Rank, int32_t kChannels, typename T>
Status rankFilter(const T* source, int32_t sourceStep, T* destination, int32_t destinationStep, RoiSize roi,
                  RoiSize maskSize, ImagePoint anchor, uint8_t* buffer) {
    const Image<const T, kChannels> from{source, sourceStep};
    const Image<T, kChannels> to{destination, destinationStep};
    const Window window{maskSize, anchor};
    if (Status status = Check()
                            .pointers(from, to, buffer)
                            .roi(roi)
                            .require(window.hasPixels(), StatusMaskSizeError)
                            .require(window.hasAnchor(), StatusAnchorError)
                            .steps(roi.width, from, to))
        return status;
    const int64_t bytes = rectangleFilterBytes(int64_t{roi.width} * Image<T, kChannels>::kPixelBytes, maskSize.height);
    RectangleFilter<Rank, T> filter(Scratch(buffer, bytes), roi, kChannels, window);
    filter.filter(Rows<const T>::of(from), 0, roi.height, Rows<T>::of(to));
    return StatusOk;
}

template <typename T, int32_t kChannels>
Status rankFilterBufferSize(int32_t roiWidth, RoiSize maskSize, int32_t* bufferSize) {
    if (Status status = Check()
                            .pointers(bufferSize)
                            .require(roiWidth >= 1, StatusSizeError)
                            .require(Window{maskSize, {}}.hasPixels(), StatusMaskSizeError))
        return status;
    const int64_t rowBytes = int64_t{roiWidth} * kChannels * int64_t{sizeof(T)};
    if (rowBytes > INT32_MAX / maskSize.height)  // the size is larger still, and may not fit 64 bits
        return StatusSizeError;
    return writeBufferSize(rectangleFilterBytes(rowBytes, maskSize.height), bufferSize);
}

}  // namespace

VEKCV_BIND(vekiFilterMinBorderReplicate_8u_C1R, rankFilter<Minimum, 1>);
VEKCV_BIND(vekiFilterMaxBorderReplicate_8u_C1R, rankFilter<Maximum, 1>);
VEKCV_BIND(vekiFilterMinBorderReplicate_8u_C3R, rankFilter<Minimum, 3>);
VEKCV_BIND(vekiFilterMaxBorderReplicate_8u_C3R, rankFilter<Maximum, 3>);
VEKCV_BIND(vekiFilterMinBorderReplicate_8u_C4R, rankFilter<Minimum, 4>);
VEKCV_BIND(vekiFilterMaxBorderReplicate_8u_C4R, rankFilter<Maximum, 4>);
VEKCV_BIND(vekiFilterMinBorderReplicate_32f_C1R, rankFilter<Minimum, 1>);
VEKCV_BIND(vekiFilterMaxBorderReplicate_32f_C1R, rankFilter<Maximum, 1>);
VEKCV_BIND(vekiFilterMinBorderReplicate_32f_C3R, rankFilter<Minimum, 3>);
VEKCV_BIND(vekiFilterMaxBorderReplicate_32f_C3R, rankFilter<Maximum, 3>);
VEKCV_BIND(vekiFilterMinBorderReplicate_32f_C4R, rankFilter<Minimum, 4>);
VEKCV_BIND(vekiFilterMaxBorderReplicate_32f_C4R, rankFilter<Maximum, 4>);
VEKCV_BIND(vekiFilterMinGetBufferSize_8u_C1R, rankFilterBufferSize<uint8_t, 1>);
VEKCV_BIND(vekiFilterMaxGetBufferSize_8u_C1R, rankFilterBufferSize<uint8_t, 1>);
VEKCV_BIND(vekiFilterMinGetBufferSize_8u_C3R, rankFilterBufferSize<uint8_t, 3>);
VEKCV_BIND(vekiFilterMaxGetBufferSize_8u_C3R, rankFilterBufferSize<uint8_t, 3>);
VEKCV_BIND(vekiFilterMinGetBufferSize_8u_C4R, rankFilterBufferSize<uint8_t, 4>);
VEKCV_BIND(vekiFilterMaxGetBufferSize_8u_C4R, rankFilterBufferSize<uint8_t, 4>);
VEKCV_BIND(vekiFilterMinGetBufferSize_32f_C1R, rankFilterBufferSize<float, 1>);
VEKCV_BIND(vekiFilterMaxGetBufferSize_32f_C1R, rankFilterBufferSize<float, 1>);
VEKCV_BIND(vekiFilterMinGetBufferSize_32f_C3R, rankFilterBufferSize<float, 3>);
VEKCV_BIND(vekiFilterMaxGetBufferSize_32f_C3R, rankFilterBufferSize<float, 3>);
VEKCV_BIND(vekiFilterMinGetBufferSize_32f_C4R, rankFilterBufferSize<float, 4>);
VEKCV_BIND(vekiFilterMaxGetBufferSize_32f_C4R, rankFilterBufferSize<float, 4>);
}  // namespace VEKCV_VARIANT
