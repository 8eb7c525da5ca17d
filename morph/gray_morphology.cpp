// Dilation and erosion with grey structuring elements.
#include "bind.h"
#include "gray_state.h"
#include "parallel.h"

namespace VEKCV_VARIANT {
namespace {

/** A vector of pixels, raised by the height; integers are saturated. */
template <bool kRaises, typename V>
HWY_INLINE V raised(V pixels, V height) {
    if constexpr (hwy::IsFloat<hn::TFromV<V>>())
        return kRaises ? hn::Add(pixels, height) : hn::Sub(pixels, height);
    else
        return kRaises ? hn::SaturatedAdd(pixels, height) : hn::SaturatedSub(pixels, height);
}

/** out[x] = the rank of all rows[k][x], raised in a dilation and lowered in an erosion by the height of the member. */
template <typename Rank, bool kIsDilation, typename T>
HWY_NOINLINE void joinRaised(const T* const* rows, const GrayRecord<T>& state, ptrdiff_t length, T* out) {
    const T* const heights = state.heights;
    const int32_t raising = state.raisingCount, count = state.memberCount;
    forElements<kVectorsAtOnce, T>(
        length, [=](auto d, auto vectors, ptrdiff_t x) __attribute__((always_inline)) {
            using Pixels = Vectors<Rank, decltype(d), vectors>;
            const auto member = [=](int32_t k) __attribute__((always_inline)) {
                const auto height = hn::Set(d, heights[k]);
                Pixels pixels;
                pixels.load(rows[k] + x);
#pragma GCC unroll 4
                for (auto& v : pixels.v)
                    v = Rank::clean(k < raising ? raised<kIsDilation>(v, height) : raised<!kIsDilation>(v, height));
                return pixels;
            };
            Pixels joined = member(0);
            for (int32_t k = 1; k < count; ++k)
                joined.join(member(k));
            joined.store(out + x);
        });
}

constexpr RunLengths kSinglePixels{1, {1}};

template <typename Rank, typename T>
void filterGray(Image<const T> source, Image<T> out, RoiSize roi, const GrayRecord<T>& state, int32_t first,
                int32_t rows, Scratch scratch) {
    constexpr bool kIsDilation = std::is_same_v<Rank, Maximum>;
    RunRows<Rank, T> windows(scratch, roi, 1, state.window, {kSinglePixels, {}, 1});
    const T** const pointers = scratch.take<const T*>(state.memberCount);
    for (int32_t y = first; y < first + rows; ++y) {
        windows.moveTo(Rows<const T>::of(source), y, 1);
        for (int32_t i = 0; i < state.memberCount; ++i)
            pointers[i] = windows(state.members[i], 0);
        if (windows.isCareful() || state.hasInfinite)
            joinRaised<CarefulRank<Rank, T>, kIsDilation>(pointers, state, roi.width, out.row(y));
        else
            joinRaised<Rank, kIsDilation>(pointers, state, roi.width, out.row(y));
    }
}

template <typename Rank, typename T>
Status gray(const T* source, int32_t sourceStep, T* destination, int32_t destinationStep, RoiSize roi,
            int32_t borderType, GrayMorphologyState* memory) {
    const Image<const T> from{source, sourceStep};
    const Image<T> to{destination, destinationStep};
    if (Status status = Check()
                            .pointers(from, to, memory)
                            .roi(roi)
                            .steps(roi.width, from, to)
                            .require(borderType == BorderReplicate, StatusBadArgument))
        return status;
    const auto& state = *recordOf<GrayRecord<T>>(memory);
    if (Status status = checkState(state, kGrayKind<T>, roi))
        return status;
    forThreadStripes(
        isForTeam(roi, kParallelFrom), roi.height,
        [&](int32_t thread, int32_t first, int32_t rows) {
            filterGray<Rank>(from, to, roi, state, first, rows, state.scratchOf(thread));
        },
        state.threads);
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiGrayDilateBorder_8u_C1R, gray<Maximum>);
VEKCV_BIND(vekiGrayDilateBorder_32f_C1R, gray<Maximum>);
VEKCV_BIND(vekiGrayErodeBorder_8u_C1R, gray<Minimum>);
VEKCV_BIND(vekiGrayErodeBorder_32f_C1R, gray<Minimum>);
}  // namespace VEKCV_VARIANT
