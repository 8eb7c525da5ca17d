// Runs vek as a user would, in a new folder.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "picture_file.h"

struct Result {
    int status;
    std::string output;  // standard output and standard error
};

inline Result run(const std::string& command) {
    FILE* const pipe = popen(("{ " + command + " ; } 2>&1").c_str(), "r");
    Result result{0, {}};
    std::array<char, 4096> part{};
    for (size_t count; (count = std::fread(part.data(), 1, part.size(), pipe)) > 0;)
        result.output.append(part.data(), count);
    const int status = pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return result;
}

/** A path that a variable of the environment holds. */
inline std::string pathIn(const std::string& variable, const std::string& meaning) {
    if (const char* const path = std::getenv(variable.c_str()))
        return path;
    throw std::runtime_error("set " + variable + " to the path of " + meaning + ", from the root on");
}

inline std::string program() {
    return pathIn("VEK", "the program");
}

inline std::string photograph(const std::string& name) {
    return pathIn("PICTURES", "the folder examples/pictures") + "/" + name;
}

inline Result vek(const std::string& arguments) {
    return run(program() + " " + arguments);
}

/** The picture out.png that a command writes, which must not complain of anything. */
inline Picture outputOf(const std::string& arguments) {
    const Result result = vek(arguments);
    EXPECT_EQ(0, result.status) << result.output;
    EXPECT_EQ("", result.output);
    return result.status == 0 ? readPicture("out.png") : Picture();
}

inline std::string inCapitals(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::toupper(c); });
    return text;
}

/** The pixels of a picture as ffmpeg sees them: where a mistake of reading and writing could cancel out. */
inline std::vector<uint8_t> decodedByFfmpeg(const std::string& path, const std::string& format) {
    const Result result = run("ffmpeg -nostdin -v error -i " + path + " -f rawvideo -pix_fmt " + format + " -");
    EXPECT_EQ(0, result.status) << result.output;
    return {result.output.begin(), result.output.end()};
}

/** Random pixels. */
inline Picture picture(int32_t width, int32_t height, int32_t channels, int32_t bits, uint32_t seed) {
    Picture result(width, height, channels, bits);
    for (uint8_t& byte : result.bytes) {
        seed = seed * 1664525u + 1013904223u;
        byte = static_cast<uint8_t>(seed >> 24);
    }
    return result;
}

/** A picture of 8 bits in colour as vek takes it where it needs grey: 0.299 R + 0.587 G + 0.114 B, a half upwards. */
inline Picture greyOf(const Picture& color) {
    Picture grey(color.width, color.height, 1, 8);
    for (size_t i = 0; i < grey.bytes.size(); ++i)
        grey.bytes[i] = static_cast<uint8_t>(
            (299 * color.bytes[3 * i] + 587 * color.bytes[3 * i + 1] + 114 * color.bytes[3 * i + 2] + 500) / 1000);
    return grey;
}

inline int valueAt(const Picture& from, size_t i) {
    return from.bits == 8 ? from.bytes[i] : from.pixels<uint16_t>()[i];
}

inline auto countFiles() {
    return std::distance(std::filesystem::directory_iterator("."), std::filesystem::directory_iterator());
}

/** The command must fail with this status and one line, and leave nothing behind. */
inline void expectFailure(const std::string& arguments, int status, const std::string& message) {
    SCOPED_TRACE("vek " + arguments);
    const auto before = countFiles();
    const Result result = vek(arguments);
    EXPECT_EQ(status, result.status);
    EXPECT_EQ(0u, result.output.find("vek: ")) << result.output;
    EXPECT_EQ(1, std::ranges::count(result.output, '\n')) << result.output;
    EXPECT_NE(std::string::npos, result.output.find(message)) << result.output;
    EXPECT_EQ(before, countFiles());
}

/** Every test works in a new folder. */
class Vek : public ::testing::Test {
  protected:
    Vek() : folder_(std::filesystem::temp_directory_path() / ("vek_test." + std::to_string(getpid()))) {
        std::filesystem::create_directories(folder_);
        std::filesystem::current_path(folder_);
    }
    ~Vek() override {
        std::filesystem::current_path("/");
        std::filesystem::remove_all(folder_);
    }

    /** Pictures that do not go together: grey.png, and others in colour, of 16 bits, and of another size. */
    static void writeMisfits() {
        writePicture("grey.png", picture(16, 8, 1, 8, 1));
        writePicture("color.png", picture(16, 8, 3, 8, 1));
        writePicture("deep.png", picture(16, 8, 1, 16, 1));
        writePicture("large.png", picture(17, 8, 1, 8, 1));
    }

  private:
    std::filesystem::path folder_;
};
