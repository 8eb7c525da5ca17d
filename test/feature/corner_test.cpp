// Corner measures against their definition on the results of the filters that they consist of.
#include <gtest/gtest.h>

#include <cmath>

#include "arguments.h"
#include "regions.h"
#include "test/exports/faults.h"

namespace {

struct Bytes {
    using Pixel = uint8_t;
    using Derivative = int16_t;
    static constexpr auto kMinEigenVal = vekiMinEigenVal_8u32f_C1R;
    static constexpr auto kMinEigenValSize = vekiMinEigenValGetBufferSize_8u32f_C1R;
    static constexpr auto kValsVecs = vekiEigenValsVecs_8u32f_C1R;
    static constexpr auto kValsVecsSize = vekiEigenValsVecsGetBufferSize_8u32f_C1R;
    static constexpr auto kSobelX = vekiFilterSobelNegVertBorder_8u16s_C1R;
    static constexpr auto kSobelY = vekiFilterSobelHorizBorder_8u16s_C1R;
    static constexpr auto kScharrX = vekiFilterScharrVertBorder_8u16s_C1R;
    static constexpr auto kScharrY = vekiFilterScharrHorizBorder_8u16s_C1R;
};
struct Floats {
    using Pixel = float;
    using Derivative = float;
    static constexpr auto kMinEigenVal = vekiMinEigenVal_32f_C1R;
    static constexpr auto kMinEigenValSize = vekiMinEigenValGetBufferSize_32f_C1R;
    static constexpr auto kValsVecs = vekiEigenValsVecs_32f_C1R;
    static constexpr auto kValsVecsSize = vekiEigenValsVecsGetBufferSize_32f_C1R;
    static constexpr auto kSobelX = vekiFilterSobelNegVertBorder_32f_C1R;
    static constexpr auto kSobelY = vekiFilterSobelHorizBorder_32f_C1R;
    static constexpr auto kScharrX = vekiFilterScharrVertBorder_32f_C1R;
    static constexpr auto kScharrY = vekiFilterScharrHorizBorder_32f_C1R;
};

/** Which derivatives, and the sizes of their kernels and of the window. */
struct Kind {
    int type, aperture, window;

    friend std::ostream& operator<<(std::ostream& out, const Kind& kind) {
        return out << "type " << kind.type << ", aperture " << kind.aperture << ", window " << kind.window;
    }
};
constexpr Kind kKinds[] = {{0, 3, 3}, {0, 3, 5}, {0, 5, 3}, {0, 5, 5}, {1, 3, 3}, {1, 3, 5}};

template <typename Form>
class Corners : public ::testing::Test {
  protected:
    using Pixel = typename Form::Pixel;
    using Derivative = typename Form::Derivative;

    /** Means of products of derivatives, and the scale. */
    struct Matrices {
        TestImage<float> xx, xy, yy;
        float scale;
    };

    static Matrices matricesOf(const TestImage<Pixel>& source, const Kind& kind) {
        const RoiSize roi = source.roi();
        std::vector<uint8_t> buffer(size_t{1} << 22);
        const TestImage<Derivative> dx(roi), dy(roi);
        if (kind.type == 1) {
            EXPECT_EQ(StatusOk, callWith(Form::kScharrX, source, dx, roi, BorderReplicate, Pixel(0), buffer.data()));
            EXPECT_EQ(StatusOk, callWith(Form::kScharrY, source, dy, roi, BorderReplicate, Pixel(0), buffer.data()));
        } else {
            const int size = 11 * kind.aperture;
            EXPECT_EQ(StatusOk,
                      callWith(Form::kSobelX, source, dx, roi, size, BorderReplicate, Pixel(0), buffer.data()));
            EXPECT_EQ(StatusOk,
                      callWith(Form::kSobelY, source, dy, roi, size, BorderReplicate, Pixel(0), buffer.data()));
        }
        const auto mean = [&](const TestImage<Derivative>& a, const TestImage<Derivative>& b) {
            const auto products =
                TestImage<float>::filled(roi, {}, [&](int x, int y) { return float(a.at(x, y)) * float(b.at(x, y)); });
            const TestImage<float> out(roi);
            EXPECT_EQ(StatusOk, callWith(vekiFilterLowpassBorder_32f_C1R, products, out, roi, 11 * kind.window,
                                         BorderReplicate, 0.0f, buffer.data()));
            return out;
        };
        const float scale = kind.aperture == 3 ? 1.0f / 4080 : 1.0f / 65280;
        return {mean(dx, dx), mean(dx, dy), mean(dy, dy), kind.type == 1 ? scale * 0.6125f : scale};
    }

    template <typename Size>
    static TestImage<uint8_t> bufferFor(Size query, RoiSize roi, const Kind& kind, Layout layout) {
        int32_t size = -1;
        EXPECT_EQ(StatusOk, query(roi, kind.aperture, kind.window, &size));
        return workBuffer(size, layout);
    }

    static void check(const TestImage<Pixel>& source, const Layouts& layouts, const Kind& kind) {
        SCOPED_TRACE(::testing::Message() << kind);
        const RoiSize roi = source.roi();
        const auto [xx, xy, yy, scale] = matricesOf(source, kind);
        const auto eigenvalue = [&, &a = xx, &b = xy, &c = yy, &s = scale](int x, int y, float sign) {
            const float difference = a.at(x, y) - c.at(x, y);
            const float root = std::sqrt(difference * difference + 4 * (b.at(x, y) * b.at(x, y)));
            return (a.at(x, y) + c.at(x, y) + sign * root) * (s * 0.5f);
        };
        const auto smaller = TestImage<float>::filled(roi, {}, [&](int x, int y) { return eigenvalue(x, y, -1); });
        const TestImage<float> minEigen(roi, layouts[1]), all(roi, layouts[1], 6);
        const auto buffer = bufferFor(Form::kMinEigenValSize, roi, kind, layouts[1]);
        ASSERT_EQ(StatusOk, callWith(Form::kMinEigenVal, source, minEigen, roi, kind.type, kind.aperture, kind.window,
                                     buffer.data()));
        ASSERT_TRUE(samePixels(smaller, minEigen));
        const auto another = bufferFor(Form::kValsVecsSize, roi, kind, layouts[1]);
        ASSERT_EQ(StatusOk,
                  callWith(Form::kValsVecs, source, all, roi, kind.type, kind.aperture, kind.window, another.data()));
        ASSERT_TRUE(buffer.guardsIntact() && another.guardsIntact() && all.guardsIntact());
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x) {
                const float* const six = &all.at(6 * x, y);
                ASSERT_EQ(eigenvalue(x, y, 1), six[0]) << x << ", " << y;
                ASSERT_EQ(smaller.at(x, y), six[1]) << x << ", " << y;
                expectVectors(xx.at(x, y), xy.at(x, y), yy.at(x, y), six + 2);
            }
    }

    /** The vectors are of length 1, in the documented direction, and eigenvectors of the matrix. */
    static void expectVectors(double a, double b, double c, const float* v) {
        ASSERT_NEAR(1, std::hypot(v[0], v[1]), 1e-6);
        ASSERT_TRUE(v[0] > 0 || (v[0] == 0 && v[1] > 0)) << v[0] << ", " << v[1];
        ASSERT_EQ(-v[1], v[2]);
        ASSERT_EQ(v[0], v[3]);
        const double root = std::sqrt((a - c) * (a - c) + 4 * b * b), larger = (a + c + root) / 2;
        if (root == 0) {
            ASSERT_EQ(1, v[0]);
            return;
        }
        const double tolerance = 1e-5 * (std::abs(a) + std::abs(b) + std::abs(c));
        ASSERT_NEAR(larger * v[0], a * v[0] + b * v[1], tolerance);
        ASSERT_NEAR(larger * v[1], b * v[0] + c * v[1], tolerance);
    }

    static TestImage<Pixel> image(RoiSize roi, Layout layout, uint32_t seed) {
        Random random(seed);
        return TestImage<Pixel>::filled(roi, layout, [&](int, int) {
            if constexpr (std::is_same_v<Pixel, float>)
                return float(random.bits() % 65536) / 128 - 256;
            else
                return random.value<Pixel>();
        });
    }
};
using Forms = ::testing::Types<Bytes, Floats>;
TYPED_TEST_SUITE(Corners, Forms);

TYPED_TEST(Corners, MatchTheirDefinition) {
    int turn = 0;
    forSmallImages([&](RoiSize roi, const Layouts& layouts) {
        this->check(this->image(roi, layouts[0], 1), layouts, kKinds[turn++ % 6]);
    });
}

// More rows than a band has, in images so wide that bands have the fewest rows, and lower than a window.
TYPED_TEST(Corners, WorkInBands) {
    for (const Kind& kind : kKinds)
        for (const RoiSize roi : {RoiSize{5, 67}, RoiSize{3000, 19}, RoiSize{2, 1}, RoiSize{1, 4}, RoiSize{40, 34}})
            this->check(this->image(roi, {}, 2), {}, kind);
}

TYPED_TEST(Corners, AreTheSameWithAnyNumberOfThreads) {
    forLargeImages(kPixels, [&](RoiSize roi, const Layouts& layouts) {
        const auto source = this->image(roi, layouts[0], 3);
        const TestImage<float> out(roi, layouts[1]), expected(roi);
        const Kind kind{0, 5, 5};
        int threads = 1;
        vekGetNumThreads(&threads);
        const auto buffer = this->bufferFor(TypeParam::kMinEigenValSize, roi, kind, {});
        ASSERT_EQ(StatusOk, callWith(TypeParam::kMinEigenVal, source, out, roi, 0, 5, 5, buffer.data()));
        ASSERT_TRUE(usesSlices(buffer, threads));
        vekSetNumThreads(1);
        ASSERT_EQ(StatusOk, callWith(TypeParam::kMinEigenVal, source, expected, roi, 0, 5, 5, buffer.data()));
        vekSetNumThreads(threads);
        ASSERT_TRUE(samePixels(expected, out));
    });
}

// Edges along both axes and both diagonals, and a corner.
TEST(Corners, TellDirections) {
    const auto measure = [](auto pixel) {
        const auto source = TestImage<uint8_t>::filled({9, 9}, {}, [&](int x, int y) { return uint8_t(pixel(x, y)); });
        const TestImage<float> all({9, 9}, {}, 6);
        std::vector<uint8_t> buffer(size_t{1} << 20);
        EXPECT_EQ(StatusOk, callWith(vekiEigenValsVecs_8u32f_C1R, source, all, source.roi(), 0, 3, 3, buffer.data()));
        return std::vector<float>(&all.at(6 * 4, 4), &all.at(6 * 4, 4) + 6);
    };
    const float diagonal = std::sqrt(0.5f);
    const auto expectVector = [](float x, float y, const std::vector<float>& six) {
        EXPECT_FLOAT_EQ(x, six[2]);
        EXPECT_FLOAT_EQ(y, six[3]);
        EXPECT_LT(six[1], six[0] * 1e-6f);
    };
    expectVector(1, 0, measure([](int x, int) { return 20 * x; }));
    expectVector(1, 0, measure([](int x, int) { return 200 - 20 * x; }));
    expectVector(0, 1, measure([](int, int y) { return 20 * y; }));
    expectVector(diagonal, diagonal, measure([](int x, int y) { return 10 * (x + y); }));
    expectVector(diagonal, -diagonal, measure([](int x, int y) { return 10 * (x + 8 - y); }));
    EXPECT_EQ((std::vector<float>{0, 0, 1, 0, 0, 1}), measure([](int, int) { return 77; }));
    const auto corner = measure([](int x, int y) { return x > 4 && y > 4 ? 255 : 0; });
    EXPECT_GT(corner[1], 0.1f * corner[0]);
}

TEST(Corners, HaveScharrDerivativesOfThreePixelsOnly) {
    const TestImage<uint8_t> source({9, 9});
    const TestImage<float> out({9, 9});
    std::vector<uint8_t> buffer(size_t{1} << 20);
    const auto measure = [&](int32_t kernelType, int32_t aperture, int32_t window) {
        return callWith(vekiMinEigenVal_8u32f_C1R, source, out, source.roi(), kernelType, aperture, window,
                        buffer.data());
    };
    EXPECT_EQ(StatusSizeError, measure(1, 5, 3));
    EXPECT_EQ(StatusBadArgument, measure(2, 5, 3));
    EXPECT_TRUE(out.guardsIntact() && std::all_of(&out.at(0, 0), &out.at(0, 0) + 9, [&](const float& pixel) {
                    return std::memcmp(&pixel, "\xA5\xA5\xA5\xA5", 4) == 0;
                }));
}

TEST(Corners, RefusesBuffersThatAreTooLarge) {
    int32_t size = 77;
    EXPECT_EQ(StatusSizeError, vekiMinEigenValGetBufferSize_8u32f_C1R({INT32_MAX, INT32_MAX}, 3, 3, &size));
    EXPECT_EQ(StatusSizeError, vekiEigenValsVecsGetBufferSize_32f_C1R({INT32_MAX, 1}, 5, 5, &size));
    EXPECT_EQ(77, size);
}

const exports::FamilyFaults kMinEigenFaults("vekiMinEigenVal", {{"kernelType", StatusBadArgument, {-1, 2}},
                                                                {"apertureSize", StatusSizeError, {0, 1, 4, 7, -3}},
                                                                {"averageWindow", StatusSizeError, {0, 1, 4, 7, -5}}});
const exports::FamilyFaults kValsVecsFaults("vekiEigenValsVecs",
                                            {{"kernelType", StatusBadArgument, {-1, 2}},
                                             {"apertureSize", StatusSizeError, {0, 1, 4, 7, -3}},
                                             {"averageWindow", StatusSizeError, {0, 1, 4, 7, -5}}});

}  // namespace
