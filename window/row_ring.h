#pragma once

#include "work_buffer.h"

namespace VEKCV_VARIANT {

/** The rows that an operation needs at a time while it moves down an image, from the topmost to the bottommost. */
template <typename T>
class RowRing {
  public:
    RowRing(Scratch& scratch, int32_t count, ptrdiff_t length) : rows_(scratch.take<T*>(count)), count_(count) {
        for (int32_t k = 0; k < count; ++k)
            rows_[k] = scratch.take<T>(length);
    }

    T* const* rows() const { return rows_; }
    T* operator[](int32_t k) const { return rows_[k]; }
    T* bottom() const { return rows_[count_ - 1]; }

    /** Moves down by one row: the memory of the topmost row becomes that of the bottommost. */
    void advance() {
        T* const top = rows_[0];
        for (int32_t k = 1; k < count_; ++k)
            rows_[k - 1] = rows_[k];
        rows_[count_ - 1] = top;
    }

  private:
    T** rows_;
    int32_t count_;
};

}  // namespace VEKCV_VARIANT
