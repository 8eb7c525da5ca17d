// How the states of inpainting are made: all that follows from the mask and the times is computed once.
#include "inpaint_state.h"

#include <cmath>

#include "bind.h"
#include "check.h"
#include "float_modes.h"
#include "promote.h"
#include "rest.h"
#include "set_pixels.h"
#include "state.h"

namespace VEKCV_VARIANT {
namespace {

/** The pixels of a mask that are set: their number, and the rectangle around them. */
struct MaskPixels {
    int32_t left = INT32_MAX, top = 0, right = -1, bottom = -1;
    int64_t count = 0;

    static MaskPixels of(Image<const uint8_t> mask, RoiSize roi) {
        MaskPixels all;
        for (int32_t y = 0; y < roi.height; ++y) {
            int64_t before = all.count;
            forSetPixels(
                mask.row(y), roi.width, [&](int32_t x) __attribute__((always_inline)) {
                    all.left = HWY_MIN(all.left, x);
                    all.right = HWY_MAX(all.right, x);
                    ++all.count;
                });
            if (all.count == before)
                continue;
            if (before == 0)
                all.top = y;
            all.bottom = y;
        }
        return all;
    }
};

/** How far a neighbourhood reaches to each side, and the part of the region that it takes to restore all pixels. */
struct Reach {
    int32_t columns, rows;
    ImageRect part;

    static Reach of(const MaskPixels& mask, RoiSize roi, float radius) {
        const int32_t longest = HWY_MAX(roi.width, roi.height);
        const int32_t whole = radius < static_cast<float>(longest) ? static_cast<int32_t>(radius) : longest;
        const auto begin = [=](int32_t first) { return first > whole ? first - whole - 1 : 0; };
        const auto end = [=](int32_t last, int32_t most) { return last < most - whole - 2 ? last + whole + 2 : most; };
        const int32_t x = begin(mask.left), y = begin(mask.top);
        const ImageRect part{x, y, end(mask.right, roi.width) - x, end(mask.bottom, roi.height) - y};
        return {HWY_MIN(whole, part.width), HWY_MIN(whole, part.height), part};
    }

    /** The columns to each side that are within the radius in rows so far away; negative where there are none. */
    int32_t columnsWithin(float radius, int32_t dy) const {
        const double square = double{radius} * radius - double{1} * dy * dy;
        if (square < 0)
            return -1;
        const double within = std::sqrt(square);
        return within < columns ? static_cast<int32_t>(within) : columns;
    }
};

/** Calls visit(dy, columns) for the rows of a neighbourhood. */
template <typename Visit>
void forNeighbourRows(const Reach& reach, float radius, const Visit& visit) {
    for (int32_t dy = -reach.rows; dy <= reach.rows; ++dy)
        if (const int32_t columns = reach.columnsWithin(radius, dy); columns >= 0)
            visit(dy, columns);
}

/** By the distance, whose square is given; scaled so that the weights of close pixels are of the size of kScale. */
float factor(Method method, double square) {
    constexpr double kScale = 1.0 / 4096;
    return static_cast<float>(kScale / (method == Method::kDirection ? square * std::sqrt(square) : square * square));
}

void makeTaps(InpaintRecord& state, const Reach& reach, float radius) {
    Taps* taps = state.taps;
    forNeighbourRows(reach, radius, [&](int32_t dy, int32_t columns) {
        for (int32_t first = -columns; first <= columns; first += kTapLanes, ++taps) {
            taps->dy = static_cast<float>(dy);
            taps->offset = static_cast<int32_t>(dy * state.stride + first);
            for (int32_t i = 0; i < kTapLanes; ++i) {
                const int32_t dx = first + i;
                const bool isNeighbour = dx <= columns && (dx != 0 || dy != 0);
                taps->dx[i] = static_cast<float>(dx);
                taps->factors[i] = isNeighbour ? factor(state.method, double{1} * dx * dx + double{1} * dy * dy) : 0;
            }
        }
    });
}

/** Copies the times of the part into the plane, with numbers that are finite. */
void makeTimes(const InpaintRecord& state, const Reach& reach, Image<const float> distance) {
    const ImageRect part = state.part;
    const auto fill = [](float* row, ptrdiff_t begin, ptrdiff_t end) {
        forHalves(
            hn::ScalableTag<float>(), begin, end, [=](auto d, ptrdiff_t x) __attribute__((always_inline)) {
                hn::StoreU(hn::Set(d, kNever), d, row + x);
            });
    };
    for (int32_t y = -reach.rows; y < part.height + reach.rows; ++y) {
        float* const row = state.times + state.first - reach.columns + y * state.stride;
        if (y < 0 || y >= part.height) {
            fill(row, 0, state.stride);
            continue;
        }
        fill(row, 0, reach.columns);
        fill(row, ptrdiff_t{reach.columns} + part.width, state.stride);
        const float* const from = distance.row(ptrdiff_t{part.y} + y) + part.x;
        float* const to = row + reach.columns;
        forHalves(
            hn::ScalableTag<float>(), 0, part.width, [=](auto d, ptrdiff_t x) __attribute__((always_inline)) {
                // A comparison with a NaN is false, and the sum of the two zeros is the positive one.
                const auto v = hn::LoadU(d, from + x), most = hn::Set(d, kLatest);
                const auto upper = hn::IfThenElse(hn::Lt(v, most), v, most);
                hn::StoreU(hn::Add(hn::Max(upper, hn::Neg(most)), hn::Zero(d)), d, to + x);
            });
    }
}

/** A pixel and its time, as a number that grows with the time. */
struct TimedPixel {
    uint32_t order;
    int32_t offset;

    static TimedPixel of(float time, ptrdiff_t offset) {
        constexpr uint32_t kSign = 0x80000000;
        uint32_t bits;
        __builtin_memcpy(&bits, &time, sizeof bits);
        return {(bits & kSign) != 0 ? ~bits : bits | kSign, static_cast<int32_t>(offset)};
    }
};

/** Sorts by one byte of the order and keeps the order of equal ones; false where all are equal and nothing is done. */
bool sortByByte(const TimedPixel* from, TimedPixel* to, int32_t count, int32_t byte) {
    constexpr int32_t kValues = 256;
    int32_t places[kValues] = {};
    const auto digit = [=](const TimedPixel& pixel) { return pixel.order >> (8 * byte) & (kValues - 1); };
    for (int32_t i = 0; i < count; ++i)
        ++places[digit(from[i])];
    if (places[digit(from[0])] == count)
        return false;
    int32_t next = 0;
    for (int32_t& place : places) {
        const int32_t length = place;
        place = next;
        next += length;
    }
    for (int32_t i = 0; i < count; ++i)
        to[places[digit(from[i])]++] = from[i];
    return true;
}

/** The slope towards the earlier of the two neighbours, which is restored before the pixel; 0 where both are later. */
float slope(float before, float time, float after) {
    if (before <= after)
        return before < time ? time - before : 0;
    return after < time ? after - time : 0;
}

/** Lists the pixels to restore: the earliest first, and of those of one time the first by rows. */
Status listUnknowns(const InpaintRecord& state, Image<const uint8_t> mask) {
    const int32_t count = state.unknownCount;
    const auto memory = Owned<TimedPixel>::forObjects(int64_t{2} * count);
    if (!memory)
        return StatusMemoryAllocation;
    TimedPixel *pixels = memory.get(), *others = pixels + count, *next = pixels;
    for (int32_t y = state.part.y; y < state.part.y + state.part.height; ++y)
        forSetPixels(
            mask.row(y), state.roi.width, [&](int32_t x) __attribute__((always_inline)) {
                const ptrdiff_t offset = state.offsetOf(x, y);
                *next++ = TimedPixel::of(state.times[offset], offset);
            });
    for (int32_t byte = 0; byte < 4; ++byte)
        if (sortByByte(pixels, others, count, byte)) {
            TimedPixel* const sorted = others;
            others = pixels;
            pixels = sorted;
        }
    for (int32_t i = 0; i < count; ++i) {
        const int32_t offset = pixels[i].offset;
        const auto place = static_cast<uint32_t>(offset - state.first), stride = static_cast<uint32_t>(state.stride);
        const float* const time = state.times + offset;
        state.unknowns[i] = {state.part.x + static_cast<int32_t>(place % stride),
                             state.part.y + static_cast<int32_t>(place / stride),
                             offset,
                             *time,
                             slope(time[-1], *time, time[1]),
                             slope(time[-state.stride], *time, time[state.stride])};
    }
    return StatusOk;
}

/** Makes a state. Its sizes are computed in 64 bits: those that are too large are more than there is memory for. */
Status makeState(Owned<InpaintRecord>& state, int32_t channels, Image<const float> distance, Image<const uint8_t> mask,
                 RoiSize roi, float radius, Method method) {
    const auto pixels = MaskPixels::of(mask, roi);
    Reach reach{};
    int64_t taps = 0, stride = 0, planePixels = 0;
    if (pixels.count > 0) {
        reach = Reach::of(pixels, roi, radius);
        forNeighbourRows(reach, radius, [&](int32_t, int32_t columns) { taps += columns / (kTapLanes / 2) + 1; });
        stride = alignUp(int64_t{reach.part.width} + 2 * int64_t{reach.columns} + kTapLanes, int64_t{16});
        planePixels = stride * (int64_t{reach.part.height} + 2 * int64_t{reach.rows});
    }
    if (HWY_MAX(HWY_MAX(taps, pixels.count), channels * planePixels) > INT32_MAX)
        return StatusMemoryAllocation;
    if (Status status = newState(state, StateArray{&InpaintRecord::taps, static_cast<int32_t>(taps)},
                                 StateArray{&InpaintRecord::unknowns, static_cast<int32_t>(pixels.count)},
                                 StateArray{&InpaintRecord::times, static_cast<int32_t>(planePixels)},
                                 StateArray{&InpaintRecord::values, static_cast<int32_t>(channels * planePixels)}))
        return status;
    state->channels = channels;
    state->roi = roi;
    state->method = method;
    state->part = reach.part;
    state->stride = static_cast<ptrdiff_t>(stride);
    state->pixels = static_cast<ptrdiff_t>(planePixels);
    state->first = static_cast<ptrdiff_t>(reach.rows * stride + reach.columns);
    state->tapsCount = static_cast<int32_t>(taps);
    state->unknownCount = static_cast<int32_t>(pixels.count);
    if (pixels.count == 0)
        return StatusOk;
    makeTaps(*state, reach, radius);
    makeTimes(*state, reach, distance);
    __builtin_memset(state->values, 0, static_cast<size_t>(channels * planePixels));
    return listUnknowns(*state, mask);
}

template <int32_t kChannels>
Status initAlloc(InpaintState** result, const float* distance, int32_t distanceStep, const uint8_t* mask,
                 int32_t maskStep, RoiSize roi, float radius, int32_t method) {
    const Image<const float> times{distance, distanceStep};
    const Image<const uint8_t> unknown{mask, maskStep};
    if (Status status = Check()
                            .pointers(result, times, unknown)
                            .roi(roi)
                            .steps(roi.width, unknown, times)
                            .require(method == 0 || method == 1, StatusBadArgument)
                            .require(radius >= 1, StatusBadArgument))
        return status;
    Owned<InpaintRecord> state;
    Status status = StatusOk;
    inUsualModes(
        [&] { status = makeState(state, kChannels, times, unknown, roi, radius, static_cast<Method>(method)); });
    if (status == StatusOk)
        *result = reinterpret_cast<InpaintState*>(state.keep());
    return status;
}

}  // namespace

VEKCV_BIND(vekiInpaintInitAlloc_8u_C1R, initAlloc<1>);
VEKCV_BIND(vekiInpaintInitAlloc_8u_C3R, initAlloc<3>);
VEKCV_BIND(vekiInpaintFree_8u_C1R, freeState);
VEKCV_BIND(vekiInpaintFree_8u_C3R, freeState);
}  // namespace VEKCV_VARIANT
