#include "export_row.h"
#include "filter/peer.h"

namespace bench {
namespace {

/** Filters with a mask of 3 x 3, at borders that are replicated. The peer has no results of 8s. */
template <auto Export, auto Query>
Row maskRow(Peer* peer = nullptr) {
    return row<Export>(
        peer, Setup{.parameters = {MaskSize3x3, BorderReplicate, 0}, .bufferBytes = bufferBytes<Query, MaskSize3x3>});
}
template <auto Export, auto Query>
Row smallRow(Peer* peer = nullptr) {
    return row<Export>(peer, Setup{.parameters = {BorderReplicate, 0}, .bufferBytes = bufferBytes<Query>});
}

constexpr int32_t kGaussTaps = 9;

const Row kFixedFilterRows[] = {
    maskRow<&vekiFilterSobelHorizBorder_8u16s_C1R, &vekiFilterSobelHorizGetBufferSize_8u16s_C1R>(peer::sobelHoriz),
    maskRow<&vekiFilterSobelHorizBorder_8u8s_C1R, &vekiFilterSobelHorizGetBufferSize_8u8s_C1R>(),
    maskRow<&vekiFilterSobelHorizBorder_32f_C1R, &vekiFilterSobelHorizGetBufferSize_32f_C1R>(peer::sobelHoriz),
    maskRow<&vekiFilterSobelVertBorder_8u16s_C1R, &vekiFilterSobelVertGetBufferSize_8u16s_C1R>(peer::sobelVert),
    maskRow<&vekiFilterSobelVertBorder_8u8s_C1R, &vekiFilterSobelVertGetBufferSize_8u8s_C1R>(),
    maskRow<&vekiFilterSobelVertBorder_32f_C1R, &vekiFilterSobelVertGetBufferSize_32f_C1R>(peer::sobelVert),
    maskRow<&vekiFilterSobelNegVertBorder_8u16s_C1R, &vekiFilterSobelNegVertGetBufferSize_8u16s_C1R>(
        peer::sobelNegVert),
    maskRow<&vekiFilterSobelNegVertBorder_8u8s_C1R, &vekiFilterSobelNegVertGetBufferSize_8u8s_C1R>(),
    maskRow<&vekiFilterSobelNegVertBorder_32f_C1R, &vekiFilterSobelNegVertGetBufferSize_32f_C1R>(peer::sobelNegVert),
    maskRow<&vekiFilterSobelHorizSecondBorder_8u16s_C1R, &vekiFilterSobelHorizSecondGetBufferSize_8u16s_C1R>(
        peer::sobelHorizSecond),
    maskRow<&vekiFilterSobelHorizSecondBorder_8u8s_C1R, &vekiFilterSobelHorizSecondGetBufferSize_8u8s_C1R>(),
    maskRow<&vekiFilterSobelHorizSecondBorder_32f_C1R, &vekiFilterSobelHorizSecondGetBufferSize_32f_C1R>(
        peer::sobelHorizSecond),
    maskRow<&vekiFilterSobelVertSecondBorder_8u16s_C1R, &vekiFilterSobelVertSecondGetBufferSize_8u16s_C1R>(
        peer::sobelVertSecond),
    maskRow<&vekiFilterSobelVertSecondBorder_8u8s_C1R, &vekiFilterSobelVertSecondGetBufferSize_8u8s_C1R>(),
    maskRow<&vekiFilterSobelVertSecondBorder_32f_C1R, &vekiFilterSobelVertSecondGetBufferSize_32f_C1R>(
        peer::sobelVertSecond),
    maskRow<&vekiFilterSobelCrossBorder_8u16s_C1R, &vekiFilterSobelCrossGetBufferSize_8u16s_C1R>(peer::sobelCross),
    maskRow<&vekiFilterSobelCrossBorder_8u8s_C1R, &vekiFilterSobelCrossGetBufferSize_8u8s_C1R>(),
    maskRow<&vekiFilterSobelCrossBorder_32f_C1R, &vekiFilterSobelCrossGetBufferSize_32f_C1R>(peer::sobelCross),
    smallRow<&vekiFilterScharrHorizBorder_8u16s_C1R, &vekiFilterScharrHorizGetBufferSize_8u16s_C1R>(peer::scharrHoriz),
    smallRow<&vekiFilterScharrHorizBorder_8u8s_C1R, &vekiFilterScharrHorizGetBufferSize_8u8s_C1R>(),
    smallRow<&vekiFilterScharrHorizBorder_32f_C1R, &vekiFilterScharrHorizGetBufferSize_32f_C1R>(peer::scharrHoriz),
    smallRow<&vekiFilterScharrVertBorder_8u16s_C1R, &vekiFilterScharrVertGetBufferSize_8u16s_C1R>(peer::scharrVert),
    smallRow<&vekiFilterScharrVertBorder_8u8s_C1R, &vekiFilterScharrVertGetBufferSize_8u8s_C1R>(),
    smallRow<&vekiFilterScharrVertBorder_32f_C1R, &vekiFilterScharrVertGetBufferSize_32f_C1R>(peer::scharrVert),
    maskRow<&vekiFilterLaplacianBorder_8u16s_C1R, &vekiFilterLaplacianGetBufferSize_8u16s_C1R>(peer::laplacian),
    maskRow<&vekiFilterLaplacianBorder_8u8s_C1R, &vekiFilterLaplacianGetBufferSize_8u8s_C1R>(),
    maskRow<&vekiFilterLaplacianBorder_32f_C1R, &vekiFilterLaplacianGetBufferSize_32f_C1R>(peer::laplacian),
    maskRow<&vekiFilterLowpassBorder_8u_C1R, &vekiFilterLowpassGetBufferSize_8u_C1R>(peer::lowpass),
    maskRow<&vekiFilterLowpassBorder_32f_C1R, &vekiFilterLowpassGetBufferSize_32f_C1R>(peer::lowpass),
};
const Family fixedFilters("FixedFilters", kFixedFilterRows);

const Row kGaussRows[] = {
    row<&vekiFilterGaussBorder_32f_C1R>(
        peer::gauss, Setup{.parameters = {kGaussTaps, 1.5, BorderReplicate, 0},
                           .bufferBytes = bufferBytes<&vekiFilterGaussGetBufferSize_32f_C1R, kGaussTaps>}),
};
const Family gauss("Gauss", kGaussRows);

}  // namespace
}  // namespace bench
