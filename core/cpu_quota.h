#pragma once

#include <string>

namespace vekcore {

/**
 * The number of processors that the CPU quotas of the control group of the process and of its ancestors leave, rounded
 * up; INT_MAX where no quota can be read. The files are looked for below the folder `root`, "" for those of the system.
 */
int processorsOfQuota(const std::string& root) noexcept;

}  // namespace vekcore
