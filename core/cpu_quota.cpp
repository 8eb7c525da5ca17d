#include "cpu_quota.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <fstream>
#include <new>

namespace vekcore {
namespace {

/** The processors of a quota: the time that they may spend together in each period. A time below 1 is no limit. */
int processors(int64_t quota, int64_t period) {
    if (quota < 1 || period < 1)
        return INT_MAX;
    return static_cast<int>(std::min<int64_t>(INT_MAX, quota / period + (quota % period != 0)));
}

// A number that cannot be read is 0: in files that do not exist, and for the word "max".

int limitOfVersion2(const std::string& group) {
    int64_t quota = 0, period = 0;
    std::ifstream(group + "/cpu.max") >> quota >> period;
    return processors(quota, period);
}

int limitOfVersion1(const std::string& group) {
    int64_t quota = 0, period = 0;
    std::ifstream(group + "/cpu.cfs_quota_us") >> quota;
    std::ifstream(group + "/cpu.cfs_period_us") >> period;
    return processors(quota, period);
}

/**
 * The least limit of a group and its ancestors. A container may see its own group as the root of the hierarchy, but
 * itself under the path that the group has outside; no group of that path exists then except the root.
 */
int leastLimit(const std::string& hierarchy, std::string group, int (*limit)(const std::string&)) {
    int least = limit(hierarchy);
    for (size_t slash = 0; (slash = group.rfind('/')) != std::string::npos; group.resize(slash))
        least = std::min(least, limit(hierarchy + group));
    return least;
}

}  // namespace

int processorsOfQuota(const std::string& root) noexcept try {
    const std::string hierarchies = root + "/sys/fs/cgroup";
    int least = INT_MAX;
    std::ifstream groups(root + "/proc/self/cgroup");
    for (std::string line; std::getline(groups, line);) {  // number:controllers:group
        const size_t controllers = line.find(':') + 1, end = line.find(':', controllers);
        if (controllers == 0 || end == std::string::npos)
            continue;
        const std::string list = "," + line.substr(controllers, end - controllers) + ",", group = line.substr(end + 1);
        if (list == ",,")
            least = std::min(least, leastLimit(hierarchies, group, limitOfVersion2));
        else if (list.find(",cpu,") != std::string::npos)
            least = std::min(least, leastLimit(hierarchies + "/cpu", group, limitOfVersion1));
    }
    return least;
} catch (const std::bad_alloc&) {
    return INT_MAX;
}

}  // namespace vekcore
