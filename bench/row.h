// The table of benchmarks: a row for each export, made by the files of the families.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "vekcv.h"

namespace bench {

/** Calls are measured with 1 thread and with more, up to this number. */
constexpr int kMostThreads = 2;

enum class Element { k8u, k8s, k16u, k16s, k32s, k32f, k64f };
enum class Role { kSource, kMask, kDestination, kInPlace, kResult, kBuffer };  // a result is no image

/** An image or an array that a call reads or writes, in memory of its own that begins at a multiple of 64 bytes. */
struct Operand {
    Role role;
    Element element;
    int32_t channels;
    RoiSize size;
    int32_t step;
    std::shared_ptr<void> memory;

    static Operand make(Role role, Element element, int32_t channels, RoiSize size);

    size_t bytes() const { return static_cast<size_t>(step) * static_cast<size_t>(size.height); }
    size_t elements() const;

    /**
     * Fills it with random elements, which depend on the seed alone: the whole range of an integer, 0 to 256 for
     * floats. A mask has stretches that are set and stretches that are not.
     */
    void fill(unsigned seed) const;
    std::vector<double> values() const;
};

template <typename T>
T* pointerTo(const Operand& operand) {
    return static_cast<T*>(operand.memory.get());
}

/** What a call works on. */
struct Case {
    RoiSize size;
    std::vector<double> parameters;
    std::vector<Operand> operands;
    void (*content)(const Case&) = nullptr;  // replaces what must not be random
    double tolerance = 1e-6;                 // of the results of the peer, as a share of the largest one

    void fill() const;
    bool writesImages() const;

    /** Bytes of the images and results. */
    size_t bytes() const;

    /** Bytes that have to move: sources, masks and destinations once, images that are changed in place twice. */
    size_t bytesTouched() const;
};

using Call = std::function<void()>;

/** Makes the call of another library that does the same work on the same memory. */
using Peer = Call(const Case&);

/** The calls of a row at one size. */
struct Work {
    Case data;
    Call vekcv{};
    Call peer{};  // empty where there is none
};

struct Row {
    std::string name;  // of the export; of one with several rows, a space and what distinguishes them follow
    std::function<Work(RoiSize)> prepare;
    int64_t mostPixels = INT64_MAX;  // larger images are not measured, for what they take beside
};

/** The rows of a family; they join the table when the program starts. */
class Family {
  public:
    Family(const std::string& name, std::span<const Row> rows);
};

struct TableEntry {
    std::string family;
    Row row;
};

/** The table in the order of the header. Ends the program where an export that works on images has no row. */
std::vector<TableEntry> table();

/** Ends the program with a message. */
[[noreturn]] void fail(const std::string& message);

}  // namespace bench
