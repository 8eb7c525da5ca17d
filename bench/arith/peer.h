// What the peer library offers for these families; null in a build without it, hence weak.
#pragma once

#include "row.h"

namespace bench::peer {

[[gnu::weak]] Peer accumulate, accumulateSquare, accumulateProduct, accumulateWeighted, weightedSum;
[[gnu::weak]] Peer absDiff, absDiffConstant;

}  // namespace bench::peer
