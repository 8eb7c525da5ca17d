// Morphological reconstruction. Comments speak of dilation; erosion is the same with the order of values reversed.
#include "bind.h"
#include "check.h"
#include "mask_bits.h"
#include "pixelwise.h"
#include "reconstruct_rows.h"
#include "work_buffer.h"

namespace VEKCV_VARIANT {
namespace {

/** A first-in first-out queue of the places of pixels. Those that do not fit are lost, and it tells so. */
class PixelQueue {
  public:
    struct Place {
        int32_t x, y;
    };

    PixelQueue(Place* places, int64_t capacity) : places_(places), capacity_(static_cast<size_t>(capacity)) {}

    void push(Place place) {
        if (count_ == capacity_) {
            hasLost_ = true;
            return;
        }
        places_[end_] = place;
        end_ = next(end_);
        ++count_;
    }
    Place pop() {
        const Place place = places_[begin_];
        begin_ = next(begin_);
        --count_;
        return place;
    }
    bool isEmpty() const { return count_ == 0; }

    bool hasLost() const { return hasLost_; }
    void forgetLosses() { hasLost_ = false; }

  private:
    size_t next(size_t index) const { return index + 1 == capacity_ ? 0 : index + 1; }

    Place* places_;
    size_t capacity_, begin_ = 0, end_ = 0, count_ = 0;
    bool hasLost_ = false;
};

/** The order in which a scan visits rows. */
enum class Order { kDown, kUp };

constexpr Order oppositeOf(Order order) {
    return order == Order::kDown ? Order::kUp : Order::kDown;
}

/** Vectors of a row that changed: where they lie, and how many they are. */
struct Changes {
    Stretch stretch;
    int64_t count;
};

/**
 * Scans of vectors alternate down and up as long as they change much, and the queue does the rest. Each change makes a
 * pixel larger and no larger than its bound, so there is an end. When the queue loses pixels, all begins again with
 * what was reached; it has then been as long as its capacity, so the scans take no more than a constant times as long.
 */
template <typename Rule, typename T>
class Reconstruction {
    static constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(hn::ScalableTag<T>()));

  public:
    Reconstruction(Image<const T> source, Image<T> marker, RoiSize roi, int32_t norm, PixelQueue queue)
        : source_(source),
          marker_(marker),
          width_(roi.width),
          height_(roi.height),
          reach_(norm == NormInf ? 1 : 0),
          queue_(queue) {}

    void run() {
        // Where a scan changes no more vectors than these, what remains is quicker by the queue.
        const int64_t fewVectors = 8 + int64_t{width_} * height_ / (32 * kLanes);
        do {
            queue_.forgetLosses();
            scanAll();
            Order order = Order::kUp;
            int64_t changes = scan(order);
            while (changes > fewVectors) {
                order = oppositeOf(order);
                changes = scan(order);
            }
            if (changes > 0)
                fillQueue(oppositeOf(order));
            visitQueue();
        } while (queue_.hasLost());
    }

  private:
    /** visit(y, previous) for all rows but the first one in this order. */
    template <typename Visit>
    void forRows(Order order, const Visit& visit) {
        for (ptrdiff_t i = 1; i < height_; ++i)
            order == Order::kDown ? visit(i, i - 1) : visit(height_ - 1 - i, height_ - i);
    }

    /** Cuts the marker to the source, and spreads all pixels down and along their rows. */
    void scanAll() {
        const auto spread = [this](ptrdiff_t y) {
            spreadAlongRow<Rule>(source_.row(y), marker_.row(y), width_, {0, width_});
        };
        cut(0);
        spread(0);
        forRows(Order::kDown, [&](ptrdiff_t y, ptrdiff_t previous) {
            cut(y);
            join<false>(y, previous);
            spread(y);
        });
    }

    void cut(ptrdiff_t y) {
        const T* const source = source_.row(y);
        T* const row = marker_.row(y);
        writeRow<Stores::kCached>(row, width_, [=](auto d, ptrdiff_t x) {
            return Rule::limit(loadBounds<Rule>(d, source + x), loadMarker<Rule>(d, row + x));
        });
    }

    /**
     * Spreads pixels to the rows that follow them in this order, and along those that change. Gives the number of
     * vectors that changed. All rows are stable by themselves, before and after.
     */
    int64_t scan(Order order) {
        int64_t count = 0;
        forRows(order, [&](ptrdiff_t y, ptrdiff_t previous) {
            const Changes changes = join<false>(y, previous);
            if (changes.count > 0)
                spreadAlongRow<Rule>(source_.row(y), marker_.row(y), width_, changes.stretch);
            count += changes.count;
        });
        return count;
    }

    /** Spreads pixels to the rows that follow them in this order; those that change go into the queue. */
    void fillQueue(Order order) {
        forRows(order, [&](ptrdiff_t y, ptrdiff_t previous) { join<true>(y, previous); });
    }

    /** Spreads the pixels of one row to a neighbouring one, y. */
    template <bool kFillsQueue>
    HWY_NOINLINE Changes join(ptrdiff_t y, ptrdiff_t neighbour) {
        const T *const source = source_.row(y), *const neighbours = marker_.row(neighbour);
        T* const row = marker_.row(y);
        const ptrdiff_t reach = reach_;
        Changes changes{{width_, 0}, 0};
        const auto joinTo = [&](auto d, ptrdiff_t x, auto reaching) __attribute__((always_inline)) {
            const auto before = hn::LoadU(d, row + x);
            const auto pixels = Rule::limit(loadBounds<Rule>(d, source + x), Rule::join(before, reaching));
            const auto isSame = hn::Eq(pixels, before);
            if (hn::AllTrue(d, isSame))
                return;
            hn::StoreU(pixels, d, row + x);
            changes.stretch.include(x, x + static_cast<ptrdiff_t>(hn::MaxLanes(d)));
            ++changes.count;
            if constexpr (kFillsQueue)
                pushChanged(d, x, y, isSame);
        };
        const auto joinVector = [&](auto d, ptrdiff_t x) __attribute__((always_inline)) {
            auto reaching = hn::LoadU(d, neighbours + x);
            if (reach > 0)
                reaching = Rule::join(reaching,
                                      Rule::join(hn::LoadU(d, neighbours + x - 1), hn::LoadU(d, neighbours + x + 1)));
            joinTo(d, x, reaching);
        };
        const auto joinPixel = [&](ptrdiff_t x) {
            const hn::CappedTag<T, 1> d;
            auto reaching = hn::LoadU(d, neighbours + x);
            for (ptrdiff_t i = HWY_MAX(x - reach, 0); i <= HWY_MIN(x + reach, width_ - 1); ++i)
                reaching = Rule::join(reaching, hn::LoadU(d, neighbours + i));
            joinTo(d, x, reaching);
        };
        // The last vector may repeat pixels: they do not change again. Those at the ends of the row lack neighbours.
        const bool isShort =
            !forOverlapping<16 / sizeof(T)>(hn::ScalableTag<T>(), reach, reach, width_ - reach, joinVector);
        for (ptrdiff_t x = 0; x < width_; x += isShort ? 1 : width_ - 1)
            joinPixel(x);
        return changes;
    }

    template <typename D>
    HWY_NOINLINE void pushChanged(D d, ptrdiff_t x, ptrdiff_t y, hn::Mask<D> isSame) {
        for (uint64_t bits = maskBits(d, hn::Not(isSame)); bits != 0; bits &= bits - 1)
            push(x + __builtin_ctzll(bits), y);
    }

    void push(ptrdiff_t x, ptrdiff_t y) { queue_.push({static_cast<int32_t>(x), static_cast<int32_t>(y)}); }

    /** Spreads the pixels of the queue to their neighbours, which follow them in the queue where they change. */
    void visitQueue() {
        while (!queue_.isEmpty()) {
            const PixelQueue::Place place = queue_.pop();
            const ptrdiff_t x = place.x, y = place.y;
            const T value = marker_.row(y)[x];
            const auto spread = [&](ptrdiff_t row, ptrdiff_t reach) {
                if (row >= 0 && row < height_)
                    spreadTo(row, HWY_MAX(x - reach, 0), HWY_MIN(x + reach, width_ - 1), value);
            };
            spread(y - 1, reach_);
            spread(y, 1);
            spread(y + 1, reach_);
        }
    }

    HWY_INLINE void spreadTo(ptrdiff_t y, ptrdiff_t first, ptrdiff_t last, T value) {
        const T* const source = source_.row(y);
        T* const row = marker_.row(y);
        for (ptrdiff_t x = first; x <= last; ++x) {
            const T reaching = limitOf<Rule>(boundOf(source[x]), value);
            if (Rule::isBeyond(reaching, row[x])) {
                row[x] = reaching;
                push(x, y);
            }
        }
    }

    Image<const T> source_;
    Image<T> marker_;
    ptrdiff_t width_, height_;
    ptrdiff_t reach_;  // columns by which a neighbour in another row may lie beside a pixel
    PixelQueue queue_;
};

/**
 * The queue is seldom longer than a few thousandths of the pixels. Its places are pairs of coordinates, so images may
 * have more than 2^31 pixels.
 */
int64_t queueCapacity(RoiSize roi) {
    return int64_t{roi.width} * roi.height / 32 + 1;
}

int64_t bufferBytes(RoiSize roi) {
    return queueCapacity(roi) * int64_t{sizeof(PixelQueue::Place)} + Scratch::kAlignment;
}

template <typename Rule, typename T>
Status reconstruct(const T* source, int32_t sourceStep, T* marker, int32_t markerStep, RoiSize roi, int32_t norm,
                   uint8_t* buffer) {
    const Image<const T> bounds{source, sourceStep};
    const Image<T> pixels{marker, markerStep};
    if (Status status = Check()
                            .pointers(bounds, pixels, buffer)
                            .roi(roi)
                            .steps(roi.width, bounds, pixels)
                            .require(norm == NormL1 || norm == NormInf, StatusBadArgument))
        return status;
    Scratch scratch(buffer, bufferBytes(roi));
    const int64_t capacity = queueCapacity(roi);
    const PixelQueue queue(scratch.take<PixelQueue::Place>(capacity), capacity);
    Reconstruction<Rule, T>(bounds, pixels, roi, norm, queue).run();
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiMorphReconstructDilate_8u_C1IR, reconstruct<Dilation>);
VEKCV_BIND(vekiMorphReconstructDilate_16u_C1IR, reconstruct<Dilation>);
VEKCV_BIND(vekiMorphReconstructDilate_32f_C1IR, reconstruct<Dilation>);
VEKCV_BIND(vekiMorphReconstructErode_8u_C1IR, reconstruct<Erosion>);
VEKCV_BIND(vekiMorphReconstructErode_16u_C1IR, reconstruct<Erosion>);
VEKCV_BIND(vekiMorphReconstructErode_32f_C1IR, reconstruct<Erosion>);
VEKCV_BIND(vekiMorphReconstructDilateGetBufferSize_8u_C1R, roiBufferSize<bufferBytes>);
VEKCV_BIND(vekiMorphReconstructDilateGetBufferSize_16u_C1R, roiBufferSize<bufferBytes>);
VEKCV_BIND(vekiMorphReconstructDilateGetBufferSize_32f_C1R, roiBufferSize<bufferBytes>);
VEKCV_BIND(vekiMorphReconstructErodeGetBufferSize_8u_C1R, roiBufferSize<bufferBytes>);
VEKCV_BIND(vekiMorphReconstructErodeGetBufferSize_16u_C1R, roiBufferSize<bufferBytes>);
VEKCV_BIND(vekiMorphReconstructErodeGetBufferSize_32f_C1R, roiBufferSize<bufferBytes>);
}  // namespace VEKCV_VARIANT
