#pragma once

#include "picture.h"

// Morphological reconstruction of grey pictures. Neighbours are 4 or 8.

/** Makes a marker what is reconstructed from it by dilation under a mask, both of 8 or of 16 bits. */
void reconstructByDilation(Picture& marker, const Picture& mask, int32_t neighbors);

/** Makes a marker of 8 bits what is reconstructed from it by erosion above a mask. */
void reconstructByErosion(Picture& marker, const Picture& mask, int32_t neighbors);

/** A picture of 8 bits with dark regions as light as the darkest place in the wall around them. */
Picture withHolesFilled(const Picture& picture, int32_t neighbors);
