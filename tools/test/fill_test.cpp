// vek fill, against a search from pixel to pixel.
#include <nlohmann/json.hpp>

#include "run_vek.h"

namespace {

enum class Rule { kEqual, kRange, kGradient };

struct Fill {
    Rule rule = Rule::kEqual;
    int neighbors = 4, below = 0, above = 0;
    int x = 0, y = 0;
    std::array<int, 3> value{};

    std::string options() const {
        std::string text = "--seed " + std::to_string(x) + "," + std::to_string(y);
        if (rule != Rule::kEqual)
            text += (rule == Rule::kRange ? " --range --delta " : " --gradient --delta ") + std::to_string(below) +
                    "," + std::to_string(above);
        return text + " --neighbors " + std::to_string(neighbors);
    }
};

/** What a fill makes of a picture, and of which pixels. */
class Filled {
  public:
    Filled(const Picture& source, const Fill& fill) : result(source), source_(source), fill_(fill), joined_(count()) {
        join(fill.x, fill.y, fill.x, fill.y);
        while (!pending_.empty()) {
            const auto [x, y] = pending_.back();
            pending_.pop_back();
            for (int j = -1; j <= 1; ++j)
                for (int i = -1; i <= 1; ++i)
                    if (fill.neighbors == 8 || i == 0 || j == 0)
                        join(x + i, y + j, x, y);
        }
    }
    std::string line() const {
        return std::to_string(area) + " pixels, in " + std::to_string(right - left + 1) + " x " +
               std::to_string(bottom - top + 1) + " at " + std::to_string(left) + "," + std::to_string(top) + "\n";
    }

    Picture result;
    int area = 0, left = INT32_MAX, right = -1, top = INT32_MAX, bottom = -1;

  private:
    size_t count() const { return static_cast<size_t>(source_.width) * static_cast<size_t>(source_.height); }
    size_t at(int x, int y) const { return static_cast<size_t>(y * source_.width + x); }
    int channel(int x, int y, int c) const {
        return valueAt(source_, at(x, y) * static_cast<size_t>(source_.channels) + static_cast<size_t>(c));
    }

    /** A pixel, if it is close to the one that it is reached from. */
    void join(int x, int y, int fromX, int fromY) {
        if (x < 0 || y < 0 || x >= source_.width || y >= source_.height || joined_[at(x, y)])
            return;
        for (int c = 0; c < source_.channels; ++c) {
            const int near = fill_.rule == Rule::kGradient ? channel(fromX, fromY, c) : channel(fill_.x, fill_.y, c);
            if (channel(x, y, c) < near - fill_.below || channel(x, y, c) > near + fill_.above)
                return;
        }
        joined_[at(x, y)] = true;
        pending_.push_back({x, y});
        ++area;
        left = std::min(left, x);
        right = std::max(right, x);
        top = std::min(top, y);
        bottom = std::max(bottom, y);
        for (int c = 0; c < source_.channels; ++c) {
            const size_t element = at(x, y) * static_cast<size_t>(source_.channels) + static_cast<size_t>(c);
            const int value = fill_.value[static_cast<size_t>(c)];
            if (source_.bits == 8)
                result.bytes[element] = static_cast<uint8_t>(value);
            else
                result.pixels<uint16_t>()[element] = static_cast<uint16_t>(value);
        }
    }

    const Picture& source_;
    const Fill& fill_;
    std::vector<bool> joined_;
    std::vector<ImagePoint> pending_;
};

/** Random pixels of few values, so that regions are large. */
Picture patches(int32_t width, int32_t height, int32_t channels, int32_t bits, uint32_t seed) {
    Picture result = picture(width, height, channels, bits, seed);
    const size_t count = result.bytes.size() / static_cast<size_t>(bits / 8);
    for (size_t i = 0; i < count; ++i) {
        const auto value =
            static_cast<uint8_t>(100 + result.bytes[i] % (channels == 3 ? 2 : 5) / (channels == 3 ? 1 : 2));
        if (bits == 8)
            result.bytes[i] = value;
    }
    if (bits == 16) {
        const Picture small = patches(width, height, channels, 8, seed);
        for (size_t i = 0; i < count; ++i)
            result.pixels<uint16_t>()[i] = static_cast<uint16_t>(300 * small.bytes[i]);
    }
    return result;
}

TEST_F(Vek, FillsRegions) {
    struct Kind {
        int32_t channels, bits;
        int unit;  // from a value to the next
        std::string value;
        std::array<int, 3> values;
    };
    for (const Kind& kind : {Kind{1, 8, 1, "7", {7, 0, 0}},
                             {3, 8, 1, "9,20,255", {9, 20, 255}},
                             {3, 8, 1, "7", {7, 7, 7}},
                             {1, 16, 300, "65000", {65000, 0, 0}},
                             {1, 8, 1, "", {255, 0, 0}},
                             {1, 16, 1, "", {65535, 0, 0}}})
        for (const RoiSize size : {RoiSize{1, 1}, {40, 1}, {1, 40}, {61, 47}}) {
            const Picture source = patches(size.width, size.height, kind.channels, kind.bits, 3);
            writePicture("in.png", source);
            for (const Rule rule : {Rule::kEqual, Rule::kRange, Rule::kGradient})
                for (const int neighbors : {4, 8})
                    for (const bool below : {false, true}) {
                        Fill fill{rule, neighbors, 0, 0, size.width / 2, size.height / 2, kind.values};
                        if (rule != Rule::kEqual)
                            (below ? fill.below : fill.above) = kind.unit;
                        const std::string arguments = "fill in.png out.png " + fill.options() +
                                                      (kind.value.empty() ? "" : " --value " + kind.value);
                        SCOPED_TRACE(source.shape() + " " + arguments);
                        const Filled expected(source, fill);
                        const Result result = vek(arguments);
                        ASSERT_EQ(0, result.status) << result.output;
                        EXPECT_EQ(expected.line(), result.output);
                        const Picture out = readPicture("out.png");
                        ASSERT_TRUE(out.hasShapeOf(source));
                        EXPECT_EQ(expected.result.bytes, out.bytes);
                    }
        }
}

TEST_F(Vek, FillsAlongARamp) {
    Picture ramp(200, 3, 1, 8);
    for (size_t i = 0; i < ramp.bytes.size(); ++i)
        ramp.bytes[i] = static_cast<uint8_t>(i % 200);
    writePicture("in.png", ramp);
    const std::string fill = "fill in.png out.png --seed 100,1 ";
    EXPECT_EQ("600 pixels, in 200 x 3 at 0,0\n", vek(fill + "--gradient --delta 1").output);
    EXPECT_EQ("300 pixels, in 100 x 3 at 100,0\n", vek(fill + "--gradient --delta 0,1").output);
    EXPECT_EQ("303 pixels, in 101 x 3 at 0,0\n", vek(fill + "--gradient --delta 1,0").output);
    EXPECT_EQ("63 pixels, in 21 x 3 at 90,0\n", vek(fill + "--range --delta 10").output);
    EXPECT_EQ("48 pixels, in 16 x 3 at 90,0\n", vek(fill + "--range --delta 10,5").output);
    EXPECT_EQ("333 pixels, in 111 x 3 at 0,0\n", vek(fill + "--range --delta 255,10").output);
    EXPECT_EQ("3 pixels, in 1 x 3 at 100,0\n", vek(fill).output);
    EXPECT_EQ((nlohmann::json{{"area", 63}, {"x", 90}, {"y", 0}, {"width", 21}, {"height", 3}}),
              nlohmann::json::parse(vek(fill + "--range --delta 10 --json").output));
    // By default past sides alone.
    Picture checks(2, 2, 1, 8);
    checks.bytes = {5, 0, 0, 5};
    writePicture("in.png", checks);
    EXPECT_EQ("1 pixels, in 1 x 1 at 0,0\n", vek("fill in.png out.png --seed 0,0").output);
    EXPECT_EQ("2 pixels, in 2 x 2 at 0,0\n", vek("fill in.png out.png --seed 0,0 --connectivity 8").output);
}

TEST_F(Vek, LeavesWhatHasTheValueAlready) {
    const Picture source = patches(20, 10, 1, 8, 3);
    writePicture("in.png", source);
    const std::string value = " --value " + std::to_string(source.bytes[0]);
    for (const std::string rule : {"", " --range --delta 3"}) {
        EXPECT_EQ("0 pixels, as the seed has the value already\n",
                  vek("fill in.png out.png --seed 0,0" + value + rule).output);
        EXPECT_EQ(source.bytes, readPicture("out.png").bytes);
        EXPECT_EQ(0,
                  nlohmann::json::parse(vek("fill in.png out.png --seed 0,0 --json" + value + rule).output).at("area"));
    }
    EXPECT_EQ("200 pixels, in 20 x 10 at 0,0\n",
              vek("fill in.png out.png --seed 0,0 --gradient --delta 3" + value).output);

    for (const auto& [option, name] : {std::pair{"", "vekiFloodFill_4Con_8u_C1IR"},
                                       {" --range --delta 1", "vekiFloodFill_Range4Con_8u_C1IR"},
                                       {" --gradient --delta 1 --neighbors 8", "vekiFloodFill_Grad8Con_8u_C1IR"}}) {
        const Result timed = vek("fill in.png out.png --time --seed 0,0" + std::string(option));
        EXPECT_NE(std::string::npos, timed.output.find("ms  " + std::string(name))) << timed.output;
    }
}

TEST_F(Vek, RefusesWrongUseOfFill) {
    writePicture("in.png", picture(16, 8, 1, 8, 1));
    writePicture("color.png", picture(16, 8, 3, 8, 1));
    writePicture("deep.png", picture(16, 8, 1, 16, 1));
    for (const std::string arguments :
         {"", "in.png", "in.png x.png", "in.png x.png --seed", "in.png x.png more --seed 0,0",
          "in.png x.png --seed 0,0 --neighbors 6", "in.png x.png --seed 0,0 --range --gradient --delta 1"})
        expectFailure("fill " + arguments, 2, "");
    for (const std::string seed : {"1", "1,", ",1", "1x1", "1,1,1", "middle", "1.5,1", "99999999999,1"})
        expectFailure("fill in.png x.png --seed " + seed, 2,
                      "--seed: " + seed + " is not a column and a row, as in 20,10");
    for (const std::string seed : {"16,0", "0,8", "-1,0", "0,-1"})
        expectFailure("fill in.png x.png --seed " + seed, 2,
                      "--seed: " + seed + " lies outside of in.png, whose last pixel is 15,7");
    const std::string fill = "fill in.png x.png --seed 0,0 ", deep = "fill deep.png x.png --seed 0,0 ",
                      color = "fill color.png x.png --seed 0,0 ";
    for (const std::string value : {"1,2,3", "red", "1.5", "''"})
        expectFailure(fill + "--value " + value, 2, "is not a grey value, as in 200");
    for (const std::string value : {"1,2", "1,2,3,4", "red", "1,2,blue"})
        expectFailure(color + "--value " + value, 2, "--value: " + value + " is not red, green and blue, as in");
    for (const std::string value : {"256", "-1"})
        expectFailure(fill + "--value " + value, 2, "--value: " + value + " is not from 0 to 255");
    expectFailure(color + "--value 1,2,256", 2, "--value: 1,2,256 is not from 0 to 255");
    expectFailure(deep + "--value 65536", 2, "--value: 65536 is not from 0 to 65535");
    for (const std::string rule : {"--range", "--gradient"}) {
        expectFailure(fill + rule, 2, "--delta: is missing: how far a pixel may be off, as in --delta 10");
        for (const std::string delta : {"some", "1,2,3", "1.5", "1x2"})
            expectFailure(fill + rule + " --delta " + delta, 2,
                          "--delta: " + delta + " is not one number or two, as in 10 or 20,5");
        for (const std::string delta : {"256", "-1", "0,256"})
            expectFailure(fill + rule + " --delta " + delta, 2, "--delta: " + delta + " is not from 0 to 255");
    }
    expectFailure(fill + "--delta 3", 2, "--delta: is for --range and --gradient");
    expectFailure("fill missing.png x.png --seed 0,0", 1, "missing.png: cannot be opened");
    expectFailure("fill in.png x.bmp --seed 0,0", 2, "x.bmp: pictures are written as");
    expectFailure("fill in.png missing/x.png --seed 0,0", 1, "missing/x.png: cannot be written");
}

}  // namespace
