#pragma once

#include <climits>
#include <cstdint>

#include "vekcore.h"

namespace VEKCV_VARIANT {

/** What the core library aligns blocks to, in bytes. */
constexpr int64_t kBlockAlignment = 64;

template <typename T>
constexpr T alignUp(T value, T alignment) {
    return (value + alignment - 1) / alignment * alignment;
}

/** The first address from a pointer on that is a multiple of kBlockAlignment. */
template <typename T>
T* alignUp(T* pointer) {
    return reinterpret_cast<T*>(alignUp(reinterpret_cast<uintptr_t>(pointer), static_cast<uintptr_t>(kBlockAlignment)));
}

/** A block of the core library; null for bytes < 1 or above 2147483647, and when there is no memory. */
inline void* allocateBytes(int64_t bytes) {
    return bytes < 1 || bytes > INT_MAX ? nullptr : vekMalloc(static_cast<int>(bytes));
}

inline void release(void* block) {
    vekFree(block);
}

/** Owns a block, and releases it at the end of its scope unless keep() gives it away. */
template <typename T>
class Owned {
  public:
    explicit Owned(T* block = nullptr) : block_(block) {}
    /** A new block for `count` objects, not initialised; see allocateBytes. */
    static Owned forObjects(int64_t count) { return Owned(static_cast<T*>(allocateBytes(count * int64_t{sizeof(T)}))); }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    ~Owned() { release(block_); }

    T* get() const { return block_; }
    T* operator->() const { return block_; }
    T& operator*() const { return *block_; }
    explicit operator bool() const { return block_ != nullptr; }

    void reset(T* block) {
        release(block_);
        block_ = block;
    }
    T* keep() {
        T* const block = block_;
        block_ = nullptr;
        return block;
    }

  private:
    T* block_;
};

}  // namespace VEKCV_VARIANT
