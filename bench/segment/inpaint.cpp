#include <algorithm>
#include <cmath>
#include <random>

#include "export_row.h"
#include "segment/peer.h"

namespace bench {
namespace {

/**
 * A mask of scratches 1 to 3 pixels wide, as many as cover about a twentieth of what is drawn. The time of the peer
 * grows with their square: no more of a picture than this has any.
 */
void drawScratches(const Operand& mask) {
    const RoiSize drawn{std::min(mask.size.width, 640), std::min(mask.size.height, 480)};
    std::fill_n(pointerTo<uint8_t>(mask), mask.bytes(), uint8_t{0});
    std::mt19937 random(1);
    const auto below = [&](int32_t end) { return static_cast<int32_t>(random() % static_cast<unsigned>(end)); };
    int64_t left = int64_t{drawn.width} * drawn.height / 20;
    while (left > 0) {
        const double angle = below(628) / 100.0;
        const int32_t width = 1 + below(3), length = 8 + below(below(8) == 0 ? 300 : 30);
        const int32_t x = below(drawn.width), y = below(drawn.height);
        for (int32_t i = 0; i < length * width; ++i) {
            const auto u = x + static_cast<int32_t>(i / width * std::cos(angle)) + i % width;
            const auto v = y + static_cast<int32_t>(i / width * std::sin(angle));
            if (u >= 0 && v >= 0 && u < drawn.width && v < drawn.height)
                pointerTo<uint8_t>(mask)[ptrdiff_t{v} * mask.step + u] = 255;
        }
        left -= int64_t{length} * width;
    }
}

/** Waves: what is restored differs little between algorithms. */
void drawWaves(const Operand& picture) {
    for (ptrdiff_t y = 0; y < picture.size.height; ++y)
        for (ptrdiff_t x = 0; x < picture.step; ++x)
            pointerTo<uint8_t>(picture)[y * picture.step + x] =
                static_cast<uint8_t>(128 + 60 * std::sin(static_cast<double>(x / picture.channels) / 17) +
                                     50 * std::cos(static_cast<double>(y) / 23 + static_cast<double>(x % 3)));
}

const Row kMarchingRows[] = {
    row<&vekiFastMarching_8u32f_C1R>(nullptr,
                                     Setup{.parameters = {5},
                                           .content = [](const Case& work) { drawScratches(work.operands[0]); },
                                           .bufferBytes = bufferBytes<&vekiFastMarchingGetBufferSize_8u32f_C1R>}),
};
const Family marching("FastMarching", kMarchingRows);

/** All steps from a mask and a picture to the result, as the peer takes them. */
template <auto InitAlloc, auto Restore, auto Free>
Row inpaintRow(const char* suffix, int32_t method, float radius) {
    constexpr Layout kLayout(nameOf<Restore>());
    return {std::string(nameOf<Restore>()) + suffix, [=](RoiSize size) {
                const Operand source = Operand::make(Role::kSource, Element::k8u, kLayout.channels, size);
                const Operand out = Operand::make(Role::kDestination, Element::k8u, kLayout.channels, size);
                const Operand mask = Operand::make(Role::kMask, Element::k8u, 1, size);
                const Operand distance = Operand::make(Role::kBuffer, Element::k32f, 1, size);
                const Operand buffer = Operand::make(Role::kBuffer, Element::k8u, 1,
                                                     {bufferBytes<&vekiFastMarchingGetBufferSize_8u32f_C1R>(size), 1});
                Work work{{size,
                           {static_cast<double>(method), radius},
                           {source, out, mask, distance, buffer},
                           [](const Case& data) {
                               drawWaves(data.operands[0]);
                               drawScratches(data.operands[2]);
                           },
                           0.1},
                          {},
                          {}};
                work.vekcv = [=] {
                    expectOk(vekiFastMarching_8u32f_C1R(pointerTo<uint8_t>(mask), mask.step, pointerTo<float>(distance),
                                                        distance.step, size, radius, pointerTo<uint8_t>(buffer)),
                             "vekiFastMarching");
                    InpaintState* state = nullptr;
                    expectOk(InitAlloc(&state, pointerTo<float>(distance), distance.step, pointerTo<uint8_t>(mask),
                                       mask.step, size, radius, method),
                             nameOf<InitAlloc>());
                    expectOk(Restore(pointerTo<uint8_t>(source), source.step, pointerTo<uint8_t>(out), out.step, size,
                                     state),
                             nameOf<Restore>());
                    Free(state);
                };
                if (peer::inpaint != nullptr)
                    work.peer = peer::inpaint(work.data);
                return work;
            }};
}

constexpr auto gray = inpaintRow<&vekiInpaintInitAlloc_8u_C1R, &vekiInpaint_8u_C1R, &vekiInpaintFree_8u_C1R>;
constexpr auto colour = inpaintRow<&vekiInpaintInitAlloc_8u_C3R, &vekiInpaint_8u_C3R, &vekiInpaintFree_8u_C3R>;

const Row kInpaintRows[] = {
    gray(" method 0, radius 3", 0, 3),
    gray(" method 1, radius 5", 1, 5),
    colour(" method 0, radius 5", 0, 5),
    colour(" method 1, radius 3", 1, 3),
};
const Family inpaint("Inpaint", kInpaintRows);

}  // namespace
}  // namespace bench
