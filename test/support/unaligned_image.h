#pragma once

#include "test_image.h"

/** A copy of an image that begins at an odd address. */
template <typename T>
class UnalignedImage {
  public:
    /** `padding` bytes follow each row. */
    explicit UnalignedImage(const TestImage<T>& image, int padding = 0)
        : image_(image.copy({})),
          bytes_({image.elements() * int(sizeof(T)), image.roi().height}, {Layout::kAfterGuard, 1, padding}) {
        for (int y = 0; y < bytes_.roi().height; ++y)
            std::memcpy(&bytes_.at(0, y), &image_.at(0, y), size_t(bytes_.roi().width));
    }

    T* data() const { return reinterpret_cast<T*>(bytes_.data()); }
    int32_t step() const { return bytes_.step(); }

    /** Whether the pixels are those of another image, and nothing was written around them. */
    ::testing::AssertionResult holds(const TestImage<T>& expected) const {
        for (int y = 0; y < bytes_.roi().height; ++y)
            std::memcpy(&image_.at(0, y), &bytes_.at(0, y), size_t(bytes_.roi().width));
        if (!bytes_.guardsIntact())
            return ::testing::AssertionFailure() << "bytes outside the image were written";
        return samePixels(expected, image_);
    }

  private:
    TestImage<T> image_;
    TestImage<uint8_t> bytes_;
};
