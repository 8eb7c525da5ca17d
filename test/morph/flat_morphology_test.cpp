// Dilation and erosion with flat elements against their definition.
#include "morph_exports.h"

namespace {

using morph::Mask;
using morph::Rank;

template <typename Exports>
class FlatMorphology : public ::testing::Test {
  protected:
    using Pixel = typename Exports::Pixel;
    using Steps = typename Exports::Steps;

    static TestImage<Pixel> ranks(Rank rank, const TestImage<Pixel>& source, const Mask& mask, Layout layout = {}) {
        const auto memory = Steps::make(source.roi(), mask, layout);
        const auto operation = rank == Rank::kMinimum ? Exports::kErode : Exports::kDilate;
        const auto out = morph::apply(operation, source, Steps::in(memory), layout);
        EXPECT_TRUE(memory.guardsIntact());
        return out;
    }

    static void expectRanks(const TestImage<Pixel>& source, const Mask& mask, Layout layout) {
        for (const Rank rank : morph::kRanks)
            ASSERT_TRUE(morph::sameRanks(morph::rankOf(source, mask, rank), ranks(rank, source, mask, layout)));
    }
    static void expectRanks(const Mask& mask, RoiSize roi, int turn) {
        SCOPED_TRACE(::testing::Message() << roi.width << " x " << roi.height);
        expectRanks(morph::imageFor<Exports>(mask, roi, turn), mask, morph::layout(turn / 2));
    }
};
TYPED_TEST_SUITE(FlatMorphology, morph::AllForms);

TYPED_TEST(FlatMorphology, MatchesItsDefinition) {
    int turn = 0;
    forSmallImages([&](RoiSize roi, const Layouts& layouts) {
        const morph::Shape& shape = morph::shapes()[size_t(turn) % morph::shapes().size()];
        const RoiSize size{1 + turn % 5, 1 + turn % 10};
        const auto mask = morph::maskOf(size, {size.width / 2, 0},
                                        [&](int x, int y) { return (x == 0 && y == 0) || shape(x, y, size); });
        this->expectRanks(morph::imageFor<TypeParam>(mask, roi, turn++), mask, layouts[1]);
    });
}

TYPED_TEST(FlatMorphology, TakesAnyMask) {
    morph::forMasks([&](const Mask& mask, int turn) { this->expectRanks(mask, morph::imageSize(turn), turn); });
}

TYPED_TEST(FlatMorphology, TakesAnyFullMask) {
    morph::forFullWindows([&](const Mask& mask, int turn) { this->expectRanks(mask, morph::imageSize(turn), turn); });
}

TYPED_TEST(FlatMorphology, OfAFullMaskIsARankFilter) {
    using T = typename TypeParam::Pixel;
    for (const RoiSize size : {RoiSize{15, 15}, RoiSize{4, 31}}) {
        const Mask mask = morph::fullMask(size, {3, 2});
        const auto source = morph::imageFor<TypeParam>(mask, {150, 70}, 1);
        const TestImage<T> least(source.roi(), {}, TypeParam::kChannels);
        int32_t bytes = 0;
        ASSERT_EQ(StatusOk, TypeParam::kFilterMinSize(150, size, &bytes));
        ASSERT_EQ(StatusOk, callWith(TypeParam::kFilterMin, source, least, source.roi(), size, mask.anchor,
                                     workBuffer(bytes).data()));
        EXPECT_TRUE(morph::sameRanks(least, this->ranks(Rank::kMinimum, source, mask)));
    }
}

// The borders are replicated for each of the boxes.
TYPED_TEST(FlatMorphology, OfTwoBoxesIsThatOfTheirSum) {
    const Mask small = morph::fullMask({5, 3}, {1, 2}), large = morph::fullMask({7, 9}, {6, 3});
    const Mask sum = morph::fullMask({11, 11}, {7, 5});
    const auto source = morph::imageFor<TypeParam>(sum, {83, 41}, 0);
    for (const Rank rank : morph::kRanks)
        EXPECT_TRUE(morph::sameRanks(this->ranks(rank, this->ranks(rank, source, small), large),
                                     this->ranks(rank, source, sum)));
}

TYPED_TEST(FlatMorphology, OfTheComplementIsTheComplementOfTheOther) {
    using T = typename TypeParam::Pixel;
    const auto complement = [](const TestImage<T>& image) {
        return TestImage<T>::filled(
            image.roi(), {},
            [&](int x, int y) { return T(std::is_same_v<T, float> ? -image.at(x, y) : 255 - image.at(x, y)); },
            TypeParam::kChannels);
    };
    morph::forMasks([&](const Mask& mask, int turn) {
        const auto source = morph::imageFor<TypeParam>(mask, morph::imageSize(turn), turn);
        ASSERT_TRUE(morph::sameRanks(complement(this->ranks(Rank::kMaximum, source, mask)),
                                     this->ranks(Rank::kMinimum, complement(source), mask)));
    });
}

TYPED_TEST(FlatMorphology, ParallelStripesGiveTheSame) {
    const Mask cross = morph::maskOf({5, 9}, {1, 6}, [](int x, int y) { return y == 7 || (x == 3 && y != 4); });
    for (const Mask& mask : {cross, morph::fullMask({2, 4}, {0, 3})})
        for (const RoiSize roi : morph::kLargeRegions) {
            const auto source = morph::imageFor<TypeParam>(mask, roi, morph::kStripes);
            const auto expected = morph::rankOf(source, mask, Rank::kMaximum);
            morph::forThreads<typename TypeParam::Steps>(roi, mask, [&](MorphologyState* state, Layout layout) {
                ASSERT_TRUE(morph::sameRanks(expected, morph::apply(TypeParam::kDilate, source, state, layout)));
            });
        }
}

const exports::FamilyFaults kDilateFaults("vekiDilateBorder", {morph::kBadBorders});
const exports::FamilyFaults kErodeFaults("vekiErodeBorder", {morph::kBadBorders});

}  // namespace
