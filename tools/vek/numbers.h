#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string>

/** So many whole numbers with a separator between them, as in 5x3; none where the text is something else. */
template <size_t count>
std::optional<std::array<int32_t, count>> numbersFrom(const std::string& text, char separator) {
    std::array<int32_t, count> numbers{};
    const char* at = text.data();
    const char* const end = at + text.size();
    for (int32_t& number : numbers) {
        if (&number != numbers.data() && (at == end || *at++ != separator))
            return std::nullopt;
        const auto [rest, error] = std::from_chars(at, end, number);
        if (error != std::errc())
            return std::nullopt;
        at = rest;
    }
    return at == end ? std::optional(numbers) : std::nullopt;
}
