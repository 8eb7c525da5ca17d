#include <cmath>
#include <vector>

#include "export_row.h"
#include "geometry/peer.h"

namespace bench {
namespace {

/** A lens that makes what is far from the middle smaller, so that all pixels of the result lie in the source. */
std::vector<double> cameraFor(RoiSize size) {
    const double focal = 0.9 * size.width;
    return {focal, focal, size.width / 2.0 + 0.5, size.height / 2.0 + 0.5, -0.2, 0.05};
}

/** Waves: a result depends little on how places are rounded. */
void drawWaves(const Operand& picture) {
    std::vector<double> waves(static_cast<size_t>(picture.size.width));
    for (size_t x = 0; x < waves.size(); ++x)
        waves[x] = 60 * std::sin(static_cast<double>(x) / 17);
    const auto draw = [&]<typename T>(T) {
        T* pixel = pointerTo<T>(picture);
        for (int32_t y = 0; y < picture.size.height; ++y) {
            double wavesOfRow[3];
            for (int phase = 0; phase < 3; ++phase)
                wavesOfRow[phase] = 50 * std::cos(static_cast<double>(y) / 23 + phase);
            for (int32_t x = 0; x < picture.size.width * picture.channels; ++x)
                *pixel++ = static_cast<T>(128 + waves[static_cast<size_t>(x / picture.channels)] + wavesOfRow[x % 3]);
        }
    };
    picture.element == Element::k8u    ? draw(uint8_t())
    : picture.element == Element::k16u ? draw(uint16_t())
                                       : draw(0.0f);
}

template <auto Export>
Row undistortRow() {
    return {std::string(nameOf<Export>()), [=](RoiSize size) {
                const Setup setup{.parameters = cameraFor(size),
                                  .content = [](const Case& work) { drawWaves(work.operands[0]); },
                                  .bufferBytes = bufferBytes<&vekiUndistortGetSize>};
                Work work = row<Export>(peer::undistort, setup).prepare(size);
                work.data.tolerance = 0.02;
                return work;
            }};
}

const Row kRows[] = {
    undistortRow<&vekiUndistortRadial_8u_C1R>(),  undistortRow<&vekiUndistortRadial_8u_C3R>(),
    undistortRow<&vekiUndistortRadial_16u_C1R>(), undistortRow<&vekiUndistortRadial_16u_C3R>(),
    undistortRow<&vekiUndistortRadial_32f_C1R>(), undistortRow<&vekiUndistortRadial_32f_C3R>(),
};
const Family images("UndistortRadial", kRows);

Row mapRow(const char* suffix, double p1, double p2) {
    constexpr auto kExport = &vekiCreateMapCameraUndistort_32f_C1R;
    return {std::string(nameOf<kExport>()) + suffix, [=](RoiSize size) {
                Setup setup{.parameters = cameraFor(size), .bufferBytes = bufferBytes<&vekiUndistortGetSize>};
                setup.parameters.insert(setup.parameters.end(), {p1, p2});
                return row<kExport>(peer::undistortMap, setup).prepare(size);
            }};
}

const Row kMapRows[] = {mapRow(" radial", 0, 0), mapRow(" tangential", 0.01, -0.02)};
const Family maps("CreateMapCameraUndistort", kMapRows);

}  // namespace
}  // namespace bench
