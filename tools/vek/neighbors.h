#pragma once

#include <CLI/CLI.hpp>

#include "vekcv.h"

/** How many neighbours a pixel has: regions spread past the sides of pixels, or past their corners, too. */
constexpr int32_t kSides = 4, kSidesAndCorners = 8;

/** The same as the library takes it. */
inline int32_t normOf(int32_t neighbors) {
    return neighbors == kSides ? NormL1 : NormInf;
}

inline void addNeighbors(CLI::App& command, int32_t& neighbors, const std::string& description) {
    command.add_option("--neighbors,--connectivity", neighbors, description)
        ->check(CLI::IsMember({kSides, kSidesAndCorners}))
        ->capture_default_str();
}
