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

/** What all families refuse of a size. */
inline FaultRule badSize(std::string_view parameter) {
    return {parameter, StatusSizeError,
            std::initializer_list<RoiSize>{{0, 4}, {-1, 4}, {9, 0}, {9, INT32_MIN}, {INT32_MIN, INT32_MAX}},
            Behind::kSizes};
}
/** Widths whose rows are longer than any step. Three bytes for each pixel of the second one are 2 modulo 2^32. */
inline FaultRule tooWide(std::string_view parameter) {
    return {parameter, StatusStepError, std::initializer_list<RoiSize>{{INT32_MAX, 4}, {1431655766, 4}},
            Behind::kSizes};
}
/** Of regions of another size than the state has, 9 x 4, it is the size that is wrong, not the steps. */
inline const FaultRule kOtherSize{"roiSize", StatusSizeError,
                                  std::initializer_list<RoiSize>{{8, 4}, {10, 4}, {9, 3}, {9, 5}, {INT32_MAX, 4}},
                                  Behind::kSizes};

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

/** The faults of a call with valid arguments, whose steps are as short as may be, in the order of the checks. */
std::vector<Fault> faultsOf(const fuzz::Export& target, const std::vector<fuzz::Value>& valid);

}  // namespace exports
