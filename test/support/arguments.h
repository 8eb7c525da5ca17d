#pragma once

#include <tuple>

/** The arguments that an image is in a call. */
template <typename Image>
auto argumentsOf(const Image& image) {
    return std::tuple(image.data(), image.step());
}

/** Arguments that only some exports of a family have. */
template <bool kHas, typename... Arguments>
auto only(std::tuple<Arguments...> arguments) {
    if constexpr (kHas)
        return arguments;
    else
        return std::tuple();
}
