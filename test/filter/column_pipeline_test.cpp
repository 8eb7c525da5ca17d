// Column filters against their definition, one output at a time.
#include "arguments.h"
#include "pipeline_support.h"
#include "test/exports/faults.h"

namespace {

template <auto Filter, auto Query, int kChannelCount, bool kIsLow = false>
struct Column;

template <typename S, typename R, typename K, typename... Rest,
          Status (*Filter)(const S* const*, R*, int32_t, RoiSize, const K*, int32_t, Rest...), auto Query,
          int kChannelCount, bool kIsLow>
struct Column<Filter, Query, kChannelCount, kIsLow> {
    using Source = S;
    using Result = R;
    using Tap = K;
    static constexpr auto kQuery = Query;
    static constexpr bool kIsFloat = std::is_floating_point_v<S>;
    static constexpr int kChannels = kChannelCount;

    static int64_t bufferBytes(int64_t width, int64_t height, int64_t kernelSize) {
        if (kIsFloat)
            return 32;
        const int64_t unit = kIsLow ? 8 : 4, whole = (width + unit - 1) / unit * unit;
        return ownGetNumThreads() * (32 + int64_t(sizeof(void*)) * (height + kernelSize) + 12 * kChannels * whole + 32);
    }

    static Status call(const S* const* rows, const TestImage<R>& out, const std::vector<K>& kernel, int32_t divisor,
                       uint8_t* buffer) {
        return callWith(Filter, rows, out, out.roi(), kernel.data(), int32_t(kernel.size()), only<!kIsFloat>(divisor),
                        buffer);
    }

    static R expected(const S* const* rows, const std::vector<K>& kernel, int32_t divisor, int x, int width) {
        if constexpr (kIsFloat) {
            float sum = kernel[0] * rows[0][x];
            for (size_t k = 1; k < kernel.size(); ++k)
                sum += kernel[k] * rows[k][x];
            return sum;
        } else {
            const float r = 1.0f / float(divisor);
            if (!kIsLow && x < width / 16 * 16 * kChannels) {
                float sum = 0;
                for (size_t k = 0; k < kernel.size(); ++k)
                    sum += float(rows[k][x]) * (float(kernel[k]) * r);
                return rounded<R>(sum, true);
            }
            IntegerSum sum;
            for (size_t k = 0; k < kernel.size(); ++k)
                sum.add(int64_t(kernel[k]) * rows[k][x]);
            return rounded<R>(float(sum.value()) * r, kIsLow);
        }
    }

    /** Filters with a buffer of exactly the size that the query gives. */
    static void check(const TestImage<S>& source, RoiSize roi, Layout layout, const std::vector<K>& kernel,
                      int32_t divisor) {
        SCOPED_TRACE(::testing::Message() << roi.width << " x " << roi.height << ", " << layout << ", " << kernel.size()
                                          << " taps, divisor " << divisor);
        const TestImage<R> out(roi, layout, kChannels);
        const auto rows = rowsOf<const S*>(source);
        ASSERT_EQ(size_t(roi.height) + kernel.size() - 1, rows.size());
        int32_t bytes = 0;
        ASSERT_EQ(StatusOk, Query(roi, int32_t(kernel.size()), &bytes));
        const auto buffer = workBuffer(bytes, layout);
        ASSERT_EQ(StatusOk, call(rows.data(), out, kernel, divisor, buffer.data()));
        ASSERT_TRUE(buffer.guardsIntact());
        const auto result = TestImage<R>::filled(
            roi, {}, [&](int x, int y) { return expected(&rows[size_t(y)], kernel, divisor, x, roi.width); },
            kChannels);
        ASSERT_TRUE(samePixels(result, out));
    }

    static TestImage<S> randomRows(RoiSize roi, Layout layout, int32_t kernelSize) {
        return TestImage<S>::random({roi.width, roi.height + kernelSize - 1}, layout, 3, kChannels);
    }
};

template <typename MemberType>
class ColumnPipeline : public ::testing::Test {};
using Members = ::testing::Types<
    Column<&vekiFilterColumnPipeline_16s_C1R, &vekiFilterColumnPipelineGetBufferSize_16s_C1R, 1>,
    Column<&vekiFilterColumnPipeline_16s_C3R, &vekiFilterColumnPipelineGetBufferSize_16s_C3R, 3>,
    Column<&vekiFilterColumnPipeline_16s8u_C1R, &vekiFilterColumnPipelineGetBufferSize_16s8u_C1R, 1>,
    Column<&vekiFilterColumnPipeline_16s8u_C3R, &vekiFilterColumnPipelineGetBufferSize_16s8u_C3R, 3>,
    Column<&vekiFilterColumnPipeline_16s8s_C1R, &vekiFilterColumnPipelineGetBufferSize_16s8s_C1R, 1>,
    Column<&vekiFilterColumnPipeline_16s8s_C3R, &vekiFilterColumnPipelineGetBufferSize_16s8s_C3R, 3>,
    Column<&vekiFilterColumnPipeline_Low_16s_C1R, &vekiFilterColumnPipelineGetBufferSize_Low_16s_C1R, 1, true>,
    Column<&vekiFilterColumnPipeline_Low_16s_C3R, &vekiFilterColumnPipelineGetBufferSize_Low_16s_C3R, 3, true>,
    Column<&vekiFilterColumnPipeline_32f_C1R, &vekiFilterColumnPipelineGetBufferSize_32f_C1R, 1>,
    Column<&vekiFilterColumnPipeline_32f_C3R, &vekiFilterColumnPipelineGetBufferSize_32f_C3R, 3>>;
TYPED_TEST_SUITE(ColumnPipeline, Members);

TYPED_TEST(ColumnPipeline, MatchesItsDefinition) {
    uint32_t turn = 0;
    for (const RoiSize& roi : smallRegions())
        for (const Layout& layout : kLayouts)
            for (int k = 0; k < 3; ++k) {
                const int32_t size = kSizes[++turn % 8];
                TypeParam::check(TypeParam::randomRows(roi, layout, size), roi, layout,
                                 randomKernel<typename TypeParam::Tap>(size, turn, turn % 4 != 0), kDivisors[turn % 7]);
                if (::testing::Test::HasFatalFailure())
                    return;
            }
}

// Kernels whose sums of products are just small enough, or just too large, for floats to hold them exactly.
TYPED_TEST(ColumnPipeline, TakesEveryDivisor) {
    using Tap = typename TypeParam::Tap;
    const RoiSize roi{53, 2};
    for (const std::vector<Tap>& kernel : {std::vector<Tap>{512},
                                           {-511, 1},
                                           {100, 300, -112},
                                           {100, 300, -113},
                                           {1, 4, 6, 4, 1},
                                           {-1, 0, 1},
                                           {513},
                                           {255, 1, 0, 0, -257}})
        for (int32_t divisor = -20; divisor <= 20; ++divisor)
            if (divisor != 0)
                TypeParam::check(TypeParam::randomRows(roi, {}, int32_t(kernel.size())), roi, {}, kernel, divisor);
}

// Halves: pixels in whole groups of 16 round to even, the rest of the row rounds towards zero.
TYPED_TEST(ColumnPipeline, RoundsGroupsAndTheRest) {
    using S = typename TypeParam::Source;
    const RoiSize roi{47, 1};
    using Tap = typename TypeParam::Tap;
    for (const Tap tap : {Tap(1), Tap(-1)}) {
        const auto source = TestImage<S>::filled(
            {47, 3}, {}, [](int x, int) { return S(x); }, TypeParam::kChannels);
        TypeParam::check(source, roi, {}, {0, tap, 0}, 2);
        TypeParam::check(source, roi, {}, {0, Tap(5 * tap), 0}, 10);
    }
}

// Six pixels are no group, although they have more than 16 elements.
TEST(ColumnPipelineC3, CountsPixels) {
    using Three = Column<&vekiFilterColumnPipeline_16s_C3R, &vekiFilterColumnPipelineGetBufferSize_16s_C3R, 3>;
    const RoiSize roi{6, 1};
    const auto source = TestImage<int16_t>::constant(roi, 3, 3), out = TestImage<int16_t>(roi, {}, 3);
    const auto rows = rowsOf<const int16_t*>(source);
    const auto buffer = workBuffer(int32_t(Three::bufferBytes(6, 1, 1)));
    ASSERT_EQ(StatusOk, Three::call(rows.data(), out, {1}, 2, buffer.data()));
    ASSERT_TRUE(samePixels(TestImage<int16_t>::constant(roi, 1, 3), out));
}

// A product that no float holds, in a sum that one holds: rounding the product decides how the sum is rounded.
TYPED_TEST(ColumnPipeline, RoundsProducts) {
    using S = typename TypeParam::Source;
    const auto source = TestImage<S>::filled(
        {37, 2}, {}, [](int, int y) { return S(y == 0 ? 32767 : -32768); }, TypeParam::kChannels);
    for (const int32_t divisor : {1024, -1024, 1023})
        TypeParam::check(source, {37, 1}, {}, {513, 1}, divisor);
}

TYPED_TEST(ColumnPipeline, Saturates) {
    using S = typename TypeParam::Source;
    using K = typename TypeParam::Tap;
    if constexpr (!TypeParam::kIsFloat)
        for (const S value : {S(-32768), S(32767), S(300), S(-300)})
            for (const K tap : {K(-32768), K(32767), K(1)})
                for (const int32_t size : {1, 2, 3, 4, 5, 7})
                    for (const int32_t divisor : {1, -1, 2, -2, 32768, INT32_MAX}) {
                        const auto source = TestImage<S>::filled(
                            {41, size}, {}, [=](int, int) { return value; }, TypeParam::kChannels);
                        TypeParam::check(source, {41, 1}, {}, std::vector<K>(size_t(size), tap), divisor);
                    }
}

TYPED_TEST(ColumnPipeline, IsTheSameInParallel) {
    forThreadCounts([](int threads) {
        const RoiSize roi{kLargeWidth, largeHeight(32768 * threads)};
        for (const int32_t size : {4, 5})
            TypeParam::check(TypeParam::randomRows(roi, {}, size), roi, {Layout::kAfterGuard, 1, 4},
                             randomKernel<typename TypeParam::Tap>(size, 1, true), 3);
        const RoiSize flat{32768 * threads + 1, 1};
        TypeParam::check(TypeParam::randomRows(flat, {}, 3), flat, {}, {1, 2, 1}, 4);
    });
}

// Rows may be in any order, and the same row may stand in several places.
TYPED_TEST(ColumnPipeline, TakesRowsFromAnywhere) {
    using S = typename TypeParam::Source;
    const RoiSize roi{37, 3};
    const std::vector<typename TypeParam::Tap> kernel{1, -2, 3};
    const auto image = TestImage<S>::random({37, 2}, {}, 5, TypeParam::kChannels);
    const S* const rows[] = {&image.at(0, 1), &image.at(0, 1), &image.at(0, 0), &image.at(0, 1), &image.at(0, 0)};
    const TestImage<typename TypeParam::Result> out(roi, {}, TypeParam::kChannels);
    const auto buffer = workBuffer(int32_t(TypeParam::bufferBytes(37, 3, 3)));
    ASSERT_EQ(StatusOk, TypeParam::call(rows, out, kernel, 2, buffer.data()));
    const auto expected = TestImage<typename TypeParam::Result>::filled(
        roi, {}, [&](int x, int y) { return TypeParam::expected(rows + y, kernel, 2, x, roi.width); },
        TypeParam::kChannels);
    ASSERT_TRUE(samePixels(expected, out));
}

const exports::FamilyFaults kFaults("vekiFilterColumnPipeline",
                                    {{"kernelSize", StatusSizeError, {0, INT32_MIN}, exports::Behind::kSizes},
                                     {"buffer", StatusNullPointer, {exports::kNull}},
                                     {"divisor", StatusBadArgument, {0}}});

TYPED_TEST(ColumnPipeline, NeedsAllRows) {
    const RoiSize roi{9, 4};
    const auto source = TypeParam::randomRows(roi, {}, 3);
    const auto out = TestImage<typename TypeParam::Result>::random(roi, {}, 1, TypeParam::kChannels);
    const auto before = out.copy({});
    const std::vector<typename TypeParam::Tap> kernel{1, 2, 1};
    const auto buffer = workBuffer(int32_t(TypeParam::bufferBytes(9, 4, 3)));
    for (size_t y = 0; y < 6; ++y) {
        auto rows = rowsOf<const typename TypeParam::Source*>(source);
        rows[y] = nullptr;
        ASSERT_EQ(StatusNullPointer, TypeParam::call(rows.data(), out, kernel, 1, buffer.data()));
        if (!TypeParam::kIsFloat) {
            ASSERT_EQ(StatusBadArgument, TypeParam::call(rows.data(), out, kernel, 0, buffer.data()));
        }
    }
    ASSERT_TRUE(samePixels(before, out));
}

TYPED_TEST(ColumnPipeline, TellsTheSizeOfItsBuffer) {
    int32_t bytes = -7;
    for (const int threads : {1, 2, 5}) {
        const ThreadCount count(threads);
        for (const RoiSize roi : {RoiSize{1, 1}, RoiSize{637, 480}, RoiSize{8, 100000}})
            for (const int32_t size : {1, 3, 5, 31}) {
                ASSERT_EQ(StatusOk, TypeParam::kQuery(roi, size, &bytes));
                ASSERT_EQ(TypeParam::bufferBytes(roi.width, roi.height, size), bytes);
            }
        bytes = -7;
        for (const RoiSize roi : {RoiSize{1, INT32_MAX}, RoiSize{INT32_MAX, 1}})
            ASSERT_EQ(TypeParam::kIsFloat ? StatusOk : StatusSizeError, TypeParam::kQuery(roi, INT32_MAX, &bytes));
        ASSERT_EQ(TypeParam::kIsFloat ? 32 : -7, bytes);
    }
}

}  // namespace
