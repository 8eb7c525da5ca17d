// Eigenvalues and eigenvectors of the matrix of derivatives around each pixel.
#include "bind.h"
#include "gradient_matrix.h"

namespace VEKCV_VARIANT {
namespace {

/** What the eigenvalues of a matrix consist of: their sum and their difference, both unscaled. */
template <typename V>
struct Eigenvalues {
    V sum, difference;
    V xxMinusYy, twiceXy;

    HWY_INLINE Eigenvalues(V xx, V xy, V yy)
        : sum(hn::Add(xx, yy)), xxMinusYy(hn::Sub(xx, yy)), twiceXy(hn::Add(xy, xy)) {
        const auto four = hn::Set(hn::DFromV<V>(), 4.0F);
        difference = hn::Sqrt(hn::Add(hn::Mul(xxMinusYy, xxMinusYy), hn::Mul(four, hn::Mul(xy, xy))));
    }
};

HWY_NOINLINE void writeSmaller(const MatrixRows& rows, int32_t width, float halfScale, float* out) {
    const auto [xx, xy, yy] = rows;
    const float *const a = xx, *const b = xy, *const c = yy;
    forOverlapping(
        hn::ScalableTag<float>(), 0, 0, width, [=](auto d, ptrdiff_t x) __attribute__((always_inline)) {
            const Eigenvalues values(hn::LoadU(d, a + x), hn::LoadU(d, b + x), hn::LoadU(d, c + x));
            hn::StoreU(hn::Mul(hn::Sub(values.sum, values.difference), hn::Set(d, halfScale)), d, out + x);
        });
}

/** Four pixels of eigenvalues and eigenvectors. */
HWY_INLINE void writeFour(const MatrixRows& rows, ptrdiff_t x, float halfScale, float* out) {
    const hn::CappedTag<float, 4> d;
    const hn::Repartition<uint64_t, decltype(d)> pairs;
    const Eigenvalues values(hn::LoadU(d, rows.xx + x), hn::LoadU(d, rows.xy + x), hn::LoadU(d, rows.yy + x));
    const auto scale = hn::Set(d, halfScale), zero = hn::Zero(d), one = hn::Set(d, 1.0F), half = hn::Set(d, 0.5F);

    // The first vector is at half the angle of (xx - yy, 2 xy), which is (cosine, sine) times the difference. Its
    // larger component is computed by a sum that does not cancel, the other one from it.
    const auto isRound = hn::Eq(values.difference, zero);
    const auto length = hn::IfThenElse(isRound, one, values.difference);
    const auto cosine = hn::IfThenElse(isRound, one, hn::Div(values.xxMinusYy, length));
    const auto sine = hn::Div(values.twiceXy, length);
    const auto larger = hn::Sqrt(hn::Mul(hn::Add(one, hn::Abs(cosine)), half));
    const auto smaller = hn::Div(hn::Abs(sine), hn::Add(larger, larger));
    const auto isFlat = hn::Ge(cosine, zero);
    const auto vectorX = hn::IfThenElse(isFlat, larger, smaller);
    const auto lengthY = hn::IfThenElse(isFlat, smaller, larger);
    const auto vectorY = hn::IfThenElse(hn::Lt(sine, zero), hn::Sub(zero, lengthY), lengthY);

    const auto first = hn::Mul(hn::Add(values.sum, values.difference), scale);
    const auto second = hn::Mul(hn::Sub(values.sum, values.difference), scale);
    const auto otherX = hn::Sub(zero, vectorY);
    // Pairs of floats of pixels 0 and 1, then of pixels 2 and 3.
    auto* const to = reinterpret_cast<uint64_t*>(out);
    const auto low = [=](auto a, auto b) { return hn::BitCast(pairs, hn::InterleaveLower(d, a, b)); };
    const auto high = [=](auto a, auto b) { return hn::BitCast(pairs, hn::InterleaveUpper(d, a, b)); };
    hn::StoreInterleaved3(low(first, second), low(vectorX, vectorY), low(otherX, vectorX), pairs, to);
    hn::StoreInterleaved3(high(first, second), high(vectorX, vectorY), high(otherX, vectorX), pairs, to + 6);
}

HWY_NOINLINE void writeAll(const MatrixRows& rows, int32_t width, float halfScale, float* out) {
    constexpr ptrdiff_t kFloats = 6;
    const MatrixRows local = rows;
    ptrdiff_t x = 0;
    for (; x + 4 <= width; x += 4)
        writeFour(local, x, halfScale, out + kFloats * x);
    if (x == width)
        return;
    float last[4 * kFloats];
    writeFour(local, x, halfScale, last);
    __builtin_memcpy(out + kFloats * x, last, static_cast<size_t>(kFloats * (width - x)) * sizeof(float));
}

using WriteRow = void (*)(const MatrixRows& rows, int32_t width, float halfScale, float* out);

Check& addSizes(Check& check, int32_t aperture, int32_t window) {
    return check.require(MatrixKind::isSize(aperture), StatusSizeError)
        .require(MatrixKind::isSize(window), StatusSizeError);
}

template <typename T, int32_t kResults>
Status measure(Image<const T> source, Image<float, kResults> out, RoiSize roi, int32_t kernelType, int32_t aperture,
               int32_t window, uint8_t* buffer, WriteRow writeRow) {
    Check check;
    check.pointers(source, out, buffer)
        .roi(roi)
        .steps(roi.width, source, out)
        .require(kernelType == 0 || kernelType == 1, StatusBadArgument)
        .require(kernelType == 0 || aperture == 3, StatusSizeError);
    if (Status status = addSizes(check, aperture, window))
        return status;
    const MatrixKind kind{kernelType == 1, aperture, window};
    const WorkBuffer work(buffer, GradientMatrix<T>::bytes(roi, kind));
    const float halfScale = kind.scale() * 0.5F;
    forThreadStripes(isForTeam(roi, kParallelFrom), roi.height, [&](int32_t thread, int32_t first, int32_t rows) {
        GradientMatrix<T>(work.slice(thread), roi, kind)
            .forRows(source, first, rows,
                     [&](int32_t y, const MatrixRows& matrix) { writeRow(matrix, roi.width, halfScale, out.row(y)); });
    });
    return StatusOk;
}

template <typename T>
Status minEigenVal(const T* source, int32_t sourceStep, float* minEigen, int32_t minEigenStep, RoiSize roi,
                   int32_t kernelType, int32_t aperture, int32_t window, uint8_t* buffer) {
    return measure<T, 1>({source, sourceStep}, {minEigen, minEigenStep}, roi, kernelType, aperture, window, buffer,
                         writeSmaller);
}
template <typename T>
Status eigenValsVecs(const T* source, int32_t sourceStep, float* eigen, int32_t eigenStep, RoiSize roi,
                     int32_t kernelType, int32_t aperture, int32_t window, uint8_t* buffer) {
    return measure<T, 6>({source, sourceStep}, {eigen, eigenStep}, roi, kernelType, aperture, window, buffer, writeAll);
}

template <typename T>
Status bufferSize(RoiSize roi, int32_t aperture, int32_t window, int32_t* size) {
    Check check;
    check.pointers(size).roi(roi);
    if (Status status = addSizes(check, aperture, window))
        return status;
    return writeBufferSize(WorkBuffer::bytes(GradientMatrix<T>::bytes(roi, {false, aperture, window})), size);
}

}  // namespace

VEKCV_BIND(vekiMinEigenVal_8u32f_C1R, minEigenVal);
VEKCV_BIND(vekiMinEigenVal_32f_C1R, minEigenVal);
VEKCV_BIND(vekiMinEigenValGetBufferSize_8u32f_C1R, bufferSize<uint8_t>);
VEKCV_BIND(vekiMinEigenValGetBufferSize_32f_C1R, bufferSize<float>);
VEKCV_BIND(vekiEigenValsVecs_8u32f_C1R, eigenValsVecs);
VEKCV_BIND(vekiEigenValsVecs_32f_C1R, eigenValsVecs);
VEKCV_BIND(vekiEigenValsVecsGetBufferSize_8u32f_C1R, bufferSize<uint8_t>);
VEKCV_BIND(vekiEigenValsVecsGetBufferSize_32f_C1R, bufferSize<float>);
}  // namespace VEKCV_VARIANT
