// Stages of Haar classifiers, and which positions of images pass them by definition.
#pragma once

#include <algorithm>
#include <cmath>

#include "haar_features.h"
#include "test_image.h"

namespace haar {

/** An integral image that holds exactly the elements that windows read. */
template <typename S>
struct Table {
    Point first;
    TestImage<S> elements;

    Table(const std::vector<Point>& corners, RoiSize roi, Layout layout, Random& random, Numbers numbers)
        : first(firstOf(corners)), elements(TestImage<S>::filled(sizeOf(corners, roi), layout, [&](int, int) {
              return number<S>(random, numbers);
          })) {}

    S at(int x, int y) const { return elements.at(x - first.x, y - first.y); }

    /** The address of the element of the first window position, which may lie outside. */
    const S* origin() const {
        const ptrdiff_t distance = ptrdiff_t{first.y} * elements.step() + first.x * ptrdiff_t{sizeof(S)};
        return reinterpret_cast<const S*>(reinterpret_cast<uintptr_t>(elements.data()) - uintptr_t(distance));
    }
    int32_t step() const { return elements.step(); }

  private:
    static Point firstOf(const std::vector<Point>& corners) {
        Point first = corners[0];
        for (const Point& corner : corners)
            first = {std::min(first.x, corner.x), std::min(first.y, corner.y)};
        return first;
    }
    static RoiSize sizeOf(const std::vector<Point>& corners, RoiSize roi) {
        Point last = corners[0];
        for (const Point& corner : corners)
            last = {std::max(last.x, corner.x), std::max(last.y, corner.y)};
        return {last.x - firstOf(corners).x + roi.width, last.y - firstOf(corners).y + roi.height};
    }
};

/** What features read of an image that all of them, or the tilted ones, or the others, are read from. */
template <typename V>
std::vector<Point> cornersOf(const std::vector<Feature<V>>& features, bool fromBoth, bool tilted) {
    std::vector<Point> corners;
    for (const Feature<V>& feature : features)
        for (const Rectangle<V>& r : feature.rectangles)
            if (!fromBoth || feature.isTilted == tilted)
                for (const Point corner : {r.a, r.b, r.c, r.d})
                    corners.push_back(fromBoth && tilted ? Point{corner.x + 1, corner.y + 1} : corner);
    if (corners.empty())
        corners.push_back({0, 0});
    return corners;
}

/** The sum of a rectangle, from its four elements. */
inline float sumOf(float a, float b, float c, float d) {
    return ((a - b) - c) + d;
}
inline int32_t sumOf(int32_t a, int32_t b, int32_t c, int32_t d) {
    return int32_t(uint32_t(a) - uint32_t(b) - uint32_t(c) + uint32_t(d));
}
inline int32_t wrappingProduct(int32_t a, int32_t b) {
    return int32_t(uint32_t(a) * uint32_t(b));
}

/** Whether the response of a feature is below its threshold; sums and weights are those of its rectangles. */
template <bool kIsMixed, typename S>
bool isBelow(const std::vector<S>& sums, const std::vector<float>& weights, float threshold, float norm, int32_t) {
    float response = 0;
    for (size_t k = 0; k < sums.size(); ++k) {
        const float product = weights[k] * float(sums[k]);
        response = k == 0 ? product : response + product;
    }
    return threshold * norm > response;
}
template <bool kIsMixed>
bool isBelow(const std::vector<int32_t>& sums, const std::vector<int32_t>& weights, int32_t threshold, int32_t norm,
             int32_t scaleFactor) {
    int64_t response = 0;
    for (size_t k = 0; k < sums.size(); ++k)
        response += wrappingProduct(weights[k], sums[k]);
    if (!kIsMixed)
        return int32_t(response) < wrappingProduct(threshold, norm);
    for (int64_t i = 0; i < std::min(-int64_t{scaleFactor}, int64_t{64}); ++i)
        response = int64_t(uint64_t(response) * 2);
    return response < int64_t{threshold} * norm;
}

inline float plus(float a, float b) {
    return a + b;
}
inline int32_t plus(int32_t a, int32_t b) {
    return int32_t(uint32_t(a) + uint32_t(b));
}

/** A classifier with its features, as it keeps them. */
template <typename V>
struct Stage {
    ClassifierPointer state;
    Shape shape;  // it was built with
    std::vector<Feature<V>> features;
    V threshold;

    /** As tilted < 2 an upright or tilted one; above, some features of an upright one are tilted in two directions. */
    static Stage any(Random& random, int count, int tilted, Numbers numbers) {
        const auto given = anyFeatures<V>(random, count, numbers);
        const Shape shape = tilted == 1 ? Shape::kTilted : Shape::kUpright;
        Stage stage{build(given, shape), shape, given.stored(shape),
                    number<V>(random, random.below(8) == 0 ? numbers : Numbers::kClose)};
        if (tilted >= 2 && count > 0) {
            std::vector<uint8_t> mask;
            for (int i = 0; i < count; ++i)
                mask.push_back(random.mask());
            EXPECT_EQ(StatusOk, tilt<V>(mask, tilted - 2, stage.state.get()));
            tiltStored(mask, tilted - 2, stage.features);
        }
        return stage;
    }

    bool replacesFirstWeights() const {
        bool minusOne = std::is_same_v<V, float> && shape == Shape::kUpright;
        for (const Feature<V>& feature : features)
            minusOne = minusOne && int64_t(std::trunc(double(feature.rectangles[0].weight))) == -1;
        return minusOne;
    }
};

/** Whether a position passes a stage; mixed exports read tilted features from an image of their own. */
template <bool kIsMixed, typename S, typename V>
bool passes(const Stage<V>& stage, const Table<S>& integral, const Table<S>& tilted, Point position, V norm,
            int32_t scaleFactor) {
    const bool minusOne = !kIsMixed && std::is_same_v<S, float> && stage.replacesFirstWeights();
    V total = 0;
    for (const Feature<V>& feature : stage.features) {
        const bool fromTilted = kIsMixed && feature.isTilted;
        const auto at = [&](Point p) {
            return fromTilted ? tilted.at(position.x + 1 + p.x, position.y + 1 + p.y)
                              : integral.at(position.x + p.x, position.y + p.y);
        };
        std::vector<S> sums;
        std::vector<V> weights;
        for (const Rectangle<V>& r : feature.rectangles) {
            sums.push_back(sumOf(at(r.a), at(r.b), at(r.c), at(r.d)));
            weights.push_back(r.weight);
        }
        if (minusOne && (weights.size() == 2 || weights.size() == 3))
            weights[0] = -1;
        const bool below = isBelow<kIsMixed>(sums, weights, feature.threshold, norm, scaleFactor);
        total = plus(total, below ? feature.valueBelow : feature.valueAbove);
    }
    return !(total < stage.threshold);
}

}  // namespace haar
