// Histograms against their definition, frame by frame, and what they make of scenes.
#include <cstring>
#include <utility>

#include "caller_modes.h"
#include "histogram_reference.h"
#include "test/exports/faults.h"

namespace {

using histogram::Scene;
using motion::Bytes;

template <typename Form>
class ForegroundHistogram : public testing::Test {};
using Forms = testing::Types<histogram::Gray, histogram::Colour>;
TYPED_TEST_SUITE(ForegroundHistogram, Forms);

/** Pixels with some values that they come back to, so that tables fill and entries move. */
template <typename Form>
Bytes frameOf(RoiSize roi, Layout layout, Random& random) {
    return Bytes::filled(
        roi, layout,
        [&](int x, int y) {
            const uint32_t values[] = {20, 27, 90, 200, 255};
            const uint32_t value = values[(uint32_t(x * 5 + y) + random.below(1 + uint32_t(x % 4))) % 5];
            return uint8_t(random.below(12) == 0 ? random.below(256) : value - random.below(9));
        },
        Form::kChannels);
}

Bytes maskOf(RoiSize roi, Layout layout, Random& random) {
    return Bytes::filled(roi, layout, [&](int x, int) {
        return uint8_t(random.below(3) == 0 || x % 7 == 3 ? 1 + random.below(255) : 0);
    });
}

TYPED_TEST(ForegroundHistogram, IsItsDefinitionFrameByFrame) {
    uint32_t seed = 0;
    for (const Layout layout : kLayouts) {
        const RoiSize roi{17, 3};
        SCOPED_TRACE(layout);
        Random random(++seed);
        Scene<TypeParam> scene(frameOf<TypeParam>(roi, layout, random));
        scene.model->parameters.fillsHoles = scene.model->parameters.removesSpecks = 0;
        for (int frame = 1; frame < 60 && !testing::Test::HasFailure(); ++frame)
            scene.expectSame(frameOf<TypeParam>(roi, layout, random), maskOf(roi, layout, random), layout);
        EXPECT_EQ(59, scene.model->updateCount);
    }
}

TYPED_TEST(ForegroundHistogram, UsesTheParametersOfTheModel) {
    const RoiSize roi{23, 2};
    Random random(1);
    Scene<TypeParam> scene(frameOf<TypeParam>(roi, {}, random));
    scene.model->parameters = {.valueLevels = 1,  // the integers up to the flags are those of the model
                               .valueEntries = 1,
                               .valueCapacity = 1,
                               .changeLevels = 1,
                               .changeEntries = 1,
                               .changeCapacity = 1,
                               .fillsHoles = 0,
                               .removesSpecks = 0,
                               .referenceRate = 0.3f,
                               .gradualRate = 0.02f,
                               .startRate = 0.6f,
                               .tolerance = 3.5f,
                               .majority = 0.5f,
                               .minimumArea = 0};
    for (int frame = 1; frame < 120 && !testing::Test::HasFailure(); ++frame)
        scene.expectSame(frameOf<TypeParam>(roi, {}, random), maskOf(roi, {}, random), {});
}

/** All of it foreground for a while, so that entries are forgotten and everything is absorbed. */
TYPED_TEST(ForegroundHistogram, ForgetsAndAbsorbs) {
    const RoiSize roi{9, 1};
    Random random(2);
    Scene<TypeParam> scene(frameOf<TypeParam>(roi, {}, random));
    scene.model->parameters.fillsHoles = scene.model->parameters.removesSpecks = 0;
    scene.model->parameters.gradualRate = 0.2f;
    scene.model->parameters.startRate = 0.4f;
    const Bytes stopped = frameOf<TypeParam>(roi, {}, random);
    for (int frame = 1; frame < 150 && !testing::Test::HasFailure(); ++frame)
        scene.expectSame(frame % 50 < 3 ? frameOf<TypeParam>(roi, {}, random) : stopped,
                         Bytes::constant(roi, frame < 20 ? 255 : 0), {});
}

TYPED_TEST(ForegroundHistogram, DoesNotDependOnTheModesOfTheCaller) {
    const RoiSize roi{14, 2};
    Bytes expected(roi, {}, TypeParam::kChannels);
    bool isFirst = true;
    forCallerModes([&] {
        Random random(3);
        Scene<TypeParam> scene(frameOf<TypeParam>(roi, {}, random));
        Bytes background(roi, {}, TypeParam::kChannels);
        for (int frame = 1; frame < 30; ++frame)
            background = scene.update(frameOf<TypeParam>(roi, {}, random), maskOf(roi, {}, random));
        if (std::exchange(isFirst, false))
            expected = background;
        EXPECT_TRUE(samePixels(expected, background));
    });
}

// --- scenes

constexpr RoiSize kScene{48, 20};
constexpr int kNowhere = 1000;

/** Noise over columns of grey, and an object of 10 x 10 pixels. */
template <typename Form>
Bytes sceneWith(int left, Random& random, uint32_t noise = 4) {
    return Bytes::filled(
        kScene, {},
        [&](int x, int y) {
            const int column = x / Form::kChannels;
            const bool isObject = column >= left && column < left + 10 && y >= 5 && y < 15;
            return uint8_t(uint32_t(isObject ? 230 : 60 + column) + random.below(noise));
        },
        Form::kChannels);
}

Bytes objectAt(int left) {
    return Bytes::filled(
        kScene, {}, [=](int x, int y) { return uint8_t(x >= left && x < left + 10 && y >= 5 && y < 15 ? 255 : 0); });
}

TYPED_TEST(ForegroundHistogram, TellsWhatMovesFromWhatStays) {
    Random random(4);
    Scene<TypeParam> scene(sceneWith<TypeParam>(kNowhere, random));
    for (int frame = 0; frame < 60; ++frame) {
        const int left = frame < 20 ? kNowhere : frame - 20;
        const Bytes source = sceneWith<TypeParam>(left, random);
        const Bytes mask = scene.classify(source);
        ASSERT_TRUE(samePixels(objectAt(left), mask)) << "frame " << frame;
        const Bytes background = scene.update(source, mask);
        for (int x = 0; x < kScene.width; ++x)
            ASSERT_NEAR(61.5 + x, background.at(x * TypeParam::kChannels, 9), 2.5);
    }
}

/** An object that stops is background after as many frames as the rates say; the scene behind it is not forgotten. */
TYPED_TEST(ForegroundHistogram, AbsorbsWhatStops) {
    for (const int before : {0, 300}) {
        Random random(5);
        Scene<TypeParam> scene(sceneWith<TypeParam>(kNowhere, random));
        const auto step = [&](int left) {
            const Bytes source = sceneWith<TypeParam>(left, random, 2), mask = scene.classify(source);
            scene.update(source, mask);
            return mask;
        };
        for (int frame = 0; frame < before; ++frame)
            step(kNowhere);
        const int frames = before == 0 ? 35 : 460;
        for (int frame = 0; frame < frames; ++frame)
            ASSERT_TRUE(samePixels(objectAt(20), step(20))) << "frame " << frame << " behind " << before;
        EXPECT_TRUE(samePixels(objectAt(kNowhere), step(20)));
        step(kNowhere);  // the change itself was never seen
        EXPECT_TRUE(samePixels(objectAt(kNowhere), step(kNowhere)));
    }
}

/** What flickers between two values is background once masks have said so, and nothing else is. */
TYPED_TEST(ForegroundHistogram, LearnsChangesOfTheBackground) {
    const auto constant = [](int value) { return Bytes::constant(kScene, uint8_t(value), TypeParam::kChannels); };
    const auto flicker = [&](int frame) { return constant(frame % 2 == 0 ? 50 : 150); };
    const auto all = [](uint8_t value) { return Bytes::constant(kScene, value); };
    Scene<TypeParam> scene(flicker(0));
    for (int frame = 1; frame < 10; ++frame) {
        EXPECT_TRUE(samePixels(all(frame == 1 ? 255 : 0), scene.classify(flicker(frame))));
        scene.update(flicker(frame), all(0));
    }
    EXPECT_TRUE(samePixels(all(255), scene.classify(constant(240))));
    scene.update(constant(240), all(255));
    EXPECT_TRUE(samePixels(all(255), scene.classify(constant(150))));  // never before from 240 to 150
    scene.update(constant(150), all(255));
    EXPECT_TRUE(samePixels(all(0), scene.classify(constant(150))));
}

/** What was background is not, when it comes back after other changes that make its frequency less than 1 / 65536. */
TYPED_TEST(ForegroundHistogram, ForgetsChanges) {
    const auto constant = [](int value) { return Bytes::constant(kScene, uint8_t(value), TypeParam::kChannels); };
    const auto all = [](uint8_t value) { return Bytes::constant(kScene, value); };
    for (const int others : {40, 60}) {
        Scene<TypeParam> scene(constant(50));
        scene.model->parameters.gradualRate = scene.model->parameters.startRate = 0.2f;
        scene.model->parameters.majority = 1;
        for (int frame = 0; frame < 6; ++frame)
            scene.update(constant(frame % 2 == 0 ? 150 : 50), all(0));
        for (int frame = 0; frame < others; ++frame)
            scene.update(constant(frame % 2 == 0 ? 100 : 200), all(255));
        scene.update(constant(50), all(0));
        EXPECT_TRUE(samePixels(all(others == 40 ? 0 : 255), scene.classify(constant(150)))) << others;
    }
}

TYPED_TEST(ForegroundHistogram, CleansTheMask) {
    // Objects (x), specks (s), holes (h), and specks in holes (t). Corners connect the 15 pixels of an object.
    const char* const kRows[] = {
        "................................", "..sssssss....x.x.x.x.x..........", "..sssssss.....xhxhxhxhx.........",
        ".............x.x.x.x.x..........", "................................", "....xxxxxxxx..........xxxxxxx...",
        "....xhhhhhhx..........x.....x...", "....xhtthhhx..........x.....x...", "....xhhhhhhx..........x.....x...",
        "....xxxxxxxx..........x.....x...",
    };
    const RoiSize roi{32, 10};
    const Layout layout{Layout::kRowsByGuards};
    const auto draw = [&](const char* light, int channels, uint8_t lightValue, uint8_t darkValue) {
        return Bytes::filled(
            roi, layout,
            [=](int x, int y) {
                return std::strchr(light, kRows[y][x / channels]) != nullptr ? lightValue : darkValue;
            },
            channels);
    };
    Scene<TypeParam> scene(Bytes::constant(roi, 10, TypeParam::kChannels));
    const auto expectForeground = [&](int fills, int removes, const char* light) {
        scene.model->parameters.fillsHoles = fills;
        scene.model->parameters.removesSpecks = removes;
        EXPECT_TRUE(
            samePixels(draw(light, 1, 255, 0), scene.classify(draw("xst", TypeParam::kChannels, 200, 10), layout)));
    };
    expectForeground(0, 0, "xst");
    expectForeground(0, -1, "x");
    expectForeground(7, 0, "xsth");
    expectForeground(1, 1, "xth");
}

TYPED_TEST(ForegroundHistogram, BeginsWithItsDefaultsInOneBlock) {
    const Scene<TypeParam> scene(Bytes::constant({3, 2}, 9, TypeParam::kChannels));
    constexpr ForegroundHistogramParameters kDefaults{128, 15, 25, 64, 25, 40, 1, 1, 0.1f, 0.005f, 0.1f, 2, 0.9f, 15};
    EXPECT_EQ(0, std::memcmp(&kDefaults, &scene.model->parameters, sizeof kDefaults));
    EXPECT_EQ(0, scene.model->updateCount);
    motion::expectOneBlock<TypeParam>(Bytes::constant({9, 4}, 7, TypeParam::kChannels));
    motion::expectNoHugeModels<TypeParam>();
}

const exports::FamilyFaults kFaults("vekiForegroundHistogram_8u", {exports::kOtherSize});
const exports::FamilyFaults kUpdateFaults("vekiForegroundHistogramUpdate", {exports::kOtherSize});

}  // namespace
