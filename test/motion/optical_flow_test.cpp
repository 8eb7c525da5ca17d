// Optical flow against its definition, and against shifts that are known.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <memory>

#include "caller_modes.h"
#include "flow_reference.h"
#include "standin.h"
#include "test/exports/faults.h"
#include "test/exports/thread_rules.h"
#include "thread_count.h"

namespace {

using flow::Levels;
using flow::Options;
using flow::Result;
using Points = std::vector<ImagePoint32f>;

constexpr float kInfinity = std::numeric_limits<float>::infinity(), kNaN = std::numeric_limits<float>::quiet_NaN();

template <typename T, auto kInit, auto kFollowWith, auto kRelease>
struct Form {
    using Pixel = T;
    static constexpr auto kInitAlloc = kInit;
    static constexpr auto kFollow = kFollowWith;
    static constexpr auto kFree = kRelease;
};
using Forms = ::testing::Types<
    Form<uint8_t, vekiOpticalFlowPyrLKInitAlloc_8u_C1R, vekiOpticalFlowPyrLK_8u_C1R, vekiOpticalFlowPyrLKFree_8u_C1R>,
    Form<uint16_t, vekiOpticalFlowPyrLKInitAlloc_16u_C1R, vekiOpticalFlowPyrLK_16u_C1R,
         vekiOpticalFlowPyrLKFree_16u_C1R>,
    Form<float, vekiOpticalFlowPyrLKInitAlloc_32f_C1R, vekiOpticalFlowPyrLK_32f_C1R, vekiOpticalFlowPyrLKFree_32f_C1R>>;

/** The places, flags and errors of all points. */
struct Results {
    Points points;
    std::vector<int8_t> found;
    std::vector<float> errors;

    explicit Results(const Points& guesses) : points(guesses), found(guesses.size(), 77), errors(guesses.size(), 77) {}
    size_t foundCount() const { return size_t(std::count(found.begin(), found.end(), 1)); }
};

::testing::AssertionResult isSame(const Result& expected, const Results& actual, size_t i) {
    if (sameElement(expected.point.x, actual.points[i].x) && sameElement(expected.point.y, actual.points[i].y) &&
        expected.found == actual.found[i] && sameElement(expected.error, actual.errors[i]))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "point " << i << ": expected (" << expected.point.x << ", "
                                         << expected.point.y << ") " << +expected.found << " " << expected.error
                                         << ", got (" << actual.points[i].x << ", " << actual.points[i].y << ") "
                                         << +actual.found[i] << " " << actual.errors[i];
}

::testing::AssertionResult areSame(const Results& expected, const Results& actual) {
    for (size_t i = 0; i < expected.points.size(); ++i)
        if (const auto same = isSame({expected.points[i], expected.found[i], expected.errors[i]}, actual, i); !same)
            return same;
    return ::testing::AssertionSuccess();
}

/** A scene like a photograph: details of all scales, the coarse ones with more contrast. From 0 to 1 about. */
class Scene {
  public:
    explicit Scene(uint32_t seed) {
        Random random(seed);
        const auto unit = [&] { return double(random.below(65536)) / 65536; };
        for (int i = 0; i < 60; ++i) {
            const double length = 5 * std::pow(24, unit()), angle = 6.2831853 * unit(), frequency = 6.2831853 / length;
            waves_.push_back({frequency * std::cos(angle), frequency * std::sin(angle), 6.2831853 * unit(),
                              0.004 * std::sqrt(length)});
        }
    }
    double at(double x, double y) const {
        double value = 0.5;
        for (const Wave& wave : waves_)
            value += wave.amplitude * std::sin(wave.x * x + wave.y * y + wave.phase);
        return std::clamp(value, 0.0, 1.0);
    }

  private:
    struct Wave {
        double x, y, phase, amplitude;
    };
    std::vector<Wave> waves_;
};

template <typename T>
T pixelOf(double brightness) {
    if constexpr (std::is_same_v<T, float>)
        return float(brightness);
    else
        return T(brightness * std::numeric_limits<T>::max() + 0.5);
}

/** The scene, shifted by so many pixels. */
template <typename T>
TestImage<T> picture(const Scene& scene, RoiSize roi, double dx, double dy, double scale = 1, Layout layout = {}) {
    return TestImage<T>::filled(roi, layout,
                                [&](int x, int y) { return pixelOf<T>(scene.at(x / scale - dx, y / scale - dy)); });
}

/** The next smaller image, of pixels (1 2 1) x (1 2 1) / 16. */
template <typename T>
TestImage<T> halved(const TestImage<T>& image) {
    const RoiSize roi = image.roi();
    const auto at = [&](int x, int y) {
        return double(image.at(std::clamp(x, 0, roi.width - 1), std::clamp(y, 0, roi.height - 1)));
    };
    const auto row = [&](int x, int y) { return at(x - 1, y) + 2 * at(x, y) + at(x + 1, y); };
    return TestImage<T>::filled({(roi.width + 1) / 2, (roi.height + 1) / 2}, {}, [&](int x, int y) {
        const double mean = (row(2 * x, 2 * y - 1) + 2 * row(2 * x, 2 * y) + row(2 * x, 2 * y + 1)) / 16;
        return T(std::is_same_v<T, float> ? mean : mean + 0.5);
    });
}

template <typename T>
Levels<T> pyramidOf(TestImage<T> image, int levelCount) {
    Levels<T> levels;
    double scale = 1;
    for (int k = 0; k <= levelCount; ++k, scale /= 2) {
        levels.add(image, scale);
        image = halved(image);
    }
    return levels;
}

/** Some points in an image, at its borders and far away, with fractions and without. */
Points pointsAround(RoiSize roi, uint32_t seed) {
    Random random(seed);
    const auto width = float(roi.width), height = float(roi.height);
    Points points{
        {0, 0},      {width - 1, height - 1}, {width - 0.5f, 0.25f}, {-0.75f, height / 2}, {width / 2, height + 3.5f},
        {-70.5f, 2}, {3, height + 1e9f},      {-1e30f, 1e30f}};
    for (int i = 0; i < 6; ++i)
        points.push_back(
            {float(random.below(uint32_t(roi.width) * 64)) / 64, float(random.below(uint32_t(roi.height) * 64)) / 64});
    return points;
}

template <typename Form>
class OpticalFlow : public ::testing::Test {
  protected:
    using Pixel = typename Form::Pixel;
    struct Release {
        void operator()(OpticalFlowState* state) const { EXPECT_EQ(StatusOk, Form::kFree(state)); }
    };
    using State = std::unique_ptr<OpticalFlowState, Release>;

    static State stateFor(RoiSize roi, int32_t windowSize) {
        OpticalFlowState* state = nullptr;
        EXPECT_EQ(StatusOk, Form::kInitAlloc(&state, roi, windowSize));
        return State(state);
    }
    static Status follow(const Pyramid& previous, const Pyramid& next, const Points& from, Results& results,
                         const Options& options, const State& state) {
        return Form::kFollow(&previous, &next, from.data(), results.points.data(), results.found.data(),
                             results.errors.data(), int32_t(from.size()), options.windowSize, options.maxLevel,
                             options.maxIterations, options.threshold, state.get());
    }
    static Results followed(Levels<Pixel>& previous, Levels<Pixel>& next, const Points& from, const Points& guesses,
                            const Options& options) {
        Results results(guesses);
        EXPECT_EQ(StatusOk, follow(previous.record(), next.record(), from, results, options,
                                   stateFor(previous.sizes[0], options.windowSize)));
        return results;
    }
    static void expectDefinition(Levels<Pixel>& previous, Levels<Pixel>& next, const Points& from,
                                 const Points& guesses, const Options& options) {
        const Results results = followed(previous, next, from, guesses, options);
        for (size_t i = 0; i < from.size(); ++i)
            ASSERT_TRUE(isSame(flow::follow(previous, next, from[i], guesses[i], options), results, i))
                << "from (" << from[i].x << ", " << from[i].y << ")";
        for (const Levels<Pixel>* const levels : {&previous, &next})
            for (int k = 0; k < levels->count(); ++k)
                ASSERT_TRUE(levels->image(k).guardsIntact());
    }
    /** Two pictures of a scene, the second one shifted, each with three levels. */
    static std::pair<Levels<Pixel>, Levels<Pixel>> shiftedPair(RoiSize roi, double dx, double dy, uint32_t seed = 1) {
        const Scene scene(seed);
        return {pyramidOf(picture<Pixel>(scene, roi, 0, 0), 3), pyramidOf(picture<Pixel>(scene, roi, dx, dy), 3)};
    }
};
TYPED_TEST_SUITE(OpticalFlow, Forms);

// Scales and sizes that do not follow from one another, and records with different numbers of levels.
TYPED_TEST(OpticalFlow, MatchesItsDefinition) {
    using T = typename TypeParam::Pixel;
    constexpr int kWindows[] = {3, 5, 7, 9, 13, 15, 17, 21, 29, 31, 33, 47, 63};
    constexpr RoiSize kRois[] = {{67, 45}, {40, 9}, {5, 4}, {1, 1}, {2, 33}, {130, 21}, {24, 24}, {1, 70}};
    uint32_t seed = 0;
    for (const int window : kWindows)
        for (const Layout& layout : kLayouts) {
            const RoiSize roi = kRois[++seed % std::size(kRois)];
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

// Noise of any values: for floats infinities and NaN, too, for which the steps lead anywhere.
TYPED_TEST(OpticalFlow, TakesAnyPixels) {
    using T = typename TypeParam::Pixel;
    for (uint32_t seed = 0; seed < 24; ++seed) {
        SCOPED_TRACE(seed);
        const RoiSize roi{39, 28}, half{20, 14};
        Levels<T> previous, next;
        for (Levels<T>* const levels : {&previous, &next}) {
            levels->add(TestImage<T>::random(roi, {}, seed % 3 == 0 ? 9 : ++seed), 1);
            levels->add(TestImage<T>::random(half, {}, ++seed), 0.5);
        }
        const Points from = pointsAround(roi, seed);
        ASSERT_NO_FATAL_FAILURE(
            this->expectDefinition(previous, next, from, from, {seed % 2 == 0 ? 5 : 11, 1, 3, 0.01f}));
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

/** A shift that is a multiple of no fraction; the median of what the points that are found are off by. */
template <typename T, typename Follow>
double medianError(RoiSize roi, double dx, double dy, const Follow& follow) {
    Points from;
    for (int y = 16; y < roi.height - 16; y += 9)
        for (int x = 16; x < roi.width - 16; x += 9)
            from.push_back({float(x) + 0.25f, float(y) + 0.75f});
    const Results results = follow(from);
    std::vector<double> errors;
    for (size_t i = 0; i < from.size(); ++i)
        errors.push_back(results.found[i] == 0
                             ? 99
                             : std::hypot(results.points[i].x - from[i].x - dx, results.points[i].y - from[i].y - dy));
    std::nth_element(errors.begin(), errors.begin() + ptrdiff_t(errors.size() / 2), errors.end());
    return errors[errors.size() / 2];
}

TYPED_TEST(OpticalFlow, FindsKnownShifts) {
    using T = typename TypeParam::Pixel;
    const RoiSize roi{240, 180};
    constexpr double kShifts[][2] = {{0, 0}, {0.3, -0.7}, {-2.6, 3.4}, {7.25, -5.5}, {-8.45, -8.5}, {12, 0.1}};
    for (const auto& shift : kShifts) {
        SCOPED_TRACE(::testing::Message() << "shifted by " << shift[0] << ", " << shift[1]);
        auto [previous, next] = this->shiftedPair(roi, shift[0], shift[1]);
        const double error =
            medianError<T>(roi, shift[0], shift[1], [&, &before = previous, &after = next](const Points& from) {
                return this->followed(before, after, from, from, {});
            });
        EXPECT_LT(error, 0.02);
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

TYPED_TEST(OpticalFlow, IsTheSameForAnyNumberOfThreads) {
    auto [previous, next] = this->shiftedPair({96, 80}, 3.5, 1.5);
    Points from;
    for (uint32_t seed = 0; seed < 40; ++seed)
        for (const ImagePoint32f point : pointsAround({96, 80}, seed))
            from.push_back(point);
    for (const int window : {3, 21, 63}) {
        SCOPED_TRACE(window);
        const Options options{window, 3, 10, 0.01f};
        Results expected(from);
        {
            const ThreadCount one(1);
            expected = this->followed(previous, next, from, from, options);
        }
        forThreadCounts([&](int threads) {
            EXPECT_TRUE(areSame(expected, this->followed(previous, next, from, from, options)));
            const auto state = this->stateFor({96, 80}, window);
            const ThreadCount others(4 - threads);  // than the state was made for
            for (int call = 0; call < 2; ++call) {
                Results results(from);
                ASSERT_EQ(StatusOk, this->follow(previous.record(), next.record(), from, results, options, state));
                EXPECT_TRUE(areSame(expected, results));
            }
        });
    }
}

TYPED_TEST(OpticalFlow, SharesPointsFromTheDocumentedNumberOn) {
    if (standIn() == nullptr)
        GTEST_SKIP() << "the core library is the real one";
    const auto rule = exports::threadRules(VEKCV_HEADER).at("vekiOpticalFlowPyrLK_8u_C1R");
    ASSERT_GT(rule.pixels, 0);
    auto [previous, next] = this->shiftedPair({24, 24}, 1, 1);
    const auto teams = [&, &before = previous, &after = next](int32_t window, int64_t points, const auto& state) {
        const Points from(size_t(points), {11, 12});
        Results results(from);
        return teamsOf([&] {
            ASSERT_EQ(StatusOk, this->follow(before.record(), after.record(), from, results, {window, 0, 1, 0}, state));
        });
    };
    for (const int32_t window : {3, 21, 63}) {
        const int64_t needed = (rule.pixels + window * window - 1) / (window * window);
        forThreadCounts([&](int threads) {
            const auto state = this->stateFor({24, 24}, window);
            EXPECT_EQ(0, teams(window, needed - 1, state));
            EXPECT_EQ(threads > 1 ? 1 : 0, teams(window, needed, state));
            const ThreadCount more(3);
            EXPECT_EQ(threads > 1 ? 1 : 0, teams(window, needed, state));
        });
    }
}

TYPED_TEST(OpticalFlow, IgnoresTheModesOfTheCaller) {
    auto [previous, next] = this->shiftedPair({96, 80}, 3.5, 1.5);
    Points from;
    for (uint32_t seed = 0; seed < 5; ++seed)
        for (const ImagePoint32f point : pointsAround({96, 80}, seed))
            from.push_back(point);
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

TYPED_TEST(OpticalFlow, AllocatesStatesOnly) {
    if (standIn() == nullptr)
        GTEST_SKIP() << "the core library is the real one";
    auto [previous, next] = this->shiftedPair({96, 80}, 3.5, 1.5);
    const Points from = pointsAround({96, 80}, 5);
    const int held = standIn()->blocks();
    OpticalFlowState* const before = reinterpret_cast<OpticalFlowState*>(&previous);
    OpticalFlowState* state = before;
    standIn()->failAfter(0);
    EXPECT_EQ(StatusMemoryAllocation, TypeParam::kInitAlloc(&state, {96, 80}, 21));
    EXPECT_EQ(before, state);
    standIn()->failAfter(1);
    ASSERT_EQ(StatusOk, TypeParam::kInitAlloc(&state, {96, 80}, 21));
    const typename TestFixture::State owner(state);
    standIn()->failAfter(0);
    Results results(from);
    EXPECT_EQ(StatusOk, this->follow(previous.record(), next.record(), from, results, {}, owner));
    standIn()->failAfter(INT_MAX);
    EXPECT_EQ(held + 1, standIn()->blocks());
}

/** What may be wrong with records and states, in the order in which it is found. */
TYPED_TEST(OpticalFlow, ReportsTheFirstFaultOfItsRecords) {
    using T = typename TypeParam::Pixel;
    struct Setup {
        Levels<T> previous, next;
        Options options{9, 2, 5, 0.01f};
        RoiSize roi{48, 40};
        bool hasOtherState = false;
        std::vector<int> nullArrays{};
    };
    struct Fault {
        Status status;
        void (*put)(Setup& setup);
    };
    constexpr int32_t kHalf = int32_t{sizeof(T)} / 2;
    std::vector<Fault> faults{
        {StatusNullPointer, [](Setup& s) { s.previous.pixels[0] = nullptr; }},
        {StatusNullPointer, [](Setup& s) { s.next.pixels[0] = nullptr; }},
        {StatusNullPointer, [](Setup& s) { s.previous.pixels[2] = nullptr; }},
        {StatusNullPointer, [](Setup& s) { s.next.pixels[1] = nullptr; }},
        {StatusSizeError, [](Setup& s) { s.options.windowSize = 11; }},
        {StatusSizeError, [](Setup& s) { s.options.maxIterations = 0; }},
        {StatusSizeError, [](Setup& s) { s.next.sizes[0].width = 47; }},
        {StatusSizeError, [](Setup& s) { s.next.sizes[2].height += 1; }},
        {StatusSizeError, [](Setup& s) { s.previous.sizes[1].width -= 1; }},
        {StatusSizeError, [](Setup& s) { s.previous.sizes[1].height = s.next.sizes[1].height = 0; }},
        {StatusSizeError, [](Setup& s) { s.roi.width = 47; }},
        {StatusSizeError, [](Setup& s) { s.roi.height = 39; }},
        {StatusStepError, [](Setup& s) { s.previous.steps[0] -= int32_t{sizeof(T)}; }},
        {StatusStepError, [](Setup& s) { s.next.steps[0] = -s.next.steps[0]; }},
        {StatusStepError, [](Setup& s) { s.previous.steps[2] = 0; }},
        {StatusStepError, [](Setup& s) { s.next.steps[1] -= int32_t{sizeof(T)}; }},
    };
    if (kHalf > 0)
        for (const auto put :
             {+[](Setup& s) { s.previous.steps[0] += kHalf; }, +[](Setup& s) { s.next.steps[0] += kHalf; },
              +[](Setup& s) { s.previous.steps[1] += kHalf; }, +[](Setup& s) { s.next.steps[2] += kHalf; }})
            faults.push_back({StatusStepNotMultiple, put});
    faults.push_back({StatusBadArgument, [](Setup& s) { s.options.threshold = -1; }});
    faults.push_back({StatusBadArgument, [](Setup& s) { s.hasOtherState = true; }});

    const auto [previous, next] = this->shiftedPair({48, 40}, 1, 1);
    const Points from{{20, 20}};
    for (size_t second = 0; second < faults.size(); ++second)
        for (size_t first = 0; first <= second; ++first) {
            Setup setup{previous, next};
            faults[second].put(setup);
            if (first != second)
                faults[first].put(setup);
            OpticalFlowState* state = nullptr;
            constexpr auto kOther =
                std::is_same_v<T, float> ? vekiOpticalFlowPyrLKInitAlloc_8u_C1R : vekiOpticalFlowPyrLKInitAlloc_32f_C1R;
            ASSERT_EQ(StatusOk, (setup.hasOtherState ? kOther : TypeParam::kInitAlloc)(&state, setup.roi, 9));
            Results results(from);
            ASSERT_EQ(faults[first].status, this->follow(setup.previous.record(), setup.next.record(), from, results,
                                                         setup.options, typename TestFixture::State(state)))
                << "faults " << first << " and " << second;
            ASSERT_TRUE(areSame(Results(from), results));
        }
}

// Of the levels that are not in use, nothing counts; a number of levels below 0 stands for level 0.
TYPED_TEST(OpticalFlow, ChecksLevelZeroAlways) {
    auto [previous, next] = this->shiftedPair({48, 40}, 1, 1);
    previous.pixels[1] = nullptr;
    const Points from{{20, 20}};
    const auto state = this->stateFor({48, 40}, 9);
    const auto statusOf = [&, &before = previous, &after = next](int32_t maxLevel) {
        Results results(from);
        return this->follow(before.record(), after.record(), from, results, {9, maxLevel, 1, 0}, state);
    };
    EXPECT_EQ(StatusOk, statusOf(0));
    EXPECT_EQ(StatusNullPointer, statusOf(1));
    EXPECT_EQ(StatusBadArgument, statusOf(-1));
    EXPECT_EQ(StatusBadArgument, statusOf(INT_MIN));
    next.pixels[0] = nullptr;
    EXPECT_EQ(StatusNullPointer, statusOf(-1));
}

TYPED_TEST(OpticalFlow, NeedsTheArraysOfRecords) {
    auto [previous, next] = this->shiftedPair({48, 40}, 1, 1);
    const Pyramid before = previous.record(), after = next.record();
    const Points from{{20, 20}};
    const auto state = this->stateFor({48, 40}, 9);
    for (int fault = 0; fault < 8; ++fault) {
        SCOPED_TRACE(fault);
        Pyramid records[] = {before, after};
        Pyramid& record = records[fault / 4];
        if (fault % 4 == 0)
            record.levelImages = nullptr;
        else if (fault % 4 == 1)
            record.levelSizes = nullptr;
        else if (fault % 4 == 2)
            record.levelScales = nullptr;
        else
            record.levelSteps = nullptr;
        Results results(from);
        EXPECT_EQ(fault == 6 ? StatusOk : StatusNullPointer,  // the scales of the next image are not in use
                  this->follow(records[0], records[1], from, results, {9, 0, 1, 0}, state));
    }
}

const exports::FamilyFaults kStateFaults(
    "vekiOpticalFlowPyrLKInitAlloc", {{"windowSize", StatusSizeError, {2, 1, 0, -3, 4, 62, 64, 65, INT_MAX, INT_MIN}}});
const exports::FamilyFaults kFaults("vekiOpticalFlowPyrLK_",
                                    {{"pointCount", StatusSizeError, {0, -1, INT_MIN}},
                                     {"windowSize", StatusSizeError, {5, 1, 21, 0, -3}},
                                     {"maxIterations", StatusSizeError, {0, -1, INT_MIN}},
                                     {"maxLevel", StatusBadArgument, {-1, INT_MIN}},
                                     {"threshold", StatusBadArgument, {-0.001f, -kInfinity, kNaN}}});

}  // namespace
