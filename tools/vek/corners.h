#pragma once

#include "picture.h"

/**
 * Adds corners of a grey picture of 8 bits to the points: the strongest ones first, until there are `most` points. No
 * two points are closer than half of the distance that so many would have if they were spread evenly. Corners with less
 * than a hundredth of the strength of the strongest do not count.
 */
void addCorners(const Picture& grey, size_t most, std::vector<ImagePoint32f>& points);
