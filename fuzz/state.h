// State objects of the library, such as classifiers: what an object is made from, and what follows from that for the
// arguments of a call. A type of object is a file of families/ with a class that derives from State and a StateType.
#pragma once

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "export.h"
#include "input.h"
#include "memory.h"

namespace fuzz {

struct Call;

// What is observed of an object is bytes. Of the floats among them a NaN is the same as any other.
inline float observed(float value) {
    return std::isnan(value) ? std::numeric_limits<float>::quiet_NaN() : value;
}
inline void appendObserved(std::vector<uint8_t>& bytes, float value) {
    value = observed(value);
    for (const std::byte byte : std::as_bytes(std::span(&value, 1)))
        bytes.push_back(static_cast<uint8_t>(byte));
}
inline void unifyFloats(std::vector<uint8_t>& bytes, float (*unify)(float) = observed) {
    for (size_t at = 0; at < bytes.size(); at += sizeof(float)) {
        float value;
        std::memcpy(&value, &bytes[at], sizeof value);
        value = unify(value);
        std::memcpy(&bytes[at], &value, sizeof value);
    }
}

/** What an object is made from. A call that is made several times makes a new object each time. */
class State {
  public:
    virtual ~State() = default;

    /** An object for a call; or the memory that a call makes one in. */
    virtual void* build(const Call& call) const = 0;
    virtual void release(void* object) const = 0;
    /** What the library makes of an object, to compare it with that of another variant or number of threads. */
    virtual std::vector<uint8_t> observe(const Call& call, void* object) const = 0;
    virtual std::string describe() const = 0;

    /** Whether operations with it take long for each pixel, so that regions had better be small. */
    virtual bool isSlow() const { return false; }

    /** How many threads are configured while an object is made for a call with so many. */
    virtual int threadsFor(int threads) const { return threads; }

    /** The memory of the caller that the latest object is in; null where the library allocates it. */
    virtual const Operand* memory() const { return nullptr; }

    using Bytes = std::span<const std::byte>;

    /** The number, or the elements of the array, that a parameter takes from the object; nothing for others. */
    virtual std::optional<Bytes> argument(std::string_view /*parameter*/) const { return {}; }

    /** The elements of an image that are read or written, where the object decides on that. */
    virtual std::optional<Extent> extentOf(const Call& /*call*/, size_t /*image*/) const { return {}; }

    /** Puts a fault into the arguments that an object is made from, and names it; empty where there is none. */
    virtual std::string addFault(Input& /*input*/, Call& /*call*/) { return {}; }
};

/** Joins the list of types when the program starts. */
class StateType {
  public:
    using Draw = std::unique_ptr<State> (*)(Input& input, const Export& target);

    /** The type is named as in the header. */
    StateType(std::string_view name, Draw draw);

    /** Null where no type has the name. */
    static Draw find(std::string_view name);
};

}  // namespace fuzz
