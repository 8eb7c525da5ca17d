#include "memory.h"

namespace fuzz {
namespace {

constexpr uint8_t kCanary = 0xA5;

int64_t page() {
    return static_cast<int64_t>(GuardedMemory::page());
}

int64_t stepOf(int64_t rowBytes, int64_t step, Place place) {
    if (place.guard == Place::kBehindRows)
        return (rowBytes + page() - 1) / page() * page() + page();
    return step == 0 ? rowBytes : step;
}

size_t mappingBytes(int64_t rowBytes, int64_t rows, int64_t step, Place place) {
    return static_cast<size_t>(place.guard == Place::kBehindRows ? rows * step
                                                                 : (rows - 1) * step + rowBytes + place.offset);
}

/** Small integers more often than large ones; floats that are not multiples of each other's last bits. */
template <typename T>
T drawPositive(Random& random) {
    const uint32_t number = 1 + random.below(uint32_t{1} << random.below(20));
    if constexpr (std::is_floating_point_v<T>)
        return static_cast<T>(number) / 7;
    else
        return static_cast<T>(number);
}

template <typename T>
T drawElement(Random& random, Content::Values values, T constant) {
    switch (values) {
        case Content::kAny:
            return random.value<T>();
        case Content::kSmall:
            return static_cast<T>(random.below(4));
        case Content::kConstant:
            return constant;
        case Content::kMask:
            return static_cast<T>(random.mask());
        case Content::kPositive:
            return drawPositive<T>(random);
        default:
            return T(0);
    }
}

}  // namespace

Operand::Operand(Element element, Extent extent, int64_t step, Place place)
    : element_(element),
      extent_(extent),
      step_(stepOf(rowBytes(), step, place)),
      memory_(mappingBytes(rowBytes(), extent.rows(), step_, place)) {
    uint8_t* const begin = memory_.begin();
    const auto bytes = memory_.end() - begin;
    std::memset(begin, kCanary, static_cast<size_t>(bytes));
    if (place.guard == Place::kBehindRows) {
        first_ = begin + step_ - page() - rowBytes();
        for (int64_t y = 0; y < extent.rows(); ++y) {
            segments_.push_back({begin + y * step_, static_cast<size_t>(step_ - page())});
            memory_.forbidPage(begin + (y + 1) * step_ - page());
        }
    } else {
        first_ = place.guard == Place::kBefore
                     ? begin + place.offset
                     : memory_.end() - place.offset - (extent.rows() - 1) * step_ - rowBytes();
        segments_.push_back({begin, static_cast<size_t>(bytes)});
    }
}

uint8_t* Operand::at(int64_t x, int64_t y) const {
    const int64_t distance = (y - extent_.top) * step_ + (x - extent_.left) * bytesOf(element_);
    return reinterpret_cast<uint8_t*>(reinterpret_cast<uintptr_t>(first_) + static_cast<uintptr_t>(distance));
}

template <typename Visitor>
void Operand::forEachRow(Visitor visit) const {
    for (int64_t y = extent_.top; y < extent_.bottom; ++y)
        visit(row(y));
}

void Operand::fill(Content content) const {
    Random random(content.seed);
    withType(element_, [&]<typename T>(T) {
        const T constant = random.value<T>();
        forEachRow([&](uint8_t* row) {
            for (int64_t byte = 0; byte < rowBytes(); byte += int64_t{sizeof(T)}) {
                const T value = drawElement(random, content.values, constant);
                std::memcpy(row + byte, &value, sizeof value);
            }
        });
        // What a single row or the end of one adds to a result; often the last ones.
        const auto fromEnd = [&](int64_t count) {
            return random.below(3) == 0 ? 0 : static_cast<int64_t>(random.below(static_cast<uint32_t>(count)));
        };
        for (uint32_t left = content.values == Content::kSparse ? 1 + random.below(3) : 0; left > 0; --left) {
            const int64_t y = extent_.bottom - 1 - fromEnd(extent_.rows()), x = fromEnd(extent_.columns());
            const T value = random.value<T>();
            std::memcpy(row(y) + (extent_.columns() - 1 - x) * int64_t{sizeof(T)}, &value, sizeof value);
        }
    });
}

void Operand::save() {
    initial_.clear();
    for (const Segment& segment : segments_)
        initial_.insert(initial_.end(), segment.begin, segment.begin + segment.bytes);
}

void Operand::restore() const {
    const uint8_t* from = initial_.data();
    for (const Segment& segment : segments_) {
        std::memcpy(segment.begin, from, segment.bytes);
        from += segment.bytes;
    }
}

bool Operand::isUntouched() const {
    const uint8_t* from = initial_.data();
    for (const Segment& segment : segments_) {
        if (std::memcmp(segment.begin, from, segment.bytes) != 0)
            return false;
        from += segment.bytes;
    }
    return true;
}

bool Operand::areSurroundingsUntouched() const {
    const auto areCanaries = [](const uint8_t* byte, const uint8_t* end) {
        while (byte < end && *byte == kCanary)
            ++byte;
        return byte >= end;
    };
    // Rows of a step shorter than they are overlap; what lies between them is not there.
    const uint8_t* behind = segments_.front().begin;
    for (int64_t y = extent_.top; y < extent_.bottom; ++y) {
        if (segments_.size() > 1)
            behind = segments_[static_cast<size_t>(y - extent_.top)].begin;
        if (!areCanaries(behind, row(y)))
            return false;
        behind = row(y) + rowBytes();
    }
    return areCanaries(behind, segments_.back().begin + segments_.back().bytes);
}

std::vector<uint8_t> Operand::elements() const {
    std::vector<uint8_t> bytes;
    bytes.reserve(static_cast<size_t>(rowBytes() * extent_.rows()));
    forEachRow([&](const uint8_t* row) { bytes.insert(bytes.end(), row, row + rowBytes()); });
    return bytes;
}

}  // namespace fuzz
