// A program that unloads the library while the OpenMP runtime keeps the threads of a team goes on.
#include <dlfcn.h>
#include <unistd.h>

#include <vector>

#include "expect.h"
#include "vekcv.h"

namespace {

/** Loads the library, calls it with a team and unloads it. */
void use() {
    void* const library = dlopen(VEKCV_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    expect(library != nullptr, "the library is loaded");
    if (library == nullptr)
        return;
    const auto absDiff = reinterpret_cast<decltype(&vekiAbsDiff_8u_C1R)>(dlsym(library, "vekiAbsDiff_8u_C1R"));
    constexpr int32_t kSize = 1024;
    const std::vector<uint8_t> source1(kSize * kSize, 7), source2(kSize * kSize, 9);
    std::vector<uint8_t> result(kSize * kSize);
    const Status status =
        absDiff(source1.data(), kSize, source2.data(), kSize, result.data(), kSize, RoiSize{kSize, kSize});
    expect(status == StatusOk && result == std::vector<uint8_t>(kSize * kSize, 2), "the library computes");
    expect(dlclose(library) == 0, "the library is closed");
}

}  // namespace

int main() {
    for (int round = 0; round < 2; ++round) {
        use();
        usleep(200000);  // in which the threads of the team stop spinning and go to sleep
    }
    return failures;
}
