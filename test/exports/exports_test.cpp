// Rules that all exports with images follow, whatever they compute.
#include <gtest/gtest.h>

#include <algorithm>

#include "export_call.h"
#include "standin.h"
#include "thread_count.h"
#include "thread_rules.h"

namespace {

using exports::Address;
using exports::ExportCall;

// The interface: all operations, and the query of the version, which gives no status.
TEST(Exports, AreComplete) {
    const std::vector<fuzz::Export>& all = fuzz::exports();
    EXPECT_EQ(621u, all.size());
    EXPECT_EQ(620, std::ranges::count_if(all, [](const fuzz::Export& target) {
                  return target.name.starts_with("veki") && target.call != nullptr;
              }));
}

// Images and work buffers may begin at any address; the tests of the families compare images that are aligned.
TEST(Exports, NeedNoAlignment) {
    for (const fuzz::Export* const target : exports::exportsWithRegions())
        for (const RoiSize roi : {RoiSize{5, 3}, RoiSize{77, 9}}) {
            SCOPED_TRACE(::testing::Message() << target->name << ", " << roi.width << " x " << roi.height);
            ExportCall aligned(*target, roi), odd(*target, roi, Address::kOdd);
            aligned.fill(1);
            odd.fill(1);
            ASSERT_EQ(StatusOk, aligned.run());
            ASSERT_EQ(StatusOk, odd.run());
            ASSERT_TRUE(aligned.wroteTheSameAs(odd));
        }
}

// Every fault alone, and every pair of faults, of which the one that is to be found first must be reported.
TEST(Exports, ReportTheFirstFault) {
    ASSERT_EQ("", exports::uselessRules());
    for (const fuzz::Export& target : fuzz::exports()) {
        if (target.call == nullptr)  // gives no status
            continue;
        ExportCall call(target, {9, 4}), untouched(target, {9, 4});
        call.fill(1);
        untouched.fill(1);
        const std::vector<exports::Fault> faults = call.faults();
        for (size_t second = 0; second < faults.size(); ++second)
            for (size_t first = 0; first <= second; ++first) {
                call.setFaults({faults[second], faults[first]});
                ASSERT_EQ(faults[first].status, call.run()) << call.describe();
            }
        ASSERT_TRUE(call.wroteTheSameAs(untouched)) << target.name;
        call.setFaults({});
        if (!call.changesObjects()) {
            ASSERT_EQ(StatusOk, call.run()) << call.describe();
        }
    }
}

/** Calls an export with a region, and tells whether it opens teams of threads. */
bool isShared(const fuzz::Export& target, RoiSize roi) {
    ExportCall call(target, roi);
    if (target.has("positiveCount"))  // nothing is left to do where it is 0
        call.fill(1);
    return teamsOf([&] { ASSERT_LE(StatusOk, call.run()) << roi.width << " x " << roi.height; }) > 0;
}

TEST(Exports, ShareRowsFromTheDocumentedSizesOn) {
    if (standIn() == nullptr)
        GTEST_SKIP() << "the core library is the real one";
    const auto rules = exports::threadRules(VEKCV_HEADER);
    for (const fuzz::Export* const target : exports::exportsWithRegions()) {
        SCOPED_TRACE(target->name);
        const auto found = rules.find(std::string(target->name));
        ASSERT_NE(rules.end(), found) << "the header does not tell";
        const exports::ThreadRule& rule = found->second;
        for (const int threads : {1, 2, 3}) {
            SCOPED_TRACE(::testing::Message() << threads << " threads");
            const ThreadCount count(threads);
            if (rule.isForOneThread() || !exports::hasImages(*target)) {
                if (threads == 3) {
                    ASSERT_FALSE(isShared(*target, {1024, 600}));
                }
            } else if (rule.side > 0) {
                ASSERT_FALSE(isShared(*target, {rule.side - 1, rule.side + 1}));
                ASSERT_FALSE(isShared(*target, {rule.side + 1, rule.side - 1}));
                ASSERT_EQ(threads > 1, isShared(*target, {rule.side, rule.side}));
            } else {
                const auto pixels = int32_t(rule.pixelsFor(threads));
                ASSERT_FALSE(isShared(*target, {pixels - 1, 1}));
                ASSERT_EQ(threads > 1, isShared(*target, {pixels, 1}));
            }
        }
    }
}

}  // namespace
