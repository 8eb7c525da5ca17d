// Sobel, Scharr and Laplace filters: first and second derivatives with smoothing across.
#include "bind.h"
#include "filter_stripes.h"
#include "taps.h"

namespace VEKCV_VARIANT {
namespace {

// The masks of the filters, and the parts of their work buffers that do not depend on the image.

struct Buffer {
    template <typename Result>
    static constexpr int32_t kFixedBytes = sizeof(Result) == 1 ? 184 : 248;
    template <typename Result>
    static constexpr int32_t kMoreBytes = 0;
};

struct SobelHoriz : Buffer {
    template <typename Result>
    static constexpr int32_t kMoreBytes = sizeof(Result) == 2 ? 32 : 0;

    using Small = Separable<Smooth3, Difference3<1>>;
    using Large = Separable<Smooth5, Difference5<1>>;
};
struct SobelVert : Buffer {
    template <typename Result>
    static constexpr int32_t kFixedBytes = sizeof(Result) == 1   ? 184
                                           : sizeof(Result) == 2 ? 216
                                                                 : 248;

    using Small = Separable<Difference3<-1>, Smooth3>;
    using Large = Separable<Difference5<-1>, Smooth5>;
};
struct SobelNegVert : Buffer {
    using Small = Separable<Difference3<1>, Smooth3>;
    using Large = Separable<Difference5<1>, Smooth5>;
};
struct SobelHorizSecond : Buffer {
    using Small = Separable<Smooth3, Second3>;
    using Large = Separable<Smooth5, Second5>;
};
struct SobelVertSecond : Buffer {
    using Small = Separable<Second3, Smooth3>;
    using Large = Separable<Second5, Smooth5>;
};
struct SobelCross : Buffer {
    using Small = Separable<Difference3<-1>, Difference3<1>>;
    using Large = Separable<Difference5<-1>, Difference5<1>>;
};
struct ScharrBuffer : Buffer {
    template <typename Result>
    static constexpr int32_t kFixedBytes = sizeof(Result) <= 2 ? 184 : 248;
};
struct ScharrHoriz : ScharrBuffer {
    using Small = Separable<Scharr3, Difference3<1>>;
};
struct ScharrVert : ScharrBuffer {
    using Small = Separable<Difference3<1>, Scharr3>;
};

/** 2 0 2 / 0 -8 0 / 2 0 2: the middle row of the mask meets pixels that are not filtered by rows. */
struct Laplacian3 {
    struct Outer {
        static constexpr int32_t kTaps = 3;

        template <typename At>
        HWY_INLINE auto operator()(At at) const {
            return times<2>(hn::Add(at(0), at(2)));
        }
    };
    using Rows = PlainRows<Outer>;
    static constexpr bool kNeedsMiddle = true;

    template <typename At, typename V>
    HWY_INLINE static auto column(At at, V middle) {
        return hn::Sub(hn::Add(at(0, 0), at(0, 2)), times<8>(middle));
    }
};

/** The sum of the second derivatives along the row and the column, each smoothed across. */
struct Laplacian5 {
    struct Rows {
        static constexpr int32_t kTaps = 5, kParts = 2;

        template <typename V, typename At>
        HWY_INLINE static void row(V (&parts)[2], At at) {
            parts[0] = Smooth5()(at);
            parts[1] = Second5()(at);
        }
    };
    static constexpr bool kNeedsMiddle = false;

    template <typename At>
    HWY_INLINE static auto column(At at) {
        return hn::Add(Second5()([=](int32_t k) { return at(0, k); }), Smooth5()([=](int32_t k) { return at(1, k); }));
    }
};

struct Laplacian : Buffer {
    using Small = Laplacian3;
    using Large = Laplacian5;
};

template <typename T>
GradientStripes<T> sobelStripesOf(int32_t taps) {
    using Result = Intermediate<T>;
    if (taps == 3)
        return {filterFixed<SobelNegVert::Small, T, Result>, filterFixed<SobelHoriz::Small, T, Result>};
    return {filterFixed<SobelNegVert::Large, T, Result>, filterFixed<SobelHoriz::Large, T, Result>};
}
template <typename T>
GradientStripes<T> scharrStripesOf() {
    using Result = Intermediate<T>;
    return {filterFixed<ScharrVert::Small, T, Result>, filterFixed<ScharrHoriz::Small, T, Result>};
}

}  // namespace

template <>
GradientStripes<uint8_t> sobelStripes(int32_t taps) {
    return sobelStripesOf<uint8_t>(taps);
}
template <>
GradientStripes<float> sobelStripes(int32_t taps) {
    return sobelStripesOf<float>(taps);
}
template <>
GradientStripes<uint8_t> scharrStripes() {
    return scharrStripesOf<uint8_t>();
}
template <>
GradientStripes<float> scharrStripes() {
    return scharrStripesOf<float>();
}

VEKCV_BIND(vekiFilterSobelHorizBorder_8u16s_C1R, maskFilter<SobelHoriz>);
VEKCV_BIND(vekiFilterSobelHorizBorder_8u8s_C1R, maskFilter<SobelHoriz>);
VEKCV_BIND(vekiFilterSobelHorizBorder_32f_C1R, maskFilter<SobelHoriz>);
VEKCV_BIND(vekiFilterSobelHorizGetBufferSize_8u16s_C1R, maskFilterBufferSize<SobelHoriz, uint8_t, int16_t>);
VEKCV_BIND(vekiFilterSobelHorizGetBufferSize_8u8s_C1R, maskFilterBufferSize<SobelHoriz, uint8_t, int8_t>);
VEKCV_BIND(vekiFilterSobelHorizGetBufferSize_32f_C1R, maskFilterBufferSize<SobelHoriz, float, float>);

VEKCV_BIND(vekiFilterSobelVertBorder_8u16s_C1R, maskFilter<SobelVert>);
VEKCV_BIND(vekiFilterSobelVertBorder_8u8s_C1R, maskFilter<SobelVert>);
VEKCV_BIND(vekiFilterSobelVertBorder_32f_C1R, maskFilter<SobelVert>);
VEKCV_BIND(vekiFilterSobelVertGetBufferSize_8u16s_C1R, maskFilterBufferSize<SobelVert, uint8_t, int16_t>);
VEKCV_BIND(vekiFilterSobelVertGetBufferSize_8u8s_C1R, maskFilterBufferSize<SobelVert, uint8_t, int8_t>);
VEKCV_BIND(vekiFilterSobelVertGetBufferSize_32f_C1R, maskFilterBufferSize<SobelVert, float, float>);

VEKCV_BIND(vekiFilterSobelNegVertBorder_8u16s_C1R, maskFilter<SobelNegVert>);
VEKCV_BIND(vekiFilterSobelNegVertBorder_8u8s_C1R, maskFilter<SobelNegVert>);
VEKCV_BIND(vekiFilterSobelNegVertBorder_32f_C1R, maskFilter<SobelNegVert>);
VEKCV_BIND(vekiFilterSobelNegVertGetBufferSize_8u16s_C1R, maskFilterBufferSize<SobelNegVert, uint8_t, int16_t>);
VEKCV_BIND(vekiFilterSobelNegVertGetBufferSize_8u8s_C1R, maskFilterBufferSize<SobelNegVert, uint8_t, int8_t>);
VEKCV_BIND(vekiFilterSobelNegVertGetBufferSize_32f_C1R, maskFilterBufferSize<SobelNegVert, float, float>);

VEKCV_BIND(vekiFilterSobelHorizSecondBorder_8u16s_C1R, maskFilter<SobelHorizSecond>);
VEKCV_BIND(vekiFilterSobelHorizSecondBorder_8u8s_C1R, maskFilter<SobelHorizSecond>);
VEKCV_BIND(vekiFilterSobelHorizSecondBorder_32f_C1R, maskFilter<SobelHorizSecond>);
VEKCV_BIND(vekiFilterSobelHorizSecondGetBufferSize_8u16s_C1R, maskFilterBufferSize<SobelHorizSecond, uint8_t, int16_t>);
VEKCV_BIND(vekiFilterSobelHorizSecondGetBufferSize_8u8s_C1R, maskFilterBufferSize<SobelHorizSecond, uint8_t, int8_t>);
VEKCV_BIND(vekiFilterSobelHorizSecondGetBufferSize_32f_C1R, maskFilterBufferSize<SobelHorizSecond, float, float>);

VEKCV_BIND(vekiFilterSobelVertSecondBorder_8u16s_C1R, maskFilter<SobelVertSecond>);
VEKCV_BIND(vekiFilterSobelVertSecondBorder_8u8s_C1R, maskFilter<SobelVertSecond>);
VEKCV_BIND(vekiFilterSobelVertSecondBorder_32f_C1R, maskFilter<SobelVertSecond>);
VEKCV_BIND(vekiFilterSobelVertSecondGetBufferSize_8u16s_C1R, maskFilterBufferSize<SobelVertSecond, uint8_t, int16_t>);
VEKCV_BIND(vekiFilterSobelVertSecondGetBufferSize_8u8s_C1R, maskFilterBufferSize<SobelVertSecond, uint8_t, int8_t>);
VEKCV_BIND(vekiFilterSobelVertSecondGetBufferSize_32f_C1R, maskFilterBufferSize<SobelVertSecond, float, float>);

VEKCV_BIND(vekiFilterSobelCrossBorder_8u16s_C1R, maskFilter<SobelCross>);
VEKCV_BIND(vekiFilterSobelCrossBorder_8u8s_C1R, maskFilter<SobelCross>);
VEKCV_BIND(vekiFilterSobelCrossBorder_32f_C1R, maskFilter<SobelCross>);
VEKCV_BIND(vekiFilterSobelCrossGetBufferSize_8u16s_C1R, maskFilterBufferSize<SobelCross, uint8_t, int16_t>);
VEKCV_BIND(vekiFilterSobelCrossGetBufferSize_8u8s_C1R, maskFilterBufferSize<SobelCross, uint8_t, int8_t>);
VEKCV_BIND(vekiFilterSobelCrossGetBufferSize_32f_C1R, maskFilterBufferSize<SobelCross, float, float>);

VEKCV_BIND(vekiFilterLaplacianBorder_8u16s_C1R, maskFilter<Laplacian>);
VEKCV_BIND(vekiFilterLaplacianBorder_8u8s_C1R, maskFilter<Laplacian>);
VEKCV_BIND(vekiFilterLaplacianBorder_32f_C1R, maskFilter<Laplacian>);
VEKCV_BIND(vekiFilterLaplacianGetBufferSize_8u16s_C1R, maskFilterBufferSize<Laplacian, uint8_t, int16_t>);
VEKCV_BIND(vekiFilterLaplacianGetBufferSize_8u8s_C1R, maskFilterBufferSize<Laplacian, uint8_t, int8_t>);
VEKCV_BIND(vekiFilterLaplacianGetBufferSize_32f_C1R, maskFilterBufferSize<Laplacian, float, float>);

VEKCV_BIND(vekiFilterScharrHorizBorder_8u16s_C1R, smallFilter<ScharrHoriz>);
VEKCV_BIND(vekiFilterScharrHorizBorder_8u8s_C1R, smallFilter<ScharrHoriz>);
VEKCV_BIND(vekiFilterScharrHorizBorder_32f_C1R, smallFilter<ScharrHoriz>);
VEKCV_BIND(vekiFilterScharrHorizGetBufferSize_8u16s_C1R, smallFilterBufferSize<ScharrHoriz, uint8_t, int16_t>);
VEKCV_BIND(vekiFilterScharrHorizGetBufferSize_8u8s_C1R, smallFilterBufferSize<ScharrHoriz, uint8_t, int8_t>);
VEKCV_BIND(vekiFilterScharrHorizGetBufferSize_32f_C1R, smallFilterBufferSize<ScharrHoriz, float, float>);

VEKCV_BIND(vekiFilterScharrVertBorder_8u16s_C1R, smallFilter<ScharrVert>);
VEKCV_BIND(vekiFilterScharrVertBorder_8u8s_C1R, smallFilter<ScharrVert>);
VEKCV_BIND(vekiFilterScharrVertBorder_32f_C1R, smallFilter<ScharrVert>);
VEKCV_BIND(vekiFilterScharrVertGetBufferSize_8u16s_C1R, smallFilterBufferSize<ScharrVert, uint8_t, int16_t>);
VEKCV_BIND(vekiFilterScharrVertGetBufferSize_8u8s_C1R, smallFilterBufferSize<ScharrVert, uint8_t, int8_t>);
VEKCV_BIND(vekiFilterScharrVertGetBufferSize_32f_C1R, smallFilterBufferSize<ScharrVert, float, float>);
}  // namespace VEKCV_VARIANT
