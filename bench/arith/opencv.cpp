#include "arith/peer.h"

#include <opencv2/imgproc.hpp>

#include "opencv.h"

namespace bench::peer {

Call accumulate(const Case& work) {
    return [source = matrix(work.operands.front()), mask = mask(work), sum = matrix(work.operands.back())] {
        cv::accumulate(source, sum, mask);
    };
}

Call accumulateSquare(const Case& work) {
    return [source = matrix(work.operands.front()), mask = mask(work), sum = matrix(work.operands.back())] {
        cv::accumulateSquare(source, sum, mask);
    };
}

Call accumulateProduct(const Case& work) {
    return [source1 = matrix(work.operands[0]), source2 = matrix(work.operands[1]), mask = mask(work),
            sum = matrix(work.operands.back())] { cv::accumulateProduct(source1, source2, sum, mask); };
}

Call accumulateWeighted(const Case& work) {
    return [source = matrix(work.operands.front()), mask = mask(work), sum = matrix(work.operands.back()),
            alpha = work.parameters[0]] { cv::accumulateWeighted(source, sum, alpha, mask); };
}

Call weightedSum(const Case& work) {
    return [source1 = matrix(work.operands[0]), source2 = matrix(work.operands[1]), out = matrix(work.operands[2]),
            alpha = work.parameters[0]] { cv::addWeighted(source1, alpha, source2, 1 - alpha, 0, out); };
}

Call absDiff(const Case& work) {
    return [source1 = matrix(work.operands[0]), source2 = matrix(work.operands[1]), out = matrix(work.operands[2])] {
        cv::absdiff(source1, source2, out);
    };
}

Call absDiffConstant(const Case& work) {
    return [source = matrix(work.operands[0]), out = matrix(work.operands[1]), value = cv::Scalar(work.parameters[0])] {
        cv::absdiff(source, value, out);
    };
}

Call integral(const Case& work) {
    return
        [source = matrix(work.operands[0]), out = matrix(work.operands[1])] { cv::integral(source, out, out.depth()); };
}

Call integralAndSquares(const Case& work) {
    return [source = matrix(work.operands[0]), out = matrix(work.operands[1]), squares = matrix(work.operands[2])] {
        cv::integral(source, out, squares, out.depth(), squares.depth());
    };
}

}  // namespace bench::peer
