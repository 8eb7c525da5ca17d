#include "state.h"

#include <map>

namespace fuzz {
namespace {

std::map<std::string_view, StateType::Draw>& types() {
    static std::map<std::string_view, StateType::Draw> all;
    return all;
}

}  // namespace

StateType::StateType(std::string_view name, Draw draw) {
    types().emplace(name, draw);
}

StateType::Draw StateType::find(std::string_view name) {
    const auto found = types().find(name);
    return found == types().end() ? nullptr : found->second;
}

}  // namespace fuzz
