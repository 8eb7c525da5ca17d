// Undistorted images and maps against their definitions.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <climits>
#include <cmath>
#include <vector>

#include "arguments.h"
#include "caller_modes.h"
#include "regions.h"
#include "test/exports/faults.h"
#include "test_image.h"

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity(), kNaN = std::numeric_limits<float>::quiet_NaN();

// --- definitions

struct Camera {
    float fx, fy, cx, cy, k1, k2, p1 = 0, p2 = 0;
};

std::ostream& operator<<(std::ostream& out, const Camera& c) {
    return out << "f " << c.fx << ", " << c.fy << ", c " << c.cx << ", " << c.cy << ", k " << c.k1 << ", " << c.k2
               << ", p " << c.p1 << ", " << c.p2;
}

/** Cameras that bend images of this size a little, a lot, or not at all. */
Camera cameraFor(RoiSize roi, uint32_t seed) {
    Random random(seed);
    const auto between = [&](float least, float most) {
        return least + (most - least) * float(random.below(1 << 16)) / (1 << 16);
    };
    const float bend = seed % 4 == 0 ? 0 : seed % 4 == 1 ? 2 : 0.2f;
    const auto width = float(roi.width), height = float(roi.height);
    return {width * between(0.4f, 2), height * between(0.4f, 2), width * between(0, 1),
            height * between(0, 1),   between(-bend, bend),      between(-bend, bend) / 2};
}

template <typename F>
struct Place {
    F x, y;
};

/** Where a pixel comes from, with all operations in the order that is documented. */
template <typename F>
Place<F> placeOf(const Camera& camera, int column, int row) {
    const F fx = camera.fx, fy = camera.fy, cx = camera.cx, cy = camera.cy, k1 = camera.k1, k2 = camera.k2;
    const F p1 = camera.p1, p2 = camera.p2, x = F(column), y = F(row), dx = x - cx, dy = y - cy;
    const F x2 = dx * dx * (1 / (fx * fx)), y2 = dy * dy * (1 / (fy * fy));
    const F f = (k1 * y2 + k2 * (y2 * y2)) + ((k2 * x2 + k1) * x2 + 2 * k2 * y2 * x2);
    Place<F> place{x + dx * f, y + dy * f};
    if (camera.p1 != 0 || camera.p2 != 0) {
        const F u = dx * (1 / fx), v = dy * (1 / fy), r2 = x2 + y2;
        place.x = place.x + fx * (2 * p1 * u * v + p2 * (r2 + (x2 + x2)));
        place.y = place.y + fy * (2 * p2 * u * v + p1 * (r2 + (y2 + y2)));
    }
    return place;
}

/** The four pixels around a place inside the image, weighed. */
template <typename F, typename T>
F interpolated(const TestImage<T>& source, Place<F> place, int channels, int c) {
    const int x = int(place.x), y = int(place.y);
    const F right = place.x - F(x), below = place.y - F(y);
    const auto at = [&](int column, int row) { return F(source.at(column * channels + c, row)); };
    return at(x, y) * (1 - right) * (1 - below) + at(x + 1, y) * right * (1 - below) +
           at(x, y + 1) * (1 - right) * below + at(x + 1, y + 1) * right * below;
}

template <typename F>
bool isInside(RoiSize roi, Place<F> place) {
    return place.x >= 0 && place.x < F(roi.width - 1) && place.y >= 0 && place.y < F(roi.height - 1);
}

// --- images

template <auto Export, int kChannelCount>
struct Member;

template <typename T, typename... Rest, Status (*Export)(const T*, int32_t, Rest...), int kChannelCount>
struct Member<Export, kChannelCount> {
    using Pixel = T;
    static constexpr int kChannels = kChannelCount;
    static constexpr auto kExport = Export;

    static Status call(const TestImage<T>& source, const TestImage<T>& out, const Camera& c,
                       uint8_t* buffer = nullptr) {
        return callWith(Export, source, out, source.roi(), c.fx, c.fy, c.cx, c.cy, c.k1, c.k2, buffer);
    }
};

template <typename MemberType>
class UndistortRadial : public ::testing::Test {
  protected:
    static constexpr int kChannels = MemberType::kChannels;
    using Image = TestImage<typename MemberType::Pixel>;

    /** Any integers; floats of one magnitude. */
    static Image picture(RoiSize roi, Layout layout = {}, uint32_t seed = 1) {
        Random random(seed);
        return Image::filled(
            roi, layout, [&](int, int) { return random.summand<typename MemberType::Pixel>(); }, kChannels);
    }

    /** What is left where nothing is written. */
    static Image background(RoiSize roi, Layout layout = {}) {
        using T = typename MemberType::Pixel;
        return Image::filled(
            roi, layout, [](int x, int y) { return T(x + 3 * y + 1); }, kChannels);
    }

    static Image expected(const Image& source, const Camera& camera) {
        using T = typename MemberType::Pixel;
        const RoiSize roi = source.roi();
        const Image out = background(roi);
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x)
                if (const auto place = placeOf<float>(camera, x, y); isInside(roi, place))
                    for (int c = 0; c < kChannels; ++c) {
                        const float value = interpolated(source, place, kChannels, c);
                        out.at(x * kChannels + c, y) = std::is_floating_point_v<T> ? T(value) : T(value + 0.5f);
                    }
        return out;
    }

    static void check(RoiSize roi, const Layouts& layouts, const Camera& camera) {
        SCOPED_TRACE(camera);
        const Image source = picture(roi, layouts[0]), out = background(roi, layouts[1]);
        ASSERT_EQ(StatusOk, MemberType::call(source, out, camera));
        ASSERT_TRUE(samePixels(expected(source, camera), out));
    }
};

using Members = ::testing::Types<Member<&vekiUndistortRadial_8u_C1R, 1>, Member<&vekiUndistortRadial_8u_C3R, 3>,
                                 Member<&vekiUndistortRadial_16u_C1R, 1>, Member<&vekiUndistortRadial_16u_C3R, 3>,
                                 Member<&vekiUndistortRadial_32f_C1R, 1>, Member<&vekiUndistortRadial_32f_C3R, 3>>;
TYPED_TEST_SUITE(UndistortRadial, Members);

TYPED_TEST(UndistortRadial, MatchesItsDefinition) {
    uint32_t seed = 0;
    forSmallImages([&](RoiSize roi, const Layouts& layouts) { this->check(roi, layouts, cameraFor(roi, ++seed)); });
    for (const RoiSize roi : {RoiSize{64, 48}, RoiSize{7, 60}, RoiSize{150, 33}, RoiSize{35, 35}})
        for (int i = 0; i < 8; ++i)
            this->check(roi, kLayouts[i % 6], cameraFor(roi, ++seed));
}

TYPED_TEST(UndistortRadial, MatchesItsDefinitionInParallel) {
    forLargeImages(kPixels, [&](RoiSize roi, const Layouts& layouts) { this->check(roi, layouts, cameraFor(roi, 6)); });
}

TYPED_TEST(UndistortRadial, IsNearExactResults) {
    using T = typename TypeParam::Pixel;
    const RoiSize roi{131, 97};
    for (uint32_t seed = 0; seed < 12; ++seed) {
        const Camera camera = cameraFor(roi, seed);
        SCOPED_TRACE(camera);
        // A ramp, in which a small error of a place is a small error of a pixel.
        const auto source = TestImage<T>::filled(
            roi, {}, [](int x, int y) { return T(x / TypeParam::kChannels + y); }, TypeParam::kChannels);
        const auto before = this->background(roi), out = this->background(roi);
        ASSERT_EQ(StatusOk, TypeParam::call(source, out, camera));
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x) {
                const auto place = placeOf<double>(camera, x, y);
                const auto isNear = [](double a, double b) { return std::fabs(a - b) < 1e-3; };
                if (isNear(place.x, 0) || isNear(place.x, roi.width - 1) || isNear(place.y, 0) ||
                    isNear(place.y, roi.height - 1))
                    continue;
                for (int c = 0; c < TypeParam::kChannels; ++c) {
                    const int i = x * TypeParam::kChannels + c;
                    if (isInside(roi, place))
                        ASSERT_NEAR(interpolated(source, place, TypeParam::kChannels, c), double(out.at(i, y)), 1);
                    else
                        ASSERT_EQ(before.at(i, y), out.at(i, y));
                }
            }
    }
}

TYPED_TEST(UndistortRadial, CopiesWithoutDistortion) {
    using T = typename TypeParam::Pixel;
    for (const RoiSize roi : {RoiSize{67, 5}, RoiSize{1, 5}, RoiSize{67, 1}, RoiSize{2, 2}}) {
        const auto source = TestImage<T>::filled(
            roi, {}, [random = Random(4)](int, int) mutable { return T(random.below(1 << 16)); }, TypeParam::kChannels);
        const auto out = this->background(roi), expected = this->background(roi);
        for (int y = 0; y < roi.height - 1; ++y)
            for (int x = 0; x < (roi.width - 1) * TypeParam::kChannels; ++x)
                expected.at(x, y) = source.at(x, y);
        ASSERT_EQ(StatusOk, TypeParam::call(source, out, {50, 60, 33, 2, 0, 0}));
        EXPECT_TRUE(samePixels(expected, out));
    }
}

TYPED_TEST(UndistortRadial, TakesAnyCamera) {
    const RoiSize roi{37, 19};
    const Camera usual{30, 20, 18, 9, -0.3f, 0.1f};
    for (float Camera::*const part : {&Camera::fx, &Camera::fy, &Camera::cx, &Camera::cy, &Camera::k1, &Camera::k2})
        for (const float value :
             {1e-45f, 1e-20f, 1e-5f, -20.0f, 1e5f, 1e20f, 3e38f, -3e38f, kInfinity, -kInfinity, kNaN}) {
            Camera camera = usual;
            camera.*part = value;
            this->check(roi, {}, camera);
        }
}

// What a work buffer holds, and where it begins, does not matter.
TYPED_TEST(UndistortRadial, NeedsNoBuffer) {
    const RoiSize roi{67, 31};
    const auto source = this->picture(roi);
    int32_t bytes = 0;
    ASSERT_EQ(StatusOk, vekiUndistortGetSize(roi, &bytes));
    for (const Layout layout : kLayouts) {
        const auto buffer = workBuffer(bytes, layout);
        const auto out = this->background(roi);
        ASSERT_EQ(StatusOk, TypeParam::call(source, out, cameraFor(roi, 3), buffer.data()));
        EXPECT_TRUE(samePixels(this->expected(source, cameraFor(roi, 3)), out));
        EXPECT_TRUE(buffer.guardsIntact());
    }
}

TYPED_TEST(UndistortRadial, IgnoresTheModesOfTheCaller) {
    const RoiSize roi{67, 31};
    const auto source = this->picture(roi);
    for (uint32_t seed = 0; seed < 4; ++seed) {
        const Camera camera = cameraFor(roi, seed);
        const auto expected = this->expected(source, camera);
        forCallerModes([&] {
            const auto out = this->background(roi);
            EXPECT_EQ(StatusOk, TypeParam::call(source, out, camera));
            EXPECT_TRUE(samePixels(expected, out));
        });
    }
    forCallerModes([&] {  // flushing modes take such numbers for 0
        EXPECT_EQ(StatusOk, TypeParam::call(source, this->background(roi), {1e-45f, 1e-45f, 9, 9, 0, 0}));
    });
}

// Rows lie up to 2^31 bytes behind the first one and farther.
TYPED_TEST(UndistortRadial, TakesHugeImages) {
    using T = typename TypeParam::Pixel;
    const RoiSize roi{67, 6};
    constexpr int32_t kStep = 1 << 29;
    constexpr size_t kRowBytes = 67 * TypeParam::kChannels * sizeof(T);
    const size_t bytes = 5 * size_t{kStep} + kRowBytes;
    void* const memory = bytes / kStep < 5 ? MAP_FAILED
                                           : mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                                                  MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED)
        GTEST_SKIP() << "there is no address space for it";
    const auto source = this->picture(roi), out = this->background(roi);
    for (int y = 0; y < roi.height; ++y)
        std::memcpy(reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(memory) + size_t(y) * size_t{kStep}),
                    &source.at(0, y), kRowBytes);
    const Camera c{90, 8, 30, 3, -0.1f, 0.02f};
    EXPECT_EQ(StatusOk, TypeParam::kExport(static_cast<const T*>(memory), kStep, out.data(), out.step(), roi, c.fx,
                                           c.fy, c.cx, c.cy, c.k1, c.k2, nullptr));
    EXPECT_TRUE(samePixels(this->expected(source, c), out));
    munmap(memory, bytes);
}

// --- maps

using Floats = TestImage<float>;

Status createMap(const Floats& xMap, const Floats& yMap, const Camera& c, uint8_t* buffer = nullptr) {
    return callWith(vekiCreateMapCameraUndistort_32f_C1R, xMap, yMap, xMap.roi(), c.fx, c.fy, c.cx, c.cy, c.k1, c.k2,
                    c.p1, c.p2, buffer);
}

void checkMap(RoiSize roi, const Layouts& layouts, const Camera& camera) {
    SCOPED_TRACE(camera);
    const Floats xMap(roi, layouts[0]), yMap(roi, layouts[1]);
    ASSERT_EQ(StatusOk, createMap(xMap, yMap, camera));
    ASSERT_TRUE(
        samePixels(Floats::filled(roi, {}, [&](int x, int y) { return placeOf<float>(camera, x, y).x; }), xMap));
    ASSERT_TRUE(
        samePixels(Floats::filled(roi, {}, [&](int x, int y) { return placeOf<float>(camera, x, y).y; }), yMap));
}

Camera tangential(Camera camera) {
    camera.p1 = 0.02f;
    camera.p2 = -0.01f;
    return camera;
}

TEST(CreateMapCameraUndistort, MatchesItsDefinition) {
    uint32_t seed = 0;
    forSmallImages([&](RoiSize roi, const Layouts& layouts) {
        const Camera camera = cameraFor(roi, ++seed);
        checkMap(roi, layouts, camera);
        checkMap(roi, layouts, tangential(camera));
        Camera one = camera;
        (seed % 2 == 0 ? one.p1 : one.p2) = -0.05f;
        checkMap(roi, layouts, one);
    });
}

// From 131072 pixels on, maps whose rows begin at multiples of 16 bytes are written past the caches.
TEST(CreateMapCameraUndistort, MatchesItsDefinitionWhereItIsLarge) {
    const Layout shifted{Layout::kAfterGuard, 4, 0}, odd{Layout::kAfterGuard, 1, 0};
    for (const RoiSize roi : {RoiSize{512, 255}, RoiSize{512, 256}, RoiSize{500, 270}, RoiSize{509, 270}})
        for (const Layouts& layouts : {Layouts({Layout::kAfterGuard, 0, roi.width == 509 ? 3 : 0}),
                                       Layouts({}, 1, shifted), Layouts({}, 1, odd), Layouts({}, 0, odd)}) {
            checkMap(roi, layouts, cameraFor(roi, 3));
            checkMap(roi, layouts, tangential(cameraFor(roi, 3)));
        }
}

TEST(CreateMapCameraUndistort, MatchesItsDefinitionInParallel) {
    forLargeImages(kPixels, [](RoiSize roi, const Layouts& layouts) {
        checkMap(roi, layouts, cameraFor(roi, 2));
        checkMap(roi, layouts, tangential(cameraFor(roi, 2)));
    });
    forThreadCounts([](int) { checkMap({1024, 260}, {}, tangential(cameraFor({1024, 260}, 2))); });
}

TEST(CreateMapCameraUndistort, IsNearExactResults) {
    const RoiSize roi{131, 97};
    for (uint32_t seed = 0; seed < 12; ++seed) {
        const Camera camera = tangential(cameraFor(roi, seed));
        const Floats xMap(roi), yMap(roi);
        ASSERT_EQ(StatusOk, createMap(xMap, yMap, camera));
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x) {
                const double u = (x - double(camera.cx)) / camera.fx, v = (y - double(camera.cy)) / camera.fy;
                const double r2 = u * u + v * v, f = 1 + camera.k1 * r2 + camera.k2 * r2 * r2;
                const double u2 = u * f + 2 * camera.p1 * u * v + camera.p2 * (r2 + 2 * u * u);
                const double v2 = v * f + camera.p1 * (r2 + 2 * v * v) + 2 * camera.p2 * u * v;
                const double ex = u2 * camera.fx + camera.cx, ey = v2 * camera.fy + camera.cy;
                ASSERT_NEAR(ex, xMap.at(x, y), 1e-5 * (200 + std::fabs(ex)));
                ASSERT_NEAR(ey, yMap.at(x, y), 1e-5 * (200 + std::fabs(ey)));
            }
    }
}

TEST(CreateMapCameraUndistort, NeedsNoBuffer) {
    const RoiSize roi{67, 5};
    const Floats xMap(roi), yMap(roi), otherX(roi), otherY(roi);
    const auto buffer = workBuffer(67 * 24 + 128, {Layout::kAfterGuard, 1, 0});
    ASSERT_EQ(StatusOk, createMap(xMap, yMap, cameraFor(roi, 3)));
    ASSERT_EQ(StatusOk, createMap(otherX, otherY, cameraFor(roi, 3), buffer.data()));
    EXPECT_TRUE(samePixels(xMap, otherX));
    EXPECT_TRUE(samePixels(yMap, otherY));
    EXPECT_TRUE(buffer.guardsIntact());
}

TEST(CreateMapCameraUndistort, IgnoresTheModesOfTheCaller) {
    const RoiSize roi{67, 5};
    for (Camera camera : {cameraFor(roi, 3), tangential(cameraFor(roi, 3)), Camera{50, 50, 9, 9, 0.1f, 0, 1e-45f, 0}}) {
        const Floats xMap(roi), yMap(roi);
        ASSERT_EQ(StatusOk, createMap(xMap, yMap, camera));
        forCallerModes([&] {
            const Floats otherX(roi), otherY(roi);
            EXPECT_EQ(StatusOk, createMap(otherX, otherY, camera));
            EXPECT_TRUE(samePixels(xMap, otherX));
            EXPECT_TRUE(samePixels(yMap, otherY));
        });
    }
}

TEST(UndistortGetSize, MatchesItsFormula) {
    for (const auto& [width, expected] :
         {std::pair(1, 128), {3, 128}, {4, 128}, {5, 224}, {640, 15392}, {89478480, 2147483552}}) {
        int32_t bytes = -1;
        EXPECT_EQ(StatusOk, vekiUndistortGetSize({width, INT_MAX}, &bytes));
        EXPECT_EQ(expected, bytes);
    }
    for (const int32_t width : {89478481, INT_MAX}) {
        int32_t bytes = -1;
        EXPECT_EQ(StatusSizeError, vekiUndistortGetSize({width, 1}, &bytes));
        EXPECT_EQ(-1, bytes);
    }
}

const exports::FamilyFaults kFaults("vekiUndistortRadial", {{"fx", StatusBadArgument, {0.0f, -0.0f}},
                                                            {"fy", StatusBadArgument, {0.0f, -0.0f}}});
const exports::FamilyFaults kMapFaults("vekiCreateMapCameraUndistort", {{"fx", StatusBadArgument, {0.0f, -0.0f}},
                                                                        {"fy", StatusBadArgument, {0.0f, -0.0f}}});

}  // namespace
