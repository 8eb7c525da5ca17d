#include <cmath>
#include <cstring>
#include <limits>

#include "export_row.h"
#include "feature/scene.h"
#include "segment/peer.h"

namespace bench {
namespace {

constexpr double kAny = std::numeric_limits<double>::infinity();  // the peer segments by another rule

/** Labels from 1 to 254, at the crossings of a grid: a few hundred in usual images. */
template <typename T>
void plantSeeds(const Operand& markers) {
    constexpr int32_t kPitch = 64, kRadius = 3;
    T* pixel = pointerTo<T>(markers);
    for (int32_t y = 0; y < markers.size.height; ++y)
        for (int32_t x = 0; x < markers.size.width; ++x) {
            const bool isSeed =
                std::abs(x % kPitch - kPitch / 2) <= kRadius && std::abs(y % kPitch - kPitch / 2) <= kRadius;
            *pixel++ = static_cast<T>(isSeed ? 1 + (x / kPitch + 31 * (y / kPitch)) % 254 : 0);
        }
}

/** A scene, with its pixels as grey values or as elements of three channels, and seeds. */
template <typename T>
void fillSceneAndSeeds(const Case& work) {
    Operand elements = work.operands[0];
    elements.size.width *= elements.channels;
    paintScene<uint8_t>(elements);
    plantSeeds<T>(work.operands[1]);
}

/** A call changes the markers, so each begins with a copy of them. */
template <auto Export, auto Query, typename T>
Work segmentation(RoiSize size,
                  Status(VEKCV_CALL*)(const uint8_t*, int32_t, T*, int32_t, RoiSize, int32_t, int32_t, uint8_t*)) {
    const int32_t channels = Layout(nameOf<Export>()).channels;
    const Operand source = Operand::make(Role::kSource, Element::k8u, channels, size);
    const Operand markers = Operand::make(Role::kSource, elementOf<T>(), 1, size);
    const Operand result = Operand::make(Role::kDestination, elementOf<T>(), 1, size);
    const Operand buffer = Operand::make(Role::kBuffer, Element::k8u, 1, {bufferBytes<Query>(size), 1});
    Work work{{size, {}, {source, markers, result, buffer}, fillSceneAndSeeds<T>, kAny}, {}, {}};
    work.vekcv = [=] {
        std::memcpy(result.memory.get(), markers.memory.get(), markers.bytes());
        expectOk(Export(pointerTo<const uint8_t>(source), source.step, pointerTo<T>(result), result.step, size, NormL1,
                        0, pointerTo<uint8_t>(buffer)),
                 nameOf<Export>());
    };
    if (peer::watershed != nullptr)
        work.peer = peer::watershed(work.data);
    return work;
}

template <auto Export, auto Query>
Row segmentationRow() {
    return {std::string(nameOf<Export>()), [](RoiSize size) { return segmentation<Export, Query>(size, Export); }};
}

/** Slanting stripes and their crossings, which make segments of some 40 pixels. */
template <typename T>
void fillSegments(const Case& work) {
    T* pixel = pointerTo<T>(work.operands[0]);
    for (int32_t y = 0; y < work.size.height; ++y)
        for (int32_t x = 0; x < work.size.width; ++x)
            *pixel++ = static_cast<T>(1 + ((x + y / 3) / 40 + 7 * ((y + x / 5) / 40)) % 254);
}

template <auto Export, typename T>
Work boundaries(RoiSize size, Status(VEKCV_CALL*)(T*, int32_t, RoiSize, T, int32_t)) {
    const Operand segments = Operand::make(Role::kSource, elementOf<T>(), 1, size);
    const Operand result = Operand::make(Role::kDestination, elementOf<T>(), 1, size);
    Work work{{size, {}, {segments, result}, fillSegments<T>}, {}, {}};
    work.vekcv = [=] {
        std::memcpy(result.memory.get(), segments.memory.get(), segments.bytes());
        expectOk(Export(pointerTo<T>(result), result.step, size, T{255}, NormInf), nameOf<Export>());
    };
    return work;
}

template <auto Export>
Row boundariesRow() {
    return {std::string(nameOf<Export>()), [](RoiSize size) { return boundaries<Export>(size, Export); }};
}

const Row kBoundRows[] = {
    boundariesRow<&vekiBoundSegments_8u_C1IR>(),
    boundariesRow<&vekiBoundSegments_16u_C1IR>(),
};
const Family bound("BoundSegments", kBoundRows);

const Row kWatershedRows[] = {
    segmentationRow<&vekiSegmentWatershed_8u_C1IR, &vekiSegmentWatershedGetBufferSize_8u_C1R>(),
    segmentationRow<&vekiSegmentWatershed_8u16u_C1IR, &vekiSegmentWatershedGetBufferSize_8u16u_C1R>(),
};
const Family watershed("SegmentWatershed", kWatershedRows);

const Row kGradientRows[] = {
    segmentationRow<&vekiSegmentGradient_8u_C1IR, &vekiSegmentGradientGetBufferSize_8u_C1R>(),
    segmentationRow<&vekiSegmentGradient_8u_C3IR, &vekiSegmentGradientGetBufferSize_8u_C3R>(),
};
const Family gradient("SegmentGradient", kGradientRows);

}  // namespace
}  // namespace bench
