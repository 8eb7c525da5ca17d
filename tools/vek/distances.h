#pragma once

#include <map>

#include "picture.h"

/** How the way between two pixels is measured. */
enum class Measure { kInf, kL1, kL2, kExact };

const std::map<std::string, Measure> kMeasures = {
    {"inf", Measure::kInf}, {"l1", Measure::kL1}, {"l2", Measure::kL2}, {"exact", Measure::kExact}};

/** What a distance of one pixel is in a picture of distances. */
constexpr int32_t kDistanceUnit = 16;

/**
 * The distance of each pixel of a grey picture of 8 bits to the nearest black one, times kDistanceUnit and rounded, in
 * a picture of 16 bits. What is too large for it is 65535, and so is all of a picture without a black pixel.
 */
Picture distancesIn(const Picture& mask, Measure measure);
