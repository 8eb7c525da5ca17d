// Canny edge detector.
#include "bind.h"
#include "check.h"
#include "mask_bits.h"
#include "parallel.h"
#include "pixelwise.h"
#include "row_ring.h"

namespace VEKCV_VARIANT {
namespace {

/** Bytes of the map: what a pixel is; 0 is neither. Only edges have the lowest bit set. */
constexpr uint8_t kCandidate = 0x80, kEdge = 0xFF;

/** tan(pi / 8) and tan(3 * pi / 8), between which a gradient is diagonal. */
constexpr float kFlat = 0.41421357F, kSteep = 2.4142137F;

/** How magnitudes are stored: those of 16-bit derivatives minus 32768, which fits int16_t and keeps their order. */
template <typename T>
struct Magnitudes;

template <>
struct Magnitudes<float> {
    using Element = float;
    static constexpr float kNone = 0;

    float low, high;

    Magnitudes(float lowThreshold, float highThreshold) : low(lowThreshold), high(highThreshold) {}

    template <typename D>
    HWY_INLINE static hn::Vec<D> of(D /*d*/, hn::Vec<D> dx, hn::Vec<D> dy) {
        return hn::Add(hn::Abs(dx), hn::Abs(dy));
    }
};

template <>
struct Magnitudes<int16_t> {
    using Element = int16_t;
    static constexpr int16_t kNone = -32768;

    int16_t low, high;

    /** No magnitude is above 65535: a high threshold of that leaves no edge, whatever the low one is. */
    Magnitudes(float lowThreshold, float highThreshold) : low(stored(lowThreshold)), high(stored(highThreshold)) {}

    template <typename D>
    HWY_INLINE static hn::Vec<D> of(D d, hn::Vec<D> dx, hn::Vec<D> dy) {
        const hn::RebindToUnsigned<D> magnitudes;
        const auto sum = hn::SaturatedAdd(hn::BitCast(magnitudes, hn::Abs(dx)), hn::BitCast(magnitudes, hn::Abs(dy)));
        return hn::BitCast(d, hn::Xor(sum, hn::Set(magnitudes, 0x8000)));
    }

  private:
    static int16_t stored(float threshold) {
        return static_cast<int16_t>((threshold < 65535.0F ? static_cast<int32_t>(threshold) : 65535) - 32768);
    }
};

/** Gradients within 22.5 degrees of the direction of rows, and those within 22.5 degrees of that of columns. */
template <typename D>
struct Directions {
    hn::Mask<D> horizontal, vertical;
};

template <typename D>
HWY_INLINE Directions<D> directionsOf(D d, hn::Vec<D> dx, hn::Vec<D> dy) {
    if constexpr (hwy::IsFloat<hn::TFromD<D>>()) {
        const auto ax = hn::Abs(dx), ay = hn::Abs(dy);
        return {hn::Lt(ay, hn::Mul(ax, hn::Set(d, kFlat))), hn::Lt(hn::Mul(ax, hn::Set(d, kSteep)), ay)};
    } else if constexpr (hn::MaxLanes(D()) < hn::MaxLanes(hn::ScalableTag<int16_t>())) {
        const hn::Rebind<int32_t, D> wide;
        const hn::Rebind<float, D> floats;
        const auto of = directionsOf(floats, hn::ConvertTo(floats, hn::PromoteTo(wide, dx)),
                                     hn::ConvertTo(floats, hn::PromoteTo(wide, dy)));
        const auto narrow = [=](auto mask) {
            return hn::MaskFromVec(hn::DemoteTo(d, hn::BitCast(wide, hn::VecFromMask(floats, mask))));
        };
        return {narrow(of.horizontal), narrow(of.vertical)};
    } else {
        const hn::Half<D> half;
        const auto lower = directionsOf(half, hn::LowerHalf(half, dx), hn::LowerHalf(half, dy));
        const auto upper = directionsOf(half, hn::UpperHalf(half, dx), hn::UpperHalf(half, dy));
        const auto join = [=](auto upperMask, auto lowerMask) {
            return hn::MaskFromVec(hn::Combine(d, hn::VecFromMask(half, upperMask), hn::VecFromMask(half, lowerMask)));
        };
        return {join(upper.horizontal, lower.horizontal), join(upper.vertical, lower.vertical)};
    }
}

/** Writes a row of the map: the candidates and edges of a row, from its magnitudes and those of the rows around it. */
template <typename T>
struct MapRule {
    using Element = typename Magnitudes<T>::Element;

    const Element *above, *here, *below;  // magnitudes, from the one left of the row on
    const T *dx, *dy;
    Element high;

    template <typename Bytes>
    HWY_INLINE hn::Vec<Bytes> operator()(Bytes bytes, ptrdiff_t x) const {
        if constexpr (hn::MaxLanes(Bytes()) > hn::MaxLanes(hn::ScalableTag<T>()))
            return byHalves(bytes, x, *this);
        else
            return classify(bytes, hn::Rebind<T, Bytes>(), x);
    }

  private:
    template <typename Bytes, typename D>
    HWY_INLINE hn::Vec<Bytes> classify(Bytes bytes, D d, ptrdiff_t x) const {
        const auto m = hn::LoadU(d, here + x + 1), none = hn::Set(d, Magnitudes<T>::kNone);
        const auto isNone = hn::Eq(m, none);
        if (hn::AllTrue(d, isNone))
            return hn::Zero(bytes);

        const hn::RebindToSigned<D> integers;
        const auto isBelow = [=](const Element* neighbours) { return hn::Lt(hn::LoadU(d, neighbours + x), m); };
        const auto isNotAbove = [=](const Element* neighbours) {
            const auto neighbour = hn::LoadU(d, neighbours + x);
            if constexpr (hwy::IsFloat<T>())
                return hn::Le(neighbour, m);  // false for NaN
            else
                return hn::Not(hn::Lt(m, neighbour));
        };
        const auto gradientX = hn::LoadU(d, dx + x), gradientY = hn::LoadU(d, dy + x);
        const auto directions = directionsOf(d, gradientX, gradientY);
        const auto signs = hn::BitCast(integers, hn::Xor(gradientX, gradientY));
        const auto hasTwoSigns = hn::RebindMask(d, hn::Lt(signs, hn::Zero(integers)));
        const auto onRow = hn::And(isBelow(here), isNotAbove(here + 2));
        const auto onColumn = hn::And(isBelow(above + 1), isNotAbove(below + 1));
        const auto falling = hn::And(isBelow(above), isBelow(below + 2));
        const auto rising = hn::And(isBelow(above + 2), isBelow(below));
        const auto onDiagonal = hn::Or(hn::And(hasTwoSigns, rising), hn::AndNot(hasTwoSigns, falling));
        const auto isLargest = hn::Or(
            hn::And(directions.horizontal, onRow),
            hn::AndNot(directions.horizontal,
                       hn::Or(hn::And(directions.vertical, onColumn), hn::AndNot(directions.vertical, onDiagonal))));
        const auto isCandidate = hn::AndNot(isNone, isLargest);
        const auto isEdge = hn::And(isCandidate, hn::Lt(hn::Set(d, high), m));

        const auto value = [=](auto mask, uint8_t byte) {
            return hn::And(hn::BitCast(integers, hn::VecFromMask(d, mask)), hn::Set(integers, byte));
        };
        return hn::DemoteTo(bytes, hn::Or(value(isCandidate, kCandidate), value(isEdge, kEdge)));
    }
};

/**
 * The map of candidates and edges, with a frame of one pixel, and a stack of the places of pixels that became edges
 * and whose neighbours are still to be visited. The size of a map that has a work buffer fits 31 bits.
 */
class EdgeMap {
  public:
    using Place = uint32_t;

    EdgeMap(uint8_t* map, RoiSize roi, Place* stack) : map_(map), pitch_(ptrdiff_t{roi.width} + 2), stack_(stack) {
        clear(-1);
        clear(roi.height);
        for (ptrdiff_t y = 0; y < roi.height; ++y)
            row(y)[-1] = row(y)[roi.width] = 0;
    }

    uint8_t* row(ptrdiff_t y) const { return map_ + (y + 1) * pitch_ + 1; }

    /** Makes edges of the candidates of a row that touch an edge. The rows above and below must be in the map. */
    void touchRow(ptrdiff_t y, ptrdiff_t width) {
        uint8_t* const pixels = row(y);
        forHalves(
            hn::ScalableTag<uint8_t>(), 0, width, [ =, this ](auto d, ptrdiff_t x) __attribute__((always_inline)) {
                const auto isCandidate = hn::Eq(hn::LoadU(d, pixels + x), hn::Set(d, kCandidate));
                if (!hn::AllFalse(d, isCandidate))
                    touchVector(d, pixels + x, isCandidate);
            });
    }

    /** Makes edges of all candidates that are connected with an edge that touchRow made. */
    void followEdges() {
        const ptrdiff_t neighbours[] = {-pitch_ - 1, -pitch_, -pitch_ + 1, -1, 1, pitch_ - 1, pitch_, pitch_ + 1};
        while (depth_ != 0) {
            uint8_t* const pixel = map_ + stack_[--depth_];
            for (const ptrdiff_t neighbour : neighbours)
                if (pixel[neighbour] == kCandidate)
                    makeEdge(pixel + neighbour);
        }
    }

  private:
    void clear(ptrdiff_t y) {
        for (ptrdiff_t x = -1; x < pitch_ - 1; ++x)
            row(y)[x] = 0;
    }

    void makeEdge(uint8_t* pixel) {
        *pixel = kEdge;
        stack_[depth_++] = static_cast<Place>(pixel - map_);
    }

    template <typename D>
    HWY_INLINE void touchVector(D d, uint8_t* pixels, hn::Mask<D> isCandidate) {
        const auto inRow = [=](const uint8_t* there) {
            return hn::Or(hn::LoadU(d, there - 1), hn::LoadU(d, there + 1));
        };
        const auto inRows = [=](const uint8_t* there) { return hn::Or(inRow(there), hn::LoadU(d, there)); };
        const auto around = hn::Or(inRow(pixels), hn::Or(inRows(pixels - pitch_), inRows(pixels + pitch_)));
        const auto touches = hn::And(isCandidate, hn::TestBit(around, hn::Set(d, uint8_t{1})));
        if (hn::AllFalse(d, touches))
            return;
        for (uint64_t bits = maskBits(d, touches); bits != 0; bits &= bits - 1)
            makeEdge(pixels + __builtin_ctzll(bits));
    }

    uint8_t* map_;
    ptrdiff_t pitch_;
    Place* stack_;
    size_t depth_ = 0;
};

int64_t bufferBytes(RoiSize roi) {
    const int64_t mapBytes = (int64_t{roi.width} + 2) * (int64_t{roi.height} + 2);
    if (mapBytes > INT32_MAX)  // too large already, and several times that may not fit 64 bits
        return mapBytes;
    const bool isWide = roi.width >= 65533 || roi.height >= 65533;
    return mapBytes * (isWide ? 9 : 5) + 16 * int64_t{roi.width} + 160;
}

/** Writes the rows of the map that follow from the derivatives alone. */
template <typename T>
struct CandidateRows {
    using Element = typename Magnitudes<T>::Element;

    Image<const T> derivativeX, derivativeY;
    RoiSize roi;
    Magnitudes<T> thresholds;

    ptrdiff_t pitch() const { return ptrdiff_t{roi.width} + 2; }

    /** What a ring of the magnitudes of the rows above, at and below a row takes of scratch memory. */
    int64_t bytes() const {
        return alignUp(3 * int64_t{sizeof(Element*)}, Scratch::kAlignment) +
               3 * alignUp(pitch() * int64_t{sizeof(Element)}, Scratch::kAlignment);
    }

    /** Writes `rows` rows from `first` on, and calls afterRow(y) after each. */
    template <typename AfterRow>
    void write(Scratch scratch, ptrdiff_t first, ptrdiff_t rows, const EdgeMap& map, AfterRow afterRow) const {
        RowRing<Element> window(scratch, 3, pitch());
        for (int32_t k = 0; k < 3; ++k)
            clear(window[k]);
        if (first > 0)
            writeMagnitudes(first - 1, window.bottom());
        window.advance();
        writeMagnitudes(first, window.bottom());
        for (ptrdiff_t y = first; y < first + rows; ++y) {
            window.advance();
            writeMagnitudes(y + 1, window.bottom());
            writeRow<Stores::kCached>(
                map.row(y), roi.width,
                MapRule<T>{window[0], window[1], window[2], derivativeX.row(y), derivativeY.row(y), thresholds.high});
            afterRow(y);
        }
    }

  private:
    void clear(Element* row) const {
        for (ptrdiff_t x = 0; x < pitch(); ++x)
            row[x] = Magnitudes<T>::kNone;
    }

    void writeMagnitudes(ptrdiff_t y, Element* row) const {
        if (y == roi.height)
            return clear(row);
        const T *const dx = derivativeX.row(y), *const dy = derivativeY.row(y);
        writeRow<Stores::kCached>(row + 1, roi.width, [=, low = thresholds.low](auto d, ptrdiff_t x) {
            const auto m = Magnitudes<T>::of(d, hn::LoadU(d, dx + x), hn::LoadU(d, dy + x));
            return hn::IfThenElse(hn::Lt(m, hn::Set(d, low)), hn::Set(d, Magnitudes<T>::kNone), m);
        });
    }
};

template <typename T>
void findEdges(Image<const T> derivativeX, Image<const T> derivativeY, Image<uint8_t> out, RoiSize roi,
               Magnitudes<T> thresholds, uint8_t* buffer) {
    constexpr ParallelFrom kFrom{65536};
    const CandidateRows<T> candidates{derivativeX, derivativeY, roi, thresholds};
    Scratch scratch(buffer, bufferBytes(roi));
    auto* const map = scratch.take<uint8_t>(candidates.pitch() * (ptrdiff_t{roi.height} + 2));
    const Scratch window(scratch.take<uint8_t>(candidates.bytes()), candidates.bytes());
    const int64_t stackBytes = scratch.bytes();
    auto* const stack = scratch.take<EdgeMap::Place>(0);
    EdgeMap edges(map, roi, stack);

    // A team needs rows of magnitudes for each thread, and takes them from the stack, which is empty until it is done.
    const int64_t mostThreads = HWY_MIN(stackBytes / candidates.bytes(), int64_t{INT32_MAX});
    if (isForTeam(roi, kFrom) && mostThreads > 1) {
        const auto writeStripe = [&](int32_t thread, int32_t first, int32_t rows) {
            auto* const memory = reinterpret_cast<uint8_t*>(stack) + thread * candidates.bytes();
            candidates.write({memory, candidates.bytes()}, first, rows, edges, [](ptrdiff_t) {});
        };
        forThreadStripes(true, roi.height, writeStripe, static_cast<int32_t>(mostThreads));
        for (ptrdiff_t y = 0; y < roi.height - 1; ++y)
            edges.touchRow(y, roi.width);
    } else {
        candidates.write(window, 0, roi.height, edges, [&](ptrdiff_t y) {
            if (y > 0)
                edges.touchRow(y - 1, roi.width);
        });
    }
    edges.touchRow(roi.height - 1, roi.width);
    edges.followEdges();

    forRowStripes(roi, kFrom, [&, width = ptrdiff_t{roi.width}](int32_t first, int32_t rows) {
        for (ptrdiff_t y = first; y < first + rows; ++y)
            writeRow<Stores::kCached>(out.row(y), width, [row = edges.row(y)](auto d, ptrdiff_t x) {
                return hn::VecFromMask(d, hn::Eq(hn::LoadU(d, row + x), hn::Set(d, kEdge)));
            });
    });
}

template <typename T>
Status canny(const T* derivativeX, int32_t derivativeXStep, const T* derivativeY, int32_t derivativeYStep,
             uint8_t* destination, int32_t destinationStep, RoiSize roi, float lowThreshold, float highThreshold,
             uint8_t* buffer) {
    const Image<const T> dx{derivativeX, derivativeXStep}, dy{derivativeY, derivativeYStep};
    const Image<uint8_t> out{destination, destinationStep};
    if (Status status = Check()
                            .pointers(dx, dy, out, buffer)
                            .roi(roi)
                            .steps(roi.width, dx, dy, out)
                            .require(lowThreshold >= 0 && lowThreshold <= highThreshold, StatusBadArgument))
        return status;
    findEdges(dx, dy, out, roi, Magnitudes<T>(lowThreshold, highThreshold), buffer);
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiCannyGetSize, roiBufferSize<bufferBytes>);
VEKCV_BIND(vekiCanny_16s8u_C1R, canny);
VEKCV_BIND(vekiCanny_32f8u_C1R, canny);
}  // namespace VEKCV_VARIANT
