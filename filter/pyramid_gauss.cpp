// Images of half and of double size, smoothed with binomial weights.
#include "bind.h"
#include "check.h"
#include "pyramid_rows.h"

namespace VEKCV_VARIANT {
namespace {

constexpr int64_t kBytesOfAnyWidth = 64;

int64_t downBufferBytes(int32_t width, int32_t channels) {
    return (int64_t{width} * 4 * channels + 15) / 16 * 96 + kBytesOfAnyWidth;
}
int64_t upBufferBytes(int32_t width, int32_t channels) {
    return (int64_t{width} * 8 * channels + 15) / 16 * 48 + kBytesOfAnyWidth;
}

/** Scratch memory of the size that is needed: the buffer, or for short rows, which need more than it has, `few`. */
template <size_t kFewBytes>
Scratch scratchFor(int64_t needed, uint8_t* buffer, int64_t bytes, uint8_t (&few)[kFewBytes]) {
    return needed <= bytes ? Scratch(buffer, bytes) : Scratch(few, kFewBytes);
}

/** Half of a number of pixels, rounded up. */
constexpr int32_t halfOf(int32_t count) {
    return count / 2 + count % 2;
}

/** Sets two pixels on the left, and three on the right: the last one counts 0 times. */
template <int32_t kChannels, typename T>
void mirrorBeside(T* line, int64_t width) {
    for (const int64_t x : {int64_t{-2}, int64_t{-1}, width, width + 1, width + 2})
        copyPixel<kChannels>(line, borderIndex(BorderReflect, x, static_cast<int32_t>(width)),
                             static_cast<ptrdiff_t>(x));
}

/** Every row is halved once, into sums that are kept for the results of all the five rows that need them. */
template <typename T, int32_t kChannels>
void halve(Image<const T, kChannels> source, Image<T, kChannels> out, RoiSize roi, uint8_t* buffer) {
    constexpr int32_t kRows = 5;
    const ptrdiff_t length = ptrdiff_t{roi.width} * kChannels;
    const ptrdiff_t outLength = ptrdiff_t{halfOf(roi.width)} * kChannels;
    const ptrdiff_t lineBytes = length + 5 * kChannels + kLineSlack;
    const ptrdiff_t sumsBytes =
        alignUp<ptrdiff_t>(outLength * ptrdiff_t{sizeof(uint16_t)} + kVectorSlack, Scratch::kAlignment);
    alignas(Scratch::kAlignment) uint8_t few[1024];
    Scratch scratch = scratchFor(lineBytes + kRows * sumsBytes + 2 * Scratch::kAlignment, buffer,
                                 downBufferBytes(roi.width, kChannels), few);
    uint8_t* const line = scratch.take<uint8_t>(lineBytes) + 2 * kChannels;
    uint16_t* sums[kRows];
    for (auto& row : sums)
        row = scratch.take<uint16_t>(sumsBytes / ptrdiff_t{sizeof(uint16_t)});

    int32_t done = 0;
    for (int32_t y = 0; y < halfOf(roi.height); ++y) {
        for (const int64_t bottom = int64_t{2} * y + 2; done < roi.height && done <= bottom; ++done) {
            copyBytes(source.row(done), length, line);
            mirrorBeside<kChannels>(line, roi.width);
            halveRow<kChannels>(line - 2 * kChannels, outLength, sums[done % kRows]);
        }
        const uint16_t* rows[kRows];
        for (int32_t k = 0; k < kRows; ++k)
            rows[k] = sums[borderIndex(BorderReflect, int64_t{2} * y + k - 2, roi.height) % kRows];
        joinFive<8>(rows, outLength, out.row(y));
    }
}

/** Columns first: it takes more additions, but less than half as many shuffles. */
template <int32_t kChannels>
void halve(Image<const float, kChannels> source, Image<float, kChannels> out, RoiSize roi, uint8_t* buffer) {
    const ptrdiff_t length = ptrdiff_t{roi.width} * kChannels;
    const ptrdiff_t lineElements = length + 5 * kChannels + kLineSlack / ptrdiff_t{sizeof(float)};
    alignas(Scratch::kAlignment) uint8_t few[1024];
    Scratch scratch = scratchFor(lineElements * ptrdiff_t{sizeof(float)} + Scratch::kAlignment, buffer,
                                 downBufferBytes(roi.width, kChannels), few);
    float* const line = scratch.take<float>(lineElements) + 2 * kChannels;
    for (int32_t y = 0; y < halfOf(roi.height); ++y) {
        const float* rows[5];
        for (int32_t k = 0; k < 5; ++k)
            rows[k] = source.row(borderIndex(BorderReflect, int64_t{2} * y + k - 2, roi.height));
        joinFive<0>(rows, length, line);
        mirrorBeside<kChannels>(line, roi.width);
        halveRow<kChannels>(line - 2 * kChannels, ptrdiff_t{halfOf(roi.width)} * kChannels, out.row(y));
    }
}

/** Columns first: a row of the image and those above and below it give two lines, each of which gives a row. */
template <typename T, int32_t kChannels>
void enlarge(Image<const T, kChannels> source, Image<T, kChannels> out, RoiSize roi, uint8_t* buffer) {
    using Sum = PyramidSum<T>;
    const ptrdiff_t length = ptrdiff_t{roi.width} * kChannels;
    const ptrdiff_t lineElements = length + 2 * kChannels + kLineSlack / ptrdiff_t{sizeof(Sum)};
    alignas(Scratch::kAlignment) uint8_t few[1024];
    Scratch scratch =
        scratchFor(2 * alignUp(lineElements * int64_t{sizeof(Sum)}, Scratch::kAlignment) + Scratch::kAlignment, buffer,
                   upBufferBytes(roi.width, kChannels), few);
    Sum* const even = scratch.take<Sum>(lineElements) + kChannels;
    Sum* const odd = scratch.take<Sum>(lineElements) + kChannels;

    for (int32_t y = 0; y < roi.height; ++y) {
        const T* const row = source.row(y);
        joinThree(source.row(borderIndex(BorderReflect, int64_t{y} - 1, roi.height)), row,
                  source.row(HWY_MIN(y + 1, roi.height - 1)), length, even, odd);
        for (Sum* const line : {even, odd}) {
            copyPixel<kChannels>(line, borderIndex(BorderReflect, -1, roi.width), -1);
            copyPixel<kChannels>(line, roi.width - 1, roi.width);
        }
        enlargeRow<kChannels, 8>(even - kChannels, length, out.row(ptrdiff_t{2} * y));
        enlargeRow<kChannels, 2>(odd - kChannels, length, out.row(ptrdiff_t{2} * y + 1));
    }
}

template <typename T, int32_t kChannels>
using Transform = void (*)(Image<const T, kChannels>, Image<T, kChannels>, RoiSize, uint8_t*);

template <typename T, int32_t kChannels>
Status transform(Image<const T, kChannels> source, Image<T, kChannels> out, RoiSize roi, int64_t outWidth,
                 uint8_t* buffer, Transform<T, kChannels> rule) {
    if (Status status = Check()
                            .pointers(source, out, buffer)
                            .roi(roi)
                            .stepLengths(roi.width, source)
                            .stepLengths(outWidth, out)
                            .stepMultiples(source, out))
        return status;
    rule(source, out, roi, buffer);
    return StatusOk;
}

template <int32_t kChannels, typename T>
Status pyrDown(const T* source, int32_t sourceStep, T* destination, int32_t destinationStep, RoiSize roi,
               uint8_t* buffer) {
    return transform<T, kChannels>({source, sourceStep}, {destination, destinationStep}, roi, halfOf(roi.width), buffer,
                                   [](auto... arguments) { halve(arguments...); });
}
template <int32_t kChannels, typename T>
Status pyrUp(const T* source, int32_t sourceStep, T* destination, int32_t destinationStep, RoiSize roi,
             uint8_t* buffer) {
    return transform<T, kChannels>({source, sourceStep}, {destination, destinationStep}, roi, int64_t{2} * roi.width,
                                   buffer, enlarge<T, kChannels>);
}

template <int64_t (*kBytes)(int32_t, int32_t)>
Status bufferSize(int32_t width, int32_t dataType, int32_t channels, int32_t* size) {
    if (Status status = Check()
                            .pointers(size)
                            .require(width >= 1, StatusSizeError)
                            .require(channels == 1 || channels == 3, StatusChannelError)
                            .require(dataType == 1 || dataType == 3 || dataType == 13, StatusDataTypeError))
        return status;
    return writeBufferSize(kBytes(width, channels), size);
}

}  // namespace

VEKCV_BIND(vekiPyrDownGetBufSize_Gauss5x5, bufferSize<downBufferBytes>);
VEKCV_BIND(vekiPyrUpGetBufSize_Gauss5x5, bufferSize<upBufferBytes>);
VEKCV_BIND(vekiPyrDown_Gauss5x5_8u_C1R, pyrDown<1>);
VEKCV_BIND(vekiPyrDown_Gauss5x5_8u_C3R, pyrDown<3>);
VEKCV_BIND(vekiPyrDown_Gauss5x5_8s_C1R, pyrDown<1>);
VEKCV_BIND(vekiPyrDown_Gauss5x5_8s_C3R, pyrDown<3>);
VEKCV_BIND(vekiPyrDown_Gauss5x5_32f_C1R, pyrDown<1>);
VEKCV_BIND(vekiPyrDown_Gauss5x5_32f_C3R, pyrDown<3>);
VEKCV_BIND(vekiPyrUp_Gauss5x5_8u_C1R, pyrUp<1>);
VEKCV_BIND(vekiPyrUp_Gauss5x5_8u_C3R, pyrUp<3>);
VEKCV_BIND(vekiPyrUp_Gauss5x5_8s_C1R, pyrUp<1>);
VEKCV_BIND(vekiPyrUp_Gauss5x5_8s_C3R, pyrUp<3>);
VEKCV_BIND(vekiPyrUp_Gauss5x5_32f_C1R, pyrUp<1>);
VEKCV_BIND(vekiPyrUp_Gauss5x5_32f_C3R, pyrUp<3>);
}  // namespace VEKCV_VARIANT
