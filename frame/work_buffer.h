#pragma once

#include <climits>

#include "allocation.h"

namespace VEKCV_VARIANT {

/**
 * A work buffer of the caller: one slice for each thread, with 32 spare bytes that allow every slice to begin at a
 * multiple of 32 wherever the buffer begins.
 */
class WorkBuffer {
  public:
    static constexpr int64_t kAlignment = 32;

    WorkBuffer(void* buffer, int64_t bytesPerThread)
        : address_(reinterpret_cast<uintptr_t>(buffer)), stride_(bytesPerThread + kAlignment) {}

    /** What to ask the caller for: a slice for each of the configured threads. */
    static int64_t bytes(int64_t bytesPerThread) {
        int threads = 1;
        vekGetNumThreads(&threads);
        return threads * (bytesPerThread + kAlignment);
    }

    template <typename T>
    T* slice(int32_t thread) const {
        const uintptr_t begin = address_ + static_cast<uintptr_t>(thread * stride_);
        return reinterpret_cast<T*>(alignUp(begin, uintptr_t{kAlignment}));
    }

  private:
    uintptr_t address_;
    int64_t stride_;
};

/** Writes the size of a buffer to a result; StatusSizeError where it does not fit. */
inline Status writeBufferSize(int64_t bytes, int32_t* result) {
    if (bytes > INT32_MAX)
        return StatusSizeError;
    *result = static_cast<int32_t>(bytes);
    return StatusOk;
}

/** A part of a buffer, for arrays that begin at multiples of a vector. */
class Scratch {
  public:
    explicit Scratch(uint8_t* begin) : next_(begin) {}

    template <typename T>
    T* take(int64_t count) {
        T* const array = reinterpret_cast<T*>(next_);
        next_ += alignUp(count * int64_t{sizeof(T)}, kAlignment);
        return array;
    }

  private:
    static constexpr int64_t kAlignment = WorkBuffer::kAlignment;
    uint8_t* next_;
};

}  // namespace VEKCV_VARIANT
