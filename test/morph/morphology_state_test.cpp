// States of structuring elements: how they are made, and what they serve.
#include <cstring>

#include "morph_exports.h"
#include "standin.h"

namespace {

using morph::Rank;

/** A kind of states with the operations that take them, of which the first one is a dilation or a closing. */
template <typename Exports>
struct StepsOf : Exports {
    using Kind = typename Exports::Steps;
    static constexpr morph::Operation<typename Exports::Pixel, MorphologyState> kOperations[] = {Exports::kDilate,
                                                                                                 Exports::kErode};
};
template <typename Exports>
struct CompoundsOf : Exports {
    using Kind = typename Exports::Compounds;
    static constexpr morph::Operation<typename Exports::Pixel, MorphologyState> kOperations[] = {
        Exports::kClose, Exports::kOpen, Exports::kTopHat, Exports::kBlackHat, Exports::kGradient};
};
struct GrayBytes : morph::Exports<uint8_t, 1> {
    using Kind = morph::Gray<uint8_t>;
    static constexpr auto kOperations = {&vekiGrayDilateBorder_8u_C1R, &vekiGrayErodeBorder_8u_C1R};
};
struct GrayFloats : morph::Exports<float, 1> {
    using Kind = morph::Gray<float>;
    static constexpr auto kOperations = {&vekiGrayDilateBorder_32f_C1R, &vekiGrayErodeBorder_32f_C1R};
};

template <typename... Exports>
::testing::Types<StepsOf<Exports>..., CompoundsOf<Exports>..., GrayBytes, GrayFloats> casesOf(
    ::testing::Types<Exports...>);
using Cases = decltype(casesOf(morph::AllForms()));

/** An element of the kind with the members of a mask. */
template <typename Number>
morph::Element<Number> elementOf(const morph::Mask& mask) {
    const Number none =
        std::is_same_v<Number, float> ? Number(-FLT_MAX) : Number(std::is_same_v<Number, int32_t> ? INT32_MIN : 0);
    return morph::Element<Number>::of(mask.size, mask.anchor,
                                      [&](int x, int y) { return mask.hasMember(x, y) ? Number(1 + x) : none; });
}

template <typename Case>
class MorphologyStates : public ::testing::Test {
  protected:
    using T = typename Case::Pixel;
    using Kind = typename Case::Kind;
    using Structure = typename Kind::Structure;

    static Structure cross() {
        return elementOf<typename Kind::Number>(
            morph::maskOf({5, 9}, {3, 2}, [](int x, int y) { return x == 1 || y == 4; }));
    }
    static Structure full() { return elementOf<typename Kind::Number>(morph::fullMask({4, 3}, {3, 1})); }

    static TestImage<T> source(RoiSize roi) { return morph::imageFor<Case>(full(), roi, 0); }

    static Status call(typename Kind::State* state, const TestImage<T>& image, const TestImage<T>& out) {
        return callWith(*std::begin(Case::kOperations), image, out, image.roi(), int32_t{BorderReplicate}, state);
    }
    static Status statusFor(typename Kind::State* state, RoiSize roi) {
        const TestImage<T> out(roi, {}, Case::kChannels), untouched(roi, {}, Case::kChannels);
        const Status status = call(state, source(roi), out);
        EXPECT_TRUE(status == StatusOk || samePixels(untouched, out));
        return status;
    }

    static void expectResult(typename Kind::State* state, const Structure& element, RoiSize roi) {
        const TestImage<T> image = source(roi), out(roi, {}, Case::kChannels);
        ASSERT_EQ(StatusOk, call(state, image, out));
        auto expected = morph::rankOf(image, element, Rank::kMaximum);
        if constexpr (std::is_same_v<Case, CompoundsOf<morph::Exports<T, Case::kChannels>>>)
            expected = morph::rankOf(expected, element.mirrored(), Rank::kMinimum);
        ASSERT_TRUE(morph::sameRanks(expected, out)) << roi.width << " x " << roi.height;
    }
};
TYPED_TEST_SUITE(MorphologyStates, Cases);

TYPED_TEST(MorphologyStates, LieInOneBlockOrAnywhere) {
    const RoiSize roi{23, 11};
    for (const auto& element : {this->cross(), this->full()}) {
        const auto blocks = [] { return standIn() != nullptr ? standIn()->blocks() : 0; };
        const int held = blocks();
        typename TypeParam::Kind::State* state = nullptr;
        ASSERT_EQ(StatusOk,
                  TypeParam::Kind::initAlloc(&state, roi, element.numbers.data(), element.size, element.anchor));
        ASSERT_NO_FATAL_FAILURE(this->expectResult(state, element, roi));
        EXPECT_EQ(held + (standIn() != nullptr ? 1 : 0), blocks());
        EXPECT_EQ(StatusOk, TypeParam::Kind::release(state));
        EXPECT_EQ(held, blocks());

        int32_t size = 0;
        ASSERT_EQ(StatusOk, TypeParam::Kind::getSize(roi, element.numbers.data(), element.size, &size));
        for (const int offset : {0, 1, 2, 15, 31, 33, 63, 64}) {
            const TestImage<uint8_t> memory({size, 1}, {Layout::kAfterGuard, offset, 0});
            auto changed = element;
            state = TypeParam::Kind::in(memory);
            ASSERT_EQ(StatusOk,
                      TypeParam::Kind::init(state, roi, changed.numbers.data(), element.size, element.anchor));
            std::fill(changed.numbers.begin(), changed.numbers.end(), typename TypeParam::Kind::Number(5));
            for (int repeated = 0; repeated < 2; ++repeated)
                ASSERT_NO_FATAL_FAILURE(this->expectResult(state, element, roi)) << offset;
            EXPECT_TRUE(memory.guardsIntact());
        }
    }
    EXPECT_EQ(StatusNullPointer, TypeParam::Kind::release(nullptr));
}

TYPED_TEST(MorphologyStates, ServeRegionsUpToTheirSize) {
    const RoiSize roi{67, 21};
    for (const auto& element : {this->cross(), this->full()}) {
        const auto memory = TypeParam::Kind::make(roi, element);
        auto* const state = TypeParam::Kind::in(memory);
        for (const RoiSize smaller :
             {RoiSize{1, 1}, RoiSize{2, 21}, RoiSize{67, 1}, RoiSize{31, 9}, RoiSize{66, 20}, roi})
            ASSERT_NO_FATAL_FAILURE(this->expectResult(state, element, smaller));
        EXPECT_EQ(StatusSizeError, this->statusFor(state, {68, 1}));
        EXPECT_EQ(TypeParam::Kind::kServesAnyHeight ? StatusOk : StatusSizeError, this->statusFor(state, {1, 22}));
        if (TypeParam::Kind::kServesAnyHeight) {
            ASSERT_NO_FATAL_FAILURE(this->expectResult(state, element, {67, 300}));
        }
        EXPECT_TRUE(memory.guardsIntact());
    }
}

TYPED_TEST(MorphologyStates, AreNoneElsewhere) {
    const RoiSize roi{9, 4};
    const auto memory = TypeParam::Kind::make(roi, this->cross());
    const int32_t size = memory.roi().width;
    for (const int offset : {0, 1, 64}) {
        const TestImage<uint8_t> copy({size + offset, 1}, {Layout::kBeforeGuard, 0, 0});
        std::memcpy(copy.data() + offset, memory.data(), size_t(size));
        auto* const state = reinterpret_cast<typename TypeParam::Kind::State*>(copy.data() + offset);
        EXPECT_EQ(StatusBadArgument, this->statusFor(state, roi));
    }
    const auto zeros = TestImage<uint8_t>::constant({size, 1}, 0);
    EXPECT_EQ(StatusBadArgument, this->statusFor(TypeParam::Kind::in(zeros), roi));
}

TYPED_TEST(MorphologyStates, AreRefusedInTheOrderOfTheChecks) {
    using Number = typename TypeParam::Kind::Number;
    const auto none = elementOf<Number>(morph::maskOf({4, 3}, {0, 0}, [](int, int) { return false; }));
    const TestImage<uint8_t> memory({4096, 1});
    auto* const before = TypeParam::Kind::in(memory);
    auto* state = before;
    int32_t size = 77;
    // The numbers of a mask that is too large are not looked at: there is a single one.
    const auto one = TestImage<Number>::constant({1, 1}, Number(1)).copy({Layout::kBeforeGuard, 0, 0});
    const auto expectStatus = [&](Status status, RoiSize roi, const Number* mask, RoiSize maskSize, ImagePoint anchor) {
        SCOPED_TRACE(::testing::Message() << roi.width << " x " << roi.height << ", mask " << maskSize.width << " x "
                                          << maskSize.height << ", anchor " << anchor.x << ", " << anchor.y);
        EXPECT_EQ(status, TypeParam::Kind::initAlloc(&state, roi, mask, maskSize, anchor));
        EXPECT_EQ(status, TypeParam::Kind::init(before, roi, mask, maskSize, anchor));
        EXPECT_EQ(status, TypeParam::Kind::getSize(roi, mask, maskSize, &size));
    };
    expectStatus(StatusBadArgument, {9, 4}, none.numbers.data(), {4, 3}, {3, 2});
    expectStatus(StatusNullPointer, {9, 4}, nullptr, {4, 3}, {3, 2});
    for (const RoiSize huge : {RoiSize{INT_MAX, 1}, RoiSize{INT_MAX / 2, INT_MAX}}) {
        expectStatus(StatusSizeError, huge, none.numbers.data(), {4, 3}, {3, 2});
        expectStatus(StatusSizeError, huge, one.data(), {1, 1}, {0, 0});
        expectStatus(StatusMaskSizeError, huge, one.data(), {0, 1}, {0, 0});
    }
    for (const RoiSize huge : {RoiSize{INT_MAX, INT_MAX}, RoiSize{1 << 16, 1 << 15}, RoiSize{1, INT_MAX}})
        if (huge.width > 1 || sizeof(typename TestFixture::T) * TypeParam::kChannels > 1)
            expectStatus(StatusSizeError, {1, 1}, one.data(), huge, {0, 1});
    EXPECT_EQ(77, size);
    EXPECT_EQ(before, state);
    EXPECT_TRUE(samePixels(TestImage<uint8_t>({4096, 1}), memory));
}

TYPED_TEST(MorphologyStates, NeedMemory) {
    if (standIn() == nullptr)
        GTEST_SKIP() << "the core library is the real one";
    const auto element = this->cross();
    const int held = standIn()->blocks();
    const TestImage<uint8_t> memory({64, 1});
    auto* state = TypeParam::Kind::in(memory);
    standIn()->failAfter(0);
    const Status status =
        TypeParam::Kind::initAlloc(&state, {9, 4}, element.numbers.data(), element.size, element.anchor);
    standIn()->failAfter(INT_MAX);
    EXPECT_EQ(StatusMemoryAllocation, status);
    EXPECT_EQ(TypeParam::Kind::in(memory), state);
    EXPECT_EQ(held, standIn()->blocks());
}

/** Whether the operations of one case take the states of another one. */
template <typename Case, typename Other>
void expectToTake() {
    using T = typename Case::Pixel;
    using Number = typename Other::Kind::Number;
    const auto memory = Other::Kind::make({9, 4}, elementOf<Number>(morph::fullMask({2, 3}, {0, 0})));
    for (const RoiSize roi : {RoiSize{9, 4}, RoiSize{10, 5}})  // the latter is too large for the state
        for (const auto operation : Case::kOperations) {
            const TestImage<T> from({10, 5}, {}, Case::kChannels), to({10, 5}, {}, Case::kChannels);
            const Status expected = !std::is_same_v<Case, Other> ? StatusBadArgument
                                    : roi.width > 9              ? StatusSizeError
                                                                 : StatusOk;
            EXPECT_EQ(expected, callWith(operation, from, to, roi, int32_t{BorderReplicate}, Case::Kind::in(memory)));
        }
}

template <typename... Each>
void expectToTakeTheirOwn(::testing::Types<Each...>) {
    const auto ofAll = [&]<typename Case>(Case) { (expectToTake<Case, Each>(), ...); };
    (ofAll(Each()), ...);
}

TEST(MorphologyStatesOfAllKinds, ServeTheirOwnOperations) {
    expectToTakeTheirOwn(Cases());
}

const exports::FamilyFaults kStepsFaults("vekiMorphology",
                                         {morph::kBadWidths, morph::kBadMaskSizes, morph::kBadAnchors});
const exports::FamilyFaults kCompoundsFaults("vekiMorphologyCompound",
                                             {morph::kBadRegions, morph::kBadMaskSizes, morph::kBadAnchors});
const exports::FamilyFaults kGrayFaults("vekiGrayMorphology",
                                        {morph::kBadRegions, morph::kBadMaskSizes, morph::kBadAnchors});

}  // namespace
