#pragma once

#include <cmath>

#include "image.h"
#include "rest.h"
#include "rounding.h"
#include "set_pixels.h"
#include "work_buffer.h"

namespace VEKCV_VARIANT {

/** The axes of the accumulator, which has a row of cells for each angle. */
struct HoughAxes {
    double side, deltaRho, deltaTheta;
    int32_t lastRow, rhoCount;

    static HoughAxes of(RoiSize roi, float deltaRho, float deltaTheta) {
        const double side = static_cast<double>(roi.width) + roi.height;
        const auto counted = [](double count) { return count < INT32_MAX ? static_cast<int32_t>(count) : INT32_MAX; };
        return {side, deltaRho, deltaTheta, counted(3.14159 / deltaTheta),
                counted(static_cast<float>(2 * side + 1) / deltaRho)};
    }

    float thetaOf(int32_t row) const { return static_cast<float>(row * deltaTheta); }
    float rhoOf(int32_t cell) const { return static_cast<float>(cell * deltaRho - side); }
};

/**
 * Sine and cosine of an angle from 0 to 3.2, from their series around the nearest quarter of a turn. Those of the
 * standard library differ among processors and widths.
 */
struct SineAndCosine {
    double sine, cosine;

    static SineAndCosine of(double angle) {
        constexpr double kQuarterTurn = 1.57079632679489661923;
        const int32_t quarters = angle < kQuarterTurn / 2 ? 0 : angle < kQuarterTurn * 1.5 ? 1 : 2;
        const double r = angle - quarters * kQuarterTurn, square = r * r;
        double sine = 1, cosine = 1;
#pragma GCC unroll 8
        for (int32_t k = 16; k > 0; k -= 2) {
            sine = 1 - square * (1.0 / (k * (k + 1))) * sine;
            cosine = 1 - square * (1.0 / (k * (k - 1))) * cosine;
        }
        sine *= r;
        return quarters == 0   ? SineAndCosine{sine, cosine}
               : quarters == 1 ? SineAndCosine{cosine, -sine}
                               : SineAndCosine{-sine, -cosine};
    }
};

/** The cells that the points vote for in a row of the accumulator. */
struct CellRule {
    float alongX, alongY, offset, last;

    CellRule(const HoughAxes& axes, int32_t row) {
        const auto direction = SineAndCosine::of(row * axes.deltaTheta);
        alongX = static_cast<float>(direction.cosine / axes.deltaRho);
        alongY = static_cast<float>(direction.sine / axes.deltaRho);
        offset = static_cast<float>(axes.side / axes.deltaRho);
        // The largest float that is not above the last cell.
        last = static_cast<float>(axes.rhoCount - 1);
        if (static_cast<double>(last) > axes.rhoCount - 1)
            last = std::nextafter(last, 0.0F);
    }

    float ofY(float y) const { return y * alongY + offset; }

    /** Sums of floats may lie outside of the row even where exact ones do not. */
    template <typename D>
    HWY_INLINE hn::Vec<hn::Rebind<int32_t, D>> operator()(D d, hn::Vec<D> x, hn::Vec<D> termOfY) const {
        const auto cells = hn::Add(hn::Mul(x, hn::Set(d, alongX)), termOfY);
        return nearestIntegers(hn::Rebind<int32_t, D>(), hn::Max(hn::Min(cells, hn::Set(d, last)), hn::Zero(d)));
    }
};

/** The points of an image: their x row by row, and for each row that has some its y and the end of its points. */
class Points {
  public:
    Points(Scratch& scratch, Image<const uint8_t> image, RoiSize roi)
        : x_(scratch.take<float>(int64_t{roi.width} * roi.height)), rows_(scratch.take<Row>(roi.height)) {
        uint32_t count = 0;
        for (int32_t y = 0; y < roi.height; ++y) {
            uint32_t end = count;
            forSetPixels(
                image.row(y),
                roi.width, [&](int32_t x) __attribute__((always_inline)) { x_[end++] = static_cast<float>(x); });
            if (end > count)
                rows_[rowCount_++] = {static_cast<float>(y), end};
            count = end;
        }
    }

    /** Adds the votes of all points to either of two rows of the accumulator. */
    HWY_NOINLINE void vote(const CellRule& rule, int32_t* votes, int32_t* otherVotes) const {
        const hn::ScalableTag<float> d;
        constexpr auto kLanes = static_cast<uint32_t>(hn::MaxLanes(hn::ScalableTag<float>()));
        const CellRule local = rule;
        int32_t cells[kBlock + kLanes];
        uint32_t count = 0, point = 0;
        for (int32_t row = 0; row < rowCount_; ++row) {
            const auto termOfY = hn::Set(d, local.ofY(rows_[row].y));
            while (point < rows_[row].end) {
                const uint32_t taken = HWY_MIN(rows_[row].end - point, kBlock - count);
                // What the last vector has too much, the next one overwrites. Behind all points there is the rest of
                // the buffer.
                for (uint32_t i = 0; i < taken; i += kLanes)
                    hn::StoreU(local(d, hn::LoadU(d, x_ + point + i), termOfY), hn::Rebind<int32_t, decltype(d)>(),
                               cells + count + i);
                point += taken;
                count += taken;
                if (count == kBlock) {
                    voteOfBlock(cells, votes, otherVotes);
                    count = 0;
                }
            }
        }
        for (uint32_t i = 0; i < count; ++i)
            ++votes[cells[i]];
    }

  private:
    struct Row {
        float y;
        uint32_t end;
    };

    static constexpr uint32_t kBlock = 256;

    /**
     * Neighbouring points often vote for the same cell, and an addition to a cell has to wait for the one before it. So
     * the votes of points that lie apart take turns.
     */
    HWY_INLINE static void voteOfBlock(const int32_t* cells, int32_t* votes, int32_t* otherVotes) {
        constexpr uint32_t kParts = 8, kPart = kBlock / kParts;
        for (uint32_t i = 0; i < kPart; ++i) {
#pragma GCC unroll 8
            for (uint32_t part = 0; part < kParts; part += 2) {
                ++votes[cells[part * kPart + i]];
                ++otherVotes[cells[(part + 1) * kPart + i]];
            }
        }
    }

    float* x_;
    Row* rows_;
    int32_t rowCount_ = 0;
};

}  // namespace VEKCV_VARIANT
