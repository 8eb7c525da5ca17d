// Inpainting against its definition.
#include <climits>
#include <cstring>
#include <memory>

#include "caller_modes.h"
#include "inpaint_reference.h"
#include "masks.h"
#include "regions.h"
#include "standin.h"
#include "test/exports/faults.h"

namespace {

using inpaint::Bytes;
using inpaint::Floats;
using inpaint::kInfinity;
using inpaint::Reference;
using inpaint::Task;

template <int32_t kCount, auto kInit, auto kRestoreWith, auto kRelease>
struct Form {
    static constexpr int32_t kChannels = kCount;
    static constexpr auto kInitAlloc = kInit;
    static constexpr auto kRestore = kRestoreWith;
    static constexpr auto kFree = kRelease;
};
using Gray = Form<1, vekiInpaintInitAlloc_8u_C1R, vekiInpaint_8u_C1R, vekiInpaintFree_8u_C1R>;
using Colour = Form<3, vekiInpaintInitAlloc_8u_C3R, vekiInpaint_8u_C3R, vekiInpaintFree_8u_C3R>;

template <typename Form>
class Inpaint : public ::testing::Test {
  protected:
    static constexpr int32_t kChannels = Form::kChannels;
    struct Release {
        void operator()(InpaintState* state) const { EXPECT_EQ(StatusOk, Form::kFree(state)); }
    };
    using State = std::unique_ptr<InpaintState, Release>;

    static State stateOf(const Task& task) {
        InpaintState* state = nullptr;
        EXPECT_EQ(StatusOk, Form::kInitAlloc(&state, task.distance.data(), task.distance.step(), task.mask.data(),
                                             task.mask.step(), task.mask.roi(), task.radius, task.method));
        return State(state);
    }
    static Status restore(const Bytes& source, const Bytes& out, const State& state) {
        return Form::kRestore(source.data(), source.step(), out.data(), out.step(), source.roi(), state.get());
    }
    static Bytes restored(const Task& task, const Bytes& source, Layout layout = {}) {
        Bytes out(source.roi(), layout, kChannels);
        EXPECT_EQ(StatusOk, restore(source, out, stateOf(task)));
        return out;
    }
    static Bytes picture(RoiSize roi, Layout layout = {}, uint32_t seed = 1) {
        return Bytes::random(roi, layout, seed, kChannels);
    }
};
using Forms = ::testing::Types<Gray, Colour>;
TYPED_TEST_SUITE(Inpaint, Forms);

TYPED_TEST(Inpaint, MatchesItsDefinition) {
    constexpr float kRadii[] = {1, 3, 1.5f, 5, 2, 4.3f, 9, kInfinity};
    uint32_t seed = 0;
    forSmallImages([&](RoiSize roi, const Layouts& layouts) {
        for (const masks::Kind kind : masks::kKinds) {
            const RoiSize larger{roi.width, roi.height + (++seed % 2 == 0 ? 0 : 7)};
            const float radius = kRadii[seed % std::size(kRadii)];
            if (radius > 9 && larger.width * larger.height > 400)
                continue;
            const auto task =
                Task::of(masks::make(kind, larger, layouts[0], seed), radius, int32_t(seed / 3 % 2), layouts[1]);
            SCOPED_TRACE(::testing::Message()
                         << "mask " << int(kind) << ", radius " << radius << ", method " << task.method);
            const auto source = this->picture(larger, layouts[2], seed);
            ASSERT_TRUE(Reference(task, source, this->restored(task, source, layouts[3])).check());
        }
    });
}

// Any numbers, and such that differ little, so that the order of equal times counts.
TYPED_TEST(Inpaint, TakesAnyDistances) {
    for (uint32_t seed = 0; seed < 24; ++seed) {
        const RoiSize roi{33, 14};
        Task task{masks::make(masks::kKinds[2 + seed % 6], roi, {}, seed), Floats::random(roi, {}, seed),
                  seed % 4 < 2 ? 3.0f : 5.0f, int32_t(seed % 2)};
        if (seed % 3 != 0) {
            Random random(seed);
            task.distance = Floats::filled(roi, {}, [&](int, int) { return float(random.below(5)) / 2 - 1; });
        }
        SCOPED_TRACE(seed);
        const auto source = this->picture(roi);
        ASSERT_TRUE(Reference(task, source, this->restored(task, source)).check());
    }
}

TYPED_TEST(Inpaint, KeepsConstants) {
    const RoiSize roi{61, 45};
    for (const masks::Kind kind : {masks::Kind::kSingle, masks::Kind::kFewPixels, masks::Kind::kStripes})
        for (const int32_t method : {0, 1})
            for (const float radius : {1.0f, 3.0f, 5.0f}) {
                SCOPED_TRACE(::testing::Message() << "mask " << int(kind) << ", method " << method << ", " << radius);
                const auto task = Task::of(masks::make(kind, roi, {}, 5), radius, method);
                for (const int value : {0, 1, 100, 254, 255}) {
                    const auto constant = Bytes::constant(roi, uint8_t(value), this->kChannels);
                    const auto isUnknown = [&](int x, int y) { return task.mask.at(x / this->kChannels, y) != 0; };
                    const auto source = Bytes::filled(
                        roi, {}, [&](int x, int y) { return uint8_t(isUnknown(x, y) ? 255 - value : value); },
                        this->kChannels);
                    ASSERT_TRUE(samePixels(constant, this->restored(task, source)));
                }
            }
}

TYPED_TEST(Inpaint, KeepsRampsNearly) {
    const RoiSize roi{61, 45};
    const auto scratches =
        Bytes::filled(roi, {}, [](int x, int y) { return uint8_t((x + 2 * y) % 17 < 3 || y % 15 == 7 ? 255 : 0); });
    const auto ramp = Bytes::filled(
        roi, {}, [&](int x, int y) { return uint8_t(20 + x / this->kChannels + y); }, this->kChannels);
    for (const int32_t method : {0, 1})
        for (const float radius : {1.0f, 3.0f, 5.0f}) {
            SCOPED_TRACE(::testing::Message() << "method " << method << ", radius " << radius);
            const auto out = this->restored(Task::of(scratches, radius, method), ramp);
            int mostOff = 0;  // but at the edges, where pixels have others on one side only
            for (int y = 2; y < roi.height - 2; ++y)
                for (int x = 3 * this->kChannels; x < ramp.elements() - 3 * this->kChannels; ++x)
                    mostOff = std::max(mostOff, std::abs(out.at(x, y) - ramp.at(x, y)));
            EXPECT_LE(mostOff, 2);
        }
}

TYPED_TEST(Inpaint, RestoresNothingWithoutUnknownPixels) {
    const RoiSize roi{67, 5};
    for (const int32_t method : {0, 1}) {
        const auto task = Task::of(Bytes::constant(roi, 0), 3, method);
        const auto source = this->picture(roi);
        EXPECT_TRUE(samePixels(source, this->restored(task, source, {Layout::kBeforeGuard, 0, 3})));
    }
}

TYPED_TEST(Inpaint, GivesZerosWithoutKnownPixels) {
    const RoiSize roi{67, 5};
    for (const int32_t method : {0, 1}) {
        const auto task = Task::of(Bytes::constant(roi, 9), 3, method);
        EXPECT_TRUE(samePixels(Bytes::constant(roi, 0, this->kChannels), this->restored(task, this->picture(roi))));
    }
}

TYPED_TEST(Inpaint, WorksInPlace) {
    for (const masks::Kind kind : {masks::Kind::kNone, masks::Kind::kShapes}) {
        const auto task = Task::of(masks::make(kind, {67, 31}, {}, 2), 5, 0);
        const auto image = this->picture({67, 31}, {Layout::kAfterGuard, 1, 3});
        const auto expected = this->restored(task, image);
        ASSERT_EQ(StatusOk, this->restore(image, image, this->stateOf(task)));
        EXPECT_TRUE(samePixels(expected, image));
    }
}

// The state has copies of all that it needs, and a call leaves nothing behind for the next one.
TYPED_TEST(Inpaint, StatesServeManyImages) {
    auto task = Task::of(masks::make(masks::Kind::kStripes, {67, 31}, {}, 2), 5, 1);
    const auto state = this->stateOf(task);
    std::vector<Bytes> expected;
    for (uint32_t seed = 0; seed < 4; ++seed)
        expected.push_back(this->restored(task, this->picture({67, 31}, {}, seed)));
    task = {Bytes({1, 1}), Floats({1, 1}), 0, 0};
    for (const uint32_t seed : {0, 1, 1, 2, 3, 0}) {
        Bytes out({67, 31}, {}, this->kChannels);
        ASSERT_EQ(StatusOk, this->restore(this->picture({67, 31}, {}, seed), out, state));
        ASSERT_TRUE(samePixels(expected[seed], out));
    }
}

TYPED_TEST(Inpaint, IgnoresTheModesOfTheCaller) {
    const auto task = Task::of(masks::make(masks::Kind::kShapes, {67, 31}, {}, 3), 5, 0);
    const auto source = this->picture({67, 31});
    const auto expected = this->restored(task, source);
    forCallerModes([&] { EXPECT_TRUE(samePixels(expected, this->restored(task, source))); });
}

TYPED_TEST(Inpaint, NeedsNoAlignment) {
    const auto task = Task::of(masks::make(masks::Kind::kShapes, {67, 31}, {}, 3), 5, 0);
    const auto source = this->picture({67, 31});
    const auto expected = this->restored(task, source);
    const int32_t step = 67 * int32_t{sizeof(float)};
    for (const int offset : {1, 2, 3}) {
        const Bytes memory({step, 32});
        for (int y = 0; y < 31; ++y)
            std::memcpy(&memory.at(offset, y), &task.distance.at(0, y), size_t(step));
        InpaintState* state = nullptr;
        ASSERT_EQ(StatusOk, TypeParam::kInitAlloc(&state, reinterpret_cast<const float*>(&memory.at(offset, 0)), step,
                                                  task.mask.data(), task.mask.step(), {67, 31}, 5, 0));
        Bytes out({67, 31}, {}, this->kChannels);
        ASSERT_EQ(StatusOk, this->restore(source, out, typename TestFixture::State(state)));
        EXPECT_TRUE(samePixels(expected, out));
    }
}

TEST(InpaintChannels, AreRestoredAlike) {
    for (const int32_t method : {0, 1}) {
        const auto task = Task::of(masks::make(masks::Kind::kShapes, {67, 31}, {}, 3), 3, method);
        const auto source = Bytes::random({67, 31}, {}, 1, 3);
        InpaintState *one = nullptr, *three = nullptr;
        const auto make = [&](auto initAlloc, InpaintState** state) {
            ASSERT_EQ(StatusOk, initAlloc(state, task.distance.data(), task.distance.step(), task.mask.data(),
                                          task.mask.step(), {67, 31}, task.radius, task.method));
        };
        make(vekiInpaintInitAlloc_8u_C1R, &one);
        make(vekiInpaintInitAlloc_8u_C3R, &three);
        Bytes out({67, 31}, {}, 3), channelOut({67, 31});
        ASSERT_EQ(StatusOk, vekiInpaint_8u_C3R(source.data(), source.step(), out.data(), out.step(), {67, 31}, three));
        for (int c = 0; c < 3; ++c) {
            const auto channelOf = [&](const Bytes& image) {
                return Bytes::filled({67, 31}, {}, [&](int x, int y) { return image.at(3 * x + c, y); });
            };
            const auto channel = channelOf(source);
            ASSERT_EQ(StatusOk, vekiInpaint_8u_C1R(channel.data(), channel.step(), channelOut.data(), channelOut.step(),
                                                   {67, 31}, one));
            EXPECT_TRUE(samePixels(channelOf(out), channelOut));
        }
        EXPECT_EQ(StatusOk, vekiInpaintFree_8u_C1R(one));
        EXPECT_EQ(StatusOk, vekiInpaintFree_8u_C3R(three));
    }
}

TYPED_TEST(Inpaint, TakesStatesOfItsOwn) {
    using Other = std::conditional_t<TypeParam::kChannels == 1, Colour, Gray>;
    const auto task = Task::of(masks::make(masks::Kind::kShapes, {9, 4}, {}, 3), 3, 0);
    const auto state = this->stateOf(task);
    const auto statusFor = [&](RoiSize roi, int32_t step, auto restoreWith) {
        const Bytes source({30, 6}), out({30, 6});
        const Status status = restoreWith(source.data(), step, out.data(), 30, roi, state.get());
        EXPECT_TRUE(status == StatusOk || samePixels(Bytes({30, 6}), out));
        return status;
    };
    EXPECT_EQ(StatusOk, statusFor({9, 4}, 30, TypeParam::kRestore));
    for (const RoiSize size : {RoiSize{8, 4}, RoiSize{10, 4}, RoiSize{9, 3}, RoiSize{9, 5}})
        EXPECT_EQ(StatusSizeError, statusFor(size, 1, Other::kRestore));
    EXPECT_EQ(StatusStepError, statusFor({9, 4}, 8, Other::kRestore));
    EXPECT_EQ(StatusBadArgument, statusFor({9, 4}, 30, Other::kRestore));
}

TYPED_TEST(Inpaint, NeedsMemory) {
    if (standIn() == nullptr)
        GTEST_SKIP() << "the core library is the real one";
    for (const masks::Kind kind : {masks::Kind::kNone, masks::Kind::kShapes}) {
        const auto task = Task::of(masks::make(kind, {67, 31}, {}, 3), 3, 0);
        const int held = standIn()->blocks();
        int place = 0;
        auto* const before = reinterpret_cast<InpaintState*>(&place);
        InpaintState* state = before;
        const auto makeWith = [&](int allocations) {
            standIn()->failAfter(allocations);
            const Status status = TypeParam::kInitAlloc(&state, task.distance.data(), task.distance.step(),
                                                        task.mask.data(), task.mask.step(), {67, 31}, 3, 0);
            standIn()->failAfter(INT_MAX);
            return status;
        };
        const int needed = kind == masks::Kind::kNone ? 1 : 2;
        for (int allocations = 0; allocations < needed; ++allocations) {
            EXPECT_EQ(StatusMemoryAllocation, makeWith(allocations));
            EXPECT_EQ(before, state);
            EXPECT_EQ(held, standIn()->blocks());
        }
        ASSERT_EQ(StatusOk, makeWith(needed));
        EXPECT_EQ(held + 1, standIn()->blocks());
        standIn()->failAfter(0);
        const Bytes image({67, 31}, {}, this->kChannels);
        EXPECT_EQ(StatusOk,
                  TypeParam::kRestore(image.data(), image.step(), image.data(), image.step(), {67, 31}, state));
        standIn()->failAfter(INT_MAX);
        EXPECT_EQ(StatusOk, TypeParam::kFree(state));
        EXPECT_EQ(held, standIn()->blocks());
    }
}

TYPED_TEST(Inpaint, MakesStatesOnTheCallingThread) {
    if (standIn() == nullptr)
        GTEST_SKIP() << "the core library is the real one";
    const auto task = Task::of(masks::make(masks::Kind::kStripes, {1024, 600}, {}, 3), 3, 0);
    EXPECT_EQ(0, teamsOf([&] { this->stateOf(task); }));
}

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
const exports::FamilyFaults kStateFaults(
    "vekiInpaintInitAlloc", {{"method", StatusBadArgument, {-1, 2, INT_MAX}},
                             {"radius", StatusBadArgument, {0.99999f, 0.5f, 0.0f, -5.0f, -kInfinity, kNaN}}});
const exports::FamilyFaults kFaults("vekiInpaint_8u", {exports::kOtherSize});

}  // namespace
