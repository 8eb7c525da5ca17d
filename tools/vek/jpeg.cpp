#include "jpeg.h"

#include <turbojpeg.h>

#include <memory>

namespace {

using Codec = std::unique_ptr<void, int (*)(tjhandle)>;

void require(const Codec& codec, int result) {
    if (result != 0)  // a warning too: of a file that ends early the lower part would be missing
        throw CodecError(std::string("cannot be decoded as JPEG: ") + tjGetErrorStr2(codec.get()));
}

/** Whether a file whose header has been read is coded arithmetically, which the marker of its frame tells. */
bool isArithmetic(const std::vector<uint8_t>& content) {
    for (size_t at = 2; at + 3 < content.size();) {
        const uint8_t marker = content[at + 1];
        if (content[at] != 0xff || marker == 0xff || marker == 0x00) {
            ++at;
            continue;
        }
        // Of the markers from C0 to CF three are not of frames: tables of either coding, and one that is reserved.
        if (marker >= 0xc0 && marker <= 0xcf && marker != 0xc4 && marker != 0xc8 && marker != 0xcc)
            return marker > 0xc8;
        at += 2 + size_t{content[at + 2]} * 256 + content[at + 3];
    }
    return false;
}

}  // namespace

Picture decodeJpeg(const std::vector<uint8_t>& content) {
    const Codec codec(tjInitDecompress(), tjDestroy);
    int width = 0, height = 0, subsampling = 0, colorSpace = 0;
    require(codec, tjDecompressHeader3(codec.get(), content.data(), content.size(), &width, &height, &subsampling,
                                       &colorSpace));
    // A block of 64 pixels takes a bit at least; a size beyond that is a lie, and not worth the memory. Arithmetic
    // coding has no such bound: a picture of one colour takes some hundred bytes, however large it is.
    if (static_cast<size_t>(width) * static_cast<size_t>(height) / 512 > content.size() && !isArithmetic(content))
        throw CodecError("is not a whole JPEG picture: the file is too short for its size");
    const bool grey = subsampling == TJSAMP_GRAY;
    Picture picture = makePicture(width, height, grey ? 1 : 3, 8);
    require(codec, tjDecompress2(codec.get(), content.data(), content.size(), picture.bytes.data(), width,
                                 picture.step(), height, grey ? TJPF_GRAY : TJPF_RGB, TJFLAG_ACCURATEDCT));
    return picture;
}

std::vector<uint8_t> encodeJpeg(const Picture& picture) {
    if (picture.bits != 8)
        throw CodecError("a JPEG picture has 8 bits; write this one as .png");
    constexpr int kQuality = 95;
    const bool grey = picture.channels == 1;
    const Codec codec(tjInitCompress(), tjDestroy);
    unsigned char* buffer = nullptr;
    unsigned long size = 0;
    const int result = tjCompress2(codec.get(), picture.bytes.data(), picture.width, picture.step(), picture.height,
                                   grey ? TJPF_GRAY : TJPF_RGB, &buffer, &size, grey ? TJSAMP_GRAY : TJSAMP_444,
                                   kQuality, TJFLAG_ACCURATEDCT);
    const std::unique_ptr<unsigned char, void (*)(unsigned char*)> owner(buffer, tjFree);
    if (result != 0)
        throw CodecError(std::string("cannot be written as JPEG: ") + tjGetErrorStr2(codec.get()));
    return {buffer, buffer + size};
}
