// Morphological reconstruction against its definition.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>

#include "arguments.h"
#include "regions.h"
#include "test/exports/faults.h"
#include "test_image.h"

namespace {

template <auto Export, auto Query, bool kIsDilation>
struct Member;

/** An export, and the order of values in which its markers become larger. */
template <typename T, typename... Rest, Status (*Export)(const T*, int32_t, T*, Rest...), auto Query, bool kIsDilation>
struct Member<Export, Query, kIsDilation> {
    using Pixel = T;
    using Image = TestImage<T>;
    using Limits = std::numeric_limits<T>;
    static constexpr auto kQuery = Query;
    static constexpr bool kIsFloat = std::is_floating_point_v<T>;
    static constexpr T kLowest = kIsFloat ? -Limits::infinity() : Limits::lowest();
    static constexpr T kHighest = kIsFloat ? Limits::infinity() : Limits::max();
    static constexpr T kLeast = kIsDilation ? kLowest : kHighest;
    static constexpr T kMost = kIsDilation ? kHighest : kLowest;

    static T larger(T a, T b) { return kIsDilation ? std::max(a, b) : std::min(a, b); }
    static T smaller(T a, T b) { return kIsDilation ? std::min(a, b) : std::max(a, b); }

    /** Where a NaN stands for another value, and zeros are +0. */
    static T plain(T value, T forNaN) { return value != value ? forNaN : T(value + T(0)); }

    /** A value that is 0 to 100 steps larger than the least of usual values. */
    static T level(int steps) { return T(kIsDilation ? steps : 100 - steps); }

    static int32_t bufferSize(RoiSize roi) {
        int32_t size = -1;
        EXPECT_EQ(StatusOk, Query(roi, &size));
        return size;
    }

    /** The definition: step after step for one pixel after the other. */
    static Image expected(const Image& source, const Image& marker, int32_t norm) {
        const RoiSize roi = source.roi();
        const auto bound = Image::filled(roi, {}, [&](int x, int y) { return plain(source.at(x, y), kMost); });
        const auto result = Image::filled(
            roi, {}, [&](int x, int y) { return smaller(bound.at(x, y), plain(marker.at(x, y), kLeast)); });
        for (bool isStable = false; !isStable;) {
            isStable = true;
            for (int y = 0; y < roi.height; ++y)
                for (int x = 0; x < roi.width; ++x) {
                    T around = result.at(x, y);
                    for (int dy = -1; dy <= 1; ++dy)
                        for (int dx = -1; dx <= 1; ++dx)
                            if ((norm == NormInf || dx == 0 || dy == 0) && x + dx >= 0 && x + dx < roi.width &&
                                y + dy >= 0 && y + dy < roi.height)
                                around = larger(around, result.at(x + dx, y + dy));
                    const T next = smaller(bound.at(x, y), around);
                    isStable = isStable && next == result.at(x, y);
                    result.at(x, y) = next;
                }
        }
        return result;
    }

    /** The result of a call, in an image like the marker. */
    static Image reconstruct(const Image& source, const Image& marker, int32_t norm, Layout layout = {}) {
        const RoiSize roi = source.roi();
        const Image result = marker.copy(layout), before = source.copy({});
        const auto buffer = workBuffer(bufferSize(roi), layout);
        EXPECT_EQ(StatusOk, callWith(Export, source, result, roi, norm, buffer.data()));
        EXPECT_TRUE(buffer.guardsIntact());
        EXPECT_TRUE(samePixels(before, source));
        EXPECT_TRUE(result.guardsIntact());
        return result;
    }

    static void check(const Image& source, const Image& marker, Layout layout = {}) {
        for (const int32_t norm : {NormL1, NormInf}) {
            SCOPED_TRACE(::testing::Message() << source.roi().width << " x " << source.roi().height << ", " << layout
                                              << (norm == NormL1 ? ", 4" : ", 8") << " neighbours");
            ASSERT_TRUE(samePixels(expected(source, marker, norm), reconstruct(source, marker, norm, layout)));
        }
    }
};

using Dilate8u = Member<&vekiMorphReconstructDilate_8u_C1IR, &vekiMorphReconstructDilateGetBufferSize_8u_C1R, true>;
using Dilate16u = Member<&vekiMorphReconstructDilate_16u_C1IR, &vekiMorphReconstructDilateGetBufferSize_16u_C1R, true>;
using Dilate32f = Member<&vekiMorphReconstructDilate_32f_C1IR, &vekiMorphReconstructDilateGetBufferSize_32f_C1R, true>;
using Erode8u = Member<&vekiMorphReconstructErode_8u_C1IR, &vekiMorphReconstructErodeGetBufferSize_8u_C1R, false>;
using Erode16u = Member<&vekiMorphReconstructErode_16u_C1IR, &vekiMorphReconstructErodeGetBufferSize_16u_C1R, false>;
using Erode32f = Member<&vekiMorphReconstructErode_32f_C1IR, &vekiMorphReconstructErodeGetBufferSize_32f_C1R, false>;

template <typename MemberType>
class Reconstruction : public ::testing::Test {};
using Members = ::testing::Types<Dilate8u, Dilate16u, Dilate32f, Erode8u, Erode16u, Erode32f>;
TYPED_TEST_SUITE(Reconstruction, Members);

// Markers of any value are above the source in half of the pixels; a few seeds in a source of few levels spread far.
TYPED_TEST(Reconstruction, MatchesItsDefinition) {
    using Image = typename TypeParam::Image;
    std::vector<RoiSize> regions = smallRegions();
    for (const RoiSize& roi :
         {RoiSize{1, 40}, RoiSize{2, 33}, RoiSize{15, 21}, RoiSize{16, 9}, RoiSize{67, 61}, RoiSize{131, 40}})
        regions.push_back(roi);
    uint32_t seed = 0;
    for (const RoiSize& roi : regions)
        for (const Layout& layout : kLayouts) {
            Random random(++seed);
            const Image any = Image::random(roi, layout, ++seed);
            TypeParam::check(any, Image::random(roi, layout, ++seed), layout);
            for (const uint32_t levels : {2u, 5u, 100u}) {
                const auto source = Image::filled(roi, layout, [&](int, int) {
                    return TypeParam::level(50 + int(random.below(levels) * 50 / levels));
                });
                const auto marker = Image::filled(roi, layout, [&](int, int) {
                    return TypeParam::level(random.below(50) == 0 ? int(random.below(101)) : 0);
                });
                TypeParam::check(source, marker, layout);
            }
            ASSERT_FALSE(this->HasFailure());
        }
    const Layout &padded = kLayouts[2], &other = kLayouts[4];
    TypeParam::check(Image::random({77, 9}, padded, 1), Image::random({77, 9}, {}, 2), other);
}

/** A curve that fills an image: a pixel wide, with a wall as wide between its turns. */
class Curve {
  public:
    Curve(RoiSize roi) : isOn_(TestImage<uint8_t>::constant(roi, 0)) {}

    /** To and fro along the rows, and down at alternate ends. */
    static Curve comb(RoiSize roi) {
        Curve curve(roi);
        for (int y = 0; y < roi.height; ++y)
            for (int i = 0; i < roi.width; ++i) {
                const int x = y % 4 == 0 ? i : roi.width - 1 - i;
                if (y % 2 == 0 || x == (y % 4 == 1 ? roi.width - 1 : 0))
                    curve.add({x, y});
            }
        return curve;
    }

    /** From the upper left corner inwards. */
    static Curve spiral(RoiSize roi) {
        Curve curve(roi);
        ImagePoint at{0, 0}, step{1, 0};
        for (int turns = 0; turns < 2;) {
            curve.add(at);
            const ImagePoint next{at.x + step.x, at.y + step.y}, second{next.x + step.x, next.y + step.y};
            const bool isFree = curve.isInside(next) && !(curve.isInside(second) && curve.isOn(second));
            turns = isFree ? 0 : turns + 1;
            if (isFree)
                at = next;
            else
                step = {-step.y, step.x};
        }
        return curve;
    }

    Curve transposed() const {
        Curve curve({isOn_.roi().height, isOn_.roi().width});
        for (const ImagePoint& point : points)
            curve.add({point.y, point.x});
        return curve;
    }

    RoiSize roi() const { return isOn_.roi(); }
    bool isOn(ImagePoint p) const { return isOn_.at(p.x, p.y) != 0; }

    std::vector<ImagePoint> points;  // from its beginning to its end; the last ones of a spiral may stand twice

  private:
    bool isInside(ImagePoint p) const { return p.x >= 0 && p.y >= 0 && p.x < roi().width && p.y < roi().height; }
    void add(ImagePoint p) {
        points.push_back(p);
        isOn_.at(p.x, p.y) = 1;
    }

    TestImage<uint8_t> isOn_;
};

// Each turn takes another scan, so that the queue does most of the work. The walls are low, and next to the curve, so
// that every pixel is reached.
TYPED_TEST(Reconstruction, FollowsCurves) {
    using Image = typename TypeParam::Image;
    std::vector<Curve> curves;
    for (const RoiSize& roi : {RoiSize{37, 36}, RoiSize{131, 67}, RoiSize{9, 200}})
        for (const Curve& curve : {Curve::comb(roi), Curve::spiral(roi)}) {
            curves.push_back(curve);
            curves.push_back(curve.transposed());
        }
    for (const Curve& curve : curves)
        for (const ImagePoint& seed : {curve.points.front(), curve.points.back(), curve.points[99]}) {
            const auto source = Image::filled(curve.roi(), {}, [&](int x, int y) {
                return TypeParam::level(curve.isOn({x, y}) ? 60 : (x + y) % 7);
            });
            const auto marker = Image::filled(
                curve.roi(), {}, [&](int x, int y) { return TypeParam::level(x == seed.x && y == seed.y ? 100 : 0); });
            for (const int32_t norm : {NormL1, NormInf})
                ASSERT_TRUE(samePixels(source, TypeParam::reconstruct(source, marker, norm)))
                    << curve.roi().width << " x " << curve.roi().height << " from " << seed.x << ", " << seed.y;
        }
}

// A scan gets no further than the next turn of a comb of short teeth, so the queue follows. In the middle it comes to
// an opening, and in the field behind that more pixels wait at a time than it has places for. In a field of several
// levels they are overtaken by others, too.
TYPED_TEST(Reconstruction, GoesOnWhenTheQueueIsFull) {
    using Image = typename TypeParam::Image;
    constexpr int kTooth = 3;
    for (const RoiSize& roi : {RoiSize{24, 29}, RoiSize{52, 51}, RoiSize{68, 70}})
        for (const uint32_t levels : {1u, 2u, 9u}) {
            const Curve comb = Curve::comb({kTooth, roi.width}).transposed();
            const auto source = Image::filled(roi, {}, [&, random = Random(1)](int x, int y) mutable {
                const bool isOpen = y < kTooth ? comb.isOn({x, y}) : y > kTooth || x == roi.width / 2;
                return TypeParam::level(!isOpen ? 0 : y < kTooth ? 70 : 70 - 5 * int(random.below(levels)));
            });
            const auto marker =
                Image::filled(roi, {}, [](int x, int y) { return TypeParam::level(x == 0 && y == 0 ? 100 : 0); });
            TypeParam::check(source, marker);
        }
}

// Pixels that nothing spreads to are cut, too, in each of the places of a row that are computed in different ways.
TYPED_TEST(Reconstruction, CutsTheMarker) {
    using Image = typename TypeParam::Image;
    for (const RoiSize& roi : smallRegions()) {
        const auto source = Image::random(roi, {}, 3);
        TypeParam::check(source, Image::constant(roi, TypeParam::kMost));
        TypeParam::check(source, source);
        TypeParam::check(Image::constant(roi, TypeParam::kLeast), source);
        TypeParam::check(Image::constant(roi, TypeParam::kMost), source);
        TypeParam::check(Image::constant(roi, TypeParam::level(7)), Image::constant(roi, TypeParam::level(5)));
    }
}

TYPED_TEST(Reconstruction, TakesNaNAndZerosOfBothSigns) {
    using Image = typename TypeParam::Image;
    if constexpr (TypeParam::kIsFloat) {
        constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
        constexpr float kValues[] = {kNaN, -kNaN, 0.0f, -0.0f, 1.0f, -1.0f, TypeParam::kMost, TypeParam::kLeast};
        for (const RoiSize& roi : smallRegions()) {
            Random random(5);
            const auto any = [&](int, int) { return kValues[random.below(8)]; };
            const auto zero = [&](int, int) { return kValues[2 + random.below(2)]; };
            TypeParam::check(Image::filled(roi, {}, any), Image::filled(roi, {}, any));
            TypeParam::check(Image::filled(roi, {}, zero), Image::filled(roi, {}, zero));
            TypeParam::check(Image::constant(roi, kNaN), Image::filled(roi, {}, zero));
            TypeParam::check(Image::constant(roi, kNaN), Image::constant(roi, kNaN));
        }
        // A source without bounds has one level: that of the largest seed.
        auto marker = Image::constant({71, 50}, kNaN);
        marker.at(33, 25) = 5;
        const Image result = TypeParam::reconstruct(Image::constant({71, 50}, kNaN), marker, NormL1);
        EXPECT_TRUE(samePixels(Image::constant({71, 50}, 5), result));
    }
}

/** Waves of several lengths, and noise. */
template <typename MemberType>
typename MemberType::Image waves(RoiSize roi) {
    return MemberType::Image::filled(roi, {}, [random = Random(1)](int x, int y) mutable {
        const double wave = std::sin(x / 23.0) * std::cos(y / 31.0) + std::sin(x / 5.0 + y / 7.0) / 2;
        return typename MemberType::Pixel(int(100 + 30 * wave) + int(random.below(12)));
    });
}

// What holds of any result, in an image that is too large for the definition.
TYPED_TEST(Reconstruction, HasItsProperties) {
    using Image = typename TypeParam::Image;
    using T = typename TypeParam::Pixel;
    const RoiSize roi{521, 151};
    const Image source = waves<TypeParam>(roi);
    const auto peaksOff = Image::filled(
        roi, {}, [&](int x, int y) { return T(source.at(x, y) + TypeParam::level(0) - TypeParam::level(40)); });
    const auto fromTheEdge = Image::filled(roi, {}, [&](int x, int y) {
        const bool isEdge = x == 0 || y == 0 || x == roi.width - 1 || y == roi.height - 1;
        return isEdge ? source.at(x, y) : TypeParam::kLeast;
    });
    for (const Image& marker : {peaksOff, fromTheEdge})
        for (const int32_t norm : {NormL1, NormInf}) {
            const Image result = TypeParam::reconstruct(source, marker, norm);
            int changed = 0;
            for (int y = 0; y < roi.height; ++y)
                for (int x = 0; x < roi.width; ++x) {
                    const T value = result.at(x, y);
                    ASSERT_EQ(value, TypeParam::smaller(source.at(x, y), value));
                    ASSERT_EQ(value, TypeParam::larger(marker.at(x, y), value));
                    changed += value != marker.at(x, y) && value != source.at(x, y);
                }
            EXPECT_GT(changed, 5000);  // the marker spread, and not everywhere as far as the source
            EXPECT_TRUE(samePixels(result, TypeParam::reconstruct(source, result, norm)));
            for (const auto& [isMirrored, isTurned] : {std::pair{true, false}, {false, true}, {true, true}}) {
                const auto flipped = [&, isMirrored = isMirrored, isTurned = isTurned](const Image& image) {
                    return Image::filled(roi, {}, [&](int x, int y) {
                        return image.at(isMirrored ? roi.width - 1 - x : x, isTurned ? roi.height - 1 - y : y);
                    });
                };
                EXPECT_TRUE(
                    samePixels(flipped(result), TypeParam::reconstruct(flipped(source), flipped(marker), norm)));
            }
        }
}

template <typename Operations>
class DualReconstructions : public ::testing::Test {};
using Duals =
    ::testing::Types<std::pair<Dilate8u, Erode8u>, std::pair<Dilate16u, Erode16u>, std::pair<Dilate32f, Erode32f>>;
TYPED_TEST_SUITE(DualReconstructions, Duals);

TYPED_TEST(DualReconstructions, AreOneOnTheComplement) {
    using Dilate = typename TypeParam::first_type;
    using Erode = typename TypeParam::second_type;
    using Image = typename Dilate::Image;
    const auto complement = [](const Image& image) {
        return Image::filled(image.roi(), {},
                             [&](int x, int y) { return typename Dilate::Pixel(255 - image.at(x, y)); });
    };
    const Image source = waves<Dilate>({521, 301});
    const auto marker =
        Image::filled(source.roi(), {}, [&](int x, int y) { return typename Dilate::Pixel(source.at(x, y) - 40); });
    for (const int32_t norm : {NormL1, NormInf})
        EXPECT_TRUE(samePixels(complement(Dilate::reconstruct(source, marker, norm)),
                               Erode::reconstruct(complement(source), complement(marker), norm)));
}

TYPED_TEST(Reconstruction, HasABufferOfTheDocumentedSize) {
    EXPECT_EQ(8 + 32, TypeParam::bufferSize({1, 1}));
    EXPECT_EQ(8 + 32, TypeParam::bufferSize({31, 1}));
    EXPECT_EQ(8 * 2 + 32, TypeParam::bufferSize({4, 8}));
    EXPECT_EQ(8 * 64801 + 32, TypeParam::bufferSize({1920, 1080}));
    EXPECT_EQ(2147483640, TypeParam::bufferSize({134217725, 64}));

    int32_t size = -1;
    for (const RoiSize& roi : {RoiSize{134217726, 64}, RoiSize{64, 134217726}, RoiSize{INT_MAX, INT_MAX}})
        EXPECT_EQ(StatusSizeError, TypeParam::kQuery(roi, &size));
    EXPECT_EQ(-1, size);
}

const exports::FamilyFaults kFaults("vekiMorphReconstruct",
                                    {{"norm", StatusBadArgument, {int32_t{NormL2}, 3, -1, INT_MAX, INT_MIN}}});

}  // namespace
