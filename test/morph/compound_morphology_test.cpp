// Opening, closing, top-hat, black-hat and gradient against their definition.
#include "morph_exports.h"

namespace {

using morph::Mask;
using morph::Rank;

template <typename Exports>
class CompoundMorphology : public ::testing::Test {
  protected:
    using Pixel = typename Exports::Pixel;
    using Compounds = typename Exports::Compounds;

    static TestImage<Pixel> apply(morph::Operation<Pixel, MorphologyState> operation, const TestImage<Pixel>& source,
                                  const Mask& mask, Layout layout = {}) {
        const auto memory = Compounds::make(source.roi(), mask, layout);
        const auto out = morph::apply(operation, source, Compounds::in(memory), layout);
        EXPECT_TRUE(memory.guardsIntact());
        return out;
    }

    static TestImage<Pixel> difference(const TestImage<Pixel>& a, const TestImage<Pixel>& b) {
        return TestImage<Pixel>::filled(
            a.roi(), {},
            [&](int x, int y) {
                return Pixel(std::is_integral_v<Pixel> && a.at(x, y) < b.at(x, y) ? 0 : a.at(x, y) - b.at(x, y));
            },
            Exports::kChannels);
    }

    /** The results of all operations by definition. */
    struct Expected {
        TestImage<Pixel> opening, closing, topHat, blackHat, gradient;

        Expected(const TestImage<Pixel>& source, const Mask& mask)
            : Expected(source, mask, morph::rankOf(source, mask, Rank::kMinimum),
                       morph::rankOf(source, mask, Rank::kMaximum)) {}

      private:
        Expected(const TestImage<Pixel>& source, const Mask& mask, const TestImage<Pixel>& erosion,
                 const TestImage<Pixel>& dilation)
            : opening(morph::rankOf(erosion, mask.mirrored(), Rank::kMaximum)),
              closing(morph::rankOf(dilation, mask.mirrored(), Rank::kMinimum)),
              topHat(difference(source, opening)),
              blackHat(difference(closing, source)),
              gradient(difference(dilation, erosion)) {}
    };

    /** operate(operation, source, mask) gives the results. */
    template <typename Operate>
    static void expectAll(const Expected& expected, Operate operate) {
        ASSERT_TRUE(morph::sameRanks(expected.opening, operate(Exports::kOpen)));
        ASSERT_TRUE(morph::sameRanks(expected.closing, operate(Exports::kClose)));
        ASSERT_TRUE(morph::sameRanks(expected.topHat, operate(Exports::kTopHat)));
        ASSERT_TRUE(morph::sameRanks(expected.blackHat, operate(Exports::kBlackHat)));
        ASSERT_TRUE(morph::sameRanks(expected.gradient, operate(Exports::kGradient)));
    }
    static void expectAll(const Mask& mask, RoiSize roi, int turn) {
        const Layout layout = morph::layout(turn / 2);
        SCOPED_TRACE(::testing::Message() << roi.width << " x " << roi.height << ", turn " << turn << ", " << layout);
        const auto source = morph::imageFor<Exports>(mask, roi, turn);
        expectAll(Expected(source, mask), [&](auto operation) { return apply(operation, source, mask, layout); });
    }
};
TYPED_TEST_SUITE(CompoundMorphology, morph::AllForms);

TYPED_TEST(CompoundMorphology, MatchesItsDefinition) {
    int turn = 0;
    for (const RoiSize roi : smallRegions()) {
        const RoiSize size{1 + turn % 5, 1 + turn % 3};
        const auto anchors = morph::anchorsOf(size);
        const auto mask = morph::maskOf(size, anchors[size_t(turn) % anchors.size()],
                                        [=](int x, int y) { return x == 0 || y == 0 || turn % 4 == 0; });
        this->expectAll(mask, roi, turn++);
    }
}

TYPED_TEST(CompoundMorphology, TakesAnyMask) {
    morph::forMasks([&](const Mask& mask, int turn) {
        if (turn % 3 == 0)  // single steps are tested with all of them
            this->expectAll(mask, morph::imageSize(turn / 3), turn / 3);
    });
}

// The rows between the two steps are kept in a ring, and come in blocks of up to 64 rows.
TYPED_TEST(CompoundMorphology, TakesImagesOfAnyHeight) {
    int turn = 0;
    for (const int32_t maskHeight : {1, 2, 7, 8, 9, 16, 17, 33, 63, 64, 65, 80})
        for (const int32_t height : {1, 8, 15, 17, 63, 65, 131, 200}) {
            const RoiSize size{1 + turn % 3, maskHeight};
            const auto anchors = morph::anchorsOf(size);
            const auto mask = morph::maskOf(size, anchors[size_t(turn) % anchors.size()],
                                            [=](int x, int y) { return turn % 2 == 0 || x + y == 0 || y % 5 == 3; });
            this->expectAll(mask, {1 + turn % 4, height}, turn);
            ++turn;
        }
}

TYPED_TEST(CompoundMorphology, HasThePropertiesOfItsOperations) {
    using T = typename TypeParam::Pixel;
    const RoiSize roi{61, 47};
    const auto source = TestImage<T>::filled(
        roi, {}, [random = Random(1)](int, int) mutable { return T(random.below(256)); }, TypeParam::kChannels);
    const auto asymmetric = [](int x, int y) { return x == 0 || y == 3 || x == y + 2; };
    for (const Mask& mask : {morph::maskOf({6, 5}, {5, 0}, asymmetric), morph::maskOf({6, 5}, {2, 3}, asymmetric),
                             morph::fullMask({2, 4}, {0, 1}), morph::fullMask({3, 3}, {1, 1})}) {
        SCOPED_TRACE(mask);
        const auto apply = [&](auto operation, const TestImage<T>& image) {
            return this->apply(operation, image, mask);
        };
        const auto opening = apply(TypeParam::kOpen, source), closing = apply(TypeParam::kClose, source);
        const auto openedTwice = apply(TypeParam::kOpen, opening), closedTwice = apply(TypeParam::kClose, closing);
        const auto topHat = apply(TypeParam::kTopHat, source), blackHat = apply(TypeParam::kBlackHat, source);
        const auto gradient = apply(TypeParam::kGradient, source);
        const int left = 2 * mask.size.width, top = 2 * mask.size.height;  // from where on borders do not matter
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < source.elements(); ++x) {
                ASSERT_GE(gradient.at(x, y), T(0));
                if (y < top || y >= roi.height - top || x < left * TypeParam::kChannels ||
                    x >= source.elements() - left * TypeParam::kChannels)
                    continue;
                ASSERT_LE(opening.at(x, y), source.at(x, y));
                ASSERT_GE(closing.at(x, y), source.at(x, y));
                ASSERT_EQ(opening.at(x, y), openedTwice.at(x, y));
                ASSERT_EQ(closing.at(x, y), closedTwice.at(x, y));
                ASSERT_EQ(source.at(x, y), T(opening.at(x, y) + topHat.at(x, y)));
                ASSERT_EQ(source.at(x, y), T(closing.at(x, y) - blackHat.at(x, y)));
            }
    }
}

TYPED_TEST(CompoundMorphology, ParallelStripesGiveTheSame) {
    const Mask mask = morph::maskOf({3, 5}, {2, 3}, [](int x, int y) { return y == 3 || x == 0; });
    for (const RoiSize roi : morph::kLargeRegions) {
        const auto source = morph::imageFor<TypeParam>(mask, roi, morph::kStripes);
        const typename TestFixture::Expected expected(source, mask);
        morph::forThreads<typename TypeParam::Compounds>(roi, mask, [&](MorphologyState* state, Layout layout) {
            this->expectAll(expected, [&](auto operation) { return morph::apply(operation, source, state, layout); });
        });
    }
}

const exports::FamilyFaults kFaults("vekiMorph", {morph::kBadBorders});

}  // namespace
