// Calls all exports with arguments that a fuzzer makes, and compares variants and numbers of threads.
//   VEKCV_FUZZ_REPORT=1        prints at the end how often each export gave success, warnings and errors
//   VEKCV_FUZZ_TRACE=1         prints every call before it is made
//   VEKCV_FUZZ_CORPUS=folder   writes an input that succeeds for each export, and ends
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "draw.h"
#include "preconditions.h"
#include "run.h"

namespace {

using fuzz::Export;

struct Counts {
    uint64_t ok, warnings, errors;
};
std::vector<Counts> counts;

// FNV-1a: an input names its export by a number that stays the same when exports are added.
uint32_t numberOf(std::string_view name) {
    uint32_t hash = 2166136261u;
    for (const char c : name)
        hash = (hash ^ static_cast<uint8_t>(c)) * 16777619u;
    return hash;
}

size_t chooseExport(uint32_t number) {
    const auto& all = fuzz::exports();
    for (size_t i = 0; i < all.size(); ++i)
        if (numberOf(all[i].name) == number)
            return i;
    return number % all.size();
}

void report() {
    std::fprintf(stderr, "%10s %10s %10s  export\n", "ok", "warnings", "errors");
    size_t missing = 0;
    for (size_t i = 0; i < counts.size(); ++i) {
        const Export& target = fuzz::exports()[i];
        const char* const skipped = fuzz::findPrecondition(target)->skipped;
        std::fprintf(stderr, "%10llu %10llu %10llu  %s%s%s\n", static_cast<unsigned long long>(counts[i].ok),
                     static_cast<unsigned long long>(counts[i].warnings),
                     static_cast<unsigned long long>(counts[i].errors), std::string(target.name).c_str(),
                     skipped == nullptr ? "" : " skipped: ", skipped == nullptr ? "" : skipped);
        missing += skipped == nullptr && counts[i].ok == 0;
    }
    std::fprintf(stderr, "%zu exports, %zu of them without success\n", counts.size(), missing);
}

Status callExport(size_t index, fuzz::Input input) {
    static const uint32_t variants = fuzz::variantsOfProcessor();
    const fuzz::Call call = fuzz::drawCall(input, fuzz::exports()[index], variants);
    const Status status = fuzz::runAndCompare(call);
    Counts& count = counts[index];
    ++(status == StatusOk ? count.ok : status > 0 ? count.warnings : count.errors);
    return status;
}

void writeCorpus(const std::string& folder) {
    constexpr size_t kBytes = 48;
    constexpr uint32_t kAttempts = 1000;
    for (size_t i = 0; i < counts.size(); ++i) {
        const Export& target = fuzz::exports()[i];
        if (fuzz::findPrecondition(target)->skipped != nullptr)
            continue;
        std::vector<uint8_t> bytes(kBytes);
        for (uint32_t attempt = 0; attempt < kAttempts; ++attempt) {
            Random random(attempt);
            std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<uint8_t>(random.bits()); });
            if (callExport(i, fuzz::Input(bytes.data(), bytes.size())) != StatusOk)
                continue;
            const uint32_t number = numberOf(target.name);
            std::ofstream file(folder + "/" + std::string(target.name), std::ios::binary);
            file.write(reinterpret_cast<const char*>(&number), sizeof number);
            file.write(reinterpret_cast<const char*>(bytes.data()), kBytes);
            break;
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // Waiting threads leave the processors to others; several processors, so that no operation keeps to one thread.
    setenv("KMP_BLOCKTIME", "0", 0);
    setenv("STANDIN_CORES", "3", 1);
    counts.resize(fuzz::exports().size());
    if (!fuzz::canDrawAll())
        std::exit(1);
    if (const char* const folder = std::getenv("VEKCV_FUZZ_CORPUS")) {
        writeCorpus(folder);
        std::exit(0);
    }
    if (std::getenv("VEKCV_FUZZ_REPORT") != nullptr)
        std::atexit(report);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const size_t index = chooseExport(input.take<uint32_t>());
    if (fuzz::findPrecondition(fuzz::exports()[index])->skipped != nullptr)
        return -1;
    callExport(index, input);
    return 0;
}
