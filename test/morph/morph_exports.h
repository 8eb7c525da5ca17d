// The exports of rank filters and morphology by element type and layout, and states in memory that is watched.
#pragma once

#include <gtest/gtest.h>

#include <utility>

#include "arguments.h"
#include "elements.h"
#include "regions.h"
#include "test/exports/faults.h"

namespace morph {

/** The functions that make one kind of states. */
template <auto kGetSize, auto kInit, auto kInitAlloc, auto kFree>
struct StateKind;

template <typename StateType, typename Region, typename N, Status (*kGetSize)(Region, const N*, RoiSize, int32_t*),
          Status (*kInit)(StateType*, Region, const N*, RoiSize, ImagePoint),
          Status (*kInitAlloc)(StateType**, Region, const N*, RoiSize, ImagePoint), Status (*kFree)(StateType*)>
struct StateKind<kGetSize, kInit, kInitAlloc, kFree> {
    using State = StateType;
    using Number = N;
    using Structure = Element<N>;
    static constexpr bool kServesAnyHeight = std::is_same_v<Region, int32_t>;

    static Status getSize(RoiSize roi, const Number* mask, RoiSize maskSize, int32_t* size) {
        return kGetSize(region(roi), mask, maskSize, size);
    }
    static Status init(State* state, RoiSize roi, const Number* mask, RoiSize maskSize, ImagePoint anchor) {
        return kInit(state, region(roi), mask, maskSize, anchor);
    }
    static Status initAlloc(State** state, RoiSize roi, const Number* mask, RoiSize maskSize, ImagePoint anchor) {
        return kInitAlloc(state, region(roi), mask, maskSize, anchor);
    }
    static Status release(State* state) { return kFree(state); }

    /** A state that takes all of its memory, which ends where memory ends or begins at an odd address. */
    static TestImage<uint8_t> make(RoiSize roi, const Structure& element, Layout layout = {}) {
        int32_t size = 0;
        EXPECT_EQ(StatusOk, getSize(roi, element.numbers.data(), element.size, &size));
        const auto memory = workBuffer(size, layout);
        EXPECT_EQ(StatusOk, init(in(memory), roi, element.numbers.data(), element.size, element.anchor));
        return memory;
    }
    static State* in(const TestImage<uint8_t>& memory) { return reinterpret_cast<State*>(memory.data()); }

  private:
    static Region region(RoiSize roi) {
        if constexpr (kServesAnyHeight)
            return roi.width;
        else
            return roi;
    }
};

/** The exports for elements of type T with kChannels channels. */
template <typename T, int kChannels>
struct Exports;

// A macro, as nothing else makes names.
#define MORPH_STATE_KIND(family, form, free) \
    StateKind<&family##GetSize_##form, &family##Init_##form, &family##InitAlloc_##form, &free>
#define MORPH_EXPORTS(T, channels, form)                                                              \
    template <>                                                                                       \
    struct Exports<T, channels> {                                                                     \
        using Pixel = T;                                                                              \
        static constexpr int kChannels = channels;                                                    \
        static constexpr auto kFilterMin = &vekiFilterMinBorderReplicate_##form;                      \
        static constexpr auto kFilterMax = &vekiFilterMaxBorderReplicate_##form;                      \
        static constexpr auto kFilterMinSize = &vekiFilterMinGetBufferSize_##form;                    \
        static constexpr auto kFilterMaxSize = &vekiFilterMaxGetBufferSize_##form;                    \
        using Steps = MORPH_STATE_KIND(vekiMorphology, form, vekiMorphologyFree);                     \
        static constexpr auto kErode = &vekiErodeBorderReplicate_##form;                              \
        static constexpr auto kDilate = &vekiDilateBorderReplicate_##form;                            \
        using Compounds = MORPH_STATE_KIND(vekiMorphologyCompound, form, vekiMorphologyCompoundFree); \
        static constexpr auto kOpen = &vekiMorphOpenBorderReplicate_##form;                           \
        static constexpr auto kClose = &vekiMorphCloseBorderReplicate_##form;                         \
        static constexpr auto kTopHat = &vekiMorphTopHatBorderReplicate_##form;                       \
        static constexpr auto kBlackHat = &vekiMorphBlackHatBorderReplicate_##form;                   \
        static constexpr auto kGradient = &vekiMorphGradientBorderReplicate_##form;                   \
    };
MORPH_EXPORTS(uint8_t, 1, 8u_C1R)
MORPH_EXPORTS(uint8_t, 3, 8u_C3R)
MORPH_EXPORTS(uint8_t, 4, 8u_C4R)
MORPH_EXPORTS(float, 1, 32f_C1R)
MORPH_EXPORTS(float, 3, 32f_C3R)
MORPH_EXPORTS(float, 4, 32f_C4R)
#undef MORPH_EXPORTS

template <typename T>
using Gray = std::conditional_t<std::is_same_v<T, float>,
                                MORPH_STATE_KIND(vekiGrayMorphology, 32f_C1R, vekiGrayMorphologyFree_32f_C1R),
                                MORPH_STATE_KIND(vekiGrayMorphology, 8u_C1R, vekiGrayMorphologyFree_8u_C1R)>;
#undef MORPH_STATE_KIND

/** What typed tests are instantiated with. */
using AllForms = ::testing::Types<Exports<uint8_t, 1>, Exports<uint8_t, 3>, Exports<uint8_t, 4>, Exports<float, 1>,
                                  Exports<float, 3>, Exports<float, 4>>;

template <typename T, typename State>
using Operation = Status (*)(const T*, int32_t, T*, int32_t, RoiSize, int32_t, State*);

/** The result of an operation that succeeds, in an image of the given layout. */
template <typename T, typename State>
TestImage<T> apply(Operation<T, State> operation, const TestImage<T>& source, State* state, Layout layout = {}) {
    const TestImage<T> out(source.roi(), layout, source.elements() / source.roi().width);
    EXPECT_EQ(StatusOk, callWith(operation, source, out, source.roi(), int32_t{BorderReplicate}, state));
    return out;
}

/** Regions that are shared, of many rows and of few. */
inline constexpr RoiSize kLargeRegions[] = {{kLargeWidth, largeHeight(262144)}, {52429, 5}};

/** check(state, layout) with more, fewer and as many threads as were configured when the state was made. */
template <typename Kind, typename Check>
void forThreads(RoiSize roi, const typename Kind::Structure& element, Check check) {
    using Threads = std::pair<int, int>;
    for (const auto& [made, now] : {Threads{1, 1}, {3, 3}, {2, 7}, {4, 2}}) {
        SCOPED_TRACE(::testing::Message()
                     << roi.width << " x " << roi.height << ", " << made << " threads, then " << now);
        const ThreadCount before(made);
        const auto memory = Kind::make(roi, element);
        const ThreadCount after(now);
        check(Kind::in(memory), kLargeLayouts[now % 2]);
        ASSERT_TRUE(memory.guardsIntact());
    }
}

/** What the families refuse. Masks have 3 x 3 members where it is not the mask that is wrong. */
inline const exports::FaultRule kBadWidths{"roiWidth", StatusSizeError, {0, -1, INT_MIN}, exports::Behind::kSizes};
inline const exports::FaultRule kBadRegions = exports::badSize("maxRoi");
inline const exports::FaultRule kBadMaskSizes{"maskSize", StatusMaskSizeError,
                                              std::initializer_list<RoiSize>{{0, 1}, {1, 0}, {-1, 3}, {3, INT_MIN}},
                                              exports::Behind::kSizes};
inline const exports::FaultRule kBadAnchors{
    "anchor", StatusAnchorError,
    std::initializer_list<ImagePoint>{{-1, 0}, {0, -1}, {3, 1}, {1, 3}, {INT_MAX, 0}, {0, INT_MAX}},
    exports::Behind::kSizes};
inline const exports::FaultRule kBadBorders{"borderType", StatusBadArgument, {0, 2, 3, 4, 6, -1, 0x11, INT_MAX}};

}  // namespace morph
