// Samples for the kernels of super-resolution, and what these are defined to make of them.
#pragma once

#include <algorithm>
#include <iterator>
#include <vector>

#include "test_image.h"

namespace super_resolution {

using Image = TestImage<float>;

/** An array that ends where memory ends. */
template <typename T, typename Value>
TestImage<T> arrayOf(int32_t count, Value value) {
    return TestImage<T>::filled({count, 1}, {Layout::kBeforeGuard, 0, 0}, [&](int, int) { return T(value()); });
}

/** Samples anywhere in an image, the last one at its end. */
template <int kSize, typename T>
struct Samples {
    static constexpr int kEntry = kSize * kSize;

    std::vector<float> table;
    std::vector<ImagePoint> places;
    TestImage<uint32_t> offsets;
    TestImage<uint16_t> psfIndex;
    TestImage<T> lowRes;
    TestImage<uint8_t> weightIndex;
    std::vector<float> weights;

    Samples(const Image& image, int32_t count, uint32_t entries, Random random = Random(1))
        : offsets({count, 1}),
          psfIndex(arrayOf<uint16_t>(count, [&] { return random.below(entries); })),
          lowRes(arrayOf<T>(count, [&] { return random.value<T>(); })),
          weightIndex(arrayOf<uint8_t>(count, [&] { return random.value<uint8_t>(); })) {
        std::generate_n(std::back_inserter(table), entries * kEntry, [&] { return random.summand<float>() / 100; });
        std::generate_n(std::back_inserter(weights), 256, [&] { return random.summand<float>() / 100; });
        const auto upTo = [&](int32_t most) { return int32_t(random.below(uint32_t(most) + 1)); };
        const ImagePoint last{image.roi().width - kSize, image.roi().height - kSize};
        for (int i = 1; i < count; ++i) {
            const int32_t x = upTo(last.x);
            places.push_back({x, upTo(last.y)});
        }
        places.push_back(last);
        offsets = arrayOf<uint32_t>(count, [&, next = places.begin()]() mutable {
            const ImagePoint place = *next++;
            return place.y * (image.step() / int32_t{sizeof(float)}) + place.x;
        });
    }

    int32_t count() const { return offsets.roi().width; }
    float coefficient(int i, int row, int column) const {
        return table[size_t(psfIndex.at(i, 0)) * kEntry + size_t(row * kSize + column)];
    }

    /** The residuals by their definition. */
    TestImage<float> residuals(const Image& image) const {
        return TestImage<float>::filled({count(), 1}, {}, [&](int i, int) {
            float sum = 0;
            for (int row = 0; row < kSize; ++row)
                for (int column = 0; column < kSize; ++column) {
                    const auto [x, y] = places[size_t(i)];
                    const float product = image.at(x + column, y + row) * coefficient(i, row, column);
                    sum = row == 0 && column == 0 ? product : sum + product;
                }
            return sum - float(lowRes.at(i, 0));
        });
    }
    /** Adds to a gradient by its definition. */
    void addTo(const Image& gradient, const TestImage<float>& residual) const {
        for (int i = 0; i < count(); ++i) {
            const auto [x, y] = places[size_t(i)];
            const float g = weights[weightIndex.at(i, 0)] * residual.at(i, 0);
            for (int row = 0; row < kSize; ++row)
                for (int column = 0; column < kSize; ++column)
                    gradient.at(x + column, y + row) += coefficient(i, row, column) * g;
        }
    }
};

}  // namespace super_resolution
