#include "preconditions.h"

namespace fuzz {
namespace {

const Precondition kFamilies[] = {
    {.family = "vekcvGetLibVersion", .skipped = "gives a record of its own in every variant"},
};
const Families families(kFamilies);

}  // namespace
}  // namespace fuzz
