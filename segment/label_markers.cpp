// Numbers for the connected regions of an image.
#include "bind.h"
#include "check.h"
#include "fill_values.h"
#include "rest.h"

namespace VEKCV_VARIANT {
namespace {

/** What a pixel without a label has. */
template <typename T>
constexpr T kUnlabelled = std::numeric_limits<T>::max();

template <typename T>
void removeLabels(Image<T> markers, RoiSize roi) {
    for (int32_t y = 0; y < roi.height; ++y) {
        T* const row = markers.row(y);
        forHalves(
            hn::ScalableTag<T>(), 0, roi.width, [=](auto d, ptrdiff_t x) __attribute__((always_inline)) {
                const auto isBackground = hn::Eq(hn::LoadU(d, row + x), hn::Zero(d));
                hn::StoreU(hn::IfThenZeroElse(isBackground, hn::Set(d, kUnlabelled<T>)), d, row + x);
            });
    }
}

/** The first pixel from x on that has no label; the width where there is none. */
template <typename T>
HWY_INLINE int32_t nextUnlabelled(const T* row, int32_t x, int32_t width) {
    const RowOfValues<T, 1, Equal<T, 1>> pixels({{{kUnlabelled<T>}}}, row, width);
    while (x < width) {
        const Block block = pixels.block(Blocks<T>::from(x, width));
        const uint64_t bits = block.starts >> (x - block.base);
        if (bits != 0)
            return x + __builtin_ctzll(bits);
        x = block.base + Blocks<T>::kLength;
    }
    return width;
}

/** Gives each region the next label, and gives their number. */
template <typename T>
int32_t labelRegions(Image<T> markers, RoiSize roi, int32_t minLabel, int32_t maxLabel, int32_t reach,
                     uint8_t* buffer) {
    int32_t count = 0, label = minLabel;
    for (int32_t y = 0; y < roi.height; ++y)
        for (int32_t x = 0; (x = nextUnlabelled(markers.row(y), x, roi.width)) < roi.width; ++x) {
            const Equal<T, 1> unlabelled{{{kUnlabelled<T>}}};
            FillByValue fill(markers, roi.width, unlabelled, {{static_cast<T>(label)}});
            walk(fill, roi, {x, y}, reach, RunStack(buffer, RunStack::bytes(roi)));
            ++count;
            label = label < maxLabel ? label + 1 : minLabel;
        }
    return count;
}

template <typename T>
Status labelMarkers(T* markers, int32_t markersStep, RoiSize roi, int32_t minLabel, int32_t maxLabel, int32_t norm,
                    int32_t* labelCount, uint8_t* buffer) {
    const Image<T> image{markers, markersStep};
    if (Status status = Check()
                            .pointers(image, labelCount, buffer)
                            .roi(roi)
                            .steps(roi.width, image)
                            .require(minLabel >= 1 && maxLabel < kUnlabelled<T>, StatusBadArgument)
                            .require(minLabel <= maxLabel, StatusBadArgument)
                            .require(norm == NormInf || norm == NormL1, StatusBadArgument)
                            .require(RunStack::bytes(roi) <= INT32_MAX, StatusSizeError))
        return status;
    removeLabels(image, roi);
    *labelCount = labelRegions(image, roi, minLabel, maxLabel, norm == NormInf ? 1 : 0, buffer);
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiLabelMarkersGetBufferSize_8u_C1R, roiBufferSize<RunStack::bytes>);
VEKCV_BIND(vekiLabelMarkersGetBufferSize_16u_C1R, roiBufferSize<RunStack::bytes>);
VEKCV_BIND(vekiLabelMarkers_8u_C1IR, labelMarkers);
VEKCV_BIND(vekiLabelMarkers_16u_C1IR, labelMarkers);
}  // namespace VEKCV_VARIANT
