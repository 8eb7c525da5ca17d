#pragma once

#include "group.h"
#include "picture.h"
#include "window_scan.h"

/** So many windows pass that they cannot be those of objects. */
struct TooManyWindows : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/** Finds objects of any size in pictures. */
class Detector {
  public:
    struct Options {
        double scale = 1.1;           // from a size of the window to the next, above 1
        int32_t minSize = 0;          // neither side of an object is smaller, in pixels
        int32_t leastNeighbours = 3;  // windows to an object
    };
    /** Receives the part of the windows that have been looked at, from 0 to 1. */
    using Progress = std::function<void(double part)>;

    explicit Detector(const Cascade& cascade);

    /** The objects in a grey picture. Without neighbours, each window is one, and may lie on others. */
    std::vector<Detection> detect(const Picture& grey, const Options& options, const Progress& progress = {});

  private:
    std::vector<ImageRect> windowsIn(const Picture& grey, const Options& options, const Progress& progress);

    bool transposed_;
    WindowScan scan_;
};
