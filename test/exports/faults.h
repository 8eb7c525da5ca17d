// What callers may do wrong, and the statuses that tell them.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "fuzz/export.h"

namespace exports {

/** Behind which of the checks that all exports share a family has a check of its own. */
enum class Behind { kSizes, kStepLengths, kAll };

/** Values that a parameter must not have. */
struct FaultRule {
    template <typename T>
    FaultRule(std::string_view faultyParameter, Status faultStatus, std::initializer_list<T> faultyValues,
              Behind common = Behind::kAll)
        : parameter(faultyParameter), status(faultStatus), behind(common) {
        for (const T& value : faultyValues)
            values.emplace_back().set(value);
    }

    std::string_view parameter;
    Status status;
    Behind behind;
    std::vector<fuzz::Value> values;
};

inline constexpr void* kNull = nullptr;

/**
 * Whether the steps of a family must be multiples of the element; or need only be positive, which is checked ahead of
 * the sizes.
 */
enum class Steps { kMultiples, kAny, kPositive };

/**
 * The faults of a family beyond those that follow from the declarations, in the order in which they are found. A rule
 * counts for the exports that have its parameter. A family is what the names of its exports begin with; the longest
 * that fits counts. The test of a family has such objects, which join a list when the program starts.
 */
struct FamilyFaults {
    FamilyFaults(std::string_view name, std::vector<FaultRule> faults, Steps familySteps = Steps::kMultiples);
    FamilyFaults(const FamilyFaults&) = delete;

    std::string_view family;
    std::vector<FaultRule> rules;
    Steps steps;
};

/** The rules of all families that are for no export, which a mistake in a name makes so; empty where there is none. */
std::string uselessRules();

/** A value in the place of one argument. */
struct Fault {
    size_t parameter;
    Status status;
    fuzz::Value value;
};

/** The faults of a call whose arguments are valid, and whose steps are as short as may be, in the order of the checks.
 */
std::vector<Fault> faultsOf(const fuzz::Export& target, const std::vector<fuzz::Value>& valid);

}  // namespace exports
