#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <new>

/** Pages between two pages that must not be touched: a read or write beyond either end is a fault. */
class GuardedMemory {
  public:
    explicit GuardedMemory(size_t bytes) : size_((bytes + page() - 1) / page() * page()) {
        void* const mapping = mmap(nullptr, size_ + 2 * page(), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapping == MAP_FAILED)
            throw std::bad_alloc();
        mapping_ = static_cast<uint8_t*>(mapping);
        if (mprotect(begin(), size_, PROT_READ | PROT_WRITE) != 0)
            throw std::bad_alloc();
    }
    ~GuardedMemory() { munmap(mapping_, size_ + 2 * page()); }
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;

    uint8_t* begin() const { return mapping_ + page(); }
    uint8_t* end() const { return begin() + size_; }

    /** Makes the page that begins at `address` one that must not be touched, too. */
    static void forbidPage(uint8_t* address) {
        if (mprotect(address, page(), PROT_NONE) != 0)
            throw std::bad_alloc();
    }

    static size_t page() {
        static const auto bytes = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        return bytes;
    }

  private:
    size_t size_;
    uint8_t* mapping_;
};
