// The images of a case for the peer, OpenCV.
#pragma once

#include <opencv2/core.hpp>

#include "row.h"

namespace bench::peer {

/** A matrix over the memory of an operand. */
inline cv::Mat matrix(const Operand& operand) {
    constexpr int kDepths[] = {CV_8U, CV_8S, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F};  // in the order of Element
    return cv::Mat(operand.size.height, operand.size.width,
                   CV_MAKETYPE(kDepths[static_cast<int>(operand.element)], operand.channels), operand.memory.get(),
                   static_cast<size_t>(operand.step));
}

/** The mask of a case, or an empty matrix, which stands for no mask. */
inline cv::Mat mask(const Case& work) {
    for (const Operand& operand : work.operands)
        if (operand.role == Role::kMask)
            return matrix(operand);
    return {};
}

}  // namespace bench::peer
