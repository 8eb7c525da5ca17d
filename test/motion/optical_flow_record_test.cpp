// What may be wrong with the records of pyramids and with the other arguments of optical flow.
#include <climits>

#include "optical_flow_calls.h"
#include "test/exports/faults.h"

namespace {

using flow::Levels;
using flow::Options;
using flow::Points;
using flow::Results;

template <typename Form>
class OpticalFlowRecords : public flow::FlowTest<Form> {};
TYPED_TEST_SUITE(OpticalFlowRecords, flow::Forms);

// What may be wrong with records and states, in the order in which it is found.
TYPED_TEST(OpticalFlowRecords, ReportTheFirstFault) {
    using T = typename TypeParam::Pixel;
    struct Setup {
        Levels<T> previous, next;
        Options options{9, 2, 5, 0.01f};
        RoiSize roi{48, 40};
        bool hasOtherState = false;
        std::vector<int> nullArrays{};
    };
    struct Fault {
        Status status;
        void (*put)(Setup& setup);
    };
    constexpr int32_t kHalf = int32_t{sizeof(T)} / 2;
    std::vector<Fault> faults{
        {StatusNullPointer, [](Setup& s) { s.previous.pixels[0] = nullptr; }},
        {StatusNullPointer, [](Setup& s) { s.next.pixels[0] = nullptr; }},
        {StatusNullPointer, [](Setup& s) { s.previous.pixels[2] = nullptr; }},
        {StatusNullPointer, [](Setup& s) { s.next.pixels[1] = nullptr; }},
        {StatusSizeError, [](Setup& s) { s.options.windowSize = 11; }},
        {StatusSizeError, [](Setup& s) { s.options.maxIterations = 0; }},
        {StatusSizeError, [](Setup& s) { s.next.sizes[0].width = 47; }},
        {StatusSizeError, [](Setup& s) { s.next.sizes[2].height += 1; }},
        {StatusSizeError, [](Setup& s) { s.previous.sizes[1].width -= 1; }},
        {StatusSizeError, [](Setup& s) { s.previous.sizes[1].height = s.next.sizes[1].height = 0; }},
        {StatusSizeError, [](Setup& s) { s.roi.width = 47; }},
        {StatusSizeError, [](Setup& s) { s.roi.height = 39; }},
        {StatusStepError, [](Setup& s) { s.previous.steps[0] -= int32_t{sizeof(T)}; }},
        {StatusStepError, [](Setup& s) { s.next.steps[0] = -s.next.steps[0]; }},
        {StatusStepError, [](Setup& s) { s.previous.steps[2] = 0; }},
        {StatusStepError, [](Setup& s) { s.next.steps[1] -= int32_t{sizeof(T)}; }},
    };
    if (kHalf > 0)
        for (const auto put :
             {+[](Setup& s) { s.previous.steps[0] += kHalf; }, +[](Setup& s) { s.next.steps[0] += kHalf; },
              +[](Setup& s) { s.previous.steps[1] += kHalf; }, +[](Setup& s) { s.next.steps[2] += kHalf; }})
            faults.push_back({StatusStepNotMultiple, put});
    faults.push_back({StatusBadArgument, [](Setup& s) { s.options.threshold = -1; }});
    faults.push_back({StatusBadArgument, [](Setup& s) { s.hasOtherState = true; }});

    const auto [previous, next] = this->shiftedPair({48, 40}, 1, 1);
    const Points from{{20, 20}};
    for (size_t second = 0; second < faults.size(); ++second)
        for (size_t first = 0; first <= second; ++first) {
            Setup setup{previous, next};
            faults[second].put(setup);
            if (first != second)
                faults[first].put(setup);
            OpticalFlowState* state = nullptr;
            constexpr auto kOther =
                std::is_same_v<T, float> ? vekiOpticalFlowPyrLKInitAlloc_8u_C1R : vekiOpticalFlowPyrLKInitAlloc_32f_C1R;
            ASSERT_EQ(StatusOk, (setup.hasOtherState ? kOther : TypeParam::kInitAlloc)(&state, setup.roi, 9));
            Results results(from);
            ASSERT_EQ(faults[first].status, this->follow(setup.previous.record(), setup.next.record(), from, results,
                                                         setup.options, typename TestFixture::State(state)))
                << "faults " << first << " and " << second;
            ASSERT_TRUE(areSame(Results(from), results));
        }
}

// Of the levels that are not in use, nothing counts; a number of levels below 0 stands for level 0.
TYPED_TEST(OpticalFlowRecords, MustHaveLevelZero) {
    auto [previous, next] = this->shiftedPair({48, 40}, 1, 1);
    previous.pixels[1] = nullptr;
    const Points from{{20, 20}};
    const auto state = this->stateFor({48, 40}, 9);
    const auto statusOf = [&, &before = previous, &after = next](int32_t maxLevel) {
        Results results(from);
        return this->follow(before.record(), after.record(), from, results, {9, maxLevel, 1, 0}, state);
    };
    EXPECT_EQ(StatusOk, statusOf(0));
    EXPECT_EQ(StatusNullPointer, statusOf(1));
    EXPECT_EQ(StatusBadArgument, statusOf(-1));
    EXPECT_EQ(StatusBadArgument, statusOf(INT_MIN));
    next.pixels[0] = nullptr;
    EXPECT_EQ(StatusNullPointer, statusOf(-1));
}

TYPED_TEST(OpticalFlowRecords, NeedTheirArrays) {
    auto [previous, next] = this->shiftedPair({48, 40}, 1, 1);
    const Pyramid before = previous.record(), after = next.record();
    const Points from{{20, 20}};
    const auto state = this->stateFor({48, 40}, 9);
    for (int fault = 0; fault < 8; ++fault) {
        SCOPED_TRACE(fault);
        Pyramid records[] = {before, after};
        Pyramid& record = records[fault / 4];
        if (fault % 4 == 0)
            record.levelImages = nullptr;
        else if (fault % 4 == 1)
            record.levelSizes = nullptr;
        else if (fault % 4 == 2)
            record.levelScales = nullptr;
        else
            record.levelSteps = nullptr;
        Results results(from);
        EXPECT_EQ(fault == 6 ? StatusOk : StatusNullPointer,  // the scales of the next image are not in use
                  this->follow(records[0], records[1], from, results, {9, 0, 1, 0}, state));
    }
}

constexpr float kInfinity = std::numeric_limits<float>::infinity(), kNaN = std::numeric_limits<float>::quiet_NaN();
const exports::FamilyFaults kStateFaults(
    "vekiOpticalFlowPyrLKInitAlloc", {{"windowSize", StatusSizeError, {2, 1, 0, -3, 4, 62, 64, 65, INT_MAX, INT_MIN}}});
const exports::FamilyFaults kFaults("vekiOpticalFlowPyrLK_",
                                    {{"pointCount", StatusSizeError, {0, -1, INT_MIN}},
                                     {"windowSize", StatusSizeError, {5, 1, 21, 0, -3}},
                                     {"maxIterations", StatusSizeError, {0, -1, INT_MIN}},
                                     {"maxLevel", StatusBadArgument, {-1, INT_MIN}},
                                     {"threshold", StatusBadArgument, {-0.001f, -kInfinity, kNaN}}});

}  // namespace
