#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <regex>
#include <string>

#include "cpu_quota.h"
#include "vekcore.h"

namespace {

TEST(Memory, IsAlignedAndRefusesSizesWithoutMeaning) {
    for (int bytes : {1, 63, 4096, 1000001}) {
        void* const block = vekMalloc(bytes);
        ASSERT_NE(nullptr, block);
        EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(block) % 64);
        std::memset(block, 1, size_t(bytes));
        vekFree(block);
    }
    for (int bytes : {0, -1, std::numeric_limits<int>::min()})
        EXPECT_EQ(nullptr, vekMalloc(bytes));
    vekFree(nullptr);
}

TEST(Threads, AreSetForTheWholeProcess) {
    int before = 0, count = 0;
    EXPECT_EQ(StatusNullPointer, vekGetNumThreads(nullptr));
    ASSERT_EQ(StatusOk, vekGetNumThreads(&before));
    EXPECT_GE(before, 1);
    for (int wrong : {0, -1, 1025})
        EXPECT_EQ(StatusBadArgument, vekSetNumThreads(wrong));
    EXPECT_EQ(before, ownGetNumThreads());
    ASSERT_EQ(StatusOk, vekSetNumThreads(1024));
    ASSERT_EQ(StatusOk, vekGetNumThreads(&count));
    EXPECT_EQ(1024, count);
    EXPECT_EQ(1024, ownGetNumThreads());
    ASSERT_EQ(StatusOk, vekSetNumThreads(before));
    EXPECT_GE(vekGetNumCoresOnDie(), 1);
}

TEST(Threads, BeginWithTheEnvironment) {
    int count = 0;
    ASSERT_EQ(StatusOk, vekGetNumThreads(&count));
    const char* const expected = std::getenv("CORE_TEST_THREADS");
    EXPECT_EQ(
        expected == nullptr ? std::min(vekGetNumCoresOnDie(), vekcore::processorsOfQuota("")) : std::stoi(expected),
        count);
}

TEST(Cache, IsKnown) {
    int bytes = 0;
    EXPECT_EQ(StatusNullPointer, vekGetMaxCacheSizeB(nullptr));
    ASSERT_EQ(StatusOk, vekGetMaxCacheSizeB(&bytes));
    EXPECT_GE(bytes, 1 << 15);
}

TEST(SquareRoot, IsTakenInPlace) {
    float values[] = {0.f, 2.f, 1e-40f, 3.4028235e38f, -1.f, 9.f};
    EXPECT_EQ(StatusNullPointer, vekSqrt_32f_I(nullptr, 0));
    EXPECT_EQ(StatusSizeError, vekSqrt_32f_I(values, 0));
    EXPECT_EQ(StatusOk, vekSqrt_32f_I(values, 5));
    EXPECT_EQ(0.f, values[0]);
    EXPECT_EQ(std::sqrt(2.f), values[1]);
    EXPECT_EQ(std::sqrt(1e-40f), values[2]);
    EXPECT_EQ(std::sqrt(3.4028235e38f), values[3]);
    EXPECT_TRUE(std::isnan(values[4]));
    EXPECT_EQ(9.f, values[5]);
}

// Every status of the header is named, and explained with the words of the header.
TEST(StatusString, ExplainsEveryStatus) {
    std::ifstream header(VEKCV_HEADER);
    ASSERT_TRUE(header);
    const std::regex entry(R"(^    (Status\w+) = (-?\d+),? +/\*\*< (.*) \*/$)");
    int count = 0;
    for (std::string line; std::getline(header, line);)
        if (std::smatch match; std::regex_match(line, match, entry)) {
            ++count;
            EXPECT_EQ(match[1].str() + ": " + match[3].str(), vekGetStatusString(std::stoi(match[2])));
        }
    EXPECT_EQ(18, count);
    for (Status unknown : {1, -1, -1000, 13})
        EXPECT_STREQ("unknown status", vekGetStatusString(unknown));
}

}  // namespace
