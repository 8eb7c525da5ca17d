// Watershed segmentation.
#include <type_traits>

#include "bind.h"
#include "boundaries.h"
#include "check.h"
#include "neighbours.h"
#include "work_buffer.h"

namespace VEKCV_VARIANT {
namespace {

constexpr int32_t kBoundaries = 1, kLightIsLow = 2;  // bits of the flag

constexpr uint32_t kLevels = 256;

/** The marker of pixels in no segment, and of boundaries. */
template <typename T>
constexpr T kWall = static_cast<T>(~T{0});

/**
 * The image during the flood: cells of a label, in the lower bits, and a grey value above it, so that a look at a
 * neighbour touches one place in memory. There is a frame of walls; between two rows it is one wall wide.
 */
template <typename T>
class CellImage {
  public:
    using Cell = std::conditional_t<sizeof(T) == 1, uint16_t, uint32_t>;

    CellImage(RoiSize roi, Scratch& scratch)
        : width_(roi.width),
          height_(roi.height),
          stride_(width_ + 1),
          cells_(scratch.take<Cell>(stride_ * (height_ + 2) + 1)) {}

    static T labelOf(Cell cell) { return static_cast<T>(cell); }
    static uint32_t greyOf(Cell cell) { return cell >> kLabelBits; }

    /** Greys are XORed with the mask. */
    void load(Image<const uint8_t> source, Image<const T> markers, uint8_t greyMask) {
        for (ptrdiff_t i = 0; i < stride_; ++i)
            cells_[i] = row(height_)[i] = kWall<T>;
        for (ptrdiff_t y = 0; y <= height_; ++y)
            row(y)[-1] = kWall<T>;
        for (ptrdiff_t y = 0; y < height_; ++y) {
            const uint8_t* const greys = source.row(y);
            const T* const labels = markers.row(y);
            Cell* const cells = row(y);
            forHalves(
                hn::ScalableTag<Cell>(), 0, width_, [=](auto d, ptrdiff_t x) __attribute__((always_inline)) {
                    const hn::Rebind<uint8_t, decltype(d)> bytes;
                    const hn::Rebind<T, decltype(d)> narrow;
                    const auto grey = hn::PromoteTo(d, hn::Xor(hn::LoadU(bytes, greys + x), hn::Set(bytes, greyMask)));
                    const auto label = hn::PromoteTo(d, hn::LoadU(narrow, labels + x));
                    hn::StoreU(hn::Or(label, hn::ShiftLeft<kLabelBits>(grey)), d, cells + x);
                });
        }
    }

    void store(Image<T> markers) const {
        for (ptrdiff_t y = 0; y < height_; ++y) {
            const Cell* const cells = row(y);
            T* const labels = markers.row(y);
            forHalves(
                hn::ScalableTag<Cell>(), 0, width_, [=](auto d, ptrdiff_t x) __attribute__((always_inline)) {
                    const hn::Rebind<T, decltype(d)> narrow;
                    hn::StoreU(hn::TruncateTo(narrow, hn::LoadU(d, cells + x)), narrow, labels + x);
                });
        }
    }

    /** visit(cell) for all cells in raster order. */
    template <typename Visit>
    void forEach(const Visit& visit) const {
        for (ptrdiff_t y = 0; y < height_; ++y)
            for (Cell *cell = row(y), *const end = cell + width_; cell != end; ++cell)
                visit(cell);
    }

    Cell* cells() const { return cells_; }
    ptrdiff_t stride() const { return stride_; }

  private:
    static constexpr int kLabelBits = 8 * sizeof(T);

    Cell* row(ptrdiff_t y) const { return cells_ + (y + 1) * stride_ + 1; }

    ptrdiff_t width_, height_, stride_;
    Cell* cells_;
};

/** Queues the pixels with a label that have a neighbour without one, each where its level ends. */
template <bool kAllNeighbours, typename T>
void queueMarkers(const CellImage<T>& image, uint32_t* queue, uint32_t* ends) {
    using Cells = CellImage<T>;
    const auto neighbours = Neighbours<kAllNeighbours>::of(image.stride());
    image.forEach([&](const auto* cell) {
        const T label = Cells::labelOf(*cell);
        if (label == 0 || label == kWall<T>)
            return;
        bool canGrow = false;
        for (const ptrdiff_t offset : neighbours.offsets)
            canGrow = canGrow || Cells::labelOf(cell[offset]) == 0;
        if (canGrow)
            queue[ends[Cells::greyOf(*cell)]++] = static_cast<uint32_t>(cell - image.cells());
    });
}

/**
 * Floods the image level by level. There are as many places in the queue for a level as there are pixels of that grey,
 * from begins[level] on. The pixels of a level, and with them lower ones that are reached at it, wait in the places of
 * all levels up to this one, for no more pixels than those can be reached by then.
 */
template <bool kAllNeighbours, typename T>
HWY_NOINLINE void flood(const CellImage<T>& image, uint32_t* queue, const uint32_t* begins) {
    using Cells = CellImage<T>;
    uint32_t ends[kLevels];
    __builtin_memcpy(ends, begins, sizeof ends);
    queueMarkers<kAllNeighbours>(image, queue, ends);
    const auto neighbours = Neighbours<kAllNeighbours>::of(image.stride());
    for (uint32_t level = 0; level < kLevels; ++level) {
        ends[level] -= begins[level];
        __builtin_memmove(queue, queue + begins[level], ends[level] * sizeof(uint32_t));
        for (uint32_t next = 0; next != ends[level]; ++next) {
            auto* const cell = image.cells() + queue[next];
            const T label = Cells::labelOf(*cell);
            for (const ptrdiff_t offset : neighbours.offsets) {
                auto& neighbour = cell[offset];
                if (Cells::labelOf(neighbour) != 0)
                    continue;
                const uint32_t reached = HWY_MAX(Cells::greyOf(neighbour), level);
                queue[ends[reached]++] = static_cast<uint32_t>(&neighbour - image.cells());
                neighbour = static_cast<typename Cells::Cell>(neighbour | label);
            }
        }
    }
}

/** Two functions, as each needs 1 KiB of stack. */
template <bool kAllNeighbours, typename T>
HWY_NOINLINE void grow(const CellImage<T>& image, uint32_t* queue) {
    uint32_t begins[kLevels] = {};
    image.forEach([&](const auto* cell) { ++begins[CellImage<T>::greyOf(*cell)]; });
    uint32_t pixels = 0;
    for (uint32_t& begin : begins) {
        const uint32_t ofLevel = begin;
        begin = pixels;
        pixels += ofLevel;
    }
    flood<kAllNeighbours>(image, queue, begins);
}

/** More than the queue and the cells take. The second number is for narrow regions, whose frame is relatively large. */
template <typename T>
int64_t bufferBytes(RoiSize roi) {
    const int64_t width = roi.width, height = roi.height, rowBytes = int64_t{sizeof(T)} * width;
    if (width * height > INT32_MAX)  // too large already, and several times that may not fit 64 bits
        return width * height;
    const int64_t nodes = 12 * width * height + int64_t{sizeof(T)} * (width + 2) * (height + 2) + 36;
    const int64_t rows = height + 66 + (6 * height + 2) * ((rowBytes + 31) / 32 * 32);
    return HWY_MAX(nodes, rows);
}

template <typename T>
Status segmentWatershed(const uint8_t* source, int32_t sourceStep, T* markers, int32_t markersStep, RoiSize roi,
                        int32_t norm, int32_t flag, uint8_t* buffer) {
    const Image<const uint8_t> greys{source, sourceStep};
    const Image<T> labels{markers, markersStep};
    if (Status status = Check()
                            .pointers(greys, labels, buffer)
                            .roi(roi)
                            .stepLengths(roi.width, greys, labels)
                            .require(norm == NormL1 || norm == NormInf, StatusBadArgument)
                            .require((flag & ~(kBoundaries | kLightIsLow)) == 0, StatusBadArgument))
        return status;
    Scratch scratch(buffer, bufferBytes<T>(roi));
    auto* const queue = scratch.take<uint32_t>(int64_t{roi.width} * roi.height);
    CellImage<T> image(roi, scratch);
    image.load(greys, {markers, markersStep}, (flag & kLightIsLow) != 0 ? 0xFF : 0);
    norm == NormL1 ? grow<false>(image, queue) : grow<true>(image, queue);
    image.store(labels);
    if ((flag & kBoundaries) != 0)
        norm == NormL1 ? markBoundaries<false>(labels, roi, kWall<T>) : markBoundaries<true>(labels, roi, kWall<T>);
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiSegmentWatershed_8u_C1IR, segmentWatershed);
VEKCV_BIND(vekiSegmentWatershed_8u16u_C1IR, segmentWatershed);
VEKCV_BIND(vekiSegmentWatershedGetBufferSize_8u_C1R, roiBufferSize<bufferBytes<uint8_t>>);
VEKCV_BIND(vekiSegmentWatershedGetBufferSize_8u16u_C1R, roiBufferSize<bufferBytes<uint16_t>>);
}  // namespace VEKCV_VARIANT
