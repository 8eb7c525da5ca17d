#pragma once

#include "call.h"

namespace fuzz {

/** Puts a fault into the arguments of a call, where the export has what it needs. */
void addFault(Input& input, Call& call);

}  // namespace fuzz
