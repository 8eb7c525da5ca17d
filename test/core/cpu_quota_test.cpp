// CPU quotas of control groups, from files below a folder of the test.
#include "cpu_quota.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

class CpuQuota : public ::testing::Test {
  protected:
    CpuQuota() {
        std::string name = (std::filesystem::temp_directory_path() / "vekcore.XXXXXX").string();
        root_ = mkdtemp(name.data());
    }
    ~CpuQuota() override { std::filesystem::remove_all(root_); }

    void processIsIn(const std::string& groups) const { write("proc/self/cgroup", groups); }
    void group(const std::string& file, const std::string& content) const { write("sys/fs/cgroup" + file, content); }
    int processors() const { return vekcore::processorsOfQuota(root_.string()); }

  private:
    void write(const std::string& file, const std::string& content) const {
        const std::filesystem::path path = root_ / file;
        std::filesystem::create_directories(path.parent_path());
        ASSERT_TRUE(std::ofstream(path) << content);
    }

    std::filesystem::path root_;
};

TEST_F(CpuQuota, IsNoLimitWithoutFiles) {
    EXPECT_EQ(INT_MAX, processors());
    processIsIn("0::/a/b\n3:cpu,cpuacct:/c\n");
    EXPECT_EQ(INT_MAX, processors());
}

TEST_F(CpuQuota, IsRoundedUp) {
    processIsIn("0::/a\n");
    for (const auto& [content, expected] : {std::pair{"100000 100000\n", 1},
                                            {"100001 100000\n", 2},
                                            {"150000 100000\n", 2},
                                            {"1000 100000\n", 1},
                                            {"700000 50000\n", 14},
                                            {"9223372036854775807 1\n", INT_MAX}}) {
        group("/a/cpu.max", content);
        EXPECT_EQ(expected, processors()) << content;
    }
}

TEST_F(CpuQuota, IsNoLimitWhereItCannotBeRead) {
    processIsIn("0::/a\n");
    for (const char* content : {"max 100000\n", "", "200000\n", "200000 0\n", "-1 100000\n", "0 100000\n", "text"}) {
        group("/a/cpu.max", content);
        EXPECT_EQ(INT_MAX, processors()) << content;
    }
    group("/a/cpu.max", "200000 100000\n");
    for (const char* groups : {"", "\n", "0\n", "0:\n", "x:cpu\n", "1:memory:/a\n", "1:cpuset:/a\n"}) {
        processIsIn(groups);
        EXPECT_EQ(INT_MAX, processors()) << groups;
    }
}

TEST_F(CpuQuota, IsTheLeastOfAllAncestors) {
    processIsIn("0::/a/b:c/d\n");
    group("/a/b:c/d/cpu.max", "900000 100000\n");
    EXPECT_EQ(9, processors());
    group("/a/cpu.max", "max 100000\n");
    EXPECT_EQ(9, processors());
    group("/cpu.max", "800000 100000\n");
    EXPECT_EQ(8, processors());
    group("/a/cpu.max", "700000 100000\n");
    EXPECT_EQ(7, processors());
    group("/a/b:c/cpu.max", "600000 100000\n");
    EXPECT_EQ(6, processors());
    group("/a/other/cpu.max", "100000 100000\n");
    EXPECT_EQ(6, processors());
}

TEST_F(CpuQuota, IsThatOfTheRootInsideAContainer) {
    group("/cpu.max", "300000 100000\n");
    for (const char* groups : {"0::/\n", "0::/not/seen/here\n", "0::/../elsewhere\n", "0::elsewhere\n"}) {
        processIsIn(groups);
        EXPECT_EQ(3, processors()) << groups;
    }
}

TEST_F(CpuQuota, IsFoundInTheFirstVersionToo) {
    processIsIn("4:memory:/m\n3:cpuacct,cpu:/a/b\n2:cpuset:/s\n0::/a\n");
    group("/cpu/a/cpu.cfs_period_us", "50000\n");
    EXPECT_EQ(INT_MAX, processors());
    group("/cpu/a/cpu.cfs_quota_us", "-1\n");
    EXPECT_EQ(INT_MAX, processors());
    group("/cpu/a/cpu.cfs_quota_us", "120000\n");
    EXPECT_EQ(3, processors());
    group("/a/cpu.max", "200000 100000\n");
    EXPECT_EQ(2, processors());
    group("/cpu/a/b/cpu.cfs_quota_us", "10000\n");
    group("/cpu/a/b/cpu.cfs_period_us", "100000\n");
    EXPECT_EQ(1, processors());
}

}  // namespace
