#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <new>
#include <vector>

/**
 * Pages between two pages that must not be touched: a read or write beyond either end is a fault. Small mappings are
 * kept for the next memory of the same size, as making them takes longer than most tests of small images.
 */
class GuardedMemory {
  public:
    explicit GuardedMemory(size_t bytes) : size_((bytes + page() - 1) / page() * page()) {
        auto& kept = keptMappings()[size_];
        if (!kept.empty()) {
            mapping_ = kept.back();
            kept.pop_back();
            return;
        }
        void* const mapping = mmap(nullptr, size_ + 2 * page(), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapping == MAP_FAILED)
            throw std::bad_alloc();
        mapping_ = static_cast<uint8_t*>(mapping);
        protect(begin(), size_, PROT_READ | PROT_WRITE);
    }
    ~GuardedMemory() {
        if (size_ > kMostKeptPages * page()) {
            munmap(mapping_, size_ + 2 * page());
            return;
        }
        if (hasForbiddenPages_)
            protect(begin(), size_, PROT_READ | PROT_WRITE);
        keptMappings()[size_].push_back(mapping_);
    }
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;

    uint8_t* begin() const { return mapping_ + page(); }
    uint8_t* end() const { return begin() + size_; }

    /** Makes the page that begins at `address` one that must not be touched, too. */
    void forbidPage(uint8_t* address) {
        protect(address, page(), PROT_NONE);
        hasForbiddenPages_ = true;
    }

    static size_t page() {
        static const auto bytes = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        return bytes;
    }

  private:
    static constexpr size_t kMostKeptPages = 16;

    /** Mappings that are not in use, by their sizes. Not locked, as tests run on one thread. */
    static std::map<size_t, std::vector<uint8_t*>>& keptMappings() {
        static std::map<size_t, std::vector<uint8_t*>> mappings;
        return mappings;
    }

    static void protect(uint8_t* address, size_t bytes, int protection) {
        if (mprotect(address, bytes, protection) != 0)
            throw std::bad_alloc();
    }

    size_t size_;
    uint8_t* mapping_;
    bool hasForbiddenPages_ = false;
};
