// What the header asks of callers beyond what the names and types of parameters say: an entry for each family, in the
// file of families/ that is named after the folder of the implementation.
#pragma once

#include <limits>
#include <string>

#include "call.h"

namespace fuzz {

/** The values of a number. */
struct NumberRule {
    enum Others { kNone, kBelowOne, kAny };  // kBelowOne: larger ones would need that much memory

    std::string_view parameter;
    std::vector<double> usual;
    Others others = kAny;
    std::string_view below{};  // an earlier parameter, which the number is less than more often than not
};

struct Precondition {
    std::string_view family;        // how the names of its exports begin
    const char* skipped = nullptr;  // why its exports are not called

    /** The elements of an image that are read or written: those of the region, where nothing else is said. */
    Extent (*extent)(const Call& call, size_t image) = nullptr;
    /** How many columns the check of a step asks for, where those are not the columns that there are. */
    int64_t (*checkedColumns)(const Call& call, size_t image) = nullptr;

    /** The elements of an array that has more than one, by its parameter. */
    int64_t (*arrayLength)(const Call& call, size_t array) = nullptr;

    /** The query of the size of the work buffer: the whole name, or what takes the place of a part of the export's. */
    std::string_view query{}, replacedByQuery{};

    /** The type of the objects that the arguments describe, where no parameter takes or gives one. */
    std::string_view object{};

    bool sharesMemory = false;         // the destination may be the same image as a source
    bool dependsOnTeam = false;        // float results may depend on the number of threads
    bool hasAnyZero = false;           // a result of 0 may be -0 or +0
    bool checksFirstStepOnly = false;  // of several
    bool hasTiltedWindow = false;      // which must not begin left of the image
    bool isSlow = false;               // large regions take seconds
    std::string_view optional{};       // results and buffers whose pointers may be null

    std::vector<NumberRule> numbers{};  // those that mean something else in other families
};

/** The families of a file; they join the list when the program starts. */
struct Families {
    explicit Families(std::span<const Precondition> entries);
};

/** The entry with the longest name that fits; null where there is none. */
const Precondition* findPrecondition(const Export& target);

/** The rule of the family or else of all families; null where there is none. */
const NumberRule* findNumberRule(const Export& target, std::string_view parameter);

/** The query of the size of the work buffer of an export; null where there is none. */
const Export* queryOf(const Export& target);

/** The elements of an image, and the bytes of a row that the check of its step asks for. */
Extent extentOf(const Call& call, size_t image);
int64_t checkedRowBytes(const Call& call, size_t image);

// For entries.

/** The elements of the region, and their columns. */
Extent regionExtent(const Call& call, size_t image);
int64_t regionColumns(const Call& call, size_t image);

Extent enlarged(Extent extent, int64_t columns, int64_t rows);

}  // namespace fuzz
