#include <opencv2/imgproc.hpp>

#include "filter/peer.h"
#include "opencv.h"

namespace bench::peer {
namespace {

constexpr int kBorder = cv::BORDER_REPLICATE;

/** A derivative of 3 x 3 pixels, times `sign`. */
Call sobel(const Case& work, int orderX, int orderY, double sign = 1) {
    return [source = matrix(work.operands[0]), out = matrix(work.operands[1]), orderX, orderY, sign] {
        cv::Sobel(source, out, out.depth(), orderX, orderY, 3, sign, 0, kBorder);
    };
}

Call scharr(const Case& work, int orderX, int orderY) {
    return [source = matrix(work.operands[0]), out = matrix(work.operands[1]), orderX, orderY] {
        cv::Scharr(source, out, out.depth(), orderX, orderY, 1, 0, kBorder);
    };
}

Call separable(const Case& work, const cv::Mat& alongRows, const cv::Mat& alongColumns) {
    return [=, source = matrix(work.operands[0]), out = matrix(work.operands[1])] {
        cv::sepFilter2D(source, out, out.depth(), alongRows, alongColumns, {-1, -1}, 0, kBorder);
    };
}

const cv::Mat& none() {
    static const cv::Mat kernel = cv::Mat::ones(1, 1, CV_32F);
    return kernel;
}

const cv::Mat& binomial() {
    static const cv::Mat kernel = (cv::Mat_<float>(1, 5) << 1, 4, 6, 4, 1) / 16;
    return kernel;
}

}  // namespace

Call sobelHoriz(const Case& work) {
    return sobel(work, 0, 1);
}

Call sobelVert(const Case& work) {
    return sobel(work, 1, 0, -1);
}

Call sobelNegVert(const Case& work) {
    return sobel(work, 1, 0);
}

Call sobelHorizSecond(const Case& work) {
    return sobel(work, 0, 2);
}

Call sobelVertSecond(const Case& work) {
    return sobel(work, 2, 0);
}

Call sobelCross(const Case& work) {
    return sobel(work, 1, 1, -1);
}

Call scharrHoriz(const Case& work) {
    return scharr(work, 0, 1);
}

Call scharrVert(const Case& work) {
    return scharr(work, 1, 0);
}

Call laplacian(const Case& work) {
    return [source = matrix(work.operands[0]), out = matrix(work.operands[1])] {
        cv::Laplacian(source, out, out.depth(), 3, 1, 0, kBorder);
    };
}

Call lowpass(const Case& work) {
    return [source = matrix(work.operands[0]), out = matrix(work.operands[1])] {
        cv::blur(source, out, {3, 3}, {-1, -1}, kBorder);
    };
}

Call gauss(const Case& work) {
    return [source = matrix(work.operands[0]), out = matrix(work.operands[1]),
            taps = static_cast<int>(work.parameters[0]), sigma = work.parameters[1]] {
        cv::GaussianBlur(source, out, {taps, taps}, sigma, sigma, kBorder);
    };
}

Call pyrDown(const Case& work) {
    return
        [source = matrix(work.operands[0]), out = matrix(work.operands[1])] { cv::pyrDown(source, out, out.size()); };
}

Call pyrUp(const Case& work) {
    return [source = matrix(work.operands[0]), out = matrix(work.operands[1])] { cv::pyrUp(source, out, out.size()); };
}

Call binomialAlongRows(const Case& work) {
    return separable(work, binomial(), none());
}

Call binomialAlongColumns(const Case& work) {
    return separable(work, none(), binomial());
}

Call halve(const Case& work) {
    return
        [source = matrix(work.operands[0]), out = matrix(work.operands[1])] { cv::pyrDown(source, out, out.size()); };
}

}  // namespace bench::peer
