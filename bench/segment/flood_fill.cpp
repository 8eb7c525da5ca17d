// Flood fills. A fill changes its image, so each call copies the picture first, that of the peer too.
#include <cstring>

#include "export_row.h"
#include "segment/peer.h"
#include "segment/regions.h"

namespace bench {
namespace {

enum class Rule { kPlain, kGradient, kRange };
enum class Picture { kUniform, kStriped, kNatural };

constexpr double kNewValue = 255;

/** How far pixels of a picture may be from others. */
double deltaOf(Rule rule, Picture picture) {
    if (rule == Rule::kPlain)
        return 0;
    return picture != Picture::kNatural ? 3 : rule == Rule::kRange ? 60 : 8;
}

ImagePoint seedOf(RoiSize size) {
    return {size.width / 2, size.height / 2};
}

/** Stripes of eight columns, joined by every sixteenth row. */
bool isStripe(int32_t x, int32_t y) {
    return x / 8 % 2 == 0 || y % 16 == 0;
}

/** A natural picture for plain fills has two levels: close to the seed, and not. */
uint8_t levelOf(const std::vector<uint8_t>& picture, size_t pixel, size_t seed) {
    return std::abs(picture[pixel] - picture[seed]) <= deltaOf(Rule::kRange, Picture::kNatural) ? 60 : 30;
}

template <typename T, Rule kRule, Picture kPicture>
void paint(const Case& work) {
    const Operand& source = work.operands[0];
    const RoiSize size = work.size;
    const auto pixels = kPicture == Picture::kNatural ? clouds(size) : std::vector<uint8_t>();
    const ImagePoint seed = seedOf(size);
    const size_t seedIndex =
        static_cast<size_t>(seed.y) * static_cast<size_t>(size.width) + static_cast<size_t>(seed.x);
    T* out = pointerTo<T>(source);
    for (int32_t y = 0; y < size.height; ++y)
        for (int32_t x = 0; x < size.width; ++x) {
            const size_t index = static_cast<size_t>(y) * static_cast<size_t>(size.width) + static_cast<size_t>(x);
            const auto value = kPicture == Picture::kUniform   ? T(20)
                               : kPicture == Picture::kStriped ? T(isStripe(x - seed.x, y - seed.y) ? 20 : 90)
                               : kRule == Rule::kPlain         ? T(levelOf(pixels, index, seedIndex))
                                                               : T(pixels[index]);
            out = std::fill_n(out, source.channels, value);
        }
}

/** A call of an export, whichever form it has, with the same value for all channels. */
template <auto Export, typename T, typename... Deltas>
void callFill(const Operand& image, ImagePoint seed, ConnectedComponent& component, uint8_t* buffer,
              const T (&newValue)[3], const Deltas (&... deltas)[3]) {
    T* const pixels = pointerTo<T>(image);
    if constexpr (std::is_invocable_v<decltype(Export), T*, int32_t, RoiSize, ImagePoint, const T*,
                                      decltype(&deltas[0])..., ConnectedComponent*, uint8_t*>)
        expectOk(Export(pixels, image.step, image.size, seed, newValue, deltas..., &component, buffer),
                 nameOf<Export>());
    else
        expectOk(Export(pixels, image.step, image.size, seed, newValue[0], deltas[0]..., &component, buffer),
                 nameOf<Export>());
}

template <auto Export, typename T, Rule kRule, Picture kPicture>
Row fillRow(const char* suffix) {
    constexpr std::string_view kName = nameOf<Export>();
    // The peer has no fills of 16u.
    Peer* const peer = sizeof(T) == 2 ? nullptr : peer::floodFill;
    return {std::string(kName) + suffix, [=](RoiSize size) {
                constexpr int32_t kChannels = kName.find("_C3") != kName.npos ? 3 : 1;
                constexpr int32_t kNeighbours = kName.find("8Con") != kName.npos ? 8 : 4;
                const Operand source = Operand::make(Role::kSource, elementOf<T>(), kChannels, size);
                const Operand image = Operand::make(Role::kDestination, elementOf<T>(), kChannels, size);
                int32_t bytes = 0;
                expectOk(vekiFloodFillGetSize_Grad(size, &bytes), "the query of flood fills");
                const Operand buffer = Operand::make(Role::kBuffer, Element::k8u, 1, {bytes, 1});
                const ImagePoint seed = seedOf(size);
                const double delta = deltaOf(kRule, kPicture);
                Work work{{size,
                           {static_cast<double>(seed.x), static_cast<double>(seed.y), kNewValue, delta, kNeighbours,
                            kRule == Rule::kRange ? 1.0 : 0.0},
                           {source, image, buffer},
                           paint<T, kRule, kPicture>},
                          {},
                          {}};
                work.vekcv = [=] {
                    std::memcpy(image.memory.get(), source.memory.get(), source.bytes());
                    const T newValue[3] = {T(kNewValue), T(kNewValue), T(kNewValue)},
                            deltas[3] = {T(delta), T(delta), T(delta)};
                    ConnectedComponent component;
                    auto* const memory = pointerTo<uint8_t>(buffer);
                    if constexpr (kRule == Rule::kPlain)
                        callFill<Export>(image, seed, component, memory, newValue);
                    else
                        callFill<Export>(image, seed, component, memory, newValue, deltas, deltas);
                };
                if (peer != nullptr)
                    work.peer = peer(work.data);
                return work;
            }};
}

template <auto Export, typename T, Rule kRule>
void addRows(std::vector<Row>& rows) {
    rows.push_back(fillRow<Export, T, kRule, Picture::kUniform>(" uniform"));
    rows.push_back(fillRow<Export, T, kRule, Picture::kStriped>(" striped"));
    rows.push_back(fillRow<Export, T, kRule, Picture::kNatural>(" natural"));
}

template <Rule kRule, auto Of8u1, auto Of8u3, auto Of16u1, auto Of16u3, auto Of32f1, auto Of32f3>
void addMembers(std::vector<Row>& rows) {
    addRows<Of8u1, uint8_t, kRule>(rows);
    addRows<Of8u3, uint8_t, kRule>(rows);
    addRows<Of16u1, uint16_t, kRule>(rows);
    addRows<Of16u3, uint16_t, kRule>(rows);
    addRows<Of32f1, float, kRule>(rows);
    addRows<Of32f3, float, kRule>(rows);
}

std::vector<Row> fillRows() {
    std::vector<Row> rows;
    addMembers<Rule::kPlain, &vekiFloodFill_4Con_8u_C1IR, &vekiFloodFill_4Con_8u_C3IR, &vekiFloodFill_4Con_16u_C1IR,
               &vekiFloodFill_4Con_16u_C3IR, &vekiFloodFill_4Con_32f_C1IR, &vekiFloodFill_4Con_32f_C3IR>(rows);
    addMembers<Rule::kPlain, &vekiFloodFill_8Con_8u_C1IR, &vekiFloodFill_8Con_8u_C3IR, &vekiFloodFill_8Con_16u_C1IR,
               &vekiFloodFill_8Con_16u_C3IR, &vekiFloodFill_8Con_32f_C1IR, &vekiFloodFill_8Con_32f_C3IR>(rows);
    addMembers<Rule::kGradient, &vekiFloodFill_Grad4Con_8u_C1IR, &vekiFloodFill_Grad4Con_8u_C3IR,
               &vekiFloodFill_Grad4Con_16u_C1IR, &vekiFloodFill_Grad4Con_16u_C3IR, &vekiFloodFill_Grad4Con_32f_C1IR,
               &vekiFloodFill_Grad4Con_32f_C3IR>(rows);
    addMembers<Rule::kGradient, &vekiFloodFill_Grad8Con_8u_C1IR, &vekiFloodFill_Grad8Con_8u_C3IR,
               &vekiFloodFill_Grad8Con_16u_C1IR, &vekiFloodFill_Grad8Con_16u_C3IR, &vekiFloodFill_Grad8Con_32f_C1IR,
               &vekiFloodFill_Grad8Con_32f_C3IR>(rows);
    addMembers<Rule::kRange, &vekiFloodFill_Range4Con_8u_C1IR, &vekiFloodFill_Range4Con_8u_C3IR,
               &vekiFloodFill_Range4Con_16u_C1IR, &vekiFloodFill_Range4Con_16u_C3IR, &vekiFloodFill_Range4Con_32f_C1IR,
               &vekiFloodFill_Range4Con_32f_C3IR>(rows);
    addMembers<Rule::kRange, &vekiFloodFill_Range8Con_8u_C1IR, &vekiFloodFill_Range8Con_8u_C3IR,
               &vekiFloodFill_Range8Con_16u_C1IR, &vekiFloodFill_Range8Con_16u_C3IR, &vekiFloodFill_Range8Con_32f_C1IR,
               &vekiFloodFill_Range8Con_32f_C3IR>(rows);
    return rows;
}

const std::vector<Row> kRows = fillRows();
const Family floodFills("FloodFill", kRows);

/** Blobs: what is brighter than the mean of the clouds. */
template <typename T>
void paintBlobs(const Case& work) {
    const auto picture = clouds(work.size);
    std::transform(picture.begin(), picture.end(), pointerTo<T>(work.operands[0]),
                   [](uint8_t value) { return T(value > 127 ? 1 : 0); });
}

template <auto Export, typename T, int32_t kNorm>
Row labelRow(const char* suffix) {
    return {std::string(nameOf<Export>()) + suffix, [](RoiSize size) {
                const Operand source = Operand::make(Role::kSource, elementOf<T>(), 1, size);
                const Operand markers = Operand::make(Role::kBuffer, elementOf<T>(), 1, size);
                const Operand count = Operand::make(Role::kResult, Element::k32s, 1, {1, 1});
                int32_t bytes = 0;
                expectOk(vekiFloodFillGetSize(size, &bytes), "the query of labels");
                const Operand buffer = Operand::make(Role::kBuffer, Element::k8u, 1, {bytes, 1});
                Work work{{size, {kNorm == NormInf ? 8 : 4}, {source, markers, count, buffer}, paintBlobs<T>}, {}, {}};
                work.vekcv = [=] {
                    std::memcpy(markers.memory.get(), source.memory.get(), source.bytes());
                    expectOk(Export(pointerTo<T>(markers), markers.step, size, 1, std::numeric_limits<T>::max() - 1,
                                    kNorm, pointerTo<int32_t>(count), pointerTo<uint8_t>(buffer)),
                             nameOf<Export>());
                };
                if (peer::connectedComponents != nullptr)
                    work.peer = peer::connectedComponents(work.data);
                return work;
            }};
}

const Row kLabelRows[] = {
    labelRow<&vekiLabelMarkers_8u_C1IR, uint8_t, NormL1>(" 4"),
    labelRow<&vekiLabelMarkers_8u_C1IR, uint8_t, NormInf>(" 8"),
    labelRow<&vekiLabelMarkers_16u_C1IR, uint16_t, NormL1>(" 4"),
    labelRow<&vekiLabelMarkers_16u_C1IR, uint16_t, NormInf>(" 8"),
};
const Family labels("LabelMarkers", kLabelRows);

}  // namespace
}  // namespace bench
