#pragma once

#include <vector>

#include "stage_classifiers.h"
#include "table.h"

/**
 * Finds the windows of a picture that pass a cascade, at one scale and in a part of the picture at a time, so that the
 * tables stay small whatever the size of the picture.
 */
class WindowScan {
  public:
    /** The most positions in a part. */
    static constexpr RoiSize kMostPositions{512, 64};

    /** A cascade with tilted features must be transposed, and so must be the pictures. */
    explicit WindowScan(const Cascade& cascade);

    RoiSize window() const { return window_; }

    /**
     * Adds the positions of windows that pass to `found`: of all in a part, or of those in every second column of every
     * second row (`spacing` 1 or 2). The pixels go on beyond the positions by the window less a pixel.
     */
    void scan(const uint8_t* pixels, int32_t step, RoiSize positions, int32_t spacing, std::vector<ImagePoint>& found);

  private:
    void sumPixels(const uint8_t* pixels, int32_t step, RoiSize positions);
    void separatePhases(RoiSize positions);
    void computeNorms(RoiSize grid, int32_t spacing);
    /** Clears the positions that fail in the mask, and tells how many remain. */
    int32_t applyStages(RoiSize grid, int32_t spacing);

    RoiSize window_;
    bool tilted_;
    Table<int32_t> sums_, squares_, phases_, tiltedSums_, deviations_;
    Table<float> norms_;
    Table<uint8_t> mask_;
    StageClassifiers classifiers_, phaseClassifiers_;
};
