// vek undistort: lines that a lens bends become straight.
#include "commands.h"
#include "library_call.h"
#include "numbers.h"
#include "picture_file.h"
#include "work_buffer.h"

namespace {

struct Options {
    std::string input, output, focal, radial;
    std::optional<std::string> centre;
};

using Pair = std::array<float, 2>;

Pair pairFrom(const std::string& option, const std::string& text, const std::string& meaning) {
    const auto pair = numbersFrom<2, float>(text, ',');
    if (!pair)
        throw UsageError(option, text + " is not " + meaning);
    return *pair;
}

Picture undistorted(const Picture& picture, const Options& options) {
    const auto [fx, fy] = pairFrom("--focal", options.focal, "two numbers of pixels, as in 500,500");
    if (fx <= 0 || fy <= 0)
        throw UsageError("--focal", options.focal + " is not above 0");
    const auto [k1, k2] = pairFrom("--radial", options.radial, "two coefficients, as in -0.2,0.05");
    const Pair middle{static_cast<float>(picture.width - 1) / 2, static_cast<float>(picture.height - 1) / 2};
    const auto [cx, cy] =
        options.centre ? pairFrom("--centre", *options.centre, "a column and a row, as in 319.5,239.5") : middle;
    Picture result(picture.width, picture.height, picture.channels, picture.bits);
    const WorkBuffer buffer = workBuffer(vekiUndistortGetSize, picture.size());
    const auto call = [&]<typename T>(const char* name, auto function, T*) {
        callLibrary(name, function, picture.pixels<T>(), picture.step(), result.pixels<T>(), result.step(),
                    picture.size(), fx, fy, cx, cy, k1, k2, buffer.get());
    };
    if (picture.bits == 16)
        call("vekiUndistortRadial_16u_C1R", vekiUndistortRadial_16u_C1R, result.pixels<uint16_t>());
    else if (picture.channels == 3)
        call("vekiUndistortRadial_8u_C3R", vekiUndistortRadial_8u_C3R, result.pixels<uint8_t>());
    else
        call("vekiUndistortRadial_8u_C1R", vekiUndistortRadial_8u_C1R, result.pixels<uint8_t>());
    return result;
}

void undistort(const Options& options) {
    checkPictureName(options.output);
    writePicture(options.output, undistorted(readPicture(options.input), options));
}

}  // namespace

void addUndistort(CLI::App& app) {
    CLI::App* const command = app.add_subcommand("undistort", "Lines that a lens bends become straight");
    command->footer(
        "The pixel of OUT in column x and row y is what IN shows at\n\n"
        "  x + (x - CX) * f, y + (y - CY) * f    with    f = K1 * r2 + K2 * r2 * r2\n"
        "                                        and     r2 = ((x - CX) / FX)^2 + ((y - CY) / FY)^2\n\n"
        "between four pixels, and black where IN shows nothing, as in its last column and row. K1 is\n"
        "negative where a lens bends lines outwards like a barrel, and positive where it bends them inwards.\n"
        "A calibration of the camera gives all of these numbers.");
    const auto options = std::make_shared<Options>();
    command->add_option("IN", options->input, "A picture")->required();
    command->add_option("OUT", options->output, "Where the result goes (.png, .jpg)")->required();
    command->add_option("--focal", options->focal, "FX,FY: the focal lengths in pixels")->required();
    command->add_option("--radial", options->radial, "K1,K2: the radial coefficients")->required();
    command->add_option("--centre,--center", options->centre,
                        "CX,CY: the column and row of the principal point; the middle of IN without it");
    command->callback([=] { undistort(*options); });
}
