#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "vekcv.h"

/**
 * Checks the statuses of an export: every fault alone, and every pair of faults, of which the earlier must be reported.
 * Faults are added in the order in which they are to be found, to arguments that are otherwise valid.
 */
template <typename... Arguments>
class StatusOrder {
  public:
    using Call = std::tuple<Arguments...>;

    StatusOrder(Status (*function)(Arguments...), std::type_identity_t<Arguments>... valid)
        : function_(function), valid_(valid...) {}
    StatusOrder(Status (*function)(Arguments...), std::type_identity_t<Call> valid)
        : function_(function), valid_(valid) {}

    StatusOrder& fault(std::string name, Status status, std::function<void(Call&)> apply) {
        faults_.push_back({std::move(name), status, std::move(apply)});
        return *this;
    }

    /** A fault that puts a value in the place of argument kIndex. */
    template <size_t kIndex>
    StatusOrder& fault(std::string name, Status status, std::tuple_element_t<kIndex, Call> value) {
        return fault(std::move(name), status, [value](Call& call) { std::get<kIndex>(call) = value; });
    }

    // The faults that all families share. An image is a pointer that a step follows, before the size of the region.

    StatusOrder& nullImages() {
        forEachImage([&]<size_t kIndex>() {
            fault("null pointer " + std::to_string(kIndex), StatusNullPointer,
                  [](Call& call) { std::get<kIndex>(call) = nullptr; });
        });
        return *this;
    }

    StatusOrder& badSizes() {
        roiFault("width 0", StatusSizeError, [](RoiSize& roi) { roi.width = 0; });
        roiFault("width -1", StatusSizeError, [](RoiSize& roi) { roi.width = -1; });
        roiFault("height 0", StatusSizeError, [](RoiSize& roi) { roi.height = 0; });
        roiFault("height -2147483648", StatusSizeError, [](RoiSize& roi) { roi.height = INT32_MIN; });
        return *this;
    }

    /** Steps that are too short. `columns` are the elements in a row of the first images; all others have the width. */
    StatusOrder& shortSteps(const std::vector<int32_t>& columns = {}) {
        roiFault("width 2147483647", StatusStepError, [](RoiSize& roi) { roi.width = INT32_MAX; });
        roiFault("width 1431655766", StatusStepError, [](RoiSize& roi) { roi.width = 1431655766; });
        forEachImage([&, image = size_t{0}]<size_t kIndex>() mutable {
            const int32_t row = rowBytes<kIndex>(columns, image++);
            const std::string name = "step " + std::to_string(kIndex + 1);
            fault<kIndex + 1>(name + " short", StatusStepError, row - elementBytes<kIndex>());
            fault<kIndex + 1>(name + " negative", StatusStepError, -row);
        });
        return *this;
    }

    /** Steps that are no multiple of the element. */
    StatusOrder& oddSteps(const std::vector<int32_t>& columns = {}) {
        forEachImage([&, image = size_t{0}]<size_t kIndex>() mutable {
            const int32_t element = elementBytes<kIndex>(), row = rowBytes<kIndex>(columns, image++);
            if (element > 1)
                fault<kIndex + 1>("step " + std::to_string(kIndex + 1) + " odd", StatusStepNotMultiple,
                                  row + element / 2);
        });
        return *this;
    }

    /** All of them in the order that most families have. */
    StatusOrder& commonFaults(const std::vector<int32_t>& columns = {}) {
        return nullImages().badSizes().shortSteps(columns).oddSteps(columns);
    }

    /** Makes the calls. `untouched` tells whether the outputs are as they were. */
    void check(const std::function<bool()>& untouched) const {
        for (size_t first = 0; first < faults_.size(); ++first)
            for (size_t second = first; second < faults_.size(); ++second) {
                Call call = valid_;
                faults_[second].apply(call);
                faults_[first].apply(call);
                ASSERT_EQ(faults_[first].status, std::apply(function_, call))
                    << faults_[first].name << ", then " << faults_[second].name;
            }
        ASSERT_TRUE(untouched()) << "an output was written in spite of an error";
        ASSERT_EQ(StatusOk, std::apply(function_, valid_)) << "the arguments without a fault";
    }

  private:
    struct Fault {
        std::string name;
        Status status;
        std::function<void(Call&)> apply;
    };

    template <size_t kIndex>
    using Argument = std::tuple_element_t<kIndex, Call>;

    template <size_t kIndex>
    static constexpr int32_t elementBytes() {
        return int32_t(sizeof(std::remove_pointer_t<Argument<kIndex>>));
    }

    template <size_t kIndex = 0, typename Visitor>
    static void forEachImage(Visitor&& visit) {
        if constexpr (!std::is_same_v<Argument<kIndex>, RoiSize>) {
            if constexpr (std::is_pointer_v<Argument<kIndex>> && std::is_same_v<Argument<kIndex + 1>, int32_t>)
                visit.template operator()<kIndex>();
            forEachImage<kIndex + 1>(visit);
        }
    }

    template <size_t kIndex>
    int32_t rowBytes(const std::vector<int32_t>& columns, size_t image) const {
        return (image < columns.size() ? columns[image] : std::get<RoiSize>(valid_).width) * elementBytes<kIndex>();
    }

    void roiFault(std::string name, Status status, void (*change)(RoiSize&)) {
        fault(std::move(name), status, [change](Call& call) { change(std::get<RoiSize>(call)); });
    }

    Status (*function_)(Arguments...);
    Call valid_;
    std::vector<Fault> faults_;
};
