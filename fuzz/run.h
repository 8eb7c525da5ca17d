#pragma once

#include "call.h"

namespace fuzz {

/** The number of variants that this processor runs. */
uint32_t variantsOfProcessor();

/**
 * Makes a call in two variants, each with one thread and with three, and checks what it did: ends the program where two
 * results differ that must be the same, where something was written that must not be, and where a fault was accepted.
 * Gives the status.
 */
Status runAndCompare(const Call& call);

}  // namespace fuzz
