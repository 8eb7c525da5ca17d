#include <opencv2/imgproc.hpp>

#include "feature/peer.h"
#include "opencv.h"

namespace bench::peer {

Call canny(const Case& work) {
    return [dx = matrix(work.operands[0]), dy = matrix(work.operands[1]), out = matrix(work.operands[2]),
            low = work.parameters[0], high = work.parameters[1]] { cv::Canny(dx, dy, out, low, high, false); };
}

}  // namespace bench::peer
