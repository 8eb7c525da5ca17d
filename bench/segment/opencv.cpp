#include <opencv2/imgproc.hpp>
#include <opencv2/photo.hpp>
#include <vector>

#include "opencv.h"
#include "segment/peer.h"

namespace bench::peer {

/** The parameters are the norm and the size of the mask, 0 for exact distances. */
Call distanceTransform(const Case& work) {
    constexpr int kTypes[] = {cv::DIST_C, cv::DIST_L1, cv::DIST_L2};
    return [source = matrix(work.operands[0]), out = matrix(work.operands[1]),
            type = kTypes[static_cast<int>(work.parameters[0])], mask = static_cast<int>(work.parameters[1])] {
        cv::distanceTransform(source, out, type, mask, out.depth());
    };
}

Call floodFill(const Case& work) {
    return [source = matrix(work.operands[0]), image = matrix(work.operands[1]),
            seed = cv::Point(static_cast<int>(work.parameters[0]), static_cast<int>(work.parameters[1])),
            newValue = cv::Scalar::all(work.parameters[2]), delta = cv::Scalar::all(work.parameters[3]),
            flags = static_cast<int>(work.parameters[4]) + (work.parameters[5] != 0 ? cv::FLOODFILL_FIXED_RANGE : 0)] {
        source.copyTo(image);
        cv::floodFill(image, seed, newValue, nullptr, delta, delta, flags);
    };
}

/** It takes pictures of bytes only, and gives labels of 16 bits or more. */
Call connectedComponents(const Case& work) {
    return [source = matrix(work.operands[0]), bytes = cv::Mat(), labels = cv::Mat(),
            count = static_cast<int32_t*>(work.operands[2].memory.get()),
            neighbours = static_cast<int>(work.parameters[0])]() mutable {
        if (bytes.empty())
            source.convertTo(bytes, CV_8U);
        *count = cv::connectedComponents(bytes, labels, neighbours, CV_16U) - 1;
    };
}

Call inpaint(const Case& work) {
    return [source = matrix(work.operands[0]), out = matrix(work.operands[1]), mask = mask(work),
            method = work.parameters[0] == 0 ? cv::INPAINT_TELEA : cv::INPAINT_NS,
            radius = work.parameters[1]] { cv::inpaint(source, mask, out, radius, method); };
}

/** It takes colour images and markers of 32 bits only; the first call makes them. */
Call watershed(const Case& work) {
    return [source = matrix(work.operands[0]), labels = matrix(work.operands[1]), colours = cv::Mat(),
            markers = cv::Mat(), out = cv::Mat()]() mutable {
        if (colours.empty()) {
            cv::merge(std::vector<cv::Mat>(source.channels() == 3 ? 1 : 3, source), colours);
            labels.convertTo(markers, CV_32S);
        }
        markers.copyTo(out);
        cv::watershed(colours, out);
    };
}

}  // namespace bench::peer
