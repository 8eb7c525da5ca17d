#include "check.h"

#include <gtest/gtest.h>

namespace {

using VEKCV_VARIANT::Check;
using VEKCV_VARIANT::Image;

const uint16_t kPixels[8] = {};

Status checkImages(const uint16_t* first, int32_t firstStep, const uint16_t* second, int32_t secondStep, RoiSize roi) {
    const Image<const uint16_t> a{first, firstStep};
    const Image<const uint16_t, 3> b{second, secondStep};
    return Check().pointers(a, b).roi(roi).steps(roi.width, a, b).require(roi.width != 5, StatusBadArgument);
}

TEST(Check, ReportsTheFirstFailure) {
    EXPECT_EQ(StatusOk, checkImages(kPixels, 8, kPixels, 24, {4, 1}));
    EXPECT_EQ(StatusBadArgument, checkImages(kPixels, 10, kPixels, 30, {5, 1}));
    EXPECT_EQ(StatusStepNotMultiple, checkImages(kPixels, 11, kPixels, 30, {5, 1}));
    // All lengths come before all multiples.
    EXPECT_EQ(StatusStepError, checkImages(kPixels, 11, kPixels, 29, {5, 1}));
    EXPECT_EQ(StatusSizeError, checkImages(kPixels, 11, kPixels, 29, {5, 0}));
    EXPECT_EQ(StatusNullPointer, checkImages(kPixels, 11, nullptr, 29, {5, 0}));
}

TEST(Check, CannotOverflow) {
    const Image<const uint16_t, 3> image{kPixels, INT32_MAX};
    EXPECT_EQ(StatusStepError, checkImages(kPixels, INT32_MAX, kPixels, INT32_MAX, {INT32_MAX, INT32_MAX}));
    EXPECT_EQ(StatusStepError, Check().steps(int64_t{INT32_MAX} + 1, image));
    EXPECT_EQ(StatusStepError, Check().steps((int64_t{1} << 32) / 6 + 1, image));
    EXPECT_EQ(StatusStepError, Check().steps(1, Image<const uint16_t>{kPixels, INT32_MIN}));
}

TEST(Image, AddressesRowsBeyondTwoGigabytes) {
    const Image<const uint8_t> image{reinterpret_cast<const uint8_t*>(uintptr_t{16}), 1 << 30};
    EXPECT_EQ(uintptr_t{16} + (uintptr_t{3} << 30), reinterpret_cast<uintptr_t>(image.row(3)));
}

}  // namespace
