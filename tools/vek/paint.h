#pragma once

#include <array>

#include "picture.h"

using Color = std::array<uint8_t, 3>;

/** Gives the pixels of a rectangle, as far as they are in a picture of 8 bits, a colour; a grey picture, its red. */
void paint(Picture& picture, const ImageRect& place, const Color& color);
