#include "reference.h"

#include <cstdint>
#include <cstring>
#include <iterator>
#include <numeric>

namespace bench {
namespace {

/** Copies as many bytes as a case touches: one half is read, the other half written. */
Call copyOf(size_t bytesTouched) {
    const auto half = static_cast<int32_t>(bytesTouched / 2);
    const Operand from = Operand::make(Role::kSource, Element::k8u, 1, {half, 1});
    const Operand to = Operand::make(Role::kDestination, Element::k8u, 1, {half, 1});
    from.fill(1);
    to.fill(2);
    return [=] { std::memcpy(to.memory.get(), from.memory.get(), from.bytes()); };
}

constexpr size_t kLineWords = 16;  // a cache line; as many running sums keep one vector from waiting for another
constexpr size_t kStreams = 8;

/** Adds the lines of several parts, which are read side by side. */
template <size_t kParts>
void addLines(uint32_t (&sums)[kLineWords], const uint32_t* words, size_t linesInPart) {
    const size_t part = linesInPart * kLineWords;
    for (const uint32_t* const end = words + part; words < end; words += kLineWords)
        for (size_t i = 0; i < kLineWords; ++i)
            for (size_t k = 0; k < kParts; ++k)
                sums[i] += words[k * part + i];
}

/** A single stream of loads would use two thirds of the bandwidth that several have. */
uint32_t sumOfLines(const uint32_t* words, size_t lines) {
    uint32_t sums[kLineWords] = {};
    addLines<kStreams>(sums, words, lines / kStreams);
    addLines<1>(sums, words + (lines - lines % kStreams) * kLineWords, lines % kStreams);
    return std::accumulate(std::begin(sums), std::end(sums), uint32_t{0});
}

/** Reads every whole cache line of the operands. */
Call readOf(const Case& work) {
    return [operands = work.operands] {
        for (const Operand& operand : operands) {
            const auto* const words = static_cast<const uint32_t*>(operand.memory.get());
            // Without a place to go to the compiler would leave out the sum.
            [[maybe_unused]] volatile uint32_t sum = sumOfLines(words, operand.bytes() / (kLineWords * sizeof *words));
        }
    };
}

}  // namespace

Contestant reference(const Case& work) {
    return work.writesImages() ? Contestant{"memcpy", copyOf(work.bytesTouched())} : Contestant{"read", readOf(work)};
}

}  // namespace bench
