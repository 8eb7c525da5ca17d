// What is decided for a feature mask: the variant, with the record that tells it, and what a call does with the upper
// halves of registers. A library is loaded once in a process, so each mask gets a process of its own: this program
// again, which then prints that.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "upper_half.h"
#include "vekcv.h"

namespace {

std::string program;

void printVersion() {
    const LibraryVersion* const v = vekcvGetLibVersion();
    std::printf("%d.%d.%d.%d|%c%c%d%d|%s|%s|%s|%s", v->major, v->minor, v->majorBuild, v->build, v->targetCode[0],
                v->targetCode[1], v->targetCode[2], v->targetCode[3], v->name, v->version, v->buildDate,
                v == vekcvGetLibVersion() ? "constant" : "varies");
}

void printUpperHalf() {
    vekcvGetLibVersion();  // linked by its first call
    setUpperHalf();
    vekcvGetLibVersion();
    std::fputs(upperHalfIsSet() ? "set" : "clear", stdout);
}

std::string outputFor(const std::string& printed, unsigned features) {
    const std::string command =
        "STANDIN_FEATURES=" + std::to_string(features) + " VEKCV_PRINT=" + printed + " '" + program + "'";
    FILE* const pipe = popen(command.c_str(), "r");
    std::array<char, 512> text{};
    const size_t length = std::fread(text.data(), 1, text.size(), pipe);
    EXPECT_EQ(0, pclose(pipe));
    return {text.data(), length};
}

std::string versionFor(unsigned features) {
    return outputFor("version", features);
}

std::string record(const std::string& code, const std::string& name) {
    return "7.1.0.36264|" + code + "00|" + name + "|7.1.0 (r36264)|Jul 23 2012|constant";
}

TEST(Attach, ChoosesByTwoBits) {
    const std::string ssse3 = record("v8", "vekCV SSSE3 (v8)");
    const std::string nubo = VEKCV_VARIANTS > 1 ? record("s8", "vekCV Nubo (s8)") : ssse3;
    EXPECT_EQ(ssse3, versionFor(0));
    EXPECT_EQ(ssse3, versionFor(0x10));
    EXPECT_EQ(ssse3, versionFor(0x20));
    EXPECT_EQ(nubo, versionFor(0x30));
    EXPECT_EQ(nubo, versionFor(0x3f));
    EXPECT_EQ(ssse3, versionFor(0xcf));
}

const bool kProcessorHasAvx2 = __builtin_cpu_supports("avx2") != 0;

TEST(Attach, AsksForWideVectorsFirst) {
    if (!kProcessorHasAvx2)
        GTEST_SKIP() << "the processor has no AVX2";
    const std::string records[] = {record("v8", "vekCV SSSE3 (v8)"), record("s8", "vekCV Nubo (s8)"),
                                   record("a2", "vekCV AVX2 (a2)"), record("a5", "vekCV AVX-512 (a5)")};
    const auto bestOf = [&](int variants) { return records[std::min(variants, VEKCV_VARIANTS) - 1]; };
    EXPECT_EQ(bestOf(3), versionFor(0x130));
    EXPECT_EQ(bestOf(4), versionFor(0x330));
}

TEST(Attach, LetsShortVectorsClearTheUpperHalvesThatThereAre) {
    if (VEKCV_VARIANTS > 2 || !kProcessorHasAvx2)
        GTEST_SKIP() << "the variant for AVX2 clears them where it used them, and other processors have none";
    EXPECT_EQ("clear", outputFor("upper_half", 0x130));
    EXPECT_EQ("set", outputFor("upper_half", 0x30));
}

}  // namespace

int main(int argc, char** argv) {
    if (const char* const printed = std::getenv("VEKCV_PRINT")) {
        std::string_view(printed) == "version" ? printVersion() : printUpperHalf();
        return 0;
    }
    program = argv[0];
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
