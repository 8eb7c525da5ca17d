// How models of histograms are made.
#include "bind.h"
#include "check.h"
#include "histogram_model.h"
#include "state.h"

namespace VEKCV_VARIANT {

extern template struct Entry<&::vekiFloodFillGetSize>;  // an export of another file, as this variant has it

namespace {

constexpr ForegroundHistogramParameters kDefaults = {
    .valueLevels = kValues.levels,
    .valueEntries = kValues.entries,
    .valueCapacity = kValues.capacity,
    .changeLevels = kChanges.levels,
    .changeEntries = kChanges.entries,
    .changeCapacity = kChanges.capacity,
    .fillsHoles = 1,
    .removesSpecks = 1,
    .referenceRate = 0.1F,
    .gradualRate = 0.005F,
    .startRate = 0.1F,
    .tolerance = 2,
    .majority = 0.9F,
    .minimumArea = 15,
};

/** All pixels have been background with the values of the first frame, and none has changed. */
template <int32_t kChannels>
void setPixels(const HistogramModel& model, Image<const uint8_t, kChannels> first) {
    for (int32_t y = 0; y < model.roi.height; ++y) {
        const uint8_t* const row = first.row(y);
        for (int32_t x = 0; x < model.roi.width; ++x) {
            const ptrdiff_t index = ptrdiff_t{y} * model.roi.width + x;
            ValueEntry<kChannels>* const values = model.valuesOf<kChannels>(index);
            values[0].frequency = values[0].background = 1;
            values[1].frequency = 0;
            model.changesOf<kChannels>(index)[0].frequency = 0;
            for (int32_t c = 0; c < kChannels; ++c) {
                const uint8_t value = row[ptrdiff_t{x} * kChannels + c];
                values[0].features[c] = static_cast<uint8_t>(value * kValues.levels >> 8);
                model.previous[index * kChannels + c] = value;
                model.reference[index * kChannels + c] = value;
            }
        }
    }
}

template <int32_t kChannels>
Status initAlloc(const uint8_t* source, int32_t sourceStep, RoiSize roi,
                 const ForegroundHistogramParameters* parameters, ForegroundHistogramState** result) {
    const Image<const uint8_t, kChannels> first{source, sourceStep};
    if (Status status = Check().pointers(first, parameters, result).roi(roi).stepLengths(roi.width, first))
        return status;
    constexpr int64_t kValueBytes = kValues.capacity * int64_t{sizeof(ValueEntry<kChannels>)};
    constexpr int64_t kChangeBytes = kChanges.capacity * int64_t{sizeof(ChangeEntry<kChannels>)};
    const int64_t pixels = int64_t{roi.width} * roi.height;
    int32_t fillBytes = 0;
    if (pixels > INT32_MAX / kChangeBytes || Entry<&::vekiFloodFillGetSize>::call(roi, &fillBytes) != StatusOk)
        return StatusMemoryAllocation;
    const auto count = [=](int64_t bytes) { return static_cast<int32_t>(pixels * bytes); };
    Owned<HistogramModel> model;
    if (Status status = newState(model, StateArray{&HistogramModel::reference, count(kChannels)},
                                 StateArray{&HistogramModel::previous, count(kChannels)},
                                 StateArray{&HistogramModel::values, count(kValueBytes)},
                                 StateArray{&HistogramModel::changes, count(kChangeBytes)},
                                 StateArray{&HistogramModel::fillBuffer, fillBytes}))
        return status;
    model->channels = kChannels;
    model->roi = roi;
    model->record.parameters = kDefaults;
    setPixels<kChannels>(*model, first);
    *result = &model.keep()->record;
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiForegroundHistogramInitAlloc_8u_C1R, initAlloc<1>);
VEKCV_BIND(vekiForegroundHistogramInitAlloc_8u_C3R, initAlloc<3>);
VEKCV_BIND(vekiForegroundHistogramFree_8u_C1R, freeState);
VEKCV_BIND(vekiForegroundHistogramFree_8u_C3R, freeState);
}  // namespace VEKCV_VARIANT
