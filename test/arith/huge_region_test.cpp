// Reductions of regions of more than 2^31 pixels: 64 bits only, for no such image fits into an address space of 32.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

#include "thread_count.h"
#include "vekcv.h"

namespace {

constexpr int32_t kStep = 65536, kHeight = 32769;  // pixels
constexpr int64_t kFileBytes = int64_t{1} << 22;

/** Bytes of one value: a small file in memory, mapped again and again. Only pages that are written are copied. */
class RepeatedMemory {
  public:
    RepeatedMemory(int64_t bytes, int value) : bytes_((bytes + kFileBytes - 1) / kFileBytes * kFileBytes) {
        const int file = memfd_create("repeated", 0);
        begin_ = static_cast<uint8_t*>(
            check(mmap(nullptr, size_t(bytes_), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)));
        if (ftruncate(file, kFileBytes) != 0)
            throw std::bad_alloc();
        void* const content = check(mmap(nullptr, size_t(kFileBytes), PROT_WRITE, MAP_SHARED, file, 0));
        std::memset(content, value, size_t(kFileBytes));
        munmap(content, size_t(kFileBytes));
        for (int64_t at = 0; at < bytes_; at += kFileBytes)
            check(mmap(begin_ + at, size_t(kFileBytes), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_FIXED | MAP_NORESERVE,
                       file, 0));
        close(file);
    }
    ~RepeatedMemory() { munmap(begin_, size_t(bytes_)); }
    RepeatedMemory(const RepeatedMemory&) = delete;
    RepeatedMemory& operator=(const RepeatedMemory&) = delete;

    template <typename T>
    T* as() const {
        return reinterpret_cast<T*>(begin_);
    }

  private:
    static void* check(void* mapping) {
        if (mapping == MAP_FAILED)
            throw std::bad_alloc();
        return mapping;
    }

    int64_t bytes_;
    uint8_t* begin_;
};

template <typename T>
class HugeExtrema : public ::testing::Test {};
using Types = ::testing::Types<uint8_t, float>;
TYPED_TEST_SUITE(HugeExtrema, Types);

// A stripe of so many pixels: packed rows, which are one long row as long as there are fewer, and padded ones.
TYPED_TEST(HugeExtrema, HaveTheirPositions) {
    using T = TypeParam;
    const ThreadCount count(1);
    constexpr int32_t kRowBytes = kStep * int32_t(sizeof(T)), kLast = kHeight - 1;
    const RepeatedMemory memory(int64_t{kRowBytes} * kHeight, 0x40), mask(int64_t{kStep} * kHeight, 1);
    T* const source = memory.as<T>();
    T* const lastRow = source + int64_t{kLast} * kStep;
    lastRow[40001] = 1;
    lastRow[40003] = 100;
    float least = 0, greatest = 0;
    ImagePoint leastAt{}, greatestAt{};
    const auto check = [&](Status status) {
        EXPECT_EQ(StatusOk, status);
        EXPECT_EQ(1, least);
        EXPECT_EQ(100, greatest);
        EXPECT_EQ(std::pair(40001, kLast), std::pair(leastAt.x, leastAt.y));
        EXPECT_EQ(std::pair(40003, kLast), std::pair(greatestAt.x, greatestAt.y));
        leastAt = greatestAt = {};
    };
    const RoiSize packed{kStep, kHeight}, padded{kStep - 3, kHeight};
    if constexpr (std::is_same_v<T, float>) {
        check(vekiMinMaxIndx_32f_C1R(source, kRowBytes, packed, &least, &greatest, &leastAt, &greatestAt));
        check(vekiMinMaxIndx_32f_C1MR(source, kRowBytes, mask.as<uint8_t>(), kStep, padded, &least, &greatest, &leastAt,
                                      &greatestAt));
    } else {
        check(vekiMinMaxIndx_8u_C1R(source, kRowBytes, packed, &least, &greatest, &leastAt, &greatestAt));
        check(vekiMinMaxIndx_8u_C1MR(source, kRowBytes, mask.as<uint8_t>(), kStep, padded, &least, &greatest, &leastAt,
                                     &greatestAt));
    }
}

// All pixels are 64, or differ by 1: sums of more than 2^32 of them, and of their squares, are exact.
TEST(HugeSums, AreExact) {
    const ThreadCount count(1);
    const RepeatedMemory memory(int64_t{kStep} * kHeight, 64), others(int64_t{kStep} * kHeight, 65);
    const auto *source = memory.as<uint8_t>(), *other = others.as<uint8_t>(), *mask = other;
    const RoiSize roi{kStep, kHeight};
    const double pixels = double{kStep} * kHeight;
    double mean = 0, deviation = -1, result = 0;
    ASSERT_EQ(StatusOk, vekiMean_StdDev_8u_C1R(source, kStep, roi, &mean, &deviation));
    EXPECT_EQ(64, mean);
    EXPECT_EQ(0, deviation);
    ASSERT_EQ(StatusOk, vekiMean_8u_C1MR(source, kStep, mask, kStep, roi, &mean));
    EXPECT_EQ(64, mean);
    ASSERT_EQ(StatusOk, vekiNorm_L1_8u_C1MR(source, kStep, mask, kStep, roi, &result));
    EXPECT_EQ(64 * pixels, result);
    ASSERT_EQ(StatusOk, vekiNormDiff_L2_8u_C1MR(source, kStep, other, kStep, mask, kStep, roi, &result));
    EXPECT_EQ(std::sqrt(pixels), result);
    ASSERT_EQ(StatusOk, vekiNormRel_L2_8u_C1MR(source, kStep, other, kStep, mask, kStep, roi, &result));
    EXPECT_EQ(1 / 65.0, result);
}

TEST(HugeSums, OfOneChannelAreExact) {
    const RoiSize roi{kStep / 2, 2 * kHeight};
    const int32_t step = 3 * roi.width;
    const RepeatedMemory memory(int64_t{step} * roi.height, 64);
    double mean = 0, deviation = -1, result = 0;
    ASSERT_EQ(StatusOk, vekiMean_StdDev_8u_C3CR(memory.as<uint8_t>(), step, roi, 3, &mean, &deviation));
    EXPECT_EQ(64, mean);
    EXPECT_EQ(0, deviation);
    ASSERT_EQ(StatusOk,
              vekiNorm_L1_8u_C3CMR(memory.as<uint8_t>(), step, memory.as<uint8_t>(), roi.width, roi, 3, &result));
    EXPECT_EQ(64.0 * roi.width * roi.height, result);
}

}  // namespace
