#include "faults.h"

#include <algorithm>
#include <climits>

#include "preconditions.h"

namespace fuzz {
namespace {

/** Faults that the checks of an export must find, whatever else is wrong. */
class Faults {
  public:
    Faults(Input& input, Call& call) : input_(input), call_(call), target_(*call.target) {}

    /** A fault of a kind that the export can have. */
    void add() {
        std::vector<void (Faults::*)()> kinds{&Faults::addNullPointer};
        const auto addKind = [&](bool isPossible, void (Faults::*kind)()) {
            if (isPossible)
                kinds.push_back(kind);
        };
        addKind(target_.has("roiSize") && !target_.isQuery(), &Faults::addBadSize);
        addKind(!indicesOf([&](size_t i) { return target_.isStep(i); }).empty(), &Faults::addShortStep);
        addKind(!indicesOf([&](size_t i) { return call_.addresses[i] != nullptr; }).empty(), &Faults::addNullRow);
        addKind(target_.has("rect"), &Faults::addBadRectangle);
        addKind(target_.has("anchor"), &Faults::addBadAnchor);
        addKind(std::ranges::any_of(call_.states, [](const auto& state) { return state != nullptr; }),
                &Faults::addBadState);
        (this->*kinds[input_.below(static_cast<uint32_t>(kinds.size()))])();
    }

  private:
    void mustFail(const std::string& fault) { call_.fault += (call_.fault.empty() ? "" : ", ") + fault; }

    std::vector<size_t> indicesOf(auto predicate) {
        std::vector<size_t> all;
        for (size_t i = 0; i < target_.parameters.size(); ++i)
            if (predicate(i))
                all.push_back(i);
        return all;
    }

    void addNullPointer() {
        const auto pointers = indicesOf([&](size_t i) { return target_.parameters[i].kind >= Kind::kPointer; });
        if (pointers.empty())
            return;
        const size_t i = pointers[input_.below(static_cast<uint32_t>(pointers.size()))];
        call_.values[i].set<void*>(nullptr);
        call_.isNull[i] = true;
        if (call_.rules->optional.find(target_.parameters[i].name) == std::string_view::npos)
            mustFail("a null pointer");
    }

    void addBadSize() {
        const size_t i = target_.indexOf("roiSize");
        auto size = call_.values[i].as<RoiSize>();
        constexpr RoiSize kBad[] = {{0, 1},       {1, 0},       {-1, 1},      {1, -1},
                                    {INT_MIN, 1}, {1, INT_MIN}, {INT_MAX, 1}, {1431655766, 1}};
        const RoiSize bad = input_.oneOf(kBad);
        (bad.width == 1 ? size.height : size.width) = bad.width == 1 ? bad.height : bad.width;
        if (indicesOf([&](size_t k) { return call_.isImage(k); }).empty() && bad.width > 1)
            return;
        call_.values[i].set(size);
        mustFail("a bad size");
    }

    void addShortStep() {
        auto steps = indicesOf([&](size_t i) { return target_.isStep(i); });
        if (call_.rules->checksFirstStepOnly)
            steps.resize(1);
        const size_t i = steps[input_.below(static_cast<uint32_t>(steps.size()))];
        const int64_t checked = checkedRowBytes(call_, i - 1), step = call_.plainValues[i].as<int32_t>();
        const auto element = static_cast<int64_t>(bytesOf(target_.parameters[i - 1].element));
        const int64_t bad[] = {checked - 1, checked - element, 0, -1, INT_MIN, -checked, -step};
        call_.values[i].set(static_cast<int32_t>(bad[input_.below(7)]));
        mustFail("a short step");
    }

    /** A null address among rows. Rows before it may be written. */
    void addNullRow() {
        const auto rows = indicesOf([&](size_t i) { return call_.addresses[i] != nullptr; });
        Operand& addresses = *call_.addresses[rows[0]];
        const auto count = static_cast<uint32_t>(addresses.extent().columns());
        static_cast<void**>(addresses.pointer())[input_.below(count)] = nullptr;
        addresses.save();
        call_.writesInSpiteOfError = !target_.parameters[rows[0]].isConst;
        mustFail("a null row");
    }

    void addBadRectangle() {
        const size_t i = target_.indexOf("rect");
        auto r = call_.values[i].as<ImageRect>();
        constexpr ImageRect kBad[] = {{-1, 0, 1, 1},
                                      {0, -1, 1, 1},
                                      {0, 0, 0, 1},
                                      {0, 0, 1, 0},
                                      {INT_MAX, 0, 1, 1},
                                      {0, 0, INT_MAX, 1},
                                      {INT_MIN, INT_MIN, INT_MIN, INT_MIN}};
        const ImageRect bad = input_.oneOf(kBad);
        const auto other = [](int32_t value, int32_t usual, int32_t now) { return value == usual ? now : value; };
        r = {other(bad.x, 0, r.x), other(bad.y, 0, r.y), other(bad.width, 1, r.width), other(bad.height, 1, r.height)};
        call_.values[i].set(r);
        mustFail("a bad rectangle");
    }

    /** An anchor beside its window, or a window without pixels. */
    void addBadAnchor() {
        const size_t mask = target_.indexOf("maskSize"), i = target_.indexOf("anchor");
        auto size = call_.values[mask].as<RoiSize>();
        auto anchor = call_.values[i].as<ImagePoint>();
        const bool isAcross = input_.oneIn(2);
        int32_t& length = isAcross ? size.width : size.height;
        int32_t& place = isAcross ? anchor.x : anchor.y;
        const int32_t badLengths[] = {0, -1, INT_MIN}, badPlaces[] = {-1, length, INT_MIN, INT_MAX};
        if (input_.oneIn(2))
            length = input_.oneOf(badLengths);
        else
            place = input_.oneOf(badPlaces);
        call_.values[mask].set(size);
        call_.values[i].set(anchor);
        mustFail("a bad window");
    }

    void addBadState() {
        for (const auto& state : call_.states)
            if (state != nullptr)
                if (const std::string fault = state->addFault(input_, call_); !fault.empty())
                    mustFail(fault);
    }

    Input& input_;
    Call& call_;
    const Export& target_;
};

}  // namespace

void addFault(Input& input, Call& call) {
    Faults(input, call).add();
}

}  // namespace fuzz
