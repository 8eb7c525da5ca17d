// Gaussian mixtures against their definition, frame by frame.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "caller_modes.h"
#include "models.h"
#include "test/exports/faults.h"

namespace {

using motion::Bytes;

template <typename Record, int32_t kCount, auto kInit, auto kRelease, auto kProcess>
struct MixtureForm : motion::Form<kCount, ForegroundGaussianParameters, ForegroundGaussianState, kInit, kRelease> {
    using Component = Record;
    static constexpr auto kCall = kProcess;
};
using Gray = MixtureForm<GaussianComponentC1, 1, vekiForegroundGaussianInitAlloc_8u_C1R,
                         vekiForegroundGaussianFree_8u_C1R, vekiForegroundGaussian_8u_C1R>;
using Colour = MixtureForm<GaussianComponentC3, 3, vekiForegroundGaussianInitAlloc_8u_C3R,
                           vekiForegroundGaussianFree_8u_C3R, vekiForegroundGaussian_8u_C3R>;

double& meanOf(GaussianComponentC1& component, int) {
    return component.mean;
}
double& meanOf(GaussianComponentC3& component, int channel) {
    return component.mean[channel];
}

constexpr int kCount = 5;

/** The mixture of a pixel, one number after the other. */
template <typename Form>
struct Mixture {
    typename Form::Component components[kCount];
    int matched = 0;

    explicit Mixture(const uint8_t* pixel) : components{} {
        for (auto& component : components)
            component.variance = 12.5;
        components[0].matchCount = 1;
        components[0].weight = 1;
        for (int c = 0; c < Form::kChannels; ++c)
            meanOf(components[0], c) = pixel[c];
    }

    double rank(int k) const { return components[k].weight / std::sqrt(components[k].variance); }

    void learn(const uint8_t* pixel, const ForegroundGaussianState& settings, bool hasFixedRate) {
        double total = 0;
        matched = -1;
        for (int k = 0; k < kCount; ++k) {
            bool isNear = true;
            for (int c = 0; c < Form::kChannels; ++c) {
                const double difference = meanOf(components[k], c) - pixel[c];
                isNear &= components[k].variance * (settings.matchDeviations * settings.matchDeviations) >
                          difference * difference;
            }
            if (isNear && matched < 0)
                matched = k;
            total += components[k].matchCount;
        }
        if (matched < 0) {
            auto& last = components[kCount - 1];
            total += 1 - last.matchCount;
            last.matchCount = 1;
            last.variance = settings.initialVariance;
            for (int c = 0; c < Form::kChannels; ++c)
                meanOf(last, c) = pixel[c];
            for (auto& component : components)
                component.weight = component.matchCount / total;
        } else {
            const double length = settings.windowLength;
            for (int k = 0; k < kCount; ++k) {
                const double step = (k == matched ? 1 : 0) - components[k].weight;
                components[k].weight += hasFixedRate ? step * (1 / length) : step / (total + 1);
            }
            auto& component = components[matched];
            ++component.matchCount;
            const double rate = 1 / (hasFixedRate ? length * component.weight : component.matchCount);
            double square = 0;
            for (int c = 0; c < Form::kChannels; ++c) {
                const double difference = pixel[c] - meanOf(component, c);
                square += difference * difference;
                meanOf(component, c) += difference * rate;
            }
            component.variance += ((Form::kChannels == 1 ? square : square / 3) - component.variance) * rate;
        }
        for (int k = 1; k < kCount; ++k)
            for (int i = k; i > 0 && rank(i - 1) < rank(i); --i) {
                std::swap(components[i - 1], components[i]);
                matched = matched == i ? i - 1 : matched == i - 1 ? i : matched;
            }
    }

    bool isBackground(double ratio) const {
        double covered = 0;
        for (int k = 0; k < kCount && covered <= ratio; covered += components[k++].weight)
            if (k == matched)
                return true;
        return false;
    }
};

/** A model and its definition, which see the same frames. */
template <typename Form>
class Pair {
  public:
    explicit Pair(const Bytes& first) : model(motion::modelOf<Form>(first)) {
        for (int y = 0; y < first.roi().height; ++y)
            for (int x = 0; x < first.roi().width; ++x)
                mixtures_.emplace_back(&first.at(x * Form::kChannels, y));
    }

    /** Whether results and mixtures are those of the definition after one more frame. */
    void expectSame(const Bytes& frame, Layout layout = {}) {
        const RoiSize roi = frame.roi();
        const bool hasFixedRate = ++frames_ == model->windowLength;
        Bytes background(roi, layout, Form::kChannels), foreground(roi, layout);
        Bytes expectedBackground(roi, layout, Form::kChannels), expectedForeground(roi, layout);
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x) {
                auto& mixture = mixtureAt(x, y);
                mixture.learn(&frame.at(x * Form::kChannels, y), *model, hasFixedRate);
                for (int c = 0; c < Form::kChannels; ++c)
                    expectedBackground.at(x * Form::kChannels + c, y) = uint8_t(meanOf(mixture.components[0], c) + 0.5);
                expectedForeground.at(x, y) = mixture.isBackground(model->backgroundRatio) ? 0 : 255;
            }
        ASSERT_EQ(StatusOk, Form::kCall(frame.data(), frame.step(), background.data(), background.step(),
                                        foreground.data(), foreground.step(), roi, model.get()));
        EXPECT_EQ(frames_, model->frameCounter);
        EXPECT_TRUE(samePixels(expectedBackground, background));
        EXPECT_TRUE(samePixels(expectedForeground, foreground));
        EXPECT_TRUE(frame.guardsIntact());
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x)
                ASSERT_EQ(0, std::memcmp(model->pixelModels[y * roi.width + x], mixtureAt(x, y).components,
                                         sizeof mixtureAt(x, y).components))
                    << "pixel " << x << ", " << y;
    }

    typename Form::Model model;

  private:
    Mixture<Form>& mixtureAt(int x, int y) { return mixtures_[size_t(y * model->foregroundStep + x)]; }

    std::vector<Mixture<Form>> mixtures_;
    int32_t frames_ = 0;
};

/** Pixels around one value or two, now and then any; some are so dark that they match components without a mean. */
template <typename Form>
Bytes frameOf(RoiSize roi, Layout layout, Random& random) {
    return Bytes::filled(
        roi, layout,
        [&](int x, int y) {
            const int base = (x * 7 + y * 3) % 11 == 0 ? 5 : 60 + x % 90;
            const int other = random.below(9) == 0 ? 70 : 0;
            const uint32_t width = x % 5 == 0 ? 40 : 8;
            return uint8_t(random.below(23) == 0 ? random.below(256) : uint32_t(base + other) + random.below(width));
        },
        Form::kChannels);
}

template <typename Form>
class ForegroundGaussian : public testing::Test {};
using Forms = testing::Types<Gray, Colour>;
TYPED_TEST_SUITE(ForegroundGaussian, Forms);

TYPED_TEST(ForegroundGaussian, IsItsDefinitionFrameByFrame) {
    uint32_t seed = 0;
    for (const Layout layout : kLayouts)
        for (const RoiSize roi : {RoiSize{1, 3}, RoiSize{2, 2}, RoiSize{3, 1}, RoiSize{4, 2}, RoiSize{21, 5}}) {
            SCOPED_TRACE(testing::Message() << roi.width << " x " << roi.height << ", " << layout);
            Random random(++seed);
            Pair<TypeParam> pair(frameOf<TypeParam>(roi, layout, random));
            pair.model->windowLength = 9;
            for (int frame = 1; frame < 25 && !testing::Test::HasFailure(); ++frame)
                pair.expectSame(frameOf<TypeParam>(roi, layout, random), layout);
        }
}

TYPED_TEST(ForegroundGaussian, HasOneFrameWithAFixedRate) {
    const RoiSize roi{13, 3};
    Random random(1);
    Pair<TypeParam> pair(frameOf<TypeParam>(roi, {}, random));
    EXPECT_EQ(200, pair.model->windowLength);
    for (int frame = 1; frame < 320 && !testing::Test::HasFailure(); ++frame)
        pair.expectSame(frameOf<TypeParam>(roi, {}, random));
}

TYPED_TEST(ForegroundGaussian, UsesTheSettingsOfTheModel) {
    const RoiSize roi{33, 2};
    Random random(2);
    Pair<TypeParam> pair(frameOf<TypeParam>(roi, {}, random));
    pair.model->backgroundRatio = 0.4;
    pair.model->matchDeviations = 1.25;
    pair.model->initialVariance = 20;
    for (int frame = 1; frame < 40 && !testing::Test::HasFailure(); ++frame) {
        if (frame == 20)
            pair.model->windowLength = 30;
        pair.expectSame(frameOf<TypeParam>(roi, {}, random));
    }
}

TYPED_TEST(ForegroundGaussian, DoesNotDependOnTheModesOfTheCaller) {
    const RoiSize roi{9, 2};
    Random random(3);
    std::vector<Bytes> frames;
    for (int frame = 0; frame < 6; ++frame)
        frames.push_back(frameOf<TypeParam>(roi, {}, random));
    const auto settings = motion::modelOf<TypeParam>(frames[0]);
    std::vector<Mixture<TypeParam>> expected;
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            expected.emplace_back(&frames[0].at(x * TypeParam::kChannels, y));
            for (const Bytes& frame : frames)
                expected.back().learn(&frame.at(x * TypeParam::kChannels, y), *settings, false);
        }
    forCallerModes([&] {
        const auto model = motion::modelOf<TypeParam>(frames[0]);
        Bytes background(roi, {}, TypeParam::kChannels), foreground(roi);
        for (const Bytes& frame : frames)
            TypeParam::kCall(frame.data(), frame.step(), background.data(), background.step(), foreground.data(),
                             foreground.step(), roi, model.get());
        for (size_t i = 0; i < expected.size(); ++i)
            EXPECT_EQ(0, std::memcmp(model->pixelModels[i], expected[i].components, sizeof expected[i].components));
    });
}

TYPED_TEST(ForegroundGaussian, FindsWhatMovesBeforeAConstantScene) {
    const RoiSize roi{40, 12};
    const auto sceneWith = [&](int left) {  // an object of 8 columns
        return Bytes::filled(
            roi, {},
            [=](int x, int) {
                const int column = x / TypeParam::kChannels;
                return uint8_t(column >= left && column < left + 8 ? 220 : 90);
            },
            TypeParam::kChannels);
    };
    const auto model = motion::modelOf<TypeParam>(sceneWith(1000));
    for (int frame = 0; frame < 60; ++frame) {
        const int left = frame < 25 ? 1000 : frame - 25;
        const Bytes source = sceneWith(left);
        // The results may take the place of the source.
        Bytes result = source.copy({}), foreground(roi);
        ASSERT_EQ(StatusOk, TypeParam::kCall(result.data(), result.step(), result.data(), result.step(),
                                             foreground.data(), foreground.step(), roi, model.get()));
        EXPECT_TRUE(samePixels(sceneWith(1000), result));
        EXPECT_TRUE(
            samePixels(Bytes::filled(roi, {}, [=](int x, int) { return uint8_t(x >= left && x < left + 8 ? 255 : 0); }),
                       foreground));
    }
}

TYPED_TEST(ForegroundGaussian, BeginsWithTheFirstFrame) {
    const RoiSize roi{5, 3};
    Random random(4);
    const Bytes first = frameOf<TypeParam>(roi, {Layout::kBeforeGuard, 0, 3}, random);
    const auto model = motion::modelOf<TypeParam>(first);
    EXPECT_EQ(kCount, model->componentCount);
    EXPECT_EQ(0.7, model->backgroundRatio);
    EXPECT_EQ(2.5, model->matchDeviations);
    EXPECT_EQ(15, model->initialDeviation);
    EXPECT_EQ(0.05, model->initialWeight);
    EXPECT_EQ(900, model->initialVariance);
    EXPECT_EQ(0, model->frameCounter);
    EXPECT_EQ(roi.width * TypeParam::kChannels, model->backgroundStep);
    EXPECT_EQ(roi.width, model->foregroundStep);
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            const Mixture<TypeParam> expected(&first.at(x * TypeParam::kChannels, y));
            EXPECT_EQ(
                0, std::memcmp(model->pixelModels[y * roi.width + x], expected.components, sizeof expected.components));
        }
}

TYPED_TEST(ForegroundGaussian, TakesOneBlock) {
    motion::expectOneBlock<TypeParam>(Bytes::constant({9, 4}, 7, TypeParam::kChannels));
    motion::expectNoHugeModels<TypeParam>();
}

const exports::FamilyFaults kFaults("vekiForegroundGaussian_8u", {exports::kOtherSize});

}  // namespace
