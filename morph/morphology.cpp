// Dilation, erosion and the compound operations, with flat structuring elements.
#include "bind.h"
#include "morphology_state.h"
#include "pixelwise.h"

namespace VEKCV_VARIANT {
namespace {

/** What becomes of the result of two steps, or of two results. */
enum class Difference { kNone, kSourceMinusResult, kResultMinusSource };

/** The arguments of an operation. */
template <typename T>
struct Operands {
    Rows<const T> source;
    Rows<T> out;
    RoiSize roi;
    int32_t channels;
    const FlatElement& element;
};

/** What an operation does to a stripe of rows. */
template <typename T>
using Stripe = void (*)(const Operands<T>& operands, int32_t first, int32_t rows, Scratch scratch);

template <typename Rank, typename T>
void step(const Operands<T>& operands, int32_t first, int32_t rows, Scratch scratch) {
    ElementFilter<Rank, T> filter(scratch, operands.roi, operands.channels, operands.element, Side::kGiven);
    filter.filter(operands.source, first, rows, operands.out);
}

/** out[x] = a[x] - b[x]; integers are saturated. `out` may be either of them. */
template <typename T>
void subtractRow(const T* a, const T* b, ptrdiff_t length, T* out) {
    writeRow<Stores::kCached>(
        out, length, [=](auto d, ptrdiff_t x) __attribute__((always_inline)) {
            const auto minuend = hn::LoadU(d, a + x), subtrahend = hn::LoadU(d, b + x);
            if constexpr (std::is_floating_point_v<T>)
                return hn::Sub(minuend, subtrahend);
            else
                return hn::SaturatedSub(minuend, subtrahend);
        });
}

/** The rows between the two steps of a compound operation, and the scratch memory of each. */
template <typename T>
struct CompoundMemory {
    Scratch first, second;
    Rows<T> band;

    CompoundMemory(Scratch scratch, const Operands<T>& operands) : first(nullptr, 0), second(nullptr, 0) {
        const int32_t height = operands.element.window.size.height;
        const auto stride = static_cast<int32_t>(Band<T>::stride(operands.roi.width, operands.channels));
        const int32_t rows = static_cast<int32_t>(Band<T>::rows(height));
        band = {scratch.take<T>(rows * (stride / static_cast<ptrdiff_t>(sizeof(T)))), stride, rows};
        const int64_t half = scratch.bytes() / 2;
        first = Scratch(scratch.take<uint8_t>(half), half);
        second = scratch;
    }
};

/** Opening with a minimum first, closing with a maximum first. */
template <typename First, typename Second, Difference kDifference, typename T>
void twoSteps(const Operands<T>& operands, int32_t first, int32_t rows, Scratch scratch) {
    const auto [source, out, roi, channels, element] = operands;
    const CompoundMemory<T> memory(scratch, operands);
    ElementFilter<First, T> one(memory.first, roi, channels, element, Side::kGiven);
    ElementFilter<Second, T> two(memory.second, roi, channels, element, Side::kMirrored);
    const Window mirrored = windowOf(element.window, Side::kMirrored);
    const int32_t above = mirrored.anchor.y, below = mirrored.size.height - 1 - above;
    const int32_t block = compoundRows(mirrored.size.height);
    const Rows<T>& band = memory.band;
    int32_t done = HWY_MAX(0, first - above);  // rows of the first step
    for (int32_t y = first, end = first + rows; y < end; y += block) {
        const int32_t results = HWY_MIN(block, end - y);
        const int32_t needed = results + below < roi.height - y ? y + results + below : roi.height;
        if (needed > done)
            one.filter(source, done, needed - done, band);
        done = HWY_MAX(done, needed);
        two.filter(band.asSource(), y, results, out);
        if constexpr (kDifference != Difference::kNone)
            for (int32_t k = y; k < y + results; ++k) {
                const T *const original = source[k], *const result = out[k];
                constexpr bool kSourceFirst = kDifference == Difference::kSourceMinusResult;
                subtractRow(kSourceFirst ? original : result, kSourceFirst ? result : original,
                            ptrdiff_t{roi.width} * channels, out[k]);
            }
    }
}

template <typename T>
void gradient(const Operands<T>& operands, int32_t first, int32_t rows, Scratch scratch) {
    const auto [source, out, roi, channels, element] = operands;
    const CompoundMemory<T> memory(scratch, operands);
    ElementFilter<Maximum, T> dilation(memory.first, roi, channels, element, Side::kGiven);
    ElementFilter<Minimum, T> erosion(memory.second, roi, channels, element, Side::kGiven);
    const int32_t block = compoundRows(element.window.size.height);
    for (int32_t y = first, end = first + rows; y < end; y += block) {
        const int32_t results = HWY_MIN(block, end - y);
        dilation.filter(source, y, results, out);
        erosion.filter(source, y, results, memory.band);
        for (int32_t k = y; k < y + results; ++k)
            subtractRow<T>(out[k], memory.band[k], ptrdiff_t{roi.width} * channels, out[k]);
    }
}

/** What all operations with flat elements share: checks, and threads. */
template <typename T>
HWY_NOINLINE Status operate(const StateKind& kind, Stripe<T> stripe, const T* source, int32_t sourceStep,
                            T* destination, int32_t destinationStep, RoiSize roi, int32_t borderType,
                            MorphologyState* memory) {
    const Image<const T> from{source, sourceStep};
    const Image<T> to{destination, destinationStep};
    if (Status status = Check()
                            .pointers(from, to, memory)
                            .roi(roi)
                            .steps(int64_t{roi.width} * kind.channels, from, to)
                            .require(borderType == BorderReplicate, StatusBadArgument))
        return status;
    const auto& state = *recordOf<FlatRecord>(memory);
    if (Status status = checkState(state, kind, roi))
        return status;
    const Operands<T> operands{Rows<const T>::of(from), Rows<T>::of(to), roi, kind.channels, state.element};
    forThreadStripes(
        isForTeam(roi, kParallelFrom), roi.height,
        [&](int32_t thread, int32_t first, int32_t rows) { stripe(operands, first, rows, state.scratchOf(thread)); },
        state.threads);
    return StatusOk;
}

template <typename T, int32_t kChannels, Purpose kPurpose, Stripe<T> kStripe>
Status flat(const T* source, int32_t sourceStep, T* destination, int32_t destinationStep, RoiSize roi,
            int32_t borderType, MorphologyState* state) {
    return operate<T>({kPurpose, sizeof(T), kChannels}, kStripe, source, sourceStep, destination, destinationStep, roi,
                      borderType, state);
}

// The operations, for elements of type T with kChannels channels.

template <typename T, int32_t kChannels>
constexpr auto dilate = flat<T, kChannels, Purpose::kSteps, step<Maximum, T>>;
template <typename T, int32_t kChannels>
constexpr auto erode = flat<T, kChannels, Purpose::kSteps, step<Minimum, T>>;
template <typename T, int32_t kChannels>
constexpr auto open = flat<T, kChannels, Purpose::kCompounds, twoSteps<Minimum, Maximum, Difference::kNone, T>>;
template <typename T, int32_t kChannels>
constexpr auto close = flat<T, kChannels, Purpose::kCompounds, twoSteps<Maximum, Minimum, Difference::kNone, T>>;
template <typename T, int32_t kChannels>
constexpr auto topHat =
    flat<T, kChannels, Purpose::kCompounds, twoSteps<Minimum, Maximum, Difference::kSourceMinusResult, T>>;
template <typename T, int32_t kChannels>
constexpr auto blackHat =
    flat<T, kChannels, Purpose::kCompounds, twoSteps<Maximum, Minimum, Difference::kResultMinusSource, T>>;
template <typename T, int32_t kChannels>
constexpr auto morphGradient = flat<T, kChannels, Purpose::kCompounds, gradient<T>>;

}  // namespace

VEKCV_BIND(vekiDilateBorderReplicate_8u_C1R, dilate<uint8_t, 1>);
VEKCV_BIND(vekiDilateBorderReplicate_8u_C3R, dilate<uint8_t, 3>);
VEKCV_BIND(vekiDilateBorderReplicate_8u_C4R, dilate<uint8_t, 4>);
VEKCV_BIND(vekiDilateBorderReplicate_32f_C1R, dilate<float, 1>);
VEKCV_BIND(vekiDilateBorderReplicate_32f_C3R, dilate<float, 3>);
VEKCV_BIND(vekiDilateBorderReplicate_32f_C4R, dilate<float, 4>);

VEKCV_BIND(vekiErodeBorderReplicate_8u_C1R, erode<uint8_t, 1>);
VEKCV_BIND(vekiErodeBorderReplicate_8u_C3R, erode<uint8_t, 3>);
VEKCV_BIND(vekiErodeBorderReplicate_8u_C4R, erode<uint8_t, 4>);
VEKCV_BIND(vekiErodeBorderReplicate_32f_C1R, erode<float, 1>);
VEKCV_BIND(vekiErodeBorderReplicate_32f_C3R, erode<float, 3>);
VEKCV_BIND(vekiErodeBorderReplicate_32f_C4R, erode<float, 4>);

VEKCV_BIND(vekiMorphOpenBorderReplicate_8u_C1R, open<uint8_t, 1>);
VEKCV_BIND(vekiMorphOpenBorderReplicate_8u_C3R, open<uint8_t, 3>);
VEKCV_BIND(vekiMorphOpenBorderReplicate_8u_C4R, open<uint8_t, 4>);
VEKCV_BIND(vekiMorphOpenBorderReplicate_32f_C1R, open<float, 1>);
VEKCV_BIND(vekiMorphOpenBorderReplicate_32f_C3R, open<float, 3>);
VEKCV_BIND(vekiMorphOpenBorderReplicate_32f_C4R, open<float, 4>);

VEKCV_BIND(vekiMorphCloseBorderReplicate_8u_C1R, close<uint8_t, 1>);
VEKCV_BIND(vekiMorphCloseBorderReplicate_8u_C3R, close<uint8_t, 3>);
VEKCV_BIND(vekiMorphCloseBorderReplicate_8u_C4R, close<uint8_t, 4>);
VEKCV_BIND(vekiMorphCloseBorderReplicate_32f_C1R, close<float, 1>);
VEKCV_BIND(vekiMorphCloseBorderReplicate_32f_C3R, close<float, 3>);
VEKCV_BIND(vekiMorphCloseBorderReplicate_32f_C4R, close<float, 4>);

VEKCV_BIND(vekiMorphTopHatBorderReplicate_8u_C1R, topHat<uint8_t, 1>);
VEKCV_BIND(vekiMorphTopHatBorderReplicate_8u_C3R, topHat<uint8_t, 3>);
VEKCV_BIND(vekiMorphTopHatBorderReplicate_8u_C4R, topHat<uint8_t, 4>);
VEKCV_BIND(vekiMorphTopHatBorderReplicate_32f_C1R, topHat<float, 1>);
VEKCV_BIND(vekiMorphTopHatBorderReplicate_32f_C3R, topHat<float, 3>);
VEKCV_BIND(vekiMorphTopHatBorderReplicate_32f_C4R, topHat<float, 4>);

VEKCV_BIND(vekiMorphBlackHatBorderReplicate_8u_C1R, blackHat<uint8_t, 1>);
VEKCV_BIND(vekiMorphBlackHatBorderReplicate_8u_C3R, blackHat<uint8_t, 3>);
VEKCV_BIND(vekiMorphBlackHatBorderReplicate_8u_C4R, blackHat<uint8_t, 4>);
VEKCV_BIND(vekiMorphBlackHatBorderReplicate_32f_C1R, blackHat<float, 1>);
VEKCV_BIND(vekiMorphBlackHatBorderReplicate_32f_C3R, blackHat<float, 3>);
VEKCV_BIND(vekiMorphBlackHatBorderReplicate_32f_C4R, blackHat<float, 4>);

VEKCV_BIND(vekiMorphGradientBorderReplicate_8u_C1R, morphGradient<uint8_t, 1>);
VEKCV_BIND(vekiMorphGradientBorderReplicate_8u_C3R, morphGradient<uint8_t, 3>);
VEKCV_BIND(vekiMorphGradientBorderReplicate_8u_C4R, morphGradient<uint8_t, 4>);
VEKCV_BIND(vekiMorphGradientBorderReplicate_32f_C1R, morphGradient<float, 1>);
VEKCV_BIND(vekiMorphGradientBorderReplicate_32f_C3R, morphGradient<float, 3>);
VEKCV_BIND(vekiMorphGradientBorderReplicate_32f_C4R, morphGradient<float, 4>);
}  // namespace VEKCV_VARIANT
