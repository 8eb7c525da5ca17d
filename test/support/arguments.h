#pragma once

#include <tuple>

/** What a part of a call is among its arguments: an image its pixels and its step, a list of parts all of theirs. */
template <typename Part>
auto argumentsOf(const Part& part) {
    if constexpr (requires { part.step(); })
        return std::tuple(part.data(), part.step());
    else if constexpr (requires { std::tuple_size<Part>::value; })
        return std::apply([](const auto&... each) { return std::tuple_cat(argumentsOf(each)...); }, part);
    else
        return std::tuple(part);
}

/** Arguments that only some exports of a family have. */
template <bool kHas, typename... Parts>
auto only(const Parts&... parts) {
    if constexpr (kHas)
        return std::tuple_cat(argumentsOf(parts)...);
    else
        return std::tuple();
}

/** Calls a function with arguments that are given in parts. */
template <typename Result, typename... Arguments, typename... Parts>
Result callWith(Result (*function)(Arguments...), const Parts&... parts) {
    return std::apply(function, std::tuple_cat(argumentsOf(parts)...));
}
