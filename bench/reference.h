// What memory allows: the contestant that only moves the bytes of a call.
#pragma once

#include "measure.h"

namespace bench {

/** "memcpy" of as many bytes as the call touches or, for a call that writes no image, "read" of its operands. */
Contestant reference(const Case& work);

}  // namespace bench
