#pragma once

#include "call.h"

namespace fuzz {

/** Draws an argument that is a number but not a step, or that has several: a size, a point, a rectangle. */
void drawNumbers(Input& input, Call& call, size_t parameter);

}  // namespace fuzz
