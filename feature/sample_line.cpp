// Pixels along a line.
#include "bind.h"
#include "check.h"

namespace VEKCV_VARIANT {
namespace {

/** A line from pixel to pixel: how far it goes along the longer direction and the other one, and in what steps. */
struct Line {
    int64_t major, minor;
    ImagePoint majorStep, minorStep;  // one pixel each

    static Line between(ImagePoint start, ImagePoint end) {
        const int64_t dx = int64_t{end.x} - start.x, dy = int64_t{end.y} - start.y;
        const int64_t ax = dx < 0 ? -dx : dx, ay = dy < 0 ? -dy : dy;
        const ImagePoint along{dx < 0 ? -1 : 1, 0}, across{0, dy < 0 ? -1 : 1};
        return ax <= ay ? Line{ay, ax, across, along} : Line{ax, ay, along, across};
    }
};

bool isIn(RoiSize roi, ImagePoint point) {
    return point.x >= 0 && point.x < roi.width && point.y >= 0 && point.y < roi.height;
}

template <int32_t kChannels, typename T>
void copyAlong(const Line& line, Image<const T, kChannels> image, ImagePoint start, T* out) {
    const auto bytesOf = [&](ImagePoint step) {
        return ptrdiff_t{step.y} * image.step + ptrdiff_t{step.x} * image.kPixelBytes;
    };
    const ptrdiff_t alongMajor = bytesOf(line.majorStep), alongMinor = bytesOf(line.minorStep);
    // Not as a pointer, which would leave the image behind the last sample.
    auto address = reinterpret_cast<uintptr_t>(image.row(start.y) + ptrdiff_t{start.x} * kChannels);
    int64_t error = line.major;
    for (int64_t i = 0; i <= line.major; ++i, out += kChannels) {
        __builtin_memcpy(out, reinterpret_cast<const T*>(address), kChannels * sizeof(T));
        address += static_cast<uintptr_t>(alongMajor);
        error -= 2 * line.minor;
        const int64_t isBelow = error >> 63;  // all bits set where it is
        address += static_cast<uintptr_t>(alongMinor & static_cast<ptrdiff_t>(isBelow));
        error += (2 * line.major) & isBelow;
    }
}

template <int32_t kChannels, typename T>
Status sampleLine(const T* source, int32_t sourceStep, RoiSize roi, T* destination, ImagePoint start, ImagePoint end) {
    const Image<const T, kChannels> image{source, sourceStep};
    const Line line = Line::between(start, end);
    if (Status status = Check()
                            .pointers(image, destination)
                            .roi(roi)
                            .stepLengths(roi.width, image)
                            .require(isIn(roi, start) && isIn(roi, end), StatusOutOfRange)
                            .require(line.major < INT32_MAX, StatusCountOverflow))
        return status;
    copyAlong(line, image, start, destination);
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiSampleLine_8u_C1R, sampleLine<1>);
VEKCV_BIND(vekiSampleLine_8u_C3R, sampleLine<3>);
VEKCV_BIND(vekiSampleLine_16u_C1R, sampleLine<1>);
VEKCV_BIND(vekiSampleLine_16u_C3R, sampleLine<3>);
VEKCV_BIND(vekiSampleLine_32f_C1R, sampleLine<1>);
VEKCV_BIND(vekiSampleLine_32f_C3R, sampleLine<3>);
}  // namespace VEKCV_VARIANT
