// States of optical flow: with how many threads they serve, and what memory is for them.
#include <climits>

#include "optical_flow_calls.h"
#include "standin.h"
#include "test/exports/thread_rules.h"
#include "thread_count.h"

namespace {

using flow::Options;
using flow::Points;
using flow::pointsAround;
using flow::Results;

template <typename Form>
class OpticalFlowStates : public flow::FlowTest<Form> {};
TYPED_TEST_SUITE(OpticalFlowStates, flow::Forms);

TYPED_TEST(OpticalFlowStates, ServeAnyNumberOfThreads) {
    auto [previous, next] = this->shiftedPair({96, 80}, 3.5, 1.5);
    const Points from = flow::manyPointsAround({96, 80}, 40);
    for (const int window : {3, 21, 63}) {
        SCOPED_TRACE(window);
        const Options options{window, 3, 10, 0.01f};
        Results expected(from);
        {
            const ThreadCount one(1);
            expected = this->followed(previous, next, from, from, options);
        }
        forThreadCounts([&, &before = previous, &after = next](int threads) {
            EXPECT_TRUE(areSame(expected, this->followed(before, after, from, from, options)));
            const auto state = this->stateFor({96, 80}, window);
            const ThreadCount others(4 - threads);  // than the state was made for
            for (int call = 0; call < 2; ++call) {
                Results results(from);
                ASSERT_EQ(StatusOk, this->follow(before.record(), after.record(), from, results, options, state));
                EXPECT_TRUE(areSame(expected, results));
            }
        });
    }
}

TYPED_TEST(OpticalFlowStates, SharePointsFromTheDocumentedNumberOn) {
    if (standIn() == nullptr)
        GTEST_SKIP() << "the core library is the real one";
    const auto rule = exports::threadRules(VEKCV_HEADER).at("vekiOpticalFlowPyrLK_8u_C1R");
    ASSERT_GT(rule.pixels, 0);
    auto [previous, next] = this->shiftedPair({24, 24}, 1, 1);
    const auto teams = [&, &before = previous, &after = next](int32_t window, int64_t points, const auto& state) {
        const Points from(size_t(points), {11, 12});
        Results results(from);
        return teamsOf([&] {
            ASSERT_EQ(StatusOk, this->follow(before.record(), after.record(), from, results, {window, 0, 1, 0}, state));
        });
    };
    for (const int32_t window : {3, 21, 63}) {
        const int64_t needed = (rule.pixels + window * window - 1) / (window * window);
        forThreadCounts([&](int threads) {
            const auto state = this->stateFor({24, 24}, window);
            EXPECT_EQ(0, teams(window, needed - 1, state));
            EXPECT_EQ(threads > 1 ? 1 : 0, teams(window, needed, state));
            const ThreadCount more(3);
            EXPECT_EQ(threads > 1 ? 1 : 0, teams(window, needed, state));
        });
    }
}

TYPED_TEST(OpticalFlowStates, AreAllThatIsAllocated) {
    if (standIn() == nullptr)
        GTEST_SKIP() << "the core library is the real one";
    auto [previous, next] = this->shiftedPair({96, 80}, 3.5, 1.5);
    const Points from = pointsAround({96, 80}, 5);
    const int held = standIn()->blocks();
    OpticalFlowState* const before = reinterpret_cast<OpticalFlowState*>(&previous);
    OpticalFlowState* state = before;
    standIn()->failAfter(0);
    EXPECT_EQ(StatusMemoryAllocation, TypeParam::kInitAlloc(&state, {96, 80}, 21));
    EXPECT_EQ(before, state);
    standIn()->failAfter(1);
    ASSERT_EQ(StatusOk, TypeParam::kInitAlloc(&state, {96, 80}, 21));
    const typename TestFixture::State owner(state);
    standIn()->failAfter(0);
    Results results(from);
    EXPECT_EQ(StatusOk, this->follow(previous.record(), next.record(), from, results, {}, owner));
    standIn()->failAfter(INT_MAX);
    EXPECT_EQ(held + 1, standIn()->blocks());
}

}  // namespace
