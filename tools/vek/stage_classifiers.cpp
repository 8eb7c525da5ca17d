#include "stage_classifiers.h"

#include <algorithm>

#include "library_call.h"

StageClassifiers::StageClassifiers(const Cascade& cascade, float thresholdFactor, const Mapping& mapping) {
    for (const CascadeStage& stage : cascade.stages) {
        std::vector<ImageRect> places;
        std::vector<float> weights, thresholds, below, above;
        std::vector<int32_t> counts;
        std::vector<uint8_t> tilted;
        for (const WeakClassifier& weak : stage.classifiers) {
            const CascadeFeature& feature = cascade.features[weak.feature];
            for (const CascadeRectangle& rectangle : feature.rectangles) {
                const CascadeRectangle mapped = mapping(rectangle);
                places.push_back(mapped.place);
                weights.push_back(mapped.weight);
            }
            counts.push_back(static_cast<int32_t>(feature.rectangles.size()));
            thresholds.push_back(weak.threshold * thresholdFactor);
            below.push_back(weak.below);
            above.push_back(weak.above);
            tilted.push_back(feature.tilted);
        }
        HaarClassifier* classifier = nullptr;
        callLibrary("vekiHaarClassifierInitAlloc_32f", vekiHaarClassifierInitAlloc_32f, &classifier, places.data(),
                    weights.data(), thresholds.data(), below.data(), above.data(), counts.data(),
                    static_cast<int32_t>(counts.size()));
        stages_.push_back({std::unique_ptr<HaarClassifier, Free>(classifier), stage.threshold});
        if (std::ranges::any_of(tilted, [](uint8_t flag) { return flag != 0; }))
            callLibrary("vekiTiltHaarFeatures_32f", vekiTiltHaarFeatures_32f, tilted.data(), 1, classifier);
    }
}
