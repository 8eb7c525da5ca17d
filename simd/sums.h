// Sums over the pixels of chunks: exact ones of unsigned integers and of their squares, and running ones of floats.
#pragma once

#include "fold_halves.h"
#include "pair_products.h"
#include "reduction.h"

namespace VEKCV_VARIANT {

/** Pixels of a section: few enough that the 32-bit sums below cannot overflow. */
template <typename T>
constexpr ptrdiff_t kSumSectionPixels = 1024 * kChunkPixels<T>;

/** Sums of products of 16-bit lanes: 32-bit sums of a section, and 64-bit sums of the sections. */
class ProductSums {
    using Narrow = hn::ScalableTag<int32_t>;
    using Wide = hn::ScalableTag<uint64_t>;

  public:
    template <typename V>
    HWY_INLINE void add(V a, V b) {
        section_ = addPairProducts(Narrow(), a, b, section_);
    }
    HWY_INLINE void endSection() {
        const Wide d;
        const auto pairs = hn::BitCast(d, section_);
        sections_ = hn::Add(sections_, hn::Add(hn::And(pairs, hn::Set(d, 0xFFFFFFFF)), hn::ShiftRight<32>(pairs)));
        section_ = hn::Zero(Narrow());
    }
    uint64_t total() const { return hn::GetLane(hn::SumOfLanes(Wide(), sections_)); }

  private:
    hn::Vec<Narrow> section_ = hn::Zero(Narrow());
    hn::Vec<Wide> sections_ = hn::Zero(Wide());
};

/** Sums of bytes. */
class ByteSums {
    using Wide = hn::ScalableTag<uint64_t>;

  public:
    template <typename V>
    HWY_INLINE void add(V bytes) {
        sums_ = hn::Add(sums_, hn::SumsOf8(bytes));
    }
    uint64_t total() const { return hn::GetLane(hn::SumOfLanes(Wide(), sums_)); }

  private:
    hn::Vec<Wide> sums_ = hn::Zero(Wide());
};

/** The low and the high bytes of 16-bit lanes, as lanes of 16 bits. */
template <typename D>
HWY_INLINE hn::Vec<D> lowBytes(D d, hn::Vec<D> v) {
    return hn::And(v, hn::Set(d, 0xFF));
}
template <typename V>
HWY_INLINE V highBytes(V v) {
    return hn::ShiftRight<8>(v);
}

template <typename T>
class Sum;

template <>
class Sum<uint8_t> {
  public:
    HWY_INLINE void add(ptrdiff_t /*vector*/, hn::Vec<hn::ScalableTag<uint8_t>> v) { sums_.add(v); }
    HWY_INLINE void endSection() {}
    uint64_t total() const { return sums_.total(); }

  private:
    ByteSums sums_;
};

template <>
class Sum<uint16_t> {
    using D = hn::ScalableTag<uint16_t>;
    using Bytes = hn::ScalableTag<uint8_t>;

  public:
    HWY_INLINE void add(ptrdiff_t /*vector*/, hn::Vec<D> v) {
        low_.add(hn::BitCast(Bytes(), lowBytes(D(), v)));
        high_.add(hn::BitCast(Bytes(), highBytes(v)));
    }
    HWY_INLINE void endSection() {}
    uint64_t total() const { return low_.total() + 256 * high_.total(); }

  private:
    ByteSums low_, high_;
};

template <typename T>
class SumOfSquares;

template <>
class SumOfSquares<uint8_t> {
    using D = hn::ScalableTag<uint8_t>;
    using Wide = hn::ScalableTag<int16_t>;

  public:
    HWY_INLINE void add(ptrdiff_t /*vector*/, hn::Vec<D> v) {
        const auto lower = hn::BitCast(Wide(), hn::InterleaveLower(D(), v, hn::Zero(D())));
        const auto upper = hn::BitCast(Wide(), hn::InterleaveUpper(D(), v, hn::Zero(D())));
        sums_.add(lower, lower);
        sums_.add(upper, upper);
    }
    HWY_INLINE void endSection() { sums_.endSection(); }
    uint64_t total() const { return sums_.total(); }

  private:
    ProductSums sums_;
};

/** (256 h + l)^2 = 65536 h^2 + 512 h l + l^2, whose products fit the multiplication of signed lanes. */
template <>
class SumOfSquares<uint16_t> {
    using D = hn::ScalableTag<uint16_t>;
    using Signed = hn::ScalableTag<int16_t>;

  public:
    HWY_INLINE void add(ptrdiff_t /*vector*/, hn::Vec<D> v) {
        const auto low = hn::BitCast(Signed(), lowBytes(D(), v)), high = hn::BitCast(Signed(), highBytes(v));
        lowSquares_.add(low, low);
        products_.add(low, high);
        highSquares_.add(high, high);
    }
    HWY_INLINE void endSection() {
        lowSquares_.endSection();
        products_.endSection();
        highSquares_.endSection();
    }
    uint64_t total() const { return (highSquares_.total() << 16) + (products_.total() << 9) + lowSquares_.total(); }

  private:
    ProductSums lowSquares_, products_, highSquares_;
};

/** Sixteen running sums of floats or doubles, in as many vectors as they take. total() adds them in pairs. */
template <typename T>
class SixteenSums {
    using D = hn::ScalableTag<T>;
    static constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
    static constexpr ptrdiff_t kSums = 16;

  public:
    HWY_INLINE SixteenSums() {
        for (auto& sums : sums_)
            sums = hn::Zero(D());
    }
    HWY_INLINE void add(ptrdiff_t vector, hn::Vec<D> v) { sums_[vector] = hn::Add(sums_[vector], v); }
    T total() const {
        constexpr auto kVectors = kSums / kLanes;
        hn::Vec<D> sums[kVectors];
#pragma GCC unroll 8
        for (ptrdiff_t i = 0; i < kVectors; ++i)
            sums[i] = sums_[i];
#pragma GCC unroll 3
        for (ptrdiff_t half = kVectors / 2; half > 0; half /= 2)
#pragma GCC unroll 4
            for (ptrdiff_t i = 0; i < half; ++i)
                sums[i] = hn::Add(sums[i], sums[i + half]);
        return foldHalves(D(), sums[0], [](auto lower, auto upper) { return hn::Add(lower, upper); });
    }

  private:
    hn::Vec<D> sums_[kSums / kLanes];
};

}  // namespace VEKCV_VARIANT
