#include <limits>

#include "export_row.h"
#include "feature/peer.h"
#include "feature/scene.h"

namespace bench {
namespace {

constexpr int32_t kSobel = 0, kAperture = 3, kWindow = 3;

template <typename T>
T* pixelsOf(const Operand& operand) {
    return static_cast<T*>(operand.memory.get());
}

template <typename T>
void paintSource(const Case& work) {
    paintScene<T>(work.operands[0]);
}

/** A measure of a scene, with kFloats for each pixel. */
template <auto Export, auto Query, int32_t kFloats, typename T>
Work measureWork(RoiSize size, Peer* peer,
                 Status(VEKCV_CALL*)(const T*, int32_t, float*, int32_t, RoiSize, int32_t, int32_t, int32_t,
                                     uint8_t*)) {
    const Operand source = Operand::make(Role::kSource, elementOf<T>(), 1, size);
    const Operand out = Operand::make(Role::kDestination, Element::k32f, kFloats, size);
    const int32_t bytes = bufferBytes<Query, kAperture, kWindow>(size);
    const Operand buffer = Operand::make(Role::kBuffer, Element::k8u, 1, {bytes, 1});
    constexpr double kAny =
        std::numeric_limits<double>::infinity();  // the peer scales and orders its results otherwise
    Work work{{size, {kAperture, kWindow}, {source, out}, paintSource<T>, kAny}, {}, {}};
    work.vekcv = [=] {
        expectOk(Export(pixelsOf<const T>(source), source.step, pixelsOf<float>(out), out.step, size, kSobel, kAperture,
                        kWindow, pixelsOf<uint8_t>(buffer)),
                 nameOf<Export>());
    };
    if (peer != nullptr)
        work.peer = peer(work.data);
    return work;
}
template <auto Export, auto Query, int32_t kFloats = 1>
Row measureRow(Peer* peer) {
    return {std::string(nameOf<Export>()),
            [=](RoiSize size) { return measureWork<Export, Query, kFloats>(size, peer, Export); }};
}

/** The peaks of a scene, at most one for each pixel. */
template <auto Export, typename T>
Work peakWork(RoiSize size, Peer* peer,
              Status(VEKCV_CALL*)(const T*, int32_t, RoiSize, T, ImagePoint*, int32_t, int32_t*, int32_t, int32_t,
                                  uint8_t*)) {
    constexpr int32_t kAllNeighbours = 1, kBorder = 1;
    constexpr T kThreshold = 100;
    const Operand source = Operand::make(Role::kSource, elementOf<T>(), 1, size);
    int32_t bytes = 0;
    expectOk(vekiFindPeaks3x3GetBufferSize_32f_C1R(size.width, &bytes), nameOf<Export>());
    const Operand buffer = Operand::make(Role::kBuffer, Element::k8u, 1, {bytes, 1});
    const int32_t most = size.width * size.height;
    const auto peaks = std::make_shared<std::vector<ImagePoint>>(static_cast<size_t>(most));
    Work work{.data = {size, {kThreshold}, {source}, paintSource<T>}};
    work.vekcv = [=] {
        int32_t count = 0;
        expectOk(Export(pixelsOf<const T>(source), source.step, size, kThreshold, peaks->data(), most, &count,
                        kAllNeighbours, kBorder, pixelsOf<uint8_t>(buffer)),
                 nameOf<Export>());
    };
    if (peer != nullptr)
        work.peer = peer(work.data);
    return work;
}
template <auto Export>
Row peakRow(Peer* peer = nullptr) {
    return {std::string(nameOf<Export>()), [=](RoiSize size) { return peakWork<Export>(size, peer, Export); }};
}

const Row kRows[] = {
    measureRow<&vekiMinEigenVal_8u32f_C1R, &vekiMinEigenValGetBufferSize_8u32f_C1R>(peer::minEigenVal),
    measureRow<&vekiMinEigenVal_32f_C1R, &vekiMinEigenValGetBufferSize_32f_C1R>(peer::minEigenVal),
    measureRow<&vekiEigenValsVecs_8u32f_C1R, &vekiEigenValsVecsGetBufferSize_8u32f_C1R, 6>(peer::eigenValsVecs),
    measureRow<&vekiEigenValsVecs_32f_C1R, &vekiEigenValsVecsGetBufferSize_32f_C1R, 6>(peer::eigenValsVecs),
    peakRow<&vekiFindPeaks3x3_32f_C1R>(peer::findPeaks),
    peakRow<&vekiFindPeaks3x3_32s_C1R>(),
};
const Family corners("Corners", kRows);

}  // namespace
}  // namespace bench
