// Gradient segmentation.
#include "bind.h"
#include "boundaries.h"
#include "check.h"
#include "level_queue.h"
#include "neighbours.h"
#include "work_buffer.h"

namespace VEKCV_VARIANT {
namespace {

constexpr int32_t kBoundaries4 = 64, kBoundaries8 = 128;  // bits of the flag

/** The marker of pixels in the queue, and of those that are in no segment. */
constexpr uint8_t kReserved = 255;

bool isLabel(uint8_t marker) {
    return static_cast<uint8_t>(marker - 1) < kReserved - 1;
}

/** For each difference, by how much such a neighbour lowers the level of a pixel: 256 * 2^(-difference / 32). */
struct Weights {
    uint16_t of[256];

    constexpr Weights() : of() {
        constexpr double kRatio = 0.97857206208770013451;  // 2^(-1 / 32)
        double weight = 256;
        for (uint16_t& rounded : of) {
            rounded = static_cast<uint16_t>(weight + 0.5);
            weight *= kRatio;
        }
    }
};
constexpr Weights kWeights;

/** The place in memory of a pixel during the growth, 2 or 4 bytes. */
template <int32_t kChannels>
struct Cell {
    uint8_t marker, colour[kChannels];
};

/** The largest of the differences of the channels. */
template <int32_t kChannels>
HWY_INLINE int32_t difference(const Cell<kChannels>& a, const Cell<kChannels>& b) {
    int32_t most = 0;
    for (int32_t channel = 0; channel < kChannels; ++channel) {
        const int32_t change = a.colour[channel] - b.colour[channel];
        most = HWY_MAX(most, change < 0 ? -change : change);
    }
    return most;
}

/**
 * The growth of the markers. Cells have a frame of reserved markers, which between two rows is one cell wide. An image
 * of one column lies there as a row. The frame of a row has no cells above and below, which would not fit the buffer:
 * there the distance to the next row is 0, and a pixel takes the place of its neighbours above and below. It changes
 * nothing that way: it has no label when its neighbours are asked for theirs, and has one when those without are
 * queued.
 */
template <int32_t kChannels>
class Growth {
    using Pixel = Cell<kChannels>;

  public:
    Growth(RoiSize roi, Scratch scratch)
        : roi_(roi),
          width_(isLine() ? ptrdiff_t{roi.width} * roi.height : roi.width),
          height_(isLine() ? 1 : roi.height),
          stride_(isLine() ? 0 : width_ + 1),
          queue_(scratch.take<uint32_t>((width_ + 1) * height_)),
          cells_(scratch.take<Pixel>((width_ + 1) * height_ + 2 * stride_ + 1) + stride_ + 1) {}

    /** Whether there is only one row or column; then neighbours along diagonals do not exist either. */
    bool isLine() const { return roi_.width == 1 || roi_.height == 1; }

    void load(Image<const uint8_t, kChannels> source, Image<const uint8_t> markers) {
        for (ptrdiff_t i = -1; i < stride_; ++i)
            cells_[i - stride_].marker = cells_[height_ * stride_ + i].marker = kReserved;
        for (ptrdiff_t y = 0; y <= height_; ++y)
            cells_[y * (width_ + 1) - 1].marker = kReserved;
        for (ptrdiff_t y = 0; y < roi_.height; ++y) {
            const uint8_t *const labels = markers.row(y), *const colours = source.row(y);
            Pixel* const cells = row(y);
            for (ptrdiff_t x = 0; x < roi_.width; ++x) {
                cells[x].marker = labels[x];
                __builtin_memcpy(cells[x].colour, colours + kChannels * x, kChannels);
            }
        }
    }

    void store(Image<uint8_t> markers) const {
        for (ptrdiff_t y = 0; y < roi_.height; ++y)
            for (ptrdiff_t x = 0; x < roi_.width; ++x)
                markers.row(y)[x] = row(y)[x].marker;
    }

    /** A pixel is queued as soon as a neighbour has a label, so that only those of the beginning may have several. */
    template <bool kAllNeighbours>
    HWY_NOINLINE void run() {
        const auto neighbours = Neighbours<kAllNeighbours>::of(stride_);
        for (ptrdiff_t y = 0; y < height_; ++y)
            for (Pixel *cell = cells_ + y * stride_, *const end = cell + width_; cell != end; ++cell)
                if (cell->marker == 0)
                    pushAtEdge(cell, neighbours);
        while (!queue_.isEmpty()) {
            Pixel* const cell = cells_ + queue_.pop();
            cell->marker = labelFor(cell, neighbours);
            for (const ptrdiff_t offset : neighbours.offsets)
                if (cell[offset].marker == 0)
                    push(cell + offset, kWeights.of[difference(*cell, cell[offset])]);
        }
    }

  private:
    Pixel* row(ptrdiff_t y) const { return cells_ + y * (roi_.width == 1 ? 1 : stride_); }

    HWY_INLINE void push(Pixel* cell, int32_t weight) {
        queue_.push(static_cast<uint32_t>(cell - cells_), static_cast<uint32_t>(HWY_MAX(256 - weight, 0)));
        cell->marker = kReserved;
    }

    /** Queues a pixel if it has neighbours with labels. */
    template <bool kAllNeighbours>
    void pushAtEdge(Pixel* cell, const Neighbours<kAllNeighbours>& neighbours) {
        int32_t weight = 0;
        for (const ptrdiff_t offset : neighbours.offsets)
            if (isLabel(cell[offset].marker))
                weight += kWeights.of[difference(*cell, cell[offset])];
        if (weight > 0)
            push(cell, weight);
    }

    /** The label of the neighbour that differs least. Mostly all have the same. */
    template <bool kAllNeighbours>
    HWY_INLINE static uint8_t labelFor(const Pixel* cell, const Neighbours<kAllNeighbours>& neighbours) {
        // Reserved markers and 0 come behind all labels where 1 is subtracted, and before them where 1 is added.
        uint8_t least = 255, most = 0;
        for (const ptrdiff_t offset : neighbours.offsets) {
            const uint8_t marker = cell[offset].marker;
            least = HWY_MIN(least, static_cast<uint8_t>(marker - 1));
            most = HWY_MAX(most, static_cast<uint8_t>(marker + 1));
        }
        return least + 1 == most - 1 ? static_cast<uint8_t>(least + 1) : nearestLabel(cell, neighbours);
    }

    template <bool kAllNeighbours>
    HWY_NOINLINE static uint8_t nearestLabel(const Pixel* cell, const Neighbours<kAllNeighbours>& neighbours) {
        int32_t least = 256;
        uint8_t label = 0;
        for (const ptrdiff_t offset : neighbours.offsets)
            if (isLabel(cell[offset].marker) && difference(*cell, cell[offset]) < least) {
                least = difference(*cell, cell[offset]);
                label = cell[offset].marker;
            }
        return label;
    }

    RoiSize roi_;
    ptrdiff_t width_, height_, stride_;
    LevelQueue queue_;
    Pixel* cells_;  // of the first pixel
};

int64_t bufferBytes(RoiSize roi) {
    const int64_t pixels = int64_t{roi.width} * roi.height;
    if (pixels > INT32_MAX)  // too large already, and several times that may not fit 64 bits
        return pixels;
    return pixels * 13 + 103;
}

template <int32_t kChannels>
Status segmentGradient(const uint8_t* source, int32_t sourceStep, uint8_t* markers, int32_t markersStep, RoiSize roi,
                       int32_t norm, int32_t flag, uint8_t* buffer) {
    const Image<const uint8_t, kChannels> colours{source, sourceStep};
    const Image<uint8_t> labels{markers, markersStep};
    if (Status status = Check()
                            .pointers(colours, labels, buffer)
                            .roi(roi)
                            .stepLengths(roi.width, colours, labels)
                            .require(norm == NormL1 || norm == NormInf, StatusBadArgument))
        return status;
    Growth<kChannels> growth(roi, Scratch(buffer, bufferBytes(roi)));
    growth.load(colours, {markers, markersStep});
    norm == NormL1 || growth.isLine() ? growth.template run<false>() : growth.template run<true>();
    growth.store(labels);
    if ((flag & kBoundaries4) != 0)
        markBoundaries<false>(labels, roi, kReserved);
    if ((flag & kBoundaries8) != 0)
        markBoundaries<true>(labels, roi, kReserved);
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiSegmentGradient_8u_C1IR, segmentGradient<1>);
VEKCV_BIND(vekiSegmentGradient_8u_C3IR, segmentGradient<3>);
VEKCV_BIND(vekiSegmentGradientGetBufferSize_8u_C1R, roiBufferSize<bufferBytes>);
VEKCV_BIND(vekiSegmentGradientGetBufferSize_8u_C3R, roiBufferSize<bufferBytes>);
}  // namespace VEKCV_VARIANT
