#pragma once

#include <xmmintrin.h>

#include <cstdint>

namespace VEKCV_VARIANT {

/**
 * How a thread computes with floats: its rounding, what it does with subnormal numbers, and which exceptions trap. The
 * flags of exceptions that were raised so far are not part of it.
 */
class FloatModes {
  public:
    static FloatModes ofThread() {
        FloatModes modes;
        modes.vectors_ = _mm_getcsr() & ~kRaised;
        modes.x87_ = x87Control();
        return modes;
    }

    /** Those that a program begins with: rounding to nearest, with subnormal numbers, and no exception traps. */
    static FloatModes usual() {
        FloatModes modes;
        modes.vectors_ = kUsual;
        modes.x87_ = x87Control() & kX87Precision;
        return modes;
    }

    void setForThread() const {
        _mm_setcsr(vectors_ | (_mm_getcsr() & kRaised));
        setX87Modes(x87_);
    }

  private:
    static constexpr uint32_t kRaised = 0x3f, kUsual = 0x1f80;

    // The x87 unit has modes of its own; in 32 bits it converts 64-bit integers to floats.
    static constexpr uint16_t kX87Modes = 0x0f00, kX87Precision = 0x0300;

    static uint16_t x87Control() {
        uint16_t control;
        __asm__ volatile("fnstcw %0" : "=m"(control));
        return control;
    }
    static void setX87Modes(uint16_t control) {
        const auto combined = static_cast<uint16_t>((x87Control() & ~kX87Modes) | (control & kX87Modes));
        __asm__ volatile("fldcw %0" : : "m"(combined));
    }

    uint32_t vectors_;
    uint16_t x87_;
};

/** Sets the modes of the thread, and restores its own at the end of the scope. */
class FloatModesGuard {
  public:
    explicit FloatModesGuard(const FloatModes& modes) { modes.setForThread(); }
    ~FloatModesGuard() { own_.setForThread(); }
    FloatModesGuard(const FloatModesGuard&) = delete;
    FloatModesGuard& operator=(const FloatModesGuard&) = delete;

  private:
    FloatModes own_ = FloatModes::ofThread();
};

/** Calls body(arguments...), out of line: bodies are long, and called in several places. */
template <typename Body, typename... Arguments>
[[gnu::noinline]] auto callBody(const Body& body, Arguments... arguments) {
    return body(arguments...);
}

/**
 * Calls body() in the modes that a program begins with. Floats that it computes must go to memory: a compiler moves
 * other computations with floats across the change of the modes.
 */
template <typename Body>
auto inUsualModes(const Body& body) {
    const FloatModesGuard guard(FloatModes::usual());
    return callBody(body);
}

}  // namespace VEKCV_VARIANT
