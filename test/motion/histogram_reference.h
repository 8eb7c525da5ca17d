// Foreground by histograms: its exports, and what a model is defined to learn of each pixel.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "models.h"

namespace histogram {

using motion::Bytes;

template <int32_t kCount, auto kInit, auto kRelease, auto kClassifyFrame, auto kLearnFrame>
struct Form : motion::Form<kCount, ForegroundHistogramParameters, ForegroundHistogramState, kInit, kRelease> {
    static constexpr auto kClassify = kClassifyFrame;
    static constexpr auto kUpdate = kLearnFrame;
};
using Gray = Form<1, vekiForegroundHistogramInitAlloc_8u_C1R, vekiForegroundHistogramFree_8u_C1R,
                  vekiForegroundHistogram_8u_C1R, vekiForegroundHistogramUpdate_8u_C1R>;
using Colour = Form<3, vekiForegroundHistogramInitAlloc_8u_C3R, vekiForegroundHistogramFree_8u_C3R,
                    vekiForegroundHistogram_8u_C3R, vekiForegroundHistogramUpdate_8u_C3R>;

using Levels = std::vector<int>;

/** How often something was seen, and how often as background. */
struct Observed {
    Levels levels;
    float frequency, background;
};

/** What a pixel had, the most frequent first. */
struct Table {
    size_t entries, capacity;
    std::vector<Observed> all{};

    static bool isNear(const Levels& a, const Levels& b, float tolerance) {
        return std::equal(a.begin(), a.end(), b.begin(),
                          [=](int p, int q) { return float(std::abs(p - q)) <= tolerance; });
    }

    bool isBackground(const Levels& levels, float tolerance) const {
        float frequency = 0, background = 0;
        for (size_t i = 0; i < std::min(entries, all.size()); ++i)
            if (isNear(all[i].levels, levels, tolerance)) {
                frequency += all[i].frequency;
                background += all[i].background;
            }
        return frequency > 0 && 2 * background >= frequency;
    }

    void learn(const Levels& levels, bool isBackground, float rate, float tolerance) {
        const float background = isBackground ? 1.0f : 0.0f;
        auto match = std::find_if(all.begin(), all.end(),
                                  [&](const Observed& o) { return isNear(o.levels, levels, tolerance); });
        for (auto o = all.begin(); o != all.end(); ++o) {
            o->frequency += ((o == match ? 1.0f : 0.0f) - o->frequency) * rate;
            o->background += ((o == match ? background : 0.0f) - o->background) * rate;
        }
        Observed changed{levels, rate, background * rate};
        if (match != all.end()) {
            changed = *match;
            all.erase(match);
        }
        while (!all.empty() && all.back().frequency < 1.0f / 65536)
            all.pop_back();
        if (all.size() == capacity)
            all.pop_back();
        auto place = all.end();
        while (place != all.begin() && changed.frequency > std::prev(place)->frequency)
            --place;
        all.insert(place, changed);
    }

    bool absorb(float majority) {
        float foreground = 0;
        for (size_t i = 0; i < std::min(entries, all.size()); ++i)
            foreground += all[i].frequency - all[i].background;
        if (!(foreground > majority))
            return false;
        for (Observed& o : all)
            o.background = o.frequency;
        return true;
    }
};

/** A pixel of a model. */
struct Pixel {
    std::vector<uint8_t> before;
    std::vector<float> reference;
    Table values{15, 25}, changes{25, 40};

    explicit Pixel(std::vector<uint8_t> first) : before(first), reference(first.begin(), first.end()) {
        values.all.push_back({levels(first, 128), 1, 1});
    }

    static Levels levels(const std::vector<uint8_t>& values, int count) {
        Levels all;
        for (const uint8_t value : values)
            all.push_back(value * count / 256);
        return all;
    }
    Levels change(const std::vector<uint8_t>& now) const {
        Levels all = levels(before, 64);
        for (const int level : levels(now, 64))
            all.push_back(level);
        return all;
    }
    template <typename T>
    static bool isNear(const std::vector<uint8_t>& now, const std::vector<T>& other, float tolerance) {
        return std::equal(now.begin(), now.end(), other.begin(),
                          [=](uint8_t p, T q) { return std::abs(float(p) - float(q)) <= tolerance * 2; });
    }

    bool isBackground(const std::vector<uint8_t>& now, const ForegroundHistogramParameters& parameters) const {
        const float tolerance = parameters.tolerance;
        if (isNear(now, reference, tolerance))
            return true;
        return isNear(now, before, tolerance) ? values.isBackground(levels(now, 128), tolerance)
                                              : changes.isBackground(change(now), tolerance);
    }

    void learn(const std::vector<uint8_t>& now, bool isBackground, float rate,
               const ForegroundHistogramParameters& parameters) {
        const float tolerance = parameters.tolerance;
        const bool isStill = isNear(now, before, tolerance), isOld = isNear(now, reference, tolerance);
        values.learn(levels(now, 128), isBackground, rate, tolerance);
        const bool isSudden = values.absorb(parameters.majority);
        if (!isStill) {
            changes.learn(change(now), isBackground, rate, tolerance);
            changes.absorb(parameters.majority);
        }
        const float speed = isSudden || (isBackground && isStill && !isOld) ? 1.0f
                            : isBackground && isOld                         ? parameters.referenceRate
                                                                            : 0.0f;
        if (speed > 0)
            for (size_t c = 0; c < now.size(); ++c)
                reference[c] += (float(now[c]) - reference[c]) * speed;
        before = now;
    }
};

/** A model and its definition, which see the same frames. */
template <typename Form>
class Scene {
  public:
    explicit Scene(const Bytes& first) : model(motion::modelOf<Form>(first)), roi_(first.roi()) {
        for (int y = 0; y < roi_.height; ++y)
            for (int x = 0; x < roi_.width; ++x)
                pixels_.emplace_back(pixel(first, x, y));
    }

    Bytes classify(const Bytes& frame, Layout layout = {}) const {
        Bytes mask(roi_, layout);
        EXPECT_EQ(StatusOk, Form::kClassify(frame.data(), frame.step(), mask.data(), mask.step(), roi_, model.get()));
        EXPECT_TRUE(mask.guardsIntact() && frame.guardsIntact());
        return mask;
    }

    Bytes update(const Bytes& frame, const Bytes& mask, Layout layout = {}) const {
        Bytes background(roi_, layout, Form::kChannels);
        EXPECT_EQ(StatusOk, Form::kUpdate(frame.data(), frame.step(), mask.data(), mask.step(), background.data(),
                                          background.step(), roi_, model.get()));
        EXPECT_TRUE(mask.guardsIntact() && frame.guardsIntact());
        return background;
    }

    /** Whether results are those of the definition, without the cleaning of the mask, which other tests have. */
    void expectSame(const Bytes& frame, const Bytes& learned, Layout layout) {
        const auto each = [&](auto visit) {
            for (int y = 0; y < roi_.height; ++y)
                for (int x = 0; x < roi_.width; ++x)
                    visit(x, y, pixels_[size_t(y * roi_.width + x)], pixel(frame, x, y));
        };
        Bytes mask(roi_, layout), background(roi_, layout, Form::kChannels);
        const ForegroundHistogramParameters& parameters = model->parameters;
        each([&](int x, int y, Pixel& p, const auto& now) {
            mask.at(x, y) = p.isBackground(now, parameters) ? 0 : 255;
        });
        EXPECT_TRUE(samePixels(mask, classify(frame, layout)));
        const float share = 1 / float(++frames_);
        const float rate = std::max(std::min(parameters.startRate, share), parameters.gradualRate);
        each([&](int x, int y, Pixel& p, const auto& now) {
            p.learn(now, learned.at(x, y) == 0, rate, parameters);
            for (int c = 0; c < Form::kChannels; ++c)
                background.at(x * Form::kChannels + c, y) = uint8_t(p.reference[size_t(c)] + 0.5f);
        });
        EXPECT_TRUE(samePixels(background, update(frame, learned, layout)));
    }

    typename Form::Model model;

  private:
    static std::vector<uint8_t> pixel(const Bytes& frame, int x, int y) {
        const uint8_t* const first = &frame.at(x * Form::kChannels, y);
        return {first, first + Form::kChannels};
    }

    RoiSize roi_;
    std::vector<Pixel> pixels_;
    int frames_ = 0;
};

}  // namespace histogram
