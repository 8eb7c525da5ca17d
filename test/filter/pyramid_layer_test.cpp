// Pyramid layers against their definition, in the documented order of operations.
#include <cmath>

#include "arguments.h"
#include "border.h"
#include "caller_modes.h"
#include "pyramid_layer_exports.h"
#include "regions.h"
#include "test/exports/faults.h"

namespace {

using pyramid::Direction;
using pyramid::Kernel;

using Line = std::vector<float>;

template <typename Tap>
Line weightsOf(const Kernel<Tap>& kernel) {
    std::conditional_t<std::is_same_v<Tap, float>, float, int64_t> sum = 0;
    for (const Tap tap : kernel)
        sum += tap;
    Line weights;
    for (const Tap tap : kernel)
        weights.push_back(sum == 0 ? float(tap) : float(tap) / float(sum));
    return weights;
}

Line smoothed(const Line& line, const Line& weights) {
    const int reach = int(weights.size()) / 2, length = int(line.size());
    Line result;
    for (int x = 0; x < length; ++x) {
        float sum = 0;
        for (int k = 0; k < int(weights.size()); ++k) {
            const float product = weights[size_t(k)] * line[size_t(borderPixel(BorderReflect, x + k - reach, length))];
            sum = k == 0 ? product : sum + product;
        }
        result.push_back(sum);
    }
    return result;
}

Line interpolated(const Line& line, Direction direction, float rate, int length) {
    Line result;
    const size_t last = line.size() - 1;
    for (int x = 0; x < length; ++x) {
        const float position = direction == Direction::kDown ? float(x) * rate : float(x) / rate;
        const float fraction = position - std::trunc(position);
        const auto i = size_t(position);
        const float left = line[std::min(i, last)], right = line[std::min(i + 1, last)];
        result.push_back(fraction == 0 ? left : left * (1 - fraction) + right * fraction);
    }
    return result;
}

/** What becomes of a row or a column. */
Line nextLevel(const Line& line, Direction direction, float rate, const Line& weights, int length) {
    return direction == Direction::kDown ? interpolated(smoothed(line, weights), direction, rate, length)
                                         : smoothed(interpolated(line, direction, rate, length), weights);
}

template <typename T>
T resultOf(float value) {
    if constexpr (std::is_same_v<T, float>)
        return value;
    else
        return T(std::nearbyint(std::min(std::max(value, 0.0f), float(std::numeric_limits<T>::max()))));
}

template <typename Exports, typename T = typename Exports::Pixel>
TestImage<T> expectedFrom(const TestImage<T>& source, float rate, const Kernel<typename Exports::Tap>& kernel,
                          RoiSize size) {
    constexpr int kChannels = Exports::kChannels;
    const Line weights = weightsOf(kernel);
    const TestImage<float> rows({size.width, source.roi().height}, {}, kChannels);
    const TestImage<T> result(size, {}, kChannels);
    for (int c = 0; c < kChannels; ++c) {
        for (int y = 0; y < source.roi().height; ++y) {
            Line row;
            for (int x = 0; x < source.roi().width; ++x)
                row.push_back(float(source.at(x * kChannels + c, y)));
            row = nextLevel(row, Exports::kDirection, rate, weights, size.width);
            for (int x = 0; x < size.width; ++x)
                rows.at(x * kChannels + c, y) = row[size_t(x)];
        }
        for (int x = c; x < size.width * kChannels; x += kChannels) {
            Line column;
            for (int y = 0; y < source.roi().height; ++y)
                column.push_back(rows.at(x, y));
            column = nextLevel(column, Exports::kDirection, rate, weights, size.height);
            for (int y = 0; y < size.height; ++y)
                result.at(x, y) = resultOf<T>(column[size_t(y)]);
        }
    }
    return result;
}

template <typename T>
TestImage<T> randomImage(RoiSize roi, Layout layout, int channels) {
    return TestImage<T>::filled(
        roi, layout, [random = Random(1)](int, int) mutable { return random.summand<T>(); }, channels);
}

/** Taps that are not symmetric; some are negative, so that results are saturated. */
template <typename Tap>
Kernel<Tap> kernelOf(int size) {
    Kernel<Tap> kernel;
    for (int k = 0; k < size; ++k) {
        const auto tap = float((k * 5 + size) % 7 - 1);
        kernel.push_back(Tap(std::is_same_v<Tap, float> ? tap / 3 : tap));
    }
    kernel[size_t(size) / 2] = Tap(size + 3);
    return kernel;
}

constexpr float kBarelyAbove1 = 1.0f + 0x1p-23f;
constexpr float kRates[] = {2.0f, 1.5f, 1.1f, 3.0f, 2.7f, kBarelyAbove1, 10.0f, 4.25f};

template <typename Exports>
class PyramidLayer : public ::testing::Test {
  protected:
    using T = typename Exports::Pixel;
    using Tap = typename Exports::Tap;
    static constexpr Direction kDirection = Exports::kDirection;

    static void check(RoiSize roi, const Layouts& layouts, float rate, const Kernel<Tap>& kernel, int choice = 0) {
        check(pyramid::makeState<Exports>(roi, rate, kernel).get(), roi, layouts, rate, kernel, choice);
    }

    static void check(PyramidLayerState* state, RoiSize roi, const Layouts& layouts, float rate,
                      const Kernel<Tap>& kernel, int choice = 0) {
        SCOPED_TRACE(::testing::Message() << roi.width << " x " << roi.height << ", " << layouts << ", rate " << rate
                                          << ", taps " << kernel.size() << ", choice " << choice);
        const RoiSize size = pyramid::resultSize(kDirection, roi, rate, choice);
        const auto source = randomImage<T>(roi, layouts[0], Exports::kChannels);
        const TestImage<T> out(size, layouts[1], Exports::kChannels);
        ASSERT_EQ(StatusOk, callWith(Exports::kLayer, source, roi, out, size, state));
        ASSERT_TRUE(samePixels(expectedFrom<Exports>(source, rate, kernel, size), out));
    }
};
TYPED_TEST_SUITE(PyramidLayer, pyramid::AllForms);

TYPED_TEST(PyramidLayer, MatchesItsDefinition) {
    size_t turn = 0;
    const auto nextRate = [&] { return kRates[turn++ % std::size(kRates)]; };
    for (const int taps : {3, 5, 7})
        forSmallImages([&](RoiSize roi, const Layouts& layouts) {
            this->check(roi, layouts, nextRate(), kernelOf<typename TypeParam::Tap>(taps), int(turn % 3));
        });
    for (const RoiSize roi : {RoiSize{1, 50}, RoiSize{2, 33}, RoiSize{37, 41}, RoiSize{66, 19}})
        for (const float rate : kRates)
            for (const int taps : {3, 5, 7, 11})
                this->check(roi, {}, rate, kernelOf<typename TypeParam::Tap>(taps), int(turn++ % 3));
}

// Pixels are mirrored again and again.
TYPED_TEST(PyramidLayer, TakesKernelsLargerThanTheImage) {
    for (const RoiSize roi : {RoiSize{1, 1}, RoiSize{2, 1}, RoiSize{1, 3}, RoiSize{3, 2}, RoiSize{20, 9}})
        for (const int taps : {9, 31, 101})
            for (const float rate : {2.0f, 1.3f, 10.0f})
                this->check(roi, {}, rate, kernelOf<typename TypeParam::Tap>(taps));
}

// Kernels whose sum is 0 are used as they are; sums of large taps are exact for integers.
TYPED_TEST(PyramidLayer, TakesAnyTaps) {
    using Number = typename TypeParam::Tap;
    std::vector<Kernel<Number>> kernels{{-1, 0, 1}, {0, 0, 0},          {-1, 2, -1},
                                        {1, 2, 1},  {3, -32768, 32767}, {-32768, -32768, -32768, 3, -32767}};
    Kernel<Number> large(1001, Number(32767));
    large[0] = 16384;
    kernels.push_back(large);
    if constexpr (std::is_same_v<Number, float>)
        for (const float tap : {NAN, INFINITY, 3e38f, 1e-40f})
            kernels.push_back({tap, tap, 1.5f});
    for (const auto& kernel : kernels)
        for (const float rate : {2.0f, 1.7f})
            this->check({23, 14}, {}, rate, kernel);
}

TYPED_TEST(PyramidLayer, ParallelRowsMatchItsDefinition) {
    forThreadCounts([&](int threads) {
        for (const float rate : {2.0f, 1.4f, 7.0f}) {
            const bool isUp = TypeParam::kDirection == Direction::kUp;
            const RoiSize roi = isUp ? RoiSize{int32_t(300 / rate), int32_t(230 / rate)} : RoiSize{300, 230};
            this->check(roi, kLargeLayouts[threads % 2], rate, kernelOf<typename TypeParam::Tap>(5), 1);
        }
    });
}

TYPED_TEST(PyramidLayer, DependsOnNoMode) {
    using Pixel = typename TypeParam::Pixel;
    const auto kernel = kernelOf<typename TypeParam::Tap>(5);
    const auto source = TestImage<Pixel>::filled(
        {280, 260}, {}, [](int x, int y) { return Pixel(Pixel(x * 7 ^ y * 5) / Pixel(3)); }, TypeParam::kChannels);
    const RoiSize size = pyramid::resultSize(TypeParam::kDirection, source.roi(), 1.3f);
    const auto expected = expectedFrom<TypeParam>(source, 1.3f, kernel, size);
    for (const int threads : {1, 3}) {
        const ThreadCount count(threads);
        forCallerModes([&] {
            const int rounding = std::fegetround();
            const TestImage<Pixel> out(size, {}, TypeParam::kChannels);
            const auto state = pyramid::makeState<TypeParam>(source.roi(), 1.3f, kernel);
            EXPECT_EQ(StatusOk, callWith(TypeParam::kLayer, source, source.roi(), out, size, state.get()));
            EXPECT_EQ(rounding, std::fegetround());
            EXPECT_TRUE(samePixels(expected, out));
        });
    }
}

// Addresses that are no multiples of the element.
TYPED_TEST(PyramidLayer, NeedsNoAlignment) {
    using Pixel = typename TypeParam::Pixel;
    const RoiSize roi{77, 9}, size = pyramid::resultSize(TypeParam::kDirection, roi, 1.5f);
    const auto kernel = kernelOf<typename TypeParam::Tap>(5);
    const auto state = pyramid::makeState<TypeParam>(roi, 1.5f, kernel);
    const auto source = randomImage<Pixel>(roi, {}, TypeParam::kChannels);
    const TestImage<Pixel> out(size, {}, TypeParam::kChannels);
    ASSERT_EQ(StatusOk, callWith(TypeParam::kLayer, source, roi, out, size, state.get()));

    const size_t bytes = size_t(source.step()) * size_t(roi.height),
                 outBytes = size_t(out.step()) * size_t(size.height);
    std::vector<uint8_t> oddSource(bytes + 1), oddOut(outBytes + 1);
    std::memcpy(oddSource.data() + 1, source.data(), bytes);
    ASSERT_EQ(StatusOk, TypeParam::kLayer(reinterpret_cast<const Pixel*>(oddSource.data() + 1), source.step(), roi,
                                          reinterpret_cast<Pixel*>(oddOut.data() + 1), out.step(), size, state.get()));
    EXPECT_EQ(0, std::memcmp(oddOut.data() + 1, out.data(), outBytes));
}

// The edge cases that the definition is easiest to read in.
TEST(PyramidLayers, FollowWorkedExamples) {
    using Down = pyramid::Exports<Direction::kDown, uint8_t, 1>;
    using Up = pyramid::Exports<Direction::kUp, uint8_t, 1>;
    const auto expectRow = [](auto exports, std::vector<uint8_t> row, float rate, Kernel<int16_t> kernel,
                              std::vector<uint8_t> expected) {
        using Exports = decltype(exports);
        const RoiSize roi{int32_t(row.size()), 1}, size{int32_t(expected.size()), 1};
        std::vector<uint8_t> out(expected.size(), 99);
        ASSERT_EQ(StatusOk, Exports::kLayer(row.data(), roi.width, roi, out.data(), size.width, size,
                                            pyramid::makeState<Exports>(roi, rate, kernel).get()));
        EXPECT_EQ(expected, out);
    };
    // (20 + 2 * 0 + 20) / 4, (20 + 2 * 40 + 60) / 4, (60 + 2 * 80 + 60) / 4; one row is all there is above and below.
    expectRow(Down(), {0, 20, 40, 60, 80}, 2, {1, 2, 1}, {10, 40, 70});
    expectRow(Down(), {0, 20, 40, 60, 80}, 2, {0, 1, 0}, {0, 40, 80});
    expectRow(Down(), {0, 20, 40, 60, 80}, 1.5f, {0, 1, 0}, {0, 30, 60, 80});
    expectRow(Up(), {0, 20, 40}, 2, {0, 1, 0}, {0, 10, 20, 30, 40});
    expectRow(Up(), {0, 20, 40}, 2, {0, 1, 0}, {0, 10, 20, 30, 40, 40});
    // 0 10 20 30 40, mirrored to 10 and 30.
    expectRow(Up(), {0, 20, 40}, 2, {1, 2, 1}, {5, 10, 20, 30, 35});
    // 0.5 becomes 0, 1.5 becomes 2.
    expectRow(Up(), {0, 1, 2}, 2, {0, 1, 0}, {0, 0, 1, 2, 2});
    // -510, -355 and 565 are saturated.
    expectRow(Down(), {0, 255, 0, 100, 255}, 2, {-1, 3, -1}, {0, 0, 255});
}

// Positions in long images are rounded: that of the last row, 16777217.5, becomes the row below the last one.
TEST(HugePyramidLayer, EndsAtTheLastRow) {
    using Up = pyramid::Exports<Direction::kUp, uint8_t, 1>;
    const RoiSize roi{1, 16777218}, size{1, 2 * roi.height};
    const auto source =
        TestImage<uint8_t>::filled(roi, {Layout::kBeforeGuard, 0, 0}, [](int, int y) { return uint8_t(y * 7); });
    const TestImage<uint8_t> out(size, {Layout::kBeforeGuard, 0, 0});
    const auto state = pyramid::makeState<Up>(roi, 2, {0, 1, 0});
    ASSERT_EQ(StatusOk, callWith(Up::kLayer, source, roi, out, size, state.get()));
    EXPECT_EQ(source.at(0, roi.height - 1), out.at(0, size.height - 1));
    EXPECT_TRUE(out.guardsIntact());
}

std::vector<exports::FaultRule> layerFaults(std::initializer_list<RoiSize> badDestinations) {
    return {exports::badSize("sourceRoi"),
            exports::tooWide("sourceRoi"),
            exports::tooWide("destinationRoi"),
            {"sourceRoi", StatusSizeError, std::initializer_list<RoiSize>{{9, 5}, {9, INT32_MAX}}},
            {"destinationRoi", StatusSizeError, badDestinations}};
}
std::vector<exports::FaultRule> stateFaults() {
    return {exports::badSize("sourceRoi"),
            {"interpolationMode", StatusBadArgument, {0, 1, 3, -2, INT32_MAX}},
            {"rate", StatusBadArgument, {1.0f, 0.5f, -2.0f, 10.000001f, float(INFINITY), float(NAN)}},
            {"kernelSize", StatusBadArgument, {-3, -1, 0, 1, 2, 4, INT32_MAX - 1, INT32_MIN}},
            {"kernelSize", StatusSizeError, {INT32_MAX, 1000000001}},
            {"sourceRoi", StatusSizeError, std::initializer_list<RoiSize>{{INT32_MAX, 4}, {300000001, 4}}}};
}
// The calls are of sources of 9 x 4 pixels with rate 1.5, whose results have 6 x 3, and at least 13 x 5 pixels.
// Narrower results would excuse a short step.
const exports::FamilyFaults kDownFaults("vekiPyramidLayerDown_", layerFaults({{6, 2}, {6, 4}, {6, 0}, {6, INT32_MIN}}));
const exports::FamilyFaults kUpFaults("vekiPyramidLayerUp_", layerFaults({{13, 4}, {13, 7}, {13, 0}, {13, INT32_MIN}}));
const exports::FamilyFaults kDownStateFaults("vekiPyramidLayerDownInitAlloc", stateFaults());
const exports::FamilyFaults kUpStateFaults("vekiPyramidLayerUpInitAlloc", stateFaults());

}  // namespace
