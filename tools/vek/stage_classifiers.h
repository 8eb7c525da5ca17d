#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "cascade.h"

/** The stages of a cascade as classifiers of the library. */
class StageClassifiers {
  public:
    struct Free {
        void operator()(HaarClassifier* classifier) const { vekiHaarClassifierFree_32f(classifier); }
    };
    struct Stage {
        std::unique_ptr<HaarClassifier, Free> classifier;
        float threshold;
    };
    /** A rectangle as another, with the weight of the first or with its negative. */
    using Mapping = std::function<CascadeRectangle(const CascadeRectangle& rectangle)>;

    /** With thresholds times the factor, and each rectangle mapped; the cascade's tilted features are tilted. */
    StageClassifiers(const Cascade& cascade, float thresholdFactor, const Mapping& mapping);

    const std::vector<Stage>& stages() const { return stages_; }

  private:
    std::vector<Stage> stages_;
};
