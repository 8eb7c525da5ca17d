#pragma once

#include "image.h"

namespace VEKCV_VARIANT {

/**
 * The argument checks of a call, written in the order in which they fail; the first failure stays:
 *
 *     if (Status status = Check().pointers(source, mask, result).roi(roi).steps(roi.width, source, mask))
 *         return status;
 *
 * A check never reads a pixel, and its arithmetic cannot overflow.
 */
class Check {
  public:
    constexpr Check& require(bool condition, Status otherwise) {
        if (status_ == StatusOk && !condition)
            status_ = otherwise;
        return *this;
    }

    /** Images and plain pointers that must not be null. */
    template <typename... Operands>
    constexpr Check& pointers(const Operands&... operands) {
        return require((isPresent(operands) && ...), StatusNullPointer);
    }

    constexpr Check& roi(RoiSize size) { return require(size.width >= 1 && size.height >= 1, StatusSizeError); }

    /** A region that must be as large as the one that a state was made for. */
    constexpr Check& roiOfState(RoiSize size, RoiSize ofState) {
        return require(size.width == ofState.width && size.height == ofState.height, StatusSizeError);
    }

    /** Steps of images with rows of `width` pixels: first that all are long enough, then that all fit the element. */
    template <typename... Images>
    constexpr Check& steps(int64_t width, const Images&... images) {
        return stepLengths(width, images...).stepMultiples(images...);
    }

    template <typename... Images>
    constexpr Check& stepLengths(int64_t width, const Images&... images) {
        return require(((images.step >= width * Images::kPixelBytes) && ...), StatusStepError);
    }

    template <typename... Images>
    constexpr Check& stepMultiples(const Images&... images) {
        return require(((images.step % static_cast<int32_t>(sizeof(typename Images::Element)) == 0) && ...),
                       StatusStepNotMultiple);
    }

    /** The checks that follow pointers() in operations on one channel, from 1 to 3, of images. */
    template <typename... Images>
    constexpr Check& channelImages(RoiSize size, int32_t channel, const Images&... images) {
        return roi(size)
            .steps(size.width, images...)
            .require(channel >= 1 && channel <= 3, StatusChannelOfInterestError);
    }

    constexpr operator Status() const { return status_; }

  private:
    template <typename T, int32_t kChannels>
    static constexpr bool isPresent(const Image<T, kChannels>& image) {
        return image.pixels != nullptr;
    }
    static constexpr bool isPresent(NoImage /*image*/) { return true; }
    static constexpr bool isPresent(const void* pointer) { return pointer != nullptr; }

    Status status_ = StatusOk;
};

}  // namespace VEKCV_VARIANT
