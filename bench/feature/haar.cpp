#include "export_row.h"

namespace bench {
namespace {

// A stage of the middle of a cascade, in a window of 24 x 24 pixels.
constexpr int32_t kFeatures = 20;
constexpr int32_t kRectangles = 2;
constexpr int32_t kWindow = 24;

/** Features of an outer rectangle and of half of it, with every other one tilted. */
template <typename Value>
std::shared_ptr<HaarClassifier> classifier() {
    std::vector<ImageRect> rectangles;
    std::vector<Value> weights;
    std::vector<uint8_t> tilted;
    for (int32_t i = 0; i < kFeatures; ++i) {
        const int32_t x = 8 + i % 3, y = i % 5, width = 2 + 2 * (i % 4), height = 3 + i % 5;
        rectangles.push_back({x, y, width, height});
        rectangles.push_back({x, y, width / 2, height});
        weights.insert(weights.end(), {-1, 2});
        tilted.push_back(i % 2 == 0 ? 1 : 0);
    }
    const std::vector<Value> thresholds(kFeatures, 1), values(kFeatures, 1);
    const std::vector<int32_t> counts(kFeatures, kRectangles);
    HaarClassifier* state = nullptr;
    if constexpr (std::is_same_v<Value, float>) {
        expectOk(vekiHaarClassifierInitAlloc_32f(&state, rectangles.data(), weights.data(), thresholds.data(),
                                                 values.data(), values.data(), counts.data(), kFeatures),
                 "vekiHaarClassifierInitAlloc_32f");
        expectOk(vekiTiltHaarFeatures_32f(tilted.data(), 1, state), "vekiTiltHaarFeatures_32f");
    } else {
        expectOk(vekiHaarClassifierInitAlloc_32s(&state, rectangles.data(), weights.data(), thresholds.data(),
                                                 values.data(), values.data(), counts.data(), kFeatures),
                 "vekiHaarClassifierInitAlloc_32s");
        expectOk(vekiTiltHaarFeatures_32s(tilted.data(), 1, state), "vekiTiltHaarFeatures_32s");
    }
    return {state, vekiHaarClassifierFree_32f};
}

/** An image of integrals around the window positions, and its element of the first of them. */
template <typename Sum>
struct Integral {
    static constexpr int32_t kMargin = kWindow;

    Operand operand;

    explicit Integral(RoiSize size)
        : operand(Operand::make(Role::kSource, elementOf<Sum>(), 1,
                                {size.width + 2 * kMargin, size.height + 2 * kMargin})) {}
    const Sum* first() const {
        return static_cast<const Sum*>(operand.memory.get()) + kMargin * (operand.size.width + ptrdiff_t{1});
    }
};

/** All positions pass, so that every call has the same to do; the mask selects stretches of them. */
template <auto Export, typename Sum, typename Value, typename... Scale>
Work work(Status(VEKCV_CALL*)(const Sum*, int32_t, const Value*, int32_t, uint8_t*, int32_t, RoiSize, int32_t*, Value,
                              const HaarClassifier*, Scale...),
          RoiSize size) {
    const Integral<Sum> integral(size);
    const Operand norm = Operand::make(Role::kSource, elementOf<Value>(), 1, size);
    const Operand mask = Operand::make(Role::kMask, Element::k8u, 1, size);
    Work work{{size, {}, {integral.operand, norm, mask}}, {}, {}};
    work.vekcv = [=, stage = classifier<Value>()] {
        int32_t count = 1;
        expectOk(Export(integral.first(), integral.operand.step, static_cast<const Value*>(norm.memory.get()),
                        norm.step, static_cast<uint8_t*>(mask.memory.get()), mask.step, size, &count, kFeatures,
                        stage.get(), Scale{}...),
                 nameOf<Export>());
    };
    return work;
}

template <auto Export, typename Sum, typename Value, typename... Scale>
Work work(Status(VEKCV_CALL*)(const Sum*, int32_t, const Sum*, int32_t, const Value*, int32_t, uint8_t*, int32_t,
                              RoiSize, int32_t*, Value, const HaarClassifier*, Scale...),
          RoiSize size) {
    const Integral<Sum> upright(size), tilted(size);
    const Operand norm = Operand::make(Role::kSource, elementOf<Value>(), 1, size);
    const Operand mask = Operand::make(Role::kMask, Element::k8u, 1, size);
    Work work{{size, {}, {upright.operand, tilted.operand, norm, mask}}, {}, {}};
    work.vekcv = [=, stage = classifier<Value>()] {
        int32_t count = 1;
        expectOk(
            Export(upright.first(), upright.operand.step, tilted.first(), tilted.operand.step,
                   static_cast<const Value*>(norm.memory.get()), norm.step, static_cast<uint8_t*>(mask.memory.get()),
                   mask.step, size, &count, kFeatures, stage.get(), Scale{}...),
            nameOf<Export>());
    };
    return work;
}

template <auto Export>
Row stageRow() {
    return {std::string(nameOf<Export>()), [](RoiSize size) { return work<Export>(Export, size); }};
}

const Row kRows[] = {
    stageRow<&vekiApplyHaarClassifier_32f_C1R>(),         stageRow<&vekiApplyHaarClassifier_32s32f_C1R>(),
    stageRow<&vekiApplyHaarClassifier_32s_C1RSfs>(),      stageRow<&vekiApplyMixedHaarClassifier_32f_C1R>(),
    stageRow<&vekiApplyMixedHaarClassifier_32s32f_C1R>(), stageRow<&vekiApplyMixedHaarClassifier_32s_C1RSfs>(),
};
const Family haar("HaarClassifier", kRows);

}  // namespace
}  // namespace bench
