#include "shrink.h"

#include <algorithm>
#include <cmath>

namespace {

// Weights of a row and of a column are of 8 bits each: rows of sums fit 16 bits, and the sums of these 32.
constexpr int32_t kOne = 256;

/** Where a pixel of the result lies between two pixels of the source. */
struct Place {
    int32_t first, second;
    int32_t weightOfSecond;
};

std::vector<Place> placesOf(int32_t count, int32_t sourceCount) {
    std::vector<Place> places(static_cast<size_t>(count));
    const double factor = static_cast<double>(sourceCount) / count;
    for (int32_t i = 0; i < count; ++i) {
        const double middle = std::clamp((i + 0.5) * factor - 0.5, 0., sourceCount - 1.);
        const auto first = static_cast<int32_t>(middle);
        places[static_cast<size_t>(i)] = {first, std::min(first + 1, sourceCount - 1),
                                          static_cast<int32_t>(std::lrint((middle - first) * kOne))};
    }
    return places;
}

/** Two rows in proportion; kOne times as large. */
void mixRows(const uint8_t* first, const uint8_t* second, int32_t weightOfSecond, uint16_t* sums, int32_t width) {
    for (int32_t x = 0; x < width; ++x)
        sums[x] = static_cast<uint16_t>(first[x] * (kOne - weightOfSecond) + second[x] * weightOfSecond);
}

}  // namespace

Picture shrunk(const Picture& grey, RoiSize size) {
    const std::vector<Place> columns = placesOf(size.width, grey.width), rows = placesOf(size.height, grey.height);
    Picture result(size.width, size.height, 1, 8);
    std::vector<uint16_t> sums(static_cast<size_t>(grey.width));
    uint8_t* to = result.pixels<uint8_t>();
    for (const Place& row : rows) {
        mixRows(grey.pixels<uint8_t>() + ptrdiff_t{row.first} * grey.step(),
                grey.pixels<uint8_t>() + ptrdiff_t{row.second} * grey.step(), row.weightOfSecond, sums.data(),
                grey.width);
        const uint16_t* const from = sums.data();
        for (const Place& column : columns)
            *to++ = static_cast<uint8_t>((from[column.first] * (kOne - column.weightOfSecond) +
                                          from[column.second] * column.weightOfSecond + kOne * kOne / 2) /
                                         (kOne * kOne));
    }
    return result;
}
