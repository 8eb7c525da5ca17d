// The exports of pyramid layers by direction, element type and layout.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "test_image.h"

namespace pyramid {

enum class Direction { kDown, kUp };

/** The exports of a direction for elements of type T with kChannels channels. */
template <Direction kDirection, typename T, int kChannels>
struct Exports;

// A macro, as nothing else makes names.
#define PYRAMID_EXPORTS(direction, T, Number, channels, form)                              \
    template <>                                                                            \
    struct Exports<Direction::k##direction, T, channels> {                                 \
        using Pixel = T;                                                                   \
        using Tap = Number;                                                                \
        static constexpr Direction kDirection = Direction::k##direction;                   \
        static constexpr int kChannels = channels;                                         \
        static constexpr auto kInitAlloc = &vekiPyramidLayer##direction##InitAlloc_##form; \
        static constexpr auto kLayer = &vekiPyramidLayer##direction##_##form;              \
        static constexpr auto kFree = &vekiPyramidLayer##direction##Free_##form;           \
    };
#define PYRAMID_FORMS(direction)                              \
    PYRAMID_EXPORTS(direction, uint8_t, int16_t, 1, 8u_C1R)   \
    PYRAMID_EXPORTS(direction, uint8_t, int16_t, 3, 8u_C3R)   \
    PYRAMID_EXPORTS(direction, uint16_t, int16_t, 1, 16u_C1R) \
    PYRAMID_EXPORTS(direction, uint16_t, int16_t, 3, 16u_C3R) \
    PYRAMID_EXPORTS(direction, float, float, 1, 32f_C1R)      \
    PYRAMID_EXPORTS(direction, float, float, 3, 32f_C3R)
PYRAMID_FORMS(Down)
PYRAMID_FORMS(Up)
#undef PYRAMID_FORMS
#undef PYRAMID_EXPORTS

template <Direction kDirection>
using Forms =
    ::testing::Types<Exports<kDirection, uint8_t, 1>, Exports<kDirection, uint8_t, 3>, Exports<kDirection, uint16_t, 1>,
                     Exports<kDirection, uint16_t, 3>, Exports<kDirection, float, 1>, Exports<kDirection, float, 3>>;
template <typename... A, typename... B>
::testing::Types<A..., B...> joined(::testing::Types<A...>, ::testing::Types<B...>);
using AllForms = decltype(joined(Forms<Direction::kDown>(), Forms<Direction::kUp>()));

template <typename Tap>
using Kernel = std::vector<Tap>;

using StatePointer = std::shared_ptr<PyramidLayerState>;

template <typename Exports>
StatePointer makeState(RoiSize size, float rate, const Kernel<typename Exports::Tap>& kernel) {
    PyramidLayerState* state = nullptr;
    EXPECT_EQ(StatusOk, Exports::kInitAlloc(&state, size, rate, kernel.data(), int32_t(kernel.size()), 2));
    return {state, [](PyramidLayerState* made) { EXPECT_EQ(StatusOk, Exports::kFree(made)); }};
}

/** A size that the direction makes of another one; `choice` takes the least, the greatest or one between them. */
inline RoiSize resultSize(Direction direction, RoiSize size, float rate, int choice = 0) {
    RoiSize least{}, most{};
    if (direction == Direction::kDown) {
        EXPECT_EQ(StatusOk, vekiGetPyramidDownROI(size, &least, rate));
        return least;
    }
    EXPECT_EQ(StatusOk, vekiGetPyramidUpROI(size, &least, &most, rate));
    const auto between = [&](int32_t a, int32_t b) { return choice == 0 ? a : choice == 1 ? b : a + (b - a) / 2; };
    return {between(least.width, most.width), between(least.height, most.height)};
}

}  // namespace pyramid
