#include <algorithm>
#include <random>
#include <vector>

#include "export_row.h"
#include "feature/peer.h"

namespace bench {
namespace {

/** A scene of overlapping bright and dark rectangles of all sizes, on a slope with some noise; repeated as tiles. */
template <typename T>
void paintScene(const Operand& picture) {
    constexpr int32_t kTile = 512, kRectangles = 300;
    std::mt19937 random(1);
    std::vector<T> tile(kTile * kTile, T{0});
    for (int32_t i = 0; i < kRectangles; ++i) {
        const auto below = [&](int32_t end) { return static_cast<int32_t>(random() % static_cast<unsigned>(end)); };
        const int32_t side = 4 + 100 * below(100) / (1 + below(100)) % 200, left = below(kTile), top = below(kTile);
        const int32_t grey = below(200), slope = below(5) - 2;
        for (int32_t y = top; y < std::min(top + side, kTile); ++y)
            for (int32_t x = left; x < std::min(left + side, kTile); ++x)
                tile[static_cast<size_t>(y * kTile + x)] =
                    static_cast<T>(std::clamp(grey + slope * (x - left + y - top) / 4 + below(9), 0, 255));
    }
    T* const pixels = static_cast<T*>(picture.memory.get());
    for (ptrdiff_t y = 0; y < picture.size.height; ++y)
        for (ptrdiff_t x = 0; x < picture.size.width; x += kTile)
            std::copy_n(tile.data() + y % kTile * kTile, std::min<ptrdiff_t>(kTile, picture.size.width - x),
                        pixels + y * picture.size.width + x);
}

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
