#include "group.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <numeric>
#include <tuple>

namespace {

constexpr double kTolerance = 0.2;

double sideOf(const ImageRect& a) {
    return (a.width + a.height) / 2.;
}

bool areSimilar(const ImageRect& a, const ImageRect& b) {
    const double most = kTolerance * std::min(sideOf(a), sideOf(b));
    return std::abs(a.x - b.x) <= most && std::abs(a.y - b.y) <= most &&
           std::abs(a.x + a.width - b.x - b.width) <= most && std::abs(a.y + a.height - b.y - b.height) <= most;
}

/** Sets that grow together, each known by one of its members. */
class Sets {
  public:
    explicit Sets(size_t count) : parents_(count) { std::iota(parents_.begin(), parents_.end(), size_t{0}); }

    size_t find(size_t member) {
        while (parents_[member] != member)
            member = parents_[member] = parents_[parents_[member]];
        return member;
    }
    void join(size_t a, size_t b) { parents_[find(a)] = find(b); }

  private:
    std::vector<size_t> parents_;
};

struct Sum {
    double x = 0, y = 0, width = 0, height = 0;
    int32_t count = 0;

    void add(const ImageRect& window) {
        x += window.x;
        y += window.y;
        width += window.width;
        height += window.height;
        ++count;
    }
    Detection mean() const {
        const auto rounded = [this](double sum) { return static_cast<int32_t>(std::lrint(sum / count)); };
        return {{rounded(x), rounded(y), rounded(width), rounded(height)}, count};
    }
};

/** Give or take the tolerance. */
bool liesWithin(const ImageRect& inner, const ImageRect& outer) {
    const double more = kTolerance * sideOf(outer);
    return inner.x >= outer.x - more && inner.y >= outer.y - more &&
           inner.x + inner.width <= outer.x + outer.width + more &&
           inner.y + inner.height <= outer.y + outer.height + more;
}

/** From top to bottom, and from left to right. */
auto orderOf(const ImageRect& place) {
    return std::tie(place.y, place.x, place.width, place.height);
}

/** The mean of each group of so many windows at least, 1 or more. */
std::vector<Detection> groupsOf(const std::vector<ImageRect>& windows, int32_t leastWindows) {
    Sets sets(windows.size());
    for (size_t i = 0; i < windows.size(); ++i)
        for (size_t j = i + 1; j < windows.size() && windows[j].y - windows[i].y <= kTolerance * sideOf(windows[i]);
             ++j)
            if (areSimilar(windows[i], windows[j]))
                sets.join(i, j);
    std::vector<Sum> sums(windows.size());
    for (size_t i = 0; i < windows.size(); ++i)
        sums[sets.find(i)].add(windows[i]);

    std::vector<Detection> groups;
    for (const Sum& sum : sums)
        if (sum.count >= leastWindows)
            groups.push_back(sum.mean());
    return groups;
}

}  // namespace

std::vector<Detection> grouped(std::vector<ImageRect> windows, int32_t leastWindows) {
    std::ranges::sort(windows, {}, orderOf);
    std::vector<Detection> objects;
    if (leastWindows == 0) {
        for (const ImageRect& window : windows)
            objects.push_back({window, 1});
        return objects;
    }
    const std::vector<Detection> groups = groupsOf(windows, leastWindows);
    const auto isWithinStronger = [&](const Detection& group) {
        return std::ranges::any_of(groups, [&](const Detection& other) {
            return other.windows > group.windows && liesWithin(group.place, other.place);
        });
    };
    std::ranges::remove_copy_if(groups, std::back_inserter(objects), isWithinStronger);
    std::ranges::sort(objects, {}, [](const Detection& object) { return orderOf(object.place); });
    return objects;
}
