// Types that follow from numbers among the arguments.
#pragma once

#include <cstdint>
#include <type_traits>

#include "vekcv.h"

namespace VEKCV_VARIANT {

/** Calls body(T()) with the type that an element code stands for, and gives its status. */
template <typename Body>
Status withElement(int32_t code, Body body) {
    switch (code) {
        case 1:
            return body(uint8_t());
        case 3:
            return body(int8_t());
        case 5:
            return body(uint16_t());
        case 13:
            return body(float());
        default:
            return StatusDataTypeError;
    }
}

/** Calls body(channels) with a number of interleaved channels as a constant, and gives its status. */
template <typename Body>
Status withChannels(int32_t channels, Body body) {
    switch (channels) {
        case 1:
            return body(std::integral_constant<int32_t, 1>());
        case 3:
            return body(std::integral_constant<int32_t, 3>());
        case 4:
            return body(std::integral_constant<int32_t, 4>());
        default:
            return StatusChannelError;
    }
}

}  // namespace VEKCV_VARIANT
