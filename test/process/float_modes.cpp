// The floating-point modes of the calling thread hold in all threads of a team: their number never shows in the
// results.
#include <cfenv>
#include <cstring>
#include <string>
#include <vector>

#include "../support/modes_guard.h"
#include "expect.h"
#include "vekcore.h"

namespace {

constexpr int32_t kWidth = 2048, kHeight = 1024, kStep = kWidth * int32_t{sizeof(float)};
constexpr size_t kPixels = size_t{kWidth} * kHeight;
constexpr RoiSize kRoi{kWidth, kHeight};

struct Modes {
    const char* name;
    int rounding;
    bool flushes;
};

constexpr Modes kDefault{"to nearest", FE_TONEAREST, false};
constexpr Modes kOthers[] = {
    {"to nearest, flushing", FE_TONEAREST, true},
    {"up", FE_UPWARD, false},
    {"up, flushing", FE_UPWARD, true},
    {"down", FE_DOWNWARD, false},
    {"to zero", FE_TOWARDZERO, false},
};

/** Values whose products and sums are rounded or too small for normal numbers, in every row. */
std::vector<float> values(uint32_t seed) {
    std::vector<float> result(kPixels);
    for (float& value : result) {
        seed = seed * 1664525u + 1013904223u;
        value = static_cast<float>(seed >> 8) * (seed % 2 == 0 ? 1e-27f : 1e-3f);
    }
    return result;
}

struct Results {
    std::vector<float> products;
    double norm = 0, smallNorm = 0;

    bool operator==(const Results& other) const {
        return std::memcmp(products.data(), other.products.data(), kPixels * sizeof(float)) == 0 &&
               norm == other.norm && smallNorm == other.smallNorm;
    }
};

Results compute(const Modes& modes, int threads) {
    static const std::vector<float> a = values(1), b = values(2);
    static const std::vector<uint8_t> mask(kPixels, 1);
    // Only the last row has differences; they are rounded in one pair of images and too small in the other.
    static std::vector<float> ones(kPixels), parts(kPixels), smallOnes(kPixels), smallParts(kPixels);
    for (size_t i = kPixels - kWidth; i < kPixels; ++i) {
        ones[i] = 1.f, parts[i] = 1e-9f * static_cast<float>(i % 2 == 0 ? 1 : -1);
        smallOnes[i] = 1.5e-38f, smallParts[i] = 1.2e-38f;
    }
    Results results{std::vector<float>(kPixels)};
    vekSetNumThreads(threads);
    const ModesGuard guard(modes.rounding, modes.flushes);
    const Status statuses[] = {
        vekiAddProduct_32f_C1IR(a.data(), kStep, b.data(), kStep, results.products.data(), kStep, kRoi),
        vekiAddProduct_32f_C1IR(b.data(), kStep, b.data(), kStep, results.products.data(), kStep, kRoi),
        vekiNormDiff_Inf_32f_C1MR(ones.data(), kStep, parts.data(), kStep, mask.data(), kWidth, kRoi, &results.norm),
        vekiNormDiff_Inf_32f_C1MR(smallOnes.data(), kStep, smallParts.data(), kStep, mask.data(), kWidth, kRoi,
                                  &results.smallNorm)};
    for (const Status status : statuses)
        expect(status == StatusOk, "a call succeeds");
    return results;
}

}  // namespace

int main() {
    const Results usual = compute(kDefault, 1);
    for (const Modes& modes : kOthers) {
        const Results alone = compute(modes, 1);
        const std::string name = std::string("rounding ") + modes.name + ": ";
        expect(!(alone == usual), (name + "the modes show").c_str());
        for (const int threads : {2, 3}) {
            expect(compute(modes, threads) == alone, (name + "the number of threads does not show").c_str());
            expect(compute(kDefault, threads) == usual, (name + "the team's own modes are as before").c_str());
        }
    }
    return failures;
}
