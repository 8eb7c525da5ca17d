#pragma once

#include <dlfcn.h>

#include "vekcv.h"

/** What the stand-in of the core library takes and tells. */
struct StandIn {
    void (*failAfter)(int blocks);
    int (*blocks)();
    int (*latestBytes)();
    int (*teams)();
    void (*giveForSqrt)(Status status);
};

/** Null where the core library is the real one. */
inline const StandIn* standIn() {
    const auto find = [](const char* name) { return dlsym(RTLD_DEFAULT, name); };
    static const StandIn functions{
        reinterpret_cast<void (*)(int)>(find("standInFailAfter")), reinterpret_cast<int (*)()>(find("standInBlocks")),
        reinterpret_cast<int (*)()>(find("standInLatestBytes")), reinterpret_cast<int (*)()>(find("standInTeams")),
        reinterpret_cast<void (*)(Status)>(find("standInGiveForSqrt"))};
    return functions.teams == nullptr ? nullptr : &functions;
}

/** The number of teams of threads that the library opens in a call, where the stand-in counts them. */
template <typename Call>
int teamsOf(Call call) {
    const int before = standIn()->teams();
    call();
    return standIn()->teams() - before;
}
