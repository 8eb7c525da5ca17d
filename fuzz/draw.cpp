#include "draw.h"

#include <algorithm>
#include <climits>
#include <cstdio>

#include "faults.h"
#include "numbers.h"
#include "preconditions.h"

namespace fuzz {
namespace {

enum class Role { kNone, kImage, kRows, kTaps, kOfState, kBuffer, kArray, kResult, kUnknown };

Role roleOf(const Call& call, size_t index) {
    const Export& target = *call.target;
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
    if (call.stateArgument(parameter.name))
        return Role::kOfState;
    if (call.rules->arrayLength != nullptr)
        return Role::kArray;
    return parameter.isConst ? Role::kUnknown : Role::kResult;
}

void drawStates(Input& input, Call& call) {
    const auto drawState = [&](std::string_view type) {
        call.states.push_back(type.empty() ? nullptr : StateType::find(type)(input, *call.target));
    };
    for (const Parameter& parameter : call.target->parameters)
        drawState(parameter.type);
    drawState(call.rules->object);
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
        drawStates(input_, call_);
        forEach([&](size_t i) { drawNumbers(input_, call_, i); });
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

    Content drawContent(size_t i) {
        constexpr Content::Values kValues[] = {Content::kAny,    Content::kAny,      Content::kSmall,
                                               Content::kSparse, Content::kConstant, Content::kZero};
        const std::string_view name = target_.parameters[i].name;
        const auto values = name == "mask"                           ? Content::kMask
                            : name == "metrics" && !input_.oneIn(16) ? Content::kPositive
                                                                     : input_.oneOf(kValues);
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
        const int64_t step = rowBytes + static_cast<int64_t>(input_.below(40));
        add(i, extent, step, drawPlace(extent));
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
        Operand& addresses = *(call_.addresses[i] = makeArray(Element::kPointer, extent.rows()));
        std::memcpy(addresses.pointer(), rows.data(), rows.size() * sizeof rows[0]);
        addresses.save();
        call_.values[i].set(addresses.pointer());
    }

    void drawMemory(size_t i) {
        switch (roleOf(call_, i)) {
            case Role::kImage:
                drawImage(i);
                break;
            case Role::kRows:
                drawRows(i);
                break;
            case Role::kTaps:
                addArray(i, std::clamp<int64_t>(call_.value("kernelSize").as<int32_t>(), 1, 64));
                break;
            case Role::kOfState:
                addArrayOfState(i);
                break;
            case Role::kArray:
                addArray(i, call_.rules->arrayLength(call_, i));
                break;
            case Role::kResult:
                addArray(i, 1);
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
    std::unique_ptr<Operand> makeArray(Element element, int64_t length) {
        const Place place{input_.oneIn(4) ? Place::kBefore : Place::kBehind, 0};
        return std::make_unique<Operand>(element, Extent{0, 0, length, 1}, 0, place);
    }
    void addArray(size_t i, int64_t length, State::Bytes content = {}) {
        Operand& operand = *(call_.operands[i] = makeArray(target_.parameters[i].element, length));
        if (content.empty())
            operand.fill(drawContent(i));
        else
            std::memcpy(operand.pointer(), content.data(), content.size());
        operand.save();
        call_.values[i].set(operand.pointer());
    }

    /** There is a first element even where the state has none. */
    void addArrayOfState(size_t i) {
        const Parameter& parameter = target_.parameters[i];
        const State::Bytes content = *call_.stateArgument(parameter.name);
        addArray(i, std::max<int64_t>(static_cast<int64_t>(content.size()) / bytesOf(parameter.element), 1), content);
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
    call.allowedAllocations = input.oneIn(16) ? static_cast<int>(input.below(3)) : INT_MAX;
    Drawing(input, call).draw();
    return call;
}

std::string missingPlan(const Export& target) {
    const std::string name(target.name);
    Call call;
    call.target = &target;
    call.rules = findPrecondition(target);
    if (call.rules == nullptr)
        return name + " belongs to no family of the preconditions";
    if (call.rules->skipped != nullptr)
        return "";
    if (target.call == nullptr)
        return name + " gives no status";
    for (const Parameter& parameter : target.parameters)
        if (parameter.isObject() && StateType::find(parameter.type) == nullptr)
            return name + " has a parameter of a type that nothing makes: " + std::string(parameter.type);
    Input nothing(nullptr, 0);
    drawStates(nothing, call);
    for (size_t i = 0; i < target.parameters.size(); ++i) {
        const Parameter& parameter = target.parameters[i];
        const bool isNumber =
            parameter.kind == Kind::kNumber && !target.isStep(i) && !call.stateArgument(parameter.name);
        if (roleOf(call, i) == Role::kUnknown || (isNumber && findNumberRule(target, parameter.name) == nullptr))
            return name + " has a parameter that nothing is known of: " + std::string(parameter.name);
    }
    const Export* const query = queryOf(target);
    if (!target.has("buffer"))
        return "";
    if (query == nullptr)
        return name + " has no query of the size of its buffer";
    for (const Parameter& parameter : query->parameters)
        if (!call.isArgumentOfQuery(parameter.name))
            return std::string(query->name) + " has a parameter that " + name +
                   " has not: " + std::string(parameter.name);
    return "";
}

bool canDrawAll() {
    bool canDraw = true;
    for (const Export& target : exports())
        if (const std::string missing = missingPlan(target); !missing.empty()) {
            std::fprintf(stderr, "%s\n", missing.c_str());
            canDraw = false;
        }
    return canDraw;
}

}  // namespace fuzz
