#include "structuring_element.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "numbers.h"
#include "picture_file.h"

namespace {

// The fourth power of the largest is far from the limits of 64 bits.
constexpr int32_t kUsualSide = 3, kLargestSide = 9999;

/** Whether the pixel in column x and row y belongs to a shape. */
using IsMember = bool (*)(int64_t x, int64_t y, int64_t width, int64_t height);

const std::map<std::string, IsMember> kShapes = {
    {"rect", [](int64_t, int64_t, int64_t, int64_t) { return true; }},
    {"cross", [](int64_t x, int64_t y, int64_t width, int64_t height) { return x == width / 2 || y == height / 2; }},
    {"ellipse",
     [](int64_t x, int64_t y, int64_t width, int64_t height) {
         // Twice the distances of the pixel's centre from the middle, as parts of the sides and times both sides.
         const int64_t across = (2 * x + 1 - width) * height, down = (2 * y + 1 - height) * width;
         return across * across + down * down <= width * width * height * height;
     }},
};

RoiSize sizeFrom(const std::string& text) {
    const auto sides = numbersFrom<2>(text, 'x');
    if (!sides)
        throw UsageError("--size", text + " is not a width and a height, as in 5x3");
    const auto [width, height] = *sides;
    if (width < 1 || height < 1 || width > kLargestSide || height > kLargestSide)
        throw UsageError("--size", text + " is not from 1x1 to " + std::to_string(kLargestSide) + "x" +
                                       std::to_string(kLargestSide));
    return {width, height};
}

ImagePoint anchorFrom(const std::string& text, RoiSize size) {
    const auto place = numbersFrom<2>(text, ',');
    if (!place)
        throw UsageError("--anchor", text + " is not a column and a row, as in 2,1");
    const auto [x, y] = *place;
    if (x < 0 || y < 0 || x >= size.width || y >= size.height)
        throw UsageError("--anchor", text + " lies outside of the element, whose last pixel is " +
                                         std::to_string(size.width - 1) + "," + std::to_string(size.height - 1));
    return {x, y};
}

std::vector<uint8_t> membersOf(IsMember isMember, RoiSize size) {
    std::vector<uint8_t> members;
    members.reserve(static_cast<size_t>(size.width) * static_cast<size_t>(size.height));
    for (int32_t y = 0; y < size.height; ++y)
        for (int32_t x = 0; x < size.width; ++x)
            members.push_back(isMember(x, y, size.width, size.height));
    return members;
}

Picture readMembers(const std::string& path) {
    Picture picture = readPicture(path);
    if (picture.channels != 1 || picture.bits != 8)
        throw Failure(path, "is " + picture.shape() + "; elements are 8-bit grey pictures");
    if (std::ranges::count(picture.bytes, 0) == std::ssize(picture.bytes))
        throw Failure(path, "is all black, but pixels of the element are not");
    return picture;
}

}  // namespace

void addElementOptions(CLI::App& command, ElementOptions& options) {
    command
        .add_option("--element", options.shape,
                    "rect, cross, ellipse, or an 8-bit grey picture: its pixels that are not black")
        ->capture_default_str();
    command.add_option("--size", options.size,
                       "Width W and height H, as in 5x3; 3x3 without it. A picture has its own");
    command.add_option("--anchor", options.anchor,
                       "Column and row, from 0,0, that lie on the pixel; half of W and of H without it");
}

StructuringElement elementFrom(const ElementOptions& options) {
    StructuringElement element;
    if (const auto shape = kShapes.find(options.shape); shape != kShapes.end()) {
        element.size = options.size ? sizeFrom(*options.size) : RoiSize{kUsualSide, kUsualSide};
        element.members = membersOf(shape->second, element.size);
    } else {
        std::error_code error;
        if (!std::filesystem::exists(options.shape, error))
            throw UsageError("--element", options.shape + " is neither rect, cross, ellipse nor a file");
        if (options.size)
            throw UsageError("--size", "is for rect, cross and ellipse; a picture has its own");
        Picture picture = readMembers(options.shape);
        element.size = picture.size();
        element.members = std::move(picture.bytes);
    }
    element.anchor = options.anchor ? anchorFrom(*options.anchor, element.size)
                                    : ImagePoint{element.size.width / 2, element.size.height / 2};
    return element;
}
