// Motion history: when each pixel last moved, for as long as that is not too long ago.
#include "bind.h"
#include "check.h"
#include "float_modes.h"
#include "pixelwise.h"

namespace VEKCV_VARIANT {
namespace {

template <typename T>
Status update(Image<const T> silhouette, Image<float> history, RoiSize roi, float timestamp, float duration) {
    if (Status status = Check()
                            .pointers(silhouette, history)
                            .roi(roi)
                            .steps(roi.width, silhouette, history)
                            .require(!(duration < 0), StatusOutOfRange))
        return status;
    const auto rules = [=, threshold = timestamp - duration](int32_t y) {
        return [=, s = silhouette.row(y), h = history.row(y)](auto d, ptrdiff_t x) {
            const auto last = hn::LoadU(d, h + x);
            const auto kept = hn::IfThenZeroElse(hn::Lt(last, hn::Set(d, threshold)), last);
            return hn::IfThenElse(hn::Eq(loadFloats(d, s + x), hn::Zero(d)), kept, hn::Set(d, timestamp));
        };
    };
    writePixels<0>(roi, ParallelFrom::never(), rules, history, silhouette);
    return StatusOk;
}

template <typename T>
Status updateMotionHistory(const T* silhouette, int32_t silhouetteStep, float* motionHistory, int32_t motionHistoryStep,
                           RoiSize roi, float timestamp, float duration) {
    return inUsualModes([=] {
        return update(Image<const T>{silhouette, silhouetteStep}, {motionHistory, motionHistoryStep}, roi, timestamp,
                      duration);
    });
}

}  // namespace

VEKCV_BIND(vekiUpdateMotionHistory_8u32f_C1IR, updateMotionHistory);
VEKCV_BIND(vekiUpdateMotionHistory_16u32f_C1IR, updateMotionHistory);
VEKCV_BIND(vekiUpdateMotionHistory_32f_C1IR, updateMotionHistory);
}  // namespace VEKCV_VARIANT
