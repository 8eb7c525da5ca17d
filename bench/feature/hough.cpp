#include "export_row.h"
#include "feature/peer.h"
#include "feature/scene.h"

namespace bench {
namespace {

constexpr float kDeltaRho = 1, kDeltaTheta = 0.017453292F;
constexpr int32_t kMostLines = 500;

/** The votes of a picture take time with its points: no more of it than this has any. */
RoiSize drawnPart(RoiSize size) {
    return {std::min(size.width, 1024), std::min(size.height, 1024)};
}

/** Edges of a picture of bytes, in an image whose other pixels are 0. */
void findEdges(const Operand& picture, float low, float high, const Operand& out) {
    const RoiSize size = picture.size;
    const Operand dx = Operand::make(Role::kSource, Element::k16s, 1, size);
    const Operand dy = Operand::make(Role::kSource, Element::k16s, 1, size);
    int32_t bytes = 0, cannyBytes = 0;
    expectOk(vekiFilterSobelNegVertGetBufferSize_8u16s_C1R(size, MaskSize3x3, &bytes), "the query of Sobel");
    expectOk(vekiCannyGetSize(size, &cannyBytes), "the query of Canny");
    const Operand buffer = Operand::make(Role::kBuffer, Element::k8u, 1, {std::max(2 * bytes, cannyBytes), 1});
    const auto derive = [&](auto filter, const Operand& derivative) {
        expectOk(filter(pointerTo<uint8_t>(picture), picture.step, pointerTo<int16_t>(derivative), derivative.step,
                        size, MaskSize3x3, BorderReplicate, 0, pointerTo<uint8_t>(buffer)),
                 "a derivative");
    };
    derive(vekiFilterSobelNegVertBorder_8u16s_C1R, dx);
    derive(vekiFilterSobelHorizBorder_8u16s_C1R, dy);
    std::fill_n(pointerTo<uint8_t>(out), out.bytes(), uint8_t{0});
    expectOk(vekiCanny_16s8u_C1R(pointerTo<int16_t>(dx), dx.step, pointerTo<int16_t>(dy), dy.step,
                                 pointerTo<uint8_t>(out), out.step, size, low, high, pointerTo<uint8_t>(buffer)),
             "Canny");
}

/** Straight edges of many lengths, as of buildings. */
void fillStraightEdges(const Case& work) {
    const Operand picture = Operand::make(Role::kSource, Element::k8u, 1, drawnPart(work.size));
    paintScene<uint8_t>(picture);
    findEdges(picture, 100, 200, work.operands[0]);
}

/** Short bent edges, as of leaves: of noise that is smoothed. */
void fillBentEdges(const Case& work) {
    const RoiSize size = drawnPart(work.size);
    const Operand noise = Operand::make(Role::kSource, Element::k32f, 1, size);
    const Operand smooth = Operand::make(Role::kDestination, Element::k32f, 1, size);
    const Operand picture = Operand::make(Role::kSource, Element::k8u, 1, size);
    noise.fill(1);
    constexpr int32_t kKernelSize = 13;
    int32_t bytes = 0;
    expectOk(vekiFilterGaussGetBufferSize_32f_C1R(size, kKernelSize, &bytes), "the query of the Gaussian filter");
    const Operand buffer = Operand::make(Role::kBuffer, Element::k8u, 1, {bytes, 1});
    expectOk(vekiFilterGaussBorder_32f_C1R(pointerTo<float>(noise), noise.step, pointerTo<float>(smooth), smooth.step,
                                           size, kKernelSize, 2, BorderReplicate, 0, pointerTo<uint8_t>(buffer)),
             "the Gaussian filter");
    // What is left of the noise is within 30 of its mean, which is 128.
    std::transform(pointerTo<float>(smooth), pointerTo<float>(smooth) + smooth.elements(), pointerTo<uint8_t>(picture),
                   [](float value) { return static_cast<uint8_t>(std::clamp(128 + 4 * (value - 128), 0.0F, 255.0F)); });
    findEdges(picture, 120, 240, work.operands[0]);
}

/** One operand of the case is the number of lines, which the peer has but for some that are rounded differently. */
template <auto Export, typename... Limits>
Row lineRow(const char* suffix, void (*content)(const Case&), Peer* peer, Limits... limits) {
    return {std::string(nameOf<Export>()) + suffix, [=](RoiSize size) {
                const int32_t threshold = 10 + std::min(size.width, size.height) / 8;
                int32_t bytes = 0;
                expectOk(vekiHoughLineGetSize_8u_C1R(size, kDeltaRho, kDeltaTheta, kMostLines, &bytes),
                         "the query of vekiHoughLine");
                const Operand image = Operand::make(Role::kSource, Element::k8u, 1, size);
                const Operand lines = Operand::make(Role::kBuffer, Element::k32f, 2, {kMostLines, 1});
                const Operand count = Operand::make(Role::kResult, Element::k32s, 1, {1, 1});
                const Operand buffer = Operand::make(Role::kBuffer, Element::k8u, 1, {bytes, 1});
                Work work{{size,
                           {kDeltaRho, kDeltaTheta, static_cast<double>(threshold), kMostLines},
                           {image, lines, count, buffer},
                           content,
                           0.05},
                          {},
                          {}};
                work.vekcv = [=] {
                    expectOk(Export(pointerTo<uint8_t>(image), image.step, size, kDeltaRho, kDeltaTheta, threshold,
                                    limits..., pointerTo<float>(lines), kMostLines, pointerTo<int32_t>(count),
                                    pointerTo<uint8_t>(buffer)),
                             nameOf<Export>());
                };
                if (peer != nullptr)
                    work.peer = peer(work.data);
                return work;
            }};
}

// The region has a quarter of all angles.
const Row kHoughRows[] = {
    lineRow<&vekiHoughLine_8u32f_C1R>(" straight", fillStraightEdges, peer::houghLines),
    lineRow<&vekiHoughLine_8u32f_C1R>(" bent", fillBentEdges, peer::houghLines),
    lineRow<&vekiHoughLine_Region_8u32f_C1R>("", fillStraightEdges, nullptr, -1e6F, 1e6F, 0.0F, 0.78F),
};
const Family hough("HoughLine", kHoughRows);

}  // namespace
}  // namespace bench
