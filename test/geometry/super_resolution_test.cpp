// Super-resolution kernels against their definitions.
#include <sys/mman.h>

#include <climits>
#include <limits>
#include <memory>

#include "caller_modes.h"
#include "regions.h"
#include "standin.h"
#include "super_resolution_samples.h"
#include "test/exports/faults.h"

namespace {

using super_resolution::arrayOf;
using super_resolution::Image;

template <int kSizeOfBlocks, typename T, auto kInit, auto kResidualOf, auto kGradientOf, auto kRelease>
struct Form {
    static constexpr int kSize = kSizeOfBlocks, kEntry = kSize * kSize;
    using LowRes = T;
    static constexpr auto kInitAlloc = kInit;
    static constexpr auto kCalcResidual = kResidualOf;
    static constexpr auto kUpdateGradient = kGradientOf;
    static constexpr auto kFree = kRelease;
};
template <auto kResidualOf, typename T>
using Of2x2 =
    Form<2, T, vekiSRHNInitAlloc_PSF2x2, kResidualOf, vekiSRHNUpdateGradient_PSF2x2_32f_C1R, vekiSRHNFree_PSF2x2>;
template <auto kResidualOf, typename T>
using Of3x3 =
    Form<3, T, vekiSRHNInitAlloc_PSF3x3, kResidualOf, vekiSRHNUpdateGradient_PSF3x3_32f_C1R, vekiSRHNFree_PSF3x3>;
using Forms = ::testing::Types<
    Of2x2<vekiSRHNCalcResidual_PSF2x2_8u32f_C1R, uint8_t>, Of2x2<vekiSRHNCalcResidual_PSF2x2_16u32f_C1R, uint16_t>,
    Of3x3<vekiSRHNCalcResidual_PSF3x3_8u32f_C1R, uint8_t>, Of3x3<vekiSRHNCalcResidual_PSF3x3_16u32f_C1R, uint16_t>>;

template <typename Form>
struct SuperResolution : ::testing::Test {
    static constexpr int kSize = Form::kSize, kEntry = Form::kEntry;
    using Samples = super_resolution::Samples<kSize, typename Form::LowRes>;
    using State = std::unique_ptr<SrhnState, Status (*)(SrhnState*)>;

    static State stateOf(const std::vector<float>& table) {
        SrhnState* state = nullptr;
        EXPECT_EQ(StatusOk, Form::kInitAlloc(&state, table.data(), int32_t(table.size() / kEntry)));
        return {state, Form::kFree};
    }

    static TestImage<float> residualsOf(const Image& image, const Samples& samples) {
        const TestImage<float> residual({samples.count(), 1}, {Layout::kBeforeGuard, 0, 0});
        const State state = stateOf(samples.table);
        EXPECT_EQ(StatusOk,
                  Form::kCalcResidual(image.data(), image.step(), samples.lowRes.data(), samples.offsets.data(),
                                      samples.psfIndex.data(), residual.data(), samples.count(), state.get()));
        return residual;
    }

    static void update(const Image& gradient, const Samples& samples, const TestImage<float>& residual) {
        const State state = stateOf(samples.table);
        EXPECT_EQ(StatusOk, Form::kUpdateGradient(gradient.data(), gradient.step(), samples.offsets.data(),
                                                  samples.psfIndex.data(), residual.data(), samples.weightIndex.data(),
                                                  samples.count(), samples.weights.data(), state.get()));
    }

    static Image imageOf(RoiSize roi, Layout layout, uint32_t seed = 3) {
        return Image::filled(roi, layout,
                             [random = Random(seed)](int, int) mutable { return random.summand<float>(); });
    }

    /** check(image, samples) for images of one block and more, in all layouts, and counts on both sides of vectors. */
    template <typename Check>
    static void forSamples(Check check) {
        for (const RoiSize roi : {RoiSize{kSize, kSize}, RoiSize{7, 5}, RoiSize{40, 9}})
            for (const Layout& layout : kLayouts)
                for (const int32_t count : {1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 17, 31, 33, 200}) {
                    SCOPED_TRACE(::testing::Message()
                                 << roi.width << " x " << roi.height << ", " << layout << ", " << count << " samples");
                    const Image image = imageOf(roi, layout);
                    check(image, Samples(image, count, 1 + uint32_t(count) / 2));
                    if (::testing::Test::HasFatalFailure())
                        return;
                }
    }
};
TYPED_TEST_SUITE(SuperResolution, Forms);

TYPED_TEST(SuperResolution, ResidualsMatchTheirDefinition) {
    this->forSamples([&](const auto& image, const auto& samples) {
        const auto before = image.copy({});
        ASSERT_TRUE(samePixels(samples.residuals(image), this->residualsOf(image, samples)));
        ASSERT_TRUE(samePixels(before, image));
    });
}

TYPED_TEST(SuperResolution, GradientsMatchTheirDefinition) {
    this->forSamples([&](const auto& gradient, const auto& samples) {
        const auto residual = samples.residuals(gradient);
        const auto expected = gradient.copy({});
        samples.addTo(expected, residual);
        this->update(gradient, samples, residual);
        ASSERT_TRUE(samePixels(expected, gradient));
    });
}

TYPED_TEST(SuperResolution, AddsProductsFromLeftToRightAndRowByRow) {
    const RoiSize roi{this->kSize, this->kSize};
    const TestImage<float> image = TestImage<float>::constant(roi, 1);
    typename TestFixture::Samples samples(image, 5, 1);
    samples.lowRes = arrayOf<typename TypeParam::LowRes>(5, [] { return 0; });
    samples.table.assign(size_t(this->kEntry), 0);
    samples.table[0] = 1e8f;
    samples.table[size_t(this->kSize - 1)] = -1e8f;
    samples.table[size_t(this->kSize)] = 1;
    const auto inOrder = this->residualsOf(image, samples);
    samples.table[size_t(this->kSize)] = -1e8f;
    samples.table[size_t(this->kSize - 1)] = 1;
    const auto rounded = this->residualsOf(image, samples);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(1.0f, inOrder.at(i, 0));
        EXPECT_EQ(0.0f, rounded.at(i, 0));
    }
}

TYPED_TEST(SuperResolution, AddsToTheGradientSampleAfterSample) {
    const RoiSize roi{this->kSize, this->kSize};
    const TestImage<float> gradient = TestImage<float>::constant(roi, 0), residual({3, 1});
    typename TestFixture::Samples samples(gradient, 3, 1);
    samples.table.assign(size_t(this->kEntry), 1);
    samples.weights.assign(256, 1);
    samples.offsets = arrayOf<uint32_t>(3, [] { return 0; });
    residual.at(0, 0) = 1;
    residual.at(1, 0) = 1e8f;
    residual.at(2, 0) = -1e8f;
    this->update(gradient, samples, residual);
    EXPECT_TRUE(samePixels(TestImage<float>::constant(roi, 0), gradient));
}

TYPED_TEST(SuperResolution, TakesAllIndices) {
    const TestImage<float> image = this->imageOf({9, 7}, {});
    typename TestFixture::Samples samples(image, 9, 65536);
    samples.psfIndex = arrayOf<uint16_t>(9, [index = 65536]() mutable { return index -= 4097; });
    samples.psfIndex.at(3, 0) = 65535;
    samples.weightIndex = arrayOf<uint8_t>(9, [index = 256]() mutable { return index -= 1; });
    const auto residual = this->residualsOf(image, samples);
    EXPECT_TRUE(samePixels(samples.residuals(image), residual));
    const auto gradient = image.copy({});
    this->update(gradient, samples, residual);
    samples.addTo(image, residual);
    EXPECT_TRUE(samePixels(image, gradient));
}

// The image begins so far in front of the memory that its offsets need all 32 bits.
TYPED_TEST(SuperResolution, TakesOffsetsOf32Bits) {
    const TestImage<float> image = this->imageOf({9, 7}, {});
    const typename TestFixture::Samples samples(image, 9, 3);
    const auto residual = samples.residuals(image);
    const auto state = this->stateOf(samples.table);
    constexpr uint32_t kBefore = 0xFFFFFF00;
    const auto offsets = arrayOf<uint32_t>(9, [&, i = 0]() mutable { return kBefore + samples.offsets.at(i++, 0); });
    auto* const first =
        reinterpret_cast<float*>(reinterpret_cast<uintptr_t>(image.data()) - uintptr_t{kBefore} * sizeof(float));
    const TestImage<float> actual({9, 1});
    ASSERT_EQ(StatusOk, TypeParam::kCalcResidual(first, image.step(), samples.lowRes.data(), offsets.data(),
                                                 samples.psfIndex.data(), actual.data(), 9, state.get()));
    EXPECT_TRUE(samePixels(residual, actual));
    const auto expected = image.copy({});
    samples.addTo(expected, residual);
    ASSERT_EQ(StatusOk,
              TypeParam::kUpdateGradient(first, image.step(), offsets.data(), samples.psfIndex.data(), residual.data(),
                                         samples.weightIndex.data(), 9, samples.weights.data(), state.get()));
    EXPECT_TRUE(samePixels(expected, image));
}

TYPED_TEST(SuperResolution, TakesTheLongestSteps) {
    if (sizeof(void*) == 4)
        GTEST_SKIP() << "there is no room for rows of 2 GiB";
    constexpr int32_t kStep = INT_MAX - 3;
    const size_t bytes = size_t{2} * kStep + 4096;
    void* const memory =
        mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(MAP_FAILED, memory);
    const auto pixel = [&](int row, int column) -> float& {
        return reinterpret_cast<float*>(static_cast<uint8_t*>(memory) + size_t(row) * kStep)[column];
    };
    for (int row = 0; row < this->kSize; ++row)
        for (int column = 0; column < this->kSize; ++column)
            pixel(row, column) = float(1 + 3 * row + column);
    const auto state = this->stateOf(std::vector<float>(size_t(this->kEntry), 1));
    const uint32_t offset = 0;
    const uint16_t index = 0;
    const uint8_t weightIndex = 0;
    const typename TypeParam::LowRes lowRes = 3;
    const float weight = 2;
    float residual = 0;
    EXPECT_EQ(StatusOk,
              TypeParam::kCalcResidual(&pixel(0, 0), kStep, &lowRes, &offset, &index, &residual, 1, state.get()));
    EXPECT_EQ(this->kSize == 2 ? 9.0f : 42.0f, residual);
    EXPECT_EQ(StatusOk, TypeParam::kUpdateGradient(&pixel(0, 0), kStep, &offset, &index, &residual, &weightIndex, 1,
                                                   &weight, state.get()));
    EXPECT_EQ(float(4 * this->kSize - 3) + 2 * residual, pixel(this->kSize - 1, this->kSize - 1));
    munmap(memory, bytes);
}

TYPED_TEST(SuperResolution, IsTheSameInAllModesOfTheCaller) {
    const auto image = this->imageOf({40, 9}, {});
    const typename TestFixture::Samples samples(image, 33, 5);
    const auto small = TestImage<float>::constant({40, 9}, 3 * std::numeric_limits<float>::denorm_min());
    const typename TestFixture::Samples smallSamples(small, 33, 5);
    const auto residual = samples.residuals(image);
    const auto expected = image.copy({}), smallExpected = small.copy({});
    const auto smallResidual = TestImage<float>::constant({33, 1}, std::numeric_limits<float>::denorm_min());
    samples.addTo(expected, residual);
    smallSamples.addTo(smallExpected, smallResidual);
    forCallerModes([&] {
        const auto actual = this->residualsOf(image, samples);
        const auto gradient = image.copy({}), smallGradient = small.copy({});
        this->update(gradient, samples, residual);
        this->update(smallGradient, smallSamples, smallResidual);
        EXPECT_TRUE(samePixels(residual, actual));
        EXPECT_TRUE(samePixels(expected, gradient));
        EXPECT_TRUE(samePixels(smallExpected, smallGradient));
    });
}

TYPED_TEST(SuperResolution, CopiesTheTable) {
    const auto image = this->imageOf({9, 7}, {});
    const typename TestFixture::Samples samples(image, 9, 3);
    const auto table = arrayOf<float>(3 * this->kEntry, [next = samples.table.begin()]() mutable { return *next++; });
    SrhnState* state = nullptr;
    ASSERT_EQ(StatusOk, TypeParam::kInitAlloc(&state, table.data(), 3));
    std::fill_n(table.data(), 3 * this->kEntry, 0.0f);
    const TestImage<float> residual({9, 1});
    EXPECT_EQ(StatusOk,
              TypeParam::kCalcResidual(image.data(), image.step(), samples.lowRes.data(), samples.offsets.data(),
                                       samples.psfIndex.data(), residual.data(), 9, state));
    EXPECT_TRUE(samePixels(samples.residuals(image), residual));
    EXPECT_EQ(StatusOk, TypeParam::kFree(state));
}

TYPED_TEST(SuperResolution, TakesStatesOfItsSizeOnly) {
    const std::vector<float> table(16, 1);
    SrhnState* state = nullptr;
    ASSERT_EQ(StatusOk,
              (this->kSize == 2 ? vekiSRHNInitAlloc_PSF3x3 : vekiSRHNInitAlloc_PSF2x2)(&state, table.data(), 1));
    const auto image = this->imageOf({9, 7}, {}), before = image.copy({});
    const typename TestFixture::Samples samples(image, 9, 1);
    const TestImage<float> residual({9, 1}), untouched({9, 1});
    const auto residualsWith = [&](int32_t step) {
        return TypeParam::kCalcResidual(image.data(), step, samples.lowRes.data(), samples.offsets.data(),
                                        samples.psfIndex.data(), residual.data(), 9, state);
    };
    const auto gradientWith = [&](int32_t step) {
        return TypeParam::kUpdateGradient(image.data(), step, samples.offsets.data(), samples.psfIndex.data(),
                                          samples.weights.data(), samples.weightIndex.data(), 9, samples.weights.data(),
                                          state);
    };
    EXPECT_EQ(StatusBadArgument, residualsWith(image.step()));
    EXPECT_EQ(StatusBadArgument, gradientWith(image.step()));
    EXPECT_EQ(StatusStepError, residualsWith(4 * this->kSize - 4));
    EXPECT_EQ(StatusStepError, gradientWith(image.step() + 1));
    EXPECT_TRUE(samePixels(before, image));
    EXPECT_TRUE(samePixels(untouched, residual));
    // Both functions release both.
    EXPECT_EQ(StatusOk, TypeParam::kFree(state));
}

TYPED_TEST(SuperResolution, NeedsMemory) {
    if (standIn() == nullptr)
        GTEST_SKIP() << "the core library is the real one";
    const std::vector<float> table(size_t(this->kEntry) * 3, 1);
    const int held = standIn()->blocks();
    int place = 0;
    auto* const before = reinterpret_cast<SrhnState*>(&place);
    SrhnState* state = before;
    for (const int allocations : {0, 1}) {
        standIn()->failAfter(allocations);
        EXPECT_EQ(StatusMemoryAllocation, TypeParam::kInitAlloc(&state, table.data(), 3));
        standIn()->failAfter(INT_MAX);
        EXPECT_EQ(before, state);
        EXPECT_EQ(held, standIn()->blocks());
    }
    // More than a block may have, and as much modulo 2^32.
    for (const int32_t count : {INT_MAX, INT_MAX / 16 + 1, (1 << 28) + 1, (1 << 30) + 1})
        EXPECT_EQ(StatusMemoryAllocation, TypeParam::kInitAlloc(&state, table.data(), count)) << count;
    EXPECT_EQ(before, state);
    EXPECT_EQ(held, standIn()->blocks());
    ASSERT_EQ(StatusOk, TypeParam::kInitAlloc(&state, table.data(), 3));
    EXPECT_EQ(held + 2, standIn()->blocks());
    EXPECT_EQ(3 * (this->kSize == 2 ? 16 : 48), standIn()->latestBytes());
    EXPECT_EQ(StatusOk, TypeParam::kFree(state));
    EXPECT_EQ(held, standIn()->blocks());
}

const exports::FaultRule kCounts{"count", StatusSizeError, {0, -1, INT_MIN}, exports::Behind::kSizes};
/** Steps that are long enough, but no multiple of 4. */
exports::FaultRule steps(std::string_view name) {
    return {name, StatusStepError, {13, 14, 15, INT_MAX}, exports::Behind::kStepLengths};
}

const exports::FamilyFaults kFaults("vekiSRHNInitAlloc", {kCounts});
const exports::FamilyFaults kResidualFaults("vekiSRHNCalcResidual", {kCounts, steps("highResStep")},
                                            exports::Steps::kAny);
const exports::FamilyFaults kGradientFaults("vekiSRHNUpdateGradient", {kCounts, steps("gradientStep")},
                                            exports::Steps::kAny);

}  // namespace
