#include "export_row.h"
#include "feature/scene.h"
#include "segment/peer.h"

namespace bench {
namespace {

/** What is brighter than the mean of a picture: patches of all sizes. */
void fillPatches(const Case& work) {
    paintScene<uint8_t>(work.operands[0]);
    auto* const pixels = pointerTo<uint8_t>(work.operands[0]);
    std::transform(pixels, pixels + work.operands[0].bytes(), pixels,
                   [](uint8_t value) { return value > 100 ? uint8_t{255} : uint8_t{0}; });
}

/** A few pixels that are 0, some hundred pixels from each other. */
void fillPoints(const Case& work) {
    auto* const pixels = pointerTo<uint8_t>(work.operands[0]);
    const size_t count = work.operands[0].bytes();
    std::fill_n(pixels, count, uint8_t{255});
    std::mt19937 random(2);
    for (size_t i = 0; i <= count / 20000; ++i)
        pixels[random() % count] = 0;
}

/** Parameters that are the norm and the size of the mask. The peer has integers of 16 bits behind the point. */
Case distanceCase(RoiSize size, int32_t norm, int32_t maskSize, void (*content)(const Case&)) {
    return {size, {static_cast<double>(norm), static_cast<double>(maskSize)}, {}, content, 1e-4};
}

template <typename T, typename M, typename... Images>
Call distanceCall(Status(VEKCV_CALL* transform)(Images...), const Case& work, const M* metrics, std::string_view name) {
    const Operand source = work.operands[0], out = work.operands.back();
    const std::vector<M> weights(metrics, metrics + 3);
    return [=, size = work.size] {
        if constexpr (sizeof...(Images) == 4)
            expectOk(transform(pointerTo<T>(out), out.step, size, weights.data()), name);
        else
            expectOk(
                transform(pointerTo<uint8_t>(source), source.step, pointerTo<T>(out), out.step, size, weights.data()),
                name);
    };
}

template <auto Export, typename T, typename M, auto Mask>
Row chamferRow(const char* suffix, int32_t norm, void (*content)(const Case&), Peer* peer = nullptr) {
    constexpr std::string_view kName = nameOf<Export>();
    constexpr bool kIsInPlace = Layout(kName).inPlace;
    constexpr int32_t kMaskSize = kName.find("5x5") == kName.npos ? 3 : 5;
    return {std::string(kName) + suffix, [=](RoiSize size) {
                Work work{distanceCase(size, norm, kMaskSize, content), {}, {}};
                if constexpr (!kIsInPlace)
                    work.data.operands.push_back(Operand::make(Role::kSource, Element::k8u, 1, size));
                work.data.operands.push_back(
                    Operand::make(kIsInPlace ? Role::kInPlace : Role::kDestination, elementOf<T>(), 1, size));
                M metrics[3] = {};
                expectOk(Mask(kMaskSize, norm, metrics), nameOf<Mask>());
                work.vekcv = distanceCall<T>(Export, work.data, metrics, kName);
                if (peer != nullptr)
                    work.peer = peer(work.data);
                return work;
            }};
}

template <auto Export, typename T>
Row integerRow(const char* suffix, int32_t norm, Peer* peer = nullptr) {
    return chamferRow<Export, T, int32_t, &vekiGetDistanceTransformMask_32s>(suffix, norm, fillPatches, peer);
}
template <auto Export>
Row floatRow(const char* suffix, int32_t norm, void (*content)(const Case&)) {
    return chamferRow<Export, float, float, &vekiGetDistanceTransformMask_32f>(suffix, norm, content,
                                                                               peer::distanceTransform);
}

Row exactRow(const char* suffix, void (*content)(const Case&)) {
    Row plain = row<&vekiTrueDistanceTransform_8u32f_C1R>(
        peer::distanceTransform, Setup{.parameters = {NormL2, 0},
                                       .content = content,
                                       .bufferBytes = bufferBytes<&vekiTrueDistanceTransformGetBufferSize_8u32f_C1R>});
    return {plain.name + suffix, plain.prepare};
}

const Row kDistanceRows[] = {
    integerRow<&vekiDistanceTransform_3x3_8u_C1R, uint8_t>(" L1", NormL1, peer::distanceTransform),
    integerRow<&vekiDistanceTransform_3x3_8u_C1IR, uint8_t>("", NormL1),
    integerRow<&vekiDistanceTransform_3x3_8u16u_C1R, uint16_t>("", NormL2),
    floatRow<&vekiDistanceTransform_3x3_8u32f_C1R>(" Inf", NormInf, fillPatches),
    floatRow<&vekiDistanceTransform_3x3_8u32f_C1R>(" L1", NormL1, fillPatches),
    floatRow<&vekiDistanceTransform_3x3_8u32f_C1R>(" L2", NormL2, fillPatches),
    floatRow<&vekiDistanceTransform_3x3_8u32f_C1R>(" L2 sparse", NormL2, fillPoints),
    integerRow<&vekiDistanceTransform_5x5_8u_C1R, uint8_t>("", NormL2),
    integerRow<&vekiDistanceTransform_5x5_8u_C1IR, uint8_t>("", NormL2),
    integerRow<&vekiDistanceTransform_5x5_8u16u_C1R, uint16_t>("", NormL2),
    floatRow<&vekiDistanceTransform_5x5_8u32f_C1R>(" Inf", NormInf, fillPatches),
    floatRow<&vekiDistanceTransform_5x5_8u32f_C1R>(" L1", NormL1, fillPatches),
    floatRow<&vekiDistanceTransform_5x5_8u32f_C1R>(" L2", NormL2, fillPatches),
    floatRow<&vekiDistanceTransform_5x5_8u32f_C1R>(" L2 sparse", NormL2, fillPoints),
};
const Family distances("DistanceTransform", kDistanceRows);

const Row kExactRows[] = {exactRow("", fillPatches), exactRow(" sparse", fillPoints)};
const Family exactDistances("TrueDistanceTransform", kExactRows);

}  // namespace
}  // namespace bench
