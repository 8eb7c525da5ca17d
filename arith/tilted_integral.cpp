// Integral images tilted by 45 degrees, of pixels and of their squares.
#include "bind.h"
#include "integral_checks.h"
#include "pixelwise.h"

namespace VEKCV_VARIANT {
namespace {

enum class Term { kPixel, kSquare };

/** The terms of as many pixels as D has lanes, which are of int32_t or double. */
template <Term kTerm, typename D>
HWY_INLINE hn::Vec<D> terms(D d, const uint8_t* pixels) {
    const hn::Rebind<uint16_t, D> narrow;
    const hn::Rebind<int32_t, D> integers;
    auto term = hn::PromoteTo(narrow, hn::LoadU(hn::Rebind<uint8_t, D>(), pixels));
    if constexpr (kTerm == Term::kSquare)
        term = hn::Mul(term, term);
    if constexpr (hwy::IsFloat<hn::TFromD<D>>())
        return hn::PromoteTo(d, hn::PromoteTo(integers, term));
    else
        return hn::PromoteTo(d, term);
}

/** Entries of a row from the two rows above it. Entries of floats are computed in double and rounded once. */
template <Term kTerm, typename Entry>
struct TiltedRule {
    const uint8_t* pixels;
    const Entry *twoAbove, *above;

    /** The entries from column x + 1 on. */
    template <typename D>
    HWY_INLINE hn::Vec<D> operator()(D d, ptrdiff_t x) const {
        constexpr size_t kMostDoubles = hn::MaxLanes(hn::ScalableTag<double>());
        if constexpr (!std::is_same_v<Entry, float>) {
            return sum(d, x, [=](const Entry* entries) { return hn::LoadU(d, entries); });
        } else if constexpr (hn::MaxLanes(D()) > kMostDoubles) {
            return byHalves(d, x, *this);
        } else {
            const hn::Rebind<double, D> wide;
            return hn::DemoteTo(
                d, sum(wide, x, [=](const Entry* entries) { return hn::PromoteTo(wide, hn::LoadU(d, entries)); }));
        }
    }

  private:
    template <typename D, typename Load>
    HWY_INLINE hn::Vec<D> sum(D d, ptrdiff_t x, Load load) const {
        auto sum = hn::Sub(load(above + x), load(twoAbove + x + 1));
        sum = hn::Add(sum, load(above + x + 2));
        sum = hn::Add(sum, terms<kTerm>(d, pixels + x));
        return hn::Add(sum, terms<kTerm>(d, pixels + x + 1));
    }
};

template <typename Entry>
void writeFirstRows(Image<Entry> table, RoiSize roi, Entry value) {
    for (ptrdiff_t y = 0; y < 2; ++y)
        for (ptrdiff_t x = 0; x < ptrdiff_t{roi.width} + 2; ++x)
            table.row(y)[x] = value;
}

/** Writes the row of a table that a row of the image adds: row y + 2. */
template <Term kTerm, typename Entry>
void integrateRow(const uint8_t* pixels, ptrdiff_t width, Image<Entry> table, ptrdiff_t y) {
    using Rule = TiltedRule<kTerm, Entry>;
    const Entry *const twoAbove = table.row(y), *const above = table.row(y + 1);
    Entry* const row = table.row(y + 2);
    row[0] = above[1];
    writeRow<Stores::kCached>(row + 1, width - 1, Rule{pixels, twoAbove, above});
    const uint8_t lastAndNone[] = {pixels[width - 1], 0};
    const hn::CappedTag<Entry, 1> one;
    hn::StoreU(Rule{lastAndNone, twoAbove + width - 1, above + width - 1}(one, 0), one, row + width);
    row[width + 1] = above[width];
}

template <typename Entry>
Status tiltedIntegral(const uint8_t* source, int32_t sourceStep, Entry* integral, int32_t integralStep, RoiSize roi,
                      Entry value) {
    const Image<const uint8_t> in{source, sourceStep};
    const Image<Entry> sums{integral, integralStep};
    if (Status status = checkTables<2>(in, roi, sums))
        return status;
    writeFirstRows(sums, roi, value);
    for (ptrdiff_t y = 0; y < roi.height; ++y)
        integrateRow<Term::kPixel>(in.row(y), roi.width, sums, y);
    return StatusOk;
}

template <typename Entry, typename SquareEntry>
Status tiltedSquareIntegral(const uint8_t* source, int32_t sourceStep, Entry* integral, int32_t integralStep,
                            SquareEntry* squareIntegral, int32_t squareIntegralStep, RoiSize roi, Entry value,
                            SquareEntry squareValue) {
    const Image<const uint8_t> in{source, sourceStep};
    const Image<Entry> sums{integral, integralStep};
    const Image<SquareEntry> squares{squareIntegral, squareIntegralStep};
    if (Status status = checkTables<2>(in, roi, sums, squares))
        return status;
    writeFirstRows(sums, roi, value);
    writeFirstRows(squares, roi, squareValue);
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        integrateRow<Term::kPixel>(in.row(y), roi.width, sums, y);
        integrateRow<Term::kSquare>(in.row(y), roi.width, squares, y);
    }
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiTiltedIntegral_8u32s_C1R, tiltedIntegral);
VEKCV_BIND(vekiTiltedIntegral_8u32f_C1R, tiltedIntegral);
VEKCV_BIND(vekiTiltedSqrIntegral_8u32s64f_C1R, tiltedSquareIntegral);
VEKCV_BIND(vekiTiltedSqrIntegral_8u32f64f_C1R, tiltedSquareIntegral);
VEKCV_BIND(vekiTiltedSqrIntegral_8u32s_C1R, tiltedSquareIntegral);
}  // namespace VEKCV_VARIANT
