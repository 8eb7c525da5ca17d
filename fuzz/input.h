#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace fuzz {

/** The bytes that the fuzzer gives, from first to last; zeros where they have run out. */
class Input {
  public:
    Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}

    template <typename T>
    T take() {
        T value{};
        const size_t bytes = sizeof(T) < size_ ? sizeof(T) : size_;
        std::memcpy(&value, data_, bytes);
        data_ += bytes;
        size_ -= bytes;
        return value;
    }

    /** 0 to count - 1. */
    uint32_t below(uint32_t count) { return count <= 256 ? take<uint8_t>() % count : take<uint32_t>() % count; }

    /** True for one value in `count` of a byte, and never without input. */
    bool oneIn(uint32_t count) { return below(count) == count - 1; }

    template <typename T, size_t kCount>
    T oneOf(const T (&values)[kCount]) {
        return values[below(kCount)];
    }

  private:
    const uint8_t* data_;
    size_t size_;
};

}  // namespace fuzz
