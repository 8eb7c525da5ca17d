// Dilation and erosion with grey elements against their definition.
#include "morph_exports.h"

namespace {

using morph::Element;
using morph::Mask;
using morph::Rank;

template <typename T>
class GrayMorphology : public ::testing::Test {
  protected:
    using Kind = morph::Gray<T>;
    using Height = typename Kind::Number;

    static auto operation(Rank rank) {
        if constexpr (std::is_same_v<T, float>)
            return rank == Rank::kMinimum ? &vekiGrayErodeBorder_32f_C1R : &vekiGrayDilateBorder_32f_C1R;
        else
            return rank == Rank::kMinimum ? &vekiGrayErodeBorder_8u_C1R : &vekiGrayDilateBorder_8u_C1R;
    }

    /** An element with the members of a mask; height(random) gives each height. */
    template <typename HeightOf>
    static Element<Height> raise(const Mask& mask, HeightOf height, uint32_t seed = 1) {
        return Element<Height>::of(mask.size, mask.anchor, [&, random = Random(seed)](int x, int y) mutable {
            if (mask.hasMember(x, y))
                return Height(height(random));
            if constexpr (std::is_same_v<T, float>)
                return x % 2 == 0 ? -FLT_MAX : -std::numeric_limits<float>::infinity();
            else
                return INT32_MIN;
        });
    }
    /** Heights that are not far from what pixels of an image differ by, and sometimes any that there are. */
    static Height anyHeight(Random& random) {
        if (random.below(6) == 0)
            if (const auto height = morph::outlier<Height>(random); morph::isMember(height))
                return height;
        return Height(int(random.below(9)) - 4);
    }

    static void expectRanks(const TestImage<T>& source, const Element<Height>& element, Layout layout = {}) {
        for (const Rank rank : morph::kRanks) {
            const auto memory = Kind::make(source.roi(), element, layout);
            const auto out = morph::apply(operation(rank), source, Kind::in(memory), layout);
            ASSERT_TRUE(morph::sameRanks(morph::rankOf(source, element, rank), out))
                << source.roi().width << " x " << source.roi().height << ", " << layout;
            ASSERT_TRUE(memory.guardsIntact());
        }
    }
};
using Types = ::testing::Types<uint8_t, float>;
TYPED_TEST_SUITE(GrayMorphology, Types);

TYPED_TEST(GrayMorphology, MatchesItsDefinition) {
    int turn = 0;
    forSmallImages([&](RoiSize roi, const Layouts& layouts) {
        const auto mask = morph::maskOf({1 + turn % 5, 1 + turn % 3}, {0, turn % 3},
                                        [=](int x, int y) { return x == 0 || (x + y + turn) % 2 == 0; });
        this->expectRanks(morph::imageFor<morph::Exports<TypeParam, 1>>(mask, roi, turn),
                          this->raise(mask, this->anyHeight, uint32_t(turn)), layouts[1]);
        ++turn;
    });
}

TYPED_TEST(GrayMorphology, TakesAnyElement) {
    morph::forMasks([&](const Mask& mask, int turn) {
        const auto element = this->raise(mask, this->anyHeight, uint32_t(turn));
        this->expectRanks(morph::imageFor<morph::Exports<TypeParam, 1>>(mask, morph::imageSize(turn), turn), element,
                          morph::layout(turn / 2));
    });
}

// Of flat elements with heights around those at which pixels reach an end of their range, and beyond.
TYPED_TEST(GrayMorphology, TakesAnyHeight) {
    std::vector<typename TestFixture::Height> heights{0,   1,    -1,  127, -128, 254,  -254,  255,   -255,
                                                      256, -256, 257, 511, 512,  -512, 65536, -65537};
    if constexpr (std::is_same_v<TypeParam, float>)
        heights.insert(heights.end(), {FLT_MAX, std::nextafter(-FLT_MAX, 0.f), FLT_MIN, 1e-45f, 0.1f, -0.f,
                                       std::numeric_limits<float>::infinity()});
    else
        heights.insert(heights.end(), {INT32_MAX, INT32_MIN + 1, 1 << 24, -(1 << 24)});
    const auto source = TestImage<TypeParam>::random({71, 5}, {}, 1);
    for (const auto height : heights)
        for (const RoiSize size : {RoiSize{1, 1}, RoiSize{2, 2}}) {
            SCOPED_TRACE(height);
            const auto mask = morph::maskOf(size, {0, 0}, [](int x, int y) { return x == y; });
            this->expectRanks(source, this->raise(mask, [=](Random&) { return height; }));
        }
    // What raises pixels beyond their range does not hide what is lowered.
    this->expectRanks(source, this->raise(morph::fullMask({3, 2}, {1, 1}), [&](Random& random) {
        return heights[random.below(uint32_t(heights.size()))];
    }));
}

TYPED_TEST(GrayMorphology, ParallelStripesGiveTheSame) {
    const auto mask = morph::maskOf({5, 9}, {4, 2}, [](int x, int y) { return x * 2 == y; });
    const auto element = this->raise(mask, [](Random& random) { return int(random.below(5)) - 2; });
    for (const RoiSize roi : morph::kLargeRegions) {
        const auto source = morph::imageFor<morph::Exports<TypeParam, 1>>(mask, roi, morph::kStripes);
        const auto expected = morph::rankOf(source, element, Rank::kMaximum);
        morph::forThreads<typename TestFixture::Kind>(roi, element, [&](GrayMorphologyState* state, Layout layout) {
            const auto out = morph::apply(this->operation(Rank::kMaximum), source, state, layout);
            ASSERT_TRUE(morph::sameRanks(expected, out));
        });
    }
}

const exports::FamilyFaults kDilateFaults("vekiGrayDilate", {morph::kBadBorders});
const exports::FamilyFaults kErodeFaults("vekiGrayErode", {morph::kBadBorders});

}  // namespace
