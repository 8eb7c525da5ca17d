#pragma once

#include <cstddef>
#include <cstdint>

namespace VEKCV_VARIANT {

/** A cell of the accumulator of a Hough transform. */
struct HoughLine {
    int32_t votes, row, cell;

    /** The order in which lines are reported. */
    bool isAheadOf(const HoughLine& other) const {
        if (votes != other.votes)
            return votes > other.votes;
        return row != other.row ? row < other.row : cell < other.cell;
    }
};

/** The lines that are reported: the first ones of all that were offered. A heap with the last of them at the top. */
class BestLines {
  public:
    BestLines(HoughLine* memory, int32_t capacity) : lines_(memory), capacity_(capacity) {}

    int32_t count() const { return count_; }
    bool isFull() const { return count_ == capacity_; }
    const HoughLine& last() const { return lines_[0]; }

    void offer(const HoughLine& line) {
        if (!isFull())
            moveUp(count_++, line);
        else if (line.isAheadOf(last()))
            moveDown(0, line);
    }

    void removeLast() {
        --count_;
        moveDown(0, lines_[count_]);
    }

  private:
    /** Puts a line into a free place, or further up. */
    void moveUp(int32_t place, const HoughLine& line) {
        while (place > 0 && lines_[(place - 1) / 2].isAheadOf(line)) {
            lines_[place] = lines_[(place - 1) / 2];
            place = (place - 1) / 2;
        }
        lines_[place] = line;
    }

    /** Puts a line into a free place, or further down. */
    void moveDown(int32_t place, const HoughLine line) {
        for (int64_t below = 1; below < count_; below = int64_t{2} * place + 1) {
            if (below + 1 < count_ && lines_[below].isAheadOf(lines_[below + 1]))
                ++below;
            if (!line.isAheadOf(lines_[below]))
                break;
            lines_[place] = lines_[below];
            place = static_cast<int32_t>(below);
        }
        lines_[place] = line;
    }

    HoughLine* lines_;
    int32_t capacity_, count_ = 0;
};

}  // namespace VEKCV_VARIANT
