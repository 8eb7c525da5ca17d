// The matrix of the products of derivatives around each pixel.
#pragma once

#include "../filter/filter_stripes.h"

namespace VEKCV_VARIANT {

/** Which derivatives there are, and over how many pixels their products are averaged. */
struct MatrixKind {
    bool isScharr;
    int32_t aperture, window;

    static constexpr bool isSize(int32_t size) { return size == 3 || size == 5; }

    /** What the eigenvalues are multiplied with. */
    float scale() const {
        const float scale = 1.0F / (255.0F * static_cast<float>(1 << (2 * aperture - 2)));
        return isScharr ? scale * 0.6125F : scale;
    }
};

/** Rows of means: of the squares of the derivatives along rows, of the products of both, of the other squares. */
struct MatrixRows {
    const float *xx, *xy, *yy;
};

/** The matrices of bands of rows, which stay in the cache. */
template <typename T>
class GradientMatrix {
    using Derivative = Intermediate<T>;

  public:
    /** Bytes of scratch memory, at any address. */
    static int64_t bytes(RoiSize roi, const MatrixKind& kind) {
        return 2 * arrayBytes<Derivative>(roi, productRows(roi, kind)) +
               arrayBytes<float>(roi, productRows(roi, kind)) + 3 * arrayBytes<float>(roi, bandRows(roi)) +
               filterBytes(roi, kind) + Scratch::kAlignment;
    }

    GradientMatrix(Scratch memory, RoiSize roi, const MatrixKind& kind) : roi_(roi), kind_(kind) {
        for (Derivative*& band : derivatives_)
            band = memory.take<Derivative>(pitch(roi) * productRows(roi, kind));
        products_ = memory.take<float>(pitch(roi) * productRows(roi, kind));
        for (float*& band : means_)
            band = memory.take<float>(pitch(roi) * bandRows(roi));
        filterMemory_ = memory.take<uint8_t>(filterBytes(roi, kind));
    }

    /** Calls body(y, rows) for `count` rows from `first` on. */
    template <typename Body>
    void forRows(Image<const T> source, int32_t first, int32_t count, const Body& body) const {
        const GradientStripes<T> gradient = kind_.isScharr ? scharrStripes<T>() : sobelStripes<T>(kind_.aperture);
        const FilterStripe<float, float> mean = meanStripe(kind_.window);
        const int32_t reach = kind_.window / 2;
        for (int32_t y = first, end = first + count; y < end;) {
            const int32_t rows = HWY_MIN(bandRows(roi_), end - y);
            const int32_t top = HWY_MAX(y - reach, 0),
                          bottom = reach < roi_.height - (y + rows) ? y + rows + reach : roi_.height;
            const auto border = Border<T>::of(BorderReplicate, 0);
            gradient.alongRows(source, derivative(0, top), roi_, border, top, bottom - top, filterScratch());
            gradient.alongColumns(source, derivative(1, top), roi_, border, top, bottom - top, filterScratch());
            constexpr int32_t kFactors[3][2] = {{0, 0}, {0, 1}, {1, 1}};
            for (int32_t i = 0; i < 3; ++i) {
                for (int32_t row = top; row < bottom; ++row)
                    multiply(derivative(kFactors[i][0], top).row(row), derivative(kFactors[i][1], top).row(row),
                             product(top).row(row));
                const Image<float> products = product(top);
                mean({products.pixels, products.step}, bandImage(means_[i], y), roi_,
                     Border<float>::of(BorderReplicate, 0), y, rows, filterScratch());
            }
            for (int32_t k = 0; k < rows; ++k) {
                const ptrdiff_t begin = k * static_cast<ptrdiff_t>(pitch(roi_));
                body(y + k, MatrixRows{means_[0] + begin, means_[1] + begin, means_[2] + begin});
            }
            y += rows;
        }
    }

  private:
    /** Elements from row to row of a band: whole vectors, which may be read. */
    static int64_t pitch(RoiSize roi) { return alignUp<int64_t>(roi.width, 16); }

    /** Rows of a band, so few that all that is kept for them fits a cache of 512 KB. */
    static int32_t bandRows(RoiSize roi) {
        constexpr int64_t kPixels = 512 * 1024 / 24;
        const int64_t rows = kPixels / pitch(roi);
        return HWY_MIN(roi.height, rows < 8 ? 8 : rows > 32 ? 32 : static_cast<int32_t>(rows));
    }
    static int64_t productRows(RoiSize roi, const MatrixKind& kind) { return int64_t{bandRows(roi)} + kind.window - 1; }

    template <typename Element>
    static int64_t arrayBytes(RoiSize roi, int64_t rows) {
        return alignUp<int64_t>(pitch(roi) * rows * int64_t{sizeof(Element)}, Scratch::kAlignment);
    }
    static int64_t filterBytes(RoiSize roi, const MatrixKind& kind) {
        return HWY_MAX(stripeBytes<T>(roi, kind.aperture), stripeBytes<float>(roi, kind.window));
    }

    /** A band as the image of which it holds the rows from `first` on. */
    template <typename Element>
    Image<Element> bandImage(Element* band, int32_t first) const {
        const auto step = static_cast<int32_t>(pitch(roi_) * int64_t{sizeof(Element)});
        const Image<Element> image{band, step};
        return {image.row(-ptrdiff_t{first}), step};
    }
    Image<Derivative> derivative(int32_t i, int32_t first) const { return bandImage(derivatives_[i], first); }
    Image<float> product(int32_t first) const { return bandImage(products_, first); }

    Scratch filterScratch() const { return {filterMemory_, filterBytes(roi_, kind_)}; }

    /** Single precision; the product of 16-bit derivatives is rounded once. */
    HWY_NOINLINE void multiply(const Derivative* a, const Derivative* b, float* out) const {
        const hn::ScalableTag<float> d;
        for (ptrdiff_t x = 0; x < roi_.width; x += hn::MaxLanes(hn::ScalableTag<float>()))
            hn::StoreU(hn::Mul(loadFloats(d, a + x), loadFloats(d, b + x)), d, out + x);
    }

    RoiSize roi_;
    MatrixKind kind_;
    Derivative* derivatives_[2];
    float *products_, *means_[3];
    uint8_t* filterMemory_;
};

}  // namespace VEKCV_VARIANT
