#pragma once

#include "state.h"

namespace fuzz {

struct Precondition;

/** A call that can be made again and again with the same arguments. */
struct Call {
    const Export* target = nullptr;
    const Precondition* rules = nullptr;

    std::vector<Value> values;
    std::vector<std::unique_ptr<Operand>> operands;   // one for each parameter; null where it has no memory of its own
    std::vector<std::unique_ptr<Operand>> addresses;  // the array of the addresses of rows
    std::vector<std::unique_ptr<State>> states;       // of each parameter that takes or gives an object; and one more
                                                      // where other parameters describe one

    Place bufferPlace{};                // of the work buffer, which depends on the number of threads
    std::vector<Value> plainValues;     // before faults were put in
    std::vector<bool> isNull;           // what is a null pointer on purpose
    std::string fault{};                // why the call must fail; empty where it need not
    bool writesInSpiteOfError = false;  // the destination rows before a null address
    int allowedAllocations = 0;         // of memory from the core library
    bool hasTinyCache = false;
    uint32_t otherVariant = 1;  // the one that is compared with variant 0

    const Value& value(std::string_view parameter) const { return values.at(target->indexOf(parameter)); }

    /** What the last part of the name tells; masks, markers, distances, and results of C3C1 forms, have one channel. */
    int32_t channelsOf(size_t image) const;

    /** What a parameter takes from one of the objects; nothing where it is of none. */
    std::optional<State::Bytes> stateArgument(std::string_view parameter) const;

    /** Whether the query of the size of the work buffer may take that. */
    bool isArgumentOfQuery(std::string_view parameter) const;
    /** What it takes, of the arguments without faults. */
    Value argumentOfQuery(std::string_view parameter) const;

    /** Whether a parameter is an image: a step follows it. */
    bool isImage(size_t parameter) const { return target->isStepOf(parameter + 1, parameter); }

    std::string describe() const;
};

}  // namespace fuzz
