// Pyramid layers with the five taps of a binomial kernel. Sizes are those of the larger image. The peer rounds halves
// of integers up.
#include "export_row.h"
#include "filter/peer.h"

namespace bench {
namespace {

RoiSize smallerLevel(RoiSize size, float rate) {
    RoiSize result{};
    expectOk(vekiGetPyramidDownROI(size, &result, rate), "vekiGetPyramidDownROI");
    return result;
}

/** A state that serves all numbers of threads that are measured. */
template <auto InitAlloc, typename Tap>
std::shared_ptr<PyramidLayerState> stateFor(RoiSize source, float rate, Status(VEKCV_CALL* release)(PyramidLayerState*),
                                            Status(VEKCV_CALL*)(PyramidLayerState**, RoiSize, float, const Tap*,
                                                                int32_t, int32_t)) {
    constexpr Tap kBinomial[] = {1, 4, 6, 4, 1};
    int threads = 1;
    vekGetNumThreads(&threads);
    vekSetNumThreads(kMostThreads);
    PyramidLayerState* state = nullptr;
    expectOk(InitAlloc(&state, source, rate, kBinomial, 5, 2), nameOf<InitAlloc>());
    vekSetNumThreads(threads);
    return {state, release};
}

template <auto Export, auto InitAlloc, auto Free, typename T>
Row layerRow(float rate, Peer* peer,
             Status(VEKCV_CALL*)(const T*, int32_t, RoiSize, T*, int32_t, RoiSize, PyramidLayerState*)) {
    return {std::string(nameOf<Export>()) + (rate == 2 ? " rate 2" : " rate 1.5"), [=](RoiSize size) {
                constexpr Layout kLayout(nameOf<Export>());
                constexpr bool kIsUp = nameOf<Export>().find("Up_") != std::string_view::npos;
                const RoiSize smaller = smallerLevel(size, rate), source = kIsUp ? smaller : size,
                              result = kIsUp ? size : smaller;
                const Operand from = Operand::make(Role::kSource, elementOf<T>(), kLayout.channels, source);
                const Operand to = Operand::make(Role::kDestination, elementOf<T>(), kLayout.channels, result);
                Work work{{size, {}, {from, to}}, {}, {}};
                const auto state = stateFor<InitAlloc>(source, rate, Free, InitAlloc);
                work.vekcv = [=] {
                    expectOk(Export(static_cast<const T*>(from.memory.get()), from.step, source,
                                    static_cast<T*>(to.memory.get()), to.step, result, state.get()),
                             nameOf<Export>());
                };
                if (peer != nullptr)
                    work.peer = peer(work.data);
                return work;
            }};
}
template <auto Export, auto InitAlloc, auto Free>
Row layerRow(float rate, Peer* peer = nullptr) {
    return layerRow<Export, InitAlloc, Free>(rate, peer, Export);
}

const Row kPyramidLayerRows[] = {
    layerRow<&vekiPyramidLayerDown_8u_C1R, &vekiPyramidLayerDownInitAlloc_8u_C1R, &vekiPyramidLayerDownFree_8u_C1R>(2),
    layerRow<&vekiPyramidLayerDown_8u_C1R, &vekiPyramidLayerDownInitAlloc_8u_C1R, &vekiPyramidLayerDownFree_8u_C1R>(
        1.5f),
    layerRow<&vekiPyramidLayerDown_8u_C3R, &vekiPyramidLayerDownInitAlloc_8u_C3R, &vekiPyramidLayerDownFree_8u_C3R>(2),
    layerRow<&vekiPyramidLayerDown_16u_C1R, &vekiPyramidLayerDownInitAlloc_16u_C1R, &vekiPyramidLayerDownFree_16u_C1R>(
        2),
    layerRow<&vekiPyramidLayerDown_16u_C1R, &vekiPyramidLayerDownInitAlloc_16u_C1R, &vekiPyramidLayerDownFree_16u_C1R>(
        1.5f),
    layerRow<&vekiPyramidLayerDown_16u_C3R, &vekiPyramidLayerDownInitAlloc_16u_C3R, &vekiPyramidLayerDownFree_16u_C3R>(
        2),
    layerRow<&vekiPyramidLayerDown_32f_C1R, &vekiPyramidLayerDownInitAlloc_32f_C1R, &vekiPyramidLayerDownFree_32f_C1R>(
        2, peer::halve),
    layerRow<&vekiPyramidLayerDown_32f_C1R, &vekiPyramidLayerDownInitAlloc_32f_C1R, &vekiPyramidLayerDownFree_32f_C1R>(
        1.5f),
    layerRow<&vekiPyramidLayerDown_32f_C3R, &vekiPyramidLayerDownInitAlloc_32f_C3R, &vekiPyramidLayerDownFree_32f_C3R>(
        2, peer::halve),
    layerRow<&vekiPyramidLayerUp_8u_C1R, &vekiPyramidLayerUpInitAlloc_8u_C1R, &vekiPyramidLayerUpFree_8u_C1R>(2),
    layerRow<&vekiPyramidLayerUp_8u_C1R, &vekiPyramidLayerUpInitAlloc_8u_C1R, &vekiPyramidLayerUpFree_8u_C1R>(1.5f),
    layerRow<&vekiPyramidLayerUp_8u_C3R, &vekiPyramidLayerUpInitAlloc_8u_C3R, &vekiPyramidLayerUpFree_8u_C3R>(2),
    layerRow<&vekiPyramidLayerUp_16u_C1R, &vekiPyramidLayerUpInitAlloc_16u_C1R, &vekiPyramidLayerUpFree_16u_C1R>(2),
    layerRow<&vekiPyramidLayerUp_16u_C1R, &vekiPyramidLayerUpInitAlloc_16u_C1R, &vekiPyramidLayerUpFree_16u_C1R>(1.5f),
    layerRow<&vekiPyramidLayerUp_16u_C3R, &vekiPyramidLayerUpInitAlloc_16u_C3R, &vekiPyramidLayerUpFree_16u_C3R>(2),
    layerRow<&vekiPyramidLayerUp_32f_C1R, &vekiPyramidLayerUpInitAlloc_32f_C1R, &vekiPyramidLayerUpFree_32f_C1R>(2),
    layerRow<&vekiPyramidLayerUp_32f_C1R, &vekiPyramidLayerUpInitAlloc_32f_C1R, &vekiPyramidLayerUpFree_32f_C1R>(1.5f),
    layerRow<&vekiPyramidLayerUp_32f_C3R, &vekiPyramidLayerUpInitAlloc_32f_C3R, &vekiPyramidLayerUpFree_32f_C3R>(2),
};
const Family pyramidLayers("PyramidLayers", kPyramidLayerRows);

}  // namespace
}  // namespace bench
