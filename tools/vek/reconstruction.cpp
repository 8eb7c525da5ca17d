#include "reconstruction.h"

#include <algorithm>

#include "library_call.h"
#include "neighbors.h"
#include "work_buffer.h"

namespace {

template <typename T>
void reconstruct(const char* name, auto function, auto bufferSize, Picture& marker, const Picture& mask,
                 int32_t neighbors) {
    const WorkBuffer buffer = workBuffer(bufferSize, mask.size());
    callLibrary(name, function, mask.pixels<T>(), mask.step(), marker.pixels<T>(), marker.step(), mask.size(),
                normOf(neighbors), buffer.get());
}

/** The edge pixels of a picture, and white inside. */
Picture frameOf(const Picture& picture) {
    Picture frame = picture;
    for (int32_t y = 1; y < picture.height - 1; ++y)
        std::fill_n(frame.pixels<uint8_t>() + ptrdiff_t{y} * frame.step() + 1, std::max(picture.width - 2, 0),
                    uint8_t{255});
    return frame;
}

}  // namespace

void reconstructByDilation(Picture& marker, const Picture& mask, int32_t neighbors) {
    if (mask.bits == 16)
        reconstruct<uint16_t>("vekiMorphReconstructDilate_16u_C1IR", vekiMorphReconstructDilate_16u_C1IR,
                              vekiMorphReconstructDilateGetBufferSize_16u_C1R, marker, mask, neighbors);
    else
        reconstruct<uint8_t>("vekiMorphReconstructDilate_8u_C1IR", vekiMorphReconstructDilate_8u_C1IR,
                             vekiMorphReconstructDilateGetBufferSize_8u_C1R, marker, mask, neighbors);
}

void reconstructByErosion(Picture& marker, const Picture& mask, int32_t neighbors) {
    reconstruct<uint8_t>("vekiMorphReconstructErode_8u_C1IR", vekiMorphReconstructErode_8u_C1IR,
                         vekiMorphReconstructErodeGetBufferSize_8u_C1R, marker, mask, neighbors);
}

Picture withHolesFilled(const Picture& picture, int32_t neighbors) {
    Picture marker = frameOf(picture);
    reconstructByErosion(marker, picture, neighbors);
    return marker;
}
