// What the tests of segments share: images of labels, and the boundaries of segments by their definition.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "arguments.h"
#include "test_image.h"

namespace segments {

/** Whether a pixel at this distance is a neighbour of another. */
inline bool isNeighbour(int dx, int dy, int32_t norm) {
    return (dx != 0 || dy != 0) && (norm == NormInf || dx == 0 || dy == 0);
}

/** visit(x, y) for the neighbours of a pixel in raster order. */
template <typename Visit>
void forNeighbours(RoiSize roi, int x, int y, int32_t norm, Visit visit) {
    for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx)
            if (isNeighbour(dx, dy, norm) && x + dx >= 0 && x + dx < roi.width && y + dy >= 0 && y + dy < roi.height)
                visit(x + dx, y + dy);
}

/** visit(x, y) in raster order. */
template <typename Visit>
void forPixels(RoiSize roi, Visit visit) {
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x)
            visit(x, y);
}

/** Writes the border value where segments meet: one pixel after the other. */
template <typename T>
void markBoundaries(const TestImage<T>& markers, T borderValue, int32_t norm) {
    forPixels(markers.roi(), [&](int x, int y) {
        T& pixel = markers.at(x, y);
        bool isBorder = false;
        forNeighbours(markers.roi(), x, y, norm, [&](int nx, int ny) {
            const T neighbour = markers.at(nx, ny);
            const bool isBefore = ny < y || (ny == y && nx < x);
            isBorder = isBorder || (isBefore && neighbour != borderValue && neighbour != pixel);
        });
        if (isBorder)
            pixel = borderValue;
    });
}

/** Markers without a label, but for one pixel in `every`: labels from 1 to `labels`, and some walls. */
template <typename T>
TestImage<T> seeds(RoiSize roi, Layout layout, uint32_t seed, uint32_t every, uint32_t labels = 5) {
    return TestImage<T>::filled(roi, layout, [=, random = Random(seed)](int, int) mutable {
        if (random.below(every) != 0)
            return T(0);
        return random.below(8) == 0 ? std::numeric_limits<T>::max() : T(1 + random.below(labels));
    });
}

/** Greys of so many levels, from 0 to 255. */
inline TestImage<uint8_t> greys(RoiSize roi, Layout layout, uint32_t seed, uint32_t levels, int channels = 1) {
    return TestImage<uint8_t>::filled(
        roi, layout,
        [=, random = Random(seed)](int, int) mutable {
            return uint8_t(levels == 1 ? 0 : random.below(levels) * 255 / (levels - 1));
        },
        channels);
}

template <auto Query>
int32_t bufferSize(RoiSize roi) {
    int32_t size = -1;
    EXPECT_EQ(StatusOk, Query(roi, &size));
    return size;
}

/** The result of a call that segments a source from markers, in an image of this layout. */
template <auto Export, auto Query, typename T>
TestImage<T> segment(const TestImage<uint8_t>& source, const TestImage<T>& markers, int32_t norm, int32_t flag,
                     Layout layout) {
    const auto result = markers.copy(layout);
    const auto before = source.copy({});
    const auto buffer = workBuffer(bufferSize<Query>(markers.roi()), layout);
    // Zeros, which a frame that is not written would let segments grow into.
    std::memset(buffer.data(), 0, size_t(buffer.roi().width));
    EXPECT_EQ(StatusOk, callWith(Export, source, result, markers.roi(), norm, flag, buffer.data()));
    EXPECT_TRUE(buffer.guardsIntact());
    EXPECT_TRUE(samePixels(before, source));
    EXPECT_TRUE(result.guardsIntact());
    return result;
}

/** An image whose step is no whole number of elements. */
class OddRows {
  public:
    explicit OddRows(const TestImage<uint16_t>& image)
        : bytes_({2 * image.roi().width, image.roi().height}, {Layout::kAfterGuard, 0, 1}) {
        for (int y = 0; y < image.roi().height; ++y)
            std::memcpy(&bytes_.at(0, y), &image.at(0, y), size_t(bytes_.roi().width));
    }

    uint16_t* data() const { return reinterpret_cast<uint16_t*>(bytes_.data()); }
    int32_t step() const { return bytes_.step(); }

    void expect(const TestImage<uint16_t>& image) const { EXPECT_TRUE(samePixels(OddRows(image).bytes_, bytes_)); }

  private:
    TestImage<uint8_t> bytes_;
};

}  // namespace segments
