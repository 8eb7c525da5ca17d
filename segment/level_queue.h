#pragma once

#include <cstdint>

namespace VEKCV_VARIANT {

/**
 * A queue of places with 256 levels, the lowest of which comes first, and within a level the place that came first. A
 * level is a ring of places, each of which knows the one behind it; the last one knows the first. `next` has an entry
 * for every place.
 */
class LevelQueue {
  public:
    explicit LevelQueue(uint32_t* next) : next_(next) {}

    bool isEmpty() const { return words_ == 0; }

    void push(uint32_t place, uint32_t level) {
        const uint64_t bit = uint64_t{1} << (level % 64);
        uint64_t& occupied = occupied_[level / 64];
        uint32_t& last = last_[level];
        next_[place] = (occupied & bit) == 0 ? place : next_[last];
        if ((occupied & bit) != 0)
            next_[last] = place;
        last = place;
        occupied |= bit;
        words_ |= uint32_t{1} << (level / 64);
    }

    uint32_t pop() {
        const int word = __builtin_ctz(words_);
        const uint32_t last = last_[64 * word + __builtin_ctzll(occupied_[word])], first = next_[last];
        if (first == last) {
            occupied_[word] &= occupied_[word] - 1;
            if (occupied_[word] == 0)
                words_ &= words_ - 1;
        }
        next_[last] = next_[first];
        return first;
    }

  private:
    uint64_t occupied_[4] = {};  // a bit for each level
    uint32_t words_ = 0;         // a bit for each word of these
    uint32_t last_[256];
    uint32_t* next_;
};

}  // namespace VEKCV_VARIANT
