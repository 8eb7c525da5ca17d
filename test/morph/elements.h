// Structuring elements of many shapes, images to try them on, and what comes out of these by definition.
#pragma once

#include <algorithm>
#include <cfloat>
#include <functional>
#include <vector>

#include "test_image.h"

namespace morph {

constexpr bool isMember(uint8_t mask) {
    return mask != 0;
}
constexpr bool isMember(int32_t height) {
    return height != INT32_MIN;
}
constexpr bool isMember(float height) {
    return height > -FLT_MAX;
}

/** A mask of bytes, or heights of 8u (int32_t) and 32f pixels, row by row. */
template <typename Number>
struct Element {
    RoiSize size;
    ImagePoint anchor;
    std::vector<Number> numbers;

    /** f(x, y) gives each number. */
    template <typename F>
    static Element of(RoiSize size, ImagePoint anchor, F f) {
        Element element{size, anchor, {}};
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x)
                element.numbers.push_back(f(x, y));
        return element;
    }

    Number at(int x, int y) const { return numbers[size_t(y) * size_t(size.width) + size_t(x)]; }
    bool hasMember(int x, int y) const { return isMember(at(x, y)); }
    auto memberCount() const {
        return std::count_if(numbers.begin(), numbers.end(), [](Number number) { return isMember(number); });
    }

    Element mirrored() const {
        return of(size, {size.width - 1 - anchor.x, size.height - 1 - anchor.y},
                  [this](int x, int y) { return at(size.width - 1 - x, size.height - 1 - y); });
    }

    friend std::ostream& operator<<(std::ostream& out, const Element& element) {
        out << "anchor " << element.anchor.x << ", " << element.anchor.y << " of";
        for (int y = 0; y < element.size.height; ++y) {
            out << '\n';
            for (int x = 0; x < element.size.width; ++x)
                out << (element.hasMember(x, y) ? '#' : '.');
        }
        return out;
    }
};
using Mask = Element<uint8_t>;

/** Members may be any bytes but 0. */
template <typename IsIn>
Mask maskOf(RoiSize size, ImagePoint anchor, IsIn isIn) {
    constexpr uint8_t kMembers[] = {1, 2, 128, 255, 3};
    return Mask::of(size, anchor, [&](int x, int y) { return isIn(x, y) ? kMembers[(x + y) % 5] : uint8_t{0}; });
}
inline Mask fullMask(RoiSize size, ImagePoint anchor) {
    return maskOf(size, anchor, [](int, int) { return true; });
}

/** The corners of a window and a place within. */
inline std::vector<ImagePoint> anchorsOf(RoiSize size) {
    const int32_t right = size.width - 1, bottom = size.height - 1;
    return {{0, 0}, {right, 0}, {size.width / 2, size.height / 3}, {0, bottom}, {right, bottom}};
}

/** Tells whether a place in a mask of this size is a member. In small masks there may be none. */
using Shape = std::function<bool(int x, int y, RoiSize size)>;

inline const std::vector<Shape>& shapes() {
    const auto distance = [](int x, int y, RoiSize s) {  // from the middle, 1 at the edges
        const double dx = (2 * x + 1.0) / s.width - 1, dy = (2 * y + 1.0) / s.height - 1;
        return dx * dx + dy * dy;
    };
    static const std::vector<Shape> all{
        [](int, int, RoiSize) { return true; },
        [](int x, int y, RoiSize) { return x == 0 && y == 0; },
        [](int x, int y, RoiSize s) { return x == s.width - 1 && y == s.height - 1; },
        [](int, int y, RoiSize s) { return y == s.height / 2; },
        [](int x, int, RoiSize s) { return x == s.width / 2; },
        [](int x, int, RoiSize s) { return x < s.width / 2 || s.width == 1; },
        [](int, int y, RoiSize s) { return y < s.height / 2 || s.height == 1; },
        [](int x, int y, RoiSize s) { return x == s.width / 2 || y == s.height / 2; },
        [=](int x, int y, RoiSize s) { return distance(x, y, s) <= 1 || y == s.height / 2; },
        [=](int x, int y, RoiSize s) { return (distance(x, y, s) <= 1 && distance(x, y, s) > 0.4) || x + y == 0; },
        [](int x, int y, RoiSize s) { return x == y % s.width; },
        [](int x, int y, RoiSize s) { return x == s.width - 1 - y % s.width; },
        [](int x, int y, RoiSize s) { return x == s.width - 1 - y % s.width || x == y % s.width; },
        [](int x, int y, RoiSize) { return x >= y && x < y + 3; },              // runs on a slope
        [](int x, int y, RoiSize s) { return x + y >= 8 && x + y < s.width; },  // of all lengths, and rows without any
        [](int x, int y, RoiSize) { return x <= y; },
        [](int x, int y, RoiSize) { return (x + y) % 2 == 0; },
        [](int x, int, RoiSize s) { return x % 4 != 3 || s.width < 4; },  // comb
        [](int, int y, RoiSize) { return y % 3 == 0; },                   // several bars
        [](int x, int y, RoiSize s) { return x != 1 || y != s.height - 1; },
        [](int x, int y, RoiSize) { return (x * 7 + y * y * 5 + x * x * y) % 11 < 2; },
        [](int x, int y, RoiSize) { return (x * 3 + y * y * 5 + x * x * y) % 7 < 5; },
    };
    return all;
}

/** Sizes of masks below and above those from which on columns and diagonals are joined; many lengths of runs. */
inline constexpr RoiSize kMaskSizes[] = {{1, 1}, {3, 3}, {4, 2}, {7, 7}, {9, 8}, {12, 9}, {5, 17}, {19, 26}, {34, 5}};

/** check(mask, turn) for masks of a shape and size with two anchors; `turn` counts calls and chooses the anchors. */
template <typename Check>
void forAnchors(const Shape& shape, RoiSize size, int& turn, const Check& check) {
    const auto anchors = anchorsOf(size);
    for (int i = 0; i < 2; ++i, ++turn) {
        const ImagePoint anchor = anchors[size_t(turn) % anchors.size()];
        const Mask mask = maskOf(size, anchor, [&](int x, int y) { return shape(x, y, size); });
        SCOPED_TRACE(::testing::Message() << "turn " << turn << ", " << mask);
        if (mask.memberCount() > 0 && !::testing::Test::HasFailure())
            check(mask, turn);
    }
}

/** The same for masks of all shapes. */
template <typename Check>
void forMasks(Check check) {
    int turn = 0;
    for (const Shape& shape : shapes())
        for (const RoiSize size : kMaskSizes)
            forAnchors(shape, size, turn, check);
}

/** The same for full masks, on both sides of the sizes at which other loops filter them. */
template <typename Check>
void forFullWindows(Check check) {
    int turn = 0;
    for (const int32_t width : {1, 2, 5, 6, 7, 8, 29, 30, 31, 36, 37, 149, 150, 151, 181})
        for (const int32_t height : {1, 2, 3})
            forAnchors(shapes()[0], {width, height}, turn, check);
    for (const int32_t height : {4, 5, 7, 8, 9, 15, 16, 23, 24, 25, 26, 32, 33, 63, 64, 65, 100})
        for (const int32_t width : {1, 3})
            forAnchors(shapes()[0], {width, height}, turn, check);
}

/** Sizes of images, by turns: on both sides of vectors, of blocks of 8 and 64 rows, and smaller than most masks. */
inline RoiSize imageSize(int turn) {
    constexpr RoiSize kSizes[] = {{37, 15}, {1, 1},  {70, 8}, {9, 66}, {3, 9},   {40, 7}, {18, 64},
                                  {131, 3}, {2, 31}, {5, 63}, {33, 1}, {17, 17}, {1, 65}};
    return kSizes[size_t(turn) % std::size(kSizes)];
}
inline Layout layout(int turn) {
    return kLayouts[size_t(turn) % std::size(kLayouts)];
}

/** An element that stands out of an image, or one of the others, which are near to each other. No NaNs. */
template <typename T>
T outlier(Random& random) {
    const T value = random.value<T>();
    return value != value ? T(7) : value;
}
template <typename T>
T plain(Random& random) {
    const int value = int(random.below(5)) - 2;
    if constexpr (std::is_same_v<T, float>)
        return float(value) * (random.below(2) == 0 ? 1.f : -1.f);
    else
        return T(128 + value);
}

/** The turn with NaNs where the rows of two stripes of threads meet, in images of kLargeWidth. */
constexpr int kStripes = 6;

/** Puts NaNs into an image, if it has floats: single ones, rows, or but for one nothing else; by turns. */
template <typename T>
void putNaNs(const TestImage<T>& image, int turn) {
    if constexpr (std::is_same_v<T, float>) {
        const auto isNaN = [turn = turn % 8, roi = image.roi()](int x, int y) {
            const int middle = roi.height / 2;
            return (turn == 1 && y == middle && x % 7 == 3) || (turn == 2 && y % 5 < 3) || (turn == 3) ||
                   (turn == 4 && (x > 0 || y != middle)) || (turn == 5 && (y == 0 || y == roi.height - 1)) ||
                   (turn == kStripes && (y + 1) % 86 < 2 && x % 3 == 0);
        };
        for (int y = 0; y < image.roi().height; ++y)
            for (int x = 0; x < image.elements(); ++x)
                if (isNaN(x, y))
                    image.at(x, y) = std::numeric_limits<float>::quiet_NaN();
    }
}

/** An image in which an outlier stands in most windows of an element, but few, so that every member matters. */
template <typename Exports, typename Number>
auto imageFor(const Element<Number>& element, RoiSize roi, int turn) {
    using T = typename Exports::Pixel;
    const auto rare = uint32_t(element.memberCount()) + 1;
    const auto image = TestImage<T>::filled(
        roi, layout(turn),
        [=, random = Random(uint32_t(turn))](int, int) mutable {
            return random.below(rare) == 0 ? outlier<T>(random) : plain<T>(random);
        },
        Exports::kChannels);
    putNaNs(image, turn);
    return image;
}

enum class Rank { kMinimum, kMaximum };
inline constexpr Rank kRanks[] = {Rank::kMinimum, Rank::kMaximum};

/** Elements and heights are added in this type. */
template <typename T>
using Sum = std::conditional_t<std::is_same_v<T, float>, float, int64_t>;

/** The erosion or the dilation, one element at a time. */
template <typename T, typename Number>
TestImage<T> rankOf(const TestImage<T>& source, const Element<Number>& element, Rank rank) {
    const RoiSize roi = source.roi();
    const int channels = source.elements() / roi.width;
    struct Member {
        int dx, dy;
        Sum<T> height;
    };
    std::vector<Member> members;
    for (int j = 0; j < element.size.height; ++j)
        for (int i = 0; i < element.size.width; ++i)
            if (element.hasMember(i, j))
                members.push_back({i - element.anchor.x, j - element.anchor.y,
                                   std::is_same_v<Number, uint8_t> ? Sum<T>(0) : Sum<T>(element.at(i, j))});
    return TestImage<T>::filled(
        roi, {},
        [&](int e, int y) {
            const int x = e / channels, channel = e % channels;
            bool found = false;
            Sum<T> best = 0;
            for (const Member& member : members) {
                const int column = std::clamp(x + member.dx, 0, roi.width - 1) * channels + channel;
                const auto pixel = Sum<T>(source.at(column, std::clamp(y + member.dy, 0, roi.height - 1)));
                const Sum<T> value = rank == Rank::kMaximum ? pixel + member.height : pixel - member.height;
                if (value != value || (found && (rank == Rank::kMaximum ? value <= best : value >= best)))
                    continue;
                best = value;
                found = true;
            }
            if constexpr (std::is_same_v<T, float>)
                return found ? best : std::numeric_limits<float>::quiet_NaN();
            else
                return T(std::clamp<Sum<T>>(best, 0, 255));
        },
        channels);
}

/** Whether two images hold the same elements, where -0 is the same as +0, and nothing was written around the second. */
template <typename T>
::testing::AssertionResult sameRanks(const TestImage<T>& expected, const TestImage<T>& actual) {
    if constexpr (std::is_same_v<T, float>)
        for (const TestImage<T>& image : {expected, actual})
            for (int y = 0; y < image.roi().height; ++y)
                for (int x = 0; x < image.elements(); ++x)
                    image.at(x, y) += 0.f;
    return samePixels(expected, actual);
}

}  // namespace morph
