// Undistorted images against their definition.
#include <sys/mman.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <limits>

#include "arguments.h"
#include "caller_modes.h"
#include "camera.h"
#include "regions.h"
#include "test/exports/faults.h"

namespace {

using undistort::Camera;
using undistort::cameraFor;
using undistort::Place;
using undistort::placeOf;

constexpr float kInfinity = std::numeric_limits<float>::infinity(), kNaN = std::numeric_limits<float>::quiet_NaN();

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

}  // namespace
