// vek detect: cascades that cannot be read, and wrong use.
#include "run_vek.h"
#include "test_cascade.h"

namespace {

const TestCascade kCascade{12,
                           10,
                           {{0.5, {{{{0, 0, 12, 10, -1}, {3, 3, 6, 5, 4}}, false, 1.25, 0, 1}}},
                            {0.25, {{{{6, 1, 3, 4, -1}, {6, 1, 3, 2, 2}}, true, -0.75, 0, 1}}}}};

/** The text with its first occurrence of another text replaced. */
std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const size_t at = text.find(from);
    EXPECT_NE(std::string::npos, at) << from;
    return text.replace(at, from.size(), to);
}

class Cascades : public Vek {
  protected:
    Cascades() { writePicture("in.png", picture(40, 30, 1, 8, 1)); }

    void expectRefusal(const std::string& text, const std::string& message) {
        SCOPED_TRACE(text.substr(0, 2000));
        writeText("bad.xml", text);
        expectFailure("detect bad.xml in.png -o x.png", 1, "bad.xml: " + message);
    }

    const std::string good_ = kCascade.xml();
};

TEST_F(Cascades, MayBeWrittenInSeveralWays) {
    for (const std::string& text :
         {good_, replaced(good_, " type_id=\"opencv-cascade-classifier\"", ""),
          replaced(good_, "<stageNum>2</stageNum>", ""), replaced(good_, "1.25", " 125.e-2\t"),
          replaced(good_, "<rects>", "<rects><!-- two -->"),
          replaced(good_, "</rects>", "</rects><tilted>0</tilted>")}) {
        writeText("good.xml", text);
        const Result result = vek("detect good.xml in.png -o x.png");
        EXPECT_EQ(0, result.status) << result.output;
    }
}

TEST_F(Cascades, RefusesOtherFiles) {
    expectFailure("detect missing.xml in.png", 1, "missing.xml: cannot be opened");
    expectFailure("detect . in.png", 1, ".: is a folder");
    expectFailure("detect /dev/zero in.png", 1, "/dev/zero: is too large for a cascade");
    expectFailure("detect in.png in.png", 1, "in.png: is not XML: ");
    expectRefusal("", "is not XML: ");
    expectRefusal("a cascade", "is not XML: ");
    expectRefusal("<svg><cascade><stages/></cascade></svg>", "holds no cascade");
    expectRefusal("<opencv_storage/>", "holds no cascade");
    expectRefusal("<opencv_storage><cascade>1</cascade></opencv_storage>", "holds no cascade");
    expectRefusal(replaced(good_, "opencv-cascade-classifier", "opencv-ml-svm"), "holds no cascade");
    expectRefusal(replaced(good_, "opencv-cascade-classifier", "opencv-haar-classifier"),
                  "is a cascade of the old format");
    expectRefusal(replaced(good_, "BOOST", "FOREST"), "has stages of type 'FOREST'; only those of type BOOST");
    expectRefusal(replaced(good_, "HAAR", "LBP"), "has features of type 'LBP'; only those of type HAAR");
    std::string nested;
    for (int i = 0; i < 1000000; ++i)
        nested += "<a>";
    writeText("nested.xml", nested);
    expectFailure("detect nested.xml in.png", 1, "nested.xml: is not XML");
}

TEST_F(Cascades, RefusesTrees) {
    const std::string message = "stage 0, classifier 0 is a tree of several nodes or of categories; only stumps";
    expectRefusal(replaced(good_, "0 -1 0 1.25", "1 0 0 1.25 -1 -2 1 0.5"), message);
    expectRefusal(replaced(good_, "0 -1 0 1.25", "0 -1 0 1.25 -1 -2 1 0.5"), message);
    expectRefusal(replaced(good_, "0 -1 0 1.25", "0 -1 0 1 2 3 4 5 6 7 8"), message);
    expectFailure("detect /usr/share/opencv4/haarcascades/haarcascade_frontalface_alt2.xml in.png", 1, message);
}

TEST_F(Cascades, SaysWhatIsWrong) {
    struct Change {
        const char *from, *to, *message;
    };
    for (const Change& one : std::initializer_list<Change>{
             {"<width>12</width>", "", "width is missing"},
             {"<width>12<", "<width><", "width holds too few numbers"},
             {"<width>12<", "<width>2<", "width holds 2, which is not from 3 to 181"},
             {"<width>12<", "<width>182<", "width holds 182, which"},
             {"<width>12<", "<width>99999999999<", "width holds what is not a number, or too large a one"},
             {"<width>12<", "<width>12 12<", "width holds more than it should"},
             {"<height>10<", "<height>-10<", "height holds -10, which"},
             {"<height>10<", "<height>10x<", "height holds what is not a number"},
             {"<stageNum>2<", "<stageNum>3<", "stageNum is not the number of stages"},
             {"<stageThreshold>0.5<", "<stageThreshold>nan<",
              "stage 0: stageThreshold holds a number that is not finite"},
             {"<stageThreshold>0.5<", "<stageThreshold>-inf<", "stage 0: stageThreshold holds a number that is not"},
             {"<stageThreshold>0.5<", "<stageThreshold>1e30<", "stage 0: stageThreshold holds a number that is not"},
             {"<stageThreshold>0.25<", "<stageThreshold>1e999<", "stage 1: stageThreshold holds what is not a number"},
             {"<stageThreshold>0.25</stageThreshold>", "", "stage 1: stageThreshold is missing"},
             {"weakClassifiers", "weak", "is not XML"},
             {"0 -1 0 1.25", "0 -1 2 1.25", "stage 0, classifier 0: internalNodes holds 2, which is not from 0 to 1"},
             {"0 -1 0 1.25", "0 -1 -1 1.25", "stage 0, classifier 0: internalNodes holds -1, which"},
             {"0 -1 0 1.25", "0 -1 0", "stage 0, classifier 0: internalNodes holds too few numbers"},
             {"0 -1 0 1.25", "0 -1 0 many", "stage 0, classifier 0: internalNodes holds what is not a number"},
             {"\n  0 1<", "\n  0<", "stage 0, classifier 0: leafValues holds too few"},
             {"\n  0 1<", "\n  0 1 2<", "stage 0, classifier 0: leafValues holds more"},
             {"<_>0 0 12 10 -1.</_>", "<_>0 0 13 10 -1.</_>", "feature 0: rectangle 0 holds 13, which"},
             {"<_>0 0 12 10 -1.</_>", "<_>1 0 12 10 -1.</_>", "feature 0: rectangle 0 leaves the window"},
             {"<_>0 0 12 10 -1.</_>", "<_>0 1 12 10 -1.</_>", "feature 0: rectangle 0 leaves the window"},
             {"<_>0 0 12 10 -1.</_>", "<_>0 0 0 10 -1.</_>", "feature 0: rectangle 0 holds 0, which"},
             {"<_>0 0 12 10 -1.</_>", "<_>-1 0 12 10 -1.</_>", "feature 0: rectangle 0 holds -1, which"},
             {"<_>0 0 12 10 -1.</_>", "<_>0 0 12 10</_>", "feature 0: rectangle 0 holds too few"},
             {"<_>0 0 12 10 -1.</_>", "<_>0 0 12 10 -1. 1</_>", "feature 0: rectangle 0 holds more"},
             {"<_>6 1 3 2 2.</_>", "<_>2 1 3 3 2.</_>", "feature 1: rectangle 1 leaves the window"},
             {"<_>6 1 3 2 2.</_>", "<_>10 1 3 2 2.</_>", "feature 1: rectangle 1 leaves the window"},
             {"<_>6 1 3 2 2.</_>", "<_>6 6 3 2 2.</_>", "feature 1: rectangle 1 leaves the window"},
             {"<tilted>1<", "<tilted>2<", "feature 1: tilted holds 2, which"},
             {"<tilted>1<", "<tilted><", "feature 1: tilted holds too few"},
         })
        expectRefusal(replaced(good_, one.from, one.to), one.message);

    const auto without = [&](const std::string& first, const std::string& last) {
        const size_t from = good_.find(first) + first.size();
        return good_.substr(0, from) + good_.substr(good_.find(last, from));
    };
    expectRefusal(without("<features>", "</features>"), "features are missing");
    expectRefusal(without("<stages>", "</stages>"), "stages are missing");
    expectRefusal(without("<weakClassifiers>", "</weakClassifiers>"), "stage 0: weakClassifiers are missing");
    expectRefusal(without("<rects>", "</rects>"), "feature 0: rectangles are missing");
    std::string many;
    for (int i = 0; i < 17; ++i)
        many += "<_>0 0 1 1 1.</_>";
    expectRefusal(replaced(good_, "<rects>", "<rects>" + many), "feature 0: rectangles are more than 16");
}

TEST_F(Cascades, RefusesWhatEndsTooEarly) {
    for (size_t keep = good_.rfind("</cascade>"); keep > 40; keep -= 37)
        expectRefusal(good_.substr(0, keep), "is not XML");
}

// Whatever bytes are wrong, it is an error of one line or a cascade.
TEST_F(Cascades, SurvivesWrongBytes) {
    uint32_t seed = 1;
    const auto random = [&](size_t count) {
        seed = seed * 1664525u + 1013904223u;
        return (seed >> 8) % count;
    };
    for (int i = 0; i < 150; ++i) {
        std::string text = good_;
        for (int changes = 0; changes < 2; ++changes)
            text[text.find("<height>") + random(text.size() - text.find("<height>"))] =
                "0123456789-. <>_/e\n"[random(19)];
        writeText("wrong.xml", text);
        const Result result = vek("detect wrong.xml in.png");
        ASSERT_TRUE(result.status == 0 || (result.status == 1 && result.output.starts_with("vek: wrong.xml: ") &&
                                           std::ranges::count(result.output, '\n') == 1))
            << result.status << result.output << text;
    }
}

TEST_F(Cascades, RefuseWhatPassesEverywhere) {
    writeText("all.xml", replaced(replaced(good_, "<stageThreshold>0.5<", "<stageThreshold>-9<"),
                                  "<stageThreshold>0.25<", "<stageThreshold>-9<"));
    writePicture("large.png", Picture(1000, 600, 1, 8));
    expectFailure("detect all.xml large.png", 1, "all.xml: more than 200000 windows pass the cascade");
    const Result result = vek("detect all.xml in.png");
    EXPECT_EQ(0, result.status) << result.output;
    EXPECT_EQ(1, std::ranges::count(result.output, '\n')) << result.output;
}

TEST_F(Cascades, RefuseWrongUse) {
    writeText("good.xml", good_);
    writePicture("deep.png", picture(16, 8, 1, 16, 1));
    for (const std::string arguments :
         {"", "good.xml", "good.xml in.png x.png", "good.xml in.png --scale 1", "good.xml in.png --scale 0.5",
          "good.xml in.png --scale 11", "good.xml in.png --scale big", "good.xml in.png --min-size -1",
          "good.xml in.png --min-size many", "good.xml in.png --min-neighbors -1",
          "good.xml in.png --min-neighbors 99999999999", "good.xml in.png -o"})
        expectFailure("detect " + arguments, 2, "");
    expectFailure("detect good.xml in.png --scale nan", 2, "--scale: is not a number from 1.01 to 10");
    expectFailure("detect good.xml in.png -o x.bmp", 2, "x.bmp: pictures are written as");
    expectFailure("detect good.xml in.png -o missing/x.png", 1, "missing/x.png: cannot be written");
    expectFailure("detect good.xml missing.png", 1, "missing.png: cannot be opened");
    expectFailure("detect good.xml deep.png", 1, "deep.png: is 16 x 8, 16-bit grey; objects are found in");
    const Result help = vek("detect --help");
    EXPECT_EQ(0, help.status);
    EXPECT_NE(std::string::npos, help.output.find("--min-neighbors")) << help.output;
}

// Nothing fits: no window, and no error.
TEST_F(Cascades, FindNothingInTinyPictures) {
    writeText("good.xml", good_);
    for (const RoiSize size : {RoiSize{1, 1}, {11, 30}, {30, 9}}) {
        writePicture("tiny.png", picture(size.width, size.height, 1, 8, 1));
        const Result result = vek("detect good.xml tiny.png -o boxes.png");
        EXPECT_EQ(0, result.status) << result.output;
        EXPECT_EQ("", result.output);
        EXPECT_EQ(readPicture("tiny.png").bytes, readPicture("boxes.png").bytes);
    }
}

}  // namespace
