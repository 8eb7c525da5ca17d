#pragma once

#include <optional>

#include "picture.h"

/**
 * The value that parts a grey picture of 8 bits into pixels up to it and lighter ones so that their variance within the
 * two is smallest, by Otsu, "A Threshold Selection Method from Gray-Level Histograms" (1979). The first of several;
 * none where all pixels are alike.
 */
std::optional<int32_t> otsuThreshold(const Picture& grey);
