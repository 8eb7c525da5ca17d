// The stages of trained cascades on photographs, against their definition.
#include <algorithm>

#include "cascade.h"
#include "grey.h"
#include "run_vek.h"
#include "stage_classifiers.h"
#include "table.h"

namespace {

/** What stages are applied to: all windows of a picture. */
struct Windows {
    RoiSize positions;
    Table<int32_t> sums, tiltedSums;
    Table<float> norms;
    Table<uint8_t> mask;

    Windows(const Picture& grey, RoiSize window)
        : positions{grey.width - window.width + 1, grey.height - window.height + 1},
          sums(grey.width + 1, grey.height + 1),
          tiltedSums(grey.width + 2, grey.height + 3),
          norms(positions.width, positions.height),
          mask(positions.width, positions.height) {
        const RoiSize size = grey.size();
        Table<double> squares(grey.width + 1, grey.height + 1);
        EXPECT_EQ(StatusOk, vekiSqrIntegral_8u32s64f_C1R(grey.pixels<uint8_t>(), grey.step(), sums.row(0), sums.step(),
                                                         squares.row(0), squares.step(), size, 0, 0));
        EXPECT_EQ(StatusOk, vekiTiltedIntegral_8u32s_C1R(grey.pixels<uint8_t>(), grey.step(), tiltedSums.row(1),
                                                         tiltedSums.step(), size, 0));
        const ImageRect inside{1, 1, window.width - 2, window.height - 2};
        EXPECT_EQ(StatusOk, vekiRectStdDev_32s32f_C1R(sums.row(0), sums.step(), squares.row(0), squares.step(),
                                                      norms.row(0), norms.step(), positions, inside));
        std::ranges::fill(mask.entries, uint8_t{200});
    }
};

/** The sum of a rectangle at a window, from the corners that the header gives. */
float sumOf(const Windows& windows, const ImageRect& r, bool tilted, int32_t x, int32_t y) {
    const auto upright = [&](int32_t cornerX, int32_t cornerY) { return windows.sums.at(x + cornerX, y + cornerY); };
    const auto slanted = [&](int32_t cornerX, int32_t cornerY) {
        return windows.tiltedSums.at(x + 1 + cornerX, y + 1 + cornerY);
    };
    const int32_t w = r.width, h = r.height;
    return float(tilted
                     ? slanted(r.x + w - h, r.y + w + h) - slanted(r.x - h, r.y + h) - slanted(r.x + w, r.y + w) +
                           slanted(r.x, r.y)
                     : upright(r.x + w, r.y + h) - upright(r.x, r.y + h) - upright(r.x + w, r.y) + upright(r.x, r.y));
}

bool passes(const Windows& windows, const Cascade& cascade, const CascadeStage& stage, float factor, int32_t x,
            int32_t y) {
    float sum = 0;
    const auto add = [&](auto isChosen) {
        for (const WeakClassifier& weak : stage.classifiers) {
            const CascadeFeature& feature = cascade.features[weak.feature];
            if (!isChosen(feature.rectangles.size()))
                continue;
            float response = 0;
            for (const CascadeRectangle& rectangle : feature.rectangles)
                response += rectangle.weight * sumOf(windows, rectangle.place, feature.tilted, x, y);
            sum += weak.threshold * factor * windows.norms.at(x, y) > response ? weak.below : weak.above;
        }
    };
    add([](size_t rectangles) { return rectangles == 2; });
    add([](size_t rectangles) { return rectangles == 3; });
    add([](size_t rectangles) { return rectangles != 2 && rectangles != 3; });
    return !(sum < stage.threshold);
}

/** Applies all stages in turn; gives the number of those that leave any window. */
size_t check(const std::string& cascadeName, const std::string& pictureName) {
    const Cascade cascade = readCascade("/usr/share/opencv4/haarcascades/" + cascadeName);
    const Picture grey = inGrey(readPicture(photograph(pictureName)));
    const auto factor = float((cascade.window.width - 2) * (cascade.window.height - 2));
    Windows windows(grey, cascade.window);
    const StageClassifiers classifiers(cascade, factor, [](const CascadeRectangle& rectangle) { return rectangle; });
    for (size_t i = 0; i < cascade.stages.size(); ++i) {
        SCOPED_TRACE(::testing::Message() << cascadeName << ", stage " << i);
        std::vector<uint8_t> expected = windows.mask.entries;
        for (int32_t y = 0; y < windows.positions.height; ++y)
            for (int32_t x = 0; x < windows.positions.width; ++x) {
                uint8_t& mask = expected[size_t(y) * size_t(windows.mask.columns) + size_t(x)];
                if (mask != 0 && !passes(windows, cascade, cascade.stages[i], factor, x, y))
                    mask = 0;
            }
        const StageClassifiers::Stage& stage = classifiers.stages()[i];
        int32_t count = -1;
        if (!cascade.hasTilted()) {
            Table<uint8_t> mask = windows.mask;
            EXPECT_EQ(StatusOk, vekiApplyHaarClassifier_32s32f_C1R(windows.sums.row(0), windows.sums.step(),
                                                                   windows.norms.row(0), windows.norms.step(),
                                                                   mask.row(0), mask.step(), windows.positions, &count,
                                                                   stage.threshold, stage.classifier.get()));
            EXPECT_TRUE(expected == mask.entries);
            EXPECT_EQ(std::ranges::count(expected, 200), count);
        }
        EXPECT_EQ(StatusOk,
                  vekiApplyMixedHaarClassifier_32s32f_C1R(
                      windows.sums.row(0), windows.sums.step(), windows.tiltedSums.row(0), windows.tiltedSums.step(),
                      windows.norms.row(0), windows.norms.step(), windows.mask.row(0), windows.mask.step(),
                      windows.positions, &count, stage.threshold, stage.classifier.get()));
        EXPECT_TRUE(expected == windows.mask.entries);
        EXPECT_EQ(std::ranges::count(expected, 200), count);
        if (count == 0)
            return i;
    }
    return cascade.stages.size();
}

TEST(Stages, MatchTheirDefinitionOnPhotographs) {
    EXPECT_GE(check("haarcascade_frontalface_alt.xml", "astronaut.png"), 8u);
    EXPECT_GE(check("haarcascade_smile.xml", "camera.png"), 4u);
}

}  // namespace
