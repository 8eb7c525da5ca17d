#include "preconditions.h"

namespace fuzz {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

const Precondition kFamilies[] = {
    {.family = "vekiUpdateMotionHistory",
     .sharesMemory = true,
     .numbers = {{"timestamp", {100, 0, 1000, 1.5, -20, kInfinity}}, {"duration", {10, 0, 99.5, 1e9, -1, kInfinity}}}},
};
const Families families(kFamilies);

}  // namespace
}  // namespace fuzz
