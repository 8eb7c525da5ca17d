#include <algorithm>
#include <cstring>
#include <opencv2/imgproc.hpp>
#include <vector>

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

Call fastAtan2(const Case& work) {
    return [y = matrix(work.operands[0]), x = matrix(work.operands[1]), out = matrix(work.operands[2])] {
        cv::phase(x, y, out, true);
    };
}

Call houghLines(const Case& work) {
    return [image = matrix(work.operands[0]), count = static_cast<int32_t*>(work.operands[2].memory.get()),
            deltaRho = work.parameters[0], deltaTheta = work.parameters[1],
            threshold = static_cast<int>(work.parameters[2]), most = static_cast<int>(work.parameters[3])] {
        std::vector<cv::Vec2f> lines;
        cv::HoughLines(image, lines, deltaRho, deltaTheta, threshold - 1);  // it wants more votes than that
        *count = std::min(static_cast<int>(lines.size()), most);
    };
}

Call largestChannel(const Case& work) {
    return [pixels = matrix(work.operands[0]).reshape(1, work.size.width * work.size.height),
            out = matrix(work.operands[1]).reshape(1, work.size.width * work.size.height)] {
        cv::reduce(pixels, out, 1, cv::REDUCE_MAX);
    };
}

Call meanOfChannels(const Case& work) {
    return [source = matrix(work.operands[0]), out = matrix(work.operands[1])] {
        cv::transform(source, out, cv::Matx13f::all(1.0F / 3));
    };
}

Call sampleLine(const Case& work) {
    return [image = matrix(work.operands[0]), out = static_cast<uint8_t*>(work.operands[1].memory.get())] {
        cv::LineIterator pixel(image, {0, 0}, {image.cols - 1, image.rows - 1}, 8, false);
        const size_t bytes = image.elemSize();
        for (int i = 0; i < pixel.count; ++i, ++pixel)
            std::memcpy(out + static_cast<size_t>(i) * bytes, *pixel, bytes);
    };
}

}  // namespace bench::peer
