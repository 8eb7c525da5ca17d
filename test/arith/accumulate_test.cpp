// Every accumulation against its definition: one pixel at a time, in the float arithmetic of the compiler.
#include <gtest/gtest.h>

#include "arguments.h"
#include "regions.h"
#include "test_image.h"

namespace {

struct Add {
    template <typename T>
    static float apply(float accumulator, T source, T, float) {
        return accumulator + float(source);
    }
};

struct AddSquare {
    template <typename T>
    static float apply(float accumulator, T source, T, float) {
        return accumulator + float(source) * float(source);
    }
};

struct AddProduct {
    template <typename T>
    static float apply(float accumulator, T source1, T source2, float) {
        if constexpr (sizeof(T) == 1)
            return accumulator + float(source1 * source2);
        else
            return accumulator + float(source1) * float(source2);
    }
};

struct AddWeighted {
    template <typename T>
    static float apply(float accumulator, T source, T, float alpha) {
        return (float(source) - accumulator) * alpha + accumulator;
    }
};

enum Masking { kPlain, kMasked };

/** An export of the family and its definition. */
template <auto Export, typename Op, Masking kMasking = kPlain>
struct Member;

template <typename T, typename... Rest, Status (*Export)(const T*, int32_t, Rest...), typename Op, Masking kMasking>
struct Member<Export, Op, kMasking> {
    using Pixel = T;
    static constexpr bool kHasMask = kMasking == kMasked;
    static constexpr bool kHasTwoSources = std::is_same_v<Op, AddProduct>;
    static constexpr float kAlpha = 0.3f;

    struct Operands {
        TestImage<T> source1, source2;
        TestImage<uint8_t> mask;
        TestImage<float> accumulator;
        float alpha = kAlpha;

        Operands(RoiSize roi, const Layouts& layouts)
            : source1(TestImage<T>::random(roi, layouts[0], 1)),
              source2(TestImage<T>::random(roi, layouts[1], 2)),
              mask(TestImage<uint8_t>::filled(roi, layouts[2],
                                              [random = Random(3)](int, int) mutable { return random.mask(); })),
              accumulator(TestImage<float>::random(roi, layouts[3], 4)) {}

        Status call() const {
            return callWith(Export, source1, only<kHasTwoSources>(source2), only<kHasMask>(mask), accumulator,
                            accumulator.roi(), only<std::is_same_v<Op, AddWeighted>>(alpha));
        }

        /** The accumulator after the call. */
        TestImage<float> expected() const {
            return TestImage<float>::filled(accumulator.roi(), {}, [&](int x, int y) {
                const float old = accumulator.at(x, y);
                return kHasMask && mask.at(x, y) == 0 ? old : Op::apply(old, source1.at(x, y), source2.at(x, y), alpha);
            });
        }
    };

    static void check(RoiSize roi, const Layouts& layouts) {
        const Operands operands(roi, layouts);
        const auto expected = operands.expected();
        ASSERT_EQ(StatusOk, operands.call());
        ASSERT_TRUE(samePixels(expected, operands.accumulator));
    }
};

template <typename MemberType>
class Accumulate : public ::testing::Test {};

using Members = ::testing::Types<
    Member<&vekiAdd_8u32f_C1IR, Add>, Member<&vekiAdd_8s32f_C1IR, Add>, Member<&vekiAdd_16u32f_C1IR, Add>,
    Member<&vekiAdd_8u32f_C1IMR, Add, kMasked>, Member<&vekiAdd_8s32f_C1IMR, Add, kMasked>,
    Member<&vekiAdd_16u32f_C1IMR, Add, kMasked>, Member<&vekiAdd_32f_C1IMR, Add, kMasked>,
    Member<&vekiAddSquare_8u32f_C1IR, AddSquare>, Member<&vekiAddSquare_8s32f_C1IR, AddSquare>,
    Member<&vekiAddSquare_16u32f_C1IR, AddSquare>, Member<&vekiAddSquare_32f_C1IR, AddSquare>,
    Member<&vekiAddSquare_8u32f_C1IMR, AddSquare, kMasked>, Member<&vekiAddSquare_8s32f_C1IMR, AddSquare, kMasked>,
    Member<&vekiAddSquare_16u32f_C1IMR, AddSquare, kMasked>, Member<&vekiAddSquare_32f_C1IMR, AddSquare, kMasked>,
    Member<&vekiAddProduct_8u32f_C1IR, AddProduct>, Member<&vekiAddProduct_8s32f_C1IR, AddProduct>,
    Member<&vekiAddProduct_16u32f_C1IR, AddProduct>, Member<&vekiAddProduct_32f_C1IR, AddProduct>,
    Member<&vekiAddProduct_8u32f_C1IMR, AddProduct, kMasked>, Member<&vekiAddProduct_8s32f_C1IMR, AddProduct, kMasked>,
    Member<&vekiAddProduct_16u32f_C1IMR, AddProduct, kMasked>, Member<&vekiAddProduct_32f_C1IMR, AddProduct, kMasked>,
    Member<&vekiAddWeighted_8u32f_C1IR, AddWeighted>, Member<&vekiAddWeighted_8s32f_C1IR, AddWeighted>,
    Member<&vekiAddWeighted_16u32f_C1IR, AddWeighted>, Member<&vekiAddWeighted_32f_C1IR, AddWeighted>,
    Member<&vekiAddWeighted_8u32f_C1IMR, AddWeighted, kMasked>,
    Member<&vekiAddWeighted_8s32f_C1IMR, AddWeighted, kMasked>,
    Member<&vekiAddWeighted_16u32f_C1IMR, AddWeighted, kMasked>,
    Member<&vekiAddWeighted_32f_C1IMR, AddWeighted, kMasked>>;
TYPED_TEST_SUITE(Accumulate, Members);

TYPED_TEST(Accumulate, MatchesItsDefinition) {
    forSmallImages(TypeParam::check);
}

TYPED_TEST(Accumulate, MatchesItsDefinitionInParallel) {
    forLargeImages(kPixels, TypeParam::check);
}

// Each source may be the accumulator itself.
TYPED_TEST(Accumulate, TakesTheAccumulatorAsASource) {
    using Operands = typename TypeParam::Operands;
    if constexpr (std::is_same_v<typename TypeParam::Pixel, float>)
        for (const RoiSize& roi : smallRegions())
            for (const auto source : {&Operands::source1, &Operands::source2}) {
                if (source == &Operands::source2 && !TypeParam::kHasTwoSources)
                    continue;
                SCOPED_TRACE(::testing::Message() << roi.width << " x " << roi.height);
                Operands operands(roi, {});
                operands.*source = operands.accumulator;  // shares its memory
                const auto expected = operands.expected();
                ASSERT_EQ(StatusOk, operands.call());
                ASSERT_TRUE(samePixels(expected, operands.accumulator));
            }
}

// All weights, those without a meaning included, are used as they are.
TEST(AddWeighted, TakesAnyAlpha) {
    using InPlace = Member<&vekiAddWeighted_8u32f_C1IR, AddWeighted>;
    for (float alpha : {0.f, 1.f, -2.f, 1e30f, std::numeric_limits<float>::quiet_NaN()}) {
        SCOPED_TRACE(alpha);
        InPlace::Operands operands({37, 3}, {});
        operands.alpha = alpha;
        const auto expected = operands.expected();
        ASSERT_EQ(StatusOk, operands.call());
        ASSERT_TRUE(samePixels(expected, operands.accumulator));
    }
}

TEST(AddWeighted, OutOfPlaceGivesAlphaToTheFirstSource) {
    const float alpha = 0.75f;
    const auto check = [&](RoiSize roi, const Layouts& layouts) {
        const auto source1 = TestImage<float>::random(roi, layouts[0], 1),
                   source2 = TestImage<float>::random(roi, layouts[1], 2);
        const auto expected = TestImage<float>::filled(
            roi, {}, [&](int x, int y) { return AddWeighted::apply(source2.at(x, y), source1.at(x, y), 0.f, alpha); });
        const TestImage<float> out(roi, layouts[2]), same1 = source1.copy(layouts[0]), same2 = source2.copy(layouts[1]);
        const auto call = [&](const TestImage<float>& a, const TestImage<float>& b, const TestImage<float>& to) {
            ASSERT_EQ(StatusOk, callWith(vekiAddWeighted_32f_C1R, a, b, to, roi, alpha));
            ASSERT_TRUE(samePixels(expected, to));
        };
        call(source1, source2, out);
        call(same1, source2, same1);
        call(source1, same2, same2);
    };
    forSmallImages(check);
    check({512, 512}, Layout());
}

}  // namespace
