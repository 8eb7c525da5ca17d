// vek edges, against the definition of the manual.
#include <cstdlib>

#include "border.h"
#include "run_vek.h"

namespace {

struct Masks {
    std::vector<int> smooth, rising;
};
const Masks kSmall{{1, 2, 1}, {-1, 0, 1}}, kLarge{{1, 4, 6, 4, 1}, {-1, -2, 0, 2, 1}};

int derivativeAt(const Picture& of, int x, int y, const std::vector<int>& across, const std::vector<int>& down) {
    const int size = static_cast<int>(across.size());
    int sum = 0;
    for (int j = 0; j < size; ++j)
        for (int i = 0; i < size; ++i) {
            const int row = borderPixel(BorderReplicate, y + j - size / 2, of.height);
            const int column = borderPixel(BorderReplicate, x + i - size / 2, of.width);
            sum += across[static_cast<size_t>(i)] * down[static_cast<size_t>(j)] *
                   of.bytes[static_cast<size_t>(row * of.width + column)];
        }
    return sum;
}

/** Edges by the definition: candidates first, and then all that can be reached from strong ones. */
class Edges {
  public:
    Edges(const Picture& grey, int low, int high, const Masks& masks) : result(grey.width, grey.height, 1, 8) {
        for (int y = 0; y < grey.height; ++y)
            for (int x = 0; x < grey.width; ++x) {
                across_.push_back(derivativeAt(grey, x, y, masks.rising, masks.smooth));
                down_.push_back(derivativeAt(grey, x, y, masks.smooth, masks.rising));
                const int magnitude = std::abs(across_.back()) + std::abs(down_.back());
                magnitudes_.push_back(magnitude < low ? 0 : magnitude);
            }
        for (int y = 0; y < grey.height; ++y)
            for (int x = 0; x < grey.width; ++x)
                candidates_.push_back(isCandidate(x, y));
        for (int y = 0; y < grey.height; ++y)
            for (int x = 0; x < grey.width; ++x)
                if (magnitudes_[at(x, y)] > high)
                    follow(x, y);
    }

    Picture result;

  private:
    size_t at(int x, int y) const { return static_cast<size_t>(y * result.width + x); }
    bool isInside(int x, int y) const { return x >= 0 && y >= 0 && x < result.width && y < result.height; }
    int magnitude(int x, int y) const { return isInside(x, y) ? magnitudes_[at(x, y)] : 0; }

    bool isCandidate(int x, int y) const {
        const int m = magnitude(x, y), dx = across_[at(x, y)], dy = down_[at(x, y)];
        if (m == 0)
            return false;
        const float ax = static_cast<float>(std::abs(dx)), ay = static_cast<float>(std::abs(dy));
        if (ay < ax * 0.41421357f)
            return magnitude(x - 1, y) < m && magnitude(x + 1, y) <= m;
        if (ax * 2.4142137f < ay)
            return magnitude(x, y - 1) < m && magnitude(x, y + 1) <= m;
        const int falling = (dx < 0) == (dy < 0) ? 1 : -1;
        return magnitude(x - falling, y - 1) < m && magnitude(x + falling, y + 1) < m;
    }

    void follow(int x, int y) {
        if (!isInside(x, y) || !candidates_[at(x, y)] || result.bytes[at(x, y)])
            return;
        result.bytes[at(x, y)] = 255;
        for (int j = -1; j <= 1; ++j)
            for (int i = -1; i <= 1; ++i)
                follow(x + i, y + j);
    }

    std::vector<int> across_, down_, magnitudes_;
    std::vector<bool> candidates_;
};

/** Random pixels that are alike within blocks, so that edges are long. */
Picture blocks(int width, int height, int size) {
    const Picture colors = picture(width / size + 1, height / size + 1, 1, 8, 7);
    Picture result(width, height, 1, 8);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            result.bytes[static_cast<size_t>(y * width + x)] =
                static_cast<uint8_t>(colors.bytes[static_cast<size_t>(y / size * colors.width + x / size)] + x % 3);
    return result;
}

Picture edgesOf(const Picture& source, const std::string& options) {
    writePicture("in.png", source);
    return outputOf("edges in.png out.png " + options);
}

TEST_F(Vek, FindsEdges) {
    for (const Picture& source : {blocks(61, 47, 9), blocks(200, 150, 13), picture(33, 29, 1, 8, 1),
                                  Picture(5, 4, 1, 8), picture(1, 1, 1, 8, 1)}) {
        SCOPED_TRACE(source.shape());
        for (const auto& [low, high] : {std::pair{100, 200}, {0, 0}, {150, 150}, {300, 700}, {20, 1500}}) {
            const std::string options = "--low " + std::to_string(low) + " --high " + std::to_string(high);
            SCOPED_TRACE(options);
            const Picture small = Edges(source, low, high, kSmall).result;
            EXPECT_EQ(small.bytes, edgesOf(source, options).bytes);
            EXPECT_EQ(small.bytes, edgesOf(source, options + ".9 --aperture 3").bytes);
            EXPECT_EQ(Edges(source, low, high, kLarge).result.bytes, edgesOf(source, options + " --aperture 5").bytes);
        }
    }
    // There is something to be found, and something not to be.
    const Picture some = Edges(blocks(61, 47, 9), 300, 700, kSmall).result;
    EXPECT_LT(50, std::ranges::count(some.bytes, 255));
    EXPECT_NE(some.bytes, Edges(blocks(61, 47, 9), 300, 300, kSmall).result.bytes);
    EXPECT_NE(some.bytes, Edges(blocks(61, 47, 9), 700, 700, kSmall).result.bytes);
}

TEST_F(Vek, FindsEdgesOfColors) {
    const Picture color = picture(31, 22, 3, 8, 4), grey = greyOf(color);
    const Picture edges = edgesOf(color, "--low 100 --high 200");
    EXPECT_TRUE(edges.hasShapeOf(grey)) << edges.shape();
    EXPECT_EQ(edgesOf(grey, "--low 100 --high 200").bytes, edges.bytes);
    const Result timed = vek("edges in.png out.png --low 100 --high 200 --time");
    EXPECT_NE(std::string::npos, timed.output.find("ms  vekiCanny_16s8u_C1R")) << timed.output;
}

TEST_F(Vek, RefusesWrongUseOfEdges) {
    writePicture("in.png", picture(16, 8, 1, 8, 1));
    for (const std::string arguments :
         {"", "in.png", "in.png x.png", "in.png x.png --low 1", "in.png x.png --high 1",
          "in.png x.png --low -1 --high 1", "in.png x.png --low 1 --high inf", "in.png x.png --low 1 --high 65536",
          "in.png x.png --low much --high 1", "in.png x.png --low 1 --high 2 --aperture 4",
          "in.png x.png --low 1 --high 2 --aperture 7"})
        expectFailure("edges " + arguments, 2, "");
    expectFailure("edges in.png x.png --low nan --high 1", 2, "--low: is not a number from 0 to 65535");
    expectFailure("edges in.png x.png --low 2 --high 1", 2, "--low: is above --high");
}

TEST_F(Vek, SaysWhatHasNoEdges) {
    writePicture("in.png", picture(16, 8, 1, 8, 1));
    writePicture("deep.png", picture(16, 8, 1, 16, 1));
    const std::string thresholds = " --low 1 --high 2";
    expectFailure("edges missing.png x.png" + thresholds, 1, "missing.png: cannot be opened");
    expectFailure("edges deep.png x.png" + thresholds, 1, "deep.png: is 16 x 8, 16-bit grey; edges are those of");
    expectFailure("edges in.png x.bmp" + thresholds, 2, "x.bmp: pictures are written as");
    expectFailure("edges in.png missing/x.png" + thresholds, 1, "missing/x.png: cannot be written");
}

}  // namespace
