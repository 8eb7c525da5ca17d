// What vek says of itself, and of wrong use of it.
#include "run_vek.h"

namespace {

TEST_F(Vek, TellsWhatItIsAndHas) {
    EXPECT_NE(std::string::npos, vek("info --threads 3").output.find("threads     3"));
    EXPECT_NE(std::string::npos, vek("info").output.find("7.1.0 (r36264)"));
    EXPECT_NE(std::string::npos, vek("--help").output.find("background"));
    EXPECT_EQ(0, vek("diff --help").status);

    const std::string list = vek("list").output;
    EXPECT_NE(std::string::npos, list.find("vekcvGetLibVersion  "));
    EXPECT_EQ(4, std::ranges::count(vek("list '*absdiff_*'").output, '\n'));
    EXPECT_EQ(7, std::ranges::count(vek("list absdiff").output, '\n'));
    EXPECT_EQ("vekiAbsDiff_16u_C1R  destination = |source1 - source2|\n", vek("list vekiAbsDiff_16u").output);
    expectFailure("list nothing", 1, "nothing: no function");
    expectFailure("list > /dev/full", 1, "standard output: cannot be written");
    // Without a buffer nothing is left to be written at the end.
    EXPECT_EQ(1, run("stdbuf -o0 " + program() + " list > /dev/full").status);

    writePicture("a.png", picture(8, 8, 1, 8, 1));
    const Result timed = vek("diff a.png a.png out.png --time");
    EXPECT_NE(std::string::npos, timed.output.find("ms  vekiAbsDiff_8u_C1R")) << timed.output;
}

TEST_F(Vek, RefusesWrongUsage) {
    for (const std::string arguments : {"", "fly", "info --threads 0", "info --wrong"})
        expectFailure(arguments, 2, "(see vek --help)");
}

}  // namespace
