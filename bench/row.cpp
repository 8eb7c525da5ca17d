#include "row.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <random>
#include <ranges>
#include <string_view>
#include <type_traits>

#include "vekcore.h"

namespace bench {
namespace {

struct Export {
    std::string name;
    bool worksOnImages;
};

/** Whether a parameter has the step of an image: its name is that of the parameter before it and "Step". */
bool hasStep(std::string_view parameters) {
    std::string previous;
    for (const auto word : std::views::split(parameters, ' ')) {
        const std::string parameter(word.begin(), word.end());
        if (parameter == previous + "Step")
            return true;
        previous = parameter;
    }
    return false;
}

/** Whether a type is that of the addresses of rows. */
template <typename T>
constexpr bool isRows() {
    using Address = std::remove_pointer_t<T>;
    return std::is_pointer_v<T> && std::is_pointer_v<Address> && std::is_const_v<Address>;
}

/** Whether a type is that of the place for the address of a new object. */
template <typename T>
constexpr bool isSlot() {
    using Address = std::remove_pointer_t<T>;
    return std::is_pointer_v<T> && std::is_pointer_v<Address> && !std::is_const_v<Address>;
}

/** There is nothing to measure where an export takes no image, or takes it to make an object from it. */
template <typename Result, typename... Types>
Export describe(std::string name, std::string_view parameters, Result(VEKCV_CALL*)(Types...)) {
    return {std::move(name), (hasStep(parameters) || (isRows<Types>() || ...)) && !(isSlot<Types>() || ...)};
}

const Export kExports[] = {
#define VEKCV_EXPORT(name, parameters) describe(#name, parameters, &name),
#include "vekcv_parameters.inc"
#undef VEKCV_EXPORT
};

/** The rows of each export. */
std::map<std::string, std::vector<TableEntry>, std::less<>>& registry() {
    static std::map<std::string, std::vector<TableEntry>, std::less<>> entries;
    return entries;
}

/** body(T{}) for the element type T. */
template <typename Body>
auto visit(Element element, Body body) {
    switch (element) {
        case Element::k8u:
            return body(uint8_t{});
        case Element::k8s:
            return body(int8_t{});
        case Element::k16u:
            return body(uint16_t{});
        case Element::k16s:
            return body(int16_t{});
        case Element::k32s:
            return body(int32_t{});
        case Element::k32f:
            return body(float{});
        default:
            return body(double{});
    }
}

template <typename T>
void fillWithRandom(std::vector<T>& values, std::mt19937& random) {
    for (T& value : values)
        if constexpr (std::is_floating_point_v<T>)
            value = static_cast<T>(random() >> 8) / static_cast<T>(1 << 16);
        else
            value = static_cast<T>(random());
}

/** Stretches of 1 to 128 bytes that are 255 or 0, for masks select regions rather than single pixels. */
void fillWithStretches(std::vector<uint8_t>& values, std::mt19937& random) {
    uint8_t value = 0;
    for (size_t begin = 0; begin < values.size(); value = static_cast<uint8_t>(~value)) {
        const size_t end = std::min(begin + 1 + random() % 128, values.size());
        std::fill(values.begin() + static_cast<ptrdiff_t>(begin), values.begin() + static_cast<ptrdiff_t>(end), value);
        begin = end;
    }
}

}  // namespace

Operand Operand::make(Role role, Element element, int32_t channels, RoiSize size) {
    const auto elementBytes = visit(element, [](auto value) { return static_cast<int32_t>(sizeof value); });
    Operand operand{role, element, channels, size, size.width * channels * elementBytes, nullptr};
    operand.memory.reset(vekMalloc(operand.step * size.height), vekFree);
    if (operand.memory == nullptr)
        fail("there is not enough memory for an image");
    return operand;
}

size_t Operand::elements() const {
    return bytes() / visit(element, [](auto value) { return sizeof value; });
}

void Operand::fill(unsigned seed) const {
    visit(element, [&]<typename T>(T) {
        // Large images repeat one pattern, for making random numbers would take longer than the measurement.
        constexpr size_t kPatternElements = 65521;
        std::mt19937 random(seed);
        std::vector<T> pattern(std::min(elements(), kPatternElements));
        if constexpr (std::is_same_v<T, uint8_t>)
            role == Role::kMask ? fillWithStretches(pattern, random) : fillWithRandom(pattern, random);
        else
            fillWithRandom(pattern, random);
        for (size_t i = 0; i < elements(); i += pattern.size())
            std::memcpy(static_cast<T*>(memory.get()) + i, pattern.data(),
                        std::min(pattern.size(), elements() - i) * sizeof(T));
    });
}

std::vector<double> Operand::values() const {
    return visit(element, [&]<typename T>(T) {
        const T* const first = static_cast<const T*>(memory.get());
        return std::vector<double>(first, first + elements());
    });
}

void Case::fill() const {
    unsigned seed = 0;
    for (const Operand& operand : operands)
        operand.fill(++seed);
    if (content != nullptr)
        content(*this);
}

bool Case::writesImages() const {
    return std::any_of(operands.begin(), operands.end(), [](const Operand& operand) {
        return operand.role == Role::kDestination || operand.role == Role::kInPlace;
    });
}

size_t Case::bytes() const {
    size_t bytes = 0;
    for (const Operand& operand : operands)
        if (operand.role != Role::kBuffer)
            bytes += operand.bytes();
    return bytes;
}

size_t Case::bytesTouched() const {
    size_t bytes = this->bytes();
    for (const Operand& operand : operands)
        if (operand.role == Role::kInPlace)
            bytes += operand.bytes();
    return bytes;
}

Family::Family(const std::string& name, std::span<const Row> rows) {
    for (const Row& row : rows) {
        std::vector<TableEntry>& entries = registry()[row.name.substr(0, row.name.find(' '))];
        if (std::ranges::any_of(entries, [&](const TableEntry& entry) { return entry.row.name == row.name; }))
            fail(row.name + " has two rows");
        entries.push_back({name, row});
    }
}

std::vector<TableEntry> table() {
    std::vector<TableEntry> entries;
    std::string missing;
    for (const Export& target : kExports) {
        const auto found = registry().find(target.name);
        if (found != registry().end())
            entries.insert(entries.end(), found->second.begin(), found->second.end());
        else if (target.worksOnImages)
            missing += "\n    " + target.name;
    }
    if (!missing.empty())
        fail("these exports have no benchmark:" + missing);
    return entries;
}

void fail(const std::string& message) {
    std::fprintf(stderr, "vekcv_bench: %s\n", message.c_str());
    std::exit(EXIT_FAILURE);
}

}  // namespace bench
