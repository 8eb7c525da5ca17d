// vek info and vek list: what the library is and has.
#include <fnmatch.h>

#include <algorithm>
#include <cstdio>

#include "commands.h"
#include "library_call.h"

namespace {

void printInfo() {
    const LibraryVersion& version = *vekcvGetLibVersion();
    const uint64_t features = vekGetEnabledCpuFeatures();
    struct Feature {
        uint64_t bit;
        const char* name;
    };
    constexpr Feature kFeatures[] = {
        {VekCpuSsse3, " SSSE3"}, {VekCpuMovbe, " MOVBE"}, {VekCpuAvx2, " AVX2"}, {VekCpuAvx512, " AVX-512"}};
    std::string names;
    for (const Feature& feature : kFeatures)
        if ((features & feature.bit) != 0)
            names += feature.name;
    int cacheBytes = 0;
    vekGetMaxCacheSizeB(&cacheBytes);
    std::printf("version     %s, %s\n", version.version, version.buildDate);
    std::printf("variant     %s: %s\n", version.targetCode, version.name);
    std::printf("features   %s\n", names.c_str());
    std::printf("threads     %d\n", ownGetNumThreads());
    std::printf("processors  %d\n", vekGetNumCoresOnDie());
    std::printf("cache       %d KiB\n", cacheBytes / 1024);
}

struct Export {
    const char* name;
    const char* description;
};

constexpr Export kExports[] = {
#define VEKCV_EXPORT(name, description) {#name, description},
#include "vekcv_descriptions.inc"
#undef VEKCV_EXPORT
};

void printList(const std::string& pattern) {
    const bool hasWildcard = pattern.find_first_of("*?[") != std::string::npos;
    const std::string wildcard = hasWildcard ? pattern : "*" + pattern + "*";
    const auto matches = [&](const Export& item) { return fnmatch(wildcard.c_str(), item.name, FNM_CASEFOLD) == 0; };
    size_t width = 0;
    for (const Export& item : kExports)
        if (matches(item))
            width = std::max(width, std::string(item.name).size());
    if (width == 0)
        throw Failure(pattern, "no function has a name like this");
    for (const Export& item : kExports)
        if (matches(item))
            std::printf("%-*s  %s\n", static_cast<int>(width), item.name, item.description);
}

}  // namespace

void addInfo(CLI::App& app) {
    app.add_subcommand("info", "Version, code variant, processor features, threads and cache")->callback(printInfo);
}

void addList(CLI::App& app) {
    CLI::App* const command = app.add_subcommand("list", "The functions of the library with their descriptions");
    const auto pattern = std::make_shared<std::string>("*");
    command->add_option("pattern", *pattern, "Part of a name, or a pattern with * and ?; capitals do not matter");
    command->callback([=] { printList(*pattern); });
}
