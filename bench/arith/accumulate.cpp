#include "arith/peer.h"
#include "export_row.h"

namespace bench {
namespace {

// The peer has no signed 8-bit sources.
const Row kAccumulationRows[] = {
    row<&vekiAdd_8u32f_C1IR>(peer::accumulate),
    row<&vekiAdd_8s32f_C1IR>(),
    row<&vekiAdd_16u32f_C1IR>(peer::accumulate),
    row<&vekiAdd_8u32f_C1IMR>(peer::accumulate),
    row<&vekiAdd_8s32f_C1IMR>(),
    row<&vekiAdd_16u32f_C1IMR>(peer::accumulate),
    row<&vekiAdd_32f_C1IMR>(peer::accumulate),
    row<&vekiAddSquare_8u32f_C1IR>(peer::accumulateSquare),
    row<&vekiAddSquare_8s32f_C1IR>(),
    row<&vekiAddSquare_16u32f_C1IR>(peer::accumulateSquare),
    row<&vekiAddSquare_32f_C1IR>(peer::accumulateSquare),
    row<&vekiAddSquare_8u32f_C1IMR>(peer::accumulateSquare),
    row<&vekiAddSquare_8s32f_C1IMR>(),
    row<&vekiAddSquare_16u32f_C1IMR>(peer::accumulateSquare),
    row<&vekiAddSquare_32f_C1IMR>(peer::accumulateSquare),
    row<&vekiAddProduct_8u32f_C1IR>(peer::accumulateProduct),
    row<&vekiAddProduct_8s32f_C1IR>(),
    row<&vekiAddProduct_16u32f_C1IR>(peer::accumulateProduct),
    row<&vekiAddProduct_32f_C1IR>(peer::accumulateProduct),
    row<&vekiAddProduct_8u32f_C1IMR>(peer::accumulateProduct),
    row<&vekiAddProduct_8s32f_C1IMR>(),
    row<&vekiAddProduct_16u32f_C1IMR>(peer::accumulateProduct),
    row<&vekiAddProduct_32f_C1IMR>(peer::accumulateProduct),
    row<&vekiAddWeighted_8u32f_C1IR>(peer::accumulateWeighted, {0.25}),
    row<&vekiAddWeighted_8s32f_C1IR>(nullptr, {0.25}),
    row<&vekiAddWeighted_16u32f_C1IR>(peer::accumulateWeighted, {0.25}),
    row<&vekiAddWeighted_32f_C1IR>(peer::accumulateWeighted, {0.25}),
    row<&vekiAddWeighted_8u32f_C1IMR>(peer::accumulateWeighted, {0.25}),
    row<&vekiAddWeighted_8s32f_C1IMR>(nullptr, {0.25}),
    row<&vekiAddWeighted_16u32f_C1IMR>(peer::accumulateWeighted, {0.25}),
    row<&vekiAddWeighted_32f_C1IMR>(peer::accumulateWeighted, {0.25}),
    row<&vekiAddWeighted_32f_C1R>(peer::weightedSum, {0.25}),
};
const Family accumulation("Accumulation", kAccumulationRows);

}  // namespace
}  // namespace bench
