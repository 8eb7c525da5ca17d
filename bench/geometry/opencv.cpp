#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include "geometry/peer.h"
#include "opencv.h"

namespace bench::peer {
namespace {

/** The parameters begin with the focal lengths and the principal point. */
cv::Mat cameraOf(const Case& work) {
    const auto& p = work.parameters;
    return (cv::Mat_<double>(3, 3) << p[0], 0, p[2], 0, p[1], p[3], 0, 0, 1);
}

/** Radial and tangential coefficients follow. */
cv::Mat distortionOf(const Case& work) {
    const auto& p = work.parameters;
    const bool isTangential = p.size() > 6;
    return (cv::Mat_<double>(1, 4) << p[4], p[5], isTangential ? p[6] : 0, isTangential ? p[7] : 0);
}

}  // namespace

Call undistort(const Case& work) {
    return [source = matrix(work.operands[0]), out = matrix(work.operands[1]), camera = cameraOf(work),
            distortion = distortionOf(work)] { cv::undistort(source, out, camera, distortion); };
}

Call undistortMap(const Case& work) {
    return [xMap = matrix(work.operands[0]), yMap = matrix(work.operands[1]), camera = cameraOf(work),
            distortion = distortionOf(work)] {
        cv::initUndistortRectifyMap(camera, distortion, cv::Mat(), camera, xMap.size(), CV_32FC1, xMap, yMap);
    };
}

/** The parameters begin with how far to the right and down the source is read. */
Call shift(const Case& work) {
    return [source = matrix(work.operands[0]), out = matrix(work.operands[1]),
            move = cv::Mat((cv::Mat_<double>(2, 3) << 1, 0, work.parameters[0], 0, 1, work.parameters[1]))] {
        cv::warpAffine(source, out, move, out.size(), cv::INTER_LINEAR | cv::WARP_INVERSE_MAP);
    };
}

/** The same for a patch around a point; it takes bytes and floats, and gives floats of bytes, too. */
Call patch(const Case& work) {
    return [source = matrix(work.operands[0]), out = matrix(work.operands[1]),
            x = static_cast<float>(work.parameters[0]), y = static_cast<float>(work.parameters[1])] {
        const cv::Point2f middle(static_cast<float>(out.cols - 1) / 2, static_cast<float>(out.rows - 1) / 2);
        cv::getRectSubPix(source, out.size(), middle + cv::Point2f(x, y), out, out.depth());
    };
}

}  // namespace bench::peer
