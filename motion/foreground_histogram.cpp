// Foreground and background by histograms.
#include "bind.h"
#include "check.h"
#include "float_modes.h"
#include "histogram_table.h"

namespace VEKCV_VARIANT {

// Exports of another file, as this variant has them.
extern template struct Entry<&::vekiFloodFill_4Con_8u_C1IR>;
extern template struct Entry<&::vekiFloodFill_8Con_8u_C1IR>;

namespace {

/** A pixel of a frame, and the same pixel of the frame that was learned before. */
template <int32_t kChannels>
class Pixel {
  public:
    using Values = HistogramTable<kValues, kChannels>;
    using Changes = HistogramTable<kChanges, 2 * kChannels>;

    HWY_INLINE Pixel(const HistogramModel& model, const uint8_t* pixels, ptrdiff_t index)
        : model_(model), now_(pixels), index_(index) {
        const float most = tolerance() * (256.0F / kValues.levels);
        const float* const background = reference();
        const uint8_t* const before = previous();
        for (int32_t c = 0; c < kChannels; ++c) {
            const float value = now_[c], difference = value - background[c];
            const float change = value - static_cast<float>(before[c]);
            isOfReference_ &= HWY_MAX(difference, -difference) <= most;
            isStill_ &= HWY_MAX(change, -change) <= most;
            valueLevels_[c] = level(now_[c], kValues);
            changeLevels_[c] = level(before[c], kChanges);
            changeLevels_[kChannels + c] = level(now_[c], kChanges);
        }
    }

    HWY_INLINE bool isBackground() const {
        return isOfReference_ || (isStill_ ? values().isBackground(valueLevels_, tolerance())
                                           : changes().isBackground(changeLevels_, tolerance()));
    }

    HWY_INLINE void learn(bool isBackground, float rate) {
        const ForegroundHistogramParameters& parameters = model_.record.parameters;
        values().learn(valueLevels_, isBackground, rate, tolerance());
        const bool isAbsorbed = values().absorb(parameters.majority);
        if (!isStill_) {
            changes().learn(changeLevels_, isBackground, rate, tolerance());
            changes().absorb(parameters.majority);
        }
        if (isAbsorbed || (isBackground && isStill_ && !isOfReference_))
            setReference(1);
        else if (isBackground && isOfReference_)
            setReference(parameters.referenceRate);
        __builtin_memcpy(previous(), now_, kChannels);
    }

    /** The background, rounded. */
    HWY_INLINE void storeReference(uint8_t* pixels) const {
        for (int32_t c = 0; c < kChannels; ++c)
            pixels[c] = static_cast<uint8_t>(reference()[c] + 0.5F);
    }

  private:
    static uint8_t level(uint8_t value, TableSize size) { return static_cast<uint8_t>(value * size.levels >> 8); }

    HWY_INLINE void setReference(float rate) {
        for (int32_t c = 0; c < kChannels; ++c)
            reference()[c] += (static_cast<float>(now_[c]) - reference()[c]) * rate;
    }

    float tolerance() const { return model_.record.parameters.tolerance; }
    float* reference() const { return model_.reference + index_ * kChannels; }
    uint8_t* previous() const { return model_.previous + index_ * kChannels; }
    Values values() const { return Values(model_.valuesOf<kChannels>(index_)); }
    Changes changes() const { return Changes(model_.changesOf<kChannels>(index_)); }

    const HistogramModel& model_;
    const uint8_t* now_;
    ptrdiff_t index_;
    bool isOfReference_ = true, isStill_ = true;
    uint8_t valueLevels_[kChannels], changeLevels_[2 * kChannels];
};

/** Calls visit(pixel, x) for all pixels of a row. */
template <int32_t kChannels, typename Visit>
HWY_INLINE void forPixels(const HistogramModel& model, Image<const uint8_t, kChannels> in, int32_t y,
                          const Visit& visit) {
    const uint8_t* const row = in.row(y);
    const ptrdiff_t first = ptrdiff_t{y} * model.roi.width;
    for (ptrdiff_t x = 0; x < model.roi.width; ++x)
        visit(Pixel<kChannels>(model, row + x * kChannels, first + x), x);
}

// --- regions of a mask

constexpr uint8_t kBackground = 0, kForeground = 255;

/** A mask whose connected regions are repainted. */
class MaskRegions {
  public:
    MaskRegions(Image<uint8_t> mask, RoiSize roi, uint8_t* buffer) : mask_(mask), roi_(roi), buffer_(buffer) {}

    /** Gives the area of a region. */
    double fill4(int32_t x, int32_t y, uint8_t value) const { return fill<&::vekiFloodFill_4Con_8u_C1IR>(x, y, value); }
    double fill8(int32_t x, int32_t y, uint8_t value) const { return fill<&::vekiFloodFill_8Con_8u_C1IR>(x, y, value); }

    /** Calls visit(x, y) for pixels that have a value at that time. */
    template <typename Visit>
    void forEach(uint8_t value, const Visit& visit) const {
        for (int32_t y = 0; y < roi_.height; ++y) {
            uint8_t* const row = mask_.row(y);
            for (int32_t x = 0; x < roi_.width; ++x)
                if (row[x] == value)
                    visit(x, y);
        }
    }

    template <typename Visit>
    void forBorder(uint8_t value, const Visit& visit) const {
        const auto visitIf = [&](int32_t x, int32_t y) {
            if (mask_.row(y)[x] == value)
                visit(x, y);
        };
        for (int32_t x = 0; x < roi_.width; ++x) {
            visitIf(x, 0);
            visitIf(x, roi_.height - 1);
        }
        for (int32_t y = 0; y < roi_.height; ++y) {
            visitIf(0, y);
            visitIf(roi_.width - 1, y);
        }
    }

    /** Makes pixels of a value another one, and all others a third one. */
    void split(uint8_t value, uint8_t equal, uint8_t others) const {
        for (int32_t y = 0; y < roi_.height; ++y) {
            uint8_t* const row = mask_.row(y);
            for (int32_t x = 0; x < roi_.width; ++x)
                row[x] = row[x] == value ? equal : others;
        }
    }

  private:
    template <auto kExport>
    double fill(int32_t x, int32_t y, uint8_t value) const {
        ConnectedComponent component;
        Entry<kExport>::call(mask_.pixels, mask_.step, roi_, {x, y}, value, &component, buffer_);
        return component.area;
    }

    Image<uint8_t> mask_;
    RoiSize roi_;
    uint8_t* buffer_;
};

/** Removes small regions of foreground, and fills those of background that foreground surrounds. */
void cleanMask(const ForegroundHistogramParameters& parameters, const MaskRegions& regions) {
    constexpr uint8_t kKept = 128;
    if (parameters.removesSpecks != 0) {
        regions.forEach(kForeground, [&](int32_t x, int32_t y) {
            if (regions.fill8(x, y, kKept) < double{parameters.minimumArea})
                regions.fill8(x, y, kBackground);
        });
        regions.split(kKept, kForeground, kBackground);
    }
    if (parameters.fillsHoles != 0) {
        regions.forBorder(kBackground, [&](int32_t x, int32_t y) { regions.fill4(x, y, kKept); });
        regions.split(kKept, kBackground, kForeground);
    }
}

// --- the exports

/** The checks of a call with a state. */
template <int32_t kChannels, typename... Images>
Status check(RoiSize roi, const HistogramModel* model, Image<const uint8_t, kChannels> in, const Images&... others) {
    if (Status status = Check().pointers(in, others..., model).roi(roi))
        return status;
    return Check()
        .roiOfState(roi, model->roi)
        .stepLengths(roi.width, in)
        .require(model->channels == kChannels, StatusBadArgument);
}

template <int32_t kChannels>
Status classify(const uint8_t* source, int32_t sourceStep, uint8_t* foreground, int32_t foregroundStep, RoiSize roi,
                ForegroundHistogramState* state) {
    const Image<const uint8_t, kChannels> in{source, sourceStep};
    const Image<uint8_t> mask{foreground, foregroundStep};
    const auto* const model = reinterpret_cast<const HistogramModel*>(state);
    if (Status status = check<kChannels>(roi, model, in, mask))
        return status;
    inUsualModes([&] {
        for (int32_t y = 0; y < roi.height; ++y) {
            uint8_t* const row = mask.row(y);
            forPixels(*model, in, y, [=](const Pixel<kChannels>& pixel, ptrdiff_t x) {
                row[x] = pixel.isBackground() ? kBackground : kForeground;
            });
        }
    });
    cleanMask(model->record.parameters, MaskRegions(mask, roi, model->fillBuffer));
    return StatusOk;
}

template <int32_t kChannels>
Status update(const uint8_t* source, int32_t sourceStep, const uint8_t* foreground, int32_t foregroundStep,
              uint8_t* background, int32_t backgroundStep, RoiSize roi, ForegroundHistogramState* state) {
    const Image<const uint8_t, kChannels> in{source, sourceStep};
    const Image<const uint8_t> mask{foreground, foregroundStep};
    const Image<uint8_t, kChannels> back{background, backgroundStep};
    auto* const model = reinterpret_cast<HistogramModel*>(state);
    if (Status status = check<kChannels>(roi, model, in, mask, back))
        return status;
    ForegroundHistogramState& record = model->record;
    record.updateCount += record.updateCount < INT32_MAX ? 1 : 0;
    inUsualModes([&] {
        const float share = 1 / static_cast<float>(record.updateCount);
        const float start = HWY_MIN(share, record.parameters.startRate);
        const float rate = HWY_MAX(start, record.parameters.gradualRate);
        for (int32_t y = 0; y < roi.height; ++y) {
            const uint8_t* const row = mask.row(y);
            uint8_t* const result = back.row(y);
            forPixels(*model, in, y, [=](Pixel<kChannels> pixel, ptrdiff_t x) {
                pixel.learn(row[x] == kBackground, rate);
                pixel.storeReference(result + x * kChannels);
            });
        }
    });
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiForegroundHistogram_8u_C1R, classify<1>);
VEKCV_BIND(vekiForegroundHistogram_8u_C3R, classify<3>);
VEKCV_BIND(vekiForegroundHistogramUpdate_8u_C1R, update<1>);
VEKCV_BIND(vekiForegroundHistogramUpdate_8u_C3R, update<3>);
}  // namespace VEKCV_VARIANT
