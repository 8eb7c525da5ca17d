#include "export_row.h"
#include "feature/peer.h"

namespace bench {
namespace {

template <auto Export>
Row normRow(const char* suffix, int32_t norm, Peer* peer) {
    Row made = row<Export>(peer, {static_cast<double>(norm)});
    made.name += suffix;
    return made;
}

const Row kGradientRows[] = {
    normRow<&vekiGradientColorToGray_8u_C3C1R>(" Inf", NormInf, peer::largestChannel),
    normRow<&vekiGradientColorToGray_8u_C3C1R>(" L1", NormL1, peer::meanOfChannels),
    normRow<&vekiGradientColorToGray_8u_C3C1R>(" L2", NormL2, nullptr),
    normRow<&vekiGradientColorToGray_16u_C3C1R>(" Inf", NormInf, peer::largestChannel),
    normRow<&vekiGradientColorToGray_16u_C3C1R>(" L1", NormL1, peer::meanOfChannels),
    normRow<&vekiGradientColorToGray_16u_C3C1R>(" L2", NormL2, nullptr),
    normRow<&vekiGradientColorToGray_32f_C3C1R>(" Inf", NormInf, peer::largestChannel),
    normRow<&vekiGradientColorToGray_32f_C3C1R>(" L1", NormL1, peer::meanOfChannels),
    normRow<&vekiGradientColorToGray_32f_C3C1R>(" L2", NormL2, nullptr),
};
const Family gradientColorToGray("GradientColorToGray", kGradientRows);

}  // namespace
}  // namespace bench
