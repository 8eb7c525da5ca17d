#include <algorithm>
#include <cmath>
#include <cstring>
#include <queue>
#include <random>
#include <vector>

#include "export_row.h"

namespace bench {
namespace {

/** Larger images are left to ours: the page compares with the peer at these sizes. */
constexpr int64_t kMostPeerPixels = 1920 * 1080;

/** A value of a picture, 0 to 255, in the whole range of 16 bits where those are the elements. */
template <typename T>
T element(float grey) {
    return static_cast<T>(std::is_same_v<T, uint16_t> ? grey * 257 : grey);
}

/**
 * Like a photograph: shapes of all sizes, of smooth noise whose contrast falls with its wavelength, and some grain.
 * Large pictures repeat it as tiles.
 */
template <typename T>
void paintPicture(const Operand& picture) {
    constexpr ptrdiff_t kTile = 1024;
    std::mt19937 random(1);
    const auto centred = [&] { return static_cast<float>(random() % 65536) / 65536 - 0.5F; };
    std::vector<float> tile(kTile * kTile, 128);
    float contrast = 180;
    for (ptrdiff_t cell = 256; cell >= 2; cell /= 2, contrast *= 0.62F) {
        const ptrdiff_t columns = kTile / cell + 1;
        std::vector<float> grid(static_cast<size_t>(columns * columns));
        std::ranges::generate(grid, [&] { return contrast * centred(); });
        for (ptrdiff_t y = 0; y < kTile; ++y)
            for (ptrdiff_t x = 0; x < kTile; ++x) {
                const float* const corner = &grid[static_cast<size_t>(y / cell * columns + x / cell)];
                const float right = static_cast<float>(x % cell) / static_cast<float>(cell);
                const float down = static_cast<float>(y % cell) / static_cast<float>(cell);
                tile[static_cast<size_t>(y * kTile + x)] +=
                    std::lerp(std::lerp(corner[0], corner[1], right),
                              std::lerp(corner[columns], corner[columns + 1], right), down);
            }
    }
    for (float& grey : tile)
        grey = std::clamp(std::floor(grey + 6 * centred()), 0.0F, 255.0F);
    T* pixel = static_cast<T*>(picture.memory.get());
    for (ptrdiff_t y = 0; y < picture.size.height; ++y)
        for (ptrdiff_t x = 0; x < picture.size.width; ++x)
            *pixel++ = element<T>(tile[static_cast<size_t>(y % kTile * kTile + x % kTile)]);
}

enum Operands { kSource, kMarker, kResult, kBuffer };

/** Domes of a picture: the marker is the picture less 40 of its 256 greys. */
template <typename T>
void fillDomes(const Case& work) {
    paintPicture<T>(work.operands[kSource]);
    const T* const source = static_cast<const T*>(work.operands[kSource].memory.get());
    std::transform(source, source + work.operands[kSource].elements(),
                   static_cast<T*>(work.operands[kMarker].memory.get()),
                   [](T value) { return std::max(value, element<T>(40)) - element<T>(40); });
}

/** Holes of a picture: the marker is the picture along its edges, and white elsewhere. */
template <typename T>
void fillHoles(const Case& work) {
    paintPicture<T>(work.operands[kSource]);
    const T* const source = static_cast<const T*>(work.operands[kSource].memory.get());
    T* const marker = static_cast<T*>(work.operands[kMarker].memory.get());
    const ptrdiff_t width = work.size.width, height = work.size.height;
    for (ptrdiff_t y = 0; y < height; ++y)
        for (ptrdiff_t x = 0; x < width; ++x) {
            const bool isEdge = x == 0 || y == 0 || x == width - 1 || y == height - 1;
            marker[y * width + x] = isEdge ? source[y * width + x] : element<T>(255);
        }
}

/**
 * The algorithm as it stands in Vincent's paper: two scans of single pixels, then a queue. The image has a frame where
 * nothing spreads, so that no pixel needs to look for the edges. Less is the order in which pixels grow.
 */
template <typename T, typename Less>
class Textbook {
  public:
    Textbook(const Case& work, T least) : case_(work), width_(work.size.width), height_(work.size.height) {
        const ptrdiff_t pitch = width_ + 2;
        before_ = {-pitch - 1, -pitch, -pitch + 1, -1};
        after_ = {1, pitch - 1, pitch, pitch + 1};
        bounds_.assign(static_cast<size_t>(pitch * (height_ + 2)), least);
        pixels_ = bounds_;
    }

    void operator()() {
        forRows(
            kSource, [](T* image, T* row, size_t bytes) { std::memcpy(row, image, bytes); }, bounds_);
        forRows(
            kMarker, [](T* image, T* row, size_t bytes) { std::memcpy(row, image, bytes); }, pixels_);
        const ptrdiff_t first = width_ + 3, last = (width_ + 2) * (height_ + 1) - 2;
        for (ptrdiff_t p = first; p <= last; ++p)
            join(p, before_);
        std::queue<ptrdiff_t> queue;
        for (ptrdiff_t p = last; p >= first; --p) {
            join(p, after_);
            if (std::ranges::any_of(after_, [&](ptrdiff_t n) { return canSpread(p, p + n); }))
                queue.push(p);
        }
        while (!queue.empty()) {
            const ptrdiff_t p = queue.front();
            queue.pop();
            for (const auto* const neighbours : {&before_, &after_})
                for (const ptrdiff_t n : *neighbours)
                    if (canSpread(p, p + n)) {
                        at(pixels_, p + n) = std::min(at(pixels_, p), at(bounds_, p + n), Less());
                        queue.push(p + n);
                    }
        }
        forRows(
            kResult, [](T* image, T* row, size_t bytes) { std::memcpy(image, row, bytes); }, pixels_);
    }

  private:
    static T& at(std::vector<T>& image, ptrdiff_t p) { return image[static_cast<size_t>(p)]; }

    template <typename Copy>
    void forRows(Operands operand, Copy copy, std::vector<T>& framed) {
        T* const image = static_cast<T*>(case_.operands[operand].memory.get());
        for (ptrdiff_t y = 0; y < height_; ++y)
            copy(image + y * width_, &at(framed, (y + 1) * (width_ + 2) + 1), static_cast<size_t>(width_) * sizeof(T));
    }

    void join(ptrdiff_t p, const std::vector<ptrdiff_t>& neighbours) {
        T value = at(pixels_, p);
        for (const ptrdiff_t n : neighbours)
            value = std::max(value, at(pixels_, p + n), Less());
        at(pixels_, p) = std::min(value, at(bounds_, p), Less());
    }

    bool canSpread(ptrdiff_t from, ptrdiff_t to) {
        const T pixel = at(pixels_, to);
        return Less()(pixel, at(pixels_, from)) && Less()(pixel, at(bounds_, to));
    }

    Case case_;
    ptrdiff_t width_, height_;
    std::vector<ptrdiff_t> before_, after_;
    std::vector<T> bounds_, pixels_;
};

/** A call changes the marker, so each begins with a copy of it. */
template <auto Export, auto Query, bool kIsDilation, typename T>
Work work(Status(VEKCV_CALL*)(const T*, int32_t, T*, int32_t, RoiSize, int32_t, uint8_t*), RoiSize size) {
    constexpr Element kElement = elementOf<T>();
    const Operand source = Operand::make(Role::kSource, kElement, 1, size);
    const Operand marker = Operand::make(Role::kSource, kElement, 1, size);
    const Operand result = Operand::make(Role::kDestination, kElement, 1, size);
    const Operand buffer = Operand::make(Role::kBuffer, Element::k8u, 1, {bufferBytes<Query>(size), 1});
    Work work{{size, {}, {source, marker, result, buffer}, kIsDilation ? fillDomes<T> : fillHoles<T>}, {}, {}};
    work.vekcv = [=] {
        std::memcpy(result.memory.get(), marker.memory.get(), marker.bytes());
        expectOk(Export(static_cast<const T*>(source.memory.get()), source.step, static_cast<T*>(result.memory.get()),
                        result.step, size, NormInf, static_cast<uint8_t*>(buffer.memory.get())),
                 nameOf<Export>());
    };
    if (int64_t{size.width} * size.height <= kMostPeerPixels) {
        if constexpr (kIsDilation)
            work.peer = Textbook<T, std::less<>>(work.data, T{0});
        else
            work.peer = Textbook<T, std::greater<>>(work.data, element<T>(255));
    }
    return work;
}

template <auto Export, auto Query, bool kIsDilation>
Row reconstructionRow() {
    return {std::string(nameOf<Export>()), [](RoiSize size) { return work<Export, Query, kIsDilation>(Export, size); }};
}

const Row kRows[] = {
    reconstructionRow<&vekiMorphReconstructDilate_8u_C1IR, &vekiMorphReconstructDilateGetBufferSize_8u_C1R, true>(),
    reconstructionRow<&vekiMorphReconstructDilate_16u_C1IR, &vekiMorphReconstructDilateGetBufferSize_16u_C1R, true>(),
    reconstructionRow<&vekiMorphReconstructDilate_32f_C1IR, &vekiMorphReconstructDilateGetBufferSize_32f_C1R, true>(),
    reconstructionRow<&vekiMorphReconstructErode_8u_C1IR, &vekiMorphReconstructErodeGetBufferSize_8u_C1R, false>(),
    reconstructionRow<&vekiMorphReconstructErode_16u_C1IR, &vekiMorphReconstructErodeGetBufferSize_16u_C1R, false>(),
    reconstructionRow<&vekiMorphReconstructErode_32f_C1IR, &vekiMorphReconstructErodeGetBufferSize_32f_C1R, false>(),
};
const Family reconstruction("MorphReconstruct", kRows);

}  // namespace
}  // namespace bench
