// Pyramids with images, as optical flow takes them.
#pragma once

#include <memory>

#include "state.h"

namespace fuzz {

/** One of the two pyramids of a call; the state of the call tells the size of level 0. */
std::unique_ptr<State> drawFlowPyramid(Input& input);

}  // namespace fuzz
