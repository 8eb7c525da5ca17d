#pragma once

#include <vector>

#include "vekcv.h"

/** An object, and how many windows found it. */
struct Detection {
    ImageRect place;
    int32_t windows;
};

/**
 * The objects that windows found: windows whose edges all differ by at most a fifth of their sides belong together,
 * also by way of others. A group of at least so many windows is an object, where they lie on average, unless it lies
 * within one of more windows. With 0, every window is an object. From top to bottom, and from left to right.
 */
std::vector<Detection> grouped(std::vector<ImageRect> windows, int32_t leastWindows);
