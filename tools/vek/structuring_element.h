#pragma once

#include <CLI/CLI.hpp>
#include <optional>

#include "picture.h"

/** A flat structuring element: a mask, row by row, and which of its pixels lies on the pixel that is computed. */
struct StructuringElement {
    std::vector<uint8_t> members;  // 0 for pixels that do not belong to it
    RoiSize size;
    ImagePoint anchor;
};

/** An element as the user writes it. */
struct ElementOptions {
    std::string shape = "rect";
    std::optional<std::string> size, anchor;
};

void addElementOptions(CLI::App& command, ElementOptions& options);

StructuringElement elementFrom(const ElementOptions& options);
