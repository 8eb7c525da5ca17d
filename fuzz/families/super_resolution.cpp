#include <algorithm>
#include <array>

#include "preconditions.h"

namespace fuzz {
namespace {

/** Columns and rows of the blocks. */
int32_t sizeOfBlocks(std::string_view name) {
    return name.find("PSF2x2") != std::string_view::npos ? 2 : 3;
}

int64_t checkedColumns(const Call& call, size_t /*image*/) {
    return sizeOfBlocks(call.target->name);
}

/** Weights have indices of 8 bits. */
int64_t arrayLength(const Call& call, size_t array) {
    return call.target->parameters[array].name == "weights" ? 256 : std::max(call.value("count").as<int32_t>(), 1);
}

/** A table of point-spread functions, and samples that use it. */
class Samples : public State {
  public:
    Samples(Input& input, const Export& target);

    void* build(const Call& call) const override;
    void release(void* object) const override { vekiSRHNFree_PSF2x2(static_cast<SrhnState*>(object)); }
    std::vector<uint8_t> observe(const Call& call, void* object) const override;
    std::string describe() const override;
    std::optional<Bytes> argument(std::string_view parameter) const override;
    std::optional<Extent> extentOf(const Call& call, size_t image) const override;
    std::string addFault(Input& input, Call& call) override;

  private:
    bool makesState_;
    int32_t size_, sizeOfState_;
    int32_t entries_;
    std::vector<float> table_;
    int32_t count_;  // of the samples
    std::vector<uint32_t> offsets_;
    std::vector<uint16_t> psfIndex_;
};

Samples::Samples(Input& input, const Export& target)
    : makesState_(target.has("psfTable")), size_(sizeOfBlocks(target.name)), sizeOfState_(size_) {
    entries_ = 1 + static_cast<int32_t>(input.below(9));
    count_ = 1 + static_cast<int32_t>(input.oneIn(8) ? input.below(2000) : input.below(40));
    const uint32_t places = 1 + input.below(input.oneIn(4) ? 2000 : 50);
    Random random(input.take<uint16_t>());
    for (int32_t i = 0; i < entries_ * 9; ++i)  // enough for entries of the other size, too
        table_.push_back(random.summand<float>());
    for (int32_t i = 0; i < count_; ++i) {
        offsets_.push_back(random.below(places));
        psfIndex_.push_back(static_cast<uint16_t>(random.below(static_cast<uint32_t>(entries_))));
    }
}

void* Samples::build(const Call& /*call*/) const {
    SrhnState* state = nullptr;
    (sizeOfState_ == 2 ? vekiSRHNInitAlloc_PSF2x2 : vekiSRHNInitAlloc_PSF3x3)(&state, table_.data(), entries_);
    return state;
}

/** The coefficients of all entries, each by the residual of a block with a single one in it. */
std::vector<uint8_t> Samples::observe(const Call& /*call*/, void* object) const {
    constexpr int32_t kStep = 3 * sizeof(float);
    const auto calcResidual =
        sizeOfState_ == 2 ? vekiSRHNCalcResidual_PSF2x2_8u32f_C1R : vekiSRHNCalcResidual_PSF3x3_8u32f_C1R;
    std::vector<uint8_t> result;
    for (uint16_t entry = 0; entry < entries_; ++entry)
        for (int32_t place = 0; place < 9; ++place) {
            std::array<float, 9> block{};
            block[static_cast<size_t>(place)] = 1;
            const uint8_t lowRes = 0;
            const uint32_t offset = 0;
            float residual = 0;
            result.push_back(static_cast<uint8_t>(calcResidual(block.data(), kStep, &lowRes, &offset, &entry, &residual,
                                                               1, static_cast<const SrhnState*>(object))));
            appendObserved(result, residual);
        }
    return result;
}

std::string Samples::describe() const {
    return std::to_string(entries_) + " entries for blocks of " + std::to_string(sizeOfState_) + " and " +
           std::to_string(count_) + " samples";
}

std::optional<State::Bytes> Samples::argument(std::string_view parameter) const {
    const std::pair<std::string_view, Bytes> arguments[] = {
        {"psfTable", std::as_bytes(std::span(table_).first(static_cast<size_t>(entries_ * size_ * size_)))},
        {"count", std::as_bytes(std::span(makesState_ ? &entries_ : &count_, 1))},
        {"offsets", std::as_bytes(std::span(offsets_))},
        {"psfIndex", std::as_bytes(std::span(psfIndex_))},
    };
    for (const auto& [name, bytes] : arguments)
        if (name == parameter)
            return bytes;
    return {};
}

/** Offsets count from the first row on, whatever the step. */
std::optional<Extent> Samples::extentOf(const Call& /*call*/, size_t /*image*/) const {
    return Extent{0, 0, int64_t{*std::ranges::max_element(offsets_)} + size_, size_};
}

std::string Samples::addFault(Input& input, Call& call) {
    if (!call.target->has("count"))
        return {};
    if (makesState_ || input.oneIn(2)) {
        call.values[call.target->indexOf("count")].set(-static_cast<int32_t>(input.below(3)));
        return "a bad count";
    }
    sizeOfState_ = 5 - size_;
    return "a state for blocks of another size";
}

const StateType samples("SrhnState", [](Input& input, const Export& target) -> std::unique_ptr<State> {
    return std::make_unique<Samples>(input, target);
});

const Precondition kFamilies[] = {
    {.family = "vekiSRHN", .checkedColumns = checkedColumns, .arrayLength = arrayLength},
};
const Families families(kFamilies);

}  // namespace
}  // namespace fuzz
