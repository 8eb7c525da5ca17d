#pragma once

#include "call.h"

namespace fuzz {

/** Draws an argument, where it is a number that is no step, or has several: a size, a point, a rectangle. */
void drawNumbers(Input& input, Call& call, size_t parameter);

}  // namespace fuzz
