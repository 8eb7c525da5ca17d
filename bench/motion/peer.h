// What the peer library offers for these families; null in a build without it, hence weak.
#pragma once

#include "row.h"

namespace bench::peer {

[[gnu::weak]] Peer mixtures, opticalFlow;

}  // namespace bench::peer
