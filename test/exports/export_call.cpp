#include "export_call.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <stdexcept>

#include "fuzz/morphology_functions.h"
#include "fuzz/preconditions.h"
#include "pyramid_sizes.h"

namespace exports {
namespace {

using fuzz::Element;
using fuzz::Export;
using fuzz::Kind;
using fuzz::Parameter;
using fuzz::Value;

/**
 * There is memory for twice as many rows as the region has, and for three times as many columns, and for so many more,
 * for results that are larger than the region.
 */
constexpr int32_t kMore = 8;
constexpr int32_t kTaps = 3;
constexpr float kRate = 1.5f;
/** More than any work buffer, and any kernel or result needs. */
constexpr size_t kBufferBytes = size_t{1} << 28, kOtherBytes = 4096;

bool isTapCount(std::string_view parameter) {
    return parameter == "kernelSize" || parameter == "apertureSize" || parameter == "averageWindow" ||
           parameter == "windowSize";
}

template <typename T>
Value valueWith(T content) {
    Value value;
    value.set(content);
    return value;
}

/** Numbers and floats that are finite. */
template <typename T>
T element(Random& random) {
    if constexpr (std::is_floating_point_v<T>)
        return T(int32_t(random.bits()) - (1 << 30)) / T(1 << 20);
    else
        return T(random.bits());
}

}  // namespace

ExportCall::ExportCall(const Export& target, RoiSize roi, Address address) : roi_(roi), address_(address) {
    call_.target = &target;
    call_.rules = fuzz::findPrecondition(target);
    if (call_.rules == nullptr)
        throw std::runtime_error(std::string(target.name) + " belongs to no family of fuzz/families");
    call_.allowedAllocations = INT_MAX;
    call_.operands.resize(target.parameters.size());
    for (size_t i = 0; i < target.parameters.size(); ++i)
        call_.values.push_back(valueOf(target.parameters[i], i));
    for (size_t i = 0; i < target.parameters.size(); ++i)
        if (target.isStep(i))
            call_.values[i].set(int32_t(fuzz::checkedRowBytes(call_, i - 1)));
    call_.plainValues = call_.values;
    setFaults({});
}

void ExportCall::setFaults(std::initializer_list<Fault> faults) {
    call_.values = call_.plainValues;
    for (const Fault& fault : faults)
        call_.values[fault.parameter] = fault.value;
    call_.isNull.clear();
    for (const Value& value : call_.values)
        call_.isNull.push_back(value.as<void*>() == nullptr);
}

bool ExportCall::changesObjects() const {
    return makesObject(*call_.target) ||
           (!hasImages(*call_.target) && std::ranges::any_of(call_.target->parameters, [](const Parameter& p) {
               return p.isObject() && !p.isConst;
           }));
}

Value ExportCall::valueOf(const Parameter& parameter, size_t index) {
    switch (parameter.kind) {
        case Kind::kPoint:
            return valueWith(ImagePoint{1, 1});
        case Kind::kPoint32f:
            return valueWith(ImagePoint32f{1.5f, 1.25f});
        case Kind::kSize:
            return valueWith(parameter.name == "maskSize"         ? RoiSize{kTaps, kTaps}
                             : parameter.name == "destinationRoi" ? nextLevel()
                                                                  : roi_);
        case Kind::kRectangle:
            return valueWith(ImageRect{1, 0, 1, 2});
        case Kind::kRows:
            return valueWith(addRows(parameter));
        case Kind::kState:
            if (call_.target->makesInPlace())
                return valueWith(addOperand(parameter, kBufferBytes, address_).data);
            if (parameter.type == "Pyramid" && parameter.isConst)
                return valueWith(addPyramid());
            return parameter.type == "HaarClassifier"            ? valueWith(addClassifier())
                   : parameter.type.ends_with("MorphologyState") ? valueWith(addMorphologyState())
                   : parameter.type == "SrhnState"               ? valueWith(addSrhnState())
                   : parameter.type.ends_with("Parameters")
                       ? valueWith(addOperand(parameter, kOtherBytes, Address::kAligned).data)
                       : valueWith(addStateOfForm());
        case Kind::kStateSlot:
            return valueWith(addOperand(parameter, sizeof(void*), Address::kAligned).data);
        case Kind::kPointer:
            if (call_.isImage(index))
                return valueWith(
                    addOperand(parameter, rowBytesOf(parameter) * size_t(2 * roi_.height + kMore), address_).data);
            if (parameter.name == "metrics")
                return valueWith(addMetrics(parameter));
            if (parameter.name == "offsets" || parameter.name == "psfIndex")
                return valueWith(addZeros(parameter));
            return valueWith(parameter.name == "buffer" ? addOperand(parameter, kBufferBytes, address_).data
                                                        : addOperand(parameter, kOtherBytes, Address::kAligned).data);
        default:
            return number(parameter);
    }
}

Value ExportCall::number(const Parameter& parameter) const {
    if (parameter.name == "rate")
        return valueWith(kRate);
    const bool isOfDistances = call_.target->name.starts_with("vekiGetDistanceTransform");
    const int32_t value = parameter.name == "maskCode"            ? 31
                          : parameter.name == "maskSize"          ? (isOfDistances ? 3 : MaskSize3x3)
                          : isTapCount(parameter.name)            ? kTaps
                          : parameter.name == "roiWidth"          ? roi_.width
                          : parameter.name == "scaleFactor"       ? 0
                          : parameter.name == "interpolationMode" ? 2
                                                                  : 1;
    return fuzz::withType(parameter.element, [=](auto type) { return valueWith(decltype(type)(value)); });
}

size_t ExportCall::rowBytesOf(const Parameter& image) const {
    const int32_t channels = call_.channelsOf(call_.target->indexOf(image.name));
    return size_t(3 * roi_.width + kMore) * size_t(channels * bytesOf(image.element));
}

ExportCall::Operand& ExportCall::addOperand(const Parameter& parameter, size_t bytes, Address address) {
    // Large memory of zeros takes no page before it is touched.
    void* const zeros = memory_.emplace_back(std::calloc(bytes + size_t(address), 1), &std::free).get();
    uint8_t* const data = static_cast<uint8_t*>(zeros) + size_t(address);
    const bool isMask = parameter.name == "mask" && parameter.element == Element::k8u;
    operands_.push_back({parameter.element, isMask, parameter.name == "buffer", false, bytes, data});
    return operands_.back();
}

/** Weights of steps, with which a knight helps. */
void* ExportCall::addMetrics(const Parameter& parameter) {
    Operand& operand = addOperand(parameter, kOtherBytes, Address::kAligned);
    operand.isFixed = true;
    fuzz::withType(parameter.element, [&]<typename T>(T) {
        const T metrics[] = {T(2), T(3), T(4)};
        std::memcpy(operand.data, metrics, sizeof metrics);
    });
    return operand.data;
}

/** Positions and indices, of which zero is always one. */
void* ExportCall::addZeros(const Parameter& parameter) {
    Operand& operand = addOperand(parameter, kOtherBytes, Address::kAligned);
    operand.isFixed = true;
    return operand.data;
}

void* ExportCall::addRows(const Parameter& parameter) {
    const size_t step = rowBytesOf(parameter), count = size_t(roi_.height + kTaps - 1);
    uint8_t* const first = addOperand(parameter, step * count, address_).data;
    auto& rows = rows_.emplace_back();
    for (size_t y = 0; y < count; ++y)
        rows.push_back(first + y * step);
    return rows.data();
}

const HaarClassifier* ExportCall::addClassifier() {
    const auto build = [&]<typename V>(V) {
        haar::Features<V> features;
        features.add({{1, 0, 1, 1}, {1, 1, 2, 1}}, {1, 2}, 0, 0, 1);
        return classifiers_.emplace_back(haar::build(features, haar::Shape::kUpright)).get();
    };
    const bool isFloat = call_.target->name.find("32f") != std::string_view::npos;
    return isFloat ? build(float()) : build(int32_t());
}

/** With images of zeros, which any element may be. */
const Pyramid* ExportCall::addPyramid() {
    Pyramid* pyramid = nullptr;
    EXPECT_EQ(StatusOk, vekiPyramidInitAlloc(&pyramid, 1, roi_, kRate));
    states_.emplace_back(pyramid, [](void* made) { vekiPyramidFree(static_cast<Pyramid*>(made)); });
    for (int32_t level = 0; level <= pyramid->levelCount; ++level) {
        pyramid->levelSteps[level] = pyramid->levelSizes[level].width * int32_t{sizeof(float)};
        pyramid->levelImages[level] = memory_
                                          .emplace_back(std::calloc(size_t(pyramid->levelSizes[level].height),
                                                                    size_t(pyramid->levelSteps[level])),
                                                        &std::free)
                                          .get();
    }
    return pyramid;
}

void* ExportCall::addMorphologyState() {
    const auto functions = fuzz::MorphologyFunctions::of(*call_.target);
    return addState(functions.find("InitAlloc"), functions.find("Free"));
}

/** The functions differ in what stands in front of the size of the blocks. */
void* ExportCall::addSrhnState() {
    const std::string name(call_.target->name), size = name.substr(name.find("_PSF"), 7);
    return addState(*fuzz::findExport("vekiSRHNInitAlloc" + size), *fuzz::findExport("vekiSRHNFree" + size));
}

/** The functions differ in what stands in front of the form, such as "_8u_C1R", or of what they do. */
void* ExportCall::addStateOfForm() {
    const std::string name(call_.target->name);
    const std::string form = name.substr(std::min(name.find('_'), name.size()));
    std::string function = name.substr(0, name.size() - form.size());
    for (const std::string_view purpose : {"Free", "Update"})
        if (function.ends_with(purpose))
            function.erase(function.size() - purpose.size());
    return addState(*fuzz::findExport(function + "InitAlloc" + form), *fuzz::findExport(function + "Free" + form));
}

/** By a call of the export that makes such states, with arguments that follow from its declaration, too. */
void* ExportCall::addState(const Export& initAlloc, const Export& free) {
    ExportCall maker(initAlloc, roi_);
    maker.fill(1);
    EXPECT_EQ(StatusOk, maker.run());
    const auto slot = std::ranges::find(initAlloc.parameters, Kind::kStateSlot, &Parameter::kind);
    const auto index = static_cast<size_t>(slot - initAlloc.parameters.begin());
    void* const state = *static_cast<void**>(maker.call_.values[index].as<void*>());
    states_.emplace_back(state, [release = &free](void* made) {
        EXPECT_EQ(StatusOk, release->call(std::array{valueWith(made)}.data()));
    });
    return state;
}

/** The smallest that an image of the next level of a pyramid may be. */
RoiSize ExportCall::nextLevel() const {
    const bool isDown = call_.target->name.find("Down") != std::string_view::npos;
    const auto up = [](int32_t length) { return int32_t(pyramid::expanded(length, kRate).least); };
    return isDown ? pyramid::reduced(roi_, kRate) : RoiSize{up(roi_.width), up(roi_.height)};
}

void ExportCall::fill(uint32_t seed) {
    Random random(seed);
    for (const Operand& operand : operands_) {
        const size_t bytes = std::min(operand.bytes, size_t{1} << 16);
        if (operand.isMask)
            std::generate_n(operand.data, bytes, [&] { return random.mask(); });
        else if (operand.element == Element::kPoint || operand.isFixed)
            continue;
        else
            fuzz::withType(operand.element, [&](auto type) {
                for (size_t i = 0; i + sizeof type <= bytes; i += sizeof type) {
                    type = element<decltype(type)>(random);
                    std::memcpy(operand.data + i, &type, sizeof type);
                }
            });
    }
}

bool ExportCall::wroteTheSameAs(const ExportCall& other) const {
    for (size_t i = 0; i < operands_.size(); ++i)
        if (!operands_[i].isScratch &&
            std::memcmp(operands_[i].data, other.operands_[i].data, std::min(operands_[i].bytes, size_t{1} << 16)) != 0)
            return false;
    return true;
}

bool makesObject(const Export& target) {
    return std::ranges::any_of(target.parameters, [](const Parameter& p) { return p.kind == Kind::kStateSlot; });
}

std::vector<const Export*> exportsWithRegions() {
    std::vector<const Export*> found;
    for (const Export& target : fuzz::exports())
        if (target.has("roiSize") && !makesObject(target))
            found.push_back(&target);
    return found;
}

bool hasImages(const Export& target) {
    return std::any_of(target.parameters.begin(), target.parameters.end(),
                       [](const Parameter& p) { return p.kind == Kind::kRows || p.name.ends_with("Step"); });
}

}  // namespace exports
