#pragma once

#include <nlohmann/json.hpp>

#include "picture.h"

/** Regions of pixels, by the number that a picture of 16 bits has there: from 1 to the count, or 0 for none. */
struct Labels {
    Picture picture;
    int32_t count = 0;
};

/**
 * The connected regions of the pixels that are not 0 of a picture of 16 bits, numbered by their first pixels, row by
 * row. Throws Failure where there are too many for their numbers; `name` is that of the picture, for the message.
 */
Labels labelsOf(Picture regions, int32_t neighbors, const std::string& name);

struct Region {
    int64_t area = 0;  // number of pixels
    ImageRect box{};   // the smallest upright rectangle around them
};

/** The regions in the order of their numbers. */
std::vector<Region> regionsOf(const Labels& labels);

nlohmann::ordered_json asJson(const Region& region);

/** Prints an array of the regions with their numbers. */
void printJson(const std::vector<Region>& regions);
