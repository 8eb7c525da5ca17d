// Connected regions that contain a seed, filled with a value.
#include "bind.h"
#include "check.h"
#include "fill_gradient.h"
#include "fill_values.h"
#include "float_modes.h"

namespace VEKCV_VARIANT {
namespace {

/** The arguments that all fills have. */
template <typename T, int32_t kChannels>
struct Arguments {
    Image<T, kChannels> image;
    RoiSize roi;
    ImagePoint seed;
    ConnectedComponent* component;
    uint8_t* buffer;
};

template <typename T, int32_t kChannels, typename... Pointers>
Status check(const Arguments<T, kChannels>& a, const Pointers*... values) {
    return Check()
        .pointers(a.image, a.component, a.buffer, values...)
        .roi(a.roi)
        .steps(a.roi.width, a.image)
        .require(a.seed.x >= 0 && a.seed.x < a.roi.width, StatusOutOfRange)
        .require(a.seed.y >= 0 && a.seed.y < a.roi.height, StatusOutOfRange)
        .require(RunStack::bytes(a.roi) <= INT32_MAX, StatusSizeError);
}

template <typename T, int32_t kChannels>
Value<T, kChannels> seedOf(const Arguments<T, kChannels>& a) {
    return Value<T, kChannels>::from(a.image.row(a.seed.y) + ptrdiff_t{a.seed.x} * kChannels);
}

template <typename T, int32_t kChannels>
void describe(const FilledRegion& region, const Value<T, kChannels>& newValue, ConnectedComponent* component) {
    component->area = static_cast<double>(region.area);
    for (int32_t k = 0; k < 3; ++k)
        component->value[k] = k < kChannels ? static_cast<double>(newValue.channel[k]) : 0;
    component->rect = {region.left, region.top, region.right - region.left + 1, region.bottom - region.top + 1};
}

/** body(), for floats in the modes that a program begins with: differences of pixels are rounded. */
template <typename T, typename Body>
void inModesFor(const Body& body) {
    if constexpr (std::is_floating_point_v<T>)
        inUsualModes(body);
    else
        body();
}

/** Fills by the rule that makeRule(seed) gives, unless the seed looks as if it were filled. */
template <int32_t kReach, typename T, int32_t kChannels, typename MakeRule>
void fillByValue(const Arguments<T, kChannels>& a, const Value<T, kChannels>& newValue, int64_t capacity,
                 const MakeRule& makeRule) {
    inModesFor<T>([&] {
        const auto seed = seedOf(a);
        if (seed == newValue)
            return;
        FillByValue fill(a.image, a.roi.width, makeRule(seed), newValue, capacity);
        const RunStack stack(a.buffer, RunStack::bytes(a.roi));
        describe(walk(fill, a.roi, a.seed, kReach, stack), newValue, a.component);
    });
}

template <int32_t kReach>
struct Plain {
    template <typename T, int32_t kChannels>
    static void fill(const Arguments<T, kChannels>& a, const Value<T, kChannels>& newValue) {
        fillByValue<kReach>(a, newValue, 0, [](const auto& seed) { return Equal<T, kChannels>{seed}; });
    }
};

template <int32_t kReach>
struct Range {
    template <typename T, int32_t kChannels>
    static void fill(const Arguments<T, kChannels>& a, const Value<T, kChannels>& newValue,
                     const Value<T, kChannels>& minDelta, const Value<T, kChannels>& maxDelta) {
        fillByValue<kReach>(a, newValue, int64_t{a.roi.width} * a.roi.height / 4, [&](const auto& seed) {
            return InRange<T, kChannels>::around(seed, minDelta, maxDelta, newValue);
        });
    }
};

template <int32_t kReach>
struct Gradient {
    template <typename T, int32_t kChannels>
    static void fill(const Arguments<T, kChannels>& a, const Value<T, kChannels>& newValue,
                     const Value<T, kChannels>& minDelta, const Value<T, kChannels>& maxDelta) {
        inModesFor<T>([&] {
            using Fill = FillByGradient<T, kChannels>;
            Fill fill(a.image, a.roi, {minDelta, maxDelta}, newValue, kReach, a.buffer);
            const RunStack stack(a.buffer + Fill::mapBytes(a.roi), RunStack::bytes(a.roi));
            describe(walk(fill, a.roi, a.seed, kReach, stack), newValue, a.component);
        });
    }
};

template <typename Form, typename T>
Status fill1(T* image, int32_t imageStep, RoiSize roi, ImagePoint seed, T newValue, ConnectedComponent* component,
             uint8_t* buffer) {
    const Arguments<T, 1> arguments{{image, imageStep}, roi, seed, component, buffer};
    if (Status status = check(arguments))
        return status;
    Form::fill(arguments, {{newValue}});
    return StatusOk;
}

template <typename Form, typename T>
Status fill3(T* image, int32_t imageStep, RoiSize roi, ImagePoint seed, const T* newValue,
             ConnectedComponent* component, uint8_t* buffer) {
    const Arguments<T, 3> arguments{{image, imageStep}, roi, seed, component, buffer};
    if (Status status = check(arguments, newValue))
        return status;
    Form::fill(arguments, Value<T, 3>::from(newValue));
    return StatusOk;
}

template <typename Form, typename T>
Status fillNear1(T* image, int32_t imageStep, RoiSize roi, ImagePoint seed, T newValue, T minDelta, T maxDelta,
                 ConnectedComponent* component, uint8_t* buffer) {
    const Arguments<T, 1> arguments{{image, imageStep}, roi, seed, component, buffer};
    if (Status status = check(arguments))
        return status;
    Form::fill(arguments, {{newValue}}, {{minDelta}}, {{maxDelta}});
    return StatusOk;
}

template <typename Form, typename T>
Status fillNear3(T* image, int32_t imageStep, RoiSize roi, ImagePoint seed, const T* newValue, const T* minDelta,
                 const T* maxDelta, ConnectedComponent* component, uint8_t* buffer) {
    const Arguments<T, 3> arguments{{image, imageStep}, roi, seed, component, buffer};
    if (Status status = check(arguments, newValue, minDelta, maxDelta))
        return status;
    using Channels = Value<T, 3>;
    Form::fill(arguments, Channels::from(newValue), Channels::from(minDelta), Channels::from(maxDelta));
    return StatusOk;
}

int64_t gradientBytes(RoiSize roi) {
    return FillByGradient<uint8_t, 1>::mapBytes(roi) + RunStack::bytes(roi);
}

}  // namespace

VEKCV_BIND(vekiFloodFillGetSize, roiBufferSize<RunStack::bytes>);
VEKCV_BIND(vekiFloodFillGetSize_Grad, roiBufferSize<gradientBytes>);

VEKCV_BIND(vekiFloodFill_4Con_8u_C1IR, fill1<Plain<0>>);
VEKCV_BIND(vekiFloodFill_4Con_8u_C3IR, fill3<Plain<0>>);
VEKCV_BIND(vekiFloodFill_4Con_16u_C1IR, fill1<Plain<0>>);
VEKCV_BIND(vekiFloodFill_4Con_16u_C3IR, fill3<Plain<0>>);
VEKCV_BIND(vekiFloodFill_4Con_32f_C1IR, fill1<Plain<0>>);
VEKCV_BIND(vekiFloodFill_4Con_32f_C3IR, fill3<Plain<0>>);
VEKCV_BIND(vekiFloodFill_8Con_8u_C1IR, fill1<Plain<1>>);
VEKCV_BIND(vekiFloodFill_8Con_8u_C3IR, fill3<Plain<1>>);
VEKCV_BIND(vekiFloodFill_8Con_16u_C1IR, fill1<Plain<1>>);
VEKCV_BIND(vekiFloodFill_8Con_16u_C3IR, fill3<Plain<1>>);
VEKCV_BIND(vekiFloodFill_8Con_32f_C1IR, fill1<Plain<1>>);
VEKCV_BIND(vekiFloodFill_8Con_32f_C3IR, fill3<Plain<1>>);

VEKCV_BIND(vekiFloodFill_Grad4Con_8u_C1IR, fillNear1<Gradient<0>>);
VEKCV_BIND(vekiFloodFill_Grad4Con_8u_C3IR, fillNear3<Gradient<0>>);
VEKCV_BIND(vekiFloodFill_Grad4Con_16u_C1IR, fillNear1<Gradient<0>>);
VEKCV_BIND(vekiFloodFill_Grad4Con_16u_C3IR, fillNear3<Gradient<0>>);
VEKCV_BIND(vekiFloodFill_Grad4Con_32f_C1IR, fillNear1<Gradient<0>>);
VEKCV_BIND(vekiFloodFill_Grad4Con_32f_C3IR, fillNear3<Gradient<0>>);
VEKCV_BIND(vekiFloodFill_Grad8Con_8u_C1IR, fillNear1<Gradient<1>>);
VEKCV_BIND(vekiFloodFill_Grad8Con_8u_C3IR, fillNear3<Gradient<1>>);
VEKCV_BIND(vekiFloodFill_Grad8Con_16u_C1IR, fillNear1<Gradient<1>>);
VEKCV_BIND(vekiFloodFill_Grad8Con_16u_C3IR, fillNear3<Gradient<1>>);
VEKCV_BIND(vekiFloodFill_Grad8Con_32f_C1IR, fillNear1<Gradient<1>>);
VEKCV_BIND(vekiFloodFill_Grad8Con_32f_C3IR, fillNear3<Gradient<1>>);

VEKCV_BIND(vekiFloodFill_Range4Con_8u_C1IR, fillNear1<Range<0>>);
VEKCV_BIND(vekiFloodFill_Range4Con_8u_C3IR, fillNear3<Range<0>>);
VEKCV_BIND(vekiFloodFill_Range4Con_16u_C1IR, fillNear1<Range<0>>);
VEKCV_BIND(vekiFloodFill_Range4Con_16u_C3IR, fillNear3<Range<0>>);
VEKCV_BIND(vekiFloodFill_Range4Con_32f_C1IR, fillNear1<Range<0>>);
VEKCV_BIND(vekiFloodFill_Range4Con_32f_C3IR, fillNear3<Range<0>>);
VEKCV_BIND(vekiFloodFill_Range8Con_8u_C1IR, fillNear1<Range<1>>);
VEKCV_BIND(vekiFloodFill_Range8Con_8u_C3IR, fillNear3<Range<1>>);
VEKCV_BIND(vekiFloodFill_Range8Con_16u_C1IR, fillNear1<Range<1>>);
VEKCV_BIND(vekiFloodFill_Range8Con_16u_C3IR, fillNear3<Range<1>>);
VEKCV_BIND(vekiFloodFill_Range8Con_32f_C1IR, fillNear1<Range<1>>);
VEKCV_BIND(vekiFloodFill_Range8Con_32f_C3IR, fillNear3<Range<1>>);

}  // namespace VEKCV_VARIANT
