#include "arith/peer.h"
#include "export_row.h"

namespace bench {
namespace {

const Row kAbsDiffRows[] = {
    row<&vekiAbsDiff_8u_C1R>(peer::absDiff),
    row<&vekiAbsDiff_8u_C3R>(peer::absDiff),
    row<&vekiAbsDiff_16u_C1R>(peer::absDiff),
    row<&vekiAbsDiff_32f_C1R>(peer::absDiff),
    row<&vekiAbsDiffC_8u_C1R>(peer::absDiffConstant, {100}),
    row<&vekiAbsDiffC_16u_C1R>(peer::absDiffConstant, {30000}),
    row<&vekiAbsDiffC_32f_C1R>(peer::absDiffConstant, {100}),
};
const Family absDiff("AbsDiff", kAbsDiffRows);

}  // namespace
}  // namespace bench
