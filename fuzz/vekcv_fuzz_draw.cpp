// Draws calls of every export from known inputs and prints them, without making any. They are the same whatever
// compiler this was built with; only then an input that finds a fault repeats it everywhere. Fails where an export
// lacks what drawing its calls needs.
#include <algorithm>
#include <array>
#include <cstdio>

#include "draw.h"

namespace {

/** FNV-1a of what memory holds and of where the work buffer is going to be. */
uint32_t checksum(const fuzz::Call& call) {
    uint32_t hash = 2166136261u;
    const auto add = [&](const std::vector<uint8_t>& bytes) {
        for (const uint8_t byte : bytes)
            hash = (hash ^ byte) * 16777619u;
    };
    for (const auto& operand : call.operands)
        if (operand != nullptr)
            add(operand->elements());
    add({call.bufferPlace.guard, static_cast<uint8_t>(call.bufferPlace.offset)});
    return hash;
}

}  // namespace

int main() {
    constexpr uint32_t kCalls = 30, kVariants = 4;
    if (!fuzz::canDrawAll())
        return 1;
    Random random(1);
    for (const fuzz::Export& target : fuzz::exports())
        for (uint32_t i = 0; i < kCalls; ++i) {
            std::array<uint8_t, 64> bytes;
            std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<uint8_t>(random.bits()); });
            fuzz::Input input(bytes.data(), bytes.size());
            const fuzz::Call call = fuzz::drawCall(input, target, kVariants);
            std::printf("%s, variant %u, contents %08x\n", call.describe().c_str(), call.otherVariant, checksum(call));
        }
}
