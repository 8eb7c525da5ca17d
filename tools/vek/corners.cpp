#include "corners.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "library_call.h"
#include "table.h"
#include "work_buffer.h"

namespace {

constexpr int32_t kSobel = 0, kAperture = 3, kWindow = 3;
constexpr float kLeastStrength = 0.01f;  // of the strongest corner
constexpr int32_t kEightNeighbors = 1, kBorder = 1;

/** The smaller eigenvalue of the products of the derivatives around each pixel. */
Table<float> strengthsOf(const Picture& grey) {
    Table<float> result(grey.width, grey.height);
    const WorkBuffer buffer = workBuffer(vekiMinEigenValGetBufferSize_8u32f_C1R, grey.size(), kAperture, kWindow);
    callLibrary("vekiMinEigenVal_8u32f_C1R", vekiMinEigenVal_8u32f_C1R, grey.pixels<uint8_t>(), grey.step(),
                result.entries.data(), result.step(), grey.size(), kSobel, kAperture, kWindow, buffer.get());
    return result;
}

/** Where the strengths are largest among their neighbours, the strongest first. */
std::vector<ImagePoint> peaksOf(const Table<float>& strengths) {
    const float threshold = kLeastStrength * *std::ranges::max_element(strengths.entries);
    std::vector<ImagePoint> peaks(std::min<size_t>(strengths.entries.size(), INT32_MAX));
    int32_t count = 0;
    const WorkBuffer buffer = workBuffer(vekiFindPeaks3x3GetBufferSize_32f_C1R, strengths.columns);
    callLibrary("vekiFindPeaks3x3_32f_C1R", vekiFindPeaks3x3_32f_C1R, strengths.entries.data(), strengths.step(),
                RoiSize{strengths.columns, strengths.rows()}, threshold, peaks.data(),
                static_cast<int32_t>(peaks.size()), &count, kEightNeighbors, kBorder, buffer.get());
    peaks.resize(static_cast<size_t>(count));
    const auto strength = [&](ImagePoint point) { return strengths.at(point.x, point.y); };
    std::ranges::stable_sort(peaks, std::greater(), strength);
    return peaks;
}

}  // namespace

void addCorners(const Picture& grey, size_t most, std::vector<ImagePoint32f>& points) {
    if (std::min(grey.width, grey.height) < 2 * kBorder)
        return;
    const double area = double{1} * grey.width * grey.height;
    const auto distance = static_cast<float>(std::sqrt(area / static_cast<double>(most)) / 2);
    for (const auto& [x, y] : peaksOf(strengthsOf(grey))) {
        if (points.size() >= most)
            break;
        const ImagePoint32f corner{static_cast<float>(x), static_cast<float>(y)};
        const auto isNear = [&](const ImagePoint32f& point) {
            return std::hypot(point.x - corner.x, point.y - corner.y) < distance;
        };
        if (std::ranges::none_of(points, isNear))
            points.push_back(corner);
    }
}
