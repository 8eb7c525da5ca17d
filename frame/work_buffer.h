#pragma once

#include <cassert>

#include "allocation.h"
#include "check.h"
#include "configured_threads.h"

namespace VEKCV_VARIANT {

/** Memory for arrays, each of which begins at a multiple of 32 bytes. Debug builds assert that they fit. */
class Scratch {
  public:
    static constexpr int64_t kAlignment = 32;

    Scratch(void* memory, int64_t bytes)
        : next_(alignUp(reinterpret_cast<uintptr_t>(memory), uintptr_t{kAlignment})),
          end_(reinterpret_cast<uintptr_t>(memory) + static_cast<uintptr_t>(bytes)) {}

    template <typename T>
    T* take(int64_t count) {
        T* const array = reinterpret_cast<T*>(next_);
        const auto bytes = static_cast<uintptr_t>(count * int64_t{sizeof(T)});
        assert(next_ + bytes <= end_);
        next_ = alignUp(next_ + bytes, uintptr_t{kAlignment});
        return array;
    }

    /** Bytes that are left. */
    int64_t bytes() const { return static_cast<int64_t>(end_ - next_); }

  private:
    uintptr_t next_, end_;
};

/**
 * A work buffer of the caller: one slice for each thread, with 32 spare bytes that allow every slice to begin at a
 * multiple of 32 wherever the buffer begins.
 */
class WorkBuffer {
  public:
    WorkBuffer(void* buffer, int64_t bytesPerThread)
        : buffer_(static_cast<uint8_t*>(buffer)), stride_(bytesPerThread + Scratch::kAlignment) {}

    /** The size of a work buffer: a slice for each of the configured threads. */
    static int64_t bytes(int64_t bytesPerThread) {
        return configuredThreads() * (bytesPerThread + Scratch::kAlignment);
    }

    Scratch slice(int32_t thread) const { return {buffer_ + thread * stride_, stride_}; }

  private:
    uint8_t* buffer_;
    int64_t stride_;
};

/** Writes the size of a buffer to the result of a query; StatusSizeError where it does not fit an int32_t. */
inline Status writeBufferSize(int64_t bytes, int32_t* result) {
    if (bytes > INT32_MAX)
        return StatusSizeError;
    *result = static_cast<int32_t>(bytes);
    return StatusOk;
}

/** The query of an operation whose buffer has kBytes(roi) bytes. */
template <int64_t (*kBytes)(RoiSize)>
Status roiBufferSize(RoiSize roi, int32_t* bufferSize) {
    if (Status status = Check().pointers(bufferSize).roi(roi))
        return status;
    return writeBufferSize(kBytes(roi), bufferSize);
}

}  // namespace VEKCV_VARIANT
