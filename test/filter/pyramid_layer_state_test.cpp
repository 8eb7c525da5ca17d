// States of pyramid layers: how they are made, and what they serve.
#include <cstring>

#include "arguments.h"
#include "pyramid_layer_exports.h"
#include "standin.h"
#include "thread_count.h"

namespace {

using pyramid::Direction;

template <typename Exports>
class PyramidLayerStates : public ::testing::Test {
  protected:
    using T = typename Exports::Pixel;
    static inline const pyramid::Kernel<typename Exports::Tap> kKernel{1, 3, 7, 2, 1};

    static TestImage<T> source(RoiSize roi) {
        return TestImage<T>::filled(
            roi, {}, [](int x, int y) { return T(x * 13 + y * 7); }, Exports::kChannels);
    }

    static Status statusFor(PyramidLayerState* state, RoiSize roi, RoiSize size) {
        const TestImage<T> out(size, {}, Exports::kChannels), untouched(size, {}, Exports::kChannels);
        const Status status = callWith(Exports::kLayer, source(roi), roi, out, size, state);
        EXPECT_TRUE(status == StatusOk || samePixels(untouched, out));
        return status;
    }

    static TestImage<T> result(PyramidLayerState* state, RoiSize roi, RoiSize size) {
        const TestImage<T> out(size, {}, Exports::kChannels);
        EXPECT_EQ(StatusOk, callWith(Exports::kLayer, source(roi), roi, out, size, state));
        return out;
    }
};
TYPED_TEST_SUITE(PyramidLayerStates, pyramid::AllForms);

TYPED_TEST(PyramidLayerStates, ServeSourcesUpToTheirSize) {
    const RoiSize most{67, 40};
    const auto state = pyramid::makeState<TypeParam>(most, 1.7f, this->kKernel);
    for (const RoiSize roi : {most, RoiSize{1, 1}, RoiSize{66, 1}, RoiSize{1, 40}, RoiSize{33, 39}, most}) {
        const RoiSize size = pyramid::resultSize(TypeParam::kDirection, roi, 1.7f);
        const auto own = pyramid::makeState<TypeParam>(roi, 1.7f, this->kKernel);
        EXPECT_TRUE(samePixels(this->result(own.get(), roi, size), this->result(state.get(), roi, size)));
    }
    for (const RoiSize roi : {RoiSize{68, 1}, RoiSize{1, 41}})
        EXPECT_EQ(StatusSizeError,
                  this->statusFor(state.get(), roi, pyramid::resultSize(TypeParam::kDirection, roi, 1.7f)));
}

// The sizes that the ROI functions tell are the ones that are taken.
TYPED_TEST(PyramidLayerStates, TakeTheSizesOfTheLevels) {
    const RoiSize roi{21, 10};
    for (const float rate : {2.0f, 1.5f, 3.3f}) {
        const auto state = pyramid::makeState<TypeParam>(roi, rate, this->kKernel);
        const RoiSize least = pyramid::resultSize(TypeParam::kDirection, roi, rate, 0);
        const RoiSize most = pyramid::resultSize(TypeParam::kDirection, roi, rate, 1);
        for (int width = least.width - 1; width <= most.width + 1; ++width)
            for (int height = least.height - 1; height <= most.height + 1; ++height) {
                const bool isTaken =
                    width >= least.width && width <= most.width && height >= least.height && height <= most.height;
                ASSERT_EQ(isTaken ? StatusOk : StatusSizeError, this->statusFor(state.get(), roi, {width, height}))
                    << width << " x " << height << ", rate " << rate;
            }
    }
}

// A base serves both directions between all levels.
TYPED_TEST(PyramidLayerStates, ServeAPyramid) {
    const RoiSize base{53, 38};
    Pyramid* pyramid = nullptr;
    ASSERT_EQ(StatusOk, vekiPyramidInitAlloc(&pyramid, 100, base, 1.6f));
    const auto state = pyramid::makeState<TypeParam>(base, 1.6f, this->kKernel);
    for (int level = 0; level < pyramid->levelCount; ++level) {
        const RoiSize larger = pyramid->levelSizes[level], smaller = pyramid->levelSizes[level + 1];
        if (TypeParam::kDirection == Direction::kDown)
            EXPECT_EQ(StatusOk, this->statusFor(state.get(), larger, smaller));
        else
            EXPECT_EQ(StatusOk, this->statusFor(state.get(), smaller, larger));
    }
    EXPECT_EQ(StatusOk, vekiPyramidFree(pyramid));
}

// Memory is for the threads of InitAlloc, the kernel may go, and a state can be used again.
TYPED_TEST(PyramidLayerStates, KeepWhatTheyAreMadeFrom) {
    const RoiSize roi{280, 250}, size = pyramid::resultSize(TypeParam::kDirection, roi, 1.5f);
    auto kernel = this->kKernel;
    pyramid::StatePointer state;
    {
        const ThreadCount one(1);
        state = pyramid::makeState<TypeParam>(roi, 1.5f, kernel);
    }
    std::fill(kernel.begin(), kernel.end(), typename TypeParam::Tap(9));
    const auto expected = this->result(state.get(), roi, size);
    for (const int threads : {1, 3}) {
        const ThreadCount count(threads);
        EXPECT_TRUE(samePixels(expected, this->result(state.get(), roi, size)));
        const auto another = pyramid::makeState<TypeParam>(roi, 1.5f, this->kKernel);
        const ThreadCount one(1);
        EXPECT_TRUE(samePixels(expected, this->result(another.get(), roi, size)));
    }
}

TYPED_TEST(PyramidLayerStates, ShareRowsFromTheDocumentedSizesOn) {
    if (standIn() == nullptr)
        GTEST_SKIP() << "the core library is the real one";
    const bool isUp = TypeParam::kDirection == Direction::kUp;
    const ThreadCount count(2);
    for (const bool isShared : {false, true}) {
        // Expanded by 2, 128 becomes 255 or 256, and 129 becomes 257 or 258.
        const RoiSize large = isShared ? RoiSize{256, 256} : RoiSize{257, 255};
        const RoiSize roi = isUp ? RoiSize{isShared ? 128 : 129, 128} : large;
        const RoiSize size = isUp ? large : pyramid::resultSize(TypeParam::kDirection, large, 2);
        const auto state = pyramid::makeState<TypeParam>(roi, 2, this->kKernel);
        EXPECT_EQ(isShared ? 1 : 0, teamsOf([&] { this->result(state.get(), roi, size); }));
    }
}

TYPED_TEST(PyramidLayerStates, AreNoneElsewhere) {
    const RoiSize roi{9, 4}, size = pyramid::resultSize(TypeParam::kDirection, roi, 2);
    const auto state = pyramid::makeState<TypeParam>(roi, 2, this->kKernel);
    alignas(64) uint8_t copy[256] = {};
    EXPECT_EQ(StatusBadArgument, this->statusFor(reinterpret_cast<PyramidLayerState*>(copy), roi, size));
    std::memcpy(copy, state.get(), 128);
    EXPECT_EQ(StatusBadArgument, this->statusFor(reinterpret_cast<PyramidLayerState*>(copy), roi, size));
    // Before the sizes, and after the steps.
    EXPECT_EQ(StatusBadArgument, this->statusFor(reinterpret_cast<PyramidLayerState*>(copy), {10, 4}, {1, 1}));
    EXPECT_EQ(StatusNullPointer, TypeParam::kFree(nullptr));
}

/** Whether the exports of one form take the states of another one. */
template <typename Form, typename Other>
void expectToTake() {
    const auto state = pyramid::makeState<Other>({9, 4}, 2, {1, 2, 1});
    const RoiSize size = pyramid::resultSize(Form::kDirection, {9, 4}, 2);
    const TestImage<typename Form::Pixel> from({9, 4}, {}, Form::kChannels), to(size, {}, Form::kChannels);
    const Status expected = std::is_same_v<Form, Other> ? StatusOk : StatusBadArgument;
    EXPECT_EQ(expected, callWith(Form::kLayer, from, from.roi(), to, size, state.get()));
}
template <typename Form, typename... Others>
void expectToTakeItsOwn(::testing::Types<Others...>) {
    (expectToTake<Form, Others>(), ...);
}
TYPED_TEST(PyramidLayerStates, ServeTheirFunctionsOnly) {
    expectToTakeItsOwn<TypeParam>(pyramid::AllForms());
}

// Nothing is written to the place of the state, and nothing is read of a kernel whose state would be too large.
TYPED_TEST(PyramidLayerStates, NeedMemory) {
    const typename TypeParam::Tap taps[3] = {1, 2, 1};
    int place = 0;
    auto* const before = reinterpret_cast<PyramidLayerState*>(&place);
    PyramidLayerState* state = before;
    const auto make = [&](RoiSize roi, int32_t kernelSize) {
        return TypeParam::kInitAlloc(&state, roi, 1.5f, taps, kernelSize, 2);
    };
    for (const int32_t kernelSize : {INT32_MAX, 1000000001, 100001})
        EXPECT_EQ(StatusSizeError, make({100000, 4}, kernelSize));
    EXPECT_EQ(StatusSizeError, make({INT32_MAX, 1}, 3));
    EXPECT_EQ(StatusSizeError, make({1 << 28, 1}, 3));
    // About 2^64 bytes for a row of results for each tap, which are few in 64 bits.
    for (int32_t width = INT32_MAX - 200; width < INT32_MAX; ++width) {
        const RoiSize size = pyramid::resultSize(TypeParam::kDirection, {width, 1}, 1.5f);
        const double rowBytes = double(size.width) * TypeParam::kChannels * sizeof(float);
        const int64_t middle = int64_t(0x1p64 / rowBytes) | 1;
        for (int64_t kernelSize = middle - 40; kernelSize < middle + 40 && kernelSize <= INT32_MAX; kernelSize += 2)
            ASSERT_EQ(StatusSizeError, make({width, 1}, int32_t(kernelSize)));
    }
    if (standIn() != nullptr) {
        const int held = standIn()->blocks();
        standIn()->failAfter(0);
        EXPECT_EQ(StatusMemoryAllocation, make({9, 4}, 3));
        standIn()->failAfter(INT32_MAX);
        EXPECT_EQ(held, standIn()->blocks());
    }
    EXPECT_EQ(before, state);
    EXPECT_EQ(StatusOk, make({9, INT32_MAX}, 3));
    EXPECT_EQ(StatusOk, TypeParam::kFree(state));
}

}  // namespace
