// Arrival times of a front that starts at the edge of a mask.
#include <cmath>

#include "bind.h"
#include "check.h"
#include "float_modes.h"
#include "mask_bits.h"
#include "promote.h"
#include "rest.h"
#include "work_buffer.h"

namespace VEKCV_VARIANT {
namespace {

/** The time of a pixel that the front has not reached, and the least time of unknown pixels and of known ones. */
constexpr float kUnreached = 999999, kFirstInside = 1, kFirstOutside = 1e-10F;

/** More than the four planes of bits below take. */
int64_t bufferBytes(RoiSize roi) {
    return (int64_t{roi.height} + 34) * (alignUp(int64_t{roi.width}, int64_t{32}) + 5) + 40;
}

/** The value of a pixel for the time that the front takes to it: inside the mask, and outside. */
struct Inside {
    static float time(float value) { return value; }
    static float value(float time) { return time; }
};
struct Outside {
    static float time(float value) { return value == 0 ? kUnreached : -value; }
    static float value(float time) { return -time; }
};

/**
 * When the front reaches a pixel, from the times of the earlier neighbour of each pair. In double precision the rounded
 * result never falls where a time rises, so the times that all pixels end with do not depend on the order of updates.
 */
float arrival(float horizontal, float vertical) {
    const double a = horizontal, b = vertical, difference = std::fabs(a - b);
    return static_cast<float>(difference < 1 ? (a + b + std::sqrt(2 - difference * difference)) * 0.5
                                             : HWY_MIN(a, b) + 1);
}

/** A bit for each pixel, in rows of whole words whose spare bits are 0; with a row of zeros above and one below. */
struct BitPlane {
    uint64_t* first;
    ptrdiff_t words;

    static BitPlane zero(Scratch& scratch, RoiSize roi) {
        const ptrdiff_t words = (ptrdiff_t{roi.width} + 63) / 64;
        const BitPlane plane{scratch.take<uint64_t>((int64_t{roi.height} + 2) * words) + words, words};
        plane.clear(roi.height);
        return plane;
    }
    void clear(int32_t height) const {
        __builtin_memset(row(-1), 0, (static_cast<size_t>(height) + 2) * static_cast<size_t>(words) * sizeof *first);
    }

    uint64_t* row(ptrdiff_t y) const { return first + y * words; }
    void set(ptrdiff_t x, ptrdiff_t y) const { row(y)[x / 64] |= uint64_t{1} << (x % 64); }

    /** For the pixels of a word: whether one of the four neighbours is set. */
    uint64_t around(ptrdiff_t y, ptrdiff_t word) const {
        const uint64_t* const here = row(y) + word;
        const uint64_t before = word > 0 ? here[-1] : 0, behind = word + 1 < words ? here[1] : 0;
        return *here << 1 | before >> 63 | *here >> 1 | behind << 63 | here[-words] | here[words];
    }
};

/** Moves on from the pixels at the edge of the mask, to a greatest distance outside. */
class Front {
  public:
    Front(Image<float> values, RoiSize roi, float limit, BitPlane now, BitPlane next)
        : values_(values), roi_(roi), limit_(limit), now_(now), next_(next) {}

    /** Computes pixels that are marked until none is. */
    void run() {
        while (runOnce()) {
            const BitPlane done = now_;
            now_ = next_;
            next_ = done;
        }
    }

  private:
    /** Computes all pixels that are marked now; false where there are none. */
    bool runOnce() {
        uint64_t any = 0;
        for (int32_t y = 0; y < roi_.height; ++y) {
            uint64_t* const marks = now_.row(y);
            for (ptrdiff_t i = 0; i < now_.words; ++i) {
                any |= marks[i];
                for (uint64_t bits = marks[i]; bits != 0; bits &= bits - 1)
                    compute(i * 64 + __builtin_ctzll(bits), y);
                marks[i] = 0;
            }
        }
        return any != 0;
    }

    void compute(ptrdiff_t x, int32_t y) {
        if (values_.row(y)[x] > 0)
            compute<Inside>(x, y, kUnreached);
        else
            compute<Outside>(x, y, limit_);
    }

    /** All neighbours of a marked pixel are on its side: those at the edge of the mask are never marked. */
    template <typename Side>
    void compute(ptrdiff_t x, int32_t y, float latest) {
        float* const value = values_.row(y) + x;
        const bool hasLeft = x > 0, hasRight = x + 1 < roi_.width, hasUpper = y > 0, hasLower = y + 1 < roi_.height;
        const float left = hasLeft ? Side::time(value[-1]) : kUnreached;
        const float right = hasRight ? Side::time(value[1]) : kUnreached;
        const float upper = hasUpper ? Side::time(values_.row(ptrdiff_t{y} - 1)[x]) : kUnreached;
        const float lower = hasLower ? Side::time(values_.row(ptrdiff_t{y} + 1)[x]) : kUnreached;
        const float time = arrival(HWY_MIN(left, right), HWY_MIN(upper, lower));
        if (!(time < Side::time(*value) && time <= latest))
            return;
        *value = Side::value(time);
        if (hasLeft && time < left)
            next_.set(x - 1, y);
        if (hasRight && time < right)
            next_.set(x + 1, y);
        if (hasUpper && time < upper)
            next_.set(x, ptrdiff_t{y} - 1);
        if (hasLower && time < lower)
            next_.set(x, ptrdiff_t{y} + 1);
    }

    Image<float> values_;
    RoiSize roi_;
    float limit_;
    BitPlane now_, next_;
};

/** Sets the bits of the pixels of a row that are unknown, and of those that are known. */
void splitRow(const uint8_t* mask, int32_t width, uint64_t* unknown, uint64_t* known) {
    const hn::ScalableTag<uint8_t> d;
    constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(hn::ScalableTag<uint8_t>()));
    static_assert(kLanes <= 64);
    for (ptrdiff_t x = 0; x < width; x += 64) {
        const ptrdiff_t end = HWY_MIN(x + 64, width);
        uint64_t zeros = 0;
        ptrdiff_t i = x;
        for (; i + kLanes <= end; i += kLanes) {
            zeros |= maskBits(d, isZero(d, mask + i)) << (i - x);
        }
        for (; i < end; ++i)
            zeros |= uint64_t{mask[i] == 0} << (i - x);
        known[x / 64] = zeros;
        unknown[x / 64] = ~zeros & (~uint64_t{0} >> (64 - (end - x)));
    }
}

/** The values of a row before the front starts: at the edge of the mask those that stay. */
void startRow(float* values, int32_t width, const uint64_t* unknown, const uint64_t* edge) {
    for (ptrdiff_t first = 0; first < width; first += 64) {
        const uint64_t inside = unknown[first / 64], atEdge = edge[first / 64];
        const auto write = [=](auto d, ptrdiff_t x) __attribute__((always_inline)) {
            const auto maskOf = [=](uint64_t bits) __attribute__((always_inline)) {
                bits >>= x;
                return hn::LoadMaskBits(d, reinterpret_cast<const uint8_t*>(&bits));
            };
            const auto isAtEdge = maskOf(atEdge);
            const auto outer = hn::IfThenElseZero(isAtEdge, hn::Set(d, Outside::value(kFirstOutside)));
            const auto inner = hn::IfThenElse(isAtEdge, hn::Set(d, kFirstInside), hn::Set(d, kUnreached));
            hn::StoreU(hn::IfThenElse(maskOf(inside), inner, outer), d, values + first + x);
        };
        const auto writeZeros = [=](auto d, ptrdiff_t x) __attribute__((always_inline)) {
            hn::StoreU(hn::Zero(d), d, values + first + x);
        };
        const ptrdiff_t count = HWY_MIN(64, width - first);
        if ((inside | atEdge) == 0)
            forHalves(hn::ScalableTag<float>(), 0, count, writeZeros);
        else
            forHalves(hn::ScalableTag<float>(), 0, count, write);
    }
}

/** Calls body(word, y) for all words of a plane. */
template <typename Body>
void forWords(const BitPlane& plane, int32_t height, const Body& body) {
    for (ptrdiff_t y = 0; y < height; ++y)
        for (ptrdiff_t i = 0; i < plane.words; ++i)
            body(i, y);
}

void march(Image<const uint8_t> mask, Image<float> values, RoiSize roi, float radius, Scratch scratch) {
    const auto unknown = BitPlane::zero(scratch, roi), known = BitPlane::zero(scratch, roi);
    const auto edge = BitPlane::zero(scratch, roi), marks = BitPlane::zero(scratch, roi);
    for (int32_t y = 0; y < roi.height; ++y)
        splitRow(mask.row(y), roi.width, unknown.row(y), known.row(y));
    forWords(edge, roi.height, [=](ptrdiff_t i, ptrdiff_t y) {
        edge.row(y)[i] = (unknown.row(y)[i] & known.around(y, i)) | (known.row(y)[i] & unknown.around(y, i));
    });
    forWords(marks, roi.height, [=](ptrdiff_t i, ptrdiff_t y) {
        marks.row(y)[i] = (unknown.row(y)[i] | known.row(y)[i]) & ~edge.row(y)[i] & edge.around(y, i);
    });
    for (int32_t y = 0; y < roi.height; ++y)
        startRow(values.row(y), roi.width, unknown.row(y), edge.row(y));
    known.clear(roi.height);
    Front(values, roi, radius + 1e-5F, marks, known).run();
}

Status fastMarching(const uint8_t* mask, int32_t maskStep, float* distance, int32_t distanceStep, RoiSize roi,
                    float radius, uint8_t* buffer) {
    const Image<const uint8_t> unknown{mask, maskStep};
    const Image<float> values{distance, distanceStep};
    if (Status status = Check().pointers(unknown, values, buffer).roi(roi).steps(roi.width, unknown, values))
        return status;
    inUsualModes([=] { march(unknown, values, roi, radius, {buffer, bufferBytes(roi)}); });
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiFastMarchingGetBufferSize_8u32f_C1R, roiBufferSize<bufferBytes>);
VEKCV_BIND(vekiFastMarching_8u32f_C1R, fastMarching);
}  // namespace VEKCV_VARIANT
