#pragma once

#include <new>
#include <type_traits>

#include "allocation.h"

namespace VEKCV_VARIANT {

/**
 * An array that belongs to a state object: the member that points to it, its number of elements, its alignment in bytes
 * and the initial value of its elements; without one they are not initialised.
 */
template <typename State, typename Element>
struct StateArray {
    Element* State::*member;
    int32_t count;
    int64_t alignment;
    bool isSet = false;
    Element value{};

    constexpr StateArray(Element* State::*array, int32_t elements, int64_t multiple = kBlockAlignment)
        : member(array), count(elements), alignment(multiple) {}
    constexpr StateArray(Element* State::*array, int32_t elements, int64_t multiple, Element first)
        : member(array), count(elements), alignment(multiple), isSet(true), value(first) {}
};

/**
 * Allocates a state object and its arrays in one block: newState(state, StateArray{&Model::weights, n}). The object is
 * value-initialised. StatusMemoryAllocation leaves `state` as it was.
 */
template <typename State, typename... Elements>
Status newState(Owned<State>& state, StateArray<State, Elements>... arrays) {
    static_assert(std::is_trivially_destructible_v<State> && (std::is_trivial_v<Elements> && ...),
                  "a state object is released without being destroyed");
    int64_t bytes = sizeof(State);
    ((bytes = alignUp(bytes, arrays.alignment) + int64_t{arrays.count} * sizeof(Elements)), ...);
    auto* const block = static_cast<uint8_t*>(allocateBytes(bytes));
    if (block == nullptr)
        return StatusMemoryAllocation;

    state.reset(new (block) State{});
    int64_t offset = sizeof(State);
    const auto place = [&]<typename Element>(const StateArray<State, Element>& array) {
        offset = alignUp(offset, array.alignment);
        auto* const elements = reinterpret_cast<Element*>(block + offset);
        for (int32_t i = 0; array.isSet && i < array.count; ++i)
            elements[i] = array.value;
        (*state).*array.member = elements;
        offset += int64_t{array.count} * sizeof(Element);
    };
    (place(arrays), ...);
    return StatusOk;
}

/** Releases a state object of newState; a null pointer gives StatusNullPointer. */
template <typename State>
Status freeState(State* state) {
    if (state == nullptr)
        return StatusNullPointer;
    release(state);
    return StatusOk;
}

}  // namespace VEKCV_VARIANT
