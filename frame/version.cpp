#include "bind.h"

namespace VEKCV_VARIANT {
namespace {

struct Identity {
    char targetCode[4];
    const char* name;
};

constexpr Identity kIdentities[] = {
    {"v8", "vekCV SSSE3 (v8)"},
    {"s8", "vekCV Nubo (s8)"},
    {"a2", "vekCV AVX2 (a2)"},
    {"a5", "vekCV AVX-512 (a5)"},
};
constexpr const Identity& kIdentity = kIdentities[VEKCV_VARIANT_INDEX];

constexpr LibraryVersion kVersion = {7,
                                     1,
                                     0,
                                     36264,
                                     {kIdentity.targetCode[0], kIdentity.targetCode[1]},
                                     kIdentity.name,
                                     "7.1.0 (r36264)",
                                     "Jul 23 2012"};

const LibraryVersion* version() {
    return &kVersion;
}

}  // namespace

VEKCV_BIND(vekcvGetLibVersion, version);
}  // namespace VEKCV_VARIANT
