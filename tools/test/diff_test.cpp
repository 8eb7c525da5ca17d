// vek diff, on pictures of every kind.
#include <cstdlib>

#include "run_vek.h"

namespace {

TEST_F(Vek, SubtractsPicturesOfEveryKind) {
    struct Kind {
        int32_t channels, bits;
        const char* format;
    };
    for (const Kind& kind : {Kind{1, 8, "gray"}, Kind{3, 8, "rgb24"}, Kind{1, 16, "gray16le"}}) {
        SCOPED_TRACE(kind.format);
        const Picture a = picture(37, 21, kind.channels, kind.bits, 1),
                      b = picture(37, 21, kind.channels, kind.bits, 2);
        writePicture("a.png", a);
        writePicture("b.png", b);
        ASSERT_EQ(a.bytes, decodedByFfmpeg("a.png", kind.format));
        const Result result = vek("diff a.png b.png out.png");
        ASSERT_EQ(0, result.status) << result.output;
        EXPECT_EQ("", result.output);
        Picture expected = a;
        for (size_t i = 0; i < size_t(37 * 21 * kind.channels); ++i) {
            const int difference = std::abs(valueAt(a, i) - valueAt(b, i));
            if (kind.bits == 8)
                expected.bytes[i] = static_cast<uint8_t>(difference);
            else
                expected.pixels<uint16_t>()[i] = static_cast<uint16_t>(difference);
        }
        EXPECT_EQ(expected.bytes, decodedByFfmpeg("out.png", kind.format));
    }
}

TEST_F(Vek, RefusesWrongUseOfDiff) {
    for (const std::string arguments : {"diff", "diff a.png"})
        expectFailure(arguments, 2, "(see vek --help)");
    writeMisfits();
    expectFailure("diff grey.png large.png x.png", 1, "large.png: is 17 x 8");
    expectFailure("diff grey.png color.png x.png", 1, "color.png: is 16 x 8, 8-bit colour");
    expectFailure("diff deep.png grey.png x.png", 1, "grey.png: is 16 x 8, 8-bit grey, but deep.png is");
}

}  // namespace
