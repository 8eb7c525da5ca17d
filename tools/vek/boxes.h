#pragma once

#include "picture.h"

/** Draws the edges of a rectangle into a picture of 8 bits: light green ones, or white, between dark lines. */
void drawBox(Picture& picture, const ImageRect& place);
