#include <opencv2/imgproc.hpp>

#include "morph/element.h"
#include "morph/peer.h"
#include "opencv.h"

namespace bench::peer {
namespace {

Call morphology(const Case& work, int operation) {
    const SquareElement element = elementOf(work.parameters);
    const cv::Mat mask = cv::Mat(element.mask()).reshape(1, element.side).clone();
    return [source = matrix(work.operands[0]), out = matrix(work.operands[1]), operation, mask] {
        cv::morphologyEx(source, out, operation, mask, {-1, -1}, 1, cv::BORDER_REPLICATE);
    };
}

}  // namespace

Call erode(const Case& work) {
    return morphology(work, cv::MORPH_ERODE);
}
Call dilate(const Case& work) {
    return morphology(work, cv::MORPH_DILATE);
}
Call morphOpen(const Case& work) {
    return morphology(work, cv::MORPH_OPEN);
}
Call morphClose(const Case& work) {
    return morphology(work, cv::MORPH_CLOSE);
}
Call topHat(const Case& work) {
    return morphology(work, cv::MORPH_TOPHAT);
}
Call blackHat(const Case& work) {
    return morphology(work, cv::MORPH_BLACKHAT);
}
Call morphGradient(const Case& work) {
    return morphology(work, cv::MORPH_GRADIENT);
}

}  // namespace bench::peer
