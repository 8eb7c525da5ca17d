// Haar features for tests, and what classifiers make of them by definition.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <type_traits>
#include <vector>

#include "random.h"
#include "vekcv.h"

namespace haar {

struct Point {
    int x, y;

    bool operator==(const Point&) const = default;
};

template <typename V>
struct Rectangle {
    Point a, b, c, d;
    V weight;
};

template <typename V>
struct Feature {
    std::vector<Rectangle<V>> rectangles;
    V threshold, valueBelow, valueAbove;
    int index;  // at which it was given
    bool isTilted;
};

enum class Shape { kUpright, kTilted };

/** The corners of a rectangle. */
inline void setCorners(Point (&corners)[4], Shape shape, ImageRect r) {
    const Point upright[4] = {{r.x + r.width, r.y + r.height}, {r.x, r.y + r.height}, {r.x + r.width, r.y}, {r.x, r.y}};
    const Point tilted[4] = {{r.x + r.width - r.height, r.y + r.width + r.height},
                             {r.x - r.height, r.y + r.height},
                             {r.x + r.width, r.y + r.width},
                             {r.x, r.y}};
    std::copy_n(shape == Shape::kUpright ? upright : tilted, 4, corners);
}

/** The arrays that a classifier is built from. */
template <typename V>
struct Features {
    std::vector<ImageRect> rectangles;
    std::vector<V> weights, thresholds, valuesBelow, valuesAbove;
    std::vector<int32_t> counts;

    void add(std::vector<ImageRect> rects, std::vector<V> itsWeights, V threshold, V below, V above) {
        rectangles.insert(rectangles.end(), rects.begin(), rects.end());
        weights.insert(weights.end(), itsWeights.begin(), itsWeights.end());
        thresholds.push_back(threshold);
        valuesBelow.push_back(below);
        valuesAbove.push_back(above);
        counts.push_back(int32_t(rects.size()));
    }

    int32_t count() const { return int32_t(counts.size()); }

    Status build(Shape shape, HaarClassifier** state) const {
        const ImageRect none{0, 0, 1, 1};
        const V zero{};
        const int32_t one = 1;
        const auto pointer = [](const auto& values, const auto* otherwise) {
            return values.empty() ? otherwise : values.data();
        };
        const auto with = [&](auto function) {
            return function(state, pointer(rectangles, &none), pointer(weights, &zero), pointer(thresholds, &zero),
                            pointer(valuesBelow, &zero), pointer(valuesAbove, &zero), pointer(counts, &one), count());
        };
        if constexpr (std::is_same_v<V, float>)
            return with(shape == Shape::kUpright ? vekiHaarClassifierInitAlloc_32f
                                                 : vekiTiltedHaarClassifierInitAlloc_32f);
        else
            return with(shape == Shape::kUpright ? vekiHaarClassifierInitAlloc_32s
                                                 : vekiTiltedHaarClassifierInitAlloc_32s);
    }

    /** The features in the order in which a classifier keeps them. */
    std::vector<Feature<V>> stored(Shape shape) const {
        std::vector<Feature<V>> all;
        for (size_t i = 0, k = 0; i < counts.size(); ++i) {
            Feature<V> feature{{}, thresholds[i], valuesBelow[i], valuesAbove[i], int(i), shape == Shape::kTilted};
            for (int32_t n = 0; n < counts[i]; ++n, ++k) {
                Point corners[4];
                setCorners(corners, shape, rectangles[k]);
                feature.rectangles.push_back({corners[0], corners[1], corners[2], corners[3], weights[k]});
            }
            all.push_back(feature);
        }
        const auto group = [](const Feature<V>& feature) {
            const size_t count = feature.rectangles.size();
            return count == 2 ? 0 : count == 3 ? 1 : 2;
        };
        if (shape == Shape::kUpright)
            std::stable_sort(all.begin(), all.end(), [=](const auto& a, const auto& b) { return group(a) < group(b); });
        return all;
    }
};

struct Release {
    void operator()(HaarClassifier* state) const { EXPECT_EQ(StatusOk, vekiHaarClassifierFree_32f(state)); }
};
using ClassifierPointer = std::unique_ptr<HaarClassifier, Release>;

template <typename V>
ClassifierPointer build(const Features<V>& features, Shape shape) {
    HaarClassifier* state = nullptr;
    EXPECT_EQ(StatusOk, features.build(shape, &state));
    return ClassifierPointer(state);
}

template <typename V>
Status tilt(const std::vector<uint8_t>& mask, int32_t orientation, HaarClassifier* state) {
    if constexpr (std::is_same_v<V, float>)
        return vekiTiltHaarFeatures_32f(mask.data(), orientation, state);
    else
        return vekiTiltHaarFeatures_32s(mask.data(), orientation, state);
}

/** The same by definition. */
template <typename V>
void tiltStored(const std::vector<uint8_t>& mask, int32_t orientation, std::vector<Feature<V>>& features) {
    for (Feature<V>& feature : features) {
        if (mask[size_t(feature.index)] == 0)
            continue;
        feature.isTilted = true;
        for (Rectangle<V>& r : feature.rectangles) {
            const int x = r.d.x, y = r.d.y, w = r.a.x - x, h = r.a.y - y;
            Rectangle<V> tilted = r;
            if (std::is_same_v<V, float>)
                tilted = orientation != 0
                             ? Rectangle<V>{{x + w - h, y + w + h}, {x - h, y + h}, {x + w, y + w}, {x, y}, r.weight}
                             : Rectangle<V>{{x, y + h}, {x - h, y}, {x + w, y + h - w}, {x + w - h, y - w}, r.weight};
            else
                tilted = orientation != 0
                             ? Rectangle<V>{{x, y + 2 * w}, {x - w, y + w}, {x + w, y + w}, {x, y}, r.weight}
                             : Rectangle<V>{
                                   {x, y + h}, {x - w, y + h - w}, {x + w, y + h - w}, {x, y + h - 2 * w}, r.weight};
            r = tilted;
        }
    }
}

/** What the numbers of a test are. */
enum class Numbers {
    kClose,  // few, so that there are ties, and floats whose sums depend on the order
    kAny,
};

template <typename V>
V number(Random& random, Numbers numbers) {
    if (numbers == Numbers::kAny)
        return random.value<V>();
    constexpr V kSome[] = {0, 1, -1, 2, -2, 3, V(1 << 24), V(-(1 << 24)), V((1 << 24) + 2), 0, 1, -1};
    return kSome[random.below(std::size(kSome))];
}

/** Rectangles in a window of some 9 x 9 pixels, which both shapes allow. */
inline ImageRect anyRectangle(Random& random) {
    const auto x = int32_t(random.below(6)), y = int32_t(random.below(5));
    return {x, y, 1 + int32_t(random.below(4)), 1 + int32_t(random.below(uint32_t(std::min(4, x + 1))))};
}

template <typename V>
Features<V> anyFeatures(Random& random, int count, Numbers numbers) {
    Features<V> features;
    const bool minusOne = random.below(2) == 0;
    for (int i = 0; i < count; ++i) {
        std::vector<ImageRect> rects;
        std::vector<V> weights;
        constexpr uint32_t kCounts[] = {1, 2, 2, 3, 3, 4, 5};
        const uint32_t rectangleCount = kCounts[random.below(7)];
        for (uint32_t k = 0; k < rectangleCount; ++k) {
            rects.push_back(anyRectangle(random));
            const V weight = numbers == Numbers::kAny ? random.value<V>() : V(int(random.below(5)) - 2);
            weights.push_back(k == 0 && minusOne ? V(-1 - 0.25 * random.below(4)) : weight);
        }
        // Values are seldom NaN or infinite, for most sums would be so, too.
        const auto value = [&] { return number<V>(random, random.below(20) == 0 ? numbers : Numbers::kClose); };
        const V below = value(), above = value();
        features.add(rects, weights, number<V>(random, numbers), below, above);
    }
    return features;
}

}  // namespace haar
