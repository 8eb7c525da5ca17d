#include <gtest/gtest.h>

#include "standin_core.h"
#include "state.h"
#include "streaming.h"
#include "work_buffer.h"

namespace {

using namespace VEKCV_VARIANT;

TEST(Allocation, RefusesSizesWithoutMeaning) {
    for (int64_t bytes : {INT64_MIN, int64_t{-1}, int64_t{0}, int64_t{INT_MAX} + 1, INT64_MAX})
        EXPECT_EQ(nullptr, allocateBytes(bytes)) << bytes;
    EXPECT_EQ(0, standInBlocks());

    void* const block = allocateBytes(20);
    ASSERT_NE(nullptr, block);
    EXPECT_EQ(1, standInBlocks());
    release(block);
    EXPECT_EQ(0, standInBlocks());
}

struct Model {
    int32_t count;
    float* weights;
    uint8_t* flags;
};

TEST(State, IsOneBlockWithItsArrays) {
    Owned<Model> model;
    ASSERT_EQ(StatusOk, newState(model, StateArray{&Model::flags, 7, 8, uint8_t{9}}, StateArray{&Model::weights, 33}));
    EXPECT_EQ(1, standInBlocks());
    EXPECT_EQ(0, model->count);
    const auto address = [](const void* pointer) { return reinterpret_cast<uintptr_t>(pointer); };
    EXPECT_EQ(0u, address(model->flags) % 8);
    EXPECT_EQ(0u, address(model->weights) % 64);
    EXPECT_GE(address(model->flags), address(model.get() + 1));
    EXPECT_LT(address(model->flags), address(model.get() + 1) + 8);
    EXPECT_GE(address(model->weights), address(model->flags + 7));
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(9, model->flags[i]);
    for (int i = 0; i < 33; ++i)
        model->weights[i] = 1;
    EXPECT_EQ(StatusOk, freeState(model.keep()));
    EXPECT_EQ(0, standInBlocks());
}

TEST(State, IsReleasedUnlessItIsKept) {
    Model* kept = nullptr;
    {
        Owned<Model> lost, model;
        ASSERT_EQ(StatusOk, newState(lost, StateArray{&Model::weights, 3}));
        ASSERT_EQ(StatusOk, newState(model, StateArray{&Model::weights, 3}));
        EXPECT_EQ(2, standInBlocks());
        kept = model.keep();
    }
    EXPECT_EQ(1, standInBlocks());
    EXPECT_EQ(StatusOk, freeState(kept));
}

TEST(State, ReportsMissingMemoryAndNullPointers) {
    Owned<Model> model;
    standInFailAfter(0);
    EXPECT_EQ(StatusMemoryAllocation, newState(model, StateArray{&Model::weights, 33}));
    EXPECT_FALSE(Owned<float>::forObjects(8));
    standInFailAfter(INT_MAX);
    EXPECT_EQ(StatusMemoryAllocation, newState(model, StateArray{&Model::weights, INT_MAX}));
    EXPECT_FALSE(model);
    EXPECT_EQ(0, standInBlocks());
    EXPECT_EQ(StatusNullPointer, freeState(model.get()));
}

#if !defined(NDEBUG)
TEST(Scratch, KnowsItsEnd) {
    alignas(32) uint8_t memory[96];
    Scratch scratch(memory, sizeof memory);
    scratch.take<float>(9);  // and 28 bytes to the next multiple of 32
    scratch.take<uint8_t>(32);
    EXPECT_DEATH(scratch.take<uint8_t>(1), "");
}
#endif

TEST(WorkBuffer, HasASliceForEachThread) {
    for (int threads : {1, 3, 40}) {
        vekSetNumThreads(threads);
        for (int64_t perThread : {1, 31, 32, 1000}) {
            const int64_t bytes = WorkBuffer::bytes(perThread);
            EXPECT_EQ(threads * (perThread + 32), bytes);
            for (uintptr_t begin = 4096; begin < 4096 + 32; ++begin) {
                const WorkBuffer buffer(reinterpret_cast<void*>(begin), perThread);
                uintptr_t end = begin;  // of the slice before
                for (int t = 0; t < threads; ++t) {
                    const auto slice = reinterpret_cast<uintptr_t>(buffer.slice(t).take<uint8_t>(perThread));
                    EXPECT_EQ(0u, slice % 32);
                    EXPECT_GE(slice, end);
                    end = slice + uintptr_t(perThread);
                }
                EXPECT_LE(end, begin + uintptr_t(bytes));
            }
        }
    }
}

TEST(WorkBuffer, RefusesSizesThatDoNotFit) {
    int32_t size = -1;
    EXPECT_EQ(StatusSizeError, writeBufferSize(INT64_MAX, &size));
    EXPECT_EQ(StatusSizeError, writeBufferSize(int64_t{INT32_MAX} + 1, &size));
    EXPECT_EQ(-1, size);
    EXPECT_EQ(StatusOk, writeBufferSize(INT32_MAX, &size));
    EXPECT_EQ(INT32_MAX, size);
}

// The cache of the stand-in has 2^20 bytes.
TEST(Streaming, BeginsWhenTheCacheIsFull) {
    EXPECT_FALSE(fillsCache(1024, 1023, 1));
    EXPECT_TRUE(fillsCache(1024, 1024, 1));
    EXPECT_TRUE(fillsCache(INT32_MAX, INT32_MAX, 2));
}

}  // namespace
