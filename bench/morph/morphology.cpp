#include "export_row.h"
#include "morph/element.h"
#include "morph/peer.h"

namespace bench {
namespace {

/** The row of an export with an element; prepare(work, from, to) gives the call. */
template <auto Export, typename T, typename Prepare>
Row elementRow(const SquareElement& element, Peer* peer, Prepare prepare) {
    return {std::string(nameOf<Export>()) + " " + element.name(), [=](RoiSize size) {
                constexpr int32_t kChannels = Layout(nameOf<Export>()).channels;
                const Operand from = Operand::make(Role::kSource, elementOf<T>(), kChannels, size);
                const Operand to = Operand::make(Role::kDestination, elementOf<T>(), kChannels, size);
                Work work{{size, parametersOf(element), {from, to}}, {}, {}};
                work.vekcv = prepare(work.data, element);
                if (peer != nullptr)
                    work.peer = peer(work.data);
                return work;
            }};
}

template <typename T>
T* pixelsOf(const Operand& operand) {
    return static_cast<T*>(operand.memory.get());
}

template <auto Export, typename T>
Row rankRow(int32_t side, Peer* peer, Status(VEKCV_CALL* query)(int32_t, RoiSize, int32_t*),
            Status(VEKCV_CALL*)(const T*, int32_t, T*, int32_t, RoiSize, RoiSize, ImagePoint, uint8_t*)) {
    return elementRow<Export, T>({Shape::kRectangle, side}, peer, [=](const Case& work, SquareElement) -> Call {
        int32_t bytes = 0;
        const RoiSize size = work.size, window{side, side};
        expectOk(query(size.width, window, &bytes), nameOf<Export>());
        const Operand from = work.operands[0], to = work.operands[1];
        const Operand buffer = Operand::make(Role::kBuffer, Element::k8u, 1, {bytes, 1});
        return [=] {
            expectOk(Export(pixelsOf<T>(from), from.step, pixelsOf<T>(to), to.step, size, window, {side / 2, side / 2},
                            pixelsOf<uint8_t>(buffer)),
                     nameOf<Export>());
        };
    });
}
template <auto Export, auto Query>
Row rankRow(int32_t side, Peer* peer) {
    return rankRow<Export>(side, peer, Query, Export);
}

/** A state that serves all numbers of threads that are measured. */
template <auto InitAlloc, typename State, typename Extent, typename Height>
std::shared_ptr<State> stateFor(Extent extent, SquareElement element, Status(VEKCV_CALL* release)(State*),
                                Status(VEKCV_CALL*)(State**, Extent, const Height*, RoiSize, ImagePoint)) {
    const std::vector<uint8_t> members = element.mask();
    const std::vector<Height> mask(members.begin(), members.end());
    int threads = 1;
    vekGetNumThreads(&threads);
    vekSetNumThreads(kMostThreads);
    State* state = nullptr;
    const int32_t side = element.side;
    expectOk(InitAlloc(&state, extent, mask.data(), {side, side}, {side / 2, side / 2}), nameOf<InitAlloc>());
    vekSetNumThreads(threads);
    return {state, release};
}

template <auto Export, auto InitAlloc, auto Free, typename State, typename T>
Row stateRow(SquareElement element, Peer* peer,
             Status(VEKCV_CALL*)(const T*, int32_t, T*, int32_t, RoiSize, int32_t, State*)) {
    return elementRow<Export, T>(element, peer, [=](const Case& work, SquareElement) -> Call {
        const Operand from = work.operands[0], to = work.operands[1];
        std::shared_ptr<State> state;
        if constexpr (requires { InitAlloc(nullptr, RoiSize{}, nullptr, RoiSize{}, ImagePoint{}); })
            state = stateFor<InitAlloc, State>(work.size, element, Free, InitAlloc);
        else
            state = stateFor<InitAlloc, State>(work.size.width, element, Free, InitAlloc);
        return [=, size = work.size] {
            expectOk(Export(pixelsOf<T>(from), from.step, pixelsOf<T>(to), to.step, size, BorderReplicate, state.get()),
                     nameOf<Export>());
        };
    });
}
template <auto Export, auto InitAlloc, auto Free>
Row stateRow(SquareElement element, Peer* peer = nullptr) {
    return stateRow<Export, InitAlloc, Free>(element, peer, Export);
}

constexpr SquareElement kBox3{Shape::kRectangle, 3}, kBox7{Shape::kRectangle, 7}, kBox15{Shape::kRectangle, 15};

const Row kRankRows[] = {
    rankRow<&vekiFilterMinBorderReplicate_8u_C1R, &vekiFilterMinGetBufferSize_8u_C1R>(3, peer::erode),
    rankRow<&vekiFilterMinBorderReplicate_8u_C1R, &vekiFilterMinGetBufferSize_8u_C1R>(5, peer::erode),
    rankRow<&vekiFilterMinBorderReplicate_8u_C1R, &vekiFilterMinGetBufferSize_8u_C1R>(7, peer::erode),
    rankRow<&vekiFilterMinBorderReplicate_8u_C1R, &vekiFilterMinGetBufferSize_8u_C1R>(9, peer::erode),
    rankRow<&vekiFilterMinBorderReplicate_8u_C1R, &vekiFilterMinGetBufferSize_8u_C1R>(15, peer::erode),
    rankRow<&vekiFilterMinBorderReplicate_8u_C1R, &vekiFilterMinGetBufferSize_8u_C1R>(31, peer::erode),
    rankRow<&vekiFilterMinBorderReplicate_8u_C1R, &vekiFilterMinGetBufferSize_8u_C1R>(63, peer::erode),
    rankRow<&vekiFilterMinBorderReplicate_8u_C1R, &vekiFilterMinGetBufferSize_8u_C1R>(127, peer::erode),
    rankRow<&vekiFilterMinBorderReplicate_8u_C3R, &vekiFilterMinGetBufferSize_8u_C3R>(3, peer::erode),
    rankRow<&vekiFilterMinBorderReplicate_8u_C3R, &vekiFilterMinGetBufferSize_8u_C3R>(15, peer::erode),
    rankRow<&vekiFilterMinBorderReplicate_8u_C4R, &vekiFilterMinGetBufferSize_8u_C4R>(3, peer::erode),
    rankRow<&vekiFilterMinBorderReplicate_8u_C4R, &vekiFilterMinGetBufferSize_8u_C4R>(15, peer::erode),
    rankRow<&vekiFilterMinBorderReplicate_32f_C1R, &vekiFilterMinGetBufferSize_32f_C1R>(3, peer::erode),
    rankRow<&vekiFilterMinBorderReplicate_32f_C1R, &vekiFilterMinGetBufferSize_32f_C1R>(15, peer::erode),
    rankRow<&vekiFilterMinBorderReplicate_32f_C3R, &vekiFilterMinGetBufferSize_32f_C3R>(3, peer::erode),
    rankRow<&vekiFilterMinBorderReplicate_32f_C3R, &vekiFilterMinGetBufferSize_32f_C3R>(15, peer::erode),
    rankRow<&vekiFilterMinBorderReplicate_32f_C4R, &vekiFilterMinGetBufferSize_32f_C4R>(3, peer::erode),
    rankRow<&vekiFilterMinBorderReplicate_32f_C4R, &vekiFilterMinGetBufferSize_32f_C4R>(15, peer::erode),
    rankRow<&vekiFilterMaxBorderReplicate_8u_C1R, &vekiFilterMaxGetBufferSize_8u_C1R>(5, peer::dilate),
    rankRow<&vekiFilterMaxBorderReplicate_8u_C3R, &vekiFilterMaxGetBufferSize_8u_C3R>(5, peer::dilate),
    rankRow<&vekiFilterMaxBorderReplicate_8u_C4R, &vekiFilterMaxGetBufferSize_8u_C4R>(5, peer::dilate),
    rankRow<&vekiFilterMaxBorderReplicate_32f_C1R, &vekiFilterMaxGetBufferSize_32f_C1R>(5, peer::dilate),
    rankRow<&vekiFilterMaxBorderReplicate_32f_C3R, &vekiFilterMaxGetBufferSize_32f_C3R>(5, peer::dilate),
    rankRow<&vekiFilterMaxBorderReplicate_32f_C4R, &vekiFilterMaxGetBufferSize_32f_C4R>(5, peer::dilate),
};
const Family rankFilters("RankFilters", kRankRows);

const Row kMorphologyRows[] = {
    stateRow<&vekiErodeBorderReplicate_8u_C1R, &vekiMorphologyInitAlloc_8u_C1R, &vekiMorphologyFree>(kBox3,
                                                                                                     peer::erode),
    stateRow<&vekiErodeBorderReplicate_8u_C1R, &vekiMorphologyInitAlloc_8u_C1R, &vekiMorphologyFree>(kBox15,
                                                                                                     peer::erode),
    stateRow<&vekiErodeBorderReplicate_8u_C1R, &vekiMorphologyInitAlloc_8u_C1R, &vekiMorphologyFree>(
        {Shape::kCross, 15}, peer::erode),
    stateRow<&vekiErodeBorderReplicate_8u_C1R, &vekiMorphologyInitAlloc_8u_C1R, &vekiMorphologyFree>(
        {Shape::kEllipse, 15}, peer::erode),
    stateRow<&vekiErodeBorderReplicate_8u_C1R, &vekiMorphologyInitAlloc_8u_C1R, &vekiMorphologyFree>(
        {Shape::kDiagonal, 15}, peer::erode),
    stateRow<&vekiErodeBorderReplicate_8u_C3R, &vekiMorphologyInitAlloc_8u_C3R, &vekiMorphologyFree>(kBox7,
                                                                                                     peer::erode),
    stateRow<&vekiErodeBorderReplicate_8u_C4R, &vekiMorphologyInitAlloc_8u_C4R, &vekiMorphologyFree>(kBox7,
                                                                                                     peer::erode),
    stateRow<&vekiErodeBorderReplicate_32f_C1R, &vekiMorphologyInitAlloc_32f_C1R, &vekiMorphologyFree>(kBox3,
                                                                                                       peer::erode),
    stateRow<&vekiErodeBorderReplicate_32f_C1R, &vekiMorphologyInitAlloc_32f_C1R, &vekiMorphologyFree>(kBox15,
                                                                                                       peer::erode),
    stateRow<&vekiErodeBorderReplicate_32f_C1R, &vekiMorphologyInitAlloc_32f_C1R, &vekiMorphologyFree>(
        {Shape::kCross, 15}, peer::erode),
    stateRow<&vekiErodeBorderReplicate_32f_C1R, &vekiMorphologyInitAlloc_32f_C1R, &vekiMorphologyFree>(
        {Shape::kEllipse, 15}, peer::erode),
    stateRow<&vekiErodeBorderReplicate_32f_C1R, &vekiMorphologyInitAlloc_32f_C1R, &vekiMorphologyFree>(
        {Shape::kDiagonal, 15}, peer::erode),
    stateRow<&vekiErodeBorderReplicate_32f_C3R, &vekiMorphologyInitAlloc_32f_C3R, &vekiMorphologyFree>(kBox7,
                                                                                                       peer::erode),
    stateRow<&vekiErodeBorderReplicate_32f_C4R, &vekiMorphologyInitAlloc_32f_C4R, &vekiMorphologyFree>(kBox7,
                                                                                                       peer::erode),
    stateRow<&vekiDilateBorderReplicate_8u_C1R, &vekiMorphologyInitAlloc_8u_C1R, &vekiMorphologyFree>(kBox7,
                                                                                                      peer::dilate),
    stateRow<&vekiDilateBorderReplicate_8u_C3R, &vekiMorphologyInitAlloc_8u_C3R, &vekiMorphologyFree>(kBox7,
                                                                                                      peer::dilate),
    stateRow<&vekiDilateBorderReplicate_8u_C3R, &vekiMorphologyInitAlloc_8u_C3R, &vekiMorphologyFree>(
        {Shape::kEllipse, 15}, peer::dilate),
    stateRow<&vekiDilateBorderReplicate_8u_C4R, &vekiMorphologyInitAlloc_8u_C4R, &vekiMorphologyFree>(kBox7,
                                                                                                      peer::dilate),
    stateRow<&vekiDilateBorderReplicate_32f_C1R, &vekiMorphologyInitAlloc_32f_C1R, &vekiMorphologyFree>(kBox7,
                                                                                                        peer::dilate),
    stateRow<&vekiDilateBorderReplicate_32f_C3R, &vekiMorphologyInitAlloc_32f_C3R, &vekiMorphologyFree>(kBox7,
                                                                                                        peer::dilate),
    stateRow<&vekiDilateBorderReplicate_32f_C3R, &vekiMorphologyInitAlloc_32f_C3R, &vekiMorphologyFree>(
        {Shape::kEllipse, 15}, peer::dilate),
    stateRow<&vekiDilateBorderReplicate_32f_C4R, &vekiMorphologyInitAlloc_32f_C4R, &vekiMorphologyFree>(kBox7,
                                                                                                        peer::dilate),
    stateRow<&vekiGrayDilateBorder_8u_C1R, &vekiGrayMorphologyInitAlloc_8u_C1R, &vekiGrayMorphologyFree_8u_C1R>(kBox7),
    stateRow<&vekiGrayDilateBorder_32f_C1R, &vekiGrayMorphologyInitAlloc_32f_C1R, &vekiGrayMorphologyFree_32f_C1R>(
        kBox7),
    stateRow<&vekiGrayErodeBorder_8u_C1R, &vekiGrayMorphologyInitAlloc_8u_C1R, &vekiGrayMorphologyFree_8u_C1R>(kBox7),
    stateRow<&vekiGrayErodeBorder_32f_C1R, &vekiGrayMorphologyInitAlloc_32f_C1R, &vekiGrayMorphologyFree_32f_C1R>(
        kBox7),
    stateRow<&vekiMorphOpenBorderReplicate_8u_C1R, &vekiMorphologyCompoundInitAlloc_8u_C1R,
             &vekiMorphologyCompoundFree>(kBox3, peer::morphOpen),
    stateRow<&vekiMorphOpenBorderReplicate_8u_C1R, &vekiMorphologyCompoundInitAlloc_8u_C1R,
             &vekiMorphologyCompoundFree>(kBox15, peer::morphOpen),
    stateRow<&vekiMorphOpenBorderReplicate_8u_C3R, &vekiMorphologyCompoundInitAlloc_8u_C3R,
             &vekiMorphologyCompoundFree>(kBox7, peer::morphOpen),
    stateRow<&vekiMorphOpenBorderReplicate_8u_C4R, &vekiMorphologyCompoundInitAlloc_8u_C4R,
             &vekiMorphologyCompoundFree>(kBox7, peer::morphOpen),
    stateRow<&vekiMorphOpenBorderReplicate_32f_C1R, &vekiMorphologyCompoundInitAlloc_32f_C1R,
             &vekiMorphologyCompoundFree>(kBox3, peer::morphOpen),
    stateRow<&vekiMorphOpenBorderReplicate_32f_C1R, &vekiMorphologyCompoundInitAlloc_32f_C1R,
             &vekiMorphologyCompoundFree>(kBox15, peer::morphOpen),
    stateRow<&vekiMorphOpenBorderReplicate_32f_C3R, &vekiMorphologyCompoundInitAlloc_32f_C3R,
             &vekiMorphologyCompoundFree>(kBox7, peer::morphOpen),
    stateRow<&vekiMorphOpenBorderReplicate_32f_C4R, &vekiMorphologyCompoundInitAlloc_32f_C4R,
             &vekiMorphologyCompoundFree>(kBox7, peer::morphOpen),
    stateRow<&vekiMorphCloseBorderReplicate_8u_C1R, &vekiMorphologyCompoundInitAlloc_8u_C1R,
             &vekiMorphologyCompoundFree>(kBox7, peer::morphClose),
    stateRow<&vekiMorphCloseBorderReplicate_8u_C3R, &vekiMorphologyCompoundInitAlloc_8u_C3R,
             &vekiMorphologyCompoundFree>(kBox7, peer::morphClose),
    stateRow<&vekiMorphCloseBorderReplicate_8u_C4R, &vekiMorphologyCompoundInitAlloc_8u_C4R,
             &vekiMorphologyCompoundFree>(kBox7, peer::morphClose),
    stateRow<&vekiMorphCloseBorderReplicate_32f_C1R, &vekiMorphologyCompoundInitAlloc_32f_C1R,
             &vekiMorphologyCompoundFree>(kBox7, peer::morphClose),
    stateRow<&vekiMorphCloseBorderReplicate_32f_C3R, &vekiMorphologyCompoundInitAlloc_32f_C3R,
             &vekiMorphologyCompoundFree>(kBox7, peer::morphClose),
    stateRow<&vekiMorphCloseBorderReplicate_32f_C4R, &vekiMorphologyCompoundInitAlloc_32f_C4R,
             &vekiMorphologyCompoundFree>(kBox7, peer::morphClose),
    stateRow<&vekiMorphTopHatBorderReplicate_8u_C1R, &vekiMorphologyCompoundInitAlloc_8u_C1R,
             &vekiMorphologyCompoundFree>(kBox7, peer::topHat),
    stateRow<&vekiMorphTopHatBorderReplicate_8u_C3R, &vekiMorphologyCompoundInitAlloc_8u_C3R,
             &vekiMorphologyCompoundFree>(kBox7, peer::topHat),
    stateRow<&vekiMorphTopHatBorderReplicate_8u_C4R, &vekiMorphologyCompoundInitAlloc_8u_C4R,
             &vekiMorphologyCompoundFree>(kBox7, peer::topHat),
    stateRow<&vekiMorphTopHatBorderReplicate_32f_C1R, &vekiMorphologyCompoundInitAlloc_32f_C1R,
             &vekiMorphologyCompoundFree>(kBox7, peer::topHat),
    stateRow<&vekiMorphTopHatBorderReplicate_32f_C3R, &vekiMorphologyCompoundInitAlloc_32f_C3R,
             &vekiMorphologyCompoundFree>(kBox7, peer::topHat),
    stateRow<&vekiMorphTopHatBorderReplicate_32f_C4R, &vekiMorphologyCompoundInitAlloc_32f_C4R,
             &vekiMorphologyCompoundFree>(kBox7, peer::topHat),
    stateRow<&vekiMorphBlackHatBorderReplicate_8u_C1R, &vekiMorphologyCompoundInitAlloc_8u_C1R,
             &vekiMorphologyCompoundFree>(kBox7, peer::blackHat),
    stateRow<&vekiMorphBlackHatBorderReplicate_8u_C3R, &vekiMorphologyCompoundInitAlloc_8u_C3R,
             &vekiMorphologyCompoundFree>(kBox7, peer::blackHat),
    stateRow<&vekiMorphBlackHatBorderReplicate_8u_C4R, &vekiMorphologyCompoundInitAlloc_8u_C4R,
             &vekiMorphologyCompoundFree>(kBox7, peer::blackHat),
    stateRow<&vekiMorphBlackHatBorderReplicate_32f_C1R, &vekiMorphologyCompoundInitAlloc_32f_C1R,
             &vekiMorphologyCompoundFree>(kBox7, peer::blackHat),
    stateRow<&vekiMorphBlackHatBorderReplicate_32f_C3R, &vekiMorphologyCompoundInitAlloc_32f_C3R,
             &vekiMorphologyCompoundFree>(kBox7, peer::blackHat),
    stateRow<&vekiMorphBlackHatBorderReplicate_32f_C4R, &vekiMorphologyCompoundInitAlloc_32f_C4R,
             &vekiMorphologyCompoundFree>(kBox7, peer::blackHat),
    stateRow<&vekiMorphGradientBorderReplicate_8u_C1R, &vekiMorphologyCompoundInitAlloc_8u_C1R,
             &vekiMorphologyCompoundFree>(kBox7, peer::morphGradient),
    stateRow<&vekiMorphGradientBorderReplicate_8u_C3R, &vekiMorphologyCompoundInitAlloc_8u_C3R,
             &vekiMorphologyCompoundFree>(kBox7, peer::morphGradient),
    stateRow<&vekiMorphGradientBorderReplicate_8u_C4R, &vekiMorphologyCompoundInitAlloc_8u_C4R,
             &vekiMorphologyCompoundFree>(kBox7, peer::morphGradient),
    stateRow<&vekiMorphGradientBorderReplicate_32f_C1R, &vekiMorphologyCompoundInitAlloc_32f_C1R,
             &vekiMorphologyCompoundFree>(kBox7, peer::morphGradient),
    stateRow<&vekiMorphGradientBorderReplicate_32f_C3R, &vekiMorphologyCompoundInitAlloc_32f_C3R,
             &vekiMorphologyCompoundFree>(kBox7, peer::morphGradient),
    stateRow<&vekiMorphGradientBorderReplicate_32f_C4R, &vekiMorphologyCompoundInitAlloc_32f_C4R,
             &vekiMorphologyCompoundFree>(kBox7, peer::morphGradient),
};
const Family morphology("Morphology", kMorphologyRows);

}  // namespace
}  // namespace bench
