#include "motion/scene.h"

namespace bench {
namespace {

/** A frame after another: it is classified, learned, or, before it is measured, both. */
template <bool kLearns, auto Classify, auto Update, auto InitAlloc, auto Free>
Row histogramRow() {
    constexpr std::string_view kName = kLearns ? nameOf<Update>() : nameOf<Classify>();
    constexpr Layout kLayout(kName);
    return {
        std::string(kName),
        [=](RoiSize size) {
            Work work{{size,
                       {},
                       sceneOperands(size, kLayout.channels),
                       [](const Case& data) { drawFrames(data.operands[0], data.size); }},
                      {},
                      {}};
            const Operand back = work.data.operands[1], fore = work.data.operands[2];
            work.vekcv =
                [=, next = NextFrame(work.data.operands[0], size),
                 model = Model<InitAlloc, Free, ForegroundHistogramParameters, ForegroundHistogramState>()]() mutable {
                    const auto classify = [&](const uint8_t* frame, ForegroundHistogramState* state) {
                        expectOk(Classify(frame, back.step, pointerTo<uint8_t>(fore), fore.step, size, state),
                                 nameOf<Classify>());
                    };
                    const auto update = [&](const uint8_t* frame, ForegroundHistogramState* state) {
                        expectOk(Update(frame, back.step, pointerTo<uint8_t>(fore), fore.step, pointerTo<uint8_t>(back),
                                        back.step, size, state),
                                 nameOf<Update>());
                    };
                    const auto both = [&](ForegroundHistogramState* made) {
                        const uint8_t* const frame = next();
                        classify(frame, made);
                        update(frame, made);
                    };
                    ForegroundHistogramState* const state = model.get(next(), back.step, size, both);
                    if (kLearns)
                        update(next(), state);
                    else
                        classify(next(), state);
                };
            return work;
        },
        kMostModelPixels};
}

template <bool kLearns>
constexpr auto gray = histogramRow<kLearns, &vekiForegroundHistogram_8u_C1R, &vekiForegroundHistogramUpdate_8u_C1R,
                                   &vekiForegroundHistogramInitAlloc_8u_C1R, &vekiForegroundHistogramFree_8u_C1R>;
template <bool kLearns>
constexpr auto colour = histogramRow<kLearns, &vekiForegroundHistogram_8u_C3R, &vekiForegroundHistogramUpdate_8u_C3R,
                                     &vekiForegroundHistogramInitAlloc_8u_C3R, &vekiForegroundHistogramFree_8u_C3R>;

const Row kRows[] = {gray<false>(), colour<false>(), gray<true>(), colour<true>()};
const Family family("ForegroundHistogram", kRows);

}  // namespace
}  // namespace bench
