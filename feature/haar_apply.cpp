// Haar classifiers: a stage at all positions of its window.
#include "allocation.h"
#include "bind.h"
#include "check.h"
#include "haar_responses.h"
#include "parallel.h"

namespace VEKCV_VARIANT {
namespace {

/** The first position from x on whose mask byte is not 0; the end if there is none. */
ptrdiff_t nextSet(const uint8_t* mask, ptrdiff_t x, ptrdiff_t end) {
    const hn::ScalableTag<uint8_t> bytes;
    constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(hn::ScalableTag<uint8_t>()));
    for (; x + kLanes <= end; x += kLanes) {
        const intptr_t found = hn::FindFirstTrue(bytes, hn::Ne(hn::LoadU(bytes, mask + x), hn::Zero(bytes)));
        if (found >= 0)
            return x + found;
    }
    while (x < end && mask[x] == 0)
        ++x;
    return x;
}

/** All features are read from one image, at distances that were computed before. */
template <typename SumType, typename ValueType>
struct OneImage {
    using Sum = SumType;
    using Value = ValueType;
    using Origin = const Sum*;

    Image<const Sum> integral;
    const PlacedRectangle<Value>* placed;

    Origin origin(ptrdiff_t x, ptrdiff_t y) const { return integral.row(y) + x; }
    static HWY_INLINE const Sum* choose(Origin origin, const HaarFeature<Value>& /*feature*/) { return origin; }
    HWY_INLINE const PlacedRectangle<Value>& rectangle(const HaarFeature<Value>& /*feature*/, ptrdiff_t index) const {
        return placed[index];
    }
};

/** Upright features are read from one image, tilted ones from another. */
template <typename SumType, typename ValueType>
struct TwoImages {
    using Sum = SumType;
    using Value = ValueType;
    struct Origin {
        const Sum* images[2];
    };

    // The index is the tilted bit of a feature: 0 for upright, 1 for tilted ones.
    Image<const Sum> images[2];
    ptrdiff_t rowElements[2];
    const HaarRectangle<Value>* rectangles;

    Origin origin(ptrdiff_t x, ptrdiff_t y) const { return {{images[0].row(y) + x, images[1].row(y + 1) + x + 1}}; }
    static HWY_INLINE const Sum* choose(const Origin& origin, const HaarFeature<Value>& feature) {
        return origin.images[feature.featureTag & kTiltedBit];
    }
    HWY_INLINE PlacedRectangle<Value> rectangle(const HaarFeature<Value>& feature, ptrdiff_t index) const {
        return place(rectangles[index], rowElements[feature.featureTag & kTiltedBit]);
    }
};

/** A stage of a cascade and what it is applied to. */
template <typename Images, typename Arithmetic>
class Stage {
    using Value = typename Images::Value;
    using Origin = typename Images::Origin;

    /** As many neighbouring positions as a vector has lanes; the first `shared` also belong to the vector before. */
    struct Positions {
        Origin origin;
        const Value* norm;
        uint8_t* mask;
        ptrdiff_t shared;
    };

  public:
    Stage(const Classifier<Value>& classifier, const Images& images, const Arithmetic& arithmetic, Value threshold)
        : classifier_(classifier), images_(images), arithmetic_(arithmetic), threshold_(threshold) {}

    /** Clears the positions that fail, and gives the number of those that pass. */
    int32_t apply(Image<const Value> norms, Image<uint8_t> mask, RoiSize roi) const {
        // Most positions of most stages are cleared already, and looking for those that are left is soon done.
        return static_cast<int32_t>(reduceRows(
            roi, ParallelFrom{65536},
            [&](int32_t first, int32_t rows) {
                return applyRows(hn::ScalableTag<Value>(), norms, mask, roi.width, first, first + rows);
            },
            [](int64_t& total, int64_t passed) { total += passed; }));
    }

  private:
    template <typename D>
    int64_t applyRows(D d, Image<const Value> norms, Image<uint8_t> mask, ptrdiff_t width, ptrdiff_t first,
                      ptrdiff_t end) const {
        constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
        if constexpr (kLanes > 1)  // images narrower than a vector
            if (width < kLanes)
                return applyRows(hn::CappedTag < Value, kLanes == 4 ? 1 : 4 > (), norms, mask, width, first, end);

        // A vector begins at a position that is set, but ends with the row at the latest, so that nothing beyond it is
        // read. Several vectors, which may be of several rows, are evaluated at once.
        constexpr size_t kAtOnce =
            hn::MaxLanes(D()) < hn::MaxLanes(hn::ScalableTag<Value>()) ? 1 : Arithmetic::kMostAtOnce;
        Positions waiting[kAtOnce];
        size_t count = 0;
        int64_t passed = 0;
        for (ptrdiff_t y = first; y < end; ++y) {
            uint8_t* const maskRow = mask.row(y);
            for (ptrdiff_t x = 0; (x = nextSet(maskRow, x, width)) < width;) {
                const ptrdiff_t begin = HWY_MIN(x, width - kLanes);
                waiting[count++] = {images_.origin(begin, y), norms.row(y) + begin, maskRow + begin, x - begin};
                x = begin + kLanes;
                if (count == kAtOnce) {
                    passed += evaluate<kAtOnce>(d, waiting);
                    count = 0;
                }
            }
        }
        for (size_t i = 0; i < count; ++i)
            passed += evaluate<1>(d, waiting + i);
        return passed;
    }

    template <size_t kCount, typename D>
    HWY_NOINLINE int32_t evaluate(D d, const Positions* positions) const {
        hn::Vec<D> sums[kCount];
#pragma GCC unroll 4
        for (size_t i = 0; i < kCount; ++i)
            sums[i] = hn::Zero(d);

        const HaarFeature<Value>* feature = classifier_.features;
        const HaarFeature<Value>* const twos = feature + classifier_.twoRectangleFeatures;
        const HaarFeature<Value>* const threes = feature + classifier_.upToThreeRectangleFeatures;
        const HaarFeature<Value>* const end = feature + classifier_.featureCount;
        ptrdiff_t rectangle = 0;
        for (; feature < twos; ++feature, rectangle += 2)
            addFeature<kCount>(d, sums, *feature, rectangle, 2, positions);
        for (; feature < threes; ++feature, rectangle += 3)
            addFeature<kCount>(d, sums, *feature, rectangle, 3, positions);
        for (; feature < end; rectangle += feature->rectangleCount, ++feature)
            addFeature<kCount>(d, sums, *feature, rectangle, feature->rectangleCount, positions);

        int32_t passed = 0;
#pragma GCC unroll 4
        for (size_t i = 0; i < kCount; ++i)
            passed += clearFailed(d, sums[i], positions[i]);
        return passed;
    }

    /** Adds the value of a feature, valueBelow or valueAbove, at each position. */
    template <size_t kCount, typename D>
    HWY_INLINE void addFeature(D d, hn::Vec<D>* sums, const HaarFeature<Value>& feature, ptrdiff_t rectangle,
                               int32_t rectangleCount, const Positions* positions) const {
        typename Arithmetic::template Responses<D> responses[kCount];
        PlacedRectangle<Value> placed = images_.rectangle(feature, rectangle);
        const auto products = [&](size_t i) {
            const auto ofRectangle = rectangleSums(d, images_.choose(positions[i].origin, feature), placed);
            return arithmetic_.products(d, ofRectangle, hn::Set(d, placed.weight));
        };
#pragma GCC unroll 4
        for (size_t i = 0; i < kCount; ++i)
            responses[i] = products(i);
        for (int32_t k = 1; k < rectangleCount; ++k) {
            placed = images_.rectangle(feature, rectangle + k);
#pragma GCC unroll 4
            for (size_t i = 0; i < kCount; ++i)
                responses[i] = arithmetic_.add(d, responses[i], products(i));
        }
        const auto below = hn::Set(d, feature.valueBelow), above = hn::Set(d, feature.valueAbove);
#pragma GCC unroll 4
        for (size_t i = 0; i < kCount; ++i) {
            const auto areBelow = arithmetic_.areBelow(d, responses[i], feature, hn::LoadU(d, positions[i].norm));
            sums[i] = hn::Add(sums[i], hn::IfThenElse(areBelow, below, above));
        }
    }

    /** Clears the mask where the sums of values are too small; gives the number of positions that remain set. */
    template <typename D>
    HWY_INLINE int32_t clearFailed(D d, hn::Vec<D> sums, const Positions& positions) const {
        const hn::RebindToSigned<D> integers;
        const hn::Rebind<int8_t, D> bytes;
        const auto fail = hn::VecFromMask(d, hn::Lt(sums, hn::Set(d, threshold_)));
        auto* const mask = reinterpret_cast<int8_t*>(positions.mask);
        const auto remaining = hn::AndNot(hn::DemoteTo(bytes, hn::BitCast(integers, fail)), hn::LoadU(bytes, mask));
        hn::StoreU(remaining, bytes, mask);
        const auto isShared = hn::Lt(hn::Iota(bytes, 0), hn::Set(bytes, static_cast<int8_t>(positions.shared)));
        const auto isOwn = hn::Ne(hn::IfThenZeroElse(isShared, remaining), hn::Zero(bytes));
        return static_cast<int32_t>(hn::CountTrue(bytes, isOwn));
    }

    const Classifier<Value>& classifier_;
    Images images_;
    Arithmetic arithmetic_;
    Value threshold_;
};

/** Elements from row to row. */
template <typename T>
ptrdiff_t elementsOf(Image<T> image) {
    return image.step / static_cast<ptrdiff_t>(sizeof(T));
}

/** Applies a stage to one image. */
template <typename Sum, typename Value>
Status applyPlain(const Sum* integral, int32_t integralStep, const Value* norm, int32_t normStep, uint8_t* mask,
                  int32_t maskStep, RoiSize roi, int32_t* positiveCount, Value stageThreshold,
                  const HaarClassifier* state) {
    const Image<const Sum> sums{integral, integralStep};
    const Image<const Value> norms{norm, normStep};
    const Image<uint8_t> positions{mask, maskStep};
    if (Status status = Check()
                            .pointers(sums, norms, positions, positiveCount, state)
                            .roi(roi)
                            .steps(roi.width, sums, norms, positions))
        return status;
    constexpr bool kIsOfFloats = std::is_same_v<Sum, float>;
    if (kIsOfFloats && *positiveCount == 0)
        return StatusOk;

    const auto& classifier = static_cast<const Classifier<Value>&>(*state);
    const auto placed = Owned<PlacedRectangle<Value>>::forObjects(classifier.rectangleCount);
    if (classifier.rectangleCount > 0 && !placed)
        return StatusMemoryAllocation;
    for (int32_t i = 0; i < classifier.rectangleCount; ++i)
        placed.get()[i] = place(classifier.rectangles[i], elementsOf(sums));
    if (kIsOfFloats && classifier.firstWeightIsMinusOne != 0)
        for (int32_t i = 0; i < classifier.upToThreeRectangleFeatures; ++i)
            placed.get()[classifier.features[i].rectangles - classifier.rectangles].weight = -1;

    const OneImage<Sum, Value> image{sums, placed.get()};
    *positiveCount = Stage(classifier, image, PlainResponses(), stageThreshold).apply(norms, positions, roi);
    return StatusOk;
}

/** The form of integers for one image, which does not use its scale factor. */
Status applyPlainScaled(const int32_t* integral, int32_t integralStep, const int32_t* norm, int32_t normStep,
                        uint8_t* mask, int32_t maskStep, RoiSize roi, int32_t* positiveCount, int32_t stageThreshold,
                        const HaarClassifier* state, int32_t /*scaleFactor*/) {
    return applyPlain(integral, integralStep, norm, normStep, mask, maskStep, roi, positiveCount, stageThreshold,
                      state);
}

/** Applies a stage to an upright and a tilted image. */
template <typename Arithmetic, typename Sum, typename Value>
Status applyToBoth(const Sum* integral, int32_t integralStep, const Sum* tiltedIntegral, int32_t tiltedIntegralStep,
                   const Value* norm, int32_t normStep, uint8_t* mask, int32_t maskStep, RoiSize roi,
                   int32_t* positiveCount, Value stageThreshold, const HaarClassifier* state, int32_t scaleFactor) {
    const Image<const Sum> sums{integral, integralStep}, tilted{tiltedIntegral, tiltedIntegralStep};
    const Image<const Value> norms{norm, normStep};
    const Image<uint8_t> positions{mask, maskStep};
    if (Status status = Check()
                            .pointers(sums, norms, positions, tilted, positiveCount, state)
                            .roi(roi)
                            .steps(roi.width, sums, tilted, norms, positions)
                            .require(scaleFactor <= 0, StatusBadArgument))
        return status;
    const auto& classifier = static_cast<const Classifier<Value>&>(*state);
    const TwoImages<Sum, Value> images{{sums, tilted}, {elementsOf(sums), elementsOf(tilted)}, classifier.rectangles};
    Arithmetic arithmetic;
    if constexpr (std::is_same_v<Arithmetic, WideResponses>)
        arithmetic.shift = scaleFactor < -64 ? 64 : -scaleFactor;
    *positiveCount = Stage(classifier, images, arithmetic, stageThreshold).apply(norms, positions, roi);
    return StatusOk;
}

template <typename Sum>
Status applyMixed(const Sum* integral, int32_t integralStep, const Sum* tiltedIntegral, int32_t tiltedIntegralStep,
                  const float* norm, int32_t normStep, uint8_t* mask, int32_t maskStep, RoiSize roi,
                  int32_t* positiveCount, float stageThreshold, const HaarClassifier* state) {
    return applyToBoth<PlainResponses>(integral, integralStep, tiltedIntegral, tiltedIntegralStep, norm, normStep, mask,
                                       maskStep, roi, positiveCount, stageThreshold, state, 0);
}

}  // namespace

VEKCV_BIND(vekiApplyHaarClassifier_32f_C1R, applyPlain);
VEKCV_BIND(vekiApplyHaarClassifier_32s32f_C1R, applyPlain);
VEKCV_BIND(vekiApplyHaarClassifier_32s_C1RSfs, applyPlainScaled);
VEKCV_BIND(vekiApplyMixedHaarClassifier_32f_C1R, applyMixed);
VEKCV_BIND(vekiApplyMixedHaarClassifier_32s32f_C1R, applyMixed);
VEKCV_BIND(vekiApplyMixedHaarClassifier_32s_C1RSfs, applyToBoth<WideResponses>);
}  // namespace VEKCV_VARIANT
