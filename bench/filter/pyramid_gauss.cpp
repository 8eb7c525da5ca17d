#include "export_row.h"
#include "filter/peer.h"

namespace bench {
namespace {

RoiSize halfOf(RoiSize size) {
    return {(size.width + 1) / 2, (size.height + 1) / 2};
}

template <auto Export, auto Query, typename T>
Work pyramidWork(RoiSize from, RoiSize to, Peer* peer,
                 Status(VEKCV_CALL*)(const T*, int32_t, T*, int32_t, RoiSize, uint8_t*)) {
    constexpr int32_t kChannels = Layout(nameOf<Export>()).channels;
    constexpr int32_t kByteType = 1;  // the buffer is the same for all types
    const Operand source = Operand::make(Role::kSource, elementOf<T>(), kChannels, from);
    const Operand out = Operand::make(Role::kDestination, elementOf<T>(), kChannels, to);
    int32_t bytes = 0;
    expectOk(Query(from.width, kByteType, kChannels, &bytes), nameOf<Export>());
    const Operand buffer = Operand::make(Role::kBuffer, Element::k8u, 1, {bytes, 1});
    Work work{{from, {}, {source, out}}, {}, {}};
    work.vekcv = [=] {
        expectOk(Export(static_cast<const T*>(source.memory.get()), source.step, static_cast<T*>(out.memory.get()),
                        out.step, from, static_cast<uint8_t*>(buffer.memory.get())),
                 nameOf<Export>());
    };
    if (peer != nullptr)
        work.peer = peer(work.data);
    return work;
}

template <auto Export>
Row down(Peer* peer = nullptr) {
    return {std::string(nameOf<Export>()), [=](RoiSize size) {
                return pyramidWork<Export, &vekiPyrDownGetBufSize_Gauss5x5>(size, halfOf(size), peer, Export);
            }};
}

/** The result has about the size that is measured. */
template <auto Export>
Row up(Peer* peer = nullptr) {
    return {std::string(nameOf<Export>()), [=](RoiSize size) {
                const RoiSize half = halfOf(size);
                return pyramidWork<Export, &vekiPyrUpGetBufSize_Gauss5x5>(half, {2 * half.width, 2 * half.height}, peer,
                                                                          Export);
            }};
}

const Row kRows[] = {
    down<&vekiPyrDown_Gauss5x5_8u_C1R>(peer::pyrDown),
    down<&vekiPyrDown_Gauss5x5_8u_C3R>(peer::pyrDown),
    down<&vekiPyrDown_Gauss5x5_8s_C1R>(),
    down<&vekiPyrDown_Gauss5x5_8s_C3R>(),
    down<&vekiPyrDown_Gauss5x5_32f_C1R>(peer::pyrDown),
    down<&vekiPyrDown_Gauss5x5_32f_C3R>(peer::pyrDown),
    up<&vekiPyrUp_Gauss5x5_8u_C1R>(peer::pyrUp),
    up<&vekiPyrUp_Gauss5x5_8u_C3R>(peer::pyrUp),
    up<&vekiPyrUp_Gauss5x5_8s_C1R>(),
    up<&vekiPyrUp_Gauss5x5_8s_C3R>(),
    up<&vekiPyrUp_Gauss5x5_32f_C1R>(peer::pyrUp),
    up<&vekiPyrUp_Gauss5x5_32f_C3R>(peer::pyrUp),
};
const Family gaussPyramid("GaussPyramid", kRows);

}  // namespace
}  // namespace bench
