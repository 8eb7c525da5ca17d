#pragma once

#include "picture.h"

/** A frame of a scene: its pixel (x, y) shows what is at (x + shiftX, y + shiftY) in the first frame. */
struct ShiftedFrame {
    Picture picture;
    double shiftX = 0, shiftY = 0;
};

/** Whether superResolved can count the pixels of the result. */
bool canBeSuperResolved(const Picture& frame);

/**
 * The picture of twice the width and height whose shifted and shrunk copies fit the frames best, where a pixel of a
 * frame is the mean of the square that it covers. By gradient descent from the enlarged first frame; a term for
 * smoothness, whose weight is relative to that of a frame, decides what the frames leave open.
 */
Picture superResolved(const std::vector<ShiftedFrame>& frames, double smoothness);
