// vek track: trails over pictures that move by known amounts.
#include <cmath>
#include <nlohmann/json.hpp>

#include "run_vek.h"

namespace {

constexpr int32_t kWidth = 120, kHeight = 90;

/** A part of a photograph, whose left and top edge lie there. */
Picture part(const std::string& name, int32_t left, int32_t top) {
    const Picture whole = readPicture(photograph(name));
    Picture result(kWidth, kHeight, 1, 8);
    for (int32_t y = 0; y < kHeight; ++y)
        std::copy_n(whole.bytes.begin() + (top + y) * whole.width + left, kWidth, result.bytes.begin() + y * kWidth);
    return result;
}

/** Frames f1.png and so on of the photographer, each a view 3 pixels to the right and 1 up. */
std::string movingFrames(int count) {
    std::string names;
    for (int i = 0; i < count; ++i) {
        const std::string name = "f" + std::to_string(i + 1) + ".png";
        writePicture(name, part("camera.png", 180 + 3 * i, 120 - i));
        names += " " + name;
    }
    return names;
}

nlohmann::json trailsOf(const std::string& arguments) {
    const Result result = vek("track" + arguments + " --json");
    EXPECT_EQ(0, result.status) << result.output;
    return nlohmann::json::parse(result.output);
}

TEST_F(Vek, FollowsCorners) {
    const nlohmann::json trails = trailsOf(movingFrames(5) + " -o t%d.png --corners 40");
    ASSERT_LE(20u, trails.size());
    constexpr int32_t kMargin = 11;  // half of the window
    size_t complete = 0, checked = 0;
    for (const nlohmann::json& trail : trails) {
        SCOPED_TRACE(trail.dump());
        const nlohmann::json& places = trail.at("places");
        complete += trail.at("frame") == 1 && places.size() == 5;
        for (size_t i = 1; i < places.size(); ++i) {
            const double x = places[0][0].get<double>() - 3. * static_cast<double>(i);
            const double y = places[0][1].get<double>() + 1. * static_cast<double>(i);
            // At an edge, what comes in or leaves is a part of the window.
            if (x < kMargin || y < kMargin || x > kWidth - 1 - kMargin - 3 || y > kHeight - 1 - kMargin)
                continue;
            EXPECT_NEAR(x, places[i][0].get<double>(), 0.05);
            EXPECT_NEAR(y, places[i][1].get<double>(), 0.05);
            ++checked;
        }
    }
    EXPECT_LE(20u, complete);
    EXPECT_LE(60u, checked);
}

double distance(const nlohmann::json& a, const nlohmann::json& b) {
    return std::hypot(a[0].get<double>() - b[0].get<double>(), a[1].get<double>() - b[1].get<double>());
}

TEST_F(Vek, SpreadsCorners) {
    const std::string frame = movingFrames(1);
    for (const int most : {1, 7, 100}) {
        const nlohmann::json trails = trailsOf(frame + " -o t%d.png --corners " + std::to_string(most));
        ASSERT_LE(trails.size(), static_cast<size_t>(most));
        EXPECT_LT(most / 3, static_cast<int>(trails.size()));
        for (size_t i = 0; i < trails.size(); ++i)
            for (size_t j = 0; j < i; ++j)
                EXPECT_LE(std::sqrt(double{kWidth} * kHeight / most) / 2,
                          distance(trails[i].at("places")[0], trails[j].at("places")[0]) + 1e-3);
    }
    // The usual number.
    EXPECT_EQ(trailsOf(frame + " -o t%d.png"), trailsOf(frame + " -o t%d.png --corners 200 --window 21"));

    // The strongest comes first, not the upmost.
    Picture squares(kWidth, kHeight, 1, 8);
    for (int32_t y = 0; y < 20; ++y)
        for (int32_t x = 0; x < 20; ++x) {
            squares.bytes[static_cast<size_t>((y + 10) * kWidth + x + 10)] = 100;
            squares.bytes[static_cast<size_t>((y + 55) * kWidth + x + 50)] = 250;
        }
    writePicture("squares.png", squares);
    const nlohmann::json strongest = trailsOf(" squares.png -o t%d.png --corners 1");
    ASSERT_EQ(1u, strongest.size());
    EXPECT_LT(50, strongest[0].at("places")[0][1].get<double>());
}

TEST_F(Vek, ReplacesLostCorners) {
    std::string frames = movingFrames(3);
    for (int i = 4; i < 6; ++i) {
        const std::string name = "f" + std::to_string(i) + ".png";
        writePicture(name, part("coins.png", 100, 100));
        frames += " " + name;
    }
    const nlohmann::json trails = trailsOf(frames + " -o t%d.png --corners 30");
    int lost = 0, late = 0;
    for (const nlohmann::json& trail : trails) {
        const auto places = static_cast<int>(trail.at("places").size());
        lost += trail.at("frame") == 1 && places == 3;
        if (trail.at("frame") == 4) {
            ++late;
            EXPECT_GT(0.05, distance(trail.at("places").front(), trail.at("places").back()));
        }
    }
    EXPECT_LE(10, lost);
    EXPECT_LE(10, late);
}

TEST_F(Vek, LosesCornersThatAreCovered) {
    const Picture first = part("camera.png", 180, 120), other = part("coins.png", 100, 100);
    Picture second = first;
    for (size_t i = 0; i < first.bytes.size(); ++i)
        if (i % kWidth >= kWidth / 2)
            second.bytes[i] = other.bytes[i];
    writePicture("f1.png", first);
    writePicture("f2.png", second);
    int kept = 0, covered = 0, found = 0;
    for (const nlohmann::json& trail : trailsOf(" f1.png f2.png -o t%d.png --corners 300 --window 15")) {
        const double x = trail.at("places")[0][0].get<double>();
        if (trail.at("frame") != 1 || std::abs(x - kWidth / 2) < 12)
            continue;
        const bool isFound = trail.at("places").size() == 2, isCovered = x > kWidth / 2;
        covered += isCovered;
        found += isCovered && isFound;
        kept += !isCovered && isFound;
    }
    EXPECT_LE(15, kept);
    EXPECT_LE(15, covered);
    EXPECT_GE(3, found);  // by chance; without the way back there are 11
}

TEST_F(Vek, DrawsTrails) {
    const std::string frames = movingFrames(4);
    const nlohmann::json trails = trailsOf(frames + " -o t-%02d.png --corners 20");
    EXPECT_FALSE(std::filesystem::exists("t-05.png"));
    for (size_t number = 1; number <= 4; ++number) {
        SCOPED_TRACE(number);
        const Picture frame = readPicture("f" + std::to_string(number) + ".png");
        const Picture drawn = readPicture("t-0" + std::to_string(number) + ".png");
        ASSERT_EQ(3, drawn.channels);
        ASSERT_EQ(frame.width, drawn.width);
        std::vector<bool> isNear(frame.bytes.size());
        for (const nlohmann::json& trail : trails) {
            const nlohmann::json& places = trail.at("places");
            if (trail.at("frame") != 1 || places.size() < number)
                continue;
            for (size_t i = 0; i < number; ++i) {
                const auto x = std::lrint(places[i][0].get<float>()), y = std::lrint(places[i][1].get<float>());
                const size_t pixel = static_cast<size_t>(y * kWidth + x);
                // Yellow where it is, and green where it was, but for what is drawn over that.
                EXPECT_EQ(255, drawn.bytes[3 * pixel + 1]);
                EXPECT_EQ(0, drawn.bytes[3 * pixel + 2]);
                if (i + 1 == number) {
                    EXPECT_EQ(255, drawn.bytes[3 * pixel]);
                }
                for (long row = std::max(y - 2, 0L); row <= std::min<long>(y + 2, kHeight - 1); ++row)
                    for (long column = std::max(x - 3, 0L); column <= std::min<long>(x + 3, kWidth - 1); ++column)
                        isNear[static_cast<size_t>(row * kWidth + column)] = true;
            }
        }
        for (size_t i = 0; i < isNear.size(); ++i)
            for (size_t channel = 0; channel < 3 && !isNear[i]; ++channel)
                ASSERT_EQ(frame.bytes[i], drawn.bytes[3 * i + channel]) << i;
    }
}

TEST_F(Vek, TracksInColorAsInGrey) {
    const Picture color = readPicture(photograph("coffee.png"));
    writePicture("color.png", color);
    writePicture("grey.png", greyOf(color));
    EXPECT_EQ(trailsOf(" grey.png grey.png -o t%d.png"), trailsOf(" color.png color.png -o c%d.png"));
    EXPECT_NE(readPicture("t2.png").bytes, readPicture("c2.png").bytes);
}

TEST_F(Vek, FindsNoCornersInFlatPictures) {
    for (const auto& [width, height] : {std::pair{1, 1}, {30, 1}, {1, 30}, {2, 2}, {30, 20}}) {
        writePicture("flat.png", Picture(width, height, 3, 8));
        EXPECT_EQ(nlohmann::json::array(), trailsOf(" flat.png flat.png -o t%d.png"));
        EXPECT_EQ(readPicture("flat.png").bytes, readPicture("t2.png").bytes);
    }
}

TEST_F(Vek, RefusesWrongUseOfTrack) {
    writeMisfits();
    for (const std::string arguments :
         {"track", "track grey.png", "track -o x%d.png", "track grey.png -o x%d.png --corners 0",
          "track grey.png -o x%d.png --corners 10001", "track grey.png -o x%d.png --window 1",
          "track grey.png -o x%d.png --window 65", "track grey.png -o x%d.png --window wide"})
        expectFailure(arguments, 2, "");
    expectFailure("track grey.png -o x%d.png --window 20", 2, "--window: is not odd");
    expectFailure("track grey.png -o x.png", 2, "x.png: the name needs one %d");
    expectFailure("track grey.png -o x%d.bmp", 2, "x%d.bmp: pictures are written as");
    expectFailure("track missing.png -o x%d.png", 1, "missing.png: cannot be opened");
    expectFailure("track deep.png -o x%d.png", 1, "deep.png: is 16 x 8, 16-bit grey; corners are followed in");
    EXPECT_EQ(1, vek("track grey.png large.png -o x%d.png").status);
}

}  // namespace
