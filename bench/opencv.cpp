#include "peer.h"

#include <opencv2/core.hpp>

namespace bench::peer {

std::string name() {
    return "OpenCV " CV_VERSION;
}

void setThreads(int threads) {
    cv::setNumThreads(threads);
}

}  // namespace bench::peer
