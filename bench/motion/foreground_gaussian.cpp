#include "motion/peer.h"
#include "motion/scene.h"

namespace bench {
namespace {

/** A frame after another. The peer has models of another kind, so that the results are not compared. */
template <auto Process, auto InitAlloc, auto Free>
Row mixtureRow() {
    constexpr Layout kLayout(nameOf<Process>());
    return {
        std::string(nameOf<Process>()),
        [=](RoiSize size) {
            Work work{{size,
                       {},
                       sceneOperands(size, kLayout.channels),
                       [](const Case& data) { drawFrames(data.operands[0], data.size); },
                       1},
                      {},
                      {}};
            const Operand back = work.data.operands[1], fore = work.data.operands[2];
            work.vekcv =
                [=, next = NextFrame(work.data.operands[0], size),
                 model = Model<InitAlloc, Free, ForegroundGaussianParameters, ForegroundGaussianState>()]() mutable {
                    const auto process = [&](ForegroundGaussianState* state) {
                        expectOk(Process(next(), back.step, pointerTo<uint8_t>(back), back.step,
                                         pointerTo<uint8_t>(fore), fore.step, size, state),
                                 nameOf<Process>());
                    };
                    process(model.get(next(), back.step, size, process));
                };
            if (peer::mixtures != nullptr)
                work.peer = peer::mixtures(work.data);
            return work;
        },
        kMostModelPixels};
}

const Row kRows[] = {
    mixtureRow<&vekiForegroundGaussian_8u_C1R, &vekiForegroundGaussianInitAlloc_8u_C1R,
               &vekiForegroundGaussianFree_8u_C1R>(),
    mixtureRow<&vekiForegroundGaussian_8u_C3R, &vekiForegroundGaussianInitAlloc_8u_C3R,
               &vekiForegroundGaussianFree_8u_C3R>(),
};
const Family family("ForegroundGaussian", kRows);

}  // namespace
}  // namespace bench
