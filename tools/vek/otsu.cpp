#include "otsu.h"

#include <array>

std::optional<int32_t> otsuThreshold(const Picture& grey) {
    std::array<int64_t, 256> histogram{};
    for (const uint8_t value : grey.bytes)
        ++histogram[value];
    int64_t sum = 0;
    for (size_t value = 0; value < histogram.size(); ++value)
        sum += histogram[value] * static_cast<int64_t>(value);

    const auto count = static_cast<int64_t>(grey.bytes.size());
    int64_t darkCount = 0, darkSum = 0;
    double largest = 0;
    std::optional<int32_t> threshold;
    for (size_t value = 0; value < histogram.size(); ++value) {
        darkCount += histogram[value];
        darkSum += histogram[value] * static_cast<int64_t>(value);
        const int64_t lightCount = count - darkCount;
        if (darkCount == 0 || lightCount == 0)
            continue;
        const auto dark = static_cast<double>(darkCount), light = static_cast<double>(lightCount);
        const double apart = static_cast<double>(darkSum) / dark - static_cast<double>(sum - darkSum) / light;
        // The variance between the two, which is largest where that within them is smallest.
        const double between = dark * light * apart * apart;
        if (between > largest) {
            largest = between;
            threshold = static_cast<int32_t>(value);
        }
    }
    return threshold;
}
