// Children of a process compute, whether the process has had a team or not.
#include <sys/wait.h>
#include <unistd.h>

#include <numeric>
#include <vector>

#include "expect.h"
#include "vekcore.h"

namespace {

constexpr int32_t kSize = 1024;

int threads() {
    int count = 0;
    vekGetNumThreads(&count);
    return count;
}

/** A call that is large enough for a team. */
bool computes() {
    std::vector<uint8_t> source1(kSize * kSize), source2(kSize * kSize, 100), result(kSize * kSize);
    std::iota(source1.begin(), source1.end(), uint8_t{0});
    if (vekiAbsDiff_8u_C1R(source1.data(), kSize, source2.data(), kSize, result.data(), kSize, {kSize, kSize}) !=
        StatusOk)
        return false;
    for (size_t i = 0; i < result.size(); ++i)
        if (result[i] != (source1[i] > 100 ? source1[i] - 100 : 100 - source1[i]))
            return false;
    return true;
}

/** Whether a child that does this ends, and with no failure of its own. */
template <typename Work>
bool childDoes(Work work) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(30);
        failures = 0;
        work();
        _exit(failures);
    }
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void childBeforeTheFirstTeam() {
    expect(threads() == 2, "a child of a process without a team has as many threads as the process");
    expect(vekSetNumThreads(3) == StatusOk && threads() == 3, "its number may be raised");
    expect(computes(), "it computes with them");
}

void childAfterATeam() {
    expect(threads() == 1 && ownGetNumThreads() == 1, "a child of a process with a team has one thread");
    expect(computes(), "it computes");
    expect(vekSetNumThreads(2) == StatusBadArgument && threads() == 1, "its number cannot be raised");
    expect(vekSetNumThreads(1) == StatusOk, "its number may be set to what it is");
    expect(computes(), "it computes then");
}

}  // namespace

int main() {
    expect(threads() == 2, "the environment gives two threads");
    expect(childDoes(childBeforeTheFirstTeam), "a child before the first team");
    expect(computes(), "the parent computes");
    expect(childDoes(childAfterATeam), "a child after a team");
    expect(childDoes([] { expect(childDoes(childAfterATeam), "its child"); }), "a child of a child after a team");
    expect(threads() == 2 && computes(), "the parent computes with two threads as before");
    return failures;
}
