#include "enlarge.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace {

/** Four pixels in a row of a picture that its edge pixels continue, and their weights in a new pixel. */
struct Taps {
    std::array<int32_t, 4> places{};
    std::array<float, 4> weights{-0.0234375f, 0.2265625f, 0.8671875f, -0.0703125f};

    /** New pixels lie a quarter of a pixel left and right of the middle of an old one. */
    Taps(int32_t place, int32_t size) {
        for (int32_t i = 0; i < 4; ++i)
            places[static_cast<size_t>(i)] = std::clamp((place + 1) / 2 - 2 + i, 0, size - 1);
        if (place % 2 == 1)
            std::ranges::reverse(weights);
    }
};

template <typename T>
Picture enlargedOf(const Picture& picture) {
    Picture result(2 * picture.width, 2 * picture.height, picture.channels, picture.bits);
    T* to = result.pixels<T>();
    for (int32_t y = 0; y < result.height; ++y) {
        const Taps rows(y, picture.height);
        for (int32_t x = 0; x < result.width; ++x) {
            const Taps columns(x, picture.width);
            for (int32_t channel = 0; channel < picture.channels; ++channel) {
                float sum = 0;
                for (size_t i = 0; i < 4; ++i)
                    for (size_t j = 0; j < 4; ++j) {
                        const ptrdiff_t pixel = ptrdiff_t{rows.places[i]} * picture.width + columns.places[j];
                        sum += rows.weights[i] * columns.weights[j] *
                               picture.pixels<T>()[pixel * picture.channels + channel];
                    }
                *to++ = static_cast<T>(std::lrint(std::clamp(sum, 0.f, float{std::numeric_limits<T>::max()})));
            }
        }
    }
    return result;
}

}  // namespace

Picture enlarged(const Picture& picture) {
    return picture.bits == 16 ? enlargedOf<uint16_t>(picture) : enlargedOf<uint8_t>(picture);
}
