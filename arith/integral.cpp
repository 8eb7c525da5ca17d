// Upright integral images of pixels and of their squares.
#include <hwy/cache_control.h>

#include "bind.h"
#include "integral_checks.h"
#include "pair_products.h"
#include "streaming.h"

namespace VEKCV_VARIANT {
namespace {

using Unit = hn::CappedTag<uint16_t, 16>;
constexpr auto kUnitPixels = static_cast<ptrdiff_t>(hn::MaxLanes(Unit()));
using Words = hn::Rebind<int32_t, hn::Half<Unit>>;

/** The sum in the arithmetic of a table, where integers wrap. */
template <typename Entry>
Entry plus(Entry a, Entry b) {
    if constexpr (hwy::IsFloat<Entry>())
        return a + b;
    else
        return static_cast<Entry>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

/** Sums of a lane and all lanes before it, in blocks of 128 bits. */
template <typename D>
HWY_INLINE hn::Vec<D> blockSums(D d, hn::Vec<D> v) {
    v = hn::Add(v, hn::ShiftLeftLanes<1>(d, v));
    v = hn::Add(v, hn::ShiftLeftLanes<2>(d, v));
    if constexpr (sizeof(hn::TFromD<D>) == 2)
        v = hn::Add(v, hn::ShiftLeftLanes<4>(d, v));
    return v;
}

/** The sums of the pixels of a row so far. */
template <typename T>
class RunningSum {
  public:
    using Entry = T;
    // Sums of so many pixels are exact in float, and therefore the same in any order.
    static constexpr ptrdiff_t kExactPixels = hwy::IsFloat<T>() ? 65536 : PTRDIFF_MAX;

    /** Entries of a row from those above, for the next pixels of the row. */
    HWY_INLINE void addUnit(hn::Vec<Unit> pixels, const T* above, T* row) {
        const auto sums = blockSums(Unit(), pixels);
        const auto lower = hn::PromoteTo(Words(), hn::LowerHalf(sums));
        const auto upper = hn::PromoteTo(Words(), hn::UpperHalf(hn::Half<Unit>(), sums));
        write(hn::Add(lower, before_), above, row);
        if constexpr (kUnitPixels == 16)  // each half is a block
            before_ = hn::Add(before_, last(lower));
        write(hn::Add(upper, before_), above + kUnitPixels / 2, row + kUnitPixels / 2);
        before_ = hn::Add(before_, last(upper));
    }

    /** Comes after the last unit and before the first pixel. */
    HWY_INLINE void endUnits() { sum_ = static_cast<T>(hn::GetLane(before_)); }

    HWY_INLINE void addPixel(uint8_t pixel, const T* above, T* row) {
        sum_ = plus(sum_, static_cast<T>(pixel));
        *row = plus(*above, sum_);
    }

  private:
    using V = hn::Vec<Words>;

    HWY_INLINE static void write(V sums, const T* above, T* row) {
        const hn::Rebind<T, Words> d;
        if constexpr (hwy::IsFloat<T>())
            hn::StoreU(hn::Add(hn::LoadU(d, above), hn::ConvertTo(d, sums)), d, row);
        else
            hn::StoreU(hn::Add(hn::LoadU(d, above), sums), d, row);
    }

    /** The last lane in all lanes. */
    HWY_INLINE static V last(V v) {
        constexpr auto kLast = static_cast<int32_t>(hn::MaxLanes(Words())) - 1;
        return hn::TableLookupLanes(v, hn::IndicesFromVec(Words(), hn::Set(Words(), kLast)));
    }

    V before_ = hn::Zero(Words());
    T sum_ = 0;
};

/** The sums of the squares of the pixels of a row so far. */
template <typename T>
class RunningSquareSum {
  public:
    using Entry = T;
    static constexpr ptrdiff_t kExactPixels = PTRDIFF_MAX;

    HWY_INLINE void addUnit(hn::Vec<Unit> pixels, const T* above, T* row) {
        // Sums of pairs come with the multiplication; a pair without the square of its second pixel is its first.
        const hn::Repartition<int32_t, Unit> d;
        const hn::Repartition<uint32_t, Unit> bits;
        const auto values = hn::BitCast(hn::RebindToSigned<Unit>(), pixels);
        const auto pairs = blockSums(d, addPairProducts(d, values, values, hn::Zero(d)));
        const auto seconds = hn::BitCast(d, hn::ShiftRight<16>(hn::BitCast(bits, hn::Mul(pixels, pixels))));
        const auto firsts = hn::Sub(pairs, seconds);
        const auto lower = hn::InterleaveLower(d, firsts, pairs), upper = hn::InterleaveUpper(d, firsts, pairs);
        if constexpr (kUnitPixels == 16) {
            const hn::Half<decltype(d)> half;
            addBlock(hn::LowerHalf(lower), hn::LowerHalf(upper), above, row);
            addBlock(hn::UpperHalf(half, lower), hn::UpperHalf(half, upper), above + 8, row + 8);
        } else {
            addBlock(lower, upper, above, row);
        }
    }

    HWY_INLINE void endUnits() { sum_ = hn::GetLane(before_); }

    HWY_INLINE void addPixel(uint8_t pixel, const T* above, T* row) {
        sum_ = plus(sum_, static_cast<T>(pixel * pixel));
        *row = plus(*above, sum_);
    }

  private:
    using Four = hn::Full128<int32_t>;
    using D = hn::CappedTag<T, 4>;
    static constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));

    HWY_INLINE void addBlock(hn::Vec<Four> lower, hn::Vec<Four> upper, const T* above, T* row) {
        write(lower, above, row);
        write(upper, above + 4, row + 4);
        before_ = hn::Add(before_, entries(firstLanes(hn::Broadcast<3>(upper))));
    }

    HWY_INLINE void write(hn::Vec<Four> sums, const T* above, T* row) const {
        writeEntries(firstLanes(sums), above, row);
        if constexpr (kLanes == 2)
            writeEntries(hn::UpperHalf(hn::Half<Four>(), sums), above + 2, row + 2);
    }
    template <typename V>
    HWY_INLINE void writeEntries(V sums, const T* above, T* row) const {
        hn::StoreU(hn::Add(hn::LoadU(D(), above), hn::Add(entries(sums), before_)), D(), row);
    }

    /** As many of four lanes as D has. */
    HWY_INLINE static auto firstLanes(hn::Vec<Four> v) {
        if constexpr (kLanes == 4)
            return v;
        else
            return hn::LowerHalf(v);
    }
    /** Whole numbers in the type of the table, where they are exact. */
    template <typename V>
    HWY_INLINE static hn::Vec<D> entries(V sums) {
        if constexpr (hwy::IsFloat<T>())
            return hn::PromoteTo(D(), sums);
        else
            return sums;
    }

    hn::Vec<D> before_ = hn::Zero(D());
    T sum_ = 0;
};

/** Where the entries of a row, or of a part of it, come from and go to. */
template <typename Running>
struct Line {
    Running* running;
    const typename Running::Entry* above;
    typename Running::Entry* row;

    HWY_INLINE void addUnit(ptrdiff_t x, hn::Vec<Unit> pixels) const { running->addUnit(pixels, above + x, row + x); }
    HWY_INLINE void addPixel(ptrdiff_t x, uint8_t pixel) const { running->addPixel(pixel, above + x, row + x); }
};

template <typename... Runnings>
HWY_INLINE void integrate(const uint8_t* pixels, ptrdiff_t count, Line<Runnings>... lines) {
    ptrdiff_t unitsEnd = count;
    ((unitsEnd = HWY_MIN(unitsEnd, Runnings::kExactPixels)), ...);
    ptrdiff_t x = 0;
    for (; x + kUnitPixels <= unitsEnd; x += kUnitPixels) {
        const auto unit = hn::PromoteTo(Unit(), hn::LoadU(hn::Rebind<uint8_t, Unit>(), pixels + x));
        (lines.addUnit(x, unit), ...);
    }
    if (x == count)
        return;
    (lines.running->endUnits(), ...);
    for (; x < count; ++x)
        (lines.addPixel(x, pixels[x]), ...);
}

// Tables that are larger than the cache are written past it. What is written past the cache is not there when the next
// row is made from it: so rows are made in groups, a strip of columns at a time, in a copy of the strip, and only the
// last row of a group is written through the cache.
constexpr int32_t kGroupRows = 16;
constexpr ptrdiff_t kStripPixels = 4096;
// Entries are streamed in portions, as many as the processor can keep waiting while it makes the next ones.
constexpr ptrdiff_t kPortionPixels = 256;

/** Copies entries past the cache: whole lines of it alone, for one that is written both ways has to be read first. */
template <typename T>
class LineStream {
    static constexpr auto kLineEntries = static_cast<ptrdiff_t>(64 / sizeof(T));
    using D = hn::ScalableTag<T>;

  public:
    LineStream(const T* entries, T* row, ptrdiff_t count)
        : entries_(entries), row_(row), lines_(HWY_MIN(entriesToLine(row), count)), done_(lines_) {}

    /** Copies the lines among the first `count` entries. */
    HWY_INLINE void advance(ptrdiff_t count) {
        for (; done_ + kLineEntries <= count; done_ += kLineEntries)
            for (ptrdiff_t i = 0; i < kLineEntries; i += static_cast<ptrdiff_t>(hn::MaxLanes(D())))
                hn::Stream(hn::LoadU(D(), entries_ + done_ + i), D(), row_ + done_ + i);
    }

    /** Copies the entries before the first line and behind the last one. */
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

/** A group of rows of a table. */
template <typename Running>
struct Group {
    using Entry = typename Running::Entry;

    Image<Entry> table;  // from column 1 on
    Running runnings[kGroupRows];
    Entry strip[kStripPixels];

    explicit Group(Image<Entry> image) : table{image.pixels + 1, image.step} {}
};

/** A strip of `count` pixels from column x on, of row k of a group that begins with row `first` of the image. */
template <typename... Runnings>
void integrateStrip(const uint8_t* pixels, int32_t first, int32_t k, bool isLast, ptrdiff_t x, ptrdiff_t count,
                    Group<Runnings>&... groups) {
    [&](Runnings... runnings, LineStream<typename Runnings::Entry>... streams) {
        for (ptrdiff_t i = 0; i < count; i += kPortionPixels) {
            const ptrdiff_t portion = HWY_MIN(kPortionPixels, count - i);
            // The strip of this row that comes after those of the other rows of the group.
            for (ptrdiff_t line = 0; line < kPortionPixels; line += 64)
                __builtin_prefetch(pixels + i + kStripPixels + line);
            integrate(pixels + i, portion,
                      Line<Runnings>{&runnings, (k == 0 ? groups.table.row(first) + x : groups.strip) + i,
                                     (isLast ? groups.table.row(first + k + 1) + x : groups.strip) + i}...);
            if (!isLast)
                (streams.advance(i + portion), ...);
        }
        if (!isLast)
            (streams.finish(count), ...);
        ((groups.runnings[k] = runnings), ...);
    }(groups.runnings[k]...,
      LineStream<typename Runnings::Entry>(groups.strip, groups.table.row(first + k + 1) + x, count)...);
}

template <typename... Runnings>
void streamTables(Image<const uint8_t> in, RoiSize roi, Image<typename Runnings::Entry>... tables) {
    for (int32_t first = 0; first < roi.height; first += kGroupRows) {
        const int32_t rows = HWY_MIN(kGroupRows, roi.height - first);
        [&](Group<Runnings>... groups) {
            for (ptrdiff_t x = 0; x < roi.width; x += kStripPixels)
                for (int32_t k = 0; k < rows; ++k)
                    integrateStrip(in.row(first + k) + x, first, k, k == rows - 1, x,
                                   HWY_MIN(kStripPixels, roi.width - x), groups...);
        }(Group<Runnings>(tables)...);
    }
    hwy::FlushStream();
}

/** Row 0 and column 0 of a table. */
template <typename Entry>
void writeBorder(Image<Entry> table, RoiSize roi, Entry value) {
    for (ptrdiff_t x = 0; x <= roi.width; ++x)
        table.row(0)[x] = value;
    for (ptrdiff_t y = 1; y <= roi.height; ++y)
        table.row(y)[0] = value;
}

/** All entries behind the border. */
template <typename... Runnings>
void writeTables(Image<const uint8_t> in, RoiSize roi, Image<typename Runnings::Entry>... tables) {
    constexpr int32_t kBytes = (1 + ... + static_cast<int32_t>(sizeof(typename Runnings::Entry)));
    const bool canBeAligned =
        ((reinterpret_cast<uintptr_t>(tables.pixels) % sizeof(typename Runnings::Entry) == 0) && ...);
    if (canBeAligned && ((roi.width <= Runnings::kExactPixels) && ...) && fillsCache(roi.width, roi.height, kBytes)) {
        streamTables<Runnings...>(in, roi, tables...);
        return;
    }
    for (ptrdiff_t y = 0; y < roi.height; ++y)
        [&](Runnings... runnings) {
            integrate(in.row(y), roi.width, Line<Runnings>{&runnings, tables.row(y) + 1, tables.row(y + 1) + 1}...);
        }(Runnings()...);
}

template <typename Entry>
Status integral(const uint8_t* source, int32_t sourceStep, Entry* integral, int32_t integralStep, RoiSize roi,
                Entry value) {
    const Image<const uint8_t> in{source, sourceStep};
    const Image<Entry> sums{integral, integralStep};
    if (Status status = checkTables<1>(in, roi, sums))
        return status;
    writeBorder(sums, roi, value);
    writeTables<RunningSum<Entry>>(in, roi, sums);
    return StatusOk;
}

template <typename Entry, typename SquareEntry>
Status squareIntegral(const uint8_t* source, int32_t sourceStep, Entry* integral, int32_t integralStep,
                      SquareEntry* squareIntegral, int32_t squareIntegralStep, RoiSize roi, Entry value,
                      SquareEntry squareValue) {
    const Image<const uint8_t> in{source, sourceStep};
    const Image<Entry> sums{integral, integralStep};
    const Image<SquareEntry> squares{squareIntegral, squareIntegralStep};
    if (Status status = checkTables<1>(in, roi, sums, squares))
        return status;
    writeBorder(sums, roi, value);
    writeBorder(squares, roi, squareValue);
    writeTables<RunningSum<Entry>, RunningSquareSum<SquareEntry>>(in, roi, sums, squares);
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiIntegral_8u32s_C1R, integral);
VEKCV_BIND(vekiIntegral_8u32f_C1R, integral);
VEKCV_BIND(vekiSqrIntegral_8u32s64f_C1R, squareIntegral);
VEKCV_BIND(vekiSqrIntegral_8u32f64f_C1R, squareIntegral);
VEKCV_BIND(vekiSqrIntegral_8u32s_C1R, squareIntegral);
}  // namespace VEKCV_VARIANT
