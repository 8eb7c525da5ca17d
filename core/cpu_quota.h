#pragma once

#include <string>

namespace vekcore {

/**
 * The processors that the CPU quotas of the process' control group and of its ancestors leave, rounded up; INT_MAX
 * without a quota that can be read. The files are looked for below a root folder, "" for those of the system.
 */
int processorsOfQuota(const std::string& root) noexcept;

}  // namespace vekcore
