#include "picture_file.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "jpeg.h"
#include "output_file.h"
#include "png_format.h"
#include "read_file.h"

namespace {

enum class Format { kPng, kJpeg, kNone };

Format formatOfContent(const std::vector<uint8_t>& content) {
    const auto beginsWith = [&](std::initializer_list<uint8_t> bytes) {
        return content.size() >= bytes.size() && std::equal(bytes.begin(), bytes.end(), content.begin());
    };
    if (beginsWith({0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'}))
        return Format::kPng;
    return beginsWith({0xff, 0xd8, 0xff}) ? Format::kJpeg : Format::kNone;
}

Format formatOfName(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (extension == ".png")
        return Format::kPng;
    return extension == ".jpg" || extension == ".jpeg" ? Format::kJpeg : Format::kNone;
}

/** The content of a picture file. Of any other file only the beginning is read. */
std::vector<uint8_t> readPictureFile(const std::string& path) {
    std::vector<uint8_t> content =
        readFile(path, [](const auto& beginning) { return formatOfContent(beginning) != Format::kNone; });
    if (content.empty())
        throw Failure(path, "is empty");
    return content;
}

}  // namespace

bool isPictureFile(const std::string& path) {
    return formatOfContent(readPictureFile(path)) != Format::kNone;
}

Picture readPicture(const std::string& path) {
    const std::vector<uint8_t> content = readPictureFile(path);
    try {
        switch (formatOfContent(content)) {
            case Format::kPng:
                return decodePng(content);
            case Format::kJpeg:
                return decodeJpeg(content);
            case Format::kNone:
                break;
        }
    } catch (const CodecError& error) {
        throw Failure(path, error.what());
    } catch (const std::bad_alloc&) {
        throw Failure(path, "is too large for the memory");
    }
    throw Failure(path, "is not a PNG or JPEG picture");
}

void checkEightBit(const std::string& path, const Picture& picture, const std::string& purpose) {
    if (picture.bits != 8)
        throw Failure(path, "is " + picture.shape() + "; " + purpose + " 8-bit pictures");
}

Picture readEightBit(const std::string& path, const std::string& purpose) {
    Picture picture = readPicture(path);
    checkEightBit(path, picture, purpose);
    return picture;
}

void checkSameShape(const std::string& path, const Picture& picture, const std::string& otherPath,
                    const Picture& other) {
    if (!picture.hasShapeOf(other))
        throw Failure(path, "is " + picture.shape() + ", but " + otherPath + " is " + other.shape());
}

void checkPictureName(const std::string& path) {
    if (formatOfName(path) == Format::kNone)
        throw UsageError(path, "pictures are written as .png, .jpg or .jpeg");
}

void writePicture(const std::string& path, const Picture& picture) {
    checkPictureName(path);
    try {
        writeFile(path, formatOfName(path) == Format::kPng ? encodePng(picture) : encodeJpeg(picture));
    } catch (const CodecError& error) {
        throw Failure(path, error.what());
    }
}
