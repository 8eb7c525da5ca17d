// Every accumulation against its definition: one pixel at a time, in the float arithmetic of the compiler.
#include <gtest/gtest.h>

#include "regions.h"
#include "status_order.h"
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
    static constexpr float kAlpha = 0.3f;

    struct Operands {
        TestImage<T> source1, source2;
        TestImage<uint8_t> mask;
        TestImage<float> accumulator;
        float alpha = kAlpha;

        Operands(RoiSize roi, Layout layout)
            : source1(TestImage<T>::random(roi, layout, 1)),
              source2(TestImage<T>::random(roi, layout, 2)),
              mask(TestImage<uint8_t>::filled(roi, layout,
                                              [random = Random(3)](int, int) mutable { return random.mask(); })),
              accumulator(TestImage<float>::random(roi, layout, 4)) {}

        /** The arguments of the export, in its order. */
        auto arguments() const {
            const auto image = [](const auto& pixels) { return std::tuple(pixels.data(), pixels.step()); };
            return std::tuple_cat(image(source1), only<std::is_same_v<Op, AddProduct>>(image(source2)),
                                  only<kHasMask>(image(mask)), image(accumulator), std::tuple(accumulator.roi()),
                                  only<std::is_same_v<Op, AddWeighted>>(std::tuple(alpha)));
        }

        Status call() const { return std::apply(Export, arguments()); }

        /** The accumulator after the call. */
        TestImage<float> expected() const {
            return TestImage<float>::filled(accumulator.roi(), {}, [&](int x, int y) {
                const float old = accumulator.at(x, y);
                return kHasMask && mask.at(x, y) == 0 ? old : Op::apply(old, source1.at(x, y), source2.at(x, y), alpha);
            });
        }
    };

    static void checkStatuses() {
        const Operands operands({9, 4}, {});
        const auto before = operands.accumulator.copy({});
        std::apply([](auto... arguments) { return StatusOrder(Export, arguments...); }, operands.arguments())
            .commonFaults()
            .check([&] { return bool(samePixels(before, operands.accumulator)); });
    }

  private:
    template <bool kKeep, typename Tuple>
    static auto only(Tuple tuple) {
        if constexpr (kKeep)
            return tuple;
        else
            return std::tuple();
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
    const auto check = [](RoiSize roi, Layout layout) {
        SCOPED_TRACE(::testing::Message() << roi.width << " x " << roi.height << ", " << layout);
        const typename TypeParam::Operands operands(roi, layout);
        const auto expected = operands.expected();
        ASSERT_EQ(StatusOk, operands.call());
        ASSERT_TRUE(samePixels(expected, operands.accumulator));
    };
    for (const RoiSize& roi : smallRegions())
        for (const Layout& layout : kLayouts)
            check(roi, layout);
    for (const RoiSize& roi : regionsAround(262144))
        check(roi, {Layout::kAfterGuard, 1, 3});
}

TYPED_TEST(Accumulate, ReportsTheFirstFault) {
    TypeParam::checkStatuses();
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
    const auto check = [&](RoiSize roi, Layout layout) {
        SCOPED_TRACE(::testing::Message() << roi.width << " x " << roi.height << ", " << layout);
        const auto source1 = TestImage<float>::random(roi, layout, 1),
                   source2 = TestImage<float>::random(roi, layout, 2);
        const auto expected = TestImage<float>::filled(
            roi, {}, [&](int x, int y) { return AddWeighted::apply(source2.at(x, y), source1.at(x, y), 0.f, alpha); });
        const TestImage<float> out(roi, layout), same1 = source1.copy(layout), same2 = source2.copy(layout);
        const auto call = [&](const TestImage<float>& a, const TestImage<float>& b, const TestImage<float>& to) {
            ASSERT_EQ(StatusOk, vekiAddWeighted_32f_C1R(a.data(), a.step(), b.data(), b.step(), to.data(), to.step(),
                                                        roi, alpha));
            ASSERT_TRUE(samePixels(expected, to));
        };
        call(source1, source2, out);
        call(same1, source2, same1);
        call(source1, same2, same2);
    };
    for (const RoiSize& roi : smallRegions())
        for (const Layout& layout : kLayouts)
            check(roi, layout);
    check({512, 512}, {});
}

TEST(AddWeighted, OutOfPlaceReportsTheFirstFault) {
    const RoiSize roi{9, 4};
    const TestImage<float> source(roi), out = TestImage<float>::random(roi, {}, 1);
    const auto before = out.copy({});
    StatusOrder(vekiAddWeighted_32f_C1R, source.data(), source.step(), source.data(), source.step(), out.data(),
                out.step(), roi, 0.5f)
        .commonFaults()
        .check([&] { return bool(samePixels(before, out)); });
}

// A source may be the accumulator itself.
TEST(AddSquare, AccumulatesAnImageIntoItself) {
    const RoiSize roi{131, 3};
    const auto image = TestImage<float>::random(roi, {}, 5);
    const auto expected = TestImage<float>::filled(
        roi, {}, [&](int x, int y) { return AddSquare::apply(image.at(x, y), image.at(x, y), 0.f, 0.f); });
    ASSERT_EQ(StatusOk, vekiAddSquare_32f_C1IR(image.data(), image.step(), image.data(), image.step(), roi));
    ASSERT_TRUE(samePixels(expected, image));
}

}  // namespace
