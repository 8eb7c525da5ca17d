#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace fuzz {

/** The bytes that the fuzzer gives, from first to last; zeros where they have run out. */
class Input {
  public:
    Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}

    template <typename T>
    T take() {
        std::array<uint8_t, sizeof(T)> bytes{};
        for (uint8_t& byte : bytes)
            if (size_ > 0) {
                byte = *data_++;
                --size_;
            }
        return std::bit_cast<T>(bytes);
    }

    /** 0 to count - 1. */
    uint32_t below(uint32_t count) { return count <= 256 ? take<uint8_t>() % count : take<uint32_t>() % count; }

    /** True once in `count` values of the input; false where the input has run out. */
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
