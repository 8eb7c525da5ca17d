// JPEG files: sizes that are lies, sizes that only look so, and kinds that cannot be read.
#include <turbojpeg.h>

#include <fstream>

#include "run_vek.h"

namespace {

namespace fs = std::filesystem;

/** Which way of coding a JPEG file is written in. */
struct Coding {
    const char* name;      // of the encoder's variable of the environment
    unsigned char marker;  // of the frame, after 0xff
};
constexpr Coding kCodings[] = {{"TJ_OPTIMIZE", 0xc0}, {"TJ_PROGRESSIVE", 0xc2}, {"TJ_ARITHMETIC", 0xc9}};

void writeCoded(const std::string& path, const Picture& of, const Coding& coding) {
    setenv(coding.name, "1", 1);
    writePicture(path, of);
    unsetenv(coding.name);
}

/** Where the marker of the frame begins; its height lies 5 bytes further, and then its width. */
size_t frameOf(const std::string& path, unsigned char marker) {
    std::ifstream file(path, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    const size_t at = content.find({static_cast<char>(0xff), static_cast<char>(marker), 0x00});
    EXPECT_NE(std::string::npos, at) << "the encoder does not write this kind of file";
    return at;
}

TEST_F(Vek, ReadsLargeJpegOfOneColor) {
    for (const int32_t channels : {1, 3})
        for (const Coding& coding : kCodings) {
            SCOPED_TRACE(::testing::Message() << coding.name << ", " << channels << " channels");
            writeCoded("large.jpg", Picture(2000, 1500, channels, 8), coding);
            frameOf("large.jpg", coding.marker);
            const Result result = vek("stats large.jpg");
            EXPECT_EQ(0, result.status) << result.output;
        }
    EXPECT_GT(2000u * 1500u / 512, fs::file_size("large.jpg"));  // arithmetic coding goes below a bit for a block
}

// As for PNG: such a header must not cost the memory for its size.
TEST_F(Vek, RefusesFalseSizesOfJpeg) {
    for (const Coding& coding : {kCodings[0], kCodings[1]}) {
        SCOPED_TRACE(coding.name);
        writeCoded("small.jpg", picture(8, 8, 3, 8, 1), coding);
        std::fstream file("small.jpg", std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(frameOf("small.jpg", coding.marker)) + 5);
        file << "\xff\xdc\xff\xdc";  // 65500 x 65500
        file.close();
        expectFailure("stats small.jpg", 1,
                      "small.jpg: is not a whole JPEG picture: the file is too short for its size");
    }
}

// It is whole, and yet cannot be read.
TEST_F(Vek, SaysThatItCannotReadCmyk) {
    const std::vector<uint8_t> pixels(size_t{16} * 16 * 4, 100);
    const tjhandle codec = tjInitCompress();
    unsigned char* content = nullptr;
    unsigned long size = 0;
    ASSERT_EQ(0, tjCompress2(codec, pixels.data(), 16, 0, 16, TJPF_CMYK, &content, &size, TJSAMP_444, 95, 0));
    std::ofstream("cmyk.jpg", std::ios::binary).write(reinterpret_cast<const char*>(content), std::streamsize(size));
    tjFree(content);
    tjDestroy(codec);
    expectFailure("stats cmyk.jpg", 1, "cmyk.jpg: cannot be decoded as JPEG: ");
}

}  // namespace
