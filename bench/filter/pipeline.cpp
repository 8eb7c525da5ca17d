#include <algorithm>
#include <vector>

#include "export_row.h"
#include "filter/peer.h"

namespace bench {
namespace {

// The binomial kernel of five taps, with replicated borders.
constexpr int32_t kSize = 5;
constexpr int32_t kDivisor = 16;

template <typename Tap>
std::vector<Tap> binomial() {
    const Tap divisor = std::is_floating_point_v<Tap> ? Tap{kDivisor} : Tap{1};
    return {Tap(1 / divisor), Tap(4 / divisor), Tap(6 / divisor), Tap(4 / divisor), Tap(1 / divisor)};
}

/** The addresses of the rows of an operand, and of its first and last row so many times more. */
template <typename T>
std::vector<T*> rowsOf(const Operand& operand, int32_t margin) {
    std::vector<T*> rows;
    for (int32_t y = -margin; y < operand.size.height + margin; ++y) {
        const int32_t inside = std::clamp(y, 0, operand.size.height - 1);
        rows.push_back(
            reinterpret_cast<T*>(static_cast<char*>(operand.memory.get()) + ptrdiff_t{inside} * operand.step));
    }
    return rows;
}

template <auto Query>
std::vector<uint8_t> bufferOf(RoiSize size) {
    return std::vector<uint8_t>(static_cast<size_t>(bufferBytes<Query, kSize>(size)));
}

/** Pixels of integers that the divisor divides, so that the ways of rounding do not matter. */
void makeDivisible(const Case& work) {
    const Operand& source = work.operands[0];
    const auto clearLowBits = [&]<typename T>(T* pixels) {
        for (size_t i = 0; i < source.elements(); ++i)
            pixels[i] = static_cast<T>(pixels[i] & -kDivisor);
    };
    if (source.element == Element::k8u)
        clearLowBits(static_cast<uint8_t*>(source.memory.get()));
    else if (source.element == Element::k16s)
        clearLowBits(static_cast<int16_t*>(source.memory.get()));
}

template <auto Filter, auto Query, typename Source, typename Result, typename... Rest>
Work rowWork(Status (*)(const Source*, int32_t, Result* const*, Rest...), RoiSize size, Peer* peer) {
    constexpr int32_t kChannels = Layout(nameOf<Filter>()).channels;
    using Tap = std::conditional_t<std::is_floating_point_v<Source>, float, int16_t>;
    const Operand source = Operand::make(Role::kSource, elementOf<Source>(), kChannels, size);
    const Operand destination = Operand::make(Role::kDestination, elementOf<Result>(), kChannels, size);
    Work work{{size, {}, {source, destination}, makeDivisible}, {}, {}};
    work.vekcv = [=, rows = rowsOf<Result>(destination, 0), kernel = binomial<Tap>(),
                  scratch = bufferOf<Query>(size)]() mutable {
        const auto* const pixels = static_cast<const Source*>(source.memory.get());
        if constexpr (std::is_floating_point_v<Source>)
            expectOk(Filter(pixels, source.step, rows.data(), size, kernel.data(), kSize, kSize / 2, BorderReplicate, 0,
                            scratch.data()),
                     nameOf<Filter>());
        else
            expectOk(Filter(pixels, source.step, rows.data(), size, kernel.data(), kSize, kSize / 2, BorderReplicate, 0,
                            kDivisor, scratch.data()),
                     nameOf<Filter>());
    };
    if (peer != nullptr)
        work.peer = peer(work.data);
    return work;
}

template <auto Filter, auto Query, typename Source, typename Result, typename... Rest>
Work columnWork(Status (*)(const Source* const*, Result*, int32_t, Rest...), RoiSize size, Peer* peer) {
    constexpr int32_t kChannels = Layout(nameOf<Filter>()).channels;
    using Tap = std::conditional_t<std::is_floating_point_v<Source>, float, int16_t>;
    const Operand source = Operand::make(Role::kSource, elementOf<Source>(), kChannels, size);
    const Operand destination = Operand::make(Role::kDestination, elementOf<Result>(), kChannels, size);
    Work work{{size, {}, {source, destination}, makeDivisible}, {}, {}};
    work.vekcv = [=, rows = rowsOf<const Source>(source, kSize / 2), kernel = binomial<Tap>(),
                  scratch = bufferOf<Query>(size)]() mutable {
        auto* const pixels = static_cast<Result*>(destination.memory.get());
        if constexpr (std::is_floating_point_v<Source>)
            expectOk(Filter(rows.data(), pixels, destination.step, size, kernel.data(), kSize, scratch.data()),
                     nameOf<Filter>());
        else
            expectOk(
                Filter(rows.data(), pixels, destination.step, size, kernel.data(), kSize, kDivisor, scratch.data()),
                nameOf<Filter>());
    };
    if (peer != nullptr)
        work.peer = peer(work.data);
    return work;
}

template <auto Filter, auto Query>
Row rowFilter(Peer* peer) {
    return {std::string(nameOf<Filter>()), [=](RoiSize size) { return rowWork<Filter, Query>(Filter, size, peer); }};
}

template <auto Filter, auto Query>
Row columnFilter(Peer* peer = nullptr) {
    return {std::string(nameOf<Filter>()), [=](RoiSize size) { return columnWork<Filter, Query>(Filter, size, peer); }};
}

const Row kRows[] = {
    rowFilter<&vekiFilterRowBorderPipeline_8u16s_C1R, &vekiFilterRowBorderPipelineGetBufferSize_8u16s_C1R>(
        peer::binomialAlongRows),
    rowFilter<&vekiFilterRowBorderPipeline_8u16s_C3R, &vekiFilterRowBorderPipelineGetBufferSize_8u16s_C3R>(
        peer::binomialAlongRows),
    rowFilter<&vekiFilterRowBorderPipeline_16s_C1R, &vekiFilterRowBorderPipelineGetBufferSize_16s_C1R>(
        peer::binomialAlongRows),
    rowFilter<&vekiFilterRowBorderPipeline_16s_C3R, &vekiFilterRowBorderPipelineGetBufferSize_16s_C3R>(
        peer::binomialAlongRows),
    rowFilter<&vekiFilterRowBorderPipeline_Low_16s_C1R, &vekiFilterRowBorderPipelineGetBufferSize_Low_16s_C1R>(
        peer::binomialAlongRows),
    rowFilter<&vekiFilterRowBorderPipeline_Low_16s_C3R, &vekiFilterRowBorderPipelineGetBufferSize_Low_16s_C3R>(
        peer::binomialAlongRows),
    rowFilter<&vekiFilterRowBorderPipeline_32f_C1R, &vekiFilterRowBorderPipelineGetBufferSize_32f_C1R>(
        peer::binomialAlongRows),
    rowFilter<&vekiFilterRowBorderPipeline_32f_C3R, &vekiFilterRowBorderPipelineGetBufferSize_32f_C3R>(
        peer::binomialAlongRows),
    columnFilter<&vekiFilterColumnPipeline_16s_C1R, &vekiFilterColumnPipelineGetBufferSize_16s_C1R>(
        peer::binomialAlongColumns),
    columnFilter<&vekiFilterColumnPipeline_16s_C3R, &vekiFilterColumnPipelineGetBufferSize_16s_C3R>(
        peer::binomialAlongColumns),
    columnFilter<&vekiFilterColumnPipeline_16s8u_C1R, &vekiFilterColumnPipelineGetBufferSize_16s8u_C1R>(),
    columnFilter<&vekiFilterColumnPipeline_16s8u_C3R, &vekiFilterColumnPipelineGetBufferSize_16s8u_C3R>(),
    columnFilter<&vekiFilterColumnPipeline_16s8s_C1R, &vekiFilterColumnPipelineGetBufferSize_16s8s_C1R>(),
    columnFilter<&vekiFilterColumnPipeline_16s8s_C3R, &vekiFilterColumnPipelineGetBufferSize_16s8s_C3R>(),
    columnFilter<&vekiFilterColumnPipeline_Low_16s_C1R, &vekiFilterColumnPipelineGetBufferSize_Low_16s_C1R>(
        peer::binomialAlongColumns),
    columnFilter<&vekiFilterColumnPipeline_Low_16s_C3R, &vekiFilterColumnPipelineGetBufferSize_Low_16s_C3R>(
        peer::binomialAlongColumns),
    columnFilter<&vekiFilterColumnPipeline_32f_C1R, &vekiFilterColumnPipelineGetBufferSize_32f_C1R>(
        peer::binomialAlongColumns),
    columnFilter<&vekiFilterColumnPipeline_32f_C3R, &vekiFilterColumnPipelineGetBufferSize_32f_C3R>(
        peer::binomialAlongColumns),
};
const Family pipeline("Pipeline", kRows);

}  // namespace
}  // namespace bench
