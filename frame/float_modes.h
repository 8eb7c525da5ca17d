#pragma once

#include <xmmintrin.h>

#include <cstdint>

namespace VEKCV_VARIANT {

/**
 * How a thread computes with floats: its rounding, what it does with subnormal numbers, and which exceptions trap. The
 * exceptions that it raised so far are no part of it.
 */
class FloatModes {
  public:
    static FloatModes ofThread() {
        FloatModes modes;
        modes.vectors_ = _mm_getcsr() & ~kRaised;
        modes.x87_ = x87Control();
        return modes;
    }

    void setForThread() const {
        _mm_setcsr(vectors_ | (_mm_getcsr() & kRaised));
        setX87Modes(x87_);
    }

  private:
    static constexpr uint32_t kRaised = 0x3f;

    // Where 64-bit integers become floats in 32 bits, x87 rounds in a mode of its own.
    static constexpr uint16_t kX87Modes = 0x0f00;

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

/** Lends modes to the thread that it lives on. */
class FloatModesGuard {
  public:
    explicit FloatModesGuard(const FloatModes& modes) { modes.setForThread(); }
    ~FloatModesGuard() { own_.setForThread(); }
    FloatModesGuard(const FloatModesGuard&) = delete;
    FloatModesGuard& operator=(const FloatModesGuard&) = delete;

  private:
    FloatModes own_ = FloatModes::ofThread();
};

}  // namespace VEKCV_VARIANT
