#pragma once

#include <new>
#include <type_traits>

#include "allocation.h"

namespace VEKCV_VARIANT {

/** An array that belongs to a state object: the member that points to it, and its number of elements. */
template <typename State, typename Element>
struct StateArray {
    Element* State::*member;
    int32_t count;
};

template <typename State, typename Element>
StateArray(Element* State::*, int32_t) -> StateArray<State, Element>;

/**
 * Allocates a state object with its arrays, in one block: newState(&state, StateArray{&Model::weights, n}). The object
 * is value-initialised, the arrays are aligned but not initialised. StatusMemoryAllocation leaves *result as it was.
 */
template <typename State, typename... Elements>
Status newState(State** result, StateArray<State, Elements>... arrays) {
    static_assert(std::is_trivially_destructible_v<State> && (std::is_trivial_v<Elements> && ...),
                  "a state object is released without being destroyed");
    int64_t bytes = sizeof(State);
    ((bytes = alignUp(bytes, kBlockAlignment) + int64_t{arrays.count} * sizeof(Elements)), ...);
    auto* const block = static_cast<uint8_t*>(allocateBytes(bytes));
    if (block == nullptr)
        return StatusMemoryAllocation;

    auto* const state = new (block) State{};
    int64_t offset = sizeof(State);
    const auto place = [&]<typename Element>(StateArray<State, Element> array) {
        offset = alignUp(offset, kBlockAlignment);
        state->*array.member = reinterpret_cast<Element*>(block + offset);
        offset += int64_t{array.count} * sizeof(Element);
    };
    (place(arrays), ...);
    *result = state;
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
