// Runs the tests of a program on the variant whose target code VEKCV_TEST_VARIANT gives. On a processor that lacks it
// there is nothing to test: the program exits with status 77, which the test runner shows as skipped.
#include <cpuid.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "vekcv.h"

namespace {

constexpr int kSkipped = 77;

bool isSupported(std::string_view targetCode) {
    __builtin_cpu_init();
    unsigned a = 0, b = 0, c = 0, d = 0;
    if (targetCode == "s8")
        return __get_cpuid(1, &a, &b, &c, &d) && (c & bit_MOVBE) != 0;
    if (targetCode == "a2")
        return __builtin_cpu_supports("avx2");
    if (targetCode == "a5")
        return __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
               __builtin_cpu_supports("avx512vl");
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (const char* const wanted = std::getenv("VEKCV_TEST_VARIANT")) {
        if (!isSupported(wanted))
            return kSkipped;
        const char* const chosen = vekcvGetLibVersion()->targetCode;
        if (std::string_view(chosen) != wanted) {
            std::fprintf(stderr, "variant %s is wanted, %s was chosen\n", wanted, chosen);
            return EXIT_FAILURE;
        }
    }
    return RUN_ALL_TESTS();
}
