#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <ostream>
#include <type_traits>

#include "guarded_memory.h"
#include "random.h"
#include "vekcv.h"

/** Where an image lies in memory. */
struct Layout {
    enum Place {
        kAfterGuard,    // begins `offset` elements after a page that must not be touched
        kBeforeGuard,   // ends where such a page begins
        kRowsByGuards,  // every row ends where such a page begins
    };
    Place place = kAfterGuard;
    int offset = 0;   // elements
    int padding = 0;  // elements behind each row

    friend std::ostream& operator<<(std::ostream& out, const Layout& layout) {
        constexpr const char* kNames[] = {"after a guard", "before a guard", "rows by guards"};
        return out << kNames[layout.place] << ", offset " << layout.offset << ", padding " << layout.padding;
    }
};

/** The layouts that every family is tested with. */
inline const Layout kLayouts[] = {
    {Layout::kAfterGuard, 0, 0},  {Layout::kAfterGuard, 1, 0},  {Layout::kAfterGuard, 3, 5},
    {Layout::kBeforeGuard, 0, 0}, {Layout::kBeforeGuard, 0, 3}, {Layout::kRowsByGuards, 0, 0},
};

/** The layouts of images that threads share: with packed rows, which count as one long row, and with padded ones. */
inline const Layout kLargeLayouts[] = {{}, {Layout::kAfterGuard, 1, 3}};

/** The layouts of the images of a call: one for all images, or for all but one, which has another. */
class Layouts {
  public:
    Layouts(Layout all = {}) : Layouts(all, 0, all) {}
    Layouts(Layout all, size_t image, Layout another) : all_(all), another_(another), image_(image) {}

    Layout operator[](size_t image) const { return image == image_ ? another_ : all_; }

    friend std::ostream& operator<<(std::ostream& out, const Layouts& layouts) {
        return out << layouts.all_ << " (image " << layouts.image_ << ' ' << layouts.another_ << ')';
    }

  private:
    Layout all_, another_;
    size_t image_;
};

/** An image whose surroundings are watched: guard pages at its ends, known bytes everywhere else. */
template <typename T>
class TestImage {
  public:
    static constexpr uint8_t kCanary = 0xA5;  // all bytes before anything is written

    TestImage(RoiSize roi, Layout layout = {}, int channels = 1)
        : roi_(roi),
          place_(layout.place),
          channels_(channels),
          rowBytes_(size_t(roi.width) * size_t(channels) * sizeof(T)) {
        const size_t page = GuardedMemory::page(), height = size_t(roi.height);
        size_t step = rowBytes_ + size_t(layout.padding) * sizeof(T);
        if (layout.place == Layout::kRowsByGuards)
            step = (rowBytes_ + page - 1) / page * page + page;
        step_ = int32_t(step);
        const size_t offset = size_t(layout.offset) * sizeof(T), bytes = offset + step * (height - 1) + rowBytes_;
        memory_ = std::make_shared<GuardedMemory>(layout.place == Layout::kRowsByGuards ? step * height : bytes);

        uint8_t* const begin = memory_->begin();
        std::memset(begin, kCanary, size_t(memory_->end() - begin));
        if (layout.place == Layout::kAfterGuard)
            pixels_ = begin + offset;
        else if (layout.place == Layout::kBeforeGuard)
            pixels_ = memory_->end() - bytes + offset;
        else
            pixels_ = begin + step - page - rowBytes_;
        if (layout.place == Layout::kRowsByGuards) {
            for (size_t y = 0; y < height; ++y)
                memory_->forbidPage(begin + (y + 1) * step - page);
        }
    }

    /** f(x, y) gives the element at x, where the channels of a pixel are elements of their own. */
    template <typename F>
    static TestImage filled(RoiSize roi, Layout layout, F f, int channels = 1) {
        TestImage image(roi, layout, channels);
        for (int y = 0; y < roi.height; ++y) {
            T* const row = &image.at(0, y);
            for (int x = 0; x < image.elements(); ++x)
                row[x] = f(x, y);
        }
        return image;
    }

    /** Any value of the type, extremes more often than by chance; for floats also infinities, NaN and zeros. */
    static TestImage random(RoiSize roi, Layout layout, uint32_t seed, int channels = 1) {
        Random random(seed);
        return filled(
            roi, layout, [&](int, int) { return random.value<T>(); }, channels);
    }

    /** All elements hold one value. */
    static TestImage constant(RoiSize roi, T value, int channels = 1) {
        return filled(
            roi, {}, [=](int, int) { return value; }, channels);
    }

    /** An image with the same pixels in another layout. */
    TestImage copy(Layout layout) const {
        return filled(
            roi_, layout, [&](int x, int y) { return at(x, y); }, channels_);
    }

    T* data() const { return reinterpret_cast<T*>(pixels_); }
    int32_t step() const { return step_; }
    RoiSize roi() const { return roi_; }
    int elements() const { return roi_.width * channels_; }
    T& at(int x, int y) const { return reinterpret_cast<T*>(pixels_ + ptrdiff_t(y) * step_)[x]; }

    /** Whether all mapped bytes around the rows are as they were. */
    bool guardsIntact() const {
        const uint8_t* byte = memory_->begin();
        for (int y = 0; y < roi_.height; ++y) {
            const uint8_t* const row = pixels_ + ptrdiff_t(y) * step_;
            if (place_ == Layout::kRowsByGuards)  // only the page that the row begins in may be read
                byte = row - size_t(row - memory_->begin()) % GuardedMemory::page();
            if (!holdsCanaries(byte, row))
                return false;
            byte = row + rowBytes_;
        }
        return place_ == Layout::kRowsByGuards || holdsCanaries(byte, memory_->end());
    }

  private:
    /** Whether all bytes are canaries: the first is one, and each is the same as the next. */
    static bool holdsCanaries(const uint8_t* begin, const uint8_t* end) {
        return begin == end || (*begin == kCanary && std::memcmp(begin, begin + 1, size_t(end - begin) - 1) == 0);
    }

    RoiSize roi_;
    Layout::Place place_;
    int channels_;
    size_t rowBytes_;
    int32_t step_ = 0;
    uint8_t* pixels_ = nullptr;
    std::shared_ptr<GuardedMemory> memory_;
};

/** A work buffer for images of a layout: it ends where memory ends, or begins at an odd address where they do. */
inline TestImage<uint8_t> workBuffer(int32_t bytes, Layout images = {}) {
    const bool isOdd = images.offset % 2 == 1;
    return TestImage<uint8_t>(
        {bytes, 1}, isOdd ? Layout{Layout::kAfterGuard, images.offset, 0} : Layout{Layout::kBeforeGuard, 0, 0});
}

/** Whether all `threads` used their slices of a work buffer, and nothing around the buffer was written. */
inline ::testing::AssertionResult usesSlices(const TestImage<uint8_t>& buffer, int threads) {
    if (!buffer.guardsIntact())
        return ::testing::AssertionFailure() << "bytes outside the work buffer were written";
    const ptrdiff_t bytes = buffer.roi().width / std::max(threads, 1);
    for (int thread = 0; thread < threads; ++thread)
        if (std::count(buffer.data() + thread * bytes, buffer.data() + (thread + 1) * bytes, buffer.kCanary) == bytes)
            return ::testing::AssertionFailure() << "thread " << thread << " does not use its slice of the work buffer";
    return ::testing::AssertionSuccess();
}

/** Whether two elements have the same bits; a NaN is the same as any other NaN. */
template <typename T>
bool sameElement(T a, T b) {
    if constexpr (std::is_floating_point_v<T>)
        if (std::isnan(a) && std::isnan(b))
            return true;
    return std::memcmp(&a, &b, sizeof(T)) == 0;
}

/** Whether two images hold the same pixels, and nothing was written around the second. */
template <typename T>
::testing::AssertionResult samePixels(const TestImage<T>& expected, const TestImage<T>& actual) {
    for (int y = 0; y < expected.roi().height; ++y) {
        const T *const right = &expected.at(0, y), *const row = &actual.at(0, y);
        if (std::memcmp(right, row, size_t(expected.elements()) * sizeof(T)) == 0)
            continue;
        for (int x = 0; x < expected.elements(); ++x)
            if (!sameElement(right[x], row[x]))
                return ::testing::AssertionFailure()
                       << "element (" << x << ", " << y << "): expected " << +right[x] << ", got " << +row[x];
    }
    if (!actual.guardsIntact())
        return ::testing::AssertionFailure() << "bytes outside the image were written";
    return ::testing::AssertionSuccess();
}
