// Row filters against their definition, one output at a time.
#include "arguments.h"
#include "border.h"
#include "pipeline_support.h"
#include "test/exports/faults.h"

namespace {

template <auto Filter, auto Query, int kChannelCount, int64_t kPerTap, int64_t kMore, bool kIsLow = false>
struct Row;

template <typename S, typename R, typename K, typename... Rest,
          Status (*Filter)(const S*, int32_t, R* const*, RoiSize, const K*, int32_t, int32_t, int32_t, S, Rest...),
          auto Query, int kChannelCount, int64_t kPerTap, int64_t kMore, bool kIsLow>
struct Row<Filter, Query, kChannelCount, kPerTap, kMore, kIsLow> {
    using Source = S;
    using Result = R;
    using Tap = K;
    static constexpr auto kQuery = Query;
    static constexpr bool kIsFloat = std::is_floating_point_v<S>;
    static constexpr int kChannels = kChannelCount;

    struct Parameters {
        std::vector<K> kernel;
        int32_t anchor, borderType;
        S borderValue;
        int32_t divisor;

        int32_t size() const { return int32_t(kernel.size()); }
    };

    static int64_t bufferBytes(int64_t height, int64_t kernelSize) {
        return ownGetNumThreads() *
               (32 + int64_t(sizeof(void*)) * (height + kernelSize) + kPerTap * kernelSize + kMore);
    }

    static Status call(const TestImage<S>& source, R* const* rows, RoiSize roi, const Parameters& p, uint8_t* buffer) {
        return callWith(Filter, source, rows, roi, p.kernel.data(), p.size(), p.anchor, p.borderType, p.borderValue,
                        only<!kIsFloat>(p.divisor), buffer);
    }

    static R expected(const TestImage<S>& source, const Parameters& p, int x, int channel, int y) {
        const int width = source.roi().width;
        const auto pixel = [&](int32_t k) {
            const int at = borderPixel(p.borderType, x + k - p.anchor, width);
            return at < 0 ? p.borderValue : source.at(at * kChannels + channel, y);
        };
        if constexpr (kIsFloat) {
            float sum = p.kernel[0] * pixel(0);
            for (int32_t k = 1; k < p.size(); ++k)
                sum += p.kernel[size_t(k)] * pixel(k);
            return sum;
        } else {
            IntegerSum sum;
            for (int32_t k = 0; k < p.size(); ++k)
                sum.add(int64_t(p.kernel[size_t(k)]) * pixel(k));
            const bool isInterior = x >= p.anchor && x <= width - p.size() + p.anchor;
            const float r = 1.0f / float(p.divisor);
            return rounded<R>(float(sum.value()) * r, isInterior || kIsLow);
        }
    }

    /** Filters with a buffer of exactly the size that the query gives, of which so many threads use a slice. */
    static void check(const TestImage<S>& source, Layout layout, const Parameters& p, int threads = 0) {
        SCOPED_TRACE(::testing::Message()
                     << source.roi().width << " x " << source.roi().height << ", " << layout << ", " << p.size()
                     << " taps, anchor " << p.anchor << ", border " << p.borderType << ", divisor " << p.divisor);
        const RoiSize roi = source.roi();
        const TestImage<R> out(roi, layout, kChannels);
        const auto rows = rowsOf<R*>(out);
        int32_t bytes = 0;
        ASSERT_EQ(StatusOk, Query(roi, p.size(), &bytes));
        const auto buffer = workBuffer(bytes, layout);
        ASSERT_EQ(StatusOk, call(source, rows.data(), roi, p, buffer.data()));
        ASSERT_TRUE(usesSlices(buffer, threads));
        const auto result = TestImage<R>::filled(
            roi, {}, [&](int x, int y) { return expected(source, p, x / kChannels, x % kChannels, y); }, kChannels);
        ASSERT_TRUE(samePixels(result, out));
    }
};

template <typename MemberType>
class RowPipeline : public ::testing::Test {};
using Members = ::testing::Types<
    Row<&vekiFilterRowBorderPipeline_8u16s_C1R, &vekiFilterRowBorderPipelineGetBufferSize_8u16s_C1R, 1, 36, 112>,
    Row<&vekiFilterRowBorderPipeline_8u16s_C3R, &vekiFilterRowBorderPipelineGetBufferSize_8u16s_C3R, 3, 60, 112>,
    Row<&vekiFilterRowBorderPipeline_16s_C1R, &vekiFilterRowBorderPipelineGetBufferSize_16s_C1R, 1, 48, 80>,
    Row<&vekiFilterRowBorderPipeline_16s_C3R, &vekiFilterRowBorderPipelineGetBufferSize_16s_C3R, 3, 40, 64>,
    Row<&vekiFilterRowBorderPipeline_Low_16s_C1R, &vekiFilterRowBorderPipelineGetBufferSize_Low_16s_C1R, 1, 24, 64,
        true>,
    Row<&vekiFilterRowBorderPipeline_Low_16s_C3R, &vekiFilterRowBorderPipelineGetBufferSize_Low_16s_C3R, 3, 208, 64,
        true>,
    Row<&vekiFilterRowBorderPipeline_32f_C1R, &vekiFilterRowBorderPipelineGetBufferSize_32f_C1R, 1, 64, 80>,
    Row<&vekiFilterRowBorderPipeline_32f_C3R, &vekiFilterRowBorderPipelineGetBufferSize_32f_C3R, 3, 192, 32>>;
TYPED_TEST_SUITE(RowPipeline, Members);

// Every size and layout, with numbers of taps, anchors, borders and divisors in turn.
TYPED_TEST(RowPipeline, MatchesItsDefinition) {
    using S = typename TypeParam::Source;
    uint32_t turn = 0;
    for (const RoiSize& roi : smallRegions())
        for (const Layout& layout : kLayouts) {
            const auto source = TestImage<S>::random(roi, layout, 1, TypeParam::kChannels);
            for (int k = 0; k < 3; ++k) {
                const int32_t size = kSizes[++turn % 8];
                TypeParam::check(source, layout,
                                 {randomKernel<typename TypeParam::Tap>(size, turn, turn % 4 != 0),
                                  int32_t(turn * 7 % uint32_t(size)), int32_t(turn % 5), S(200 - roi.width),
                                  kDivisors[turn / 5 % 7]});
                if (::testing::Test::HasFatalFailure())
                    return;
            }
        }
}

// Every anchor and border, with divisors in turn, on rows that are narrower than the kernel, as wide, and wider.
TYPED_TEST(RowPipeline, TakesEveryAnchorAndBorder) {
    using S = typename TypeParam::Source;
    uint32_t turn = 0;
    for (const int32_t width : {1, 2, 3, 4, 5, 6, 7, 11, 40})
        for (const int32_t size : {1, 2, 3, 4, 5, 7, 16}) {
            const auto source = TestImage<S>::random({width, 2}, {}, 3, TypeParam::kChannels);
            for (int32_t anchor = 0; anchor < size; ++anchor)
                for (int32_t border = 0; border < 5; ++border) {
                    TypeParam::check(source, {Layout::kRowsByGuards, 0, 0},
                                     {randomKernel<typename TypeParam::Tap>(size, 5, true), anchor, border, S(77),
                                      kDivisors[++turn % 7]});
                    if (::testing::Test::HasFatalFailure())
                        return;
                }
        }
}

// Halves on both sides of zero: the interior rounds to even, the edges towards zero.
TYPED_TEST(RowPipeline, RoundsInteriorAndEdges) {
    using S = typename TypeParam::Source;
    for (const int32_t size : {2, 3, 5})
        for (const int32_t sign : {1, -1}) {
            const auto source = TestImage<S>::filled(
                {45, 1}, {}, [](int x, int) { return S(x); }, TypeParam::kChannels);
            std::vector<typename TypeParam::Tap> kernel(size_t(size), 0);
            kernel[1] = typename TypeParam::Tap(sign);
            TypeParam::check(source, {}, {kernel, 1, BorderReplicate, 0, 2});
        }
}

// The largest products of all, which wrap, and those that saturate on either side.
TYPED_TEST(RowPipeline, Saturates) {
    using S = typename TypeParam::Source;
    using K = typename TypeParam::Tap;
    using Limits = std::numeric_limits<S>;
    if constexpr (!TypeParam::kIsFloat)
        for (const S value : {Limits::min(), Limits::max()})
            for (const K tap : {K(-32768), K(32767)})
                for (const int32_t size : {1, 2, 3, 4, 5, 7})
                    for (const int32_t divisor : {1, -1, 2, -2, 32768, INT32_MAX}) {
                        const auto source = TestImage<S>::filled(
                            {41, 1}, {}, [=](int, int) { return value; }, TypeParam::kChannels);
                        TypeParam::check(source, {},
                                         {std::vector<K>(size_t(size), tap), size / 2, BorderConstant, value, divisor});
                    }
}

TYPED_TEST(RowPipeline, IsTheSameInParallel) {
    using S = typename TypeParam::Source;
    forThreadCounts([](int threads) {
        const RoiSize roi{kLargeWidth, largeHeight(32768 * threads)};
        const auto source = TestImage<S>::random(roi, {}, 2, TypeParam::kChannels);
        TypeParam::check(source, {Layout::kAfterGuard, 1, 3},
                         {randomKernel<typename TypeParam::Tap>(5, 1, true), 1, BorderReflect, 9, 3}, threads);
        // Fewer rows than threads.
        const auto flat = TestImage<S>::random({32768 * threads + 1, 1}, {}, 2, TypeParam::kChannels);
        TypeParam::check(flat, {}, {randomKernel<typename TypeParam::Tap>(3, 1, true), 1, BorderPeriodic, 9, 3});
    });
}

// Rows before the first null address are written, those behind it are not, by threads, too.
TYPED_TEST(RowPipeline, StopsAtANullRowInParallel) {
    const ThreadCount count(3);
    using S = typename TypeParam::Source;
    using R = typename TypeParam::Result;
    for (const RoiSize roi : {RoiSize{20, 6}, RoiSize{1024, 32 * 3 + 5}})
        for (const int32_t null : {0, 1, roi.height / 2, roi.height - 1}) {
            const auto source = TestImage<S>::random(roi, {}, 2, TypeParam::kChannels);
            const typename TypeParam::Parameters p{randomKernel<typename TypeParam::Tap>(3, 1, true), 1, BorderReflect,
                                                   9, 3};
            const auto out = TestImage<R>::random(roi, {}, 7, TypeParam::kChannels);
            const auto before = out.copy({});
            auto rows = rowsOf<R*>(out);
            rows[size_t(null)] = nullptr;
            rows.back() = null + 2 < roi.height ? nullptr : rows.back();
            const auto buffer = workBuffer(int32_t(TypeParam::bufferBytes(roi.height, 3)));
            ASSERT_EQ(StatusNullPointer, TypeParam::call(source, rows.data(), roi, p, buffer.data()));
            const auto expected = TestImage<R>::filled(
                roi, {},
                [&](int x, int y) {
                    return y < null
                               ? TypeParam::expected(source, p, x / TypeParam::kChannels, x % TypeParam::kChannels, y)
                               : before.at(x, y);
                },
                TypeParam::kChannels);
            ASSERT_TRUE(samePixels(expected, out));
        }
}

const exports::FamilyFaults kFaults("vekiFilterRowBorderPipeline",
                                    {{"kernelSize", StatusSizeError, {0, INT32_MIN}, exports::Behind::kSizes},
                                     {"anchorX", StatusAnchorError, {-1, 3}, exports::Behind::kSizes},
                                     {"borderType", StatusBadArgument, {-1, 5, 6, 16, 65, INT32_MAX}},
                                     {"divisor", StatusBadArgument, {0}}});

TYPED_TEST(RowPipeline, TellsTheSizeOfItsBuffer) {
    int32_t bytes = -7;
    for (const int threads : {1, 2, 5}) {
        const ThreadCount count(threads);
        for (const RoiSize roi : {RoiSize{1, 1}, RoiSize{640, 480}, RoiSize{INT32_MAX, 3}})
            for (const int32_t size : {1, 3, 5, 31}) {
                ASSERT_EQ(StatusOk, TypeParam::kQuery(roi, size, &bytes));
                ASSERT_EQ(TypeParam::bufferBytes(roi.height, size), bytes);
            }
        bytes = -7;
        for (const RoiSize roi : {RoiSize{1, 1}, RoiSize{1, INT32_MAX}})
            ASSERT_EQ(StatusSizeError, TypeParam::kQuery(roi, INT32_MAX, &bytes));
        ASSERT_EQ(-7, bytes);
    }
}

}  // namespace
