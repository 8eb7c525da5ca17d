// Lines of the Hough transform against their definition.
#include <gtest/gtest.h>

#include <algorithm>

#include "caller_modes.h"
#include "regions.h"
#include "test/exports/faults.h"

namespace {

constexpr float kDegree = float(M_PI / 180);

struct Line {
    float rho, theta;
};

struct Limits {
    float minRho = -INFINITY, maxRho = INFINITY, minTheta = -INFINITY, maxTheta = INFINITY;
};

struct Parameters {
    float deltaRho = 1, deltaTheta = kDegree;
    int32_t threshold = 1, maxLineCount = 10000;

    friend std::ostream& operator<<(std::ostream& out, const Parameters& p) {
        return out << "steps " << p.deltaRho << ", " << p.deltaTheta << ", threshold " << p.threshold << ", at most "
                   << p.maxLineCount;
    }
};

int32_t bufferSize(RoiSize roi, const Parameters& p) {
    int32_t size = -1;
    EXPECT_EQ(StatusOk, vekiHoughLineGetSize_8u_C1R(roi, p.deltaRho, p.deltaTheta, p.maxLineCount, &size));
    return size;
}

/** The definition, with all of the accumulator at once. */
class Reference {
  public:
    Reference(const TestImage<uint8_t>& image, const Parameters& p)
        : parameters_(p),
          side_(image.roi().width + image.roi().height),
          rows_(int(3.14159 / double(p.deltaTheta)) + 1),
          cells_(int(float(2 * side_ + 1) / p.deltaRho)),
          votes_(size_t(rows_) * size_t(cells_)) {
        const auto offset = float(double(side_) / double(p.deltaRho));
        for (int row = 0; row < rows_; ++row) {
            const double angle = row * double(p.deltaTheta);
            const auto alongX = float(std::cos(angle) / double(p.deltaRho));
            const auto alongY = float(std::sin(angle) / double(p.deltaRho));
            for (int y = 0; y < image.roi().height; ++y) {
                const float ofY = float(y) * alongY + offset;
                for (int x = 0; x < image.roi().width; ++x)
                    if (image.at(x, y) != 0)
                        ++at(row, std::min(int(std::nearbyint(float(x) * alongX + ofY)), cells_ - 1));
            }
        }
    }

    std::vector<Line> lines(const Limits& limits) const {
        struct Cell {
            int votes, row, cell;
        };
        std::vector<Cell> found;
        const auto exists = [&](int row, int cell) {
            return row >= 0 && row < rows_ && cell >= 0 && cell < cells_ && rhoOf(cell) >= limits.minRho &&
                   rhoOf(cell) <= limits.maxRho && thetaOf(row) >= limits.minTheta && thetaOf(row) <= limits.maxTheta;
        };
        for (int row = 0; row < rows_; ++row)
            for (int cell = 0; cell < cells_; ++cell) {
                const int votes = at(row, cell);
                const auto isAbove = [&](int r, int c) { return !exists(r, c) || votes > at(r, c); };
                const auto isNotBelow = [&](int r, int c) { return !exists(r, c) || votes >= at(r, c); };
                if (votes >= parameters_.threshold && exists(row, cell) && isAbove(row - 1, cell) &&
                    isAbove(row, cell - 1) && isNotBelow(row + 1, cell) && isNotBelow(row, cell + 1))
                    found.push_back({votes, row, cell});
            }
        std::stable_sort(found.begin(), found.end(), [](Cell a, Cell b) { return a.votes > b.votes; });
        found.resize(std::min(found.size(), size_t(parameters_.maxLineCount)));
        std::vector<Line> lines;
        for (const Cell& cell : found)
            lines.push_back({rhoOf(cell.cell), thetaOf(cell.row)});
        return lines;
    }

    float rhoOf(int cell) const { return float(cell * double(parameters_.deltaRho) - side_); }
    float thetaOf(int row) const { return float(row * double(parameters_.deltaTheta)); }

  private:
    int& at(int row, int cell) { return votes_[size_t(row) * size_t(cells_) + size_t(cell)]; }
    int at(int row, int cell) const { return const_cast<Reference*>(this)->at(row, cell); }

    Parameters parameters_;
    int side_, rows_, cells_;
    std::vector<int> votes_;
};

/** Calls the operation, with limits or without, and checks the lines and what is around them. */
void check(const TestImage<uint8_t>& image, Layout layout, const Parameters& p, const std::vector<Line>& expected,
           const Limits* limits = nullptr) {
    const RoiSize roi = image.roi();
    SCOPED_TRACE(::testing::Message() << roi.width << " x " << roi.height << ", " << layout << ", " << p);
    const TestImage<float> lines({2 * p.maxLineCount, 1}, layout), untouched({2 * p.maxLineCount, 1});
    const TestImage<uint8_t> buffer = workBuffer(bufferSize(roi, p), layout);
    int32_t count = -1;
    const Status status =
        limits == nullptr
            ? vekiHoughLine_8u32f_C1R(image.data(), image.step(), roi, p.deltaRho, p.deltaTheta, p.threshold,
                                      lines.data(), p.maxLineCount, &count, buffer.data())
            : vekiHoughLine_Region_8u32f_C1R(image.data(), image.step(), roi, p.deltaRho, p.deltaTheta, p.threshold,
                                             limits->minRho, limits->maxRho, limits->minTheta, limits->maxTheta,
                                             lines.data(), p.maxLineCount, &count, buffer.data());
    ASSERT_EQ(StatusOk, status);
    ASSERT_EQ(int32_t(expected.size()), count);
    for (int32_t i = 0; i < count; ++i) {
        ASSERT_EQ(expected[size_t(i)].rho, lines.at(2 * i, 0)) << "line " << i;
        ASSERT_EQ(expected[size_t(i)].theta, lines.at(2 * i + 1, 0)) << "line " << i;
    }
    for (int32_t i = 2 * count; i < 2 * p.maxLineCount; ++i)
        ASSERT_TRUE(sameElement(untouched.at(i, 0), lines.at(i, 0))) << "behind the last line";
    ASSERT_TRUE(lines.guardsIntact() && buffer.guardsIntact());
}

void check(const TestImage<uint8_t>& image, Layout layout, const Parameters& p) {
    check(image, layout, p, Reference(image, p).lines({}));
}

/** One pixel of `rarity` is a point on average; points have all values but 0. */
TestImage<uint8_t> randomPoints(RoiSize roi, Layout layout, uint32_t rarity, uint32_t seed) {
    return TestImage<uint8_t>::filled(roi, layout, [=, random = Random(seed)](int, int) mutable {
        return uint8_t(random.below(rarity) == 0 ? 1 + random.below(255) : 0);
    });
}

// The steps of rho are among the least and the largest ones, and those of theta among the largest ones.
TEST(HoughLine, MatchesItsDefinition) {
    uint32_t seed = 0;
    for (const RoiSize& roi : smallRegions())
        for (const Layout& layout : kLayouts)
            for (const uint32_t rarity : {1, 2, 9}) {
                const auto image = randomPoints(roi, layout, rarity, ++seed);
                const auto side = float(roi.width + roi.height);
                check(image, layout, {1, 0.11f, 1, 3000});
                check(image, layout, {0.37f, 0.7f, 2, 2000});
                check(image, layout, {std::min(2.9f, side), 0.31f, 2, 500});
                check(image, layout, {side, 3.14159f, 1, 3});
            }
}

TEST(HoughLine, MatchesInLargerImages) {
    for (const RoiSize& roi : {RoiSize{131, 77}, RoiSize{300, 200}, RoiSize{70001, 1}, RoiSize{1, 70001}}) {
        const bool isLong = roi.width + roi.height > 70000;
        for (const uint32_t rarity : {1, 5, 60}) {
            const auto image = randomPoints(roi, {}, rarity, rarity);
            for (const int32_t threshold : {1, 8, 60})
                check(image, {}, {1, isLong ? 0.9f : kDegree, threshold, 70000});
        }
    }
}

TEST(HoughLine, KeepsTheLinesWithMostVotes) {
    const auto image = randomPoints({64, 48}, {}, 6, 1);
    for (const int32_t most : {1, 2, 3, 7, 8, 100, 1000})
        for (const int32_t threshold : {1, 5, 9})
            check(image, {}, {1, kDegree, threshold, most});
}

TEST(HoughLine, FindsNothingInAnEmptyImage) {
    const auto image = TestImage<uint8_t>::constant({100, 40}, 0);
    check(image, {}, {}, {});
}

TEST(HoughLine, FindsLines) {
    const auto image =
        TestImage<uint8_t>::filled({160, 120}, {}, [](int x, int y) { return uint8_t(x == 70 || y == 33); });
    const Parameters p{1, kDegree, 100, 5};
    check(image, {}, p, {{33, 90 * kDegree}, {70, 0}});

    // From the lower left to the upper right; and the opposite diagonal, which begins in the first pixel.
    const auto rising = TestImage<uint8_t>::filled({100, 100}, {}, [](int x, int y) { return uint8_t(x + y == 99); });
    const auto falling = TestImage<uint8_t>::filled({100, 100}, {}, [](int x, int y) { return uint8_t(x == y); });
    check(rising, {}, {1, kDegree, 90, 5}, {{70, 45 * kDegree}});
    check(falling, {}, {1, kDegree, 90, 5}, {{0, 135 * kDegree}});
}

// Points beside each other in one row have the same cells in several rows of the accumulator around the right angle.
TEST(HoughLine, ReportsEqualNeighboursOnce) {
    const auto image = TestImage<uint8_t>::filled({20, 20}, {}, [](int x, int y) { return uint8_t(x < 8 && y == 10); });
    check(image, {}, {1, kDegree, 8, 5}, {{10, 86 * kDegree}});
}

TEST(HoughLineRegion, MatchesItsDefinition) {
    const RoiSize roi{61, 43};
    for (const Layout& layout : kLayouts)
        for (const float deltaTheta : {kDegree, 0.13f}) {
            const auto image = randomPoints(roi, layout, 5, 1);
            const Parameters p{0.9f, deltaTheta, 3, 5000};
            const Reference reference(image, p);
            std::vector<Limits> limits{{},
                                       {-INFINITY, INFINITY, 0, 0},
                                       {0, 0, -1, 4},
                                       {-1000, -500, 0, 1},
                                       {0, 10, 3.2f, 4},
                                       {0.1f, 0.2f, 0.001f, 0.002f}};
            // Both ends belong to the range: the values of a cell and of a row alone, and the next float beside them.
            const float rho = reference.rhoOf(130), theta = reference.thetaOf(11);
            limits.push_back({rho, rho, theta, theta});
            limits.push_back({rho, reference.rhoOf(150), theta, reference.thetaOf(17)});
            limits.push_back({std::nextafter(rho, 99.0f), std::nextafter(reference.rhoOf(150), -99.0f),
                              std::nextafter(theta, 9.0f), std::nextafter(reference.thetaOf(17), 0.0f)});
            Random random(3);
            for (int i = 0; i < 30; ++i) {
                const auto drawRho = [&] { return reference.rhoOf(int(random.below(230))); };
                const auto drawTheta = [&] { return float(random.below(100)) * 0.0314f; };
                const auto [minRho, maxRho] = std::minmax({drawRho(), drawRho()});
                const auto [minTheta, maxTheta] = std::minmax({drawTheta(), drawTheta()});
                limits.push_back({minRho, maxRho, minTheta, maxTheta});
            }
            for (const Limits& limit : limits) {
                SCOPED_TRACE(::testing::Message() << "rho " << limit.minRho << " to " << limit.maxRho << ", theta "
                                                  << limit.minTheta << " to " << limit.maxTheta);
                check(image, layout, p, reference.lines(limit), &limit);
            }
        }
}

// Rows of a step below the width share pixels.
TEST(HoughLine, TakesAnyPositiveStep) {
    const RoiSize roi{50, 30};
    const auto pixels = randomPoints({110, 1}, {Layout::kBeforeGuard, 0, 0}, 3, 1);
    for (const int32_t step : {1, 2}) {
        const auto image =
            TestImage<uint8_t>::filled(roi, {}, [&](int x, int y) { return pixels.at(x + step * y, 0); });
        const Parameters p{1, 0.1f, 5, 100};
        const std::vector<Line> expected = Reference(image, p).lines({});
        std::vector<float> lines(200);
        int32_t count = 0;
        const TestImage<uint8_t> buffer = workBuffer(bufferSize(roi, p));
        ASSERT_EQ(StatusOk, vekiHoughLine_8u32f_C1R(pixels.data(), step, roi, 1, 0.1f, 5, lines.data(), 100, &count,
                                                    buffer.data()));
        ASSERT_EQ(int32_t(expected.size()), count);
        for (size_t i = 0; i < expected.size(); ++i)
            EXPECT_EQ(expected[i].rho, lines[2 * i]);
    }
}

TEST(HoughLine, GivesTheSameInAllFloatModes) {
    const auto image = randomPoints({90, 70}, {}, 7, 1);
    const Parameters p{0.7f, 0.03f, 6, 300};
    const std::vector<Line> expected = Reference(image, p).lines({});
    const int32_t size = bufferSize({90, 70}, p);
    forCallerModes([&] {
        check(image, {}, p, expected);
        EXPECT_EQ(size, bufferSize({90, 70}, p));
    });
}

TEST(HoughLineSize, FollowsItsFormula) {
    EXPECT_EQ((4 * 640 + 48) * 480 + 16 * 50 + 8 * 180 + 16 * 2241 + 256, bufferSize({640, 480}, {1, kDegree, 1, 50}));
    EXPECT_EQ(52 + 16 + 8 * 1 + 16 * 2 + 256, bufferSize({1, 1}, {2, 3.14159f, 1, 1}));
    EXPECT_EQ(52 + 16 + 8 * 32 + 16 * 50 + 256, bufferSize({1, 1}, {0.1f, 0.1f, 1, 1}));
    // The query takes steps that the operation refuses.
    EXPECT_EQ(52 + 16 + 8 * 1 + 16 * 0 + 256, bufferSize({1, 1}, {100, 100, 1, 1}));
}

TEST(HoughLineSize, WarnsOfSizesThatDoNotFit) {
    int32_t size = 0;
    const auto query = [&](RoiSize roi, float deltaRho, float deltaTheta, int32_t most) {
        return vekiHoughLineGetSize_8u_C1R(roi, deltaRho, deltaTheta, most, &size);
    };
    const auto others = [](int64_t side) { return 16 + 8 * 4 + 16 * (2 * side + 1) + 256; };
    EXPECT_EQ(StatusOk, query({23000, 23000}, 1, 1, 1));
    EXPECT_EQ((4 * 23000 + 48) * 23000 + others(46000), size);
    EXPECT_EQ(StatusBufferSizeWarning, query({24000, 24000}, 1, 1, 1));
    EXPECT_EQ(int32_t(uint32_t((4 * 24000LL + 48) * 24000 + others(48000))), size);
    EXPECT_EQ(StatusOk, query({40000, 40000}, 1, 1, 1));  // wrapped once more
    EXPECT_EQ(int32_t(uint32_t((4 * 40000LL + 48) * 40000 + others(80000))), size);
    EXPECT_EQ(StatusOk, query({INT32_MAX, INT32_MAX}, 1e-30f, 1e-30f, INT32_MAX));  // the most of everything
    EXPECT_EQ(-44 - 16 + 0 - 16 + 256, size);
}

// No work buffer of a size that the query could give would do.
TEST(HoughLine, RefusesWhatTakesTooLargeABuffer) {
    const TestImage<uint8_t> image({1, 1}), buffer({1, 1});
    float line[2] = {};
    int32_t count = -1;
    const auto call = [&](RoiSize roi, float deltaRho, float deltaTheta, int32_t most) {
        return vekiHoughLine_8u32f_C1R(image.data(), 1, roi, deltaRho, deltaTheta, 1, line, most, &count,
                                       buffer.data());
    };
    EXPECT_EQ(StatusSizeError, call({32768, 32768}, 1, 1, 1));
    EXPECT_EQ(StatusSizeError, call({INT32_MAX, INT32_MAX}, 1, 1, 1));
    EXPECT_EQ(StatusSizeError, call({32000, 32768}, 1, 1, 40000000));
    EXPECT_EQ(StatusSizeError, call({4, 4}, 1, 1, INT32_MAX));
    EXPECT_EQ(StatusSizeError, call({4, 4}, 1e-20f, 1, 1));
    EXPECT_EQ(StatusSizeError, call({4, 4}, 1, 1e-20f, 1));
    EXPECT_EQ(StatusBadArgument, call({32768, 32768}, 1, 4, 1));
    EXPECT_EQ(-1, count);
    EXPECT_TRUE(buffer.guardsIntact());
}

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kAboveHalfTurn = 3.1415904f;
// The arguments are for an image of 9 x 4 pixels, and 1 each.
const exports::FamilyFaults kFaults("vekiHoughLine",
                                    {{"maxLineCount", StatusSizeError, {0, -1, INT32_MIN}, exports::Behind::kSizes},
                                     {"deltaRho", StatusBadArgument, {0.0f, -1.0f, 13.1f, INFINITY, kNaN}},
                                     {"deltaTheta", StatusBadArgument, {0.0f, -1.0f, kAboveHalfTurn, kNaN}},
                                     {"threshold", StatusBadArgument, {0, -1, INT32_MIN}},
                                     {"minRho", StatusRangeError, {1.5f, kNaN}},
                                     {"maxRho", StatusRangeError, {0.5f, kNaN}},
                                     {"minTheta", StatusRangeError, {1.5f, kNaN}},
                                     {"maxTheta", StatusRangeError, {0.5f, kNaN}}},
                                    exports::Steps::kPositive);
const exports::FamilyFaults kQueryFaults("vekiHoughLineGetSize",
                                         {{"deltaRho", StatusBadArgument, {0.0f, -1.0f, kNaN}},
                                          {"deltaTheta", StatusBadArgument, {0.0f, -1.0f, kNaN}}});

}  // namespace
