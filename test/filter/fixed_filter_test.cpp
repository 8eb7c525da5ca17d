// The filters of 3 x 3 and 5 x 5 pixels against their definition: integers by a correlation in two dimensions over an
// image that is extended pixel by pixel, floats by rows and columns in the documented order.
#include <gtest/gtest.h>

#include <algorithm>

#include "arguments.h"
#include "border.h"
#include "regions.h"
#include "test/exports/faults.h"
#include "test_image.h"
#include "vekcore.h"

namespace {

using Kernel = std::vector<int>;

const Kernel kSmooth3{1, 2, 1}, kSmooth5{1, 4, 6, 4, 1}, kSecond3{1, -2, 1}, kSecond5{1, 0, -2, 0, 1};
const Kernel kDown3{-1, 0, 1}, kDown5{-1, -2, 0, 2, 1}, kLeft3{1, 0, -1}, kLeft5{1, 2, 0, -2, -1};
const Kernel kScharr{3, 10, 3}, kSum3{1, 1, 1}, kSum5{1, 1, 1, 1, 1};

/** A row kernel and a column kernel for each mask size; two pairs for the Laplacian. */
struct Pair {
    Kernel row, column;
};
/** One pair, by the number of taps. */
std::vector<Pair> onePair(int taps, const Pair& small, const Pair& large) {
    return std::vector<Pair>(1, taps == 3 ? small : large);
}

struct SobelHoriz {
    static std::vector<Pair> pairs(int taps) { return onePair(taps, Pair{kSmooth3, kDown3}, Pair{kSmooth5, kDown5}); }
};
struct SobelVert {
    static std::vector<Pair> pairs(int taps) { return onePair(taps, Pair{kLeft3, kSmooth3}, Pair{kLeft5, kSmooth5}); }
};
struct SobelNegVert {
    static std::vector<Pair> pairs(int taps) { return onePair(taps, Pair{kDown3, kSmooth3}, Pair{kDown5, kSmooth5}); }
};
struct SobelHorizSecond {
    static std::vector<Pair> pairs(int taps) {
        return onePair(taps, Pair{kSmooth3, kSecond3}, Pair{kSmooth5, kSecond5});
    }
};
struct SobelVertSecond {
    static std::vector<Pair> pairs(int taps) {
        return onePair(taps, Pair{kSecond3, kSmooth3}, Pair{kSecond5, kSmooth5});
    }
};
struct SobelCross {
    static std::vector<Pair> pairs(int taps) { return onePair(taps, Pair{kLeft3, kDown3}, Pair{kLeft5, kDown5}); }
};
struct ScharrHoriz {
    static std::vector<Pair> pairs(int) { return std::vector<Pair>(1, Pair{kScharr, kDown3}); }
};
struct ScharrVert {
    static std::vector<Pair> pairs(int) { return std::vector<Pair>(1, Pair{kDown3, kScharr}); }
};
struct Laplacian {
    static std::vector<Pair> pairs(int taps) {
        std::vector<Pair> both = SobelHorizSecond::pairs(taps);
        both.push_back(SobelVertSecond::pairs(taps)[0]);
        return both;
    }
};
struct Lowpass {
    static std::vector<Pair> pairs(int taps) { return onePair(taps, Pair{kSum3, kSum3}, Pair{kSum5, kSum5}); }
};

/** A correlation of floats in the order of the header: pairs from outside in, then the middle. */
template <typename At>
float correlate(const Kernel& kernel, At at) {
    const int reach = int(kernel.size()) / 2;
    float sum = 0;
    bool isFirst = true;
    for (int k = -reach; k < 0; ++k) {
        const int tap = kernel[size_t(reach + k)];
        const bool isOdd = kernel[size_t(reach - k)] == -tap;
        if (tap == 0)
            continue;
        const float pair = isOdd ? (tap > 0 ? at(k) - at(-k) : at(-k) - at(k)) : at(k) + at(-k);
        const float term = pair * float(isOdd ? std::abs(tap) : tap);
        sum = isFirst ? term : sum + term;
        isFirst = false;
    }
    const int middle = kernel[size_t(reach)];
    return middle == 0 ? sum : sum + at(0) * float(middle);
}

/** The source of a call, with the pixels in memory beside it that the flags tell of, and the result. */
template <typename T, typename Result>
struct Operands {
    RoiSize roi;
    int type, reach, left, top;
    T value;
    TestImage<T> memory;
    TestImage<Result> out;

    Operands(RoiSize size, Layout layout, int borderType, int taps)
        : roi(size),
          type(borderType == BorderInMemory ? 0xF0 : borderType),
          reach(taps / 2),
          left(type & BorderInMemoryLeft ? reach : 0),
          top(type & BorderInMemoryTop ? reach : 0),
          value(T(77)),
          memory(TestImage<T>::filled(
              {size.width + left + (type & BorderInMemoryRight ? reach : 0),
               size.height + top + (type & BorderInMemoryBottom ? reach : 0)},
              layout, [random = Random(uint32_t(size.width))](int, int) mutable { return random.summand<T>(); })),
          out(size, layout) {}

    const T* source() const { return &memory.at(left, top); }

    /** The region and the pixels around it that the mask reaches. */
    TestImage<T> extended() const {
        return TestImage<T>::filled({roi.width + 2 * reach, roi.height + 2 * reach}, {},
                                    [&](int x, int y) { return pixel(x - reach, y - reach); });
    }

  private:
    /** The pixel at (x, y), which may lie outside. */
    T pixel(int x, int y) const {
        const bool above = y < 0, below = y >= roi.height;
        if (!(above && type & BorderInMemoryTop) && !(below && type & BorderInMemoryBottom)) {
            y = borderPixel(type & 15, y, roi.height);
            if (y < 0)
                return value;
        }
        if (!(x < 0 && type & BorderInMemoryLeft) && !(x >= roi.width && type & BorderInMemoryRight)) {
            x = borderPixel(type & 15, x, roi.width);
            if (x < 0)
                return value;
        }
        return memory.at(left + x, top + y);
    }
};

template <auto Filter, auto Query, typename Definition>
struct Member;

template <typename T, typename R, typename... Rest, Status (*Filter)(const T*, int32_t, R*, int32_t, RoiSize, Rest...),
          auto Query, typename Definition>
struct Member<Filter, Query, Definition> {
    using Pixel = T;
    using Result = R;
    using Images = Operands<T, R>;
    static constexpr bool kHasMaskSize = sizeof...(Rest) == 4;
    static constexpr bool kIsMean = std::is_same_v<Definition, Lowpass>;

    static Status query(RoiSize roi, int32_t maskSize, int32_t* size) {
        return callWith(Query, roi, only<kHasMaskSize>(maskSize), size);
    }
    static int32_t bufferSize(RoiSize roi, int taps) {
        int32_t size = -1;
        EXPECT_EQ(StatusOk, query(roi, maskSize(taps), &size));
        return size;
    }

    static TestImage<R> expected(const Images& operands, int taps) {
        const std::vector<Pair> pairs = Definition::pairs(taps);
        const TestImage<T> extended = operands.extended();
        return TestImage<R>::filled(operands.roi, {},
                                    [&](int x, int y) { return expectedAt(extended, pairs, taps, x, y); });
    }
    /** `image` begins `taps` / 2 pixels left of and above the region. */
    static R expectedAt(const TestImage<T>& image, const std::vector<Pair>& pairs, int taps, int x, int y) {
        const int reach = taps / 2;
        const auto pixel = [&](int i, int k) { return image.at(x + reach + i, y + reach + k); };
        if constexpr (std::is_same_v<T, float>) {
            const auto filtered = [&](const Pair& pair) {
                return correlate(pair.column,
                                 [&](int k) { return correlate(pair.row, [&](int i) { return pixel(i, k); }); });
            };
            if (kIsMean)
                return filtered(pairs[0]) * (1.0f / float(taps * taps));
            if (pairs.size() == 1)
                return filtered(pairs[0]);
            if (taps == 5)
                return filtered(pairs[0]) + filtered(pairs[1]);
            const auto outer = [&](int k) { return 2 * (pixel(-1, k) + pixel(1, k)); };
            return outer(-1) + outer(1) - 8 * pixel(0, 0);
        } else {
            int sum = 0;
            for (const Pair& pair : pairs)
                for (int k = -reach; k <= reach; ++k)
                    for (int i = -reach; i <= reach; ++i)
                        sum += pair.column[size_t(reach + k)] * pair.row[size_t(reach + i)] * pixel(i, k);
            if (kIsMean)
                return R(std::lround(double(sum) / (taps * taps)));
            return R(std::clamp<int>(sum, std::numeric_limits<R>::min(), std::numeric_limits<R>::max()));
        }
    }

    /** `threads` have a slice of the work buffer and rows to filter. */
    static void check(const Images& operands, const TestImage<R>& right, Layout layout, int borderType, int taps,
                      int threads = 1) {
        const auto buffer = workBuffer(bufferSize(operands.roi, taps), layout);
        ASSERT_EQ(StatusOk, callWith(Filter, operands.source(), operands.memory.step(), operands.out, operands.roi,
                                     only<kHasMaskSize>(maskSize(taps)), borderType, operands.value, buffer.data()));
        ASSERT_TRUE(samePixels(right, operands.out));
        ASSERT_TRUE(usesSlices(buffer, threads));
    }
    static void check(RoiSize roi, Layout layout, int borderType, int taps) {
        SCOPED_TRACE(::testing::Message() << roi.width << " x " << roi.height << ", " << layout << ", border "
                                          << borderType << ", taps " << taps);
        const Images operands(roi, layout, borderType, taps);
        const auto before = operands.memory.copy({});
        check(operands, expected(operands, taps), layout, borderType, taps);
        ASSERT_TRUE(samePixels(before, operands.memory));
    }

    static std::vector<int> masks() { return kHasMaskSize ? std::vector{3, 5} : std::vector{3}; }

  private:
    static int32_t maskSize(int taps) { return taps == 3 ? MaskSize3x3 : MaskSize5x5; }
};

template <typename MemberType>
class FixedFilter : public ::testing::Test {};
using Members = ::testing::Types<
    Member<&vekiFilterSobelHorizBorder_8u16s_C1R, &vekiFilterSobelHorizGetBufferSize_8u16s_C1R, SobelHoriz>,
    Member<&vekiFilterSobelHorizBorder_8u8s_C1R, &vekiFilterSobelHorizGetBufferSize_8u8s_C1R, SobelHoriz>,
    Member<&vekiFilterSobelHorizBorder_32f_C1R, &vekiFilterSobelHorizGetBufferSize_32f_C1R, SobelHoriz>,
    Member<&vekiFilterSobelVertBorder_8u16s_C1R, &vekiFilterSobelVertGetBufferSize_8u16s_C1R, SobelVert>,
    Member<&vekiFilterSobelVertBorder_8u8s_C1R, &vekiFilterSobelVertGetBufferSize_8u8s_C1R, SobelVert>,
    Member<&vekiFilterSobelVertBorder_32f_C1R, &vekiFilterSobelVertGetBufferSize_32f_C1R, SobelVert>,
    Member<&vekiFilterSobelNegVertBorder_8u16s_C1R, &vekiFilterSobelNegVertGetBufferSize_8u16s_C1R, SobelNegVert>,
    Member<&vekiFilterSobelNegVertBorder_8u8s_C1R, &vekiFilterSobelNegVertGetBufferSize_8u8s_C1R, SobelNegVert>,
    Member<&vekiFilterSobelNegVertBorder_32f_C1R, &vekiFilterSobelNegVertGetBufferSize_32f_C1R, SobelNegVert>,
    Member<&vekiFilterSobelHorizSecondBorder_8u16s_C1R, &vekiFilterSobelHorizSecondGetBufferSize_8u16s_C1R,
           SobelHorizSecond>,
    Member<&vekiFilterSobelHorizSecondBorder_8u8s_C1R, &vekiFilterSobelHorizSecondGetBufferSize_8u8s_C1R,
           SobelHorizSecond>,
    Member<&vekiFilterSobelHorizSecondBorder_32f_C1R, &vekiFilterSobelHorizSecondGetBufferSize_32f_C1R,
           SobelHorizSecond>,
    Member<&vekiFilterSobelVertSecondBorder_8u16s_C1R, &vekiFilterSobelVertSecondGetBufferSize_8u16s_C1R,
           SobelVertSecond>,
    Member<&vekiFilterSobelVertSecondBorder_8u8s_C1R, &vekiFilterSobelVertSecondGetBufferSize_8u8s_C1R,
           SobelVertSecond>,
    Member<&vekiFilterSobelVertSecondBorder_32f_C1R, &vekiFilterSobelVertSecondGetBufferSize_32f_C1R, SobelVertSecond>,
    Member<&vekiFilterSobelCrossBorder_8u16s_C1R, &vekiFilterSobelCrossGetBufferSize_8u16s_C1R, SobelCross>,
    Member<&vekiFilterSobelCrossBorder_8u8s_C1R, &vekiFilterSobelCrossGetBufferSize_8u8s_C1R, SobelCross>,
    Member<&vekiFilterSobelCrossBorder_32f_C1R, &vekiFilterSobelCrossGetBufferSize_32f_C1R, SobelCross>,
    Member<&vekiFilterScharrHorizBorder_8u16s_C1R, &vekiFilterScharrHorizGetBufferSize_8u16s_C1R, ScharrHoriz>,
    Member<&vekiFilterScharrHorizBorder_8u8s_C1R, &vekiFilterScharrHorizGetBufferSize_8u8s_C1R, ScharrHoriz>,
    Member<&vekiFilterScharrHorizBorder_32f_C1R, &vekiFilterScharrHorizGetBufferSize_32f_C1R, ScharrHoriz>,
    Member<&vekiFilterScharrVertBorder_8u16s_C1R, &vekiFilterScharrVertGetBufferSize_8u16s_C1R, ScharrVert>,
    Member<&vekiFilterScharrVertBorder_8u8s_C1R, &vekiFilterScharrVertGetBufferSize_8u8s_C1R, ScharrVert>,
    Member<&vekiFilterScharrVertBorder_32f_C1R, &vekiFilterScharrVertGetBufferSize_32f_C1R, ScharrVert>,
    Member<&vekiFilterLaplacianBorder_8u16s_C1R, &vekiFilterLaplacianGetBufferSize_8u16s_C1R, Laplacian>,
    Member<&vekiFilterLaplacianBorder_8u8s_C1R, &vekiFilterLaplacianGetBufferSize_8u8s_C1R, Laplacian>,
    Member<&vekiFilterLaplacianBorder_32f_C1R, &vekiFilterLaplacianGetBufferSize_32f_C1R, Laplacian>,
    Member<&vekiFilterLowpassBorder_8u_C1R, &vekiFilterLowpassGetBufferSize_8u_C1R, Lowpass>,
    Member<&vekiFilterLowpassBorder_32f_C1R, &vekiFilterLowpassGetBufferSize_32f_C1R, Lowpass>>;
TYPED_TEST_SUITE(FixedFilter, Members);

TYPED_TEST(FixedFilter, MatchesItsDefinition) {
    for (const int taps : TypeParam::masks()) {
        int border = 0;
        for (const RoiSize& roi : smallRegions())
            for (const Layout& layout : kLayouts)
                TypeParam::check(roi, layout, border++ % 5, taps);
    }
}

// Images narrower and lower than the mask, under all rules; every set of sides whose pixels are in memory.
TYPED_TEST(FixedFilter, FollowsEveryBorderRule) {
    for (const int taps : TypeParam::masks()) {
        for (int rule = 0; rule <= 4; ++rule)
            for (int width = 1; width <= 6; ++width)
                for (int height = 1; height <= 6; ++height)
                    TypeParam::check({width, height}, {Layout::kBeforeGuard, 0, 1}, rule, taps);
        for (int sides = 1; sides < 16; ++sides)
            for (const RoiSize roi : {RoiSize{1, 1}, RoiSize{2, 3}, RoiSize{37, 4}})
                for (const auto place : {Layout::kAfterGuard, Layout::kRowsByGuards})
                    TypeParam::check(roi, {place, 0, 0}, sides * 16 + sides % 5, taps);
        TypeParam::check({21, 3}, {}, BorderInMemory, taps);
    }
}

// Threads share the rows where there is more than one processor.
TYPED_TEST(FixedFilter, MatchesItsDefinitionInParallel) {
    const RoiSize roi{301, 259};
    const Layout layout{Layout::kAfterGuard, 1, 3};
    for (const int taps : TypeParam::masks()) {
        const typename TypeParam::Images operands(roi, layout, BorderReflect, taps);
        const auto expected = TypeParam::expected(operands, taps);
        forThreadCounts([&](int threads) {
            TypeParam::check(operands, expected, layout, BorderReflect, taps, vekGetNumCoresOnDie() > 1 ? threads : 1);
        });
    }
}

TYPED_TEST(FixedFilter, RefusesBuffersThatAreTooLarge) {
    int32_t size = 77;
    ASSERT_EQ(StatusSizeError, TypeParam::query({INT32_MAX, 4}, MaskSize3x3, &size));
    const Status badMask = TypeParam::kHasMaskSize ? StatusMaskSizeError : StatusSizeError;
    ASSERT_EQ(badMask, TypeParam::query({INT32_MAX, 4}, 35, &size));
    ASSERT_EQ(77, size);
}

const exports::FamilyFaults kFaults("vekiFilter",
                                    {{"borderType", StatusBadArgument, {5, 7, 15, -1, 0x100, 0x1000, 0x105, 0xF5}},
                                     {"maskSize", StatusMaskSizeError, {0, 3, 5, 35, 53, -33}}});

// The coefficients of the polynomial, multiplied factor by factor. Those of the largest sizes do not fit 16 bits.
TEST(SobelKernel, IsThatOfThePolynomial) {
    for (int order = 0; order <= 2; ++order)
        for (int size = 3; size <= 31; size += 2)
            for (const int sign : {1, -1}) {
                SCOPED_TRACE(::testing::Message() << size << " taps, order " << order << ", sign " << sign);
                std::vector<int64_t> expected{sign};
                for (int factor = 1; factor < size; ++factor) {
                    std::vector<int64_t> product(expected.size() + 1, 0);
                    for (size_t k = 0; k < expected.size(); ++k) {
                        product[k] += factor <= order ? -expected[k] : expected[k];
                        product[k + 1] += expected[k];
                    }
                    expected = product;
                }
                std::vector<float> floats(expected.size());
                ASSERT_EQ(StatusOk, vekiGenSobelKernel_32f(floats.data(), size, order, sign));
                EXPECT_EQ(std::vector<float>(expected.begin(), expected.end()), floats);
                std::vector<int16_t> integers(expected.size());
                if (vekiGenSobelKernel_16s(integers.data(), size, order, sign) == StatusOk) {
                    EXPECT_EQ(expected, std::vector<int64_t>(integers.begin(), integers.end()));
                }
            }
}

const exports::FamilyFaults kKernelFaults("vekiGenSobelKernel", {{"kernelSize", StatusSizeError, {1, 4, 33, -3}},
                                                                 {"derivativeOrder", StatusBadArgument, {-1, 3}},
                                                                 {"sign", StatusBadArgument, {0, 2}}});

TEST(SobelKernel, RefusesCoefficientsThatAreTooLarge) {
    int16_t integers[31];
    constexpr int kMostTaps[] = {17, 21, 21};
    for (int order = 0; order <= 2; ++order)
        for (int size = 3; size <= 31; size += 2) {
            integers[0] = 77;
            ASSERT_EQ(size <= kMostTaps[order] ? StatusOk : StatusSizeError,
                      vekiGenSobelKernel_16s(integers, size, order, 1));
            ASSERT_EQ(size > kMostTaps[order], integers[0] == 77);
        }
}

}  // namespace
