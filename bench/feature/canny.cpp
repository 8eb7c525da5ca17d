#include "export_row.h"
#include "feature/peer.h"
#include "feature/scene.h"

namespace bench {
namespace {

/** Makes the first two images of a case the derivatives of a scene. */
template <typename Pixel, typename T, auto AlongX, auto AlongY, auto AlongXBytes>
void fillDerivatives(const Case& work) {
    const RoiSize size = work.size;
    int32_t bytes = 0;
    AlongXBytes(size, MaskSize3x3, &bytes);
    const Operand picture = Operand::make(Role::kSource, elementOf<Pixel>(), 1, size);
    const Operand buffer = Operand::make(Role::kBuffer, Element::k8u, 1, {2 * bytes, 1});
    paintScene<Pixel>(picture);
    const auto derive = [&](auto filter, const Operand& out) {
        if (filter(static_cast<const Pixel*>(picture.memory.get()), picture.step, static_cast<T*>(out.memory.get()),
                   out.step, size, MaskSize3x3, BorderReplicate, 0,
                   static_cast<uint8_t*>(buffer.memory.get())) != StatusOk)
            fail("a derivative fails");
    };
    derive(AlongX, work.operands[0]);
    derive(AlongY, work.operands[1]);
}

const Row kCannyRows[] = {
    row<&vekiCanny_16s8u_C1R>(
        peer::canny,
        Setup{
            .parameters = {100, 200},
            .content =
                fillDerivatives<uint8_t, int16_t, &vekiFilterSobelNegVertBorder_8u16s_C1R,
                                &vekiFilterSobelHorizBorder_8u16s_C1R, &vekiFilterSobelNegVertGetBufferSize_8u16s_C1R>,
            .bufferBytes = bufferBytes<&vekiCannyGetSize>}),
    row<&vekiCanny_32f8u_C1R>(
        nullptr,
        Setup{.parameters = {100, 200},
              .content =
                  fillDerivatives<float, float, &vekiFilterSobelNegVertBorder_32f_C1R,
                                  &vekiFilterSobelHorizBorder_32f_C1R, &vekiFilterSobelNegVertGetBufferSize_32f_C1R>,
              .bufferBytes = bufferBytes<&vekiCannyGetSize>}),
};
const Family canny("Canny", kCannyRows);

}  // namespace
}  // namespace bench
