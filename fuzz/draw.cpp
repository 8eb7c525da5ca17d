#include "draw.h"

#include <algorithm>
#include <climits>
#include <cmath>

#include "faults.h"
#include "preconditions.h"

namespace fuzz {
namespace {

enum class Role { kNone, kImage, kRows, kTaps, kFeatures, kBuffer, kResult, kUnknown };

Role roleOf(const Export& target, size_t index) {
    const Parameter& parameter = target.parameters[index];
    if (parameter.kind == Kind::kRows)
        return Role::kRows;
    if (parameter.kind == Kind::kStateSlot)
        return Role::kResult;
    if (parameter.kind != Kind::kPointer)
        return Role::kNone;
    if (target.isStepOf(index + 1, index))
        return Role::kImage;
    if (parameter.name == "kernel" && target.has("kernelSize"))
        return Role::kTaps;
    if (parameter.name == "buffer")
        return Role::kBuffer;
    if (parameter.isConst && Features::hasArray(parameter.name))
        return Role::kFeatures;
    return parameter.isConst ? Role::kUnknown : Role::kResult;
}

/** Draws the arguments of a call one after the other: numbers, then memory, which depends on them. */
class Drawing {
  public:
    Drawing(Input& input, Call& call) : input_(input), call_(call), target_(*call.target) {}

    void draw() {
        call_.values.resize(target_.parameters.size());
        call_.operands.resize(target_.parameters.size());
        call_.addresses.resize(target_.parameters.size());
        call_.isNull.resize(target_.parameters.size());
        const bool isFaulty = input_.oneIn(3);
        if (usesFeatures())
            call_.features = Features::draw(input_, target_.name.find("32f") != std::string_view::npos);
        forEach([&](size_t i) { drawPlain(i); });
        forEach([&](size_t i) { drawMemory(i); });
        if (call_.rules->sharesMemory && input_.oneIn(8))
            shareMemory();
        call_.plainValues = call_.values;
        for (int faults = isFaulty ? 1 + (input_.oneIn(2) ? 1 : 0) : 0; faults > 0; --faults)
            addFault(input_, call_);
    }

  private:
    template <typename Visitor>
    void forEach(Visitor visit) {
        for (size_t i = 0; i < target_.parameters.size(); ++i)
            visit(i);
    }

    bool usesFeatures() const {
        return std::any_of(target_.parameters.begin(), target_.parameters.end(),
                           [](const Parameter& p) { return p.kind == Kind::kState || p.kind == Kind::kStateSlot; });
    }
    bool isQuery() const { return target_.has("bufferSize"); }

    // --- numbers

    int32_t anyInteger() {
        constexpr int32_t kSome[] = {0, 1, -1, INT_MAX, INT_MIN, 1 << 30, 65536, 46341, 1431655766};
        return input_.oneIn(2) ? input_.oneOf(kSome) : input_.take<int32_t>();
    }

    RoiSize drawSize() {
        if (isQuery() && input_.oneIn(2))
            return {anyInteger(), anyInteger()};
        const uint32_t kind = input_.below(32);
        const auto from1 = [&](uint32_t count) { return 1 + static_cast<int32_t>(input_.below(count)); };
        if (kind == 31) {  // large enough for threads, by the thresholds of the families
            constexpr int32_t kPixels[] = {16384, 65536, 98304, 16384, 65536, 262144, 393216, 393216};
            const int32_t width = 127 + from1(600);
            return {width, input_.oneOf(kPixels) / width + from1(3)};
        }
        if (kind >= 24)
            return {from1(70), from1(70)};
        const int32_t width = from1(300);
        return {width, from1(8)};
    }

    ImageRect drawRectangle() {
        const auto x = static_cast<int32_t>(input_.below(20));
        const auto y = static_cast<int32_t>(input_.below(20));
        const bool isTilted = target_.name.find("Tilted") != std::string_view::npos;
        return {x, y, 1 + static_cast<int32_t>(input_.below(20)),
                1 + static_cast<int32_t>(input_.below(isTilted ? static_cast<uint32_t>(x) + 1 : 20))};
    }

    template <typename T>
    T drawNumber(const NumberRule& rule) {
        const uint32_t choice = input_.below(8);
        if (choice == 7 && rule.others != NumberRule::kNone) {
            if (rule.others == NumberRule::kBelowOne && !isQuery())
                return static_cast<T>(input_.oneIn(2) ? INT_MIN : -static_cast<int32_t>(input_.below(3)));
            if constexpr (sizeof(T) == 4 && !std::is_floating_point_v<T>)
                return anyInteger();
            return Random(input_.take<uint16_t>()).value<T>();
        }
        const double value = rule.usual[input_.below(static_cast<uint32_t>(rule.usual.size()))];
        if constexpr (std::is_floating_point_v<T>)
            return static_cast<T>(value);
        else
            return static_cast<T>(static_cast<int64_t>(std::isnan(value) ? 0 : value));
    }

    void drawPlain(size_t i) {
        const Parameter& parameter = target_.parameters[i];
        Value& value = call_.values[i];
        if (parameter.kind == Kind::kSize) {
            value.set(drawSize());
        } else if (parameter.kind == Kind::kRectangle) {
            value.set(drawRectangle());
        } else if (parameter.name == "featureCount") {
            value.set(call_.features->featureCount());
        } else if (parameter.kind == Kind::kNumber && !target_.isStep(i)) {
            const NumberRule& rule = *findNumberRule(parameter.name);
            withType(parameter.element, [&]<typename T>(T) { value.set(drawNumber<T>(rule)); });
            // Taps that are sure to be there more often than not.
            if (parameter.name == "anchorX" && !input_.oneIn(6))
                value.set((value.as<int32_t>() & 0xFFFF) % std::max(call_.value("kernelSize").as<int32_t>(), 1));
        }
    }

    // --- memory

    Content drawContent(size_t i) {
        constexpr Content::Values kValues[] = {Content::kAny,    Content::kAny,      Content::kSmall,
                                               Content::kSparse, Content::kConstant, Content::kZero};
        const std::string_view name = target_.parameters[i].name;
        const auto values = name == "mask" ? Content::kMask : input_.oneOf(kValues);
        return {values, input_.take<uint16_t>() * 16u + static_cast<uint32_t>(i)};
    }

    Place drawPlace(Extent extent) {
        constexpr Place::Guard kGuards[] = {Place::kBehind, Place::kBefore, Place::kBehindRows};
        const Place::Guard guard = input_.oneOf(kGuards);
        if (guard == Place::kBehindRows)
            return {extent.rows() <= 16 ? guard : Place::kBehind, 0};
        return {guard, input_.oneIn(2) ? static_cast<int64_t>(input_.below(40)) : 0};
    }

    void drawImage(size_t i) {
        const Extent extent = extentOf(call_, i);
        const int64_t bytes = bytesOf(target_.parameters[i].element), checked = checkedRowBytes(call_, i);
        // A row must be as long as the step check asks; what is read beyond that may be of the next row, too.
        const int64_t row = input_.oneIn(8) ? checked : std::max(extent.columns() * bytes, checked);
        int64_t step = row + (input_.oneIn(2) ? static_cast<int64_t>(input_.below(40)) * bytes : 0);
        if (input_.oneIn(24))
            step += 1 + static_cast<int64_t>(input_.below(3));  // refused, where rows must hold whole elements
        Place place = drawPlace(extent);
        if (place.guard == Place::kBehindRows && step % bytes != 0)
            place.guard = Place::kBehind;
        add(i, extent, step, place);
        const auto usedStep = static_cast<int32_t>(call_.operands[i]->step());
        call_.values[i + 1].set(usedStep);
        call_.values[i].set(call_.operands[i]->pointer());
    }

    void drawRows(size_t i) {
        const Extent extent = extentOf(call_, i);
        const int64_t rowBytes = extent.columns() * bytesOf(target_.parameters[i].element);
        add(i, extent, rowBytes + static_cast<int64_t>(input_.below(40)), drawPlace(extent));
        Random random(input_.take<uint16_t>());
        const Operand& pixels = *call_.operands[i];
        std::vector<void*> rows;
        for (int64_t y = 0; y < extent.rows(); ++y)
            rows.push_back(pixels.row(y));
        const bool isShuffled = input_.oneIn(2), mayRepeat = target_.parameters[i].isConst;
        for (size_t y = 0; isShuffled && y < rows.size(); ++y) {
            void*& other = rows[random.below(static_cast<uint32_t>(rows.size()))];
            if (mayRepeat && random.below(2) == 0)
                rows[y] = other;
            else
                std::swap(rows[y], other);
        }
        addArray(call_.addresses[i], Element::kPointer, rows.size(), rows.data());
        call_.values[i].set(call_.addresses[i]->pointer());
    }

    void drawMemory(size_t i) {
        const Parameter& parameter = target_.parameters[i];
        switch (roleOf(target_, i)) {
            case Role::kImage:
                drawImage(i);
                break;
            case Role::kRows:
                drawRows(i);
                break;
            case Role::kTaps:
                addArray(i, std::clamp<int64_t>(call_.value("kernelSize").as<int32_t>(), 1, 64), nullptr);
                break;
            case Role::kFeatures:
                addArray(i, call_.features->arrayLength(parameter.name), call_.features->array(parameter.name));
                break;
            case Role::kResult:
                addArray(i, 1, nullptr);
                break;
            case Role::kBuffer:
                call_.bufferPlace = drawPlace({0, 0, 1, INT_MAX});
                break;
            default:
                break;
        }
    }

    void add(size_t i, Extent extent, int64_t step, Place place) {
        call_.operands[i] = std::make_unique<Operand>(target_.parameters[i].element, extent, step, place);
        call_.operands[i]->fill(drawContent(i));
        call_.operands[i]->save();
    }

    /** An array has elements at their natural alignment and lies in front of a guard, or behind one. */
    void addArray(std::unique_ptr<Operand>& operand, Element element, size_t length, const void* content) {
        const Place place{input_.oneIn(4) ? Place::kBefore : Place::kBehind, 0};
        const Extent extent{0, 0, std::max<int64_t>(static_cast<int64_t>(length), 1), 1};
        operand = std::make_unique<Operand>(element, extent, 0, place);
        if (content != nullptr)
            std::memcpy(operand->pointer(), content, length * static_cast<size_t>(bytesOf(element)));
        operand->save();
    }
    void addArray(size_t i, int64_t length, const void* content) {
        addArray(call_.operands[i], target_.parameters[i].element, static_cast<size_t>(length), content);
        if (content == nullptr) {
            call_.operands[i]->fill(drawContent(i));
            call_.operands[i]->save();
        }
        call_.values[i].set(call_.operands[i]->pointer());
    }

    /** Makes a source the same image as the one that is written. */
    void shareMemory() {
        size_t written = 0;
        forEach([&](size_t i) { written = call_.isImage(i) && !target_.parameters[i].isConst ? i : written; });
        std::vector<size_t> sources;
        forEach([&](size_t i) {
            const Parameter& parameter = target_.parameters[i];
            if (call_.isImage(i) && parameter.isConst && parameter.element == target_.parameters[written].element)
                sources.push_back(i);
        });
        if (sources.empty())
            return;
        const size_t source = sources[input_.below(static_cast<uint32_t>(sources.size()))];
        call_.values[source] = call_.values[written];
        call_.values[source + 1] = call_.values[written + 1];
    }

    Input& input_;
    Call& call_;
    const Export& target_;
};

}  // namespace

Call drawCall(Input& input, const Export& target, uint32_t variants) {
    Call call;
    call.target = &target;
    call.rules = findPrecondition(target);
    call.otherVariant = variants < 2 ? 0 : variants - 1 - input.below(variants - 1);
    call.hasTinyCache = input.oneIn(4);
    call.allowedBlocks = input.oneIn(16) ? static_cast<int>(input.below(3)) : INT_MAX;
    Drawing(input, call).draw();
    return call;
}

std::string missingPlan(const Export& target) {
    const std::string name(target.name);
    const Precondition* const rules = findPrecondition(target);
    if (rules == nullptr)
        return name + " belongs to no family of the preconditions";
    if (rules->skipped != nullptr)
        return "";
    if (target.call == nullptr)
        return name + " gives no status";
    for (size_t i = 0; i < target.parameters.size(); ++i) {
        const Parameter& parameter = target.parameters[i];
        const bool isNumber = parameter.kind == Kind::kNumber && !target.isStep(i);
        if (roleOf(target, i) == Role::kUnknown || (isNumber && findNumberRule(parameter.name) == nullptr))
            return name + " has a parameter that nothing is known of: " + std::string(parameter.name);
    }
    if (target.has("buffer") && queryOf(target) == nullptr)
        return name + " has no query of the size of its buffer";
    return "";
}

}  // namespace fuzz
