// What the peer library offers for these families; null in a build without it, hence weak.
#pragma once

#include "row.h"

namespace bench::peer {

[[gnu::weak]] Peer sobelHoriz, sobelVert, sobelNegVert, sobelHorizSecond, sobelVertSecond, sobelCross;
[[gnu::weak]] Peer scharrHoriz, scharrVert, laplacian, lowpass, gauss, pyrDown, pyrUp;

// A pass along the rows or the columns with the five taps of a binomial kernel.
[[gnu::weak]] Peer binomialAlongRows, binomialAlongColumns;

// The next level of a pyramid of rate 2, with five binomial taps.
[[gnu::weak]] Peer halve;

}  // namespace bench::peer
