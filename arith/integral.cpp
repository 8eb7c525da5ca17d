// Upright integral images of pixels and of their squares.
#include "bind.h"
#include "check.h"
#include "simd.h"

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

/** A row of a table of sums, as the sum of the row above and of the pixels to the left. */
template <typename Entry>
class RowOfSums {
  public:
    // Sums of so many pixels are exact in float, and therefore the same in any order.
    static constexpr ptrdiff_t kExactPixels = hwy::IsFloat<Entry>() ? 65536 : PTRDIFF_MAX;

    HWY_INLINE RowOfSums(const Entry* above, Entry* row) : above_(above), row_(row) {}

    /** Sixteen or eight pixels from x on, which all others to their left went before. */
    HWY_INLINE void addUnit(ptrdiff_t x, hn::Vec<Unit> pixels) {
        const auto sums = blockSums(Unit(), pixels);
        const auto lower = hn::PromoteTo(Words(), hn::LowerHalf(sums));
        const auto upper = hn::PromoteTo(Words(), hn::UpperHalf(hn::Half<Unit>(), sums));
        write(x, hn::Add(lower, before_));
        if constexpr (kUnitPixels == 16)  // each half is a block
            before_ = hn::Add(before_, last(lower));
        write(x + kUnitPixels / 2, hn::Add(upper, before_));
        before_ = hn::Add(before_, last(upper));
    }

    /** Of addUnit, all pixels so far. */
    HWY_INLINE void endUnits() { sum_ = static_cast<Entry>(hn::GetLane(before_)); }

    HWY_INLINE void addPixel(ptrdiff_t x, uint8_t pixel) {
        sum_ = plus(sum_, static_cast<Entry>(pixel));
        row_[x] = plus(above_[x], sum_);
    }

  private:
    using V = hn::Vec<Words>;

    HWY_INLINE void write(ptrdiff_t x, V sums) {
        const hn::Rebind<Entry, Words> d;
        const auto above = hn::LoadU(d, above_ + x);
        if constexpr (hwy::IsFloat<Entry>())
            hn::StoreU(hn::Add(above, hn::ConvertTo(d, sums)), d, row_ + x);
        else
            hn::StoreU(hn::Add(above, sums), d, row_ + x);
    }

    HWY_INLINE static V last(V v) { return hn::TableLookupLanes(v, hn::SetTableIndices(Words(), kLastLane)); }

    alignas(32) static constexpr int32_t kLastLane[8] = {kUnitPixels / 2 - 1, kUnitPixels / 2 - 1, kUnitPixels / 2 - 1,
                                                         kUnitPixels / 2 - 1, kUnitPixels / 2 - 1, kUnitPixels / 2 - 1,
                                                         kUnitPixels / 2 - 1, kUnitPixels / 2 - 1};

    const Entry* above_;
    Entry* row_;
    V before_ = hn::Zero(Words());
    Entry sum_ = 0;
};

/** A row of a table of squares. */
template <typename Entry>
class RowOfSquares {
  public:
    static constexpr ptrdiff_t kExactPixels = PTRDIFF_MAX;

    HWY_INLINE RowOfSquares(const Entry* above, Entry* row) : above_(above), row_(row) {}

    HWY_INLINE void addUnit(ptrdiff_t x, hn::Vec<Unit> pixels) {
        // Sums of pairs come with the multiplication; a pair without the square of its second pixel is its first.
        const hn::RepartitionToWide<hn::RebindToSigned<Unit>> d;
        const auto values = hn::BitCast(hn::RebindToSigned<Unit>(), pixels);
        auto unused = hn::Zero(d);
        const auto pairs = blockSums(d, hn::ReorderWidenMulAccumulate(d, values, values, hn::Zero(d), unused));
        const hn::RebindToUnsigned<decltype(d)> du;
        const auto seconds = hn::BitCast(d, hn::ShiftRight<16>(hn::BitCast(du, hn::Mul(pixels, pixels))));
        const auto firsts = hn::Sub(pairs, seconds);
        const auto lower = hn::InterleaveLower(d, firsts, pairs), upper = hn::InterleaveUpper(d, firsts, pairs);
        if constexpr (kUnitPixels == 16) {
            const hn::Half<decltype(d)> half;
            writeBlock(x, hn::LowerHalf(lower), hn::LowerHalf(upper));
            writeBlock(x + 8, hn::UpperHalf(half, lower), hn::UpperHalf(half, upper));
        } else {
            writeBlock(x, lower, upper);
        }
    }

    HWY_INLINE void endUnits() { sum_ = hn::GetLane(before_); }

    HWY_INLINE void addPixel(ptrdiff_t x, uint8_t pixel) {
        sum_ = plus(sum_, static_cast<Entry>(pixel * pixel));
        row_[x] = plus(above_[x], sum_);
    }

  private:
    using Four = hn::Full128<int32_t>;
    using D = hn::CappedTag<Entry, 4>;
    static constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));

    HWY_INLINE void writeBlock(ptrdiff_t x, hn::Vec<Four> lower, hn::Vec<Four> upper) {
        const auto total = hn::Broadcast<3>(upper);
        write(x, lower);
        write(x + 4, upper);
        if constexpr (hwy::IsFloat<Entry>())
            before_ = hn::Add(before_, hn::PromoteTo(D(), lanes(total)));
        else
            before_ = hn::Add(before_, total);
    }

    /** As many of four lanes as D has. */
    HWY_INLINE static auto lanes(hn::Vec<Four> v) {
        if constexpr (kLanes == 4)
            return v;
        else
            return hn::LowerHalf(v);
    }

    HWY_INLINE void write(ptrdiff_t x, hn::Vec<Four> sums) {
        if constexpr (!hwy::IsFloat<Entry>()) {
            hn::StoreU(hn::Add(hn::LoadU(D(), above_ + x), hn::Add(sums, before_)), D(), row_ + x);
        } else {
            writeDoubles(x, lanes(sums));
            if constexpr (kLanes == 2)
                writeDoubles(x + 2, hn::UpperHalf(hn::Half<Four>(), sums));
        }
    }
    template <typename V>
    HWY_INLINE void writeDoubles(ptrdiff_t x, V sums) {
        const auto row = hn::Add(hn::PromoteTo(D(), sums), before_);  // whole numbers, exact
        hn::StoreU(hn::Add(hn::LoadU(D(), above_ + x), row), D(), row_ + x);
    }

    const Entry* above_;
    Entry* row_;
    hn::Vec<D> before_ = hn::Zero(D());
    Entry sum_ = 0;
};

/** The entries of a row of tables behind the first ones. */
template <typename... Rows>
HWY_INLINE void integrateRow(const uint8_t* pixels, ptrdiff_t width, Rows... rows) {
    ptrdiff_t vectorEnd = width;
    ((vectorEnd = HWY_MIN(vectorEnd, Rows::kExactPixels)), ...);
    ptrdiff_t x = 0;
    for (; x + kUnitPixels <= vectorEnd; x += kUnitPixels) {
        const auto unit = hn::PromoteTo(Unit(), hn::LoadU(hn::Rebind<uint8_t, Unit>(), pixels + x));
        (rows.addUnit(x, unit), ...);
    }
    (rows.endUnits(), ...);
    for (; x < width; ++x)
        (rows.addPixel(x, pixels[x]), ...);
}

/** Row 0 and column 0 of a table. */
template <typename Entry>
void writeBorder(Image<Entry> table, RoiSize roi, Entry value) {
    for (ptrdiff_t x = 0; x <= roi.width; ++x)
        table.row(0)[x] = value;
    for (ptrdiff_t y = 1; y <= roi.height; ++y)
        table.row(y)[0] = value;
}

template <typename Entry>
Status integral(const uint8_t* source, int32_t sourceStep, Entry* integral, int32_t integralStep, RoiSize roi,
                Entry value) {
    const Image<const uint8_t> in{source, sourceStep};
    const Image<Entry> sums{integral, integralStep};
    if (Status status = Check()
                            .pointers(in, sums)
                            .roi(roi)
                            .stepLengths(roi.width, in)
                            .stepLengths(int64_t{roi.width} + 1, sums)
                            .stepMultiples(sums))
        return status;
    writeBorder(sums, roi, value);
    for (ptrdiff_t y = 0; y < roi.height; ++y)
        integrateRow(in.row(y), roi.width, RowOfSums<Entry>(sums.row(y) + 1, sums.row(y + 1) + 1));
    return StatusOk;
}

template <typename Entry, typename SquareEntry>
Status squareIntegral(const uint8_t* source, int32_t sourceStep, Entry* integral, int32_t integralStep,
                      SquareEntry* squareIntegral, int32_t squareIntegralStep, RoiSize roi, Entry value,
                      SquareEntry squareValue) {
    const Image<const uint8_t> in{source, sourceStep};
    const Image<Entry> sums{integral, integralStep};
    const Image<SquareEntry> squares{squareIntegral, squareIntegralStep};
    if (Status status = Check()
                            .pointers(in, sums, squares)
                            .roi(roi)
                            .stepLengths(roi.width, in)
                            .stepLengths(int64_t{roi.width} + 1, sums, squares)
                            .stepMultiples(sums, squares))
        return status;
    writeBorder(sums, roi, value);
    writeBorder(squares, roi, squareValue);
    for (ptrdiff_t y = 0; y < roi.height; ++y)
        integrateRow(in.row(y), roi.width, RowOfSums<Entry>(sums.row(y) + 1, sums.row(y + 1) + 1),
                     RowOfSquares<SquareEntry>(squares.row(y) + 1, squares.row(y + 1) + 1));
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiIntegral_8u32s_C1R, integral);
VEKCV_BIND(vekiIntegral_8u32f_C1R, integral);
VEKCV_BIND(vekiSqrIntegral_8u32s64f_C1R, squareIntegral);
VEKCV_BIND(vekiSqrIntegral_8u32f64f_C1R, squareIntegral);
VEKCV_BIND(vekiSqrIntegral_8u32s_C1R, squareIntegral);
}  // namespace VEKCV_VARIANT
