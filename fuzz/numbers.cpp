#include "numbers.h"

#include <algorithm>
#include <climits>
#include <cmath>

#include "preconditions.h"
#include "window.h"

namespace fuzz {
namespace {

class Numbers {
  public:
    Numbers(Input& input, Call& call) : input_(input), call_(call), target_(*call.target) {}

    void draw(size_t i) {
        const Parameter& parameter = target_.parameters[i];
        Value& value = call_.values[i];
        if (parameter.kind >= Kind::kPointer || target_.isStep(i))
            return;
        if (const auto bytes = call_.stateArgument(parameter.name)) {
            value.setBytes(*bytes);
        } else if (parameter.kind == Kind::kSize) {
            value.set(drawSize(parameter));
        } else if (parameter.kind == Kind::kPoint) {
            value.set(drawPoint());
        } else if (parameter.kind == Kind::kPoint32f) {
            value.set(drawPoint32f());
        } else if (parameter.kind == Kind::kRectangle) {
            value.set(drawRectangle());
        } else {
            const NumberRule& rule = *findNumberRule(target_, parameter.name);
            withType(parameter.element, [&]<typename T>(T) { value.set(drawNumber<T>(rule)); });
            if (!rule.below.empty() && !input_.oneIn(6))
                value.set((value.as<int32_t>() & 0xFFFF) % std::max(call_.value(rule.below).as<int32_t>(), 1));
        }
    }

  private:
    int32_t anyInteger() {
        constexpr int32_t kSome[] = {0, 1, -1, INT_MAX, INT_MIN, 1 << 30, 65536, 46341, 1431655766};
        return input_.oneIn(2) ? input_.oneOf(kSome) : input_.take<int32_t>();
    }

    RoiSize drawSize(const Parameter& parameter) {
        if (target_.isQuery() && input_.oneIn(2))
            return {anyInteger(), anyInteger()};
        if (parameter.name == "maskSize") {
            RoiSize window = drawWindow(input_);
            if (input_.oneIn(16))
                window.width = anyInteger();
            return window;
        }
        const uint32_t kind = input_.below(32);
        const auto from1 = [&](uint32_t count) { return 1 + static_cast<int32_t>(input_.below(count)); };
        const bool isSlow = call_.rules->isSlow || std::ranges::any_of(call_.states, [](const auto& state) {
                                return state != nullptr && state->isSlow();
                            });
        if (kind == 31 && !isSlow) {  // large enough for threads, by the thresholds of the families
            constexpr int32_t kPixels[] = {16384, 65536, 98304, 16384, 65536, 262144, 393216, 393216};
            const int32_t width = 127 + from1(600);
            const int32_t height = input_.oneOf(kPixels) / width;
            return {width, height + from1(3)};
        }
        if (kind >= 24)
            return {from1(70), from1(70)};
        const int32_t width = from1(300);
        return {width, from1(8)};
    }

    /** The anchor of a window, or a pixel of the region, mostly. */
    ImagePoint drawPoint() {
        if (target_.has("maskSize"))
            return drawAnchor(input_, call_.value("maskSize").as<RoiSize>());
        const ImagePoint place = drawAnchor(input_, call_.value("roiSize").as<RoiSize>());
        return input_.oneIn(16) ? ImagePoint{anyInteger(), place.y} : place;
    }

    /** Mostly in the source or near it. */
    ImagePoint32f drawPoint32f() {
        const ImagePoint place = drawAnchor(input_, call_.value("sourceRoi").as<RoiSize>());
        const auto fraction = [&] { return static_cast<float>(input_.below(256)) / 64 - 2; };
        const float x = static_cast<float>(place.x) + fraction();
        return {x, static_cast<float>(place.y) + fraction()};
    }

    ImageRect drawRectangle() {
        const auto x = static_cast<int32_t>(input_.below(20));
        const auto y = static_cast<int32_t>(input_.below(20));
        const auto width = 1 + static_cast<int32_t>(input_.below(20));
        const uint32_t mostHeight = call_.rules->hasTiltedWindow ? static_cast<uint32_t>(x) + 1 : 20;
        return {x, y, width, 1 + static_cast<int32_t>(input_.below(mostHeight))};
    }

    template <typename T>
    T drawNumber(const NumberRule& rule) {
        const uint32_t choice = input_.below(8);
        if (choice == 7 && rule.others != NumberRule::kNone) {
            if (rule.others == NumberRule::kBelowOne && !target_.isQuery())
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

    Input& input_;
    Call& call_;
    const Export& target_;
};

}  // namespace

void drawNumbers(Input& input, Call& call, size_t parameter) {
    Numbers(input, call).draw(parameter);
}

}  // namespace fuzz
