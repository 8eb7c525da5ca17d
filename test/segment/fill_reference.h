// Flood fills as they are defined, pixel by pixel.
#pragma once

#include <algorithm>
#include <array>
#include <limits>
#include <queue>
#include <set>
#include <vector>

#include "test_image.h"

namespace fill_reference {

enum class Rule { kPlain, kGradient, kRange };

template <typename T>
struct Parameters {
    Rule rule;
    int reach;  // 1 where diagonal pixels are neighbours
    ImagePoint seed;
    std::array<T, 3> newValue, minDelta, maxDelta;
};

template <typename T>
struct Result {
    TestImage<T> image;
    bool isWritten = false;  // the component
    ConnectedComponent component{};
};

template <typename T>
class Filler {
  public:
    Filler(const TestImage<T>& image, int channels, const Parameters<T>& parameters)
        : image_(image), channels_(channels), p_(parameters), roi_(image.roi()) {
        for (int k = 0; k < channels; ++k)
            seed_[size_t(k)] = at(p_.seed.x, p_.seed.y, k);
    }

    Result<T> run() {
        Result<T> result{image_.copy({})};
        const bool isAlreadyFilled = all([&](int k) { return seed_[size_t(k)] == p_.newValue[size_t(k)]; });
        if (isAlreadyFilled && p_.rule != Rule::kGradient)
            return result;
        left_ = right_ = p_.seed.x;
        top_ = bottom_ = p_.seed.y;
        if (p_.rule == Rule::kRange)
            walk();
        else
            search();
        for (const auto& [y, x] : filled_)
            for (int k = 0; k < channels_; ++k)
                result.image.at(x * channels_ + k, y) = p_.newValue[size_t(k)];
        result.isWritten = true;
        result.component.area = double(filled_.size());
        for (int k = 0; k < channels_; ++k)
            result.component.value[k] = double(p_.newValue[size_t(k)]);
        result.component.rect = {left_, top_, right_ - left_ + 1, bottom_ - top_ + 1};
        return result;
    }

    /** Whether runs were forgotten for lack of room. */
    bool wasOverfull() const { return wasOverfull_; }

  private:
    using Wide = std::conditional_t<std::is_same_v<T, float>, float, int>;

    T at(int x, int y, int k) const { return image_.at(x * channels_ + k, y); }
    bool isInside(int x, int y) const { return x >= 0 && x < roi_.width && y >= 0 && y < roi_.height; }
    bool isFilled(int x, int y) const { return filled_.count({y, x}) != 0; }

    template <typename Condition>
    bool all(Condition condition) const {
        for (int k = 0; k < channels_; ++k)
            if (!condition(k))
                return false;
        return true;
    }

    void fill(int x, int y) { filled_.insert({y, x}); }

    void widen(int y, int left, int right) {
        left_ = std::min(left_, left);
        right_ = std::max(right_, right);
        top_ = std::min(top_, y);
        bottom_ = std::max(bottom_, y);
    }

    /** Plain and gradient fills: all that can be reached. */
    void search() {
        std::queue<ImagePoint> waiting;
        const auto take = [&](int x, int y) {
            fill(x, y);
            widen(y, x, x);
            waiting.push({x, y});
        };
        for (take(p_.seed.x, p_.seed.y); !waiting.empty(); waiting.pop())
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx) {
                    const ImagePoint parent = waiting.front();
                    const int x = parent.x + dx, y = parent.y + dy;
                    if (std::abs(dx) + std::abs(dy) > 1 + p_.reach || !isInside(x, y) || isFilled(x, y))
                        continue;
                    const bool joins = all([&](int k) {
                        const auto i = size_t(k);
                        const Wide v = at(x, y, k), from = at(parent.x, parent.y, k);
                        if (p_.rule == Rule::kPlain)
                            return v == Wide(seed_[i]);
                        return v >= Wide(from - Wide(p_.minDelta[i])) && v <= Wide(from + Wide(p_.maxDelta[i]));
                    });
                    if (joins)
                        take(x, y);
                }
    }

    struct Segment {
        int y, left, right, parentLeft, parentRight, direction;
    };

    bool joinsRange(int x, int y) const {
        if (isFilled(x, y))
            return false;
        const bool isInRange = all([&](int k) {
            const auto i = size_t(k);
            Wide lower = Wide(seed_[i]) - Wide(p_.minDelta[i]), upper = Wide(seed_[i]) + Wide(p_.maxDelta[i]);
            if (!std::is_same_v<T, float>) {
                lower = std::max(lower, Wide(0));
                upper = std::min(upper, Wide(std::numeric_limits<T>::max()));
            }
            return lower <= Wide(at(x, y, k)) && Wide(at(x, y, k)) <= upper;
        });
        return isInRange && !all([&](int k) { return at(x, y, k) == p_.newValue[size_t(k)]; });
    }

    std::pair<int, int> takeRun(int x, int y) {
        fill(x, y);
        int left = x, right = x;
        while (left > 0 && joinsRange(left - 1, y))
            fill(--left, y);
        while (right + 1 < roi_.width && joinsRange(right + 1, y))
            fill(++right, y);
        return {left, right};
    }

    void push(const Segment& segment) {
        stack_.push_back(segment);
        if (int64_t(stack_.size()) == int64_t{roi_.width} * roi_.height / 4) {
            stack_.clear();
            wasOverfull_ = true;
        }
    }

    void scan(int y, int first, int last, const Segment& parent, int direction) {
        for (int x = std::max(first, 0); x <= std::min(last, roi_.width - 1); ++x)
            if (joinsRange(x, y)) {
                const auto [left, right] = takeRun(x, y);
                push({y, left, right, parent.left, parent.right, direction});
                x = right + 1;
            }
    }

    void walk() {
        const auto [left, right] = takeRun(p_.seed.x, p_.seed.y);
        widen(p_.seed.y, left, right);
        if (roi_.height == 1)
            return;
        push({p_.seed.y, left, right, right + 1, right, p_.seed.y == roi_.height - 1 ? -1 : 1});
        while (!stack_.empty()) {
            const Segment s = stack_.back();
            stack_.pop_back();
            widen(s.y, s.left, s.right);
            const int away = s.y - s.direction;
            if (away >= 0 && away < roi_.height)
                scan(away, s.left - p_.reach, s.right + p_.reach, s, s.direction);
            if (s.parentLeft > s.parentRight) {
                scan(s.y + s.direction, s.left - p_.reach, s.right + p_.reach, s, -s.direction);
            } else {
                scan(s.y + s.direction, s.left - p_.reach, s.parentLeft - 1, s, -s.direction);
                scan(s.y + s.direction, s.parentRight + 1, s.right + p_.reach, s, -s.direction);
            }
        }
    }

    const TestImage<T>& image_;
    int channels_;
    Parameters<T> p_;
    RoiSize roi_;
    std::array<T, 3> seed_{};
    std::set<std::pair<int, int>> filled_;
    std::vector<Segment> stack_;
    bool wasOverfull_ = false;
    int left_ = 0, right_ = 0, top_ = 0, bottom_ = 0;
};

}  // namespace fill_reference
