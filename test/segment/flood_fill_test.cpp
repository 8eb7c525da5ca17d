// Flood fills against their definition.
#include <gtest/gtest.h>

#include <limits>

#include "caller_modes.h"
#include "fill_reference.h"
#include "regions.h"
#include "test/exports/faults.h"

namespace {

using fill_reference::Filler;
using fill_reference::Parameters;
using fill_reference::Rule;

template <typename T, Rule kItsRule, int kItsReach, int kItsChannels>
struct FormOf {
    using Pixel = T;
    static constexpr Rule kRule = kItsRule;
    static constexpr int kReach = kItsReach, kChannels = kItsChannels;
};

template <auto kFill, Rule kRule, int kReach>
struct Form;

template <typename T, Rule kItsRule, int kItsReach,
          Status (*kFill)(T*, int32_t, RoiSize, ImagePoint, T, ConnectedComponent*, uint8_t*)>
struct Form<kFill, kItsRule, kItsReach> : FormOf<T, kItsRule, kItsReach, 1> {
    static Status call(const TestImage<T>& image, const Parameters<T>& p, ConnectedComponent* component,
                       uint8_t* buffer) {
        return kFill(image.data(), image.step(), image.roi(), p.seed, p.newValue[0], component, buffer);
    }
};
template <typename T, Rule kItsRule, int kItsReach,
          Status (*kFill)(T*, int32_t, RoiSize, ImagePoint, const T*, ConnectedComponent*, uint8_t*)>
struct Form<kFill, kItsRule, kItsReach> : FormOf<T, kItsRule, kItsReach, 3> {
    static Status call(const TestImage<T>& image, const Parameters<T>& p, ConnectedComponent* component,
                       uint8_t* buffer) {
        return kFill(image.data(), image.step(), image.roi(), p.seed, p.newValue.data(), component, buffer);
    }
};
template <typename T, Rule kItsRule, int kItsReach,
          Status (*kFill)(T*, int32_t, RoiSize, ImagePoint, T, T, T, ConnectedComponent*, uint8_t*)>
struct Form<kFill, kItsRule, kItsReach> : FormOf<T, kItsRule, kItsReach, 1> {
    static Status call(const TestImage<T>& image, const Parameters<T>& p, ConnectedComponent* component,
                       uint8_t* buffer) {
        return kFill(image.data(), image.step(), image.roi(), p.seed, p.newValue[0], p.minDelta[0], p.maxDelta[0],
                     component, buffer);
    }
};
template <typename T, Rule kItsRule, int kItsReach,
          Status (*kFill)(T*, int32_t, RoiSize, ImagePoint, const T*, const T*, const T*, ConnectedComponent*,
                          uint8_t*)>
struct Form<kFill, kItsRule, kItsReach> : FormOf<T, kItsRule, kItsReach, 3> {
    static Status call(const TestImage<T>& image, const Parameters<T>& p, ConnectedComponent* component,
                       uint8_t* buffer) {
        return kFill(image.data(), image.step(), image.roi(), p.seed, p.newValue.data(), p.minDelta.data(),
                     p.maxDelta.data(), component, buffer);
    }
};

int32_t bufferBytes(Rule rule, RoiSize roi) {
    int32_t bytes = 0;
    EXPECT_EQ(StatusOk, (rule == Rule::kGradient ? vekiFloodFillGetSize_Grad : vekiFloodFillGetSize)(roi, &bytes));
    return bytes;
}

template <typename Form>
class FloodFill : public ::testing::Test {
  protected:
    using Pixel = typename Form::Pixel;

    static Parameters<Pixel> parameters(ImagePoint seed, Pixel newValue, Pixel minDelta, Pixel maxDelta) {
        const auto next = [](Pixel value, int by) { return Pixel(value + Pixel(by)); };
        return {Form::kRule,
                Form::kReach,
                seed,
                {newValue, next(newValue, 1), next(newValue, 2)},
                {minDelta, minDelta, next(minDelta, 1)},
                {maxDelta, next(maxDelta, 1), maxDelta}};
    }

    /** An image of values from 0 to `levels` - 1, in blocks of some pixels. */
    static TestImage<Pixel> noise(RoiSize roi, const Layout& layout, unsigned levels, int blockWidth, uint32_t seed) {
        Random random(seed);
        auto image = TestImage<Pixel>::filled(
            roi, layout, [&](int, int) { return Pixel(random.below(levels)); }, Form::kChannels);
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x)
                for (int k = 0; x % blockWidth != 0 && k < Form::kChannels; ++k)
                    image.at(x * Form::kChannels + k, y) = image.at((x - 1) * Form::kChannels + k, y);
        return image;
    }

    /** Compares a fill with its definition; gives whether the stack of the definition was too small. */
    static bool check(const TestImage<Pixel>& image, const Parameters<Pixel>& p) {
        Filler<Pixel> filler(image, Form::kChannels, p);
        const auto expected = filler.run();
        const auto buffer = workBuffer(bufferBytes(Form::kRule, image.roi()), {Layout::kAfterGuard, p.seed.x, 0});
        ConnectedComponent component{-7, {-7, -7, -7}, {-7, -7, -7, -7}};
        EXPECT_EQ(StatusOk, Form::call(image, p, &component, buffer.data()));
        EXPECT_TRUE(samePixels(expected.image, image)) << "seed " << p.seed.x << ", " << p.seed.y;
        EXPECT_TRUE(buffer.guardsIntact());
        if (!expected.isWritten) {
            EXPECT_EQ(-7, component.area);
            EXPECT_EQ(-7, component.rect.x);
            return false;
        }
        EXPECT_EQ(expected.component.area, component.area);
        EXPECT_EQ(expected.component.rect.x, component.rect.x);
        EXPECT_EQ(expected.component.rect.y, component.rect.y);
        EXPECT_EQ(expected.component.rect.width, component.rect.width);
        EXPECT_EQ(expected.component.rect.height, component.rect.height);
        for (int k = 0; k < 3; ++k)
            EXPECT_TRUE(sameElement(expected.component.value[k], component.value[k]));
        return filler.wasOverfull();
    }
};

#define FORMS(con, suffix, reach)                                            \
    Form<vekiFloodFill_##con##Con_##suffix, Rule::kPlain, reach>,            \
        Form<vekiFloodFill_Grad##con##Con_##suffix, Rule::kGradient, reach>, \
        Form<vekiFloodFill_Range##con##Con_##suffix, Rule::kRange, reach>
#define FORMS_OF(suffix) FORMS(4, suffix, 0), FORMS(8, suffix, 1)
using Forms = ::testing::Types<FORMS_OF(8u_C1IR), FORMS_OF(8u_C3IR), FORMS_OF(16u_C1IR), FORMS_OF(16u_C3IR),
                               FORMS_OF(32f_C1IR), FORMS_OF(32f_C3IR)>;
TYPED_TEST_SUITE(FloodFill, Forms);

// Noise of a few levels, so that there are regions of all shapes, and both joining and leaving by the deltas.
TYPED_TEST(FloodFill, MatchesItsDefinition) {
    using T = typename TypeParam::Pixel;
    Random random(1);
    for (const int32_t width : {1, 2, 3, 5, 8, 9, 15, 16, 17, 18, 31, 33, 63, 64, 65, 66, 130})
        for (const int32_t height : {1, 2, 3, 9})
            for (const Layout& layout : kLayouts) {
                const unsigned levels = 2 + random.below(3);
                const auto image =
                    this->noise({width, height}, layout, levels, 1 + int(random.below(9)), random.bits());
                const ImagePoint seed{int32_t(random.below(unsigned(width))), int32_t(random.below(unsigned(height)))};
                const T newValue = T(random.below(6)), below = T(random.below(2)), above = T(random.below(3));
                this->check(image, this->parameters(seed, newValue, below, above));
                if (this->HasFailure())
                    FAIL() << width << " x " << height << ", " << layout;
            }
}

// A maze of diagonal steps, and a spiral, in which each run leads to the next.
TYPED_TEST(FloodFill, FollowsWindingPaths) {
    using T = typename TypeParam::Pixel;
    const RoiSize roi{97, 41};
    constexpr int kChannels = TypeParam::kChannels;
    const auto spiral = TestImage<T>::filled(
        roi, {},
        [=](int element, int y) {
            const int x = element / kChannels, ring = std::min({x, y, roi.width - 1 - x, roi.height - 1 - y});
            const bool isGap = x == ring && y == ring + 1 && ring % 2 == 1;
            return T((ring % 2 == 0) != isGap ? 3 : 100);
        },
        kChannels);
    const auto diagonals = TestImage<T>::filled(
        roi, {}, [&](int x, int y) { return T((x / kChannels + y) % 2 == 0 ? 3 : 100); }, kChannels);
    for (const auto* image : {&spiral, &diagonals})
        for (const ImagePoint seed : {ImagePoint{0, 0}, ImagePoint{96, 40}, ImagePoint{48, 20}})
            this->check(image->copy({Layout::kBeforeGuard, 0, 3}), this->parameters(seed, T(50), T(2), T(2)));
}

// Teeth above and below a row, from which all runs are found before any is looked at; and more rows of them.
TYPED_TEST(FloodFill, HasRoomForItsRuns) {
    using T = typename TypeParam::Pixel;
    constexpr int kChannels = TypeParam::kChannels;
    bool wasOverfull = false;
    for (const int32_t width : {1, 3, 4, 9, 31, 64, 101})
        for (const int32_t height : {2, 3, 4, 5, 12}) {
            const auto teeth = TestImage<T>::filled(
                {width, height}, {}, [&](int x, int y) { return T(y % 4 != 1 && x / kChannels % 2 == 1 ? 9 : 5); },
                kChannels);
            for (const int32_t y : {0, 1, height - 1})
                wasOverfull |=
                    this->check(teeth.copy({}), this->parameters({width / 2 / 2 * 2, y}, T(200), T(1), T(1)));
            Random random{uint32_t(width * height)};
            // Steps that are taken down and across, but seldom along a row.
            const auto steep = TestImage<T>::filled(
                {width, height}, {}, [&](int x, int) { return T(20 * (x / kChannels) % 200 + int(random.below(3))); },
                kChannels);
            wasOverfull |= this->check(steep.copy({}), this->parameters({width / 2, height / 2}, T(250), T(21), T(21)));
        }
    EXPECT_EQ(TypeParam::kRule == Rule::kRange, wasOverfull);
}

TYPED_TEST(FloodFill, TakesExtremes) {
    using T = typename TypeParam::Pixel;
    using Limits = std::numeric_limits<T>;
    Random random(5);
    for (int turn = 0; turn < 40; ++turn) {
        const auto image = TestImage<T>::random({29, 11}, {}, random.bits(), TypeParam::kChannels);
        for (int k = 0; k < TypeParam::kChannels; ++k)
            image.at(3 * TypeParam::kChannels + k, 4) = turn % 2 == 0 ? Limits::max() : Limits::lowest();
        const T small = T(turn % 3 == 0 ? 3 : 0), large = turn % 5 == 0 ? Limits::max() : T(Limits::max() / 2);
        this->check(image, this->parameters({3, 4}, random.value<T>(), small, large));
    }
}

using Floats = ::testing::Types<FORMS_OF(32f_C1IR), FORMS_OF(32f_C3IR)>;
template <typename Form>
class FloodFillOfFloats : public FloodFill<Form> {};
TYPED_TEST_SUITE(FloodFillOfFloats, Floats);

TYPED_TEST(FloodFillOfFloats, TakesWhatIsNoNumber) {
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN(), kInfinity = std::numeric_limits<float>::infinity();
    for (const float seed : {0.0f, -0.0f, kNaN, kInfinity, 1e-42f})
        for (const float around : {0.0f, -0.0f, kNaN, kInfinity, 1e-42f, 1.0f})
            for (const float newValue : {0.0f, -0.0f, kNaN, kInfinity, 1.0f, 7.0f}) {
                const auto image = TestImage<float>::constant({37, 5}, around, TypeParam::kChannels);
                for (int k = 0; k < TypeParam::kChannels; ++k)
                    image.at(9 * TypeParam::kChannels + k, 2) = seed;
                auto p = this->parameters({9, 2}, newValue, 0, 1);
                p.newValue = {newValue, newValue, newValue};
                this->check(image, p);
            }
}

// Pixels as far from the others as they may be, where the sums are rounded; and subnormal ones beside zeros.
TYPED_TEST(FloodFillOfFloats, DoNotDependOnModes) {
    constexpr float kDelta = 0.3f, kValue = 0.1f;
    const float sums[] = {kValue, kValue + kDelta, kValue - kDelta}, small[] = {0, 1e-42f, 0};
    for (const auto& values : {sums, small}) {
        const auto image = TestImage<float>::filled(
            {70, 9}, {}, [&](int x, int y) { return values[(x / TypeParam::kChannels + 2 * (y / 2)) % 3]; },
            TypeParam::kChannels);
        auto p = this->parameters({6, 0}, 40, 0, 0);
        const float delta = values == sums ? kDelta : 0;
        p.minDelta = p.maxDelta = {delta, delta, delta};
        const auto expected = Filler<float>(image, TypeParam::kChannels, p).run();
        const auto buffer = workBuffer(bufferBytes(TypeParam::kRule, image.roi()));
        forCallerModes([&] {
            ConnectedComponent component{};
            const auto copy = image.copy({});
            TypeParam::call(copy, p, &component, buffer.data());
            EXPECT_TRUE(samePixels(expected.image, copy));
        });
    }
}

TEST(FloodFillSize, IsThatOfTheFormulas) {
    const auto size = [](auto query, RoiSize roi) {
        int32_t bytes = -1;
        const Status status = query(roi, &bytes);
        return status == StatusOk ? bytes : status;
    };
    EXPECT_EQ(38, size(vekiFloodFillGetSize, {1, 1}));
    EXPECT_EQ(24 * 15 / 4 + 32, size(vekiFloodFillGetSize, {5, 3}));
    EXPECT_EQ(7 * 5 + 24 * 15 / 4 + 32, size(vekiFloodFillGetSize_Grad, {5, 3}));
    EXPECT_EQ(2147483642, size(vekiFloodFillGetSize, {357913935, 1}));
    EXPECT_EQ(StatusSizeError, size(vekiFloodFillGetSize, {357913936, 1}));
    EXPECT_EQ(StatusSizeError, size(vekiFloodFillGetSize, {INT32_MAX, INT32_MAX}));
    EXPECT_EQ(StatusSizeError, size(vekiFloodFillGetSize_Grad, {357913935, 1}));
}

const exports::FamilyFaults kFaults("vekiFloodFill", {{"seed",
                                                       StatusOutOfRange,
                                                       {ImagePoint{-1, 0}, ImagePoint{0, -1}, ImagePoint{100000, 0},
                                                        ImagePoint{0, 100000}, ImagePoint{INT32_MIN, INT32_MAX}}}});

}  // namespace
