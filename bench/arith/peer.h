// What the peer library offers for these families; null in a build without it, hence weak.
#pragma once

#include "row.h"

namespace bench::peer {

[[gnu::weak]] Peer accumulate, accumulateSquare, accumulateProduct, accumulateWeighted, weightedSum;
[[gnu::weak]] Peer absDiff, absDiffConstant;
[[gnu::weak]] Peer normInf, normL1, normL2;  // of one source, or of the difference of two
[[gnu::weak]] Peer normRelInf, normRelL1, normRelL2;
[[gnu::weak]] Peer mean, meanAndDeviation, extrema;
[[gnu::weak]] Peer integral, integralAndSquares;

}  // namespace bench::peer
