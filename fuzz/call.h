#pragma once

#include <memory>
#include <optional>
#include <string>

#include "classifier.h"
#include "export.h"
#include "memory.h"

namespace fuzz {

struct Precondition;

/** A call that can be made again and again with the same arguments. */
struct Call {
    const Export* target = nullptr;
    const Precondition* rules = nullptr;

    std::vector<Value> values;
    std::vector<std::unique_ptr<Operand>> operands;   // one for each parameter; null where it has no memory of its own
    std::vector<std::unique_ptr<Operand>> addresses;  // the array of the addresses of rows
    std::optional<Features> features;                 // of exports that have to do with classifiers

    Place bufferPlace{};                // of the work buffer, which depends on the number of threads
    std::vector<Value> plainValues;     // before faults were put in
    std::vector<bool> isNull;           // what is a null pointer on purpose
    std::string fault{};                // why the call must fail; empty where it need not
    bool writesInSpiteOfError = false;  // what comes before a null address among the destination rows
    int allowedBlocks = 0;              // of memory from the core library
    bool hasTinyCache = false;
    uint32_t otherVariant = 1;  // the one that is compared with variant 0

    const Value& value(std::string_view parameter) const { return values[target->indexOf(parameter)]; }

    /** What the last part of the name tells; masks and results have one channel. */
    int32_t channelsOf(size_t image) const;

    /** Whether a parameter is an image: a step follows it. */
    bool isImage(size_t parameter) const { return target->isStepOf(parameter + 1, parameter); }

    std::string describe() const;
};

}  // namespace fuzz
