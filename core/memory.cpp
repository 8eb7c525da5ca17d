#include <cstddef>
#include <new>

#include "vekcore.h"

namespace {
// In bytes: a cache line, which is also the widest vector.
constexpr std::align_val_t kAlignment{64};
}  // namespace

void* vekMalloc(int bytes) {
    return bytes < 1 ? nullptr : ::operator new(static_cast<size_t>(bytes), kAlignment, std::nothrow);
}

void vekFree(void* block) {
    ::operator delete(block, kAlignment);
}
