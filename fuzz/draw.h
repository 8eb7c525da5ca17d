#pragma once

#include "call.h"

namespace fuzz {

/** A call of an export, with arguments that are valid but for faults that are put into some calls on purpose. */
Call drawCall(Input& input, const Export& target, uint32_t variants);

/** Why calls of an export cannot be drawn; empty where they can. */
std::string missingPlan(const Export& target);

/** Whether calls of all exports can be drawn; prints why not. */
bool canDrawAll();

}  // namespace fuzz
