#include "export_row.h"
#include "geometry/peer.h"

namespace bench {
namespace {

constexpr double kRight = 0.25, kDown = 0.5;  // which the peer rounds no further
constexpr double kTolerance = 0.01;           // it rounds bytes otherwise

template <auto Export>
Row shiftRow(Peer* peer, const std::vector<double>& more = {}) {
    std::vector<double> parameters{kRight, kDown};
    parameters.insert(parameters.end(), more.begin(), more.end());
    const Row plain = row<Export>(peer, Setup{.parameters = parameters, .excess = {.sources = {1, 1}}});
    return {plain.name, [=](RoiSize size) {
                Work work = plain.prepare(size);
                work.data.tolerance = kTolerance;
                return work;
            }};
}

const Row kRows[] = {
    shiftRow<&vekiCopySubpix_8u_C1R>(peer::patch),    shiftRow<&vekiCopySubpix_8u16u_C1R_Sfs>(nullptr, {-8}),
    shiftRow<&vekiCopySubpix_8u32f_C1R>(peer::patch), shiftRow<&vekiCopySubpix_16u_C1R>(peer::shift),
    shiftRow<&vekiCopySubpix_16u32f_C1R>(nullptr),    shiftRow<&vekiCopySubpix_32f_C1R>(peer::patch),
};
const Family copies("CopySubpix", kRows);

/** A patch as large as the source but for a row and a column, all inside. */
template <auto Export, typename T, typename Result, typename... Rest>
Row patchRow(Peer* peer,
             Status(VEKCV_CALL*)(const T*, int32_t, RoiSize, Result*, int32_t, RoiSize, ImagePoint32f, Rest...)) {
    return {std::string(nameOf<Export>()), [=](RoiSize size) {
                const Operand from = Operand::make(Role::kSource, elementOf<T>(), 1, {size.width + 1, size.height + 1});
                const Operand to = Operand::make(Role::kDestination, elementOf<Result>(), 1, size);
                Work work{{size, {kRight, kDown}, {from, to}}, {}, {}};
                work.data.tolerance = kTolerance;
                const ImagePoint32f point{static_cast<float>((size.width - 1) / 2.0 + kRight),
                                          static_cast<float>((size.height - 1) / 2.0 + kDown)};
                work.vekcv = [=] {
                    ImagePoint least, most;
                    const auto call = [&](auto... scaleFactor) {
                        return Export(pointerTo<T>(from), from.step, from.size, pointerTo<Result>(to), to.step, size,
                                      point, scaleFactor..., &least, &most);
                    };
                    if constexpr (sizeof...(Rest) == 3)
                        expectOk(call(int32_t{-8}), nameOf<Export>());
                    else
                        expectOk(call(), nameOf<Export>());
                };
                if (peer != nullptr)
                    work.peer = peer(work.data);
                return work;
            }};
}
template <auto Export>
Row patchRow(Peer* peer) {
    return patchRow<Export>(peer, Export);
}

const Row kPatchRows[] = {
    patchRow<&vekiCopySubpixIntersect_8u_C1R>(peer::patch),
    patchRow<&vekiCopySubpixIntersect_8u16u_C1R_Sfs>(nullptr),
    patchRow<&vekiCopySubpixIntersect_8u32f_C1R>(peer::patch),
    patchRow<&vekiCopySubpixIntersect_16u_C1R>(peer::shift),
    patchRow<&vekiCopySubpixIntersect_16u32f_C1R>(nullptr),
    patchRow<&vekiCopySubpixIntersect_32f_C1R>(peer::patch),
};
const Family patches("CopySubpixIntersect", kPatchRows);

}  // namespace
}  // namespace bench
