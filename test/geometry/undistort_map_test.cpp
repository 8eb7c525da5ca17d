// Maps of undistorted images against their definition.
#include <cmath>

#include "arguments.h"
#include "caller_modes.h"
#include "camera.h"
#include "regions.h"
#include "test/exports/faults.h"

namespace {

using undistort::Camera;
using undistort::cameraFor;
using undistort::placeOf;

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

const exports::FamilyFaults kFaults("vekiCreateMapCameraUndistort", {{"fx", StatusBadArgument, {0.0f, -0.0f}},
                                                                     {"fy", StatusBadArgument, {0.0f, -0.0f}}});

}  // namespace
