#include <opencv2/video.hpp>
#include <vector>

#include "motion/peer.h"
#include "motion/scene.h"
#include "opencv.h"

namespace bench::peer {

/** Five Gaussians for each pixel, without the detection of shadows. */
Call mixtures(const Case& work) {
    constexpr int kHistory = 200, kGaussians = 5, kLearned = 60;
    constexpr double kSquare = 2.5 * 2.5;
    return [next = NextFrame(work.operands[0], work.size), size = work.size, channels = work.operands[0].channels,
            foreground = matrix(work.operands[2]), model = cv::Ptr<cv::BackgroundSubtractorMOG2>()]() mutable {
        const auto apply = [&] {
            model->apply(cv::Mat(size.height, size.width, CV_8UC(channels), next()), foreground);
        };
        if (model == nullptr) {
            model = cv::createBackgroundSubtractorMOG2(kHistory, kSquare, false);
            model->setNMixtures(kGaussians);
            for (int frame = 0; frame < kLearned; ++frame)
                apply();
        }
        apply();
    };
}

/** The parameters: the size of windows, the greatest level, the criteria to end. The first call makes the pyramids. */
Call opticalFlow(const Case& work) {
    const auto number = [&](size_t i) { return static_cast<int>(work.parameters[i]); };
    const cv::Size window(number(0), number(0));
    const auto floats = [&](size_t i) { return matrix(work.operands[i]).reshape(1); };
    return [images = std::vector{matrix(work.operands[0]), matrix(work.operands[1])},
            pyramids = std::vector<std::vector<cv::Mat>>(2), from = matrix(work.operands[2]).reshape(2),
            to = matrix(work.operands[3]).reshape(2), found = matrix(work.operands[4]), error = floats(5), window,
            maxLevel = number(1),
            criteria = cv::TermCriteria(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, number(2),
                                        work.parameters[3])]() mutable {
        if (pyramids[0].empty())
            for (size_t i = 0; i < 2; ++i)
                cv::buildOpticalFlowPyramid(images[i], pyramids[i], window, maxLevel);
        from.copyTo(to);
        cv::Mat status;
        cv::calcOpticalFlowPyrLK(pyramids[0], pyramids[1], from, to, status, error, window, maxLevel, criteria,
                                 cv::OPTFLOW_USE_INITIAL_FLOW);
        status.reshape(1, 1).convertTo(found, CV_8S);
    };
}

}  // namespace bench::peer
