// Chamfer distances by their definition, and as the lengths of shortest ways.
#pragma once

#include <array>
#include <limits>

#include "arguments.h"
#include "distance_images.h"

namespace distance {

using Source = TestImage<uint8_t>;

/** A step to a pixel, and what it costs. */
template <typename Cost>
struct Step {
    int x, y;
    Cost cost;
};

template <auto Export>
struct Member;

/** An export with two images. */
template <typename T, typename M, Status (*Export)(const uint8_t*, int32_t, T*, int32_t, RoiSize, const M*)>
struct Member<Export> {
    using Pixel = T;
    using Metric = M;

    static TestImage<T> call(const Source& source, const M* metrics, Layout layout = {}) {
        const Source before = source.copy({});
        const TestImage<T> out(source.roi(), layout);
        EXPECT_EQ(StatusOk, callWith(Export, source, out, source.roi(), metrics));
        EXPECT_TRUE(samePixels(before, source));
        return out;
    }
};

/** An export with one image. */
template <Status (*Export)(uint8_t*, int32_t, RoiSize, const int32_t*)>
struct Member<Export> {
    using Pixel = uint8_t;
    using Metric = int32_t;

    static Source call(const Source& source, const int32_t* metrics, Layout layout = {}) {
        const Source out = source.copy(layout);
        EXPECT_EQ(StatusOk, callWith(Export, out, out.roi(), metrics));
        return out;
    }
};

/** An export for a mask of 3 x 3 or 5 x 5 pixels, and what it is defined to give. */
template <auto Export, int kSizeOfMask>
struct Form : Member<Export> {
    using T = typename Member<Export>::Pixel;
    using Metrics = std::array<typename Member<Export>::Metric, 3>;
    static constexpr bool kIsFloat = std::is_floating_point_v<T>;
    static constexpr int kSize = kSizeOfMask;
    static constexpr T kLargest = std::numeric_limits<T>::max();
    using Cost = std::conditional_t<kIsFloat, float, int64_t>;
    using Steps = std::vector<Step<Cost>>;

    static TestImage<T> call(const Source& source, const Metrics& metrics, Layout layout = {}) {
        return Member<Export>::call(source, metrics.data(), layout);
    }

    /** The steps of the forward pass to a pixel, from those before it. */
    static Steps stepsOf(const Metrics& metrics) {
        const Cost a = Cost(metrics[0]), b = Cost(metrics[1]), c = Cost(metrics[2]);
        if (kSize == 5 && isWithKnights(metrics)) {
            const Cost side = std::min(a, 3 * c), diagonal = std::min({b, 2 * a, 2 * c});
            const Cost sides = std::min({2 * side, 2 * diagonal, 2 * c}), diagonals = std::min(c + side, 2 * diagonal);
            return {{-2, -2, diagonals}, {-1, -2, c}, {0, -2, sides},     {1, -2, c},
                    {2, -2, diagonals},  {-2, -1, c}, {-1, -1, diagonal}, {0, -1, side},
                    {1, -1, diagonal},   {2, -1, c},  {-2, 0, sides},     {-1, 0, side}};
        }
        if (2 * a <= b)
            return {{0, -1, a}, {-1, 0, a}};
        return {{-1, -1, b}, {0, -1, a}, {1, -1, b}, {-1, 0, a}};
    }

    static bool isWithKnights(const Metrics& metrics) {
        if constexpr (kIsFloat) {
            const double a = metrics[0], sum = a + std::min(2 * a, double(metrics[1]));
            return double(metrics[2]) - sum <= -1e-7 * sum;
        } else {
            const int64_t a = metrics[0];
            return a + std::min(2 * a, int64_t{metrics[1]}) > metrics[2];
        }
    }

    /** The least of a pixel's distance and of those by the steps; turned by 180 degrees in the backward pass. */
    static Cost best(const std::vector<Cost>& distances, RoiSize roi, int x, int y, const Steps& steps, int turn) {
        Cost least = distances[size_t(y * roi.width + x)];
        for (const auto& step : steps) {
            const int fromX = x + turn * step.x, fromY = y + turn * step.y;
            if (fromX >= 0 && fromX < roi.width && fromY >= 0 && fromY < roi.height)
                least = std::min(least, distances[size_t(fromY * roi.width + fromX)] + step.cost);
        }
        return least;
    }

    static std::vector<Cost> startOf(const Source& source) {
        std::vector<Cost> distances;
        for (int y = 0; y < source.roi().height; ++y)
            for (int x = 0; x < source.roi().width; ++x)
                distances.push_back(source.at(x, y) == 0 ? 0 : Cost(kLargest));
        return distances;
    }

    static TestImage<T> imageOf(const std::vector<Cost>& distances, RoiSize roi) {
        return TestImage<T>::filled(roi, {}, [&](int x, int y) { return T(distances[size_t(y * roi.width + x)]); });
    }

    /** The definition: one pixel after the other, forward and backward. */
    static TestImage<T> expected(const Source& source, const Metrics& metrics) {
        const RoiSize roi = source.roi();
        const Steps steps = stepsOf(metrics);
        std::vector<Cost> distances = startOf(source);
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x)
                distances[size_t(y * roi.width + x)] = best(distances, roi, x, y, steps, 1);
        for (int y = roi.height - 1; y >= 0; --y)
            for (int x = roi.width - 1; x >= 0; --x)
                distances[size_t(y * roi.width + x)] = best(distances, roi, x, y, steps, -1);
        return imageOf(distances, roi);
    }

    /** The shortest ways: steps in all directions until nothing changes. */
    static TestImage<T> shortest(const Source& source, const Metrics& metrics) {
        const RoiSize roi = source.roi();
        const Cost a = Cost(metrics[0]), b = Cost(metrics[1]), c = Cost(metrics[2]);
        Steps steps = {{1, 0, a}, {0, 1, a}, {1, 1, b}, {1, -1, b}};
        if (kSize == 5)
            steps.insert(steps.end(), {{1, 2, c}, {2, 1, c}, {-1, 2, c}, {-2, 1, c}});
        std::vector<Cost> distances = startOf(source), before;
        do {
            before = distances;
            for (const int turn : {1, -1})
                for (int y = 0; y < roi.height; ++y)
                    for (int x = 0; x < roi.width; ++x)
                        distances[size_t(y * roi.width + x)] = best(distances, roi, x, y, steps, turn);
        } while (distances != before);
        return imageOf(distances, roi);
    }

    static void check(const Source& source, const Metrics& metrics, Layout layout = {}) {
        SCOPED_TRACE(::testing::Message() << "weights " << metrics[0] << ", " << metrics[1] << ", " << metrics[2]);
        ASSERT_TRUE(samePixels(expected(source, metrics), call(source, metrics, layout)));
    }
};

}  // namespace distance
