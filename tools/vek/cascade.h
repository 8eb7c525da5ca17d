#pragma once

#include <string>
#include <vector>

#include "vekcv.h"

/**
 * A rectangle of the window. A tilted one holds the pixels (x - 1 + i - k, y + i + k), and those below them, for i from
 * 0 to width - 1 and k from 0 to height - 1: it runs width to the lower right and height to the lower left.
 */
struct CascadeRectangle {
    ImageRect place;
    float weight;
};

struct CascadeFeature {
    std::vector<CascadeRectangle> rectangles;
    bool tilted;
};

/** Adds `below` where the feature is below the threshold times the deviation of the window, else `above`. */
struct WeakClassifier {
    size_t feature;
    float threshold, below, above;
};

/** Passes the windows whose sum is not below the threshold. */
struct CascadeStage {
    float threshold;
    std::vector<WeakClassifier> classifiers;
};

/** A trained cascade of boosted stumps on Haar-like features, by Viola and Jones; tilted features by Lienhart. */
struct Cascade {
    RoiSize window;
    std::vector<CascadeStage> stages;
    std::vector<CascadeFeature> features;

    bool hasTilted() const;
    /**
     * For pictures whose rows become columns. Tilted rectangles then hold pairs of pixels side by side, as those of the
     * library do; they are to be read from a tilted integral image one row above, where their corners may lie.
     */
    Cascade transposed() const;
};

/** Reads a cascade as OpenCV stores it in XML; throws Failure where the file is not one of this kind. */
Cascade readCascade(const std::string& path);
