#include <opencv2/imgproc.hpp>

#include "feature/peer.h"
#include "opencv.h"

namespace bench::peer {

Call canny(const Case& work) {
    return [dx = matrix(work.operands[0]), dy = matrix(work.operands[1]), out = matrix(work.operands[2]),
            low = work.parameters[0], high = work.parameters[1]] { cv::Canny(dx, dy, out, low, high, false); };
}

// The peer scales its eigenvalues in another way.

Call minEigenVal(const Case& work) {
    return [source = matrix(work.operands[0]), out = cv::Mat(), aperture = static_cast<int>(work.parameters[0]),
            window = static_cast<int>(work.parameters[1])]() mutable {
        cv::cornerMinEigenVal(source, out, window, aperture, cv::BORDER_REPLICATE);
    };
}

Call eigenValsVecs(const Case& work) {
    return [source = matrix(work.operands[0]), out = cv::Mat(), aperture = static_cast<int>(work.parameters[0]),
            window = static_cast<int>(work.parameters[1])]() mutable {
        cv::cornerEigenValsAndVecs(source, out, window, aperture, cv::BORDER_REPLICATE);
    };
}

/** The peaks of images that are nowhere negative. */
Call findPeaks(const Case& work) {
    return [source = matrix(work.operands[0]), maxima = cv::Mat(), isPeak = cv::Mat(), isHigh = cv::Mat(),
            peaks = std::vector<cv::Point>(), threshold = work.parameters[0]]() mutable {
        cv::dilate(source, maxima, {});
        cv::compare(source, maxima, isPeak, cv::CMP_EQ);
        cv::compare(source, threshold, isHigh, cv::CMP_GT);
        cv::bitwise_and(isPeak, isHigh, isPeak);
        cv::findNonZero(isPeak, peaks);
    };
}

}  // namespace bench::peer
