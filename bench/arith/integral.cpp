#include <cstring>

#include "arith/peer.h"
#include "export_row.h"

namespace bench {
namespace {

// Columns and rows that a table has more than its image.
constexpr int32_t kUpright = 1;
constexpr int32_t kTilted = 2;

/** The row of a table or two that begin with 0. */
template <auto Export, int32_t kBorder>
Row tableRow(Peer* peer = nullptr) {
    return row<Export>(peer, Setup{.parameters = {0, 0}, .excess = {.destinations = {kBorder, kBorder}}});
}

const Row kIntegralRows[] = {
    tableRow<&vekiIntegral_8u32s_C1R, kUpright>(peer::integral),
    tableRow<&vekiIntegral_8u32f_C1R, kUpright>(peer::integral),
    tableRow<&vekiSqrIntegral_8u32s64f_C1R, kUpright>(peer::integralAndSquares),
    tableRow<&vekiSqrIntegral_8u32f64f_C1R, kUpright>(peer::integralAndSquares),
    tableRow<&vekiSqrIntegral_8u32s_C1R, kUpright>(peer::integralAndSquares),
    // The tilted tables of the peer are defined otherwise, and it makes them together with the upright ones only.
    tableRow<&vekiTiltedIntegral_8u32s_C1R, kTilted>(),
    tableRow<&vekiTiltedIntegral_8u32f_C1R, kTilted>(),
    tableRow<&vekiTiltedSqrIntegral_8u32s64f_C1R, kTilted>(),
    tableRow<&vekiTiltedSqrIntegral_8u32f64f_C1R, kTilted>(),
    tableRow<&vekiTiltedSqrIntegral_8u32s_C1R, kTilted>(),
};
const Family integrals("Integral", kIntegralRows);

/** Makes the two tables of a case those of a random image. */
template <auto SquareIntegral, int32_t kBorder>
void fillTables(const Case& work) {
    const RoiSize tableSize = work.operands[0].size;
    const Work integral =
        tableRow<SquareIntegral, kBorder>().prepare({tableSize.width - kBorder, tableSize.height - kBorder});
    integral.data.fill();
    integral.vekcv();
    for (size_t i = 0; i < 2; ++i)
        std::memcpy(work.operands[i].memory.get(), integral.data.operands[i + 1].memory.get(),
                    work.operands[i].bytes());
}

/** The row of deviations in windows of 24 x 24 pixels, from the tables of an export; the last value is the scale. */
template <auto Export, auto SquareIntegral>
Row uprightRow() {
    return row<Export>(nullptr, Setup{.parameters = {0, 0, 24, 24, 0},
                                      .excess = {.sources = {24, 24}},
                                      .content = fillTables<SquareIntegral, kUpright>});
}

/** The row of deviations in tilted windows, with 16 pixels along both diagonals. */
template <auto Export, auto SquareIntegral>
Row tiltedRow() {
    return row<Export>(nullptr, Setup{.parameters = {15, 0, 16, 16, 0},
                                      .excess = {.sources = {32, 33}},
                                      .content = fillTables<SquareIntegral, kTilted>});
}

const Row kWindowDeviationRows[] = {
    uprightRow<&vekiRectStdDev_32s32f_C1R, &vekiSqrIntegral_8u32s64f_C1R>(),
    uprightRow<&vekiRectStdDev_32f_C1R, &vekiSqrIntegral_8u32f64f_C1R>(),
    uprightRow<&vekiRectStdDev_32s_C1RSfs, &vekiSqrIntegral_8u32s_C1R>(),
    tiltedRow<&vekiTiltedRectStdDev_32s32f_C1R, &vekiTiltedSqrIntegral_8u32s64f_C1R>(),
    tiltedRow<&vekiTiltedRectStdDev_32f_C1R, &vekiTiltedSqrIntegral_8u32f64f_C1R>(),
    tiltedRow<&vekiTiltedRectStdDev_32s_C1RSfs, &vekiTiltedSqrIntegral_8u32s_C1R>(),
};
const Family windowDeviations("WindowDeviation", kWindowDeviationRows);

}  // namespace
}  // namespace bench
