// The record of a Haar classifier.
#pragma once

#include "vekcv.h"

/** What classifiers of floats and of integers have in common. */
struct HaarClassifier {
    int32_t featureCount;
    int32_t rectangleCount;  // of all features
    ImageRect extent;        // around the rectangles; no operation depends on it
    int32_t flags;           // kTiltedBit where there are tilted features
    // Upright classifiers begin with the features of two rectangles, and those of three follow; 0 in tilted ones.
    int32_t twoRectangleFeatures;
    int32_t upToThreeRectangleFeatures;
    int32_t firstWeightIsMinusOne;  // of every feature, without its fraction; 0 unless upright and of floats
};

namespace VEKCV_VARIANT {

/** In the flags of a classifier and in the tag of a feature. */
constexpr int32_t kTiltedBit = 1;

/** The bits of a tag below the index at which the feature was given. */
constexpr int32_t kTagBits = 8;

struct HaarCorner {
    int32_t x, y;
};

/** The sum of its pixels is a - b - c + d, of the entries of the integral image at these corners. */
template <typename Value>
struct HaarRectangle {
    HaarCorner a, b, c, d;
    Value weight;
};

template <typename Value>
struct HaarFeature {
    int32_t rectangleCount;
    HaarRectangle<Value>* rectangles;
    Value threshold, valueBelow, valueAbove;
    int32_t featureTag;
};

/** A classifier and its arrays in one block of memory. The rectangles lie in the order of the features. */
template <typename Value>
struct Classifier : HaarClassifier {
    HaarFeature<Value>* features;
    HaarRectangle<Value>* rectangles;
};

}  // namespace VEKCV_VARIANT
