// Haar classifiers: building, tilting and releasing them.
#include "bind.h"
#include "check.h"
#include "haar_classifier.h"
#include "rectangle_corners.h"
#include "state.h"

namespace VEKCV_VARIANT {
namespace {

/** Coordinates that do not fit wrap around, as such rectangles lie in no image. */
constexpr HaarCorner corner(uint32_t x, uint32_t y) {
    return {static_cast<int32_t>(x), static_cast<int32_t>(y)};
}

constexpr int32_t wrappingSum(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

constexpr int32_t lesser(int32_t a, int32_t b) {
    return a < b ? a : b;
}
constexpr int32_t greater(int32_t a, int32_t b) {
    return a > b ? a : b;
}

template <typename Value>
void setCorners(HaarRectangle<Value>& rectangle, const RectangleCorners<uint32_t>& corners) {
    const auto at = [](Corner<uint32_t> c) { return corner(c.x, c.y); };
    rectangle = {at(corners.a), at(corners.b), at(corners.c), at(corners.d), rectangle.weight};
}

struct Upright {
    static constexpr bool kIsTilted = false;

    static bool isValid(ImageRect r) { return r.x >= 0 && r.y >= 0 && r.width >= 1 && r.height >= 1; }
    static ImageRect firstExtent(ImageRect r) { return r; }

    template <typename Value>
    static void place(HaarRectangle<Value>& rectangle, ImageRect r) {
        setCorners(rectangle, uprightCorners<uint32_t>(r.x, r.y, r.width, r.height));
    }
};

struct Tilted {
    static constexpr bool kIsTilted = true;

    static bool isValid(ImageRect r) { return Upright::isValid(r) && int64_t{r.x} + 1 >= r.height; }
    static ImageRect firstExtent(ImageRect r) {
        const HaarCorner size = corner(uint32_t(r.width) - r.height, uint32_t(r.width) + r.height);
        return {r.x, r.y, size.x, size.y};
    }

    template <typename Value>
    static void place(HaarRectangle<Value>& rectangle, ImageRect r) {
        setCorners(rectangle, tiltedCorners<uint32_t>(r.x, r.y, r.width, r.height));
    }
};

/** The edges around rectangles. Right and bottom begin as a width and a height, and are always compared as such. */
struct Extent {
    int32_t left, top, right, bottom;

    template <typename Value>
    void add(const HaarRectangle<Value>& rectangle) {
        left = lesser(left, rectangle.d.x);
        top = lesser(top, rectangle.d.y);
        if (wrappingSum(right, left) < rectangle.a.x)
            right = rectangle.a.x;
        if (wrappingSum(bottom, top) < rectangle.a.y)
            bottom = rectangle.a.y;
    }
    ImageRect rect() const {
        const HaarCorner size = corner(uint32_t(right) - left, uint32_t(bottom) - top);
        return {left, top, size.x, size.y};
    }
};

/** Features as they are given. */
template <typename Value>
struct Input {
    const ImageRect* rectangles;
    const Value *weights, *thresholds, *valuesBelow, *valuesAbove;
    const int32_t* rectangleCounts;
    int32_t featureCount;

    bool hasRectangleEverywhere() const {
        for (int32_t i = 0; i < featureCount; ++i)
            if (rectangleCounts[i] < 1)
                return false;
        return true;
    }
    int64_t rectangleCount() const {
        int64_t count = 0;
        for (int32_t i = 0; i < featureCount; ++i)
            count += rectangleCounts[i];
        return count;
    }
    template <typename Shape>
    bool isValid() const {
        const int64_t count = rectangleCount();
        for (int64_t i = 0; i < count; ++i)
            if (!Shape::isValid(rectangles[i]))
                return false;
        return true;
    }
};

/** Fills the arrays of a classifier. */
template <typename Shape, typename Value>
class Builder {
  public:
    Builder(const Input<Value>& input, Classifier<Value>& classifier)
        : input_(input), feature_(classifier.features), rectangle_(classifier.rectangles) {
        const ImageRect first = Shape::firstExtent(input.rectangles[0]);
        extent_ = {first.x, first.y, first.width, first.height};
    }

    /** Appends the features whose number of rectangles is chosen; gives their number. */
    template <typename IsChosen>
    int32_t append(IsChosen isChosen) {
        const HaarFeature<Value>* const before = feature_;
        const ImageRect* rect = input_.rectangles;
        const Value* weight = input_.weights;
        for (int32_t i = 0; i < input_.featureCount; ++i) {
            const int32_t count = input_.rectangleCounts[i];
            if (isChosen(count))
                appendFeature(i, rect, weight);
            rect += count;
            weight += count;
        }
        return static_cast<int32_t>(feature_ - before);
    }

    ImageRect extent() const { return extent_.rect(); }

  private:
    void appendFeature(int32_t index, const ImageRect* rects, const Value* weights) {
        // An index from 2^23 on does not fit the tag; a negative one is never found.
        const int32_t tag = index <= INT32_MAX >> kTagBits ? index << kTagBits : -(1 << kTagBits);
        const int32_t count = input_.rectangleCounts[index];
        *feature_++ = {count,
                       rectangle_,
                       input_.thresholds[index],
                       input_.valuesBelow[index],
                       input_.valuesAbove[index],
                       tag | (Shape::kIsTilted ? kTiltedBit : 0)};
        for (int32_t k = 0; k < count; ++k, ++rectangle_) {
            rectangle_->weight = weights[k];
            Shape::place(*rectangle_, rects[k]);
            extent_.add(*rectangle_);
        }
    }

    const Input<Value>& input_;
    HaarFeature<Value>* feature_;
    HaarRectangle<Value>* rectangle_;
    Extent extent_{};
};

/** Whether the first weight of every feature is -1 without its fraction. */
bool firstWeightsAreMinusOne(const Classifier<float>& classifier) {
    for (int32_t i = 0; i < classifier.featureCount; ++i) {
        const float weight = classifier.features[i].rectangles[0].weight;
        if (!(weight > -2 && weight <= -1))
            return false;
    }
    return true;
}

template <typename Shape, typename Value>
void fill(const Input<Value>& input, Classifier<Value>& classifier) {
    Builder<Shape, Value> builder(input, classifier);
    if constexpr (Shape::kIsTilted) {
        builder.append([](int32_t) { return true; });
        classifier.flags = kTiltedBit;
    } else {
        classifier.twoRectangleFeatures = builder.append([](int32_t count) { return count == 2; });
        classifier.upToThreeRectangleFeatures =
            classifier.twoRectangleFeatures + builder.append([](int32_t count) { return count == 3; });
        builder.append([](int32_t count) { return count != 2 && count != 3; });
        if constexpr (std::is_same_v<Value, float>)
            classifier.firstWeightIsMinusOne = firstWeightsAreMinusOne(classifier) ? 1 : 0;
    }
    classifier.extent = builder.extent();
}

template <typename Shape, typename Value>
Status initAlloc(HaarClassifier** state, const ImageRect* rectangles, const Value* weights, const Value* thresholds,
                 const Value* valuesBelow, const Value* valuesAbove, const int32_t* rectangleCounts,
                 int32_t featureCount) {
    if (Status status = Check()
                            .pointers(state, rectangles, weights, thresholds, valuesBelow, valuesAbove, rectangleCounts)
                            .require(featureCount >= 0, StatusSizeError))
        return status;
    const Input<Value> input{rectangles, weights, thresholds, valuesBelow, valuesAbove, rectangleCounts, featureCount};
    if (!input.hasRectangleEverywhere())
        return StatusSizeError;
    constexpr bool kLeavesStateOfInvalid = !Shape::kIsTilted && std::is_same_v<Value, float>;
    if (kLeavesStateOfInvalid && !input.template isValid<Shape>())
        return StatusBadArgument;

    const int64_t rectangleCount = input.rectangleCount();
    if (rectangleCount > INT32_MAX)
        return StatusMemoryAllocation;
    Owned<Classifier<Value>> classifier;
    if (Status status = newState(classifier, StateArray{&Classifier<Value>::features, featureCount},
                                 StateArray{&Classifier<Value>::rectangles, static_cast<int32_t>(rectangleCount)}))
        return status;
    if (!kLeavesStateOfInvalid && !input.template isValid<Shape>()) {
        *state = nullptr;
        return StatusBadArgument;
    }
    classifier->featureCount = featureCount;
    classifier->rectangleCount = static_cast<int32_t>(rectangleCount);
    fill<Shape>(input, *classifier);
    *state = classifier.keep();
    return StatusOk;
}

template <typename Value>
Status windowSize(const HaarClassifier* state, RoiSize* size) {
    if (Status status = Check().pointers(state, size))
        return status;
    const auto& classifier = static_cast<const Classifier<Value>&>(*state);
    *size = {0, 0};
    for (int32_t i = 0; i < classifier.rectangleCount; ++i) {
        size->width = greater(size->width, classifier.rectangles[i].c.x);
        size->height = greater(size->height, classifier.rectangles[i].a.y);
    }
    return StatusOk;
}

/** Tilts a rectangle by its upright corners; those of integers become squares. */
template <typename Value>
void tilt(HaarRectangle<Value>& rectangle, bool upwards) {
    const uint32_t x = rectangle.d.x, top = rectangle.d.y, bottom = rectangle.a.y;
    const uint32_t w = rectangle.a.x - x, h = std::is_same_v<Value, float> ? bottom - top : w;
    // Upwards from the corner at the bottom: w steps to the right and h to the left lead to the topmost corner.
    setCorners(rectangle, upwards ? tiltedCorners(x + w - h, bottom - w - h, h, w) : tiltedCorners(x, top, w, h));
}

template <typename Value>
Status tiltFeatures(const uint8_t* featureMask, int32_t tiltOrientation, HaarClassifier* state) {
    if (Status status = Check().pointers(featureMask, state))
        return status;
    if ((state->flags & kTiltedBit) != 0)
        return StatusBadArgument;
    auto& classifier = static_cast<Classifier<Value>&>(*state);
    for (int32_t i = 0; i < classifier.featureCount; ++i) {
        if (featureMask[i] != 0)
            classifier.flags = kTiltedBit;
        HaarFeature<Value>& feature = classifier.features[i];
        const int32_t index = feature.featureTag >> kTagBits;
        if (index < 0 || featureMask[index] == 0)
            continue;
        feature.featureTag = kTiltedBit;
        for (int32_t k = 0; k < feature.rectangleCount; ++k)
            tilt(feature.rectangles[k], tiltOrientation == 0);
    }
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiHaarClassifierInitAlloc_32f, initAlloc<Upright>);
VEKCV_BIND(vekiHaarClassifierInitAlloc_32s, initAlloc<Upright>);
VEKCV_BIND(vekiTiltedHaarClassifierInitAlloc_32f, initAlloc<Tilted>);
VEKCV_BIND(vekiTiltedHaarClassifierInitAlloc_32s, initAlloc<Tilted>);
VEKCV_BIND(vekiHaarClassifierFree_32f, freeState);
VEKCV_BIND(vekiHaarClassifierFree_32s, freeState);
VEKCV_BIND(vekiGetHaarClassifierSize_32f, windowSize<float>);
VEKCV_BIND(vekiGetHaarClassifierSize_32s, windowSize<int32_t>);
VEKCV_BIND(vekiTiltHaarFeatures_32f, tiltFeatures<float>);
VEKCV_BIND(vekiTiltHaarFeatures_32s, tiltFeatures<int32_t>);
}  // namespace VEKCV_VARIANT
