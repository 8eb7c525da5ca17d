#include <algorithm>

#include "export_row.h"

namespace bench {
namespace {

constexpr int32_t kEntries = 16;

/** Blocks two pixels apart, as of a camera with half of the resolution. The parameter is the size of the blocks. */
void placeBlocks(const Case& work) {
    const auto size = static_cast<int32_t>(work.parameters[0]);
    auto* offset = pointerTo<uint32_t>(work.operands[1]);
    auto* entry = pointerTo<uint16_t>(work.operands[2]);
    const RoiSize samples = work.operands[1].size;
    for (int32_t y = 0; y < samples.height; ++y)
        for (int32_t x = 0; x < samples.width; ++x) {
            const int32_t row = std::min(2 * y, work.size.height - size);
            *offset++ = static_cast<uint32_t>(row * work.size.width + std::min(2 * x, work.size.width - size));
            *entry++ %= kEntries;
        }
}

/** The work of a row: the image, the offsets and the entries; then what the operation has else. */
Work workOf(RoiSize size, Role role, int32_t sizeOfBlocks) {
    const RoiSize samples{size.width / 2, size.height / 2};
    return {{size,
             {static_cast<double>(sizeOfBlocks)},
             {Operand::make(role, Element::k32f, 1, size), Operand::make(Role::kSource, Element::k32s, 1, samples),
              Operand::make(Role::kSource, Element::k16u, 1, samples)},
             placeBlocks},
            {},
            {}};
}

template <int32_t kSize>
std::shared_ptr<SrhnState> stateOfBlocks() {
    const std::vector<float> table(kEntries * kSize * kSize, 1.0f / (kSize * kSize));
    SrhnState* state = nullptr;
    expectOk((kSize == 2 ? vekiSRHNInitAlloc_PSF2x2 : vekiSRHNInitAlloc_PSF3x3)(&state, table.data(), kEntries),
             "vekiSRHNInitAlloc");
    return {state, vekiSRHNFree_PSF2x2};
}

template <auto Export, int32_t kSize, typename T>
Row residualRow() {
    return {std::string(nameOf<Export>()), [](RoiSize size) {
                Work work = workOf(size, Role::kSource, kSize);
                const RoiSize samples = work.data.operands[1].size;
                work.data.operands.push_back(Operand::make(Role::kSource, elementOf<T>(), 1, samples));
                work.data.operands.push_back(Operand::make(Role::kDestination, Element::k32f, 1, samples));
                work.vekcv = [=, operands = work.data.operands, state = stateOfBlocks<kSize>()] {
                    expectOk(Export(pointerTo<float>(operands[0]), operands[0].step, pointerTo<T>(operands[3]),
                                    pointerTo<uint32_t>(operands[1]), pointerTo<uint16_t>(operands[2]),
                                    pointerTo<float>(operands[4]), samples.width * samples.height, state.get()),
                             nameOf<Export>());
                };
                return work;
            }};
}

template <auto Export, int32_t kSize>
Row gradientRow() {
    return {std::string(nameOf<Export>()), [](RoiSize size) {
                Work work = workOf(size, Role::kInPlace, kSize);
                const RoiSize samples = work.data.operands[1].size;
                work.data.operands.push_back(Operand::make(Role::kSource, Element::k32f, 1, samples));
                work.data.operands.push_back(Operand::make(Role::kSource, Element::k8u, 1, samples));
                work.data.operands.push_back(Operand::make(Role::kSource, Element::k32f, 1, {256, 1}));
                work.vekcv = [=, operands = work.data.operands, state = stateOfBlocks<kSize>()] {
                    expectOk(Export(pointerTo<float>(operands[0]), operands[0].step, pointerTo<uint32_t>(operands[1]),
                                    pointerTo<uint16_t>(operands[2]), pointerTo<float>(operands[3]),
                                    pointerTo<uint8_t>(operands[4]), samples.width * samples.height,
                                    pointerTo<float>(operands[5]), state.get()),
                             nameOf<Export>());
                };
                return work;
            }};
}

// The peer has nothing like it.
const Row kRows[] = {
    residualRow<&vekiSRHNCalcResidual_PSF2x2_8u32f_C1R, 2, uint8_t>(),
    residualRow<&vekiSRHNCalcResidual_PSF2x2_16u32f_C1R, 2, uint16_t>(),
    residualRow<&vekiSRHNCalcResidual_PSF3x3_8u32f_C1R, 3, uint8_t>(),
    residualRow<&vekiSRHNCalcResidual_PSF3x3_16u32f_C1R, 3, uint16_t>(),
    gradientRow<&vekiSRHNUpdateGradient_PSF2x2_32f_C1R, 2>(),
    gradientRow<&vekiSRHNUpdateGradient_PSF3x3_32f_C1R, 3>(),
};
const Family superResolution("SuperResolution", kRows);

}  // namespace
}  // namespace bench
