// Records of pyramids, and the sizes of their levels.
#include <new>

#include "bind.h"
#include "check.h"
#include "float_modes.h"
#include "pyramid_size.h"
#include "state.h"

namespace VEKCV_VARIANT {
namespace {

Status pyramidUpRoi(RoiSize source, RoiSize* least, RoiSize* most, float rate) {
    if (Status status = Check().pointers(least, most).roi(source).require(isPyramidRate(rate), StatusBadArgument))
        return status;
    inUsualModes([&] {
        const auto sizes = ExpandedSizes::of(source, rate);
        *least = sizes.least;
        *most = sizes.most;
    });
    return StatusOk;
}

Status pyramidDownRoi(RoiSize source, RoiSize* destination, float rate) {
    if (Status status = Check().pointers(destination).roi(source).require(isPyramidRate(rate), StatusBadArgument))
        return status;
    inUsualModes([&] { *destination = reducedSize(source, rate); });
    return StatusOk;
}

/** The bytes of a record and its arrays; both widths have the same. */
constexpr int64_t pyramidBytes(int64_t levels) {
    return 44 * levels + 112;
}

/** Takes arrays from memory, each of which begins at a multiple of 8 bytes. */
class Arrays {
  public:
    explicit Arrays(void* memory) : next_(static_cast<uint8_t*>(memory)) {}

    template <typename T>
    T* take(int64_t count) {
        T* const array = reinterpret_cast<T*>(next_);
        next_ += alignUp(count * int64_t{sizeof(T)}, int64_t{8});
        return array;
    }

  private:
    uint8_t* next_;
};
// What a level takes of the arrays, and what they take without any; two arrays have elements of 4 bytes.
constexpr int64_t kLevelBytes = sizeof(void*) + sizeof(RoiSize) + sizeof(double) + sizeof(int32_t);
static_assert(kLevelBytes <= pyramidBytes(1) - pyramidBytes(0) &&
              int64_t{sizeof(Pyramid)} + 4 + kLevelBytes + 2 * 4 <= pyramidBytes(0));

/** Calls visit(level, size) for level 0 and at most `levels` more, until one is 1 x 1; gives the number of the last. */
template <typename Visit>
int32_t forLevels(RoiSize size, int32_t levels, float rate, const Visit& visit) {
    int32_t level = 0;
    visit(level, size);
    while (level < levels && (size.width > 1 || size.height > 1)) {
        size = reducedSize(size, rate);
        visit(++level, size);
    }
    return level;
}

Status makePyramid(Pyramid** pyramid, int32_t levels, RoiSize base, float rate) {
    const int32_t last = forLevels(base, levels, rate, [](int32_t, RoiSize) {});
    void* const memory = allocateBytes(pyramidBytes(last));
    if (memory == nullptr)
        return StatusMemoryAllocation;
    Arrays arrays(memory);
    const int64_t count = int64_t{last} + 1;
    auto* const record = new (arrays.take<Pyramid>(1)) Pyramid{};
    record->levelImages = arrays.take<void*>(count);
    record->levelSizes = arrays.take<RoiSize>(count);
    record->levelScales = arrays.take<double>(count);
    record->levelSteps = arrays.take<int32_t>(count);
    record->levelCount = last;
    const double factor = 1 / static_cast<double>(rate);
    double scale = 1;
    forLevels(base, last, rate, [&](int32_t level, RoiSize size) {
        record->levelImages[level] = nullptr;
        record->levelSizes[level] = size;
        record->levelScales[level] = scale;
        record->levelSteps[level] = 0;
        scale *= factor;
    });
    *pyramid = record;
    return StatusOk;
}

Status pyramidInitAlloc(Pyramid** pyramid, int32_t levels, RoiSize base, float rate) {
    if (Status status =
            Check().pointers(pyramid).roi(base).require(isPyramidRate(rate) && levels >= 1, StatusBadArgument))
        return status;
    Status status = StatusOk;
    inUsualModes([&] { status = makePyramid(pyramid, levels, base, rate); });
    return status;
}

}  // namespace

VEKCV_BIND(vekiGetPyramidDownROI, pyramidDownRoi);
VEKCV_BIND(vekiGetPyramidUpROI, pyramidUpRoi);
VEKCV_BIND(vekiPyramidInitAlloc, pyramidInitAlloc);
VEKCV_BIND(vekiPyramidFree, freeState);
}  // namespace VEKCV_VARIANT
