#pragma once

#include <memory>
#include <optional>

#include "picture.h"

/** A grey picture of 8 bits at its own size, half, a quarter and an eighth of it. */
class PicturePyramid {
  public:
    explicit PicturePyramid(Picture grey);

    const Picture& base() const { return levels_[0]; }
    const Pyramid* get() const { return record_.get(); }

  private:
    struct Free {
        void operator()(Pyramid* record) const { vekiPyramidFree(record); }
    };
    std::vector<Picture> levels_;
    std::unique_ptr<Pyramid, Free> record_;
};

/** Follows points from picture to picture, by Lucas and Kanade. */
class OpticalFlow {
  public:
    static constexpr int32_t kLeastWindow = 3, kUsualWindow = 21, kLargestWindow = 63;

    /** For pictures of a size; what is compared are windows of an odd width and height. */
    OpticalFlow(RoiSize size, int32_t window);

    /** Where the points are in the next picture; none for those that are lost. Followed back, a point must return. */
    std::vector<std::optional<ImagePoint32f>> follow(const PicturePyramid& previous, const PicturePyramid& next,
                                                     const std::vector<ImagePoint32f>& points);

  private:
    struct Free {
        void operator()(OpticalFlowState* state) const { vekiOpticalFlowPyrLKFree_8u_C1R(state); }
    };
    struct Places {
        std::vector<ImagePoint32f> points;
        std::vector<int8_t> found;
    };
    Places placesIn(const PicturePyramid& previous, const PicturePyramid& next,
                    const std::vector<ImagePoint32f>& points);

    int32_t window_;
    std::unique_ptr<OpticalFlowState, Free> state_;
};
