#include "faults.h"

#include <algorithm>
#include <climits>

#include "export_call.h"
#include "fuzz/preconditions.h"

namespace exports {
namespace {

using fuzz::Export;
using fuzz::Kind;
using fuzz::Parameter;
using fuzz::Value;

std::vector<const FamilyFaults*>& families() {
    static std::vector<const FamilyFaults*> all;
    return all;
}

const FamilyFaults& familyOf(const Export& target) {
    static const FamilyFaults plain("", {});
    const FamilyFaults* best = &plain;
    for (const FamilyFaults* const family : families())
        if (target.name.starts_with(family->family) && family->family.size() > best->family.size())
            best = family;
    return *best;
}

const FaultRule kSizes = badSize("roiSize"), kWidths = tooWide("roiSize");
const FaultRule kChannels{"channelOfInterest", StatusChannelOfInterestError, {0, 4, -1, INT_MAX, INT_MIN}};

/** Collects the faults of an export. */
class Faults {
  public:
    Faults(const Export& target, const std::vector<Value>& valid)
        : target_(target), valid_(valid), family_(familyOf(target)) {}

    std::vector<Fault> collect() {
        addNullPointers();
        if (family_.steps == Steps::kPositive)
            addStepLengths();
        add(kSizes);
        addFamily(Behind::kSizes);
        if (family_.steps != Steps::kPositive) {
            if (hasImages(target_) && !isOfFamily("roiSize", StatusSizeError))
                add(kWidths);
            addStepLengths();
        }
        addFamily(Behind::kStepLengths);
        forEachStep([&](size_t step, int32_t row, int32_t element) {
            if (element > 1 && family_.steps == Steps::kMultiples)
                add(step, StatusStepNotMultiple, row + element / 2);
        });
        add(kChannels);
        addFamily(Behind::kAll);
        return std::move(all_);
    }

  private:
    template <typename T>
    void add(size_t parameter, Status status, T value) {
        all_.push_back({parameter, status, {}});
        all_.back().value.set(value);
    }

    void add(const FaultRule& rule) {
        if (target_.has(rule.parameter))
            for (const Value& value : rule.values)
                all_.push_back({target_.indexOf(rule.parameter), rule.status, value});
    }

    /** Whether the family tells which values of a parameter give a status. */
    bool isOfFamily(std::string_view parameter, Status status) const {
        return std::ranges::any_of(
            family_.rules, [&](const FaultRule& rule) { return rule.parameter == parameter && rule.status == status; });
    }

    void addFamily(Behind behind) {
        for (const FaultRule& rule : family_.rules)
            if (rule.behind == behind)
                add(rule);
    }

    /** But for those that a call can do without, or that the family tells a place for. */
    void addNullPointers() {
        const std::string_view optional = fuzz::findPrecondition(target_)->optional;
        for (size_t i = 0; i < valid_.size(); ++i) {
            const Parameter& parameter = target_.parameters[i];
            if (parameter.kind >= Kind::kPointer && !isOfFamily(parameter.name, StatusNullPointer) &&
                optional.find(parameter.name) == optional.npos)
                add(i, StatusNullPointer, kNull);
        }
    }

    void addStepLengths() {
        forEachStep([&](size_t step, int32_t row, int32_t element) {
            add(step, StatusStepError, row - element);
            add(step, StatusStepError, -row);
        });
    }

    template <typename Visit>
    void forEachStep(Visit visit) const {
        for (size_t i = 0; i < valid_.size(); ++i)
            if (target_.isStep(i)) {
                visit(i, valid_[i].as<int32_t>(), int32_t(bytesOf(target_.parameters[i - 1].element)));
                if (fuzz::findPrecondition(target_)->checksFirstStepOnly)
                    return;
            }
    }

    const Export& target_;
    const std::vector<Value>& valid_;
    const FamilyFaults& family_;
    std::vector<Fault> all_;
};

}  // namespace

FamilyFaults::FamilyFaults(std::string_view name, std::vector<FaultRule> faults, Steps familySteps)
    : family(name), rules(std::move(faults)), steps(familySteps) {
    families().push_back(this);
}

std::string uselessRules() {
    std::string all;
    for (const FamilyFaults* const family : families())
        for (const FaultRule& rule : family->rules)
            if (std::ranges::none_of(fuzz::exports(),
                                     [&](const Export& e) { return &familyOf(e) == family && e.has(rule.parameter); }))
                all += std::string(family->family) + " " + std::string(rule.parameter) + "; ";
    return all;
}

std::vector<Fault> faultsOf(const Export& target, const std::vector<Value>& valid) {
    return Faults(target, valid).collect();
}

}  // namespace exports
