// Optical flow against its definition, and against shifts that are known.
#include <climits>
#include <cstring>

#include "caller_modes.h"
#include "optical_flow_calls.h"

namespace {

using flow::Levels;
using flow::Options;
using flow::picture;
using flow::pixelOf;
using flow::Points;
using flow::pointsAround;
using flow::pyramidOf;
using flow::Results;
using flow::Scene;

constexpr float kInfinity = std::numeric_limits<float>::infinity(), kNaN = std::numeric_limits<float>::quiet_NaN();

template <typename Form>
class OpticalFlow : public flow::FlowTest<Form> {};
TYPED_TEST_SUITE(OpticalFlow, flow::Forms);

// Scales and sizes that do not follow from one another, and records with different numbers of levels.
TYPED_TEST(OpticalFlow, MatchesItsDefinition) {
    using T = typename TypeParam::Pixel;
    constexpr int kWindows[] = {3, 5, 7, 9, 13, 15, 17, 21, 29, 31, 33, 47, 63};
    constexpr RoiSize kRois[] = {{67, 45}, {40, 9}, {5, 4}, {1, 1}, {2, 33}, {130, 21}, {24, 24}, {1, 70}};
    uint32_t seed = 0;
    for (const int window : kWindows)
        for (int turn = 0; turn < 3; ++turn) {
            const RoiSize roi = kRois[++seed % std::size(kRois)];
            const Layout& layout = kLayouts[seed % std::size(kLayouts)];
            const Options options{window, int32_t(seed % 5), 1 + int32_t(seed % 4), seed % 3 == 0 ? 0 : 0.05f};
            SCOPED_TRACE(::testing::Message() << roi.width << " x " << roi.height << ", window " << window << ", "
                                              << layout << ", levels up to " << options.maxLevel);
            const Scene scene(seed);
            Levels<T> previous, next;
            double scale = 1;
            RoiSize size = roi;
            for (uint32_t k = 0; k < 4; ++k, scale *= 0.61) {
                if (k < 1 + seed % 4)
                    previous.add(picture<T>(scene, size, 0, 0, scale, layout), scale);
                if (k < 1 + seed % 3)
                    next.add(picture<T>(scene, size, 1.3, -0.6, scale, layout), k == 0 ? 1 : -5);
                size = {1 + size.width * 2 / 3, 1 + size.height * 3 / 4};
            }
            const Points from = pointsAround(roi, seed);
            Points guesses = from;
            for (size_t i = 0; seed % 2 == 0 && i < guesses.size(); ++i)
                guesses[i].x += float(i) - 6;
            ASSERT_NO_FATAL_FAILURE(this->expectDefinition(previous, next, from, guesses, options));
        }
}

// Noise of any values: for floats infinities and NaN, too, for which the steps lead anywhere. In every third pair level
// 0 is the same, so that some points are found among floats, too.
TYPED_TEST(OpticalFlow, TakesAnyPixels) {
    using T = typename TypeParam::Pixel;
    for (uint32_t turn = 0; turn < 9; ++turn) {
        SCOPED_TRACE(turn);
        const RoiSize roi{39, 28}, half{20, 14};
        Levels<T> previous, next;
        uint32_t seed = 4 * turn;
        for (Levels<T>* const levels : {&previous, &next}) {
            levels->add(TestImage<T>::random(roi, {}, turn % 3 == 0 ? turn : ++seed), 1);
            levels->add(TestImage<T>::random(half, {}, ++seed), 0.5);
        }
        const Points from = pointsAround(roi, turn);
        ASSERT_NO_FATAL_FAILURE(
            this->expectDefinition(previous, next, from, from, {turn % 2 == 0 ? 5 : 11, 1, 3, 0.01f}));
    }
}

TYPED_TEST(OpticalFlow, TakesAnyPoints) {
    auto [previous, next] = this->shiftedPair({60, 40}, 1.5, 0.75);
    const float some[] = {kNaN, kInfinity, -kInfinity, 3e9f, -3e9f, 1e38f, -0.0f, 30};
    Points from, guesses;
    for (const float x : some)
        for (const float y : some) {
            from.insert(from.end(), {{30, 20}, {x, y}, {x, y}});
            guesses.insert(guesses.end(), {{x, y}, {30, 20}, {x, y}});
        }
    for (const int32_t maxLevel : {0, 2})
        ASSERT_NO_FATAL_FAILURE(this->expectDefinition(previous, next, from, guesses, {9, maxLevel, 3, 0}));
    const Results results = this->followed(previous, next, {{kNaN, 20}, {30, 20}, {30, 20}},
                                           {{30, 20}, {kNaN, 20}, {30, kNaN}}, {9, 2, INT_MAX, 0.01f});
    EXPECT_EQ(0u, results.foundCount());
    EXPECT_EQ(30, results.points[0].x);
}

// Pixels around the smallest eigenvalue that counts, in windows of one level and of two.
TYPED_TEST(OpticalFlow, TellsWeakWindows) {
    using T = typename TypeParam::Pixel;
    size_t found = 0, all = 0;
    for (int contrast = 1; contrast < 14; ++contrast) {
        SCOPED_TRACE(contrast);
        const auto dots = [=](int offset) {
            return TestImage<T>::filled({40, 40}, {}, [=](int x, int y) {
                return pixelOf<T>((x + 2 * y + offset) % 7 == 0 && (x + offset) % 2 == 0 ? 0.25 + contrast / 1280.0
                                                                                         : 0.25);
            });
        };
        Levels<T> previous = pyramidOf(dots(0), 1), next = pyramidOf(dots(1), 1);
        const Points from{{20, 20}, {10.5f, 21.25f}, {3, 3}};
        for (const int32_t maxLevel : {0, 1}) {
            const Options options{9, maxLevel, 5, 0.01f};
            ASSERT_NO_FATAL_FAILURE(this->expectDefinition(previous, next, from, from, options));
            const Results results = this->followed(previous, next, from, from, options);
            found += results.foundCount();
            all += from.size();
        }
    }
    EXPECT_GT(found, all / 4);
    EXPECT_LT(found, all * 3 / 4);
}

/** The median of what points are off by after a shift; those that are lost are far off. */
double medianError(const Points& from, const Results& results, double dx, double dy) {
    std::vector<double> errors;
    for (size_t i = 0; i < from.size(); ++i)
        errors.push_back(results.found[i] == 0
                             ? 99
                             : std::hypot(results.points[i].x - from[i].x - dx, results.points[i].y - from[i].y - dy));
    std::nth_element(errors.begin(), errors.begin() + ptrdiff_t(errors.size() / 2), errors.end());
    return errors[errors.size() / 2];
}

TYPED_TEST(OpticalFlow, FindsKnownShifts) {
    const RoiSize roi{240, 180};
    Points from;
    for (int y = 16; y < roi.height - 16; y += 13)
        for (int x = 16; x < roi.width - 16; x += 13)
            from.push_back({float(x) + 0.25f, float(y) + 0.75f});
    constexpr double kShifts[][2] = {{0, 0}, {0.3, -0.7}, {-2.6, 3.4}, {7.25, -5.5}, {-8.45, -8.5}, {12, 0.1}};
    for (const auto& [dx, dy] : kShifts) {
        SCOPED_TRACE(::testing::Message() << "shifted by " << dx << ", " << dy);
        auto [previous, next] = this->shiftedPair(roi, dx, dy);
        EXPECT_LT(medianError(from, this->followed(previous, next, from, from, {}), dx, dy), 0.02);
    }
}

TYPED_TEST(OpticalFlow, LosesWhatHasNoTexture) {
    using T = typename TypeParam::Pixel;
    const RoiSize roi{64, 64};
    const auto images = {TestImage<T>::constant(roi, pixelOf<T>(0.5)),
                         TestImage<T>::filled(roi, {}, [](int x, int) { return pixelOf<T>(x < 32 ? 0.1 : 0.9); }),
                         TestImage<T>::filled(roi, {}, [](int, int y) { return pixelOf<T>(y / 64.0); })};
    for (const auto& image : images) {
        Levels<T> levels = pyramidOf(image, 3);
        const Results results = this->followed(levels, levels, {{32, 32}, {31.5f, 20}}, {{33, 30}, {31.5f, 20}}, {});
        EXPECT_EQ(0u, results.foundCount());
        EXPECT_EQ(33, results.points[0].x);
        EXPECT_EQ(30, results.points[0].y);
        EXPECT_EQ(0, results.errors[0]);
    }
}

TYPED_TEST(OpticalFlow, SkipsWeakLevels) {
    using T = typename TypeParam::Pixel;
    auto [previous, next] = this->shiftedPair({96, 80}, 0.6, -0.4);
    Levels<T> hazy;
    hazy.add(previous.image(0), 1);
    hazy.add(TestImage<T>::constant(previous.sizes[1], pixelOf<T>(0.5)), 0.5);
    const Points from{{40, 40}, {50.5f, 30}};
    const Results skipped = this->followed(hazy, next, from, from, {15, 1, 30, 0.01f});
    EXPECT_EQ(2u, skipped.foundCount());
    EXPECT_TRUE(areSame(this->followed(previous, next, from, from, {15, 0, 30, 0.01f}), skipped));
}

TYPED_TEST(OpticalFlow, NeedsNoLevelsBeyondThoseInUse) {
    auto [previous, next] = this->shiftedPair({96, 80}, 2.6, -1.4);
    const Points from{{40, 40}, {50.5f, 30}};
    const Options options{15, 1, 30, 0.01f};
    const Results expected = this->followed(previous, next, from, from, options);
    for (auto* const levels : {&previous, &next})
        for (size_t k = 2; k < 4; ++k) {
            levels->pixels[k] = nullptr;
            levels->steps[k] = 0;
            levels->sizes[k] = {-1, int32_t(k)};
        }
    EXPECT_TRUE(areSame(expected, this->followed(previous, next, from, from, options)));
}

TYPED_TEST(OpticalFlow, LosesWhatEndsOutside) {
    const RoiSize roi{64, 64};
    auto [previous, next] = this->shiftedPair(roi, 6, -5);
    const Points from{{60, 30}, {30, 3}, {30, 30}};
    const Results results = this->followed(previous, next, from, from, {});
    EXPECT_EQ(0, results.found[0]);
    EXPECT_EQ(0, results.found[1]);
    EXPECT_EQ(1, results.found[2]);
    EXPECT_GT(results.points[0].x, 63);  // where it is, and not at the border
    EXPECT_LT(results.points[1].y, 0);
}

TYPED_TEST(OpticalFlow, KeepsThePointsOfOneImage) {
    auto levels = this->shiftedPair({64, 48}, 0, 0).first;
    const Points from{{0, 0}, {63, 0}, {0, 47}, {63, 47}, {30.25f, 20.5f}};
    const Results results = this->followed(levels, levels, from, from, {});
    for (size_t i = 0; i < from.size(); ++i)
        EXPECT_TRUE(isSame({from[i], 1, 0}, results, i));
}

TYPED_TEST(OpticalFlow, TakesOneArrayOfPoints) {
    auto [previous, next] = this->shiftedPair({96, 80}, 3.5, 1.5);
    const Points from = pointsAround({96, 80}, 5);
    const Results expected = this->followed(previous, next, from, from, {});
    Results results(from);
    ASSERT_EQ(StatusOk, this->follow(previous.record(), next.record(), results.points, results, {},
                                     this->stateFor({96, 80}, 21)));
    EXPECT_TRUE(areSame(expected, results));
}

TYPED_TEST(OpticalFlow, IgnoresTheModesOfTheCaller) {
    auto [previous, next] = this->shiftedPair({96, 80}, 3.5, 1.5);
    const Points from = flow::manyPointsAround({96, 80}, 5);
    const Results expected = this->followed(previous, next, from, from, {});
    forCallerModes([&, &before = previous, &after = next] {
        EXPECT_TRUE(areSame(expected, this->followed(before, after, from, from, {})));
    });
}

TYPED_TEST(OpticalFlow, NeedsNoAlignment) {
    using T = typename TypeParam::Pixel;
    const RoiSize roi{41, 30};
    auto [previous, next] = this->shiftedPair(roi, 1.5, 0.75);
    const Points from = pointsAround(roi, 3);
    const Results expected = this->followed(previous, next, from, from, {9, 0, 5, 0.01f});
    const int32_t step = roi.width * int32_t{sizeof(T)};
    const TestImage<uint8_t> memory({step, roi.height + 1});
    for (int y = 0; y < roi.height; ++y)
        std::memcpy(&memory.at(1, y), &previous.image(0).at(0, y), size_t(step));
    previous.pixels[0] = &memory.at(1, 0);
    previous.steps[0] = step;
    EXPECT_TRUE(areSame(expected, this->followed(previous, next, from, from, {9, 0, 5, 0.01f})));
}

}  // namespace
