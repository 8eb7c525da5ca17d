// Images of half and of double size against their definition, in the documented order of operations.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <tuple>

#include "arguments.h"
#include "border.h"
#include "regions.h"
#include "test/exports/faults.h"

namespace {

/** The exports of an element type and a number of channels. */
template <auto kDown, auto kUp>
struct Form;

template <typename T, Status (*kDownOf)(const T*, int32_t, T*, int32_t, RoiSize, uint8_t*), auto kUpOf>
struct Form<kDownOf, kUpOf> {
    using Pixel = T;
    static constexpr auto kDown = kDownOf, kUp = kUpOf;
    static constexpr int kType = std::is_same_v<T, uint8_t> ? 1 : std::is_same_v<T, int8_t> ? 3 : 13;
};

struct OneChannel {
    static constexpr int kChannels = 1;
};
struct ThreeChannels {
    static constexpr int kChannels = 3;
};
struct Bytes1 : OneChannel, Form<vekiPyrDown_Gauss5x5_8u_C1R, vekiPyrUp_Gauss5x5_8u_C1R> {};
struct Bytes3 : ThreeChannels, Form<vekiPyrDown_Gauss5x5_8u_C3R, vekiPyrUp_Gauss5x5_8u_C3R> {};
struct Signed1 : OneChannel, Form<vekiPyrDown_Gauss5x5_8s_C1R, vekiPyrUp_Gauss5x5_8s_C1R> {};
struct Signed3 : ThreeChannels, Form<vekiPyrDown_Gauss5x5_8s_C3R, vekiPyrUp_Gauss5x5_8s_C3R> {};
struct Floats1 : OneChannel, Form<vekiPyrDown_Gauss5x5_32f_C1R, vekiPyrUp_Gauss5x5_32f_C1R> {};
struct Floats3 : ThreeChannels, Form<vekiPyrDown_Gauss5x5_32f_C3R, vekiPyrUp_Gauss5x5_32f_C3R> {};

/** Sums as the library adds them; of floats the order counts. */
template <typename Sum>
Sum three(Sum a, Sum b, Sum c) {
    return ((a + c) + 2 * b) + 4 * b;
}
template <typename Sum>
Sum five(Sum a, Sum b, Sum c, Sum d, Sum e) {
    return three(a, c, e) + 4 * (b + d);
}

/** A sum over a power of two; of integers to the nearest, halves upwards. */
template <typename T, typename Sum>
T scaled(Sum sum, int divisor) {
    if constexpr (std::is_same_v<T, float>)
        return sum * (1.0f / float(divisor));
    else
        return T((sum + divisor / 2 + 256 * divisor) / divisor - 256);  // no negative dividend
}

template <typename Form>
class GaussPyramid : public ::testing::Test {
  protected:
    using Pixel = typename Form::Pixel;
    using Image = TestImage<Pixel>;
    using Sum = std::conditional_t<std::is_same_v<Pixel, float>, float, int>;
    static constexpr int kChannels = Form::kChannels;

    static Sum at(const Image& image, int x, int y, int c) { return Sum(image.at(x * kChannels + c, y)); }

    static Image down(const Image& source) {
        const auto [width, height] = source.roi();
        const auto mirrored = [](int i, int size) { return borderPixel(BorderReflect, i, size); };
        const auto pixel = [&, w = width, h = height](int i, int j, int c) {
            Sum rows[5], columns[5];
            // Floats by columns first; of integers the order does not count.
            for (int k = 0; k < 5; ++k) {
                for (int m = 0; m < 5; ++m)
                    rows[m] = at(source, mirrored(2 * i + k - 2, w), mirrored(2 * j + m - 2, h), c);
                columns[k] = std::apply(five<Sum>, std::to_array(rows));
            }
            return scaled<Pixel>(std::apply(five<Sum>, std::to_array(columns)), 256);
        };
        return make({(width + 1) / 2, (height + 1) / 2}, pixel);
    }

    static Image up(const Image& source) {
        const auto [width, height] = source.roi();
        const auto inside = [](int i, int size) { return i < size ? borderPixel(BorderReflect, i, size) : size - 1; };
        // The pixel at i / 2 of a line; at a place between two pixels their mean.
        const auto smooth = [&](int i, int size, const std::function<Sum(int)>& line) {
            const int k = i / 2;
            if (i % 2 == 1)
                return 4 * (line(k) + line(inside(k + 1, size)));
            return three(line(inside(k - 1, size)), line(k), line(inside(k + 1, size)));
        };
        const auto pixel = [&, w = width, h = height](int i, int j, int c) {
            return scaled<Pixel>(
                smooth(i, w, [&](int x) { return smooth(j, h, [&](int y) { return at(source, x, y, c); }); }), 64);
        };
        return make({2 * width, 2 * height}, pixel);
    }

    static int32_t bufferSize(bool isDown, int32_t width) {
        int32_t size = -1;
        const auto query = isDown ? vekiPyrDownGetBufSize_Gauss5x5 : vekiPyrUpGetBufSize_Gauss5x5;
        EXPECT_EQ(StatusOk, query(width, Form::kType, kChannels, &size));
        return size;
    }

    static void check(const Image& source, const Layouts& layouts, int32_t bufferWidth = 0) {
        for (const bool isDown : {true, false}) {
            const Image expected = isDown ? down(source) : up(source);
            const Image out(expected.roi(), layouts[1], kChannels);
            const auto buffer = workBuffer(bufferSize(isDown, std::max(bufferWidth, source.roi().width)), layouts[1]);
            ASSERT_EQ(StatusOk, callWith(isDown ? Form::kDown : Form::kUp, source, out, source.roi(), buffer.data()));
            ASSERT_TRUE(samePixels(expected, out)) << (isDown ? "down" : "up");
            ASSERT_TRUE(buffer.guardsIntact());
        }
    }

    /** Any bytes, or finite floats. */
    static Image image(RoiSize roi, Layout layout, uint32_t seed) {
        return Image::filled(
            roi, layout,
            [random = Random(seed)](int, int) mutable {
                if constexpr (std::is_same_v<Pixel, float>)
                    return float(int32_t(random.bits()) >> 8) / 4096;
                else
                    return random.value<Pixel>();
            },
            kChannels);
    }

  private:
    template <typename F>
    static Image make(RoiSize roi, F pixel) {
        return Image::filled(
            roi, {}, [&](int x, int y) { return pixel(x / kChannels, y, x % kChannels); }, kChannels);
    }
};
using Forms = ::testing::Types<Bytes1, Bytes3, Signed1, Signed3, Floats1, Floats3>;
TYPED_TEST_SUITE(GaussPyramid, Forms);

TYPED_TEST(GaussPyramid, MatchesItsDefinition) {
    forSmallImages([&](RoiSize roi, const Layouts& layouts) { this->check(this->image(roi, layouts[0], 1), layouts); });
}

// Every width up to a few vectors, where rows need more memory than the buffer has, and every small height.
TYPED_TEST(GaussPyramid, TakesAnySize) {
    for (int32_t width = 1; width <= 100; ++width)
        this->check(this->image({width, 1 + width % 9}, {}, 2), {});
    this->check(this->image({33, 70}, {}, 3), {});
    this->check(this->image({9, 5}, {}, 4), {}, 300);  // a buffer for wider images serves, too
}

TYPED_TEST(GaussPyramid, KeepsConstantImages) {
    using T = typename TypeParam::Pixel;
    const auto buffer = workBuffer(this->bufferSize(true, 37));
    for (const double value : {0.1, 127.0, -128.0, 1.7 / 3, 100.7}) {
        const auto pixel = [value] {
            if constexpr (std::is_same_v<T, float>)
                return float(value);
            else
                return T(int(value));
        }();
        const auto constant = [=](RoiSize roi) { return TestImage<T>::constant(roi, pixel, TypeParam::kChannels); };
        const TestImage<T> source = constant({37, 6}), twice({74, 12}, {}, TypeParam::kChannels),
                           half({19, 3}, {}, TypeParam::kChannels);
        ASSERT_EQ(StatusOk, callWith(TypeParam::kDown, source, half, source.roi(), buffer.data()));
        ASSERT_TRUE(samePixels(constant(half.roi()), half));
        ASSERT_EQ(StatusOk, callWith(TypeParam::kUp, source, twice, source.roi(), buffer.data()));
        ASSERT_TRUE(samePixels(constant(twice.roi()), twice));
    }
}

TEST(GaussPyramidBuffer, HasTheDocumentedSize) {
    const auto sizes = [](int32_t width, int32_t channels) {
        std::pair<int32_t, int32_t> both{-1, -1};
        EXPECT_EQ(StatusOk, vekiPyrDownGetBufSize_Gauss5x5(width, 1, channels, &both.first));
        EXPECT_EQ(StatusOk, vekiPyrUpGetBufSize_Gauss5x5(width, 13, channels, &both.second));
        return both;
    };
    EXPECT_EQ(std::pair(160, 112), sizes(1, 1));
    EXPECT_EQ(std::pair(160, 160), sizes(1, 3));
    EXPECT_EQ(std::pair(15424, 15424), sizes(640, 1));
    EXPECT_EQ(std::pair(46528, 46528), sizes(645, 3));
    int32_t size = 77;
    EXPECT_EQ(StatusOk, vekiPyrDownGetBufSize_Gauss5x5(89478480, 3, 1, &size));
    EXPECT_EQ(2147483584, size);
    EXPECT_EQ(StatusSizeError, vekiPyrDownGetBufSize_Gauss5x5(89478485, 3, 1, &size));
    EXPECT_EQ(StatusSizeError, vekiPyrUpGetBufSize_Gauss5x5(INT32_MAX, 3, 3, &size));
    EXPECT_EQ(2147483584, size);
}

const exports::FamilyFaults kDownFaults("vekiPyrDown",
                                        {{"roiWidth", StatusSizeError, {0, -1, INT32_MIN}, exports::Behind::kSizes},
                                         {"channels", StatusChannelError, {0, 2, 4, -1}},
                                         {"dataType", StatusDataTypeError, {0, 2, 5, 12, 14, -1}}});
const exports::FamilyFaults kUpFaults("vekiPyrUp",
                                      {{"roiWidth", StatusSizeError, {0, -1, INT32_MIN}, exports::Behind::kSizes},
                                       {"channels", StatusChannelError, {0, 2, 4, -1}},
                                       {"dataType", StatusDataTypeError, {0, 2, 5, 12, 14, -1}}});

}  // namespace
