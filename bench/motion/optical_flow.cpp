#include <cmath>
#include <limits>

#include "export_row.h"
#include "motion/peer.h"

namespace bench {
namespace {

constexpr int32_t kWindow = 21, kLevels = 3, kIterations = 30, kMostPoints = 1000;
constexpr float kThreshold = 0.01F;

/** Waves of several lengths, shifted by so many pixels. */
template <typename T>
void drawWaves(const Operand& picture, double dx, double dy) {
    constexpr double kLargest = std::is_same_v<T, float> ? 1 : std::numeric_limits<T>::max();
    const auto across = [&](double place, double slope) {
        return std::sin(place / 2.9) + std::sin(place * slope / 7) + 2 * std::sin(place / 19);
    };
    std::vector<double> columns, rows;
    for (int32_t x = 0; x < picture.size.width; ++x)
        columns.push_back(across(x - dx, 1.3));
    for (int32_t y = 0; y < picture.size.height; ++y)
        rows.push_back(across(y - dy, 0.9));
    T* pixel = pointerTo<T>(picture);
    for (const double row : rows)
        for (const double column : columns)
            *pixel++ = static_cast<T>(kLargest * (0.5 + 0.04 * (row + column) + 0.01 * row * column));
}

/** A record whose levels above the first are means of 2 x 2 pixels. */
template <typename T>
class Levels {
  public:
    explicit Levels(const Operand& base) {
        expectOk(vekiPyramidInitAlloc(&record_, kLevels, base.size, 2), "vekiPyramidInitAlloc");
        images_.push_back(base);
        for (int32_t k = 0; k <= record_->levelCount; ++k) {
            if (k > 0)
                images_.push_back(halved(images_.back(), record_->levelSizes[k]));
            record_->levelImages[k] = images_.back().memory.get();
            record_->levelSteps[k] = images_.back().step;
        }
    }
    ~Levels() { vekiPyramidFree(record_); }
    Levels(const Levels&) = delete;
    Levels& operator=(const Levels&) = delete;

    const Pyramid* record() const { return record_; }

  private:
    static Operand halved(const Operand& image, RoiSize size) {
        const Operand result = Operand::make(Role::kBuffer, elementOf<T>(), 1, size);
        const auto at = [&](ptrdiff_t x, ptrdiff_t y) {
            return pointerTo<T>(image)[std::min<ptrdiff_t>(y, image.size.height - 1) * image.size.width +
                                       std::min<ptrdiff_t>(x, image.size.width - 1)];
        };
        T* pixel = pointerTo<T>(result);
        for (ptrdiff_t y = 0; y < size.height; ++y)
            for (ptrdiff_t x = 0; x < size.width; ++x)
                *pixel++ = static_cast<T>(
                    (at(2 * x, 2 * y) + at(2 * x + 1, 2 * y) + at(2 * x, 2 * y + 1) + at(2 * x + 1, 2 * y + 1)) / 4);
        return result;
    }

    Pyramid* record_ = nullptr;
    std::vector<Operand> images_;
};

/** Points all over the image but for a margin as wide as half a window. */
void placePoints(const Operand& points, RoiSize size) {
    const int32_t count = points.size.width / 2;
    const auto place = [](int32_t length, double share) {
        const int32_t margin = std::min(kWindow, length) / 2;
        return static_cast<float>(margin + share * (length - 2 * margin));
    };
    for (int32_t i = 0; i < count; ++i) {
        const double share = (i + 0.5) / count;
        pointerTo<float>(points)[2 * i] = place(size.width, std::fmod(share * 31, 1));
        pointerTo<float>(points)[2 * i + 1] = place(size.height, share);
    }
}

/** Points followed through pyramids that the first call makes. */
template <typename T, auto InitAlloc, auto Follow, auto Free>
Work prepareFlow(RoiSize size, Peer* peer) {
    const int32_t count = std::min(kMostPoints, 1 + size.width * size.height / 256);
    const auto array = [=](Role role, Element element, int32_t elements) {
        return Operand::make(role, element, 1, {elements, 1});
    };
    const Operand previous = Operand::make(Role::kSource, elementOf<T>(), 1, size);
    const Operand next = Operand::make(Role::kSource, elementOf<T>(), 1, size);
    const Operand from = array(Role::kSource, Element::k32f, 2 * count);
    const Operand to = array(Role::kResult, Element::k32f, 2 * count);
    const Operand found = array(Role::kResult, Element::k8s, count), error = array(Role::kBuffer, Element::k32f, count);
    Work work{{size,
               {kWindow, kLevels, kIterations, kThreshold},
               {previous, next, from, to, found, error},
               [](const Case& data) {
                   drawWaves<T>(data.operands[0], 0, 0);
                   drawWaves<T>(data.operands[1], 2.4, 1.3);
                   placePoints(data.operands[2], data.size);
               },
               0.01},
              {},
              {}};
    OpticalFlowState* state = nullptr;
    int threads = 1;
    vekGetNumThreads(&threads);
    vekSetNumThreads(kMostThreads);
    expectOk(InitAlloc(&state, size, kWindow), nameOf<InitAlloc>());
    vekSetNumThreads(threads);
    work.vekcv = [=, owner = std::shared_ptr<OpticalFlowState>(state, Free), before = std::shared_ptr<Levels<T>>(),
                  after = std::shared_ptr<Levels<T>>()]() mutable {
        if (before == nullptr) {
            before = std::make_shared<Levels<T>>(previous);
            after = std::make_shared<Levels<T>>(next);
        }
        const auto points = [](const Operand& operand) { return static_cast<ImagePoint32f*>(operand.memory.get()); };
        std::copy_n(points(from), count, points(to));
        expectOk(Follow(before->record(), after->record(), points(from), points(to), pointerTo<int8_t>(found),
                        pointerTo<float>(error), count, kWindow, kLevels, kIterations, kThreshold, owner.get()),
                 nameOf<Follow>());
    };
    if (peer != nullptr)
        work.peer = peer(work.data);
    return work;
}

template <typename T, auto InitAlloc, auto Follow, auto Free>
Row flowRow(Peer* peer = nullptr) {
    return {std::string(nameOf<Follow>()),
            [=](RoiSize size) { return prepareFlow<T, InitAlloc, Follow, Free>(size, peer); }};
}

const Row kRows[] = {
    flowRow<uint8_t, &vekiOpticalFlowPyrLKInitAlloc_8u_C1R, &vekiOpticalFlowPyrLK_8u_C1R,
            &vekiOpticalFlowPyrLKFree_8u_C1R>(peer::opticalFlow),
    flowRow<uint16_t, &vekiOpticalFlowPyrLKInitAlloc_16u_C1R, &vekiOpticalFlowPyrLK_16u_C1R,
            &vekiOpticalFlowPyrLKFree_16u_C1R>(),
    flowRow<float, &vekiOpticalFlowPyrLKInitAlloc_32f_C1R, &vekiOpticalFlowPyrLK_32f_C1R,
            &vekiOpticalFlowPyrLKFree_32f_C1R>(),
};
const Family family("OpticalFlowPyrLK", kRows);

}  // namespace
}  // namespace bench
