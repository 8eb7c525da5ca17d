// Picture files: every kind that is read and written, and what is said of files that are no good.
#include <fstream>

#include "run_vek.h"

namespace {

namespace fs = std::filesystem;

TEST_F(Vek, ReadsEveryKindOfPng) {
    writePicture("color.png", picture(32, 16, 3, 8, 3));
    struct Kind {
        const char *converted, *format;
        int32_t channels;
    };
    for (const Kind& kind : {Kind{"pal8", "rgb24", 3}, Kind{"rgba", "rgb24", 3}, Kind{"monob", "gray", 1},
                             Kind{"gray", "gray", 1}, Kind{"gray16be", "gray16le", 1}}) {
        SCOPED_TRACE(kind.converted);
        ASSERT_EQ(0,
                  run("ffmpeg -nostdin -y -v error -i color.png -pix_fmt " + std::string(kind.converted) + " kind.png")
                      .status);
        const Picture read = readPicture("kind.png");
        EXPECT_EQ(kind.channels, read.channels);
        EXPECT_EQ(decodedByFfmpeg("kind.png", kind.format), read.bytes);
    }
}

TEST_F(Vek, KeepsSmoothPicturesInJpeg) {
    for (int32_t channels : {1, 3}) {
        Picture smooth(64, 48, channels, 8);
        for (size_t i = 0; i < smooth.bytes.size(); ++i)
            smooth.bytes[i] = static_cast<uint8_t>(40 + 2 * (i / size_t(channels) % 64));
        writePicture("smooth.jpg", smooth);
        const Picture read = readPicture("smooth.jpg");
        ASSERT_TRUE(read.hasShapeOf(smooth));
        for (size_t i = 0; i < smooth.bytes.size(); ++i)
            ASSERT_NEAR(smooth.bytes[i], read.bytes[i], 4) << i;
    }
}

TEST_F(Vek, SaysWhatIsWrongWithAFile) {
    writePicture("grey.png", picture(16, 8, 1, 8, 1));
    writePicture("deep.png", picture(16, 8, 1, 16, 1));
    std::ofstream("empty.png").close();
    std::ofstream("text.png") << "no picture at all";
    fs::create_directory("folder.png");
    expectFailure("diff grey.png missing.png x.png", 1, "missing.png: cannot be opened");
    expectFailure("diff grey.png folder.png x.png", 1, "folder.png: is a folder");
    expectFailure("diff grey.png empty.png x.png", 1, "empty.png: is empty");
    expectFailure("diff text.png grey.png x.png", 1, "text.png: is not a PNG or JPEG");
    expectFailure("diff /dev/zero grey.png x.png", 1, "/dev/zero: is not a PNG or JPEG");
    expectFailure("diff '" + std::string(300, 'n') + "' grey.png x.png", 1, "cannot be opened");
    expectFailure("diff 'two\nlines.png' grey.png x.png", 1, "cannot be opened");
    expectFailure("diff grey.png grey.png x.bmp", 2, "x.bmp: pictures are written as");
    expectFailure("diff grey.png grey.png missing/x.png", 1, "missing/x.png: cannot be written");
    expectFailure("diff grey.png grey.png folder.png", 1, "folder.png: cannot be written");
    expectFailure("diff deep.png deep.png x.jpg", 1, "x.jpg: a JPEG picture has 8 bits");
}

TEST_F(Vek, RefusesPicturesThatEndTooEarly) {
    for (const std::string extension : {".png", ".jpg"}) {
        const std::string whole = "whole" + extension, part = "part" + extension;
        writePicture(whole, picture(40, 30, 3, 8, 1));
        writePicture(part, picture(40, 30, 3, 8, 1));
        for (size_t keep = fs::file_size(whole) - 3; keep > 23; keep -= 23) {
            fs::resize_file(part, keep);
            expectFailure("diff " + part + " " + part + " x.png", 1, part + ": ");
        }
    }
}

// A header that tells of a size that the rest of the file cannot hold must not cost the memory for it.
TEST_F(Vek, RefusesFalseSizes) {
    writePicture("small.png", picture(8, 8, 3, 8, 1));
    std::fstream file("small.png", std::ios::in | std::ios::out | std::ios::binary);
    const unsigned char header[] = {0x00, 0x00, 0xea, 0x60, 0x00, 0x00, 0xea, 0x60, 0x08, 0x02, 0x00, 0x00, 0x00};
    uint32_t check = 0xffffffffu;  // of the chunk's name and content, as PNG wants it
    const auto add = [&](unsigned char byte) {
        check ^= byte;
        for (int bit = 0; bit < 8; ++bit)
            check = (check >> 1) ^ (0xedb88320u & (0u - (check & 1u)));
    };
    for (const char c : {'I', 'H', 'D', 'R'})
        add(static_cast<unsigned char>(c));
    file.seekp(16);
    for (const unsigned char byte : header) {
        add(byte);
        file.put(static_cast<char>(byte));
    }
    for (int shift : {24, 16, 8, 0})
        file.put(static_cast<char>(~check >> shift));
    file.close();
    expectFailure("diff small.png small.png x.png", 1, "too short for its size");
}

// What stood in the file before stays there when the new picture cannot be written.
TEST_F(Vek, NeverLeavesHalfAPicture) {
    writePicture("a.png", picture(300, 300, 3, 8, 1));
    writePicture("b.png", picture(300, 300, 3, 8, 2));
    std::ofstream("out.png") << "old";
    const Result result = run("ulimit -f 8; env --default-signal=XFSZ " + program() + " diff a.png b.png out.png");
    EXPECT_EQ(1, result.status);
    EXPECT_NE(std::string::npos, result.output.find("out.png: cannot be written")) << result.output;
    EXPECT_EQ(3u, fs::file_size("out.png"));
    EXPECT_EQ(3, countFiles());
}

TEST_F(Vek, KeepsLinksAndPermissionsOfWhatItReplaces) {
    writePicture("a.png", picture(30, 20, 3, 8, 1));
    const std::string difference = "umask 022; " + program() + " diff a.png a.png ";
    const auto permissionsOf = [](const char* path) { return static_cast<int>(fs::status(path).permissions()); };
    ASSERT_EQ(0, run(difference + "new.png").status);
    EXPECT_EQ(0644, permissionsOf("new.png"));

    fs::create_directories("folder");
    for (const int permissions : {0600, 0664}) {
        std::ofstream("folder/old.png") << "old";
        fs::permissions("folder/old.png", fs::perms(permissions));
        fs::remove("link.png");
        fs::create_symlink("folder/old.png", "link.png");
        const Result result = run(difference + "link.png");
        ASSERT_EQ(0, result.status) << result.output;
        EXPECT_TRUE(fs::is_symlink("link.png"));
        EXPECT_EQ(readPicture("new.png").bytes, readPicture("folder/old.png").bytes);
        EXPECT_EQ(permissions, permissionsOf("folder/old.png"));
    }
}

}  // namespace
