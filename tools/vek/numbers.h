#pragma once

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

/**
 * So many numbers with a separator between them, as in 5x3: whole ones, or finite ones of another type. None where the
 * text is something else.
 */
template <size_t count, typename Number = int32_t>
std::optional<std::array<Number, count>> numbersFrom(const std::string& text, char separator) {
    std::array<Number, count> numbers{};
    const char* at = text.data();
    const char* const end = at + text.size();
    for (Number& number : numbers) {
        if (&number != numbers.data() && (at == end || *at++ != separator))
            return std::nullopt;
        const auto [rest, error] = std::from_chars(at, end, number);
        if (error != std::errc() || !std::isfinite(number))
            return std::nullopt;
        at = rest;
    }
    return at == end ? std::optional(numbers) : std::nullopt;
}
