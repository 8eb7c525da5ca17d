#pragma once

#include <cstdint>
#include <vector>

#include "export.h"
#include "guarded_memory.h"
#include "random.h"

namespace fuzz {

/** The elements of an operand that exist: columns left to right - 1 and rows top to bottom - 1, from its pointer on. */
struct Extent {
    int64_t left = 0, top = 0, right = 1, bottom = 1;

    int64_t columns() const { return right - left; }
    int64_t rows() const { return bottom - top; }
};

/** Where an operand lies in memory. */
struct Place {
    enum Guard : uint8_t { kBefore, kBehind, kBehindRows };  // the page that must not be touched
    Guard guard = kBehind;
    int64_t offset = 0;  // bytes between that page and the operand; none behind rows
};

/** What elements hold. */
struct Content {
    enum Values : uint8_t { kAny, kSmall, kConstant, kSparse, kZero, kMask, kPositive };  // sparse: zero but for a few
    Values values = kAny;
    uint32_t seed = 0;
};

/** An image or an array: its elements, surrounded by bytes that are known and by pages that must not be touched. */
class Operand {
  public:
    /** With step 0 rows follow one another; rows with guards take a step of their own. */
    Operand(Element element, Extent extent, int64_t step, Place place);

    Element element() const { return element_; }
    int64_t step() const { return step_; }
    Extent extent() const { return extent_; }

    /** The address of the element (0, 0), which need not exist. */
    void* pointer() const { return at(0, 0); }
    uint8_t* row(int64_t y) const { return at(extent_.left, y); }
    int64_t rowBytes() const { return extent_.columns() * bytesOf(element_); }

    void fill(Content content) const;

    /** Keeps the present content as the initial one; restore() brings it back. */
    void save();
    void restore() const;

    bool isUntouched() const;
    bool areSurroundingsUntouched() const;

    /** The bytes of all elements. */
    std::vector<uint8_t> elements() const;

  private:
    struct Segment {
        uint8_t* begin;
        size_t bytes;
    };

    uint8_t* at(int64_t x, int64_t y) const;
    template <typename Visitor>
    void forEachRow(Visitor visit) const;

    Element element_;
    Extent extent_;
    int64_t step_;
    std::vector<Segment> segments_;  // what may be accessed
    GuardedMemory memory_;
    uint8_t* first_;
    std::vector<uint8_t> initial_;
};

}  // namespace fuzz
