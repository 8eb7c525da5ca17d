// How the states of pyramid layers are made.
#include "pyramid_layer_state.h"

#include "bind.h"
#include "configured_threads.h"
#include "float_modes.h"
#include "pyramid_layer_rows.h"
#include "state.h"

namespace VEKCV_VARIANT {
namespace {

/** The taps divided by their sum, unless it is 0. The sum of integers is exact. */
template <typename Tap>
void normalise(const Tap* kernel, int32_t kernelSize, float* taps) {
    std::conditional_t<std::is_same_v<Tap, float>, float, int64_t> sum = 0;
    for (ptrdiff_t k = 0; k < kernelSize; ++k)
        sum += kernel[k];
    const float divisor = sum == 0 ? 1.0f : static_cast<float>(sum);
    for (ptrdiff_t k = 0; k < kernelSize; ++k)
        taps[k] = static_cast<float>(kernel[k]) / divisor;
}

/** Makes a state. Its sizes are computed in 64 bits: those that are too large give an error. */
template <typename Tap>
Status makeState(LayerRecord** result, const LayerKind& kind, RoiSize roi, float rate, const Tap* kernel,
                 int32_t kernelSize) {
    const int32_t columns =
        kind.direction == Direction::kDown ? reducedLength(roi.width, rate) : ExpandedSizes::of(roi, rate).most.width;
    const int32_t threads = configuredThreads();
    const int64_t elements = int64_t{columns} * kind.channels, tapBytes = kernelSize * int64_t{sizeof(float)};
    const int64_t tableBytes = elements * int64_t{sizeof(int32_t) + sizeof(float)};
    if (HWY_MAX(tapBytes, tableBytes) > INT32_MAX)  // small enough to compute with
        return StatusSizeError;
    const int64_t scratchBytes = alignUp(layerScratchBytes(kind, roi.width, columns, kernelSize), kBlockAlignment);
    constexpr int64_t kAlignments = 4 * kBlockAlignment;
    if (scratchBytes > INT32_MAX ||
        int64_t{sizeof(LayerRecord)} + kAlignments + tapBytes + tableBytes + threads * scratchBytes > INT32_MAX)
        return StatusSizeError;

    Owned<LayerRecord> state;
    if (Status status = newState(state, StateArray{&LayerRecord::taps, kernelSize},
                                 StateArray{&LayerRecord::elements, static_cast<int32_t>(elements)},
                                 StateArray{&LayerRecord::fractions, static_cast<int32_t>(elements)},
                                 StateArray{&LayerRecord::scratch, static_cast<int32_t>(threads * scratchBytes)}))
        return status;
    state->self = state.get();
    state->kind = kind;
    state->roi = roi;
    state->rate = rate;
    constexpr int32_t kMostExact = 1 << 24;
    const auto wholeRate = static_cast<int32_t>(rate);
    const bool isWhole = kind.direction == Direction::kDown && rate == static_cast<float>(wholeRate);
    state->wholeRate = isWhole && roi.width <= kMostExact ? wholeRate : 0;
    state->kernelSize = kernelSize;
    state->threads = threads;
    state->scratchBytes = scratchBytes;
    normalise(kernel, kernelSize, state->taps);
    ptrdiff_t element = 0;
    for (int32_t x = 0; x < columns; ++x) {
        const auto position = LayerPosition::of(kind.direction, x, rate, roi.width);
        for (int32_t c = 0; c < kind.channels; ++c, ++element) {
            state->elements[element] = position.whole * kind.channels + c;
            state->fractions[element] = position.fraction;
        }
    }
    *result = state.keep();
    return StatusOk;
}

/** Interpolation between two pixels, the only one there is. */
constexpr int32_t kLinear = 2;

template <Direction kDirection, typename T, int32_t kChannels, typename Tap>
Status initAllocLayer(PyramidLayerState** result, RoiSize source, float rate, const Tap* kernel, int32_t kernelSize,
                      int32_t interpolationMode) {
    if (Status status = Check()
                            .pointers(result, kernel)
                            .roi(source)
                            .require(interpolationMode == kLinear, StatusBadArgument)
                            .require(isPyramidRate(rate), StatusBadArgument)
                            .require(kernelSize >= 3 && kernelSize % 2 == 1, StatusBadArgument))
        return status;
    Status status = StatusOk;
    LayerRecord* state = nullptr;
    inUsualModes([&] {
        status = makeState(&state, {kDirection, sizeof(T), kChannels}, source, rate, kernel, kernelSize);
    });
    if (status == StatusOk)
        *result = reinterpret_cast<PyramidLayerState*>(state);
    return status;
}

}  // namespace

VEKCV_BIND(vekiPyramidLayerDownInitAlloc_8u_C1R, initAllocLayer<Direction::kDown, uint8_t, 1>);
VEKCV_BIND(vekiPyramidLayerDownInitAlloc_8u_C3R, initAllocLayer<Direction::kDown, uint8_t, 3>);
VEKCV_BIND(vekiPyramidLayerDownInitAlloc_16u_C1R, initAllocLayer<Direction::kDown, uint16_t, 1>);
VEKCV_BIND(vekiPyramidLayerDownInitAlloc_16u_C3R, initAllocLayer<Direction::kDown, uint16_t, 3>);
VEKCV_BIND(vekiPyramidLayerDownInitAlloc_32f_C1R, initAllocLayer<Direction::kDown, float, 1>);
VEKCV_BIND(vekiPyramidLayerDownInitAlloc_32f_C3R, initAllocLayer<Direction::kDown, float, 3>);
VEKCV_BIND(vekiPyramidLayerDownFree_8u_C1R, freeState);
VEKCV_BIND(vekiPyramidLayerDownFree_8u_C3R, freeState);
VEKCV_BIND(vekiPyramidLayerDownFree_16u_C1R, freeState);
VEKCV_BIND(vekiPyramidLayerDownFree_16u_C3R, freeState);
VEKCV_BIND(vekiPyramidLayerDownFree_32f_C1R, freeState);
VEKCV_BIND(vekiPyramidLayerDownFree_32f_C3R, freeState);

VEKCV_BIND(vekiPyramidLayerUpInitAlloc_8u_C1R, initAllocLayer<Direction::kUp, uint8_t, 1>);
VEKCV_BIND(vekiPyramidLayerUpInitAlloc_8u_C3R, initAllocLayer<Direction::kUp, uint8_t, 3>);
VEKCV_BIND(vekiPyramidLayerUpInitAlloc_16u_C1R, initAllocLayer<Direction::kUp, uint16_t, 1>);
VEKCV_BIND(vekiPyramidLayerUpInitAlloc_16u_C3R, initAllocLayer<Direction::kUp, uint16_t, 3>);
VEKCV_BIND(vekiPyramidLayerUpInitAlloc_32f_C1R, initAllocLayer<Direction::kUp, float, 1>);
VEKCV_BIND(vekiPyramidLayerUpInitAlloc_32f_C3R, initAllocLayer<Direction::kUp, float, 3>);
VEKCV_BIND(vekiPyramidLayerUpFree_8u_C1R, freeState);
VEKCV_BIND(vekiPyramidLayerUpFree_8u_C3R, freeState);
VEKCV_BIND(vekiPyramidLayerUpFree_16u_C1R, freeState);
VEKCV_BIND(vekiPyramidLayerUpFree_16u_C3R, freeState);
VEKCV_BIND(vekiPyramidLayerUpFree_32f_C1R, freeState);
VEKCV_BIND(vekiPyramidLayerUpFree_32f_C3R, freeState);
}  // namespace VEKCV_VARIANT
