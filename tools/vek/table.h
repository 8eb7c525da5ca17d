#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/** Rows of numbers, one after another. */
template <typename T>
struct Table {
    int32_t columns;
    std::vector<T> entries;

    Table(int32_t columnCount, int32_t rowCount)
        : columns(columnCount), entries(static_cast<size_t>(columnCount) * static_cast<size_t>(rowCount)) {}
    int32_t rows() const { return static_cast<int32_t>(std::ssize(entries) / columns); }
    int32_t step() const { return columns * static_cast<int32_t>(sizeof(T)); }
    T* row(int32_t y) { return entries.data() + ptrdiff_t{y} * columns; }
    T at(int32_t x, int32_t y) const { return entries[static_cast<size_t>(ptrdiff_t{y} * columns + x)]; }
};
