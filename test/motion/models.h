// What the tests of models of the background share: frames, and a model that is released at the end.
#pragma once

#include <climits>
#include <memory>

#include "standin.h"
#include "test_image.h"

namespace motion {

using Bytes = TestImage<uint8_t>;

/** What the functions for models of one kind and number of channels have in common. */
template <int32_t kCount, typename ParametersType, typename StateType, auto kInit, auto kRelease>
struct Form {
    using Parameters = ParametersType;
    using State = StateType;
    struct Free {
        void operator()(State* model) const { EXPECT_EQ(StatusOk, kRelease(model)); }
    };
    using Model = std::unique_ptr<State, Free>;
    static constexpr int32_t kChannels = kCount;
    static constexpr auto kInitAlloc = kInit;
};

/** A model of the first frame; null, with a failed test, where there is none. */
template <typename Form>
typename Form::Model modelOf(const Bytes& first) {
    const typename Form::Parameters parameters{};
    typename Form::State* state = nullptr;
    EXPECT_EQ(StatusOk, Form::kInitAlloc(first.data(), first.step(), first.roi(), &parameters, &state));
    return typename Form::Model(state);
}

/** A model is one block; where there is no memory for it, nothing changes. */
template <typename Form>
void expectOneBlock(const Bytes& first) {
    if (standIn() == nullptr)
        return;
    int held = standIn()->blocks();
    {
        const auto model = modelOf<Form>(first);
        EXPECT_EQ(held + 1, standIn()->blocks());
    }
    using State = typename Form::State;
    const typename Form::Parameters parameters{};
    State* const before = reinterpret_cast<State*>(&held);
    State* state = before;
    standIn()->failAfter(0);
    EXPECT_EQ(StatusMemoryAllocation, Form::kInitAlloc(first.data(), first.step(), first.roi(), &parameters, &state));
    standIn()->failAfter(INT_MAX);
    EXPECT_EQ(before, state);
    EXPECT_EQ(held, standIn()->blocks());
}

/** Models of more bytes than a block may have are more than there is memory for; the frame is not read. */
template <typename Form>
void expectNoHugeModels() {
    const uint8_t pixel = 0;
    const typename Form::Parameters parameters{};
    typename Form::State* state = nullptr;
    for (const RoiSize roi : {RoiSize{INT_MAX / 3, 1}, RoiSize{65536, 65536}, RoiSize{1, INT_MAX}})
        EXPECT_EQ(StatusMemoryAllocation,
                  Form::kInitAlloc(&pixel, roi.width * Form::kChannels, roi, &parameters, &state));
    EXPECT_EQ(nullptr, state);
}

}  // namespace motion
