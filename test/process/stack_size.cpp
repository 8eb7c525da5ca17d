// The stack that calls need, on a thread whose stack is painted before.
#include <pthread.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>

#include "calls.h"

namespace {

Calls calls;

/** Bytes that a thread of this function wrote to. */
ptrdiff_t usedBy(void* (*function)(void*)) {
    constexpr size_t kBytes = 1 << 18;
    constexpr uint8_t kPaint = 0xa5;
    auto* const stack = static_cast<uint8_t*>(std::aligned_alloc(4096, kBytes));
    std::fill_n(stack, kBytes, kPaint);
    pthread_attr_t attributes;
    pthread_t thread;
    pthread_attr_init(&attributes);
    expect(pthread_attr_setstack(&attributes, stack, kBytes) == 0 &&
               pthread_create(&thread, &attributes, function, nullptr) == 0 && pthread_join(thread, nullptr) == 0,
           "the thread runs");
    pthread_attr_destroy(&attributes);
    const ptrdiff_t used = stack + kBytes - std::find_if(stack, stack + kBytes, [](uint8_t b) { return b != kPaint; });
    std::free(stack);
    return used;
}

}  // namespace

int main() {
    calls.fill();
    const ptrdiff_t nothing = usedBy([](void*) -> void* { return nullptr; });
    const ptrdiff_t all = usedBy([](void*) -> void* {
        calls.run();
        return nullptr;
    });
    std::printf("%td bytes\n", all - nothing);
    expect(all - nothing > 4096, "the images are streamed past the cache, from copies on the stack");
    expect(all - nothing <= 16384, "calls need 16 KiB at most");
    return failures;
}
