// The exports as the header declares them: names and types of their parameters, and a call with values of any type.
#pragma once

#include <cstddef>
#include <cstring>
#include <span>
#include <string_view>
#include <vector>

#include "vekcv.h"

namespace fuzz {

enum class Element {
    k8u,
    k8s,
    k16u,
    k16s,
    k32s,
    k32f,
    k64f,
    kPoint,
    kSize,
    kRectangle,
    kPoint32f,
    kComponent,
    kPointer
};

enum class Kind {
    kNumber,
    kPoint,
    kPoint32f,
    kSize,
    kRectangle,
    kPointer,    // to one element or many
    kRows,       // to the addresses of rows
    kState,      // to an object of the library
    kStateSlot,  // to where the address of a new object is put
};

int64_t bytesOf(Element element);

struct Parameter {
    std::string_view name;
    Kind kind;
    Element element;          // of the number, or what the pointer or the rows point to
    bool isConst;             // what is pointed to is only read
    std::string_view type{};  // the name of the type of an object of the library

    bool isObject() const { return !type.empty(); }
};

/** An argument of any type. */
class Value {
  public:
    template <typename T>
    T as() const {
        static_assert(sizeof(T) <= sizeof bytes_);
        T value;
        std::memcpy(&value, bytes_, sizeof value);
        return value;
    }
    template <typename T>
    void set(T value) {
        static_assert(sizeof(T) <= sizeof bytes_);
        std::memcpy(bytes_, &value, sizeof value);
    }
    void setBytes(std::span<const std::byte> value) { std::memcpy(bytes_, value.data(), value.size()); }

  private:
    unsigned char bytes_[16] = {};
};

template <typename T>
Value valueOf(T content) {
    Value value;
    value.set(content);
    return value;
}

struct Export {
    static constexpr size_t kNone = static_cast<size_t>(-1);

    std::string_view name;
    std::vector<Parameter> parameters;
    Status (*call)(const Value* values);  // null where the export gives no status

    size_t indexOf(std::string_view parameter) const;
    bool has(std::string_view parameter) const { return indexOf(parameter) != kNone; }
    bool isStepOf(size_t step, size_t image) const;
    bool isStep(size_t index) const { return index > 0 && isStepOf(index, index - 1); }

    /** Whether it tells how much memory others need, which depends on the number of threads. */
    bool isQuery() const { return has("bufferSize") || has("stateSize"); }
    /** Whether it makes an object in memory of the caller, and whether it releases one. */
    bool makesInPlace() const { return name.find("Init_") != std::string_view::npos; }
    bool releases() const { return name.find("Free") != std::string_view::npos; }
};

/** All exports in the order of the header. */
const std::vector<Export>& exports();

const Export* findExport(std::string_view name);

/** Calls function(T()) with the type of a numeric element. */
template <typename Function>
auto withType(Element element, Function function) {
    switch (element) {
        case Element::k8u:
            return function(uint8_t());
        case Element::k8s:
            return function(int8_t());
        case Element::k16u:
            return function(uint16_t());
        case Element::k16s:
            return function(int16_t());
        case Element::k32f:
            return function(float());
        case Element::k64f:
            return function(double());
        default:
            return function(int32_t());
    }
}

}  // namespace fuzz
