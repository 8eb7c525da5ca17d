#include "standin_core.h"

#include <atomic>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <new>

namespace {

long fromEnvironment(const char* name, long otherwise) {
    const char* const value = std::getenv(name);
    return value == nullptr ? otherwise : std::strtol(value, nullptr, 0);
}

std::atomic<int> threads{int(fromEnvironment("STANDIN_THREADS", 1))};
std::atomic<int> allowedBlocks{INT_MAX}, blocks{0}, latestBytes{0}, teams{0};
std::atomic<Status> sqrtStatus{StatusOk};

}  // namespace

void standInFailAfter(int count) {
    allowedBlocks = count;
}

int standInBlocks() {
    return blocks;
}

int standInLatestBytes() {
    return latestBytes;
}

int standInTeams() {
    return teams;
}

void* vekMalloc(int bytes) {
    if (bytes < 1 || allowedBlocks <= 0)
        return nullptr;
    --allowedBlocks;
    ++blocks;
    latestBytes = bytes;
    return ::operator new (size_t(bytes), std::align_val_t{64});
}

void vekFree(void* block) {
    blocks -= block != nullptr;
    ::operator delete (block, std::align_val_t{64});
}

uint64_t vekGetEnabledCpuFeatures() {
    return uint64_t(fromEnvironment("STANDIN_FEATURES", VekCpuSsse3));
}

Status vekGetNumThreads(int* count) {
    *count = threads;
    return StatusOk;
}

Status vekSetNumThreads(int count) {
    threads = count;
    return StatusOk;
}

int ownGetNumThreads() {
    ++teams;
    return threads;
}

Status vekGetMaxCacheSizeB(int* bytes) {
    *bytes = int(fromEnvironment("STANDIN_CACHE_BYTES", 1 << 20));
    return StatusOk;
}

Status vekSqrt_32f_I(float* values, int count) {
    if (sqrtStatus == StatusOk)
        for (int i = 0; i < count; ++i)
            values[i] = std::sqrt(values[i]);
    return sqrtStatus;
}

void standInGiveForSqrt(Status status) {
    sqrtStatus = status;
}

int vekGetNumCoresOnDie() {
    return int(fromEnvironment("STANDIN_CORES", 1));
}
