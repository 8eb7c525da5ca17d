#include <cstring>

#include "export_row.h"

namespace bench {
namespace {

// The peer has no motion history. Half of the still pixels, whose history is random, are forgotten.
const Setup kMotion{.parameters = {256, 128}, .content = [](const Case& work) {
                        const Operand still = Operand::make(Role::kMask, Element::k8u, 1, work.size);
                        still.fill(3);
                        const Operand& silhouette = work.operands[0];
                        const size_t bytes = silhouette.bytes() / silhouette.elements();
                        for (size_t i = 0; i < silhouette.elements(); ++i)
                            if (pointerTo<uint8_t>(still)[i] != 0)
                                std::memset(pointerTo<uint8_t>(silhouette) + i * bytes, 0, bytes);
                    }};
const Row kRows[] = {
    row<&vekiUpdateMotionHistory_8u32f_C1IR>(nullptr, kMotion),
    row<&vekiUpdateMotionHistory_16u32f_C1IR>(nullptr, kMotion),
    row<&vekiUpdateMotionHistory_32f_C1IR>(nullptr, kMotion),
};
const Family motionHistory("UpdateMotionHistory", kRows);

}  // namespace
}  // namespace bench
