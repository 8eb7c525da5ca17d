// Upright integral images of pixels and of their squares.
#include "bind.h"
#include "integral_checks.h"
#include "integral_stream.h"
#include "streaming.h"

namespace VEKCV_VARIANT {
namespace {

/** Writes row 0 and column 0 of a table. */
template <typename Entry>
void writeBorder(Image<Entry> table, RoiSize roi, Entry value) {
    for (ptrdiff_t x = 0; x <= roi.width; ++x)
        table.row(0)[x] = value;
    for (ptrdiff_t y = 1; y <= roi.height; ++y)
        table.row(y)[0] = value;
}

template <typename... Rows>
HWY_INLINE void writeRows(const uint8_t* pixels, ptrdiff_t width, Rows... rows) {
    integrate(pixels, 0, width, rows...);
}

/** Writes all entries behind the border. */
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
        writeRows(in.row(y), roi.width, TableRow<Runnings>{tables.row(y) + 1, tables.row(y + 1) + 1}...);
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
