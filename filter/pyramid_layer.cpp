// Pyramid layers: images of the next smaller or larger level.
#include "bind.h"
#include "parallel.h"
#include "pyramid_layer_rows.h"

namespace VEKCV_VARIANT {
namespace {

/** Smoothing takes longer for each pixel than most operations. */
constexpr ParallelFrom kLayerParallelFrom{65536};

/** Whether a destination has a size that the direction makes of a source. */
bool fits(Direction direction, RoiSize source, RoiSize destination, float rate) {
    const RoiSize reduced = reducedSize(source, rate);
    const auto expanded = ExpandedSizes::of(source, rate);
    const RoiSize least = direction == Direction::kDown ? reduced : expanded.least;
    const RoiSize most = direction == Direction::kDown ? reduced : expanded.most;
    return destination.width >= least.width && destination.width <= most.width && destination.height >= least.height &&
           destination.height <= most.height;
}

/** The images of a call. */
template <typename T, int32_t kChannels>
struct LayerImages {
    Image<const T, kChannels> source;
    RoiSize sourceRoi;
    Image<T, kChannels> destination;
    RoiSize destinationRoi;
};

/** Writes a stripe of rows. */
template <Direction kDirection, typename T, int32_t kChannels>
void writeLayer(const LayerImages<T, kChannels>& images, const LayerRecord& state, int32_t thread, int32_t first,
                int32_t rows) {
    const int32_t columns = images.destinationRoi.width, sourceHeight = images.sourceRoi.height;
    const ptrdiff_t length = ptrdiff_t{columns} * kChannels;
    Scratch scratch = state.scratchOf(thread);
    const auto writeRows = [&](auto& lastStep) {
        for (int32_t y = first; y < first + rows; ++y)
            lastStep.write(y, images.destination.row(y));
    };
    using Along = LayerRow<kDirection, T, kChannels>;
    Along along(scratch, state, images.source, images.sourceRoi.width, columns);
    if constexpr (kDirection == Direction::kDown) {
        SmoothedRows<Along> smoothed(scratch, state, along, sourceHeight, length);
        InterpolatedRows<kDirection, SmoothedRows<Along>> interpolated(scratch, state, smoothed, sourceHeight, length);
        writeRows(interpolated);
    } else {
        InterpolatedRows<kDirection, Along> interpolated(scratch, state, along, sourceHeight, length);
        SmoothedRows<InterpolatedRows<kDirection, Along>> smoothed(scratch, state, interpolated,
                                                                   images.destinationRoi.height, length);
        writeRows(smoothed);
    }
}

template <Direction kDirection, typename T, int32_t kChannels>
Status layer(const T* source, int32_t sourceStep, RoiSize sourceRoi, T* destination, int32_t destinationStep,
             RoiSize destinationRoi, PyramidLayerState* memory) {
    const LayerImages<T, kChannels> images{
        {source, sourceStep}, sourceRoi, {destination, destinationStep}, destinationRoi};
    if (Status status = Check()
                            .pointers(images.source, images.destination, memory)
                            .roi(sourceRoi)
                            .stepLengths(sourceRoi.width, images.source)
                            .stepLengths(destinationRoi.width, images.destination)
                            .stepMultiples(images.source, images.destination))
        return status;
    const auto& state = *reinterpret_cast<const LayerRecord*>(memory);
    if (Status status =
            Check()
                .require(state.self == &state && state.kind == LayerKind{kDirection, sizeof(T), kChannels},
                         StatusBadArgument)
                .require(sourceRoi.width <= state.roi.width && sourceRoi.height <= state.roi.height, StatusSizeError))
        return status;
    bool isOk = false;
    inUsualModes([&] {
        isOk = fits(kDirection, sourceRoi, destinationRoi, state.rate);
        if (!isOk)
            return;
        forThreadStripes(
            isForTeam(kDirection == Direction::kDown ? sourceRoi : destinationRoi, kLayerParallelFrom),
            destinationRoi.height,
            [&](int32_t thread, int32_t first, int32_t rows) {
                writeLayer<kDirection>(images, state, thread, first, rows);
            },
            state.threads);
    });
    return isOk ? StatusOk : StatusSizeError;
}

}  // namespace

VEKCV_BIND(vekiPyramidLayerDown_8u_C1R, layer<Direction::kDown, uint8_t, 1>);
VEKCV_BIND(vekiPyramidLayerDown_8u_C3R, layer<Direction::kDown, uint8_t, 3>);
VEKCV_BIND(vekiPyramidLayerDown_16u_C1R, layer<Direction::kDown, uint16_t, 1>);
VEKCV_BIND(vekiPyramidLayerDown_16u_C3R, layer<Direction::kDown, uint16_t, 3>);
VEKCV_BIND(vekiPyramidLayerDown_32f_C1R, layer<Direction::kDown, float, 1>);
VEKCV_BIND(vekiPyramidLayerDown_32f_C3R, layer<Direction::kDown, float, 3>);
VEKCV_BIND(vekiPyramidLayerUp_8u_C1R, layer<Direction::kUp, uint8_t, 1>);
VEKCV_BIND(vekiPyramidLayerUp_8u_C3R, layer<Direction::kUp, uint8_t, 3>);
VEKCV_BIND(vekiPyramidLayerUp_16u_C1R, layer<Direction::kUp, uint16_t, 1>);
VEKCV_BIND(vekiPyramidLayerUp_16u_C3R, layer<Direction::kUp, uint16_t, 3>);
VEKCV_BIND(vekiPyramidLayerUp_32f_C1R, layer<Direction::kUp, float, 1>);
VEKCV_BIND(vekiPyramidLayerUp_32f_C3R, layer<Direction::kUp, float, 3>);
}  // namespace VEKCV_VARIANT
