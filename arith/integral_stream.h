// Upright integral images that are larger than the cache.
//
// They are written past it. But each row is made from the one above, which would then have to be read back from memory.
// So rows are made in bands, and a band one strip of columns after the other: the rows of a strip are made one from the
// other in a buffer that stays in the cache, and are copied from there past the cache. Only the last row of a band is
// written through the cache, for the band below.
#pragma once

#include <hwy/cache_control.h>

#include "running_sums.h"

namespace VEKCV_VARIANT {

constexpr int32_t kBandRows = 16;
// For the buffers of a strip, one for each table, which lie on the stack.
constexpr ptrdiff_t kStripBytes = 12288;
// Entries are copied in portions, few enough that the processor can hold them back while it makes the next ones.
constexpr ptrdiff_t kPortionPixels = 256;

/** Columns of a strip of tables with these types of entries: whole portions. */
template <typename... Entries>
constexpr ptrdiff_t kStripPixels = kStripBytes /
                                   static_cast<ptrdiff_t>((0 + ... + sizeof(Entries))) / kPortionPixels* kPortionPixels;

/** Copies whole cache lines of entries past the cache: one that is written both ways would have to be read first. */
template <typename T>
class CacheLineStream {
    static constexpr auto kLineEntries = static_cast<ptrdiff_t>(64 / sizeof(T));
    using D = hn::ScalableTag<T>;

  public:
    CacheLineStream(const T* entries, T* row, ptrdiff_t count)
        : entries_(entries), row_(row), lines_(HWY_MIN(entriesToLine(row), count)), done_(lines_) {}

    /** Copies the whole lines among the first `count` entries. */
    HWY_INLINE void advance(ptrdiff_t count) {
        for (; done_ + kLineEntries <= count; done_ += kLineEntries)
            for (ptrdiff_t i = 0; i < kLineEntries; i += static_cast<ptrdiff_t>(hn::MaxLanes(D())))
                hn::Stream(hn::LoadU(D(), entries_ + done_ + i), D(), row_ + done_ + i);
    }

    /** Copies the entries before the first whole line and behind the last one, through the cache. */
    HWY_INLINE void finish(ptrdiff_t count) {
        for (ptrdiff_t x = 0; x < lines_; ++x)
            row_[x] = entries_[x];
        for (; done_ < count; ++done_)
            row_[done_] = entries_[done_];
    }

  private:
    static ptrdiff_t entriesToLine(const T* row) {
        return static_cast<ptrdiff_t>(-reinterpret_cast<uintptr_t>(row) % 64 / sizeof(T));
    }

    const T* entries_;
    T* row_;
    ptrdiff_t lines_, done_;
};

/** Columns of a band. */
struct Strip {
    ptrdiff_t x, count;
};

/** A row of a strip on its way into a table. */
template <typename Running>
struct StripRow : TableRow<Running> {
    CacheLineStream<typename Running::Entry> stream;
    Running* continued;  // where the next strip finds the running sum
};

/** A table that is made a band at a time. */
template <typename Running, ptrdiff_t kPixels>
class BandTable {
    using Entry = typename Running::Entry;

  public:
    explicit BandTable(Image<Entry> table) : table_{table.pixels + 1, table.step} {}

    void beginBand(int32_t firstRow) {
        firstRow_ = firstRow;
        for (Running& running : runnings_)
            running = Running();
    }

    /** Row k of the band; the last one is made in the table itself. */
    HWY_INLINE StripRow<Running> row(Strip strip, int32_t k, bool isLast) {
        Entry* const row = table_.row(firstRow_ + k + 1) + strip.x;
        return {{k == 0 ? table_.row(firstRow_) + strip.x : strip_, isLast ? row : strip_, runnings_[k]},
                {strip_, row, strip.count},
                &runnings_[k]};
    }

  private:
    Image<Entry> table_;  // from column 1 on
    int32_t firstRow_ = 0;
    Running runnings_[kBandRows];
    Entry strip_[kPixels];
};

/** Makes a row of a strip, from its pixels; those below come next. */
template <typename... Rows>
void streamRow(const uint8_t* pixels, const uint8_t* below, Strip strip, bool isLast, Rows... rows) {
    for (ptrdiff_t x = 0; x < strip.count; x += kPortionPixels) {
        const ptrdiff_t end = HWY_MIN(x + kPortionPixels, strip.count);
        // By itself the processor fetches ahead along a row, not to the row below.
        for (ptrdiff_t i = x; i < end; i += 64)
            __builtin_prefetch(below + i);
        integrate(pixels, x, end, rows...);
        if (!isLast)
            (rows.stream.advance(end), ...);
    }
    if (!isLast)
        (rows.stream.finish(strip.count), ...);
    ((*rows.continued = rows.running), ...);
}

template <ptrdiff_t kPixels, typename... Tables>
void streamBands(Image<const uint8_t> in, RoiSize roi, Tables&&... tables) {
    for (int32_t first = 0; first < roi.height; first += kBandRows) {
        const int32_t rows = HWY_MIN(kBandRows, roi.height - first);
        (tables.beginBand(first), ...);
        for (ptrdiff_t x = 0; x < roi.width; x += kPixels)
            for (int32_t k = 0; k < rows; ++k) {
                const Strip strip{x, HWY_MIN(kPixels, roi.width - x)};
                const bool isLast = k == rows - 1;
                const int32_t y = first + k, below = HWY_MIN(y + 1, roi.height - 1);
                streamRow(in.row(y) + x, in.row(below) + x, strip, isLast, tables.row(strip, k, isLast)...);
            }
    }
    hwy::FlushStream();
}

/** Writes all entries behind the border. Not inlined, so that only large images need the stack of the strips. */
template <typename... Runnings>
HWY_NOINLINE void streamTables(Image<const uint8_t> in, RoiSize roi, Image<typename Runnings::Entry>... tables) {
    constexpr ptrdiff_t kPixels = kStripPixels<typename Runnings::Entry...>;
    streamBands<kPixels>(in, roi, BandTable<Runnings, kPixels>(tables)...);
}

}  // namespace VEKCV_VARIANT
