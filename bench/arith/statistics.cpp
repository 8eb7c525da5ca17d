#include "arith/peer.h"
#include "export_row.h"

namespace bench {
namespace {

// The channel of interest is the second.
const Row kMeanRows[] = {
    row<&vekiMean_8u_C1MR>(peer::mean),
    row<&vekiMean_8s_C1MR>(peer::mean),
    row<&vekiMean_16u_C1MR>(peer::mean),
    row<&vekiMean_32f_C1MR>(peer::mean),
    row<&vekiMean_8u_C3CMR>(peer::mean, {2}),
    row<&vekiMean_8s_C3CMR>(peer::mean, {2}),
    row<&vekiMean_16u_C3CMR>(peer::mean, {2}),
    row<&vekiMean_32f_C3CMR>(peer::mean, {2}),
    row<&vekiMean_StdDev_8u_C1R>(peer::meanAndDeviation),
    row<&vekiMean_StdDev_8s_C1R>(peer::meanAndDeviation),
    row<&vekiMean_StdDev_16u_C1R>(peer::meanAndDeviation),
    row<&vekiMean_StdDev_32f_C1R>(peer::meanAndDeviation),
    row<&vekiMean_StdDev_8u_C1MR>(peer::meanAndDeviation),
    row<&vekiMean_StdDev_8s_C1MR>(peer::meanAndDeviation),
    row<&vekiMean_StdDev_16u_C1MR>(peer::meanAndDeviation),
    row<&vekiMean_StdDev_32f_C1MR>(peer::meanAndDeviation),
    row<&vekiMean_StdDev_8u_C3CR>(peer::meanAndDeviation, {2}),
    row<&vekiMean_StdDev_8s_C3CR>(peer::meanAndDeviation, {2}),
    row<&vekiMean_StdDev_16u_C3CR>(peer::meanAndDeviation, {2}),
    row<&vekiMean_StdDev_32f_C3CR>(peer::meanAndDeviation, {2}),
    row<&vekiMean_StdDev_8u_C3CMR>(peer::meanAndDeviation, {2}),
    row<&vekiMean_StdDev_8s_C3CMR>(peer::meanAndDeviation, {2}),
    row<&vekiMean_StdDev_16u_C3CMR>(peer::meanAndDeviation, {2}),
    row<&vekiMean_StdDev_32f_C3CMR>(peer::meanAndDeviation, {2}),
};
const Family means("MeanStdDev", kMeanRows);

const Row kExtremaRows[] = {
    row<&vekiMinMaxIndx_8u_C1R>(peer::extrema),         row<&vekiMinMaxIndx_8s_C1R>(peer::extrema),
    row<&vekiMinMaxIndx_16u_C1R>(peer::extrema),        row<&vekiMinMaxIndx_32f_C1R>(peer::extrema),
    row<&vekiMinMaxIndx_8u_C1MR>(peer::extrema),        row<&vekiMinMaxIndx_8s_C1MR>(peer::extrema),
    row<&vekiMinMaxIndx_16u_C1MR>(peer::extrema),       row<&vekiMinMaxIndx_32f_C1MR>(peer::extrema),
    row<&vekiMinMaxIndx_8u_C3CR>(peer::extrema, {2}),   row<&vekiMinMaxIndx_8s_C3CR>(peer::extrema, {2}),
    row<&vekiMinMaxIndx_16u_C3CR>(peer::extrema, {2}),  row<&vekiMinMaxIndx_32f_C3CR>(peer::extrema, {2}),
    row<&vekiMinMaxIndx_8u_C3CMR>(peer::extrema, {2}),  row<&vekiMinMaxIndx_8s_C3CMR>(peer::extrema, {2}),
    row<&vekiMinMaxIndx_16u_C3CMR>(peer::extrema, {2}), row<&vekiMinMaxIndx_32f_C3CMR>(peer::extrema, {2}),
};
const Family extrema("Extrema", kExtremaRows);

}  // namespace
}  // namespace bench
