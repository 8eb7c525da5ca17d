/**
 * @file vekcv.h
 * vekcv: computer-vision primitives on images that the caller owns.
 *
 * Every function performs one operation on a rectangular region of interest (ROI) inside images that the caller
 * allocates, and returns a Status. The library allocates memory only where a family says so, keeps no state between
 * calls, and may be called from any number of threads at once as long as no two calls write to the same memory.
 * The families say what differs from the rules that follow.
 *
 * Images. An image argument is a pointer to the first pixel of the region and a step: the bytes from the start of one
 * row to the start of the next, at least the length of a row of the region and a whole number of elements. Rows may be
 * padded; images may begin at any address; nothing outside the region is read or written.
 * One RoiSize holds the size in pixels of all images of a call. Channel k of pixel (x, y) of an image with n
 * interleaved channels lies at the byte address pointer + y * step + (x * n + k) * elementSize.
 *
 * Names. veki, the operation, the element types and the layout, as in vekiAdd_8u32f_C1IMR. Types: 8u, 8s, 16u, 16s,
 * 32s, 32f and 64f are unsigned and signed integers and floats of so many bits; a second type is that of the result.
 * Layout: C1, C3, C4 interleaved channels; C3C one channel of interest (1 to 3) of three; C3C1 one channel from three;
 * I in place, that is the last image is read and written; M with a mask, where pixels whose mask byte is not 0 take
 * part; R a region of interest; Sfs an integer result that is divided by 2 to the power of a scale factor, then
 * saturated.
 *
 * Arguments. Sources, mask, destination or in-place image, region, parameters, results, work buffer: in this order.
 *
 * Statuses. 0 is success; a negative status is an error, and nothing was written; a positive status is a warning, and
 * the results are defined. Arguments are checked before anything else happens, in the order of the list of the family,
 * and the first failing check gives the status. The arithmetic of the checks cannot overflow.
 *
 * Threads. Large regions are split into stripes of rows that the threads of an OpenMP team work on; the call returns
 * when all are done. vekSetNumThreads of vekcore.h sets the size of the team, and tells of processes that fork. Each
 * family states from which size on. Operations that give one result, such as norms, need a few bytes for each of more
 * than 32 threads; without memory for them the calling thread does all the work. The OpenMP runtime keeps the threads
 * of a team for the next one, so the library stays in memory once it is loaded: dlclose does not unload it.
 *
 * Stack. A call needs at most 16 KiB of the stack of its thread, and what the OpenMP runtime needs to share it among
 * several. In 32 bits the stack of the caller may be aligned to 4 bytes only.
 *
 * Work buffers. Their sizes may depend on the number of threads, so they are to be queried after it was set, and a
 * larger number needs new buffers. What a buffer holds before and after a call is of no meaning.
 *
 * Exactness. The library holds several variants of its code, for several processors, and chooses one when it is loaded.
 * All variants, both widths and all numbers of threads give the same bits, except where a family says otherwise. A NaN
 * is a NaN everywhere, but its sign and payload are not promised.
 *
 * Floating-point modes. The promise of the same bits is for the modes that a program begins with: rounding to nearest,
 * with subnormal numbers. In other modes (another rounding, flush-to-zero, denormals-are-zero) all that is computed
 * with floats follows the mode of the calling thread, conversions from and to integers included, and variants and
 * widths may differ then. The number of threads shows in no mode beyond what a family says, since all threads of a team
 * work in that of the caller. What integer arithmetic gives does not depend on it.
 */
#ifndef VEKCV_H
#define VEKCV_H

#include <stdint.h>

/**
 * @def VEKCV_CALL
 * The calling convention of all functions.
 * @def VEKCV_API
 * Begins the declaration of each function of the library; programs that link a static one define VEKCV_STATIC.
 */
#if defined(_WIN32)
#define VEKCV_CALL __cdecl
#if defined(VEKCV_BUILD)
#define VEKCV_API __declspec(dllexport)
#elif defined(VEKCV_STATIC)
#define VEKCV_API
#else
#define VEKCV_API __declspec(dllimport)
#endif
#else
#define VEKCV_CALL
#define VEKCV_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup Types Types and statuses
 * What several families take and return.
 * @{
 */
/** Result of a call: 0 success, negative an error, positive a warning. vekGetStatusString of vekcore.h explains it. */
typedef int32_t Status;

/** The values of Status. */
enum {
    StatusOk = 0,                       /**< success */
    StatusDivideByZeroWarning = 6,      /**< the divisor is zero; the result is infinite or not a number */
    StatusBufferSizeWarning = 12,       /**< the buffer size does not fit its type and was stored wrapped */
    StatusCountOverflow = -2,           /**< the number of points does not fit its type */
    StatusBadArgument = -5,             /**< a parameter is outside the set of values that it may have */
    StatusSizeError = -6,               /**< a width, a height or another size is outside its range */
    StatusRangeError = -7,              /**< the lower end of a range is above its upper end */
    StatusNullPointer = -8,             /**< a required pointer is null */
    StatusMemoryAllocation = -9,        /**< there is not enough memory */
    StatusOutOfRange = -11,             /**< a point, an index or a value is outside its range */
    StatusDataTypeError = -12,          /**< the element type is not supported */
    StatusStepError = -14,              /**< a row step is smaller than a row */
    StatusMaskSizeError = -33,          /**< the kernel size is not supported */
    StatusAnchorError = -34,            /**< the anchor is outside the kernel */
    StatusChannelOfInterestError = -52, /**< the channel of interest is not 1, 2 or 3 */
    StatusChannelError = -53,           /**< the number of channels is not supported */
    StatusMetricError = -56,            /**< a distance metric is below 1 */
    StatusStepNotMultiple = -108        /**< a row step is not a whole number of elements */
};

/** Width and height of a region of interest, in pixels. */
typedef struct RoiSize {
    int32_t width;
    int32_t height;
} RoiSize;

/** Position of a pixel. */
typedef struct ImagePoint {
    int32_t x;
    int32_t y;
} ImagePoint;

/** Position between pixels. */
typedef struct ImagePoint32f {
    float x;
    float y;
} ImagePoint32f;

/** Rectangle of pixels: first column, first row, size. */
typedef struct ImageRect {
    int32_t x;
    int32_t y;
    int32_t width;
    int32_t height;
} ImageRect;

/** Norms and metrics; passed as an int32_t. */
enum NormType {
    NormInf = 0, /**< maximum of absolute values; as a distance, the chessboard metric; as connectivity, 8 neighbours */
    NormL1 = 1,  /**< sum of absolute values; as a distance, the city-block metric; as connectivity, 4 neighbours */
    NormL2 = 2   /**< square root of the sum of squares; as a distance, the Euclidean metric */
};

/** What a filter reads outside of the image; passed as an int32_t. */
enum BorderType {
    BorderConstant = 0,          /**< a constant: v v | a b c d | v v */
    BorderReplicate = 1,         /**< the nearest pixel: a a | a b c d | d d */
    BorderPeriodic = 2,          /**< the image repeated: c d | a b c d | a b */
    BorderReflect = 3,           /**< mirrored at the edge pixel: c b | a b c d | c b */
    BorderReflectEdge = 4,       /**< mirrored with the edge pixel: b a | a b c d | d c */
    BorderInMemory = 6,          /**< the pixels that lie there in memory, on all sides */
    BorderInMemoryTop = 0x10,    /**< added to a rule: the pixels in memory above the region */
    BorderInMemoryBottom = 0x20, /**< added to a rule: the pixels in memory below the region */
    BorderInMemoryLeft = 0x40,   /**< added to a rule: the pixels in memory left of the region */
    BorderInMemoryRight = 0x80   /**< added to a rule: the pixels in memory right of the region */
};

/** Size of a square filter kernel; passed as an int32_t. */
enum MaskSize {
    MaskSize3x3 = 33, /**< 3 x 3 */
    MaskSize5x5 = 55  /**< 5 x 5 */
};

/** Version of the library and the code variant that was chosen for this processor. */
typedef struct LibraryVersion {
    int32_t major;
    int32_t minor;
    int32_t majorBuild;
    int32_t build;
    char targetCode[4];    /**< two characters for the variant and two zero bytes, as in "v8" */
    const char* name;      /**< name and variant, as in "vekCV SSSE3 (v8)" */
    const char* version;   /**< version and build */
    const char* buildDate; /**< date of this version */
} LibraryVersion;
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup Version Version
 * The version record of the variant in use. It is constant: every call returns the same pointer, and nothing is to be
 * freed.
 *
 * | target code | name                 | chosen when the core library reports                 | build           |
 * |-------------|----------------------|------------------------------------------------------|-----------------|
 * | "a5"        | "vekCV AVX-512 (a5)" | AVX-512 (F, BW, DQ and VL)                           | 64 bits, option |
 * | "a2"        | "vekCV AVX2 (a2)"    | AVX2                                                 | 64 bits         |
 * | "s8"        | "vekCV Nubo (s8)"    | SSSE3 and MOVBE                                      | 32 and 64 bits  |
 * | "v8"        | "vekCV SSSE3 (v8)"   | none of the above; SSSE3 is the least there is       | 32 and 64 bits  |
 * @{
 */
/** version of the library and the code variant in use */
VEKCV_API const LibraryVersion* VEKCV_CALL vekcvGetLibVersion(void);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup Accumulation Accumulation
 * Running statistics of an image sequence in an accumulator image of floats. For each pixel that takes part, with
 * source values converted to float and every operation rounded to float:
 *
 *     vekiAdd           accumulator = accumulator + source
 *     vekiAddSquare     accumulator = accumulator + source * source
 *     vekiAddProduct    accumulator = accumulator + source1 * source2
 *     vekiAddWeighted   accumulator = (source - accumulator) * alpha + accumulator
 *                       destination = (source1 - source2) * alpha + source2
 *
 * Products of 8-bit values are formed in integers and are exact. With alpha 1, vekiAddWeighted copies the source
 * wherever source - accumulator is exact in float; with alpha 0 it leaves a finite accumulator as it is. Masked forms
 * leave the accumulator unchanged, bit for bit, where the mask byte is 0.
 *
 * @param source, source1, source2   first pixel of each source
 * @param mask          first pixel of the mask
 * @param accumulator   first pixel of the image that is read and written
 * @param destination   first pixel of the result; may be the same image as either source
 * @param sourceStep, source1Step, source2Step, maskStep, accumulatorStep, destinationStep   bytes from row to row
 * @param roiSize       size shared by all images, at least 1 x 1
 * @param alpha         weight of source, or of source1; not checked: any value is used as it is
 *
 * A 32f source may be the same image as the accumulator. Images that overlap in any other way give undefined results.
 *
 * @retval StatusOk                every pixel that takes part was written
 * @retval StatusNullPointer       an image or the mask is null
 * @retval StatusSizeError         width or height is below 1
 * @retval StatusStepError         a step is smaller than a row
 * @retval StatusStepNotMultiple   the step of a 16u or 32f image is not a multiple of 2 or 4
 *
 * Regions of 262144 pixels and more are shared among the threads, with this exception:
 * - the calling thread alone: vekiAddWeighted_32f_C1R.
 * @{
 */
/** accumulator = accumulator + source */
VEKCV_API Status VEKCV_CALL vekiAdd_8u32f_C1IR(const uint8_t* source, int32_t sourceStep, float* accumulator,
                                               int32_t accumulatorStep, RoiSize roiSize);
VEKCV_API Status VEKCV_CALL vekiAdd_8s32f_C1IR(const int8_t* source, int32_t sourceStep, float* accumulator,
                                               int32_t accumulatorStep, RoiSize roiSize);
VEKCV_API Status VEKCV_CALL vekiAdd_16u32f_C1IR(const uint16_t* source, int32_t sourceStep, float* accumulator,
                                                int32_t accumulatorStep, RoiSize roiSize);
/** accumulator = accumulator + source where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiAdd_8u32f_C1IMR(const uint8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                int32_t maskStep, float* accumulator, int32_t accumulatorStep,
                                                RoiSize roiSize);
VEKCV_API Status VEKCV_CALL vekiAdd_8s32f_C1IMR(const int8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                int32_t maskStep, float* accumulator, int32_t accumulatorStep,
                                                RoiSize roiSize);
VEKCV_API Status VEKCV_CALL vekiAdd_16u32f_C1IMR(const uint16_t* source, int32_t sourceStep, const uint8_t* mask,
                                                 int32_t maskStep, float* accumulator, int32_t accumulatorStep,
                                                 RoiSize roiSize);
VEKCV_API Status VEKCV_CALL vekiAdd_32f_C1IMR(const float* source, int32_t sourceStep, const uint8_t* mask,
                                              int32_t maskStep, float* accumulator, int32_t accumulatorStep,
                                              RoiSize roiSize);
/** accumulator = accumulator + source * source */
VEKCV_API Status VEKCV_CALL vekiAddSquare_8u32f_C1IR(const uint8_t* source, int32_t sourceStep, float* accumulator,
                                                     int32_t accumulatorStep, RoiSize roiSize);
VEKCV_API Status VEKCV_CALL vekiAddSquare_8s32f_C1IR(const int8_t* source, int32_t sourceStep, float* accumulator,
                                                     int32_t accumulatorStep, RoiSize roiSize);
VEKCV_API Status VEKCV_CALL vekiAddSquare_16u32f_C1IR(const uint16_t* source, int32_t sourceStep, float* accumulator,
                                                      int32_t accumulatorStep, RoiSize roiSize);
VEKCV_API Status VEKCV_CALL vekiAddSquare_32f_C1IR(const float* source, int32_t sourceStep, float* accumulator,
                                                   int32_t accumulatorStep, RoiSize roiSize);
/** accumulator = accumulator + source * source where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiAddSquare_8u32f_C1IMR(const uint8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                      int32_t maskStep, float* accumulator, int32_t accumulatorStep,
                                                      RoiSize roiSize);
VEKCV_API Status VEKCV_CALL vekiAddSquare_8s32f_C1IMR(const int8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                      int32_t maskStep, float* accumulator, int32_t accumulatorStep,
                                                      RoiSize roiSize);
VEKCV_API Status VEKCV_CALL vekiAddSquare_16u32f_C1IMR(const uint16_t* source, int32_t sourceStep, const uint8_t* mask,
                                                       int32_t maskStep, float* accumulator, int32_t accumulatorStep,
                                                       RoiSize roiSize);
VEKCV_API Status VEKCV_CALL vekiAddSquare_32f_C1IMR(const float* source, int32_t sourceStep, const uint8_t* mask,
                                                    int32_t maskStep, float* accumulator, int32_t accumulatorStep,
                                                    RoiSize roiSize);
/** accumulator = accumulator + source1 * source2 */
VEKCV_API Status VEKCV_CALL vekiAddProduct_8u32f_C1IR(const uint8_t* source1, int32_t source1Step,
                                                      const uint8_t* source2, int32_t source2Step, float* accumulator,
                                                      int32_t accumulatorStep, RoiSize roiSize);
VEKCV_API Status VEKCV_CALL vekiAddProduct_8s32f_C1IR(const int8_t* source1, int32_t source1Step, const int8_t* source2,
                                                      int32_t source2Step, float* accumulator, int32_t accumulatorStep,
                                                      RoiSize roiSize);
VEKCV_API Status VEKCV_CALL vekiAddProduct_16u32f_C1IR(const uint16_t* source1, int32_t source1Step,
                                                       const uint16_t* source2, int32_t source2Step, float* accumulator,
                                                       int32_t accumulatorStep, RoiSize roiSize);
VEKCV_API Status VEKCV_CALL vekiAddProduct_32f_C1IR(const float* source1, int32_t source1Step, const float* source2,
                                                    int32_t source2Step, float* accumulator, int32_t accumulatorStep,
                                                    RoiSize roiSize);
/** accumulator = accumulator + source1 * source2 where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiAddProduct_8u32f_C1IMR(const uint8_t* source1, int32_t source1Step,
                                                       const uint8_t* source2, int32_t source2Step, const uint8_t* mask,
                                                       int32_t maskStep, float* accumulator, int32_t accumulatorStep,
                                                       RoiSize roiSize);
VEKCV_API Status VEKCV_CALL vekiAddProduct_8s32f_C1IMR(const int8_t* source1, int32_t source1Step,
                                                       const int8_t* source2, int32_t source2Step, const uint8_t* mask,
                                                       int32_t maskStep, float* accumulator, int32_t accumulatorStep,
                                                       RoiSize roiSize);
VEKCV_API Status VEKCV_CALL vekiAddProduct_16u32f_C1IMR(const uint16_t* source1, int32_t source1Step,
                                                        const uint16_t* source2, int32_t source2Step,
                                                        const uint8_t* mask, int32_t maskStep, float* accumulator,
                                                        int32_t accumulatorStep, RoiSize roiSize);
VEKCV_API Status VEKCV_CALL vekiAddProduct_32f_C1IMR(const float* source1, int32_t source1Step, const float* source2,
                                                     int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                     float* accumulator, int32_t accumulatorStep, RoiSize roiSize);
/** accumulator = (source - accumulator) * alpha + accumulator */
VEKCV_API Status VEKCV_CALL vekiAddWeighted_8u32f_C1IR(const uint8_t* source, int32_t sourceStep, float* accumulator,
                                                       int32_t accumulatorStep, RoiSize roiSize, float alpha);
VEKCV_API Status VEKCV_CALL vekiAddWeighted_8s32f_C1IR(const int8_t* source, int32_t sourceStep, float* accumulator,
                                                       int32_t accumulatorStep, RoiSize roiSize, float alpha);
VEKCV_API Status VEKCV_CALL vekiAddWeighted_16u32f_C1IR(const uint16_t* source, int32_t sourceStep, float* accumulator,
                                                        int32_t accumulatorStep, RoiSize roiSize, float alpha);
VEKCV_API Status VEKCV_CALL vekiAddWeighted_32f_C1IR(const float* source, int32_t sourceStep, float* accumulator,
                                                     int32_t accumulatorStep, RoiSize roiSize, float alpha);
/** accumulator = (source - accumulator) * alpha + accumulator where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiAddWeighted_8u32f_C1IMR(const uint8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                        int32_t maskStep, float* accumulator, int32_t accumulatorStep,
                                                        RoiSize roiSize, float alpha);
VEKCV_API Status VEKCV_CALL vekiAddWeighted_8s32f_C1IMR(const int8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                        int32_t maskStep, float* accumulator, int32_t accumulatorStep,
                                                        RoiSize roiSize, float alpha);
VEKCV_API Status VEKCV_CALL vekiAddWeighted_16u32f_C1IMR(const uint16_t* source, int32_t sourceStep,
                                                         const uint8_t* mask, int32_t maskStep, float* accumulator,
                                                         int32_t accumulatorStep, RoiSize roiSize, float alpha);
VEKCV_API Status VEKCV_CALL vekiAddWeighted_32f_C1IMR(const float* source, int32_t sourceStep, const uint8_t* mask,
                                                      int32_t maskStep, float* accumulator, int32_t accumulatorStep,
                                                      RoiSize roiSize, float alpha);
/** destination = (source1 - source2) * alpha + source2 */
VEKCV_API Status VEKCV_CALL vekiAddWeighted_32f_C1R(const float* source1, int32_t source1Step, const float* source2,
                                                    int32_t source2Step, float* destination, int32_t destinationStep,
                                                    RoiSize roiSize, float alpha);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup AbsDiff Absolute difference
 * Absolute difference of two images, or of an image and a constant.
 *
 *     vekiAbsDiff    destination = |source1 - source2|
 *     vekiAbsDiffC   destination = |source - value|
 *
 * Integer results are exact. A float result is the absolute value of the difference rounded to float, so NaN gives NaN.
 * An integer value outside the range of the element type (0 to 255, 0 to 65535) is first moved to the nearer end of it.
 *
 * @param source, source1, source2   first pixel of each source
 * @param destination   first pixel of the result; may be the same image as either source
 * @param sourceStep, source1Step, source2Step, destinationStep   bytes from row to row
 * @param roiSize       size shared by all images, at least 1 x 1
 * @param value         the constant; not checked
 *
 * @retval StatusOk                the result was written
 * @retval StatusNullPointer       an image is null
 * @retval StatusSizeError         width or height is below 1
 * @retval StatusStepError         a step is smaller than a row
 * @retval StatusStepNotMultiple   the step of a 16u or 32f image is not a multiple of 2 or 4
 *
 * Regions of 262144 pixels and more are shared among the threads, with this exception:
 * - 87382 pixels, each of three channels: vekiAbsDiff_8u_C3R.
 * @{
 */
/** destination = |source1 - source2| */
VEKCV_API Status VEKCV_CALL vekiAbsDiff_8u_C1R(const uint8_t* source1, int32_t source1Step, const uint8_t* source2,
                                               int32_t source2Step, uint8_t* destination, int32_t destinationStep,
                                               RoiSize roiSize);
VEKCV_API Status VEKCV_CALL vekiAbsDiff_8u_C3R(const uint8_t* source1, int32_t source1Step, const uint8_t* source2,
                                               int32_t source2Step, uint8_t* destination, int32_t destinationStep,
                                               RoiSize roiSize);
VEKCV_API Status VEKCV_CALL vekiAbsDiff_16u_C1R(const uint16_t* source1, int32_t source1Step, const uint16_t* source2,
                                                int32_t source2Step, uint16_t* destination, int32_t destinationStep,
                                                RoiSize roiSize);
VEKCV_API Status VEKCV_CALL vekiAbsDiff_32f_C1R(const float* source1, int32_t source1Step, const float* source2,
                                                int32_t source2Step, float* destination, int32_t destinationStep,
                                                RoiSize roiSize);
/** destination = |source - value| */
VEKCV_API Status VEKCV_CALL vekiAbsDiffC_8u_C1R(const uint8_t* source, int32_t sourceStep, uint8_t* destination,
                                                int32_t destinationStep, RoiSize roiSize, int32_t value);
VEKCV_API Status VEKCV_CALL vekiAbsDiffC_16u_C1R(const uint16_t* source, int32_t sourceStep, uint16_t* destination,
                                                 int32_t destinationStep, RoiSize roiSize, int32_t value);
VEKCV_API Status VEKCV_CALL vekiAbsDiffC_32f_C1R(const float* source, int32_t sourceStep, float* destination,
                                                 int32_t destinationStep, RoiSize roiSize, float value);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup Norms Norms
 * Norms of an image, of the difference of two images, and of that difference relative to the second image. Over the
 * pixels p that take part:
 *
 *                  Inf             L1              L2
 *     vekiNorm     max |a(p)|      sum |a(p)|      sqrt(sum a(p)^2)                        a = source
 *     vekiNormDiff the same norms of                                                       a = source1 - source2
 *     vekiNormRel  vekiNormDiff of source1 and source2 / vekiNorm of source2
 *
 * Sums of up to 2^32 integers, and maxima, are exact, and rounded once to the result; roots and quotients are those of
 * double. Differences of floats, their magnitudes and squares are rounded to float; a row of them is added in 16
 * running sums of floats (pixel x to sum x modulo 16), which are added in pairs (k and k + 8, then + 4, + 2, + 1), and
 * the rows are added in double. So the relative error of a sum is at most (width / 16 + 5) * 2^-24, and that of a
 * relative norm twice as much, as long as no square or sum overflows (3.4e38) and no square underflows (1.2e-38). With
 * more than one thread the rows are added stripe by stripe, so that the number of threads may change the last bits of
 * L1 and L2 norms of floats.
 *
 * A NaN that takes part gives NaN in L1 and L2 norms; the maximum passes over it, as no comparison with it is true.
 * Without any pixel that takes part vekiNorm and vekiNormDiff give 0.
 *
 * @param source, source1, source2   first pixel of each source
 * @param mask      first pixel of the mask
 * @param sourceStep, source1Step, source2Step, maskStep   bytes from row to row
 * @param roiSize   size shared by all images, at least 1 x 1
 * @param channelOfInterest   the channel of every source that is looked at: 1, 2 or 3 (C3C forms)
 * @param result    receives the norm
 *
 * @retval StatusOk                       the norm was written
 * @retval StatusDivideByZeroWarning      the norm of source2 is 0; the result is NaN where that of the difference is 0
 *                                        too, and infinite otherwise (vekiNormRel)
 * @retval StatusNullPointer              an image, the mask or the result is null
 * @retval StatusSizeError                width or height is below 1
 * @retval StatusStepError                a step is smaller than a row
 * @retval StatusStepNotMultiple          the step of a 16u or 32f image is not a multiple of 2 or 4
 * @retval StatusChannelOfInterestError   the channel of interest is not 1, 2 or 3 (C3C forms)
 *
 * Regions of 131072 pixels for each configured thread and more are shared among the threads, with these exceptions:
 * - 524288 pixels for each configured thread: vekiNorm_Inf_8u_C1MR, vekiNorm_Inf_8s_C1MR, vekiNorm_Inf_16u_C1MR;
 * - 32768 pixels for each configured thread: vekiNorm_Inf_32f_C3CMR, vekiNormDiff_L1_8s_C3CMR,
 *   vekiNormDiff_L1_16u_C3CMR, vekiNormRel_Inf_16u_C3CMR, vekiNormRel_Inf_32f_C1MR, vekiNormRel_Inf_32f_C3CMR,
 *   vekiNormRel_L1_16u_C3CMR, vekiNormRel_L2_16u_C3CMR;
 * - the calling thread alone: vekiNormDiff_Inf_16u_C1MR, vekiNormDiff_Inf_16u_C3CMR.
 * @{
 */
/** max |source|, where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiNorm_Inf_8u_C1MR(const uint8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                 int32_t maskStep, RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNorm_Inf_8s_C1MR(const int8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                 int32_t maskStep, RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNorm_Inf_16u_C1MR(const uint16_t* source, int32_t sourceStep, const uint8_t* mask,
                                                  int32_t maskStep, RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNorm_Inf_32f_C1MR(const float* source, int32_t sourceStep, const uint8_t* mask,
                                                  int32_t maskStep, RoiSize roiSize, double* result);
/** max |source|, of one channel where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiNorm_Inf_8u_C3CMR(const uint8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                  int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                  double* result);
VEKCV_API Status VEKCV_CALL vekiNorm_Inf_8s_C3CMR(const int8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                  int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                  double* result);
VEKCV_API Status VEKCV_CALL vekiNorm_Inf_16u_C3CMR(const uint16_t* source, int32_t sourceStep, const uint8_t* mask,
                                                   int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                   double* result);
VEKCV_API Status VEKCV_CALL vekiNorm_Inf_32f_C3CMR(const float* source, int32_t sourceStep, const uint8_t* mask,
                                                   int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                   double* result);
/** sum of |source|, where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiNorm_L1_8u_C1MR(const uint8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                int32_t maskStep, RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNorm_L1_8s_C1MR(const int8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                int32_t maskStep, RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNorm_L1_16u_C1MR(const uint16_t* source, int32_t sourceStep, const uint8_t* mask,
                                                 int32_t maskStep, RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNorm_L1_32f_C1MR(const float* source, int32_t sourceStep, const uint8_t* mask,
                                                 int32_t maskStep, RoiSize roiSize, double* result);
/** sum of |source|, of one channel where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiNorm_L1_8u_C3CMR(const uint8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                 int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                 double* result);
VEKCV_API Status VEKCV_CALL vekiNorm_L1_8s_C3CMR(const int8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                 int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                 double* result);
VEKCV_API Status VEKCV_CALL vekiNorm_L1_16u_C3CMR(const uint16_t* source, int32_t sourceStep, const uint8_t* mask,
                                                  int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                  double* result);
VEKCV_API Status VEKCV_CALL vekiNorm_L1_32f_C3CMR(const float* source, int32_t sourceStep, const uint8_t* mask,
                                                  int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                  double* result);
/** square root of the sum of source * source, where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiNorm_L2_8u_C1MR(const uint8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                int32_t maskStep, RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNorm_L2_8s_C1MR(const int8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                int32_t maskStep, RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNorm_L2_16u_C1MR(const uint16_t* source, int32_t sourceStep, const uint8_t* mask,
                                                 int32_t maskStep, RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNorm_L2_32f_C1MR(const float* source, int32_t sourceStep, const uint8_t* mask,
                                                 int32_t maskStep, RoiSize roiSize, double* result);
/** square root of the sum of source * source, of one channel where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiNorm_L2_8u_C3CMR(const uint8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                 int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                 double* result);
VEKCV_API Status VEKCV_CALL vekiNorm_L2_8s_C3CMR(const int8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                 int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                 double* result);
VEKCV_API Status VEKCV_CALL vekiNorm_L2_16u_C3CMR(const uint16_t* source, int32_t sourceStep, const uint8_t* mask,
                                                  int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                  double* result);
VEKCV_API Status VEKCV_CALL vekiNorm_L2_32f_C3CMR(const float* source, int32_t sourceStep, const uint8_t* mask,
                                                  int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                  double* result);
/** max |source1 - source2|, where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiNormDiff_Inf_8u_C1MR(const uint8_t* source1, int32_t source1Step,
                                                     const uint8_t* source2, int32_t source2Step, const uint8_t* mask,
                                                     int32_t maskStep, RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNormDiff_Inf_8s_C1MR(const int8_t* source1, int32_t source1Step, const int8_t* source2,
                                                     int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                     RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNormDiff_Inf_16u_C1MR(const uint16_t* source1, int32_t source1Step,
                                                      const uint16_t* source2, int32_t source2Step, const uint8_t* mask,
                                                      int32_t maskStep, RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNormDiff_Inf_32f_C1MR(const float* source1, int32_t source1Step, const float* source2,
                                                      int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                      RoiSize roiSize, double* result);
/** max |source1 - source2|, of one channel where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiNormDiff_Inf_8u_C3CMR(const uint8_t* source1, int32_t source1Step,
                                                      const uint8_t* source2, int32_t source2Step, const uint8_t* mask,
                                                      int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                      double* result);
VEKCV_API Status VEKCV_CALL vekiNormDiff_Inf_8s_C3CMR(const int8_t* source1, int32_t source1Step, const int8_t* source2,
                                                      int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                      RoiSize roiSize, int32_t channelOfInterest, double* result);
VEKCV_API Status VEKCV_CALL vekiNormDiff_Inf_16u_C3CMR(const uint16_t* source1, int32_t source1Step,
                                                       const uint16_t* source2, int32_t source2Step,
                                                       const uint8_t* mask, int32_t maskStep, RoiSize roiSize,
                                                       int32_t channelOfInterest, double* result);
VEKCV_API Status VEKCV_CALL vekiNormDiff_Inf_32f_C3CMR(const float* source1, int32_t source1Step, const float* source2,
                                                       int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                       RoiSize roiSize, int32_t channelOfInterest, double* result);
/** sum of |source1 - source2|, where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiNormDiff_L1_8u_C1MR(const uint8_t* source1, int32_t source1Step, const uint8_t* source2,
                                                    int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                    RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNormDiff_L1_8s_C1MR(const int8_t* source1, int32_t source1Step, const int8_t* source2,
                                                    int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                    RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNormDiff_L1_16u_C1MR(const uint16_t* source1, int32_t source1Step,
                                                     const uint16_t* source2, int32_t source2Step, const uint8_t* mask,
                                                     int32_t maskStep, RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNormDiff_L1_32f_C1MR(const float* source1, int32_t source1Step, const float* source2,
                                                     int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                     RoiSize roiSize, double* result);
/** sum of |source1 - source2|, of one channel where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiNormDiff_L1_8u_C3CMR(const uint8_t* source1, int32_t source1Step,
                                                     const uint8_t* source2, int32_t source2Step, const uint8_t* mask,
                                                     int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                     double* result);
VEKCV_API Status VEKCV_CALL vekiNormDiff_L1_8s_C3CMR(const int8_t* source1, int32_t source1Step, const int8_t* source2,
                                                     int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                     RoiSize roiSize, int32_t channelOfInterest, double* result);
VEKCV_API Status VEKCV_CALL vekiNormDiff_L1_16u_C3CMR(const uint16_t* source1, int32_t source1Step,
                                                      const uint16_t* source2, int32_t source2Step, const uint8_t* mask,
                                                      int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                      double* result);
VEKCV_API Status VEKCV_CALL vekiNormDiff_L1_32f_C3CMR(const float* source1, int32_t source1Step, const float* source2,
                                                      int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                      RoiSize roiSize, int32_t channelOfInterest, double* result);
/** square root of the sum of (source1 - source2)^2, where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiNormDiff_L2_8u_C1MR(const uint8_t* source1, int32_t source1Step, const uint8_t* source2,
                                                    int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                    RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNormDiff_L2_8s_C1MR(const int8_t* source1, int32_t source1Step, const int8_t* source2,
                                                    int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                    RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNormDiff_L2_16u_C1MR(const uint16_t* source1, int32_t source1Step,
                                                     const uint16_t* source2, int32_t source2Step, const uint8_t* mask,
                                                     int32_t maskStep, RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNormDiff_L2_32f_C1MR(const float* source1, int32_t source1Step, const float* source2,
                                                     int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                     RoiSize roiSize, double* result);
/** square root of the sum of (source1 - source2)^2, of one channel where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiNormDiff_L2_8u_C3CMR(const uint8_t* source1, int32_t source1Step,
                                                     const uint8_t* source2, int32_t source2Step, const uint8_t* mask,
                                                     int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                     double* result);
VEKCV_API Status VEKCV_CALL vekiNormDiff_L2_8s_C3CMR(const int8_t* source1, int32_t source1Step, const int8_t* source2,
                                                     int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                     RoiSize roiSize, int32_t channelOfInterest, double* result);
VEKCV_API Status VEKCV_CALL vekiNormDiff_L2_16u_C3CMR(const uint16_t* source1, int32_t source1Step,
                                                      const uint16_t* source2, int32_t source2Step, const uint8_t* mask,
                                                      int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                      double* result);
VEKCV_API Status VEKCV_CALL vekiNormDiff_L2_32f_C3CMR(const float* source1, int32_t source1Step, const float* source2,
                                                      int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                      RoiSize roiSize, int32_t channelOfInterest, double* result);
/** max |source1 - source2| / max |source2|, where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiNormRel_Inf_8u_C1MR(const uint8_t* source1, int32_t source1Step, const uint8_t* source2,
                                                    int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                    RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNormRel_Inf_8s_C1MR(const int8_t* source1, int32_t source1Step, const int8_t* source2,
                                                    int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                    RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNormRel_Inf_16u_C1MR(const uint16_t* source1, int32_t source1Step,
                                                     const uint16_t* source2, int32_t source2Step, const uint8_t* mask,
                                                     int32_t maskStep, RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNormRel_Inf_32f_C1MR(const float* source1, int32_t source1Step, const float* source2,
                                                     int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                     RoiSize roiSize, double* result);
/** max |source1 - source2| / max |source2|, of one channel where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiNormRel_Inf_8u_C3CMR(const uint8_t* source1, int32_t source1Step,
                                                     const uint8_t* source2, int32_t source2Step, const uint8_t* mask,
                                                     int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                     double* result);
VEKCV_API Status VEKCV_CALL vekiNormRel_Inf_8s_C3CMR(const int8_t* source1, int32_t source1Step, const int8_t* source2,
                                                     int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                     RoiSize roiSize, int32_t channelOfInterest, double* result);
VEKCV_API Status VEKCV_CALL vekiNormRel_Inf_16u_C3CMR(const uint16_t* source1, int32_t source1Step,
                                                      const uint16_t* source2, int32_t source2Step, const uint8_t* mask,
                                                      int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                      double* result);
VEKCV_API Status VEKCV_CALL vekiNormRel_Inf_32f_C3CMR(const float* source1, int32_t source1Step, const float* source2,
                                                      int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                      RoiSize roiSize, int32_t channelOfInterest, double* result);
/** sum of |source1 - source2| / sum of |source2|, where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiNormRel_L1_8u_C1MR(const uint8_t* source1, int32_t source1Step, const uint8_t* source2,
                                                   int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                   RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNormRel_L1_8s_C1MR(const int8_t* source1, int32_t source1Step, const int8_t* source2,
                                                   int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                   RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNormRel_L1_16u_C1MR(const uint16_t* source1, int32_t source1Step,
                                                    const uint16_t* source2, int32_t source2Step, const uint8_t* mask,
                                                    int32_t maskStep, RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNormRel_L1_32f_C1MR(const float* source1, int32_t source1Step, const float* source2,
                                                    int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                    RoiSize roiSize, double* result);
/** sum of |source1 - source2| / sum of |source2|, of one channel where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiNormRel_L1_8u_C3CMR(const uint8_t* source1, int32_t source1Step, const uint8_t* source2,
                                                    int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                    RoiSize roiSize, int32_t channelOfInterest, double* result);
VEKCV_API Status VEKCV_CALL vekiNormRel_L1_8s_C3CMR(const int8_t* source1, int32_t source1Step, const int8_t* source2,
                                                    int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                    RoiSize roiSize, int32_t channelOfInterest, double* result);
VEKCV_API Status VEKCV_CALL vekiNormRel_L1_16u_C3CMR(const uint16_t* source1, int32_t source1Step,
                                                     const uint16_t* source2, int32_t source2Step, const uint8_t* mask,
                                                     int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                     double* result);
VEKCV_API Status VEKCV_CALL vekiNormRel_L1_32f_C3CMR(const float* source1, int32_t source1Step, const float* source2,
                                                     int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                     RoiSize roiSize, int32_t channelOfInterest, double* result);
/** L2 norm of source1 - source2 / L2 norm of source2, where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiNormRel_L2_8u_C1MR(const uint8_t* source1, int32_t source1Step, const uint8_t* source2,
                                                   int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                   RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNormRel_L2_8s_C1MR(const int8_t* source1, int32_t source1Step, const int8_t* source2,
                                                   int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                   RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNormRel_L2_16u_C1MR(const uint16_t* source1, int32_t source1Step,
                                                    const uint16_t* source2, int32_t source2Step, const uint8_t* mask,
                                                    int32_t maskStep, RoiSize roiSize, double* result);
VEKCV_API Status VEKCV_CALL vekiNormRel_L2_32f_C1MR(const float* source1, int32_t source1Step, const float* source2,
                                                    int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                    RoiSize roiSize, double* result);
/** L2 norm of source1 - source2 / L2 norm of source2, of one channel where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiNormRel_L2_8u_C3CMR(const uint8_t* source1, int32_t source1Step, const uint8_t* source2,
                                                    int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                    RoiSize roiSize, int32_t channelOfInterest, double* result);
VEKCV_API Status VEKCV_CALL vekiNormRel_L2_8s_C3CMR(const int8_t* source1, int32_t source1Step, const int8_t* source2,
                                                    int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                    RoiSize roiSize, int32_t channelOfInterest, double* result);
VEKCV_API Status VEKCV_CALL vekiNormRel_L2_16u_C3CMR(const uint16_t* source1, int32_t source1Step,
                                                     const uint16_t* source2, int32_t source2Step, const uint8_t* mask,
                                                     int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                     double* result);
VEKCV_API Status VEKCV_CALL vekiNormRel_L2_32f_C3CMR(const float* source1, int32_t source1Step, const float* source2,
                                                     int32_t source2Step, const uint8_t* mask, int32_t maskStep,
                                                     RoiSize roiSize, int32_t channelOfInterest, double* result);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup MeanStdDev Mean and standard deviation
 * Mean and population standard deviation of the pixels that take part. With n the number of these pixels, S the sum of
 * their values and Q the sum of the squares:
 *
 *     mean = S / n
 *     standardDeviation = sqrt(|Q / n - mean * mean|)
 *
 * Without any pixel that takes part both are 0. S and Q of integers are exact for up to 2^32 pixels; the formulas are
 * evaluated in double. Floats are converted to double, and they and their squares are added in 16 running sums of
 * doubles (pixel x of every row to sum x modulo 16), which are added in pairs (k and k + 8, then + 4, + 2, + 1). With
 * more than one thread each has running sums of its own, so that the number of threads may change the results of
 * floats, as another order of adding does. A NaN or an infinity that takes part makes the deviation NaN, and the mean
 * NaN or infinite.
 *
 * The standard deviation of a constant image is exactly 0 as long as Q is exact in double, that is below 2^53: always
 * for 8-bit images of less than 2^37 pixels, for 16u images of 2^21 pixels or less. Where the deviation is small
 * against the mean, the difference in the formula cancels, and the roundings of Q / n and of the square of the mean
 * remain.
 *
 * @param source   first pixel of the source
 * @param mask     first pixel of the mask
 * @param sourceStep, maskStep   bytes from row to row
 * @param roiSize  size shared by all images, at least 1 x 1
 * @param channelOfInterest   the channel that is looked at: 1, 2 or 3 (C3C forms)
 * @param mean     receives the mean; vekiMean_StdDev leaves it out where the pointer is null
 * @param standardDeviation   receives the standard deviation; left out where the pointer is null
 *
 * @retval StatusOk                       the results were written
 * @retval StatusNullPointer              an image or the mask is null, or the mean of vekiMean
 * @retval StatusSizeError                width or height is below 1
 * @retval StatusStepError                a step is smaller than a row
 * @retval StatusStepNotMultiple          the step of a 16u or 32f image is not a multiple of 2 or 4
 * @retval StatusChannelOfInterestError   the channel of interest is not 1, 2 or 3 (C3C forms)
 *
 * Regions of 131072 pixels for each configured thread and more are shared among the threads, with this exception:
 * - 65536 pixels for each configured thread: vekiMean_StdDev_32f_C1R.
 * @{
 */
/** mean, where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiMean_8u_C1MR(const uint8_t* source, int32_t sourceStep, const uint8_t* mask,
                                             int32_t maskStep, RoiSize roiSize, double* mean);
VEKCV_API Status VEKCV_CALL vekiMean_8s_C1MR(const int8_t* source, int32_t sourceStep, const uint8_t* mask,
                                             int32_t maskStep, RoiSize roiSize, double* mean);
VEKCV_API Status VEKCV_CALL vekiMean_16u_C1MR(const uint16_t* source, int32_t sourceStep, const uint8_t* mask,
                                              int32_t maskStep, RoiSize roiSize, double* mean);
VEKCV_API Status VEKCV_CALL vekiMean_32f_C1MR(const float* source, int32_t sourceStep, const uint8_t* mask,
                                              int32_t maskStep, RoiSize roiSize, double* mean);
/** mean, of one channel where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiMean_8u_C3CMR(const uint8_t* source, int32_t sourceStep, const uint8_t* mask,
                                              int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                              double* mean);
VEKCV_API Status VEKCV_CALL vekiMean_8s_C3CMR(const int8_t* source, int32_t sourceStep, const uint8_t* mask,
                                              int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                              double* mean);
VEKCV_API Status VEKCV_CALL vekiMean_16u_C3CMR(const uint16_t* source, int32_t sourceStep, const uint8_t* mask,
                                               int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                               double* mean);
VEKCV_API Status VEKCV_CALL vekiMean_32f_C3CMR(const float* source, int32_t sourceStep, const uint8_t* mask,
                                               int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                               double* mean);
/** mean and standard deviation */
VEKCV_API Status VEKCV_CALL vekiMean_StdDev_8u_C1R(const uint8_t* source, int32_t sourceStep, RoiSize roiSize,
                                                   double* mean, double* standardDeviation);
VEKCV_API Status VEKCV_CALL vekiMean_StdDev_8s_C1R(const int8_t* source, int32_t sourceStep, RoiSize roiSize,
                                                   double* mean, double* standardDeviation);
VEKCV_API Status VEKCV_CALL vekiMean_StdDev_16u_C1R(const uint16_t* source, int32_t sourceStep, RoiSize roiSize,
                                                    double* mean, double* standardDeviation);
VEKCV_API Status VEKCV_CALL vekiMean_StdDev_32f_C1R(const float* source, int32_t sourceStep, RoiSize roiSize,
                                                    double* mean, double* standardDeviation);
/** mean and standard deviation, where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiMean_StdDev_8u_C1MR(const uint8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                    int32_t maskStep, RoiSize roiSize, double* mean,
                                                    double* standardDeviation);
VEKCV_API Status VEKCV_CALL vekiMean_StdDev_8s_C1MR(const int8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                    int32_t maskStep, RoiSize roiSize, double* mean,
                                                    double* standardDeviation);
VEKCV_API Status VEKCV_CALL vekiMean_StdDev_16u_C1MR(const uint16_t* source, int32_t sourceStep, const uint8_t* mask,
                                                     int32_t maskStep, RoiSize roiSize, double* mean,
                                                     double* standardDeviation);
VEKCV_API Status VEKCV_CALL vekiMean_StdDev_32f_C1MR(const float* source, int32_t sourceStep, const uint8_t* mask,
                                                     int32_t maskStep, RoiSize roiSize, double* mean,
                                                     double* standardDeviation);
/** mean and standard deviation, of one channel */
VEKCV_API Status VEKCV_CALL vekiMean_StdDev_8u_C3CR(const uint8_t* source, int32_t sourceStep, RoiSize roiSize,
                                                    int32_t channelOfInterest, double* mean, double* standardDeviation);
VEKCV_API Status VEKCV_CALL vekiMean_StdDev_8s_C3CR(const int8_t* source, int32_t sourceStep, RoiSize roiSize,
                                                    int32_t channelOfInterest, double* mean, double* standardDeviation);
VEKCV_API Status VEKCV_CALL vekiMean_StdDev_16u_C3CR(const uint16_t* source, int32_t sourceStep, RoiSize roiSize,
                                                     int32_t channelOfInterest, double* mean,
                                                     double* standardDeviation);
VEKCV_API Status VEKCV_CALL vekiMean_StdDev_32f_C3CR(const float* source, int32_t sourceStep, RoiSize roiSize,
                                                     int32_t channelOfInterest, double* mean,
                                                     double* standardDeviation);
/** mean and standard deviation, of one channel where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiMean_StdDev_8u_C3CMR(const uint8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                     int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                     double* mean, double* standardDeviation);
VEKCV_API Status VEKCV_CALL vekiMean_StdDev_8s_C3CMR(const int8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                     int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                     double* mean, double* standardDeviation);
VEKCV_API Status VEKCV_CALL vekiMean_StdDev_16u_C3CMR(const uint16_t* source, int32_t sourceStep, const uint8_t* mask,
                                                      int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                      double* mean, double* standardDeviation);
VEKCV_API Status VEKCV_CALL vekiMean_StdDev_32f_C3CMR(const float* source, int32_t sourceStep, const uint8_t* mask,
                                                      int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                      double* mean, double* standardDeviation);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup Extrema Minimum and maximum
 * The least and the greatest value of the pixels that take part, and where each occurs first: the topmost row, and the
 * leftmost pixel in it. Positions are relative to the region. All values are exact in the 32-bit float results.
 *
 * Pixels that are NaN take no part. Zeros of either sign are equal; the value is that of the pixel at the position.
 * Without any pixel that takes part both values are 0 and both positions (-1, -1).
 *
 * @param source   first pixel of the source
 * @param mask     first pixel of the mask
 * @param sourceStep, maskStep   bytes from row to row
 * @param roiSize  size shared by all images, at least 1 x 1
 * @param channelOfInterest   the channel that is looked at: 1, 2 or 3 (C3C forms)
 * @param minimum, maximum             receive the values
 * @param minimumIndex, maximumIndex   receive the positions
 *
 * @retval StatusOk                       the results were written
 * @retval StatusNullPointer              an image, the mask or a result is null
 * @retval StatusSizeError                width or height is below 1
 * @retval StatusStepError                a step is smaller than a row
 * @retval StatusStepNotMultiple          the step of a 16u or 32f image is not a multiple of 2 or 4
 * @retval StatusChannelOfInterestError   the channel of interest is not 1, 2 or 3 (C3C forms)
 *
 * Regions of 16384 pixels and more are shared among the threads.
 * @{
 */
/** minimum and maximum with their positions */
VEKCV_API Status VEKCV_CALL vekiMinMaxIndx_8u_C1R(const uint8_t* source, int32_t sourceStep, RoiSize roiSize,
                                                  float* minimum, float* maximum, ImagePoint* minimumIndex,
                                                  ImagePoint* maximumIndex);
VEKCV_API Status VEKCV_CALL vekiMinMaxIndx_8s_C1R(const int8_t* source, int32_t sourceStep, RoiSize roiSize,
                                                  float* minimum, float* maximum, ImagePoint* minimumIndex,
                                                  ImagePoint* maximumIndex);
VEKCV_API Status VEKCV_CALL vekiMinMaxIndx_16u_C1R(const uint16_t* source, int32_t sourceStep, RoiSize roiSize,
                                                   float* minimum, float* maximum, ImagePoint* minimumIndex,
                                                   ImagePoint* maximumIndex);
VEKCV_API Status VEKCV_CALL vekiMinMaxIndx_32f_C1R(const float* source, int32_t sourceStep, RoiSize roiSize,
                                                   float* minimum, float* maximum, ImagePoint* minimumIndex,
                                                   ImagePoint* maximumIndex);
/** minimum and maximum with their positions, where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiMinMaxIndx_8u_C1MR(const uint8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                   int32_t maskStep, RoiSize roiSize, float* minimum, float* maximum,
                                                   ImagePoint* minimumIndex, ImagePoint* maximumIndex);
VEKCV_API Status VEKCV_CALL vekiMinMaxIndx_8s_C1MR(const int8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                   int32_t maskStep, RoiSize roiSize, float* minimum, float* maximum,
                                                   ImagePoint* minimumIndex, ImagePoint* maximumIndex);
VEKCV_API Status VEKCV_CALL vekiMinMaxIndx_16u_C1MR(const uint16_t* source, int32_t sourceStep, const uint8_t* mask,
                                                    int32_t maskStep, RoiSize roiSize, float* minimum, float* maximum,
                                                    ImagePoint* minimumIndex, ImagePoint* maximumIndex);
VEKCV_API Status VEKCV_CALL vekiMinMaxIndx_32f_C1MR(const float* source, int32_t sourceStep, const uint8_t* mask,
                                                    int32_t maskStep, RoiSize roiSize, float* minimum, float* maximum,
                                                    ImagePoint* minimumIndex, ImagePoint* maximumIndex);
/** minimum and maximum with their positions, of one channel */
VEKCV_API Status VEKCV_CALL vekiMinMaxIndx_8u_C3CR(const uint8_t* source, int32_t sourceStep, RoiSize roiSize,
                                                   int32_t channelOfInterest, float* minimum, float* maximum,
                                                   ImagePoint* minimumIndex, ImagePoint* maximumIndex);
VEKCV_API Status VEKCV_CALL vekiMinMaxIndx_8s_C3CR(const int8_t* source, int32_t sourceStep, RoiSize roiSize,
                                                   int32_t channelOfInterest, float* minimum, float* maximum,
                                                   ImagePoint* minimumIndex, ImagePoint* maximumIndex);
VEKCV_API Status VEKCV_CALL vekiMinMaxIndx_16u_C3CR(const uint16_t* source, int32_t sourceStep, RoiSize roiSize,
                                                    int32_t channelOfInterest, float* minimum, float* maximum,
                                                    ImagePoint* minimumIndex, ImagePoint* maximumIndex);
VEKCV_API Status VEKCV_CALL vekiMinMaxIndx_32f_C3CR(const float* source, int32_t sourceStep, RoiSize roiSize,
                                                    int32_t channelOfInterest, float* minimum, float* maximum,
                                                    ImagePoint* minimumIndex, ImagePoint* maximumIndex);
/** minimum and maximum with their positions, of one channel where the mask is not 0 */
VEKCV_API Status VEKCV_CALL vekiMinMaxIndx_8u_C3CMR(const uint8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                    int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                    float* minimum, float* maximum, ImagePoint* minimumIndex,
                                                    ImagePoint* maximumIndex);
VEKCV_API Status VEKCV_CALL vekiMinMaxIndx_8s_C3CMR(const int8_t* source, int32_t sourceStep, const uint8_t* mask,
                                                    int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                    float* minimum, float* maximum, ImagePoint* minimumIndex,
                                                    ImagePoint* maximumIndex);
VEKCV_API Status VEKCV_CALL vekiMinMaxIndx_16u_C3CMR(const uint16_t* source, int32_t sourceStep, const uint8_t* mask,
                                                     int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                     float* minimum, float* maximum, ImagePoint* minimumIndex,
                                                     ImagePoint* maximumIndex);
VEKCV_API Status VEKCV_CALL vekiMinMaxIndx_32f_C3CMR(const float* source, int32_t sourceStep, const uint8_t* mask,
                                                     int32_t maskStep, RoiSize roiSize, int32_t channelOfInterest,
                                                     float* minimum, float* maximum, ImagePoint* minimumIndex,
                                                     ImagePoint* maximumIndex);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup Integral Integral images
 * Summed-area tables of an image s, from which the sum over any rectangle follows by four loads. Tables have more
 * columns and rows than the image; all begin with a constant.
 *
 * Upright (after Crow, "Summed-Area Tables for Texture Mapping", 1984): width + 1 columns, height + 1 rows. Row 0 and
 * column 0 hold the constant. With r the sum of s(0, j) to s(x, j), added from the left,
 *
 *     I(x + 1, j + 1) = I(x + 1, j) + r
 *
 * so I(x, y) is the constant and the sum of the pixels above and to the left of (x, y).
 *
 * Tilted by 45 degrees (after Lienhart and Maydt, "An Extended Set of Haar-like Features for Rapid Object Detection",
 * 2002): width + 2 columns, height + 2 rows. Rows 0 and 1 hold the constant, and
 *
 *     T(0, j + 2) = T(1, j + 1)
 *     T(x, j + 2) = T(x - 1, j + 1) - T(x, j) + T(x + 1, j + 1) + s(x - 1, j) + s(x, j)     for x = 1 to width
 *     T(width + 1, j + 2) = T(width, j + 1)
 *
 * with s(width, j) = 0. T(x, y) holds the pixels of a triangle with its apex below: x - 1 and x in row y - 2, two more
 * in each row above. What the table leaves out at the left and right edge of the image cancels in every tilted
 * rectangle whose corners lie in it.
 *
 * Squared tables hold the same sums of s * s, with a constant of their own.
 *
 * 32s tables wrap modulo 2^32, so that the sum of any rectangle that fits is right. In upright 32f and 64f tables every
 * operation of the recursion is rounded to the type of the table: r and the sum of it and the entry above. In tilted
 * ones the terms are added in double from left to right, and the result is rounded once. 32f tables are exact up to
 * 16777216, which an image of 65793 white pixels stays below; 64f tables always are where the constant is a whole
 * number.
 *
 * @param source   first pixel of the image
 * @param integral, squareIntegral   first entry of each table; must not overlap the source or each other
 * @param sourceStep, integralStep, squareIntegralStep   bytes from row to row
 * @param roiSize  size of the image, at least 1 x 1
 * @param value, squareValue   the constants; not checked
 *
 * @retval StatusOk                the tables were written
 * @retval StatusNullPointer       the image or a table is null
 * @retval StatusSizeError         width or height is below 1
 * @retval StatusStepError         a step is smaller than a row of the image or the table
 * @retval StatusStepNotMultiple   the step of a table is not a multiple of its element
 *
 * The calling thread does all the work.
 * @{
 */
/** integral image */
VEKCV_API Status VEKCV_CALL vekiIntegral_8u32s_C1R(const uint8_t* source, int32_t sourceStep, int32_t* integral,
                                                   int32_t integralStep, RoiSize roiSize, int32_t value);
/** integral image in floats */
VEKCV_API Status VEKCV_CALL vekiIntegral_8u32f_C1R(const uint8_t* source, int32_t sourceStep, float* integral,
                                                   int32_t integralStep, RoiSize roiSize, float value);
/** integral images of the pixels and of their squares */
VEKCV_API Status VEKCV_CALL vekiSqrIntegral_8u32s64f_C1R(const uint8_t* source, int32_t sourceStep, int32_t* integral,
                                                         int32_t integralStep, double* squareIntegral,
                                                         int32_t squareIntegralStep, RoiSize roiSize, int32_t value,
                                                         double squareValue);
/** integral images of the pixels and of their squares in floats */
VEKCV_API Status VEKCV_CALL vekiSqrIntegral_8u32f64f_C1R(const uint8_t* source, int32_t sourceStep, float* integral,
                                                         int32_t integralStep, double* squareIntegral,
                                                         int32_t squareIntegralStep, RoiSize roiSize, float value,
                                                         double squareValue);
/** integral images of the pixels and of their squares in integers */
VEKCV_API Status VEKCV_CALL vekiSqrIntegral_8u32s_C1R(const uint8_t* source, int32_t sourceStep, int32_t* integral,
                                                      int32_t integralStep, int32_t* squareIntegral,
                                                      int32_t squareIntegralStep, RoiSize roiSize, int32_t value,
                                                      int32_t squareValue);
/** tilted integral image */
VEKCV_API Status VEKCV_CALL vekiTiltedIntegral_8u32s_C1R(const uint8_t* source, int32_t sourceStep, int32_t* integral,
                                                         int32_t integralStep, RoiSize roiSize, int32_t value);
/** tilted integral image in floats */
VEKCV_API Status VEKCV_CALL vekiTiltedIntegral_8u32f_C1R(const uint8_t* source, int32_t sourceStep, float* integral,
                                                         int32_t integralStep, RoiSize roiSize, float value);
/** tilted integral images of the pixels and of their squares */
VEKCV_API Status VEKCV_CALL vekiTiltedSqrIntegral_8u32s64f_C1R(const uint8_t* source, int32_t sourceStep,
                                                               int32_t* integral, int32_t integralStep,
                                                               double* squareIntegral, int32_t squareIntegralStep,
                                                               RoiSize roiSize, int32_t value, double squareValue);
/** tilted integral images of the pixels and of their squares in floats */
VEKCV_API Status VEKCV_CALL vekiTiltedSqrIntegral_8u32f64f_C1R(const uint8_t* source, int32_t sourceStep,
                                                               float* integral, int32_t integralStep,
                                                               double* squareIntegral, int32_t squareIntegralStep,
                                                               RoiSize roiSize, float value, double squareValue);
/** tilted integral images of the pixels and of their squares in integers */
VEKCV_API Status VEKCV_CALL vekiTiltedSqrIntegral_8u32s_C1R(const uint8_t* source, int32_t sourceStep,
                                                            int32_t* integral, int32_t integralStep,
                                                            int32_t* squareIntegral, int32_t squareIntegralStep,
                                                            RoiSize roiSize, int32_t value, int32_t squareValue);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup WindowDeviation Window standard deviation
 * Standard deviation of the pixels in a window around every position, from an integral and a squared integral image.
 * Both begin with the constant 0 (any other constants cancel, as far as 32f entries are exact). For the position (x, y)
 * of the destination, with all operations rounded to float:
 *
 *     sum = I(A) - I(B) - I(C) + I(D), mean = sum / area
 *     squares = Q(A) - Q(B) - Q(C) + Q(D), meanSquare = squares / area
 *     destination = sqrt(max(meanSquare - mean * mean, 0))
 *
 * 32s entries are combined modulo 2^32, and the signed result is converted to float: a sum of squares fits as long as
 * the window has no more than 33025 white pixels. 64f entries are converted to float before they are combined.
 *
 * With rect = (rx, ry, w, h), the entries and the number of pixels are
 *
 *               A                          B                  C                  D          area
 *     upright   (rx + w, ry + h)           (rx, ry + h)       (rx + w, ry)       (rx, ry)   w * h
 *     tilted    (rx + w - h, ry + w + h)   (rx - h, ry + h)   (rx + w, ry + w)   (rx, ry)   2 * w * h
 *
 * moved by (x, y), and in a tilted table one column to the right and one row down as well. The upright window is the
 * rectangle rect. The tilted one holds the pixels (rx + i - k, ry + 1 + i + k) and (rx + 1 + i - k, ry + 1 + i + k) for
 * i = 0 to w - 1 and k = 0 to h - 1: w steps to the lower right and h steps to the lower left. Upright tables must have
 * ry + height + h rows, and tilted ones rx + width + w + 1 columns, which is one more than the check of the step asks
 * for, and ry + height + w + h + 1 rows; the tables of an image that all windows lie in are as large.
 *
 * The deviation of a constant window is 0 as long as the entries of the squared table are exact in float. Entries above
 * 16777216 lose their last bits, and small deviations far from the origin of a large table with them; the Sfs forms,
 * whose tables are integers, do not have this limit.
 *
 * Sfs forms divide by 2 to the power of the scale factor, round to the nearest integer, of two equally near ones to the
 * even one, and saturate.
 *
 * @param integral, squareIntegral   first entry of each table
 * @param destination   first pixel of the result; must not overlap the tables
 * @param integralStep, squareIntegralStep, destinationStep   bytes from row to row
 * @param roiSize       size of the destination, at least 1 x 1
 * @param rect          the window at the position (0, 0)
 * @param scaleFactor   any integer (Sfs forms)
 *
 * @retval StatusOk                the result was written
 * @retval StatusNullPointer       a table or the destination is null
 * @retval StatusSizeError         width or height of the region is below 1
 * @retval StatusStepError         the step of a table holds fewer than rx + width + w entries, or that of the
 *                                 destination is smaller than a row
 * @retval StatusStepNotMultiple   a step is not a multiple of the element size
 * @retval StatusSizeError         rx or ry is below 0, or w or h below 1; in tilted tables also rx + 1 below h, which
 *                                 puts the corner B to the left of the table
 *
 * Regions of 262144 pixels and more are shared among the threads.
 * @{
 */
/** standard deviation of each window */
VEKCV_API Status VEKCV_CALL vekiRectStdDev_32s32f_C1R(const int32_t* integral, int32_t integralStep,
                                                      const double* squareIntegral, int32_t squareIntegralStep,
                                                      float* destination, int32_t destinationStep, RoiSize roiSize,
                                                      ImageRect rect);
/** standard deviation of each window from a float integral image */
VEKCV_API Status VEKCV_CALL vekiRectStdDev_32f_C1R(const float* integral, int32_t integralStep,
                                                   const double* squareIntegral, int32_t squareIntegralStep,
                                                   float* destination, int32_t destinationStep, RoiSize roiSize,
                                                   ImageRect rect);
/** scaled integer standard deviation of each window */
VEKCV_API Status VEKCV_CALL vekiRectStdDev_32s_C1RSfs(const int32_t* integral, int32_t integralStep,
                                                      const int32_t* squareIntegral, int32_t squareIntegralStep,
                                                      int32_t* destination, int32_t destinationStep, RoiSize roiSize,
                                                      ImageRect rect, int32_t scaleFactor);
/** standard deviation of each tilted window */
VEKCV_API Status VEKCV_CALL vekiTiltedRectStdDev_32s32f_C1R(const int32_t* integral, int32_t integralStep,
                                                            const double* squareIntegral, int32_t squareIntegralStep,
                                                            float* destination, int32_t destinationStep,
                                                            RoiSize roiSize, ImageRect rect);
/** standard deviation of each tilted window from a float integral image */
VEKCV_API Status VEKCV_CALL vekiTiltedRectStdDev_32f_C1R(const float* integral, int32_t integralStep,
                                                         const double* squareIntegral, int32_t squareIntegralStep,
                                                         float* destination, int32_t destinationStep, RoiSize roiSize,
                                                         ImageRect rect);
/** scaled integer standard deviation of each tilted window */
VEKCV_API Status VEKCV_CALL vekiTiltedRectStdDev_32s_C1RSfs(const int32_t* integral, int32_t integralStep,
                                                            const int32_t* squareIntegral, int32_t squareIntegralStep,
                                                            int32_t* destination, int32_t destinationStep,
                                                            RoiSize roiSize, ImageRect rect, int32_t scaleFactor);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup Pipeline Separable pipeline filters
 * The two halves of a separable filter, which the caller runs over an image in strips. The row filter reads an image
 * and writes rows; the column filter reads rows and writes an image. Both know the rows by an array of their addresses,
 * so that a caller may keep a small ring of them and point the array to others as it moves down the image. Kernels are
 * applied as they are, without being reversed, and each channel on its own. With K = kernelSize:
 *
 *     row filter      S = sum of kernel[k] * source(x + k - anchorX, y) for k = 0 to K - 1
 *     column filter   S = sum of kernel[k] * sourceRows[y + k][x] for k = 0 to K - 1
 *
 * The row filter takes pixels left and right of the row from borderType: BorderConstant (borderValue in all channels),
 * BorderReplicate, BorderPeriodic, BorderReflect or BorderReflectEdge. Where the border is wider than the row, the
 * periodic rule goes on around it and the reflecting ones go back and forth. The column filter has no border: what the
 * rows above and below the image are is up to the caller, who repeats, mirrors or adds addresses.
 *
 * 32f: the products are added in the order of k, each operation rounded to float.
 *
 * Integers: S is an integer of 32 bits, modulo 2^32, r = 1 / divisor a float. The result is float(S) * r, saturated,
 * with two ways of rounding:
 *
 *     row filter       outputs that need pixels of the row alone, anchorX <= x <= width - K + anchorX, are rounded to
 *                      the nearest integer, of two equally near ones to the even one; the others, at the ends of the
 *                      row, towards zero
 *     column filter    the last width mod 16 pixels of a row are rounded towards zero; for the others, whole groups of
 *                      16 pixels, the products of the pixels with kernel[k] * r are added in the order of k, each
 *                      operation rounded to float, and the sum is rounded to the nearest integer, of two equally near
 *                      ones to the even one
 *     Low_16s          all outputs of both filters are float(S) * r, rounded to the nearest integer, of two equally
 *                      near ones to the even one
 *
 * @param source            first pixel of the source
 * @param sourceStep        bytes from row to row
 * @param destinationRows   addresses of roiSize.height rows to write
 * @param sourceRows        addresses of roiSize.height + K - 1 rows to read; one may occur several times
 * @param destination       first pixel of the result
 * @param destinationStep   bytes from row to row
 * @param roiSize           size of the image, at least 1 x 1
 * @param kernel            the taps
 * @param kernelSize        number of taps, at least 1
 * @param anchorX           the tap that lies on the output pixel, 0 to kernelSize - 1
 * @param borderType        a BorderType from 0 to 4
 * @param borderValue       the pixel value of BorderConstant
 * @param divisor           not 0
 * @param buffer            work buffer at any address, of the size that GetBufferSize gives for the same region, kernel
 *                          size and number of threads
 * @param bufferSize        receives the bytes of the work buffer
 *
 * What is written must not overlap what is read.
 *
 * @retval StatusOk                all rows were written
 * @retval StatusNullPointer       a pointer is null, except for the buffer of a column filter
 * @retval StatusSizeError         width or height is below 1
 * @retval StatusSizeError         kernelSize is below 1
 * @retval StatusAnchorError       row filter: anchorX is outside the kernel
 * @retval StatusStepError         the step is smaller than a row
 * @retval StatusStepNotMultiple   the step is not a multiple of the element size
 * @retval StatusNullPointer       column filter: the buffer is null
 * @retval StatusBadArgument       row filter: borderType is not 0 to 4
 * @retval StatusBadArgument       the divisor is 0
 * @retval StatusNullPointer       column filter: one of the source rows is null
 *
 * Other than everywhere else, a row filter that meets a null address among the destination rows returns
 * StatusNullPointer after it wrote the rows before that one, and leaves all others as they are.
 *
 * GetBufferSize gives StatusNullPointer for bufferSize, the two StatusSizeError above, and StatusSizeError also, after
 * all other checks, where the size is above 2147483647.
 *
 * Regions of 32768 pixels for each configured thread and more are shared among the threads, by integer column filters
 * of 3 or 5 taps only where the process may run on more than one processor, with this exception:
 * - the calling thread alone: vekiFilterColumnPipeline_32f_C1R, vekiFilterColumnPipeline_32f_C3R.
 * @{
 */
/** work buffer of vekiFilterRowBorderPipeline */
VEKCV_API Status VEKCV_CALL vekiFilterRowBorderPipelineGetBufferSize_8u16s_C1R(RoiSize roiSize, int32_t kernelSize,
                                                                               int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterRowBorderPipelineGetBufferSize_8u16s_C3R(RoiSize roiSize, int32_t kernelSize,
                                                                               int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterRowBorderPipelineGetBufferSize_16s_C1R(RoiSize roiSize, int32_t kernelSize,
                                                                             int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterRowBorderPipelineGetBufferSize_16s_C3R(RoiSize roiSize, int32_t kernelSize,
                                                                             int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterRowBorderPipelineGetBufferSize_Low_16s_C1R(RoiSize roiSize, int32_t kernelSize,
                                                                                 int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterRowBorderPipelineGetBufferSize_Low_16s_C3R(RoiSize roiSize, int32_t kernelSize,
                                                                                 int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterRowBorderPipelineGetBufferSize_32f_C1R(RoiSize roiSize, int32_t kernelSize,
                                                                             int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterRowBorderPipelineGetBufferSize_32f_C3R(RoiSize roiSize, int32_t kernelSize,
                                                                             int32_t* bufferSize);
/** row filter */
VEKCV_API Status VEKCV_CALL vekiFilterRowBorderPipeline_8u16s_C1R(
    const uint8_t* source, int32_t sourceStep, int16_t* const* destinationRows, RoiSize roiSize, const int16_t* kernel,
    int32_t kernelSize, int32_t anchorX, int32_t borderType, uint8_t borderValue, int32_t divisor, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterRowBorderPipeline_8u16s_C3R(
    const uint8_t* source, int32_t sourceStep, int16_t* const* destinationRows, RoiSize roiSize, const int16_t* kernel,
    int32_t kernelSize, int32_t anchorX, int32_t borderType, uint8_t borderValue, int32_t divisor, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterRowBorderPipeline_16s_C1R(const int16_t* source, int32_t sourceStep,
                                                                int16_t* const* destinationRows, RoiSize roiSize,
                                                                const int16_t* kernel, int32_t kernelSize,
                                                                int32_t anchorX, int32_t borderType,
                                                                int16_t borderValue, int32_t divisor, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterRowBorderPipeline_16s_C3R(const int16_t* source, int32_t sourceStep,
                                                                int16_t* const* destinationRows, RoiSize roiSize,
                                                                const int16_t* kernel, int32_t kernelSize,
                                                                int32_t anchorX, int32_t borderType,
                                                                int16_t borderValue, int32_t divisor, uint8_t* buffer);
/** row filter that rounds all outputs alike */
VEKCV_API Status VEKCV_CALL vekiFilterRowBorderPipeline_Low_16s_C1R(
    const int16_t* source, int32_t sourceStep, int16_t* const* destinationRows, RoiSize roiSize, const int16_t* kernel,
    int32_t kernelSize, int32_t anchorX, int32_t borderType, int16_t borderValue, int32_t divisor, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterRowBorderPipeline_Low_16s_C3R(
    const int16_t* source, int32_t sourceStep, int16_t* const* destinationRows, RoiSize roiSize, const int16_t* kernel,
    int32_t kernelSize, int32_t anchorX, int32_t borderType, int16_t borderValue, int32_t divisor, uint8_t* buffer);
/** row filter of floats */
VEKCV_API Status VEKCV_CALL vekiFilterRowBorderPipeline_32f_C1R(const float* source, int32_t sourceStep,
                                                                float* const* destinationRows, RoiSize roiSize,
                                                                const float* kernel, int32_t kernelSize,
                                                                int32_t anchorX, int32_t borderType, float borderValue,
                                                                uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterRowBorderPipeline_32f_C3R(const float* source, int32_t sourceStep,
                                                                float* const* destinationRows, RoiSize roiSize,
                                                                const float* kernel, int32_t kernelSize,
                                                                int32_t anchorX, int32_t borderType, float borderValue,
                                                                uint8_t* buffer);
/** work buffer of vekiFilterColumnPipeline */
VEKCV_API Status VEKCV_CALL vekiFilterColumnPipelineGetBufferSize_16s_C1R(RoiSize roiSize, int32_t kernelSize,
                                                                          int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterColumnPipelineGetBufferSize_16s_C3R(RoiSize roiSize, int32_t kernelSize,
                                                                          int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterColumnPipelineGetBufferSize_16s8u_C1R(RoiSize roiSize, int32_t kernelSize,
                                                                            int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterColumnPipelineGetBufferSize_16s8u_C3R(RoiSize roiSize, int32_t kernelSize,
                                                                            int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterColumnPipelineGetBufferSize_16s8s_C1R(RoiSize roiSize, int32_t kernelSize,
                                                                            int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterColumnPipelineGetBufferSize_16s8s_C3R(RoiSize roiSize, int32_t kernelSize,
                                                                            int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterColumnPipelineGetBufferSize_Low_16s_C1R(RoiSize roiSize, int32_t kernelSize,
                                                                              int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterColumnPipelineGetBufferSize_Low_16s_C3R(RoiSize roiSize, int32_t kernelSize,
                                                                              int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterColumnPipelineGetBufferSize_32f_C1R(RoiSize roiSize, int32_t kernelSize,
                                                                          int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterColumnPipelineGetBufferSize_32f_C3R(RoiSize roiSize, int32_t kernelSize,
                                                                          int32_t* bufferSize);
/** column filter */
VEKCV_API Status VEKCV_CALL vekiFilterColumnPipeline_16s_C1R(const int16_t* const* sourceRows, int16_t* destination,
                                                             int32_t destinationStep, RoiSize roiSize,
                                                             const int16_t* kernel, int32_t kernelSize, int32_t divisor,
                                                             uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterColumnPipeline_16s_C3R(const int16_t* const* sourceRows, int16_t* destination,
                                                             int32_t destinationStep, RoiSize roiSize,
                                                             const int16_t* kernel, int32_t kernelSize, int32_t divisor,
                                                             uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterColumnPipeline_16s8u_C1R(const int16_t* const* sourceRows, uint8_t* destination,
                                                               int32_t destinationStep, RoiSize roiSize,
                                                               const int16_t* kernel, int32_t kernelSize,
                                                               int32_t divisor, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterColumnPipeline_16s8u_C3R(const int16_t* const* sourceRows, uint8_t* destination,
                                                               int32_t destinationStep, RoiSize roiSize,
                                                               const int16_t* kernel, int32_t kernelSize,
                                                               int32_t divisor, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterColumnPipeline_16s8s_C1R(const int16_t* const* sourceRows, int8_t* destination,
                                                               int32_t destinationStep, RoiSize roiSize,
                                                               const int16_t* kernel, int32_t kernelSize,
                                                               int32_t divisor, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterColumnPipeline_16s8s_C3R(const int16_t* const* sourceRows, int8_t* destination,
                                                               int32_t destinationStep, RoiSize roiSize,
                                                               const int16_t* kernel, int32_t kernelSize,
                                                               int32_t divisor, uint8_t* buffer);
/** column filter that rounds all outputs alike */
VEKCV_API Status VEKCV_CALL vekiFilterColumnPipeline_Low_16s_C1R(const int16_t* const* sourceRows, int16_t* destination,
                                                                 int32_t destinationStep, RoiSize roiSize,
                                                                 const int16_t* kernel, int32_t kernelSize,
                                                                 int32_t divisor, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterColumnPipeline_Low_16s_C3R(const int16_t* const* sourceRows, int16_t* destination,
                                                                 int32_t destinationStep, RoiSize roiSize,
                                                                 const int16_t* kernel, int32_t kernelSize,
                                                                 int32_t divisor, uint8_t* buffer);
/** column filter of floats */
VEKCV_API Status VEKCV_CALL vekiFilterColumnPipeline_32f_C1R(const float* const* sourceRows, float* destination,
                                                             int32_t destinationStep, RoiSize roiSize,
                                                             const float* kernel, int32_t kernelSize, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterColumnPipeline_32f_C3R(const float* const* sourceRows, float* destination,
                                                             int32_t destinationStep, RoiSize roiSize,
                                                             const float* kernel, int32_t kernelSize, uint8_t* buffer);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup FixedFilters Derivative and smoothing filters
 * Filters with a mask of 3 x 3 or 5 x 5 that are a row filter and a column filter. Both are correlations, with their
 * middle tap over the pixel:
 *
 *                                  3 x 3                    5 x 5
 *                                  row        column        row             column
 *     vekiFilterSobelHoriz         1 2 1      -1 0 1        1 4 6 4 1       -1 -2 0 2 1
 *     vekiFilterSobelVert          1 0 -1     1 2 1         1 2 0 -2 -1     1 4 6 4 1
 *     vekiFilterSobelNegVert       -1 0 1     1 2 1         -1 -2 0 2 1     1 4 6 4 1
 *     vekiFilterSobelHorizSecond   1 2 1      1 -2 1        1 4 6 4 1       1 0 -2 0 1
 *     vekiFilterSobelVertSecond    1 -2 1     1 2 1         1 0 -2 0 1      1 4 6 4 1
 *     vekiFilterSobelCross         1 0 -1     -1 0 1        1 2 0 -2 -1     -1 -2 0 2 1
 *     vekiFilterScharrHoriz        3 10 3     -1 0 1
 *     vekiFilterScharrVert         -1 0 1     3 10 3
 *     vekiFilterLowpass            1 1 1      1 1 1         1 1 1 1 1       1 1 1 1 1
 *
 * vekiFilterLaplacian is the sum of the two second derivatives: of 3 x 3 pixels with the mask 2 0 2 / 0 -8 0 / 2 0 2,
 * of 5 x 5 the sum of HorizSecond and VertSecond. vekiFilterLowpass gives the mean of the pixels.
 *
 * Results of 8u images are exact, then saturated: to -128 to 127 in 8s; 16s holds all of them. The mean of 8u pixels is
 * rounded to the nearest integer. Floats are filtered by rows, then by columns, each operation rounded to float: the
 * two outer pixels are added or subtracted first, then the two inner ones, each pair is multiplied by its tap, the
 * inner pair is added to the outer one and the middle pixel times its tap comes last; taps of 0 are left out. The
 * Laplacian of 3 x 3 floats is 2 (a + c) of the row above, plus that of the row below, minus 8 times the pixel; that of
 * 5 x 5 floats is HorizSecond plus VertSecond. The mean of floats is their sum times the float nearest to 1/9 or 1/25.
 *
 * Outside of the image the rule of borderType applies: BorderConstant with borderValue, BorderReplicate,
 * BorderPeriodic, BorderReflect, BorderReflectEdge, or BorderInMemory. The flags BorderInMemoryTop, Bottom, Left and
 * Right say of single sides that the pixels in memory beside the region are to be read there, as far as the mask
 * reaches. Corners belong to the rows above and below: each of these, from memory or by the rule, is extended to the
 * left and to the right as a row of the image is; only a row of the constant is constant throughout.
 *
 * @param source        first pixel of the source
 * @param destination   first pixel of the result; must not overlap the source
 * @param sourceStep, destinationStep   bytes from row to row
 * @param roiSize       size of both images, at least 1 x 1
 * @param maskSize      MaskSize3x3 or MaskSize5x5; the Scharr filters have 3 x 3 only
 * @param borderType    a rule of BorderType, with flags added
 * @param borderValue   what BorderConstant puts outside of the image
 * @param buffer        work buffer at any address, of the size that GetBufferSize gives for the same region, mask and
 *                      number of threads
 * @param bufferSize    receives the bytes of the work buffer
 *
 * @retval StatusOk                the result was written
 * @retval StatusNullPointer       an image or the buffer is null; of GetBufferSize, bufferSize
 * @retval StatusSizeError         width or height is below 1; of GetBufferSize also, after all other checks, that the
 *                                 size is above 2147483647
 * @retval StatusStepError         a step is smaller than a row
 * @retval StatusStepNotMultiple   the step of a 16s or 32f image is not a multiple of 2 or 4
 * @retval StatusBadArgument       borderType is no such value: its low four bits are no rule, or it has higher ones of
 *                                 its low sixteen bits but none of the flags
 * @retval StatusMaskSizeError     maskSize is neither 33 nor 55
 *
 * Regions of 256 x 256 pixels and more are shared among the threads where there are at least five rows for each thread
 * and the process may run on more than one processor.
 * @{
 */
/** derivative in y, which horizontal edges have */
VEKCV_API Status VEKCV_CALL vekiFilterSobelHorizBorder_8u16s_C1R(const uint8_t* source, int32_t sourceStep,
                                                                 int16_t* destination, int32_t destinationStep,
                                                                 RoiSize roiSize, int32_t maskSize, int32_t borderType,
                                                                 uint8_t borderValue, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterSobelHorizBorder_8u8s_C1R(const uint8_t* source, int32_t sourceStep,
                                                                int8_t* destination, int32_t destinationStep,
                                                                RoiSize roiSize, int32_t maskSize, int32_t borderType,
                                                                uint8_t borderValue, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterSobelHorizBorder_32f_C1R(const float* source, int32_t sourceStep,
                                                               float* destination, int32_t destinationStep,
                                                               RoiSize roiSize, int32_t maskSize, int32_t borderType,
                                                               float borderValue, uint8_t* buffer);
/** work buffer of vekiFilterSobelHorizBorder */
VEKCV_API Status VEKCV_CALL vekiFilterSobelHorizGetBufferSize_8u16s_C1R(RoiSize roiSize, int32_t maskSize,
                                                                        int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterSobelHorizGetBufferSize_8u8s_C1R(RoiSize roiSize, int32_t maskSize,
                                                                       int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterSobelHorizGetBufferSize_32f_C1R(RoiSize roiSize, int32_t maskSize,
                                                                      int32_t* bufferSize);
/** derivative in x, which vertical edges have: left minus right */
VEKCV_API Status VEKCV_CALL vekiFilterSobelVertBorder_8u16s_C1R(const uint8_t* source, int32_t sourceStep,
                                                                int16_t* destination, int32_t destinationStep,
                                                                RoiSize roiSize, int32_t maskSize, int32_t borderType,
                                                                uint8_t borderValue, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterSobelVertBorder_8u8s_C1R(const uint8_t* source, int32_t sourceStep,
                                                               int8_t* destination, int32_t destinationStep,
                                                               RoiSize roiSize, int32_t maskSize, int32_t borderType,
                                                               uint8_t borderValue, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterSobelVertBorder_32f_C1R(const float* source, int32_t sourceStep,
                                                              float* destination, int32_t destinationStep,
                                                              RoiSize roiSize, int32_t maskSize, int32_t borderType,
                                                              float borderValue, uint8_t* buffer);
/** work buffer of vekiFilterSobelVertBorder */
VEKCV_API Status VEKCV_CALL vekiFilterSobelVertGetBufferSize_8u16s_C1R(RoiSize roiSize, int32_t maskSize,
                                                                       int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterSobelVertGetBufferSize_8u8s_C1R(RoiSize roiSize, int32_t maskSize,
                                                                      int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterSobelVertGetBufferSize_32f_C1R(RoiSize roiSize, int32_t maskSize,
                                                                     int32_t* bufferSize);
/** derivative in x: right minus left */
VEKCV_API Status VEKCV_CALL vekiFilterSobelNegVertBorder_8u16s_C1R(const uint8_t* source, int32_t sourceStep,
                                                                   int16_t* destination, int32_t destinationStep,
                                                                   RoiSize roiSize, int32_t maskSize,
                                                                   int32_t borderType, uint8_t borderValue,
                                                                   uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterSobelNegVertBorder_8u8s_C1R(const uint8_t* source, int32_t sourceStep,
                                                                  int8_t* destination, int32_t destinationStep,
                                                                  RoiSize roiSize, int32_t maskSize, int32_t borderType,
                                                                  uint8_t borderValue, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterSobelNegVertBorder_32f_C1R(const float* source, int32_t sourceStep,
                                                                 float* destination, int32_t destinationStep,
                                                                 RoiSize roiSize, int32_t maskSize, int32_t borderType,
                                                                 float borderValue, uint8_t* buffer);
/** work buffer of vekiFilterSobelNegVertBorder */
VEKCV_API Status VEKCV_CALL vekiFilterSobelNegVertGetBufferSize_8u16s_C1R(RoiSize roiSize, int32_t maskSize,
                                                                          int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterSobelNegVertGetBufferSize_8u8s_C1R(RoiSize roiSize, int32_t maskSize,
                                                                         int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterSobelNegVertGetBufferSize_32f_C1R(RoiSize roiSize, int32_t maskSize,
                                                                        int32_t* bufferSize);
/** second derivative in y */
VEKCV_API Status VEKCV_CALL vekiFilterSobelHorizSecondBorder_8u16s_C1R(const uint8_t* source, int32_t sourceStep,
                                                                       int16_t* destination, int32_t destinationStep,
                                                                       RoiSize roiSize, int32_t maskSize,
                                                                       int32_t borderType, uint8_t borderValue,
                                                                       uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterSobelHorizSecondBorder_8u8s_C1R(const uint8_t* source, int32_t sourceStep,
                                                                      int8_t* destination, int32_t destinationStep,
                                                                      RoiSize roiSize, int32_t maskSize,
                                                                      int32_t borderType, uint8_t borderValue,
                                                                      uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterSobelHorizSecondBorder_32f_C1R(const float* source, int32_t sourceStep,
                                                                     float* destination, int32_t destinationStep,
                                                                     RoiSize roiSize, int32_t maskSize,
                                                                     int32_t borderType, float borderValue,
                                                                     uint8_t* buffer);
/** work buffer of vekiFilterSobelHorizSecondBorder */
VEKCV_API Status VEKCV_CALL vekiFilterSobelHorizSecondGetBufferSize_8u16s_C1R(RoiSize roiSize, int32_t maskSize,
                                                                              int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterSobelHorizSecondGetBufferSize_8u8s_C1R(RoiSize roiSize, int32_t maskSize,
                                                                             int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterSobelHorizSecondGetBufferSize_32f_C1R(RoiSize roiSize, int32_t maskSize,
                                                                            int32_t* bufferSize);
/** second derivative in x */
VEKCV_API Status VEKCV_CALL vekiFilterSobelVertSecondBorder_8u16s_C1R(const uint8_t* source, int32_t sourceStep,
                                                                      int16_t* destination, int32_t destinationStep,
                                                                      RoiSize roiSize, int32_t maskSize,
                                                                      int32_t borderType, uint8_t borderValue,
                                                                      uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterSobelVertSecondBorder_8u8s_C1R(const uint8_t* source, int32_t sourceStep,
                                                                     int8_t* destination, int32_t destinationStep,
                                                                     RoiSize roiSize, int32_t maskSize,
                                                                     int32_t borderType, uint8_t borderValue,
                                                                     uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterSobelVertSecondBorder_32f_C1R(const float* source, int32_t sourceStep,
                                                                    float* destination, int32_t destinationStep,
                                                                    RoiSize roiSize, int32_t maskSize,
                                                                    int32_t borderType, float borderValue,
                                                                    uint8_t* buffer);
/** work buffer of vekiFilterSobelVertSecondBorder */
VEKCV_API Status VEKCV_CALL vekiFilterSobelVertSecondGetBufferSize_8u16s_C1R(RoiSize roiSize, int32_t maskSize,
                                                                             int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterSobelVertSecondGetBufferSize_8u8s_C1R(RoiSize roiSize, int32_t maskSize,
                                                                            int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterSobelVertSecondGetBufferSize_32f_C1R(RoiSize roiSize, int32_t maskSize,
                                                                           int32_t* bufferSize);
/** mixed derivative */
VEKCV_API Status VEKCV_CALL vekiFilterSobelCrossBorder_8u16s_C1R(const uint8_t* source, int32_t sourceStep,
                                                                 int16_t* destination, int32_t destinationStep,
                                                                 RoiSize roiSize, int32_t maskSize, int32_t borderType,
                                                                 uint8_t borderValue, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterSobelCrossBorder_8u8s_C1R(const uint8_t* source, int32_t sourceStep,
                                                                int8_t* destination, int32_t destinationStep,
                                                                RoiSize roiSize, int32_t maskSize, int32_t borderType,
                                                                uint8_t borderValue, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterSobelCrossBorder_32f_C1R(const float* source, int32_t sourceStep,
                                                               float* destination, int32_t destinationStep,
                                                               RoiSize roiSize, int32_t maskSize, int32_t borderType,
                                                               float borderValue, uint8_t* buffer);
/** work buffer of vekiFilterSobelCrossBorder */
VEKCV_API Status VEKCV_CALL vekiFilterSobelCrossGetBufferSize_8u16s_C1R(RoiSize roiSize, int32_t maskSize,
                                                                        int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterSobelCrossGetBufferSize_8u8s_C1R(RoiSize roiSize, int32_t maskSize,
                                                                       int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterSobelCrossGetBufferSize_32f_C1R(RoiSize roiSize, int32_t maskSize,
                                                                      int32_t* bufferSize);
/** derivative in y with the weights of Scharr */
VEKCV_API Status VEKCV_CALL vekiFilterScharrHorizBorder_8u16s_C1R(const uint8_t* source, int32_t sourceStep,
                                                                  int16_t* destination, int32_t destinationStep,
                                                                  RoiSize roiSize, int32_t borderType,
                                                                  uint8_t borderValue, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterScharrHorizBorder_8u8s_C1R(const uint8_t* source, int32_t sourceStep,
                                                                 int8_t* destination, int32_t destinationStep,
                                                                 RoiSize roiSize, int32_t borderType,
                                                                 uint8_t borderValue, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterScharrHorizBorder_32f_C1R(const float* source, int32_t sourceStep,
                                                                float* destination, int32_t destinationStep,
                                                                RoiSize roiSize, int32_t borderType, float borderValue,
                                                                uint8_t* buffer);
/** work buffer of vekiFilterScharrHorizBorder */
VEKCV_API Status VEKCV_CALL vekiFilterScharrHorizGetBufferSize_8u16s_C1R(RoiSize roiSize, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterScharrHorizGetBufferSize_8u8s_C1R(RoiSize roiSize, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterScharrHorizGetBufferSize_32f_C1R(RoiSize roiSize, int32_t* bufferSize);
/** derivative in x with the weights of Scharr */
VEKCV_API Status VEKCV_CALL vekiFilterScharrVertBorder_8u16s_C1R(const uint8_t* source, int32_t sourceStep,
                                                                 int16_t* destination, int32_t destinationStep,
                                                                 RoiSize roiSize, int32_t borderType,
                                                                 uint8_t borderValue, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterScharrVertBorder_8u8s_C1R(const uint8_t* source, int32_t sourceStep,
                                                                int8_t* destination, int32_t destinationStep,
                                                                RoiSize roiSize, int32_t borderType,
                                                                uint8_t borderValue, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterScharrVertBorder_32f_C1R(const float* source, int32_t sourceStep,
                                                               float* destination, int32_t destinationStep,
                                                               RoiSize roiSize, int32_t borderType, float borderValue,
                                                               uint8_t* buffer);
/** work buffer of vekiFilterScharrVertBorder */
VEKCV_API Status VEKCV_CALL vekiFilterScharrVertGetBufferSize_8u16s_C1R(RoiSize roiSize, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterScharrVertGetBufferSize_8u8s_C1R(RoiSize roiSize, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterScharrVertGetBufferSize_32f_C1R(RoiSize roiSize, int32_t* bufferSize);
/** sum of the second derivatives */
VEKCV_API Status VEKCV_CALL vekiFilterLaplacianBorder_8u16s_C1R(const uint8_t* source, int32_t sourceStep,
                                                                int16_t* destination, int32_t destinationStep,
                                                                RoiSize roiSize, int32_t maskSize, int32_t borderType,
                                                                uint8_t borderValue, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterLaplacianBorder_8u8s_C1R(const uint8_t* source, int32_t sourceStep,
                                                               int8_t* destination, int32_t destinationStep,
                                                               RoiSize roiSize, int32_t maskSize, int32_t borderType,
                                                               uint8_t borderValue, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterLaplacianBorder_32f_C1R(const float* source, int32_t sourceStep,
                                                              float* destination, int32_t destinationStep,
                                                              RoiSize roiSize, int32_t maskSize, int32_t borderType,
                                                              float borderValue, uint8_t* buffer);
/** work buffer of vekiFilterLaplacianBorder */
VEKCV_API Status VEKCV_CALL vekiFilterLaplacianGetBufferSize_8u16s_C1R(RoiSize roiSize, int32_t maskSize,
                                                                       int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterLaplacianGetBufferSize_8u8s_C1R(RoiSize roiSize, int32_t maskSize,
                                                                      int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterLaplacianGetBufferSize_32f_C1R(RoiSize roiSize, int32_t maskSize,
                                                                     int32_t* bufferSize);
/** mean */
VEKCV_API Status VEKCV_CALL vekiFilterLowpassBorder_8u_C1R(const uint8_t* source, int32_t sourceStep,
                                                           uint8_t* destination, int32_t destinationStep,
                                                           RoiSize roiSize, int32_t maskSize, int32_t borderType,
                                                           uint8_t borderValue, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterLowpassBorder_32f_C1R(const float* source, int32_t sourceStep, float* destination,
                                                            int32_t destinationStep, RoiSize roiSize, int32_t maskSize,
                                                            int32_t borderType, float borderValue, uint8_t* buffer);
/** work buffer of vekiFilterLowpassBorder */
VEKCV_API Status VEKCV_CALL vekiFilterLowpassGetBufferSize_8u_C1R(RoiSize roiSize, int32_t maskSize,
                                                                  int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterLowpassGetBufferSize_32f_C1R(RoiSize roiSize, int32_t maskSize,
                                                                   int32_t* bufferSize);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup Gauss Gaussian filter
 * Gaussian filter of kernelSize x kernelSize floats, by rows, then by columns. Its taps are
 *
 *     w(i) = exp(-(t * t) / ((sigma + sigma) * sigma)), t = i - kernelSize / 2, for i = 0 to kernelSize - 1
 *
 * with the argument in float, the exponential in double, rounded to float, and then divided by their sum in float. A
 * pixel is filtered as its value times the middle tap; then, from the inner to the outer ones, the sum of each pair of
 * pixels at the same distance times their tap is added; each operation is rounded to float.
 *
 * @param source        first pixel of the source
 * @param destination   first pixel of the result; must not overlap the source
 * @param sourceStep, destinationStep   bytes from row to row
 * @param roiSize       size of both images, at least 1 x 1
 * @param kernelSize    odd, at least 3
 * @param sigma         standard deviation in pixels; not checked
 * @param borderType    BorderConstant, BorderReplicate, BorderPeriodic, BorderReflect or BorderReflectEdge; the flags
 *                      BorderInMemoryTop and BorderInMemoryBottom are accepted and have no effect
 * @param borderValue   what BorderConstant puts outside of the image
 * @param buffer        work buffer at any address, of the size that GetBufferSize gives for the same region, kernel and
 *                      number of threads
 * @param bufferSize    receives the bytes of the work buffer
 *
 * @retval StatusOk                the result was written
 * @retval StatusNullPointer       an image or the buffer is null; of GetBufferSize, bufferSize
 * @retval StatusSizeError         width or height is below 1; of GetBufferSize also, after all other checks, that the
 *                                 size is above 2147483647
 * @retval StatusStepError         a step is smaller than a row; steps need not be multiples of 4
 * @retval StatusBadArgument       kernelSize is even or below 3; or borderType is none of these rules
 *
 * Regions of 65536 pixels and more are shared among the threads.
 * @{
 */
/** Gaussian filter */
VEKCV_API Status VEKCV_CALL vekiFilterGaussBorder_32f_C1R(const float* source, int32_t sourceStep, float* destination,
                                                          int32_t destinationStep, RoiSize roiSize, int32_t kernelSize,
                                                          float sigma, int32_t borderType, float borderValue,
                                                          uint8_t* buffer);
/** work buffer of vekiFilterGaussBorder */
VEKCV_API Status VEKCV_CALL vekiFilterGaussGetBufferSize_32f_C1R(RoiSize roiSize, int32_t kernelSize,
                                                                 int32_t* bufferSize);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup SobelKernels Sobel kernels
 * Kernels of derivatives, of odd sizes from 3 to 31. They are the coefficients of
 *
 *     sign * (1 + z)^(kernelSize - 1 - derivativeOrder) * (z - 1)^derivativeOrder
 *
 * from that of z^0 on. So order 0 smooths with binomial coefficients, 1 4 6 4 1 for five taps; order 1 gives
 * -1 -2 0 2 1, and order 2 gives 1 0 -2 0 1. Coefficients above 16777216 are rounded to float; all others are exact.
 *
 * @param kernel            receives kernelSize coefficients
 * @param kernelSize        odd, 3 to 31
 * @param derivativeOrder   0, 1 or 2
 * @param sign              1, or -1 for the kernel times -1
 *
 * @retval StatusOk            the kernel was written
 * @retval StatusNullPointer   the kernel is null
 * @retval StatusSizeError     kernelSize is even, below 3 or above 31; or, after all other checks, a coefficient is
 *                             above 32767 (16s: order 0 from 19 taps on, orders 1 and 2 from 23 taps on)
 * @retval StatusBadArgument   derivativeOrder is not 0, 1 or 2; or sign is neither 1 nor -1
 * @{
 */
/** kernel of a derivative in integers */
VEKCV_API Status VEKCV_CALL vekiGenSobelKernel_16s(int16_t* kernel, int32_t kernelSize, int32_t derivativeOrder,
                                                   int32_t sign);
/** kernel of a derivative in floats */
VEKCV_API Status VEKCV_CALL vekiGenSobelKernel_32f(float* kernel, int32_t kernelSize, int32_t derivativeOrder,
                                                   int32_t sign);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup GaussPyramid Pyramids of rate 2
 * Images of half and of double size, smoothed with the weights 1 4 6 4 1 (after Burt and Adelson, "The Laplacian
 * Pyramid as a Compact Image Code", 1983).
 *
 * vekiPyrDown, w x h to (w + 1) / 2 x (h + 1) / 2 pixels, s being the source:
 *
 *     t(i, y) = s(2i - 2, y) + 4 s(2i - 1, y) + 6 s(2i, y) + 4 s(2i + 1, y) + s(2i + 2, y)
 *     result(i, j) = (t(i, 2j - 2) + 4 t(i, 2j - 1) + 6 t(i, 2j) + 4 t(i, 2j + 1) + t(i, 2j + 2)) / 256
 *
 * Pixels outside of the image are mirrored, without the edge pixel itself: s(-1) is s(1), s(w) is s(w - 2); in one or
 * two pixels back and forth. So a single row or column stands for its neighbours too.
 *
 * vekiPyrUp, w x h to 2w x 2h pixels: the same smoothing of an image whose odd pixels are 0, times 4.
 *
 *     r(x, 2j)          = s(x, j - 1) + 6 s(x, j) + s(x, j + 1)
 *     r(x, 2j + 1)      = 4 s(x, j) + 4 s(x, j + 1)
 *     result(2k, y)     = (r(k - 1, y) + 6 r(k, y) + r(k + 1, y)) / 64
 *     result(2k + 1, y) = (4 r(k, y) + 4 r(k + 1, y)) / 64
 *
 * Here pixels are mirrored on the left and above, s(-1) being s(1), and the edge is repeated on the right and below,
 * s(w) being s(w - 1). A single row or column stands for its neighbours.
 *
 * 8u and 8s are exact: rounded to the nearest, halves towards positive infinity. 32f adds in single precision, in an
 * order that is the same on all processors: 1 6 1 as ((a + c) + 2b) + 4b, and 1 4 6 4 1 as that plus 4 (b + d). So
 * equal pixels stay as they are; factors that are powers of two do not round.
 *
 * @param source        first pixel of the source
 * @param destination   first pixel of the result; must not overlap the source
 * @param sourceStep, destinationStep   bytes from row to row
 * @param roiSize       size of the source, at least 1 x 1
 * @param buffer        work buffer at any address, of the size that GetBufSize gives for this or a greater width
 * @param roiWidth      width of the source
 * @param dataType      1 for 8u, 3 for 8s, 13 for 32f; the size does not depend on it
 * @param channels      1 or 3
 * @param bufferSize    receives the bytes of the work buffer: (4 roiWidth channels + 15) / 16 * 96 + 64 for
 *                      vekiPyrDown, (8 roiWidth channels + 15) / 16 * 48 + 64 for vekiPyrUp, by integer division
 *
 * @retval StatusOk                the result was written
 * @retval StatusNullPointer       an image or the buffer is null; of GetBufSize, bufferSize
 * @retval StatusSizeError         width or height is below 1; of GetBufSize also, after all other checks, that the size
 *                                 is above 2147483647
 * @retval StatusStepError         a step is smaller than a row
 * @retval StatusStepNotMultiple   the step of a 32f image is not a multiple of 4
 * @retval StatusChannelError      of GetBufSize: channels is neither 1 nor 3
 * @retval StatusDataTypeError     of GetBufSize: dataType is none of these
 *
 * The calling thread does all the work.
 * @{
 */
/** work buffer of vekiPyrDown_Gauss5x5 */
VEKCV_API Status VEKCV_CALL vekiPyrDownGetBufSize_Gauss5x5(int32_t roiWidth, int32_t dataType, int32_t channels,
                                                           int32_t* bufferSize);
/** work buffer of vekiPyrUp_Gauss5x5 */
VEKCV_API Status VEKCV_CALL vekiPyrUpGetBufSize_Gauss5x5(int32_t roiWidth, int32_t dataType, int32_t channels,
                                                         int32_t* bufferSize);
/** half size */
VEKCV_API Status VEKCV_CALL vekiPyrDown_Gauss5x5_8u_C1R(const uint8_t* source, int32_t sourceStep, uint8_t* destination,
                                                        int32_t destinationStep, RoiSize roiSize, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiPyrDown_Gauss5x5_8u_C3R(const uint8_t* source, int32_t sourceStep, uint8_t* destination,
                                                        int32_t destinationStep, RoiSize roiSize, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiPyrDown_Gauss5x5_8s_C1R(const int8_t* source, int32_t sourceStep, int8_t* destination,
                                                        int32_t destinationStep, RoiSize roiSize, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiPyrDown_Gauss5x5_8s_C3R(const int8_t* source, int32_t sourceStep, int8_t* destination,
                                                        int32_t destinationStep, RoiSize roiSize, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiPyrDown_Gauss5x5_32f_C1R(const float* source, int32_t sourceStep, float* destination,
                                                         int32_t destinationStep, RoiSize roiSize, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiPyrDown_Gauss5x5_32f_C3R(const float* source, int32_t sourceStep, float* destination,
                                                         int32_t destinationStep, RoiSize roiSize, uint8_t* buffer);
/** double size */
VEKCV_API Status VEKCV_CALL vekiPyrUp_Gauss5x5_8u_C1R(const uint8_t* source, int32_t sourceStep, uint8_t* destination,
                                                      int32_t destinationStep, RoiSize roiSize, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiPyrUp_Gauss5x5_8u_C3R(const uint8_t* source, int32_t sourceStep, uint8_t* destination,
                                                      int32_t destinationStep, RoiSize roiSize, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiPyrUp_Gauss5x5_8s_C1R(const int8_t* source, int32_t sourceStep, int8_t* destination,
                                                      int32_t destinationStep, RoiSize roiSize, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiPyrUp_Gauss5x5_8s_C3R(const int8_t* source, int32_t sourceStep, int8_t* destination,
                                                      int32_t destinationStep, RoiSize roiSize, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiPyrUp_Gauss5x5_32f_C1R(const float* source, int32_t sourceStep, float* destination,
                                                       int32_t destinationStep, RoiSize roiSize, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiPyrUp_Gauss5x5_32f_C3R(const float* source, int32_t sourceStep, float* destination,
                                                       int32_t destinationStep, RoiSize roiSize, uint8_t* buffer);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup Pyramids Pyramid records
 * Sizes and scales of the levels of an image pyramid. Level 0 is the base; each level above it is smaller by the rate.
 *
 * vekiGetPyramidUpROI tells which sizes an image may be expanded to. A width or a height n becomes any number from min
 * to max, where products are in float and their fraction is cut off:
 *
 *     min = n == 1 ? 1 : max(n + 1, (n - 1) * rate + 1)
 *     max = max(n + 1, n * rate)
 *
 * and both are at most 2147483647. Each number is in the range of exactly one n, which vekiGetPyramidDownROI gives: the
 * size of the next level, from which an image of this size can be expanded again.
 *
 * vekiPyramidInitAlloc makes a record with the sizes of the levels, down to `levels` levels above the base, or to the
 * first one of 1 x 1 if that comes before. It is one block of 44 * levelCount + 112 bytes, in 64 bits and in 32. The
 * images and their steps are the caller's to make and to enter; vekiPyramidFree does not release images, nor a state.
 *
 * @param sourceRoi        size of an image, at least 1 x 1
 * @param destinationRoi   receives the size of the next smaller level
 * @param destinationMin, destinationMax   receive the least and the greatest size that the image may be expanded to
 * @param rate             ratio between the sizes of two levels, above 1 and at most 10
 * @param pyramid          result of vekiPyramidInitAlloc: the record; else the record
 * @param levels           greatest number of levels above the base, at least 1
 * @param baseRoi          size of the base, at least 1 x 1
 *
 * @retval StatusOk                 the sizes were written, or the record was made or released
 * @retval StatusNullPointer        a pointer is null
 * @retval StatusSizeError          a width or a height is below 1
 * @retval StatusBadArgument        the rate is not above 1 and at most 10, or levels is below 1
 * @retval StatusMemoryAllocation   there is no memory for the record, and *pyramid is as it was
 *
 * The floating-point modes of the calling thread have no effect. The calling thread does all the work.
 * @{
 */
/** Intermediate rows, tables and a kernel for the functions on pyramid layers. */
typedef struct PyramidLayerState PyramidLayerState;

/** The levels of an image pyramid. The arrays have levelCount + 1 elements each. */
typedef struct Pyramid {
    void** levelImages;            /**< first pixels of the images, for the caller to set; null at first */
    RoiSize* levelSizes;           /**< sizes of the levels; that of level 0 is the base */
    double* levelScales;           /**< 1.0, and for each level above 0 that of the level before times 1 / rate */
    int32_t* levelSteps;           /**< bytes from row to row, for the caller to set; 0 at first */
    PyramidLayerState* layerState; /**< a place where the caller may keep a state; null at first */
    int32_t levelCount;            /**< number of levels above the base */
} Pyramid;

/** size of the next smaller level */
VEKCV_API Status VEKCV_CALL vekiGetPyramidDownROI(RoiSize sourceRoi, RoiSize* destinationRoi, float rate);
/** sizes of the next larger level */
VEKCV_API Status VEKCV_CALL vekiGetPyramidUpROI(RoiSize sourceRoi, RoiSize* destinationMin, RoiSize* destinationMax,
                                                float rate);
/** makes a record of the levels of a pyramid */
VEKCV_API Status VEKCV_CALL vekiPyramidInitAlloc(Pyramid** pyramid, int32_t levels, RoiSize baseRoi, float rate);
/** releases a record */
VEKCV_API Status VEKCV_CALL vekiPyramidFree(Pyramid* pyramid);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup PyramidLayers Pyramid layers
 * The next smaller (Down) or larger (Up) level of an image pyramid, of any rate: smoothing with a kernel of any odd
 * size, along rows and along columns, and interpolation between neighbouring pixels. With r = kernelSize / 2,
 *
 *     smooth(s, x) = w(0) * s(x - r) + w(1) * s(x - r + 1) + ... + w(kernelSize - 1) * s(x + r)
 *     at(s, p)     = s(i) * (1 - f) + s(i + 1) * f,   i = p without its fraction, f = p - i;   s(i) where f is 0
 *
 *     Down         rows: t = smooth(source, x),  u = at(t, x * rate);  then the columns of u likewise
 *     Up           rows: t = at(source, x / rate),  u = smooth(t, x);  then the columns of u likewise
 *
 * Each operation is rounded to float, in the order that is written here, for all types; results of 8u and 16u are then
 * rounded to the nearest integer, of two equally near ones to the even one, and saturated. The weights w are the kernel
 * divided by its sum in float, to which floats are added one after the other and integers exactly; a kernel whose sum
 * is 0 is used as it is. Pixels before the first one and behind the last one are mirrored without repeating that one,
 * again and again where the kernel reaches further: those of the source (Down) or of t and u (Up); a single pixel
 * stands for all others. i and i + 1 are at most the index of the last pixel.
 *
 * A state holds the weights, tables, and memory for intermediate rows, for as many threads as are configured when it is
 * made; a later change of their number is harmless. It serves the direction, the type and the layout in the names of
 * its functions, and sources up to the size that it was made for: with the base of a pyramid, both states serve all of
 * its levels. It is one block of memory, released by the Free function. A state serves one call at a time.
 *
 * @param state               result of InitAlloc: the state; else the state
 * @param source              first pixel of the source
 * @param destination         first pixel of the result; must not overlap the source
 * @param sourceStep, destinationStep   bytes from row to row
 * @param sourceRoi           size of the source, at least 1 x 1; of InitAlloc, the greatest width and height of one
 * @param destinationRoi      size of the result: Down, that of vekiGetPyramidDownROI; Up, from the least to the
 *                            greatest of vekiGetPyramidUpROI
 * @param rate                ratio between the sizes of the two levels, above 1 and at most 10
 * @param kernel              kernelSize taps
 * @param kernelSize          odd, at least 3; it may be larger than the images
 * @param interpolationMode   2: between two pixels
 *
 * @retval StatusOk                 the result was written, or the state was made or released
 * @retval StatusNullPointer        a pointer is null
 * @retval StatusSizeError          width or height of the source is below 1; after all other checks: it is larger than
 *                                  the state serves, or destinationRoi is another size than described above; of
 *                                  InitAlloc, the size of the state is above 2147483647 bytes
 * @retval StatusStepError          a step is smaller than a row
 * @retval StatusStepNotMultiple    the step of a 16u or 32f image is not a multiple of 2 or 4
 * @retval StatusBadArgument        the state was not made by InitAlloc, or is that of other functions; of InitAlloc,
 *                                  interpolationMode is not 2, the rate is not above 1 and at most 10, or kernelSize is
 *                                  even or below 3
 * @retval StatusMemoryAllocation   there is no memory for the state, and *state is as it was
 *
 * The floating-point modes of the calling thread have no effect. Regions of 65536 pixels and more are shared among the
 * threads, where the region is the larger one of the two.
 * @{
 */
/** makes a state for the next smaller level */
VEKCV_API Status VEKCV_CALL vekiPyramidLayerDownInitAlloc_8u_C1R(PyramidLayerState** state, RoiSize sourceRoi,
                                                                 float rate, const int16_t* kernel, int32_t kernelSize,
                                                                 int32_t interpolationMode);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerDownInitAlloc_8u_C3R(PyramidLayerState** state, RoiSize sourceRoi,
                                                                 float rate, const int16_t* kernel, int32_t kernelSize,
                                                                 int32_t interpolationMode);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerDownInitAlloc_16u_C1R(PyramidLayerState** state, RoiSize sourceRoi,
                                                                  float rate, const int16_t* kernel, int32_t kernelSize,
                                                                  int32_t interpolationMode);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerDownInitAlloc_16u_C3R(PyramidLayerState** state, RoiSize sourceRoi,
                                                                  float rate, const int16_t* kernel, int32_t kernelSize,
                                                                  int32_t interpolationMode);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerDownInitAlloc_32f_C1R(PyramidLayerState** state, RoiSize sourceRoi,
                                                                  float rate, const float* kernel, int32_t kernelSize,
                                                                  int32_t interpolationMode);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerDownInitAlloc_32f_C3R(PyramidLayerState** state, RoiSize sourceRoi,
                                                                  float rate, const float* kernel, int32_t kernelSize,
                                                                  int32_t interpolationMode);
/** the next smaller level */
VEKCV_API Status VEKCV_CALL vekiPyramidLayerDown_8u_C1R(const uint8_t* source, int32_t sourceStep, RoiSize sourceRoi,
                                                        uint8_t* destination, int32_t destinationStep,
                                                        RoiSize destinationRoi, PyramidLayerState* state);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerDown_8u_C3R(const uint8_t* source, int32_t sourceStep, RoiSize sourceRoi,
                                                        uint8_t* destination, int32_t destinationStep,
                                                        RoiSize destinationRoi, PyramidLayerState* state);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerDown_16u_C1R(const uint16_t* source, int32_t sourceStep, RoiSize sourceRoi,
                                                         uint16_t* destination, int32_t destinationStep,
                                                         RoiSize destinationRoi, PyramidLayerState* state);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerDown_16u_C3R(const uint16_t* source, int32_t sourceStep, RoiSize sourceRoi,
                                                         uint16_t* destination, int32_t destinationStep,
                                                         RoiSize destinationRoi, PyramidLayerState* state);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerDown_32f_C1R(const float* source, int32_t sourceStep, RoiSize sourceRoi,
                                                         float* destination, int32_t destinationStep,
                                                         RoiSize destinationRoi, PyramidLayerState* state);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerDown_32f_C3R(const float* source, int32_t sourceStep, RoiSize sourceRoi,
                                                         float* destination, int32_t destinationStep,
                                                         RoiSize destinationRoi, PyramidLayerState* state);
/** releases a state for the next smaller level */
VEKCV_API Status VEKCV_CALL vekiPyramidLayerDownFree_8u_C1R(PyramidLayerState* state);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerDownFree_8u_C3R(PyramidLayerState* state);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerDownFree_16u_C1R(PyramidLayerState* state);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerDownFree_16u_C3R(PyramidLayerState* state);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerDownFree_32f_C1R(PyramidLayerState* state);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerDownFree_32f_C3R(PyramidLayerState* state);
/** makes a state for the next larger level */
VEKCV_API Status VEKCV_CALL vekiPyramidLayerUpInitAlloc_8u_C1R(PyramidLayerState** state, RoiSize sourceRoi, float rate,
                                                               const int16_t* kernel, int32_t kernelSize,
                                                               int32_t interpolationMode);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerUpInitAlloc_8u_C3R(PyramidLayerState** state, RoiSize sourceRoi, float rate,
                                                               const int16_t* kernel, int32_t kernelSize,
                                                               int32_t interpolationMode);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerUpInitAlloc_16u_C1R(PyramidLayerState** state, RoiSize sourceRoi,
                                                                float rate, const int16_t* kernel, int32_t kernelSize,
                                                                int32_t interpolationMode);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerUpInitAlloc_16u_C3R(PyramidLayerState** state, RoiSize sourceRoi,
                                                                float rate, const int16_t* kernel, int32_t kernelSize,
                                                                int32_t interpolationMode);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerUpInitAlloc_32f_C1R(PyramidLayerState** state, RoiSize sourceRoi,
                                                                float rate, const float* kernel, int32_t kernelSize,
                                                                int32_t interpolationMode);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerUpInitAlloc_32f_C3R(PyramidLayerState** state, RoiSize sourceRoi,
                                                                float rate, const float* kernel, int32_t kernelSize,
                                                                int32_t interpolationMode);
/** the next larger level */
VEKCV_API Status VEKCV_CALL vekiPyramidLayerUp_8u_C1R(const uint8_t* source, int32_t sourceStep, RoiSize sourceRoi,
                                                      uint8_t* destination, int32_t destinationStep,
                                                      RoiSize destinationRoi, PyramidLayerState* state);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerUp_8u_C3R(const uint8_t* source, int32_t sourceStep, RoiSize sourceRoi,
                                                      uint8_t* destination, int32_t destinationStep,
                                                      RoiSize destinationRoi, PyramidLayerState* state);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerUp_16u_C1R(const uint16_t* source, int32_t sourceStep, RoiSize sourceRoi,
                                                       uint16_t* destination, int32_t destinationStep,
                                                       RoiSize destinationRoi, PyramidLayerState* state);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerUp_16u_C3R(const uint16_t* source, int32_t sourceStep, RoiSize sourceRoi,
                                                       uint16_t* destination, int32_t destinationStep,
                                                       RoiSize destinationRoi, PyramidLayerState* state);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerUp_32f_C1R(const float* source, int32_t sourceStep, RoiSize sourceRoi,
                                                       float* destination, int32_t destinationStep,
                                                       RoiSize destinationRoi, PyramidLayerState* state);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerUp_32f_C3R(const float* source, int32_t sourceStep, RoiSize sourceRoi,
                                                       float* destination, int32_t destinationStep,
                                                       RoiSize destinationRoi, PyramidLayerState* state);
/** releases a state for the next larger level */
VEKCV_API Status VEKCV_CALL vekiPyramidLayerUpFree_8u_C1R(PyramidLayerState* state);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerUpFree_8u_C3R(PyramidLayerState* state);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerUpFree_16u_C1R(PyramidLayerState* state);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerUpFree_16u_C3R(PyramidLayerState* state);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerUpFree_32f_C1R(PyramidLayerState* state);
VEKCV_API Status VEKCV_CALL vekiPyramidLayerUpFree_32f_C3R(PyramidLayerState* state);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup RankFilters Minimum and maximum filters
 * Each pixel becomes the least or the greatest one in a rectangular window:
 *
 *     destination(x, y) = min or max of source(x - anchor.x + i, y - anchor.y + j)
 *                         for 0 <= i < maskSize.width, 0 <= j < maskSize.height
 *
 * A place outside of the region stands for the nearest pixel in it (BorderReplicate). Channels are independent of each
 * other. The time for a pixel hardly depends on the size of the window.
 *
 * Floats: NaN is passed over where the window has another value, and a window of only NaN gives NaN. -0 and +0 count as
 * equal, and which of them comes out is not promised; variants may differ in it.
 *
 * @param source            first pixel of the source
 * @param destination       first pixel of the result; must not overlap the source
 * @param sourceStep, destinationStep   bytes from row to row
 * @param roiSize           size of both images, at least 1 x 1
 * @param roiWidth          width of the region, or a greater one
 * @param maskSize          size of the window, at least 1 x 1; it may be larger than the image
 * @param anchor            the pixel of the window that lies on the pixel of the result, from (0, 0) to its last one
 * @param buffer            work buffer at any address, of the size that GetBufferSize gives for this or a greater width
 *                          and the same window; minimum and maximum have the same
 * @param bufferSize        receives the bytes of the work buffer: (2 * (r + 32) + 16) * maskSize.height + 32, with r
 *                          bytes in a row of the region
 *
 * @retval StatusOk                the result was written
 * @retval StatusNullPointer       an image or the buffer is null; of GetBufferSize, bufferSize
 * @retval StatusSizeError         width or height is below 1; of GetBufferSize also, after all other checks, that the
 *                                 size is above 2147483647
 * @retval StatusMaskSizeError     width or height of the window is below 1
 * @retval StatusAnchorError       the anchor lies outside of the window
 * @retval StatusStepError         a step is smaller than a row
 * @retval StatusStepNotMultiple   the step of a 32f image is not a multiple of 4
 *
 * The calling thread does all the work.
 * @{
 */
/** the least pixel in a window */
VEKCV_API Status VEKCV_CALL vekiFilterMinBorderReplicate_8u_C1R(const uint8_t* source, int32_t sourceStep,
                                                                uint8_t* destination, int32_t destinationStep,
                                                                RoiSize roiSize, RoiSize maskSize, ImagePoint anchor,
                                                                uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterMinBorderReplicate_8u_C3R(const uint8_t* source, int32_t sourceStep,
                                                                uint8_t* destination, int32_t destinationStep,
                                                                RoiSize roiSize, RoiSize maskSize, ImagePoint anchor,
                                                                uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterMinBorderReplicate_8u_C4R(const uint8_t* source, int32_t sourceStep,
                                                                uint8_t* destination, int32_t destinationStep,
                                                                RoiSize roiSize, RoiSize maskSize, ImagePoint anchor,
                                                                uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterMinBorderReplicate_32f_C1R(const float* source, int32_t sourceStep,
                                                                 float* destination, int32_t destinationStep,
                                                                 RoiSize roiSize, RoiSize maskSize, ImagePoint anchor,
                                                                 uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterMinBorderReplicate_32f_C3R(const float* source, int32_t sourceStep,
                                                                 float* destination, int32_t destinationStep,
                                                                 RoiSize roiSize, RoiSize maskSize, ImagePoint anchor,
                                                                 uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterMinBorderReplicate_32f_C4R(const float* source, int32_t sourceStep,
                                                                 float* destination, int32_t destinationStep,
                                                                 RoiSize roiSize, RoiSize maskSize, ImagePoint anchor,
                                                                 uint8_t* buffer);
/** the greatest pixel in a window */
VEKCV_API Status VEKCV_CALL vekiFilterMaxBorderReplicate_8u_C1R(const uint8_t* source, int32_t sourceStep,
                                                                uint8_t* destination, int32_t destinationStep,
                                                                RoiSize roiSize, RoiSize maskSize, ImagePoint anchor,
                                                                uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterMaxBorderReplicate_8u_C3R(const uint8_t* source, int32_t sourceStep,
                                                                uint8_t* destination, int32_t destinationStep,
                                                                RoiSize roiSize, RoiSize maskSize, ImagePoint anchor,
                                                                uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterMaxBorderReplicate_8u_C4R(const uint8_t* source, int32_t sourceStep,
                                                                uint8_t* destination, int32_t destinationStep,
                                                                RoiSize roiSize, RoiSize maskSize, ImagePoint anchor,
                                                                uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterMaxBorderReplicate_32f_C1R(const float* source, int32_t sourceStep,
                                                                 float* destination, int32_t destinationStep,
                                                                 RoiSize roiSize, RoiSize maskSize, ImagePoint anchor,
                                                                 uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterMaxBorderReplicate_32f_C3R(const float* source, int32_t sourceStep,
                                                                 float* destination, int32_t destinationStep,
                                                                 RoiSize roiSize, RoiSize maskSize, ImagePoint anchor,
                                                                 uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFilterMaxBorderReplicate_32f_C4R(const float* source, int32_t sourceStep,
                                                                 float* destination, int32_t destinationStep,
                                                                 RoiSize roiSize, RoiSize maskSize, ImagePoint anchor,
                                                                 uint8_t* buffer);
/** work buffer of vekiFilterMinBorderReplicate */
VEKCV_API Status VEKCV_CALL vekiFilterMinGetBufferSize_8u_C1R(int32_t roiWidth, RoiSize maskSize, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterMinGetBufferSize_8u_C3R(int32_t roiWidth, RoiSize maskSize, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterMinGetBufferSize_8u_C4R(int32_t roiWidth, RoiSize maskSize, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterMinGetBufferSize_32f_C1R(int32_t roiWidth, RoiSize maskSize, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterMinGetBufferSize_32f_C3R(int32_t roiWidth, RoiSize maskSize, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterMinGetBufferSize_32f_C4R(int32_t roiWidth, RoiSize maskSize, int32_t* bufferSize);
/** work buffer of vekiFilterMaxBorderReplicate */
VEKCV_API Status VEKCV_CALL vekiFilterMaxGetBufferSize_8u_C1R(int32_t roiWidth, RoiSize maskSize, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterMaxGetBufferSize_8u_C3R(int32_t roiWidth, RoiSize maskSize, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterMaxGetBufferSize_8u_C4R(int32_t roiWidth, RoiSize maskSize, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterMaxGetBufferSize_32f_C1R(int32_t roiWidth, RoiSize maskSize, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterMaxGetBufferSize_32f_C3R(int32_t roiWidth, RoiSize maskSize, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFilterMaxGetBufferSize_32f_C4R(int32_t roiWidth, RoiSize maskSize, int32_t* bufferSize);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup MorphologyStates Structuring elements
 * A structuring element, prepared for the operations that take it: what pixels around a pixel they look at. A flat
 * element is a mask of bytes, in which one that is not 0 is a member; a grey element has a height for each member, and
 * INT32_MIN (8u) or -FLT_MAX and below (32f) where there is none. Masks have maskSize.width * maskSize.height numbers,
 * row by row without padding. The member in column i and row j of the mask lies at the offset
 *
 *     (i - anchor.x, j - anchor.y)
 *
 * A state is one block of memory: InitAlloc allocates it, and Free releases it; or GetSize tells its size, and Init
 * makes it in memory of the caller, at any address, that needs no release. Both states are the same. A state serves the
 * type and the layout in the names of its functions, and regions up to the size that it was made for. It holds a copy
 * of the element, and memory for intermediate rows, for as many threads as were configured when it was made: GetSize
 * and Init are to be called with the same number of threads, and a later change of it is harmless. A state serves one
 * call at a time.
 *
 *     vekiMorphology          flat elements, of dilation and erosion
 *     vekiMorphologyCompound  flat elements, of opening, closing, top-hat, black-hat and gradient
 *     vekiGrayMorphology      grey elements, of grey dilation and erosion
 *
 * Heights that are NaN are not supported.
 *
 * @param state         result of InitAlloc: the state; else the state, or the memory for it
 * @param roiWidth      greatest width of a region
 * @param maxRoi        greatest width and height of a region
 * @param mask          the element
 * @param maskSize      its size, at least 1 x 1; it may be larger than the images
 * @param anchor        the place of the mask that lies on the pixel of the result, from (0, 0) to its last one
 * @param stateSize     receives the bytes of a state, which depend on the members of the mask
 *
 * @retval StatusOk                 the state was made or released, or its size was written
 * @retval StatusNullPointer        a pointer is null
 * @retval StatusSizeError          a width or a height of the region is below 1; or, after the check of the anchor, the
 *                                  size of the state is above 2147483647
 * @retval StatusMaskSizeError      width or height of the mask is below 1
 * @retval StatusAnchorError        the anchor lies outside of the mask
 * @retval StatusBadArgument        the mask has no member
 * @retval StatusMemoryAllocation   there is no memory for the state, and *state is as it was
 *
 * The calling thread does all the work.
 * @{
 */
/** A flat structuring element, and memory for intermediate rows. */
typedef struct MorphologyState MorphologyState;
/** A grey structuring element, and memory for intermediate rows. */
typedef struct GrayMorphologyState GrayMorphologyState;

/** makes a state for dilation and erosion */
VEKCV_API Status VEKCV_CALL vekiMorphologyInitAlloc_8u_C1R(MorphologyState** state, int32_t roiWidth,
                                                           const uint8_t* mask, RoiSize maskSize, ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiMorphologyInitAlloc_8u_C3R(MorphologyState** state, int32_t roiWidth,
                                                           const uint8_t* mask, RoiSize maskSize, ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiMorphologyInitAlloc_8u_C4R(MorphologyState** state, int32_t roiWidth,
                                                           const uint8_t* mask, RoiSize maskSize, ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiMorphologyInitAlloc_32f_C1R(MorphologyState** state, int32_t roiWidth,
                                                            const uint8_t* mask, RoiSize maskSize, ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiMorphologyInitAlloc_32f_C3R(MorphologyState** state, int32_t roiWidth,
                                                            const uint8_t* mask, RoiSize maskSize, ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiMorphologyInitAlloc_32f_C4R(MorphologyState** state, int32_t roiWidth,
                                                            const uint8_t* mask, RoiSize maskSize, ImagePoint anchor);
/** size of a state for dilation and erosion */
VEKCV_API Status VEKCV_CALL vekiMorphologyGetSize_8u_C1R(int32_t roiWidth, const uint8_t* mask, RoiSize maskSize,
                                                         int32_t* stateSize);
VEKCV_API Status VEKCV_CALL vekiMorphologyGetSize_8u_C3R(int32_t roiWidth, const uint8_t* mask, RoiSize maskSize,
                                                         int32_t* stateSize);
VEKCV_API Status VEKCV_CALL vekiMorphologyGetSize_8u_C4R(int32_t roiWidth, const uint8_t* mask, RoiSize maskSize,
                                                         int32_t* stateSize);
VEKCV_API Status VEKCV_CALL vekiMorphologyGetSize_32f_C1R(int32_t roiWidth, const uint8_t* mask, RoiSize maskSize,
                                                          int32_t* stateSize);
VEKCV_API Status VEKCV_CALL vekiMorphologyGetSize_32f_C3R(int32_t roiWidth, const uint8_t* mask, RoiSize maskSize,
                                                          int32_t* stateSize);
VEKCV_API Status VEKCV_CALL vekiMorphologyGetSize_32f_C4R(int32_t roiWidth, const uint8_t* mask, RoiSize maskSize,
                                                          int32_t* stateSize);
/** makes a state for dilation and erosion in memory of the caller */
VEKCV_API Status VEKCV_CALL vekiMorphologyInit_8u_C1R(MorphologyState* state, int32_t roiWidth, const uint8_t* mask,
                                                      RoiSize maskSize, ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiMorphologyInit_8u_C3R(MorphologyState* state, int32_t roiWidth, const uint8_t* mask,
                                                      RoiSize maskSize, ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiMorphologyInit_8u_C4R(MorphologyState* state, int32_t roiWidth, const uint8_t* mask,
                                                      RoiSize maskSize, ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiMorphologyInit_32f_C1R(MorphologyState* state, int32_t roiWidth, const uint8_t* mask,
                                                       RoiSize maskSize, ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiMorphologyInit_32f_C3R(MorphologyState* state, int32_t roiWidth, const uint8_t* mask,
                                                       RoiSize maskSize, ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiMorphologyInit_32f_C4R(MorphologyState* state, int32_t roiWidth, const uint8_t* mask,
                                                       RoiSize maskSize, ImagePoint anchor);
/** releases a state for dilation and erosion that InitAlloc made */
VEKCV_API Status VEKCV_CALL vekiMorphologyFree(MorphologyState* state);
/** makes a state for compound operations */
VEKCV_API Status VEKCV_CALL vekiMorphologyCompoundInitAlloc_8u_C1R(MorphologyState** state, RoiSize maxRoi,
                                                                   const uint8_t* mask, RoiSize maskSize,
                                                                   ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiMorphologyCompoundInitAlloc_8u_C3R(MorphologyState** state, RoiSize maxRoi,
                                                                   const uint8_t* mask, RoiSize maskSize,
                                                                   ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiMorphologyCompoundInitAlloc_8u_C4R(MorphologyState** state, RoiSize maxRoi,
                                                                   const uint8_t* mask, RoiSize maskSize,
                                                                   ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiMorphologyCompoundInitAlloc_32f_C1R(MorphologyState** state, RoiSize maxRoi,
                                                                    const uint8_t* mask, RoiSize maskSize,
                                                                    ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiMorphologyCompoundInitAlloc_32f_C3R(MorphologyState** state, RoiSize maxRoi,
                                                                    const uint8_t* mask, RoiSize maskSize,
                                                                    ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiMorphologyCompoundInitAlloc_32f_C4R(MorphologyState** state, RoiSize maxRoi,
                                                                    const uint8_t* mask, RoiSize maskSize,
                                                                    ImagePoint anchor);
/** size of a state for compound operations */
VEKCV_API Status VEKCV_CALL vekiMorphologyCompoundGetSize_8u_C1R(RoiSize maxRoi, const uint8_t* mask, RoiSize maskSize,
                                                                 int32_t* stateSize);
VEKCV_API Status VEKCV_CALL vekiMorphologyCompoundGetSize_8u_C3R(RoiSize maxRoi, const uint8_t* mask, RoiSize maskSize,
                                                                 int32_t* stateSize);
VEKCV_API Status VEKCV_CALL vekiMorphologyCompoundGetSize_8u_C4R(RoiSize maxRoi, const uint8_t* mask, RoiSize maskSize,
                                                                 int32_t* stateSize);
VEKCV_API Status VEKCV_CALL vekiMorphologyCompoundGetSize_32f_C1R(RoiSize maxRoi, const uint8_t* mask, RoiSize maskSize,
                                                                  int32_t* stateSize);
VEKCV_API Status VEKCV_CALL vekiMorphologyCompoundGetSize_32f_C3R(RoiSize maxRoi, const uint8_t* mask, RoiSize maskSize,
                                                                  int32_t* stateSize);
VEKCV_API Status VEKCV_CALL vekiMorphologyCompoundGetSize_32f_C4R(RoiSize maxRoi, const uint8_t* mask, RoiSize maskSize,
                                                                  int32_t* stateSize);
/** makes a state for compound operations in memory of the caller */
VEKCV_API Status VEKCV_CALL vekiMorphologyCompoundInit_8u_C1R(MorphologyState* state, RoiSize maxRoi,
                                                              const uint8_t* mask, RoiSize maskSize, ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiMorphologyCompoundInit_8u_C3R(MorphologyState* state, RoiSize maxRoi,
                                                              const uint8_t* mask, RoiSize maskSize, ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiMorphologyCompoundInit_8u_C4R(MorphologyState* state, RoiSize maxRoi,
                                                              const uint8_t* mask, RoiSize maskSize, ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiMorphologyCompoundInit_32f_C1R(MorphologyState* state, RoiSize maxRoi,
                                                               const uint8_t* mask, RoiSize maskSize,
                                                               ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiMorphologyCompoundInit_32f_C3R(MorphologyState* state, RoiSize maxRoi,
                                                               const uint8_t* mask, RoiSize maskSize,
                                                               ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiMorphologyCompoundInit_32f_C4R(MorphologyState* state, RoiSize maxRoi,
                                                               const uint8_t* mask, RoiSize maskSize,
                                                               ImagePoint anchor);
/** releases a state for compound operations that InitAlloc made */
VEKCV_API Status VEKCV_CALL vekiMorphologyCompoundFree(MorphologyState* state);
/** makes a state for grey dilation and erosion */
VEKCV_API Status VEKCV_CALL vekiGrayMorphologyInitAlloc_8u_C1R(GrayMorphologyState** state, RoiSize maxRoi,
                                                               const int32_t* mask, RoiSize maskSize,
                                                               ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiGrayMorphologyInitAlloc_32f_C1R(GrayMorphologyState** state, RoiSize maxRoi,
                                                                const float* mask, RoiSize maskSize, ImagePoint anchor);
/** size of a state for grey dilation and erosion */
VEKCV_API Status VEKCV_CALL vekiGrayMorphologyGetSize_8u_C1R(RoiSize maxRoi, const int32_t* mask, RoiSize maskSize,
                                                             int32_t* stateSize);
VEKCV_API Status VEKCV_CALL vekiGrayMorphologyGetSize_32f_C1R(RoiSize maxRoi, const float* mask, RoiSize maskSize,
                                                              int32_t* stateSize);
/** makes a state for grey dilation and erosion in memory of the caller */
VEKCV_API Status VEKCV_CALL vekiGrayMorphologyInit_8u_C1R(GrayMorphologyState* state, RoiSize maxRoi,
                                                          const int32_t* mask, RoiSize maskSize, ImagePoint anchor);
VEKCV_API Status VEKCV_CALL vekiGrayMorphologyInit_32f_C1R(GrayMorphologyState* state, RoiSize maxRoi,
                                                           const float* mask, RoiSize maskSize, ImagePoint anchor);
/** releases a state for grey dilation and erosion that InitAlloc made */
VEKCV_API Status VEKCV_CALL vekiGrayMorphologyFree_8u_C1R(GrayMorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiGrayMorphologyFree_32f_C1R(GrayMorphologyState* state);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup Morphology Morphology
 * Dilation, erosion and what they are combined to, with structuring elements. With the members' offsets (dx, dy) of an
 * element, and heights of a grey one:
 *
 *     vekiDilate      D(source) = max of source(x + dx, y + dy)
 *     vekiErode       E(source) = min of source(x + dx, y + dy)
 *     vekiGrayDilate  max of source(x + dx, y + dy) + height(dx, dy)
 *     vekiGrayErode   min of source(x + dx, y + dy) - height(dx, dy)
 *
 *     vekiMorphOpen      opening   D'(E(source))
 *     vekiMorphClose     closing   E'(D(source))
 *     vekiMorphTopHat    source - opening
 *     vekiMorphBlackHat  closing - source
 *     vekiMorphGradient  D(source) - E(source)
 *
 * D' and E' use the element mirrored at its anchor, with members at (-dx, -dy): so, away from the borders, an opening
 * is nowhere above the source and a closing nowhere below it, and to open or close once more changes nothing. A place
 * outside of the region stands for the nearest pixel in it, at each of the two steps. Channels are independent of each
 * other. 8u results are saturated once, at the end; 32f results are rounded once, and differences are plain ones.
 *
 * Floats: NaN is passed over where the element has another value, and NaN everywhere gives NaN. A sum of infinities of
 * both signs counts as NaN. -0 and +0 count as equal, and which of them comes out is not promised; variants may differ
 * in it.
 *
 * A full mask takes the same time as the filters of the minimum and maximum. Other flat masks are split into runs of
 * members in columns, and into rows and diagonals of runs; the time grows with their number. The time of a grey element
 * grows with the number of its members. The second step of a compound operation follows the first one by a few rows.
 *
 * @param source            first pixel of the source
 * @param destination       first pixel of the result; must not overlap the source
 * @param sourceStep, destinationStep   bytes from row to row
 * @param roiSize           size of both images, at least 1 x 1
 * @param borderType        BorderReplicate
 * @param state             the element, made for these operations, this type and this layout
 *
 * @retval StatusOk                the result was written
 * @retval StatusNullPointer       an image or the state is null
 * @retval StatusSizeError         width or height is below 1, or, after all other checks, above what the state was made
 *                                 for
 * @retval StatusStepError         a step is smaller than a row
 * @retval StatusStepNotMultiple   the step of a 32f image is not a multiple of 4
 * @retval StatusBadArgument       borderType is not BorderReplicate; then, the state was made for other operations,
 *                                 another type or another layout
 *
 * Regions of 262144 pixels and more are shared among the threads, at most as many as the state was made for.
 * @{
 */
/** dilation by a flat element */
VEKCV_API Status VEKCV_CALL vekiDilateBorderReplicate_8u_C1R(const uint8_t* source, int32_t sourceStep,
                                                             uint8_t* destination, int32_t destinationStep,
                                                             RoiSize roiSize, int32_t borderType,
                                                             MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiDilateBorderReplicate_8u_C3R(const uint8_t* source, int32_t sourceStep,
                                                             uint8_t* destination, int32_t destinationStep,
                                                             RoiSize roiSize, int32_t borderType,
                                                             MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiDilateBorderReplicate_8u_C4R(const uint8_t* source, int32_t sourceStep,
                                                             uint8_t* destination, int32_t destinationStep,
                                                             RoiSize roiSize, int32_t borderType,
                                                             MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiDilateBorderReplicate_32f_C1R(const float* source, int32_t sourceStep,
                                                              float* destination, int32_t destinationStep,
                                                              RoiSize roiSize, int32_t borderType,
                                                              MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiDilateBorderReplicate_32f_C3R(const float* source, int32_t sourceStep,
                                                              float* destination, int32_t destinationStep,
                                                              RoiSize roiSize, int32_t borderType,
                                                              MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiDilateBorderReplicate_32f_C4R(const float* source, int32_t sourceStep,
                                                              float* destination, int32_t destinationStep,
                                                              RoiSize roiSize, int32_t borderType,
                                                              MorphologyState* state);
/** erosion by a flat element */
VEKCV_API Status VEKCV_CALL vekiErodeBorderReplicate_8u_C1R(const uint8_t* source, int32_t sourceStep,
                                                            uint8_t* destination, int32_t destinationStep,
                                                            RoiSize roiSize, int32_t borderType,
                                                            MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiErodeBorderReplicate_8u_C3R(const uint8_t* source, int32_t sourceStep,
                                                            uint8_t* destination, int32_t destinationStep,
                                                            RoiSize roiSize, int32_t borderType,
                                                            MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiErodeBorderReplicate_8u_C4R(const uint8_t* source, int32_t sourceStep,
                                                            uint8_t* destination, int32_t destinationStep,
                                                            RoiSize roiSize, int32_t borderType,
                                                            MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiErodeBorderReplicate_32f_C1R(const float* source, int32_t sourceStep,
                                                             float* destination, int32_t destinationStep,
                                                             RoiSize roiSize, int32_t borderType,
                                                             MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiErodeBorderReplicate_32f_C3R(const float* source, int32_t sourceStep,
                                                             float* destination, int32_t destinationStep,
                                                             RoiSize roiSize, int32_t borderType,
                                                             MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiErodeBorderReplicate_32f_C4R(const float* source, int32_t sourceStep,
                                                             float* destination, int32_t destinationStep,
                                                             RoiSize roiSize, int32_t borderType,
                                                             MorphologyState* state);
/** dilation by a grey element */
VEKCV_API Status VEKCV_CALL vekiGrayDilateBorder_8u_C1R(const uint8_t* source, int32_t sourceStep, uint8_t* destination,
                                                        int32_t destinationStep, RoiSize roiSize, int32_t borderType,
                                                        GrayMorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiGrayDilateBorder_32f_C1R(const float* source, int32_t sourceStep, float* destination,
                                                         int32_t destinationStep, RoiSize roiSize, int32_t borderType,
                                                         GrayMorphologyState* state);
/** erosion by a grey element */
VEKCV_API Status VEKCV_CALL vekiGrayErodeBorder_8u_C1R(const uint8_t* source, int32_t sourceStep, uint8_t* destination,
                                                       int32_t destinationStep, RoiSize roiSize, int32_t borderType,
                                                       GrayMorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiGrayErodeBorder_32f_C1R(const float* source, int32_t sourceStep, float* destination,
                                                        int32_t destinationStep, RoiSize roiSize, int32_t borderType,
                                                        GrayMorphologyState* state);
/** opening: D'(E(source)) */
VEKCV_API Status VEKCV_CALL vekiMorphOpenBorderReplicate_8u_C1R(const uint8_t* source, int32_t sourceStep,
                                                                uint8_t* destination, int32_t destinationStep,
                                                                RoiSize roiSize, int32_t borderType,
                                                                MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphOpenBorderReplicate_8u_C3R(const uint8_t* source, int32_t sourceStep,
                                                                uint8_t* destination, int32_t destinationStep,
                                                                RoiSize roiSize, int32_t borderType,
                                                                MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphOpenBorderReplicate_8u_C4R(const uint8_t* source, int32_t sourceStep,
                                                                uint8_t* destination, int32_t destinationStep,
                                                                RoiSize roiSize, int32_t borderType,
                                                                MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphOpenBorderReplicate_32f_C1R(const float* source, int32_t sourceStep,
                                                                 float* destination, int32_t destinationStep,
                                                                 RoiSize roiSize, int32_t borderType,
                                                                 MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphOpenBorderReplicate_32f_C3R(const float* source, int32_t sourceStep,
                                                                 float* destination, int32_t destinationStep,
                                                                 RoiSize roiSize, int32_t borderType,
                                                                 MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphOpenBorderReplicate_32f_C4R(const float* source, int32_t sourceStep,
                                                                 float* destination, int32_t destinationStep,
                                                                 RoiSize roiSize, int32_t borderType,
                                                                 MorphologyState* state);
/** closing: E'(D(source)) */
VEKCV_API Status VEKCV_CALL vekiMorphCloseBorderReplicate_8u_C1R(const uint8_t* source, int32_t sourceStep,
                                                                 uint8_t* destination, int32_t destinationStep,
                                                                 RoiSize roiSize, int32_t borderType,
                                                                 MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphCloseBorderReplicate_8u_C3R(const uint8_t* source, int32_t sourceStep,
                                                                 uint8_t* destination, int32_t destinationStep,
                                                                 RoiSize roiSize, int32_t borderType,
                                                                 MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphCloseBorderReplicate_8u_C4R(const uint8_t* source, int32_t sourceStep,
                                                                 uint8_t* destination, int32_t destinationStep,
                                                                 RoiSize roiSize, int32_t borderType,
                                                                 MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphCloseBorderReplicate_32f_C1R(const float* source, int32_t sourceStep,
                                                                  float* destination, int32_t destinationStep,
                                                                  RoiSize roiSize, int32_t borderType,
                                                                  MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphCloseBorderReplicate_32f_C3R(const float* source, int32_t sourceStep,
                                                                  float* destination, int32_t destinationStep,
                                                                  RoiSize roiSize, int32_t borderType,
                                                                  MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphCloseBorderReplicate_32f_C4R(const float* source, int32_t sourceStep,
                                                                  float* destination, int32_t destinationStep,
                                                                  RoiSize roiSize, int32_t borderType,
                                                                  MorphologyState* state);
/** top-hat: source - opening */
VEKCV_API Status VEKCV_CALL vekiMorphTopHatBorderReplicate_8u_C1R(const uint8_t* source, int32_t sourceStep,
                                                                  uint8_t* destination, int32_t destinationStep,
                                                                  RoiSize roiSize, int32_t borderType,
                                                                  MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphTopHatBorderReplicate_8u_C3R(const uint8_t* source, int32_t sourceStep,
                                                                  uint8_t* destination, int32_t destinationStep,
                                                                  RoiSize roiSize, int32_t borderType,
                                                                  MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphTopHatBorderReplicate_8u_C4R(const uint8_t* source, int32_t sourceStep,
                                                                  uint8_t* destination, int32_t destinationStep,
                                                                  RoiSize roiSize, int32_t borderType,
                                                                  MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphTopHatBorderReplicate_32f_C1R(const float* source, int32_t sourceStep,
                                                                   float* destination, int32_t destinationStep,
                                                                   RoiSize roiSize, int32_t borderType,
                                                                   MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphTopHatBorderReplicate_32f_C3R(const float* source, int32_t sourceStep,
                                                                   float* destination, int32_t destinationStep,
                                                                   RoiSize roiSize, int32_t borderType,
                                                                   MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphTopHatBorderReplicate_32f_C4R(const float* source, int32_t sourceStep,
                                                                   float* destination, int32_t destinationStep,
                                                                   RoiSize roiSize, int32_t borderType,
                                                                   MorphologyState* state);
/** black-hat: closing - source */
VEKCV_API Status VEKCV_CALL vekiMorphBlackHatBorderReplicate_8u_C1R(const uint8_t* source, int32_t sourceStep,
                                                                    uint8_t* destination, int32_t destinationStep,
                                                                    RoiSize roiSize, int32_t borderType,
                                                                    MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphBlackHatBorderReplicate_8u_C3R(const uint8_t* source, int32_t sourceStep,
                                                                    uint8_t* destination, int32_t destinationStep,
                                                                    RoiSize roiSize, int32_t borderType,
                                                                    MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphBlackHatBorderReplicate_8u_C4R(const uint8_t* source, int32_t sourceStep,
                                                                    uint8_t* destination, int32_t destinationStep,
                                                                    RoiSize roiSize, int32_t borderType,
                                                                    MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphBlackHatBorderReplicate_32f_C1R(const float* source, int32_t sourceStep,
                                                                     float* destination, int32_t destinationStep,
                                                                     RoiSize roiSize, int32_t borderType,
                                                                     MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphBlackHatBorderReplicate_32f_C3R(const float* source, int32_t sourceStep,
                                                                     float* destination, int32_t destinationStep,
                                                                     RoiSize roiSize, int32_t borderType,
                                                                     MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphBlackHatBorderReplicate_32f_C4R(const float* source, int32_t sourceStep,
                                                                     float* destination, int32_t destinationStep,
                                                                     RoiSize roiSize, int32_t borderType,
                                                                     MorphologyState* state);
/** morphological gradient: D(source) - E(source) */
VEKCV_API Status VEKCV_CALL vekiMorphGradientBorderReplicate_8u_C1R(const uint8_t* source, int32_t sourceStep,
                                                                    uint8_t* destination, int32_t destinationStep,
                                                                    RoiSize roiSize, int32_t borderType,
                                                                    MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphGradientBorderReplicate_8u_C3R(const uint8_t* source, int32_t sourceStep,
                                                                    uint8_t* destination, int32_t destinationStep,
                                                                    RoiSize roiSize, int32_t borderType,
                                                                    MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphGradientBorderReplicate_8u_C4R(const uint8_t* source, int32_t sourceStep,
                                                                    uint8_t* destination, int32_t destinationStep,
                                                                    RoiSize roiSize, int32_t borderType,
                                                                    MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphGradientBorderReplicate_32f_C1R(const float* source, int32_t sourceStep,
                                                                     float* destination, int32_t destinationStep,
                                                                     RoiSize roiSize, int32_t borderType,
                                                                     MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphGradientBorderReplicate_32f_C3R(const float* source, int32_t sourceStep,
                                                                     float* destination, int32_t destinationStep,
                                                                     RoiSize roiSize, int32_t borderType,
                                                                     MorphologyState* state);
VEKCV_API Status VEKCV_CALL vekiMorphGradientBorderReplicate_32f_C4R(const float* source, int32_t sourceStep,
                                                                     float* destination, int32_t destinationStep,
                                                                     RoiSize roiSize, int32_t borderType,
                                                                     MorphologyState* state);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup MorphReconstruct Morphological reconstruction
 * What a marker reaches in an image. By dilation, the marker becomes min(marker, source) everywhere, and then, until
 * nothing changes any more,
 *
 *     marker(x, y) = min(source(x, y), maximum of the marker over (x, y) and its neighbours)
 *
 * By erosion: the same with maximum and minimum exchanged. A pixel has four neighbours (NormL1) or eight (NormInf);
 * there are none outside of the region. The result is unique, whatever the order in which pixels are visited. They are
 * visited in scans of the image and then in the order of a first-in first-out queue, after Vincent, "Morphological
 * Grayscale Reconstruction in Image Analysis: Applications and Efficient Algorithms" (1993). Photographs take a few
 * scans; a time much longer than linear takes images made for it.
 *
 * With the marker source - h, dilation takes h off the peaks of an image, and the domes above them are what it lost.
 * With a marker that is the image along its edges and the largest value elsewhere, erosion fills its holes.
 *
 * In floats a NaN of the marker counts as -infinity (erosion: +infinity), so other pixels spread over it, and a NaN of
 * the source bounds nothing. Zeros of the result are +0.
 *
 * @param source       first pixel of the source, which bounds the result
 * @param marker       first pixel of the marker, which becomes the result; must not overlap the source
 * @param sourceStep, markerStep   bytes from row to row
 * @param roiSize      size of both images, at least 1 x 1
 * @param norm         which pixels are neighbours: NormL1 (four) or NormInf (eight)
 * @param buffer       work buffer at any address, of the size that GetBufferSize gives for the same region
 * @param bufferSize   receives the bytes of the work buffer, for all types and operations:
 *                     8 * (width * height / 32 + 1) + 32, by integer division
 *
 * @retval StatusOk                the result was written
 * @retval StatusNullPointer       an image or the buffer is null; of GetBufferSize, bufferSize
 * @retval StatusSizeError         width or height is below 1; of GetBufferSize also that the size is above 2147483647
 * @retval StatusStepError         a step is smaller than a row
 * @retval StatusStepNotMultiple   the step of a 16u or 32f image is not a multiple of 2 or 4
 * @retval StatusBadArgument       norm is neither NormL1 nor NormInf
 *
 * The calling thread does all the work.
 * @{
 */
/** reconstruction by dilation */
VEKCV_API Status VEKCV_CALL vekiMorphReconstructDilate_8u_C1IR(const uint8_t* source, int32_t sourceStep,
                                                               uint8_t* marker, int32_t markerStep, RoiSize roiSize,
                                                               int32_t norm, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiMorphReconstructDilate_16u_C1IR(const uint16_t* source, int32_t sourceStep,
                                                                uint16_t* marker, int32_t markerStep, RoiSize roiSize,
                                                                int32_t norm, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiMorphReconstructDilate_32f_C1IR(const float* source, int32_t sourceStep, float* marker,
                                                                int32_t markerStep, RoiSize roiSize, int32_t norm,
                                                                uint8_t* buffer);
/** work buffer of vekiMorphReconstructDilate: a quarter of a byte for each pixel, and some more */
VEKCV_API Status VEKCV_CALL vekiMorphReconstructDilateGetBufferSize_8u_C1R(RoiSize roiSize, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiMorphReconstructDilateGetBufferSize_16u_C1R(RoiSize roiSize, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiMorphReconstructDilateGetBufferSize_32f_C1R(RoiSize roiSize, int32_t* bufferSize);
/** reconstruction by erosion */
VEKCV_API Status VEKCV_CALL vekiMorphReconstructErode_8u_C1IR(const uint8_t* source, int32_t sourceStep,
                                                              uint8_t* marker, int32_t markerStep, RoiSize roiSize,
                                                              int32_t norm, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiMorphReconstructErode_16u_C1IR(const uint16_t* source, int32_t sourceStep,
                                                               uint16_t* marker, int32_t markerStep, RoiSize roiSize,
                                                               int32_t norm, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiMorphReconstructErode_32f_C1IR(const float* source, int32_t sourceStep, float* marker,
                                                               int32_t markerStep, RoiSize roiSize, int32_t norm,
                                                               uint8_t* buffer);
/** work buffer of vekiMorphReconstructErode: a quarter of a byte for each pixel, and some more */
VEKCV_API Status VEKCV_CALL vekiMorphReconstructErodeGetBufferSize_8u_C1R(RoiSize roiSize, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiMorphReconstructErodeGetBufferSize_16u_C1R(RoiSize roiSize, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiMorphReconstructErodeGetBufferSize_32f_C1R(RoiSize roiSize, int32_t* bufferSize);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup Canny Canny edge detector
 * The edges of an image from its derivatives: 255 where there is one, 0 elsewhere. After Canny, "A Computational
 * Approach to Edge Detection" (1986).
 *
 * The magnitude m of a pixel is |dx| + |dy|: of 16s saturated at 65535, of 32f rounded to float. Magnitudes below
 * lowThreshold count as 0, and so do those outside of the image. A pixel with m != 0 remains a candidate where it is
 * larger than its neighbours across the edge. With ax = |dx| and ay = |dy|, and the products rounded to float,
 *
 *     gradient           where                        candidate when
 *     horizontal         ay < ax * 0.41421357f        left < m and right <= m
 *     vertical           ax * 2.4142137f < ay         above < m and below <= m
 *     falling diagonal   else, dx and dy of one sign  upper left < m and lower right < m
 *     rising diagonal    else                         upper right < m and lower left < m
 *
 * so of two equal neighbours along a row or a column the left or upper one remains, and equal neighbours along a
 * diagonal suppress each other. Signs are sign bits; 0 has that of a positive number. Candidates with m > highThreshold
 * are edges, and so is every candidate with an edge among its eight neighbours. A pixel whose magnitude is NaN is no
 * candidate, nor is one that is compared with such a neighbour.
 *
 * @param derivativeX, derivativeY   first pixel of the derivatives in x and in y, as vekiFilterSobelNegVertBorder and
 *                                   vekiFilterSobelHorizBorder give them; both with the other sign give the same edges
 * @param destination     first pixel of the result; must not overlap the derivatives
 * @param derivativeXStep, derivativeYStep, destinationStep   bytes from row to row
 * @param roiSize         size of the images, at least 1 x 1
 * @param lowThreshold    at least 0; 16s: the fraction is cut off
 * @param highThreshold   at least lowThreshold; 16s: the fraction is cut off
 * @param buffer          work buffer at any address, of the size that vekiCannyGetSize gives for the same region
 * @param bufferSize      receives the bytes of the work buffer, which serves both types
 *
 * @retval StatusOk                the result was written
 * @retval StatusNullPointer       an image or the buffer is null; of vekiCannyGetSize, bufferSize
 * @retval StatusSizeError         width or height is below 1; of vekiCannyGetSize also that the size is above
 *                                 2147483647
 * @retval StatusStepError         a step is smaller than a row
 * @retval StatusStepNotMultiple   the step of a derivative is not a multiple of 2 or 4
 * @retval StatusBadArgument       lowThreshold is below 0 or above highThreshold, or a threshold is NaN
 *
 * Regions of 65536 pixels and more are shared among the threads.
 * @{
 */
/** work buffer of vekiCanny: 5 bytes for each pixel and its frame, 9 from 65533 columns or rows on, and some more */
VEKCV_API Status VEKCV_CALL vekiCannyGetSize(RoiSize roiSize, int32_t* bufferSize);
/** edges from derivatives */
VEKCV_API Status VEKCV_CALL vekiCanny_16s8u_C1R(const int16_t* derivativeX, int32_t derivativeXStep,
                                                const int16_t* derivativeY, int32_t derivativeYStep,
                                                uint8_t* destination, int32_t destinationStep, RoiSize roiSize,
                                                float lowThreshold, float highThreshold, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiCanny_32f8u_C1R(const float* derivativeX, int32_t derivativeXStep,
                                                const float* derivativeY, int32_t derivativeYStep, uint8_t* destination,
                                                int32_t destinationStep, RoiSize roiSize, float lowThreshold,
                                                float highThreshold, uint8_t* buffer);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup Corners Corner measures
 * Eigenvalues and eigenvectors of the matrix of the products of the derivatives around each pixel (after Harris and
 * Stephens, "A Combined Corner and Edge Detector", 1988, and Shi and Tomasi, "Good Features to Track", 1994). With dx
 * and dy the results of vekiFilterSobelNegVertBorder and vekiFilterSobelHorizBorder (kernelType 0) or of
 * vekiFilterScharrVertBorder and vekiFilterScharrHorizBorder (1), of 8u to 16s or of 32f, with BorderReplicate, their
 * products are rounded to float and averaged by vekiFilterLowpassBorder_32f_C1R over averageWindow x averageWindow
 * pixels, with BorderReplicate too:
 *
 *     a = mean of dx dx, b = mean of dx dy, c = mean of dy dy, root = sqrt((a - c) (a - c) + 4 (b b))
 *     larger eigenvalue  = (a + c + root) (scale / 2)
 *     smaller eigenvalue = (a + c - root) (scale / 2)
 *
 * in single precision, where scale is 1 / (255 * 2^(2 apertureSize - 2)): 1 / 4080 or 1 / 65280; of Scharr derivatives,
 * times 0.6125. It is the same for 8u and 32f, so equal pixel values have equal measures. Numbers beyond the range of
 * floats give infinities and NaN.
 *
 * vekiMinEigenVal writes the smaller eigenvalue. vekiEigenValsVecs writes six floats for each pixel: the larger and the
 * smaller eigenvalue, x and y of the unit vector of the larger one, x and y of that of the smaller one. The first
 * vector is the direction in which the image changes most; its x is not negative, and its y is not where x is 0. The
 * second one is (-y, x) of the first. Where both eigenvalues are equal, as in an image that does not change, the
 * vectors are (1, 0) and (0, 1).
 *
 * @param source          first pixel of the source
 * @param minEigen        first pixel of the smaller eigenvalues; must not overlap the source
 * @param eigen           first of the six floats of the first pixel; must not overlap the source
 * @param sourceStep, minEigenStep, eigenStep   bytes from row to row
 * @param roiSize         size of the source, at least 1 x 1
 * @param kernelType      0 for Sobel derivatives, 1 for Scharr derivatives
 * @param apertureSize    side of the kernels of the derivatives: 3 or 5, of Scharr 3
 * @param averageWindow   side of the window over which products are averaged: 3 or 5
 * @param buffer          work buffer at any address, of the size that GetBufferSize gives for the same region,
 *                        aperture, window and number of threads
 * @param bufferSize      receives the bytes of the work buffer: for each thread a band of at most 32 rows of the
 *                        derivatives, of a product and of three means
 *
 * @retval StatusOk                the result was written
 * @retval StatusNullPointer       an image or the buffer is null; of GetBufferSize, bufferSize
 * @retval StatusSizeError         width or height is below 1; or, after the checks of steps and kernelType,
 *                                 apertureSize is neither 3 nor 5, or 5 with Scharr derivatives, or averageWindow is
 *                                 neither 3 nor 5; of GetBufferSize also, after all other checks, that the size is
 *                                 above 2147483647
 * @retval StatusStepError         a step is smaller than a row
 * @retval StatusStepNotMultiple   the step of a 32f image is not a multiple of 4
 * @retval StatusBadArgument       kernelType is neither 0 nor 1
 *
 * Regions of 262144 pixels and more are shared among the threads.
 * @{
 */
/** smaller eigenvalue */
VEKCV_API Status VEKCV_CALL vekiMinEigenVal_8u32f_C1R(const uint8_t* source, int32_t sourceStep, float* minEigen,
                                                      int32_t minEigenStep, RoiSize roiSize, int32_t kernelType,
                                                      int32_t apertureSize, int32_t averageWindow, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiMinEigenVal_32f_C1R(const float* source, int32_t sourceStep, float* minEigen,
                                                    int32_t minEigenStep, RoiSize roiSize, int32_t kernelType,
                                                    int32_t apertureSize, int32_t averageWindow, uint8_t* buffer);
/** work buffer of vekiMinEigenVal */
VEKCV_API Status VEKCV_CALL vekiMinEigenValGetBufferSize_8u32f_C1R(RoiSize roiSize, int32_t apertureSize,
                                                                   int32_t averageWindow, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiMinEigenValGetBufferSize_32f_C1R(RoiSize roiSize, int32_t apertureSize,
                                                                 int32_t averageWindow, int32_t* bufferSize);
/** eigenvalues and eigenvectors */
VEKCV_API Status VEKCV_CALL vekiEigenValsVecs_8u32f_C1R(const uint8_t* source, int32_t sourceStep, float* eigen,
                                                        int32_t eigenStep, RoiSize roiSize, int32_t kernelType,
                                                        int32_t apertureSize, int32_t averageWindow, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiEigenValsVecs_32f_C1R(const float* source, int32_t sourceStep, float* eigen,
                                                      int32_t eigenStep, RoiSize roiSize, int32_t kernelType,
                                                      int32_t apertureSize, int32_t averageWindow, uint8_t* buffer);
/** work buffer of vekiEigenValsVecs */
VEKCV_API Status VEKCV_CALL vekiEigenValsVecsGetBufferSize_8u32f_C1R(RoiSize roiSize, int32_t apertureSize,
                                                                     int32_t averageWindow, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiEigenValsVecsGetBufferSize_32f_C1R(RoiSize roiSize, int32_t apertureSize,
                                                                   int32_t averageWindow, int32_t* bufferSize);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup Peaks Local extrema
 * The pixels of a frame less image that are extrema of their neighbourhood and farther from 0 than a threshold. A pixel
 * v is a peak if |v| > threshold and
 *
 *     v > 0 and v is the maximum of its neighbourhood, or
 *     v <= 0 and v is the minimum of its neighbourhood.
 *
 * The neighbourhood is the pixel with its eight neighbours (norm 1) or with the four beside, above and below it (norm
 * 0). Equal neighbours do not matter, so every pixel of a plateau is a peak; floats count as equal up to the smallest
 * normal number, 2^-126. A NaN is no peak and is no neighbour of one. Above a threshold below 0 are all numbers, above
 * one that is NaN none.
 *
 * Peaks are written in the order of the rows, those of a row from left to right. The search ends with the last pixel or
 * with peak maxPeakCount.
 *
 * @param source         first pixel of the image
 * @param sourceStep     bytes from row to row
 * @param roiSize        size of the image, at least 1 x 1
 * @param threshold      what the absolute value of a peak is above
 * @param peaks          receives the positions of the peaks; there is room for maxPeakCount
 * @param maxPeakCount   the most peaks that are written, at least 1
 * @param peakCount      receives how many were written
 * @param norm           1 for eight neighbours, 0 for four; other than in NormType
 * @param border         how many rows and columns at each edge are left out, at least 1 and at most half of the width
 *                       and of the height, compared in single precision; these are neighbours still
 * @param buffer         work buffer at any address, of the size that GetBufferSize gives for this or a greater width
 * @param roiWidth       width of the image
 * @param bufferSize     receives the bytes of the work buffer: (roiWidth + 5) / 4 * 128 + 32, by integer division
 *
 * @retval StatusOk                peaks and peakCount were written
 * @retval StatusNullPointer       source, peaks, peakCount or buffer is null; of GetBufferSize, bufferSize
 * @retval StatusSizeError         width, height, maxPeakCount or border is below 1, or border is too large; of
 *                                 GetBufferSize also, after all other checks, that the size is above 2147483647
 * @retval StatusStepError         the step is smaller than a row
 * @retval StatusStepNotMultiple   the step is not a multiple of 4
 * @retval StatusBadArgument       norm is neither 0 nor 1
 *
 * The calling thread does all the work.
 * @{
 */
/** positions of the extrema */
VEKCV_API Status VEKCV_CALL vekiFindPeaks3x3_32f_C1R(const float* source, int32_t sourceStep, RoiSize roiSize,
                                                     float threshold, ImagePoint* peaks, int32_t maxPeakCount,
                                                     int32_t* peakCount, int32_t norm, int32_t border, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFindPeaks3x3_32s_C1R(const int32_t* source, int32_t sourceStep, RoiSize roiSize,
                                                     int32_t threshold, ImagePoint* peaks, int32_t maxPeakCount,
                                                     int32_t* peakCount, int32_t norm, int32_t border, uint8_t* buffer);
/** work buffer of vekiFindPeaks3x3 */
VEKCV_API Status VEKCV_CALL vekiFindPeaks3x3GetBufferSize_32f_C1R(int32_t roiWidth, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiFindPeaks3x3GetBufferSize_32s_C1R(int32_t roiWidth, int32_t* bufferSize);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup HaarClassifier Haar classifiers
 * Stages of a cascade of Haar-like features. The cascade is after Viola and Jones, "Rapid Object Detection using a
 * Boosted Cascade of Simple Features" (2001), the tilted features are after Lienhart and Maydt, "An Extended Set of
 * Haar-like Features for Rapid Object Detection" (2002). One call evaluates one stage at every position of a window in
 * an image. Calling stage after stage with the same mask is a cascade: positions that fail are cleared, and the next
 * stage leaves them out.
 *
 * A feature is one or more weighted rectangles of the window, a threshold and two values. With the norm n of a position
 * (its standard deviation, from vekiRectStdDev) and the sums of pixels in the rectangles from an integral image,
 *
 *     response = sum over the rectangles of weight * (I(A) - I(B) - I(C) + I(D))
 *     sum     += threshold * n > response ? valueBelow : valueAbove
 *
 * and a position passes a stage when its sum over all features is not below stageThreshold. I(p) is element
 * (x + p.x, y + p.y) of the integral image for the window at (x, y). The corners of a rectangle (x, y, w, h) are
 *
 *     upright    A (x + w, y + h)          B (x, y + h)       C (x + w, y)       D (x, y)
 *     tilted     A (x + w - h, y + w + h)  B (x - h, y + h)   C (x + w, y + w)   D (x, y)
 *
 * the tilted one being a rectangle that begins at D and runs w pixels down to the right and h pixels down to the left.
 *
 * Building. The InitAlloc functions copy the features into one block of memory. Upright classifiers keep them in the
 * order of their numbers of rectangles: those of two, those of three, then all others, each in the order in which they
 * were given; tilted ones keep the given order. The values are added in that order. The block is released by
 * vekiHaarClassifierFree, of either type. A classifier of floats goes with the 32f and 32s32f functions, one of
 * integers with the 32s functions.
 *
 * Tilting. vekiTiltHaarFeatures makes chosen features of an upright classifier tilted ones, once: features are chosen
 * by the index at which they were given. From their upright corners (x, y, w, h), with tiltOrientation other than 0 and
 * with 0,
 *
 *     32f, not 0   A (x + w - h, y + w + h)  B (x - h, y + h)      C (x + w, y + w)      D (x, y)
 *     32f, 0       A (x, y + h)              B (x - h, y)          C (x + w, y + h - w)  D (x + w - h, y - w)
 *     32s, not 0   A (x, y + 2 * w)          B (x - w, y + w)      C (x + w, y + w)      D (x, y)
 *     32s, 0       A (x, y + h)              B (x - w, y + h - w)  C (x + w, y + h - w)  D (x, y + h - 2 * w)
 *
 * so those of integers become squares of side w. The vekiApplyMixedHaarClassifier functions read tilted features from
 * the tilted integral image, one row below and one column to the right: element (x + 1 + p.x, y + 1 + p.y), and upright
 * ones from the integral image. The vekiApplyHaarClassifier functions read all of them from the integral image.
 *
 * Arithmetic. The sums of rectangles, responses, and sums of values are
 *
 *                rectangle                              response                              sum of values
 *     32f        float, ((A - B) - C) + D               float                                 float
 *     32s32f     32-bit integer, wraps, made a float    float                                 float
 *     32s        32-bit integer, wraps                  32-bit integer, wraps                 32-bit integer, wraps
 *     mixed 32s  32-bit integer, wraps                  64-bit integer of products that wrap  32-bit integer, wraps
 *                                                       to 32 bits, times 2^-scaleFactor
 *
 * The products of a feature are added in the order in which its rectangles were given, each operation on floats rounded
 * to float, and threshold * n > response is compared in float. Of 32s, threshold * n wraps to 32 bits; of mixed 32s it
 * has 64 bits. The mixed 32s response wraps to 64 bits; with a scale factor of -64 and less it is 0. The plain 32s
 * function ignores scaleFactor.
 *
 * vekiApplyHaarClassifier_32f_C1R takes the number of positions that are set in *positiveCount, as the stage before
 * left it: with 0 it returns at once and leaves the mask as it is; else the number has no effect on the result. Where
 * the first weight of every feature, without its fraction, is -1, it takes -1 for the first weight of features of two
 * and three rectangles, and the given weight for all others. All other functions take the weights as they were given.
 *
 * @param state             result of InitAlloc: the classifier; else the classifier
 * @param rectangles        the rectangles of feature 0, those of feature 1, and so on
 * @param weights           the weight of each rectangle
 * @param thresholds, valuesBelow, valuesAbove   of each feature
 * @param rectangleCounts   the number of rectangles of each feature, at least 1
 * @param featureCount      number of features, which may be 0; there must be a first rectangle even then
 * @param windowSize        receives the size of the window: the largest C.x and the largest A.y of all rectangles, at
 *                          least 0; 0 x 0 without features
 * @param featureMask       a byte for each feature, in the order in which they were given; not 0 tilts the feature,
 *                          if it is one of the first 8388608
 * @param tiltOrientation   see above
 * @param integral          element of the integral image at the first window position
 * @param tiltedIntegral    element of the tilted integral image at the first window position
 * @param norm              norm of the first window position
 * @param mask              mask of the first window position: positions with 0 are left out and stay 0, those that fail
 *                          become 0, those that pass keep their value
 * @param integralStep, tiltedIntegralStep, normStep, maskStep   bytes from row to row
 * @param roiSize           number of window positions, at least 1 x 1. The integral image goes on beyond them, to the
 *                          right and below by the size of the window, which tilting changes; the tilted one by a
 *                          column and a row more. Where corners of tilted rectangles have negative coordinates, the
 *                          images go on to the left and above as far
 * @param positiveCount     receives the number of positions that passed
 * @param stageThreshold    the least sum of values that passes
 * @param scaleFactor       of mixed 32s, not above 0: responses are multiplied by 2^-scaleFactor
 *
 * @retval StatusOk                 the results were written, or the classifier was made, tilted or released
 * @retval StatusNullPointer        a pointer is null
 * @retval StatusSizeError          width or height is below 1; featureCount is below 0, or a rectangle count is below 1
 * @retval StatusStepError          a step is smaller than a row of the window positions
 * @retval StatusStepNotMultiple    the step of an integral image or of the norms is not a multiple of 4
 * @retval StatusBadArgument        a rectangle has a negative corner or no pixel, or, of tilted classifiers, x + 1 < h;
 *                                  upright classifiers of floats leave *state as it was then, all others make it null.
 *                                  Of vekiTiltHaarFeatures: the classifier has tilted features already. Of mixed 32s:
 *                                  scaleFactor is above 0
 * @retval StatusMemoryAllocation   there is no memory for the classifier, which is found out before the rectangles are
 *                                  checked where invalid ones make *state null; or, of vekiApplyHaarClassifier, for
 *                                  40 bytes (20 in 32-bit builds) for each rectangle, which it needs while it runs.
 *                                  vekiApplyMixedHaarClassifier needs none
 *
 * Regions of 65536 pixels and more are shared among the threads. Any number of threads may apply a classifier at once,
 * but not while it is tilted or released.
 * @{
 */
/** Haar-like features, their thresholds and values. */
typedef struct HaarClassifier HaarClassifier;

/** builds a classifier of upright features */
VEKCV_API Status VEKCV_CALL vekiHaarClassifierInitAlloc_32f(HaarClassifier** state, const ImageRect* rectangles,
                                                            const float* weights, const float* thresholds,
                                                            const float* valuesBelow, const float* valuesAbove,
                                                            const int32_t* rectangleCounts, int32_t featureCount);
VEKCV_API Status VEKCV_CALL vekiHaarClassifierInitAlloc_32s(HaarClassifier** state, const ImageRect* rectangles,
                                                            const int32_t* weights, const int32_t* thresholds,
                                                            const int32_t* valuesBelow, const int32_t* valuesAbove,
                                                            const int32_t* rectangleCounts, int32_t featureCount);
/** builds a classifier of tilted features */
VEKCV_API Status VEKCV_CALL vekiTiltedHaarClassifierInitAlloc_32f(HaarClassifier** state, const ImageRect* rectangles,
                                                                  const float* weights, const float* thresholds,
                                                                  const float* valuesBelow, const float* valuesAbove,
                                                                  const int32_t* rectangleCounts, int32_t featureCount);
VEKCV_API Status VEKCV_CALL vekiTiltedHaarClassifierInitAlloc_32s(HaarClassifier** state, const ImageRect* rectangles,
                                                                  const int32_t* weights, const int32_t* thresholds,
                                                                  const int32_t* valuesBelow,
                                                                  const int32_t* valuesAbove,
                                                                  const int32_t* rectangleCounts, int32_t featureCount);
/** releases a classifier */
VEKCV_API Status VEKCV_CALL vekiHaarClassifierFree_32f(HaarClassifier* state);
VEKCV_API Status VEKCV_CALL vekiHaarClassifierFree_32s(HaarClassifier* state);
/** size of the window of a classifier */
VEKCV_API Status VEKCV_CALL vekiGetHaarClassifierSize_32f(const HaarClassifier* state, RoiSize* windowSize);
VEKCV_API Status VEKCV_CALL vekiGetHaarClassifierSize_32s(const HaarClassifier* state, RoiSize* windowSize);
/** tilts features of an upright classifier */
VEKCV_API Status VEKCV_CALL vekiTiltHaarFeatures_32f(const uint8_t* featureMask, int32_t tiltOrientation,
                                                     HaarClassifier* state);
VEKCV_API Status VEKCV_CALL vekiTiltHaarFeatures_32s(const uint8_t* featureMask, int32_t tiltOrientation,
                                                     HaarClassifier* state);
/** evaluates a stage at all positions of its window */
VEKCV_API Status VEKCV_CALL vekiApplyHaarClassifier_32f_C1R(const float* integral, int32_t integralStep,
                                                            const float* norm, int32_t normStep, uint8_t* mask,
                                                            int32_t maskStep, RoiSize roiSize, int32_t* positiveCount,
                                                            float stageThreshold, const HaarClassifier* state);
VEKCV_API Status VEKCV_CALL vekiApplyHaarClassifier_32s32f_C1R(const int32_t* integral, int32_t integralStep,
                                                               const float* norm, int32_t normStep, uint8_t* mask,
                                                               int32_t maskStep, RoiSize roiSize,
                                                               int32_t* positiveCount, float stageThreshold,
                                                               const HaarClassifier* state);
VEKCV_API Status VEKCV_CALL vekiApplyHaarClassifier_32s_C1RSfs(const int32_t* integral, int32_t integralStep,
                                                               const int32_t* norm, int32_t normStep, uint8_t* mask,
                                                               int32_t maskStep, RoiSize roiSize,
                                                               int32_t* positiveCount, int32_t stageThreshold,
                                                               const HaarClassifier* state, int32_t scaleFactor);
/** evaluates a stage at all positions of its window, with upright and tilted features */
VEKCV_API Status VEKCV_CALL vekiApplyMixedHaarClassifier_32f_C1R(const float* integral, int32_t integralStep,
                                                                 const float* tiltedIntegral,
                                                                 int32_t tiltedIntegralStep, const float* norm,
                                                                 int32_t normStep, uint8_t* mask, int32_t maskStep,
                                                                 RoiSize roiSize, int32_t* positiveCount,
                                                                 float stageThreshold, const HaarClassifier* state);
VEKCV_API Status VEKCV_CALL vekiApplyMixedHaarClassifier_32s32f_C1R(const int32_t* integral, int32_t integralStep,
                                                                    const int32_t* tiltedIntegral,
                                                                    int32_t tiltedIntegralStep, const float* norm,
                                                                    int32_t normStep, uint8_t* mask, int32_t maskStep,
                                                                    RoiSize roiSize, int32_t* positiveCount,
                                                                    float stageThreshold, const HaarClassifier* state);
VEKCV_API Status VEKCV_CALL vekiApplyMixedHaarClassifier_32s_C1RSfs(
    const int32_t* integral, int32_t integralStep, const int32_t* tiltedIntegral, int32_t tiltedIntegralStep,
    const int32_t* norm, int32_t normStep, uint8_t* mask, int32_t maskStep, RoiSize roiSize, int32_t* positiveCount,
    int32_t stageThreshold, const HaarClassifier* state, int32_t scaleFactor);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup HoughLine Hough lines
 * Straight lines through the pixels of a binary image that are not 0, such as edges, by the standard Hough transform.
 * After Duda and Hart, "Use of the Hough Transformation to Detect Lines and Curves in Pictures" (1972). A line is the
 * set of points with rho = x * cos(theta) + y * sin(theta), with the first pixel of the region at (0, 0); so theta is
 * the direction of its normal and |rho| its distance from that pixel.
 *
 * The accumulator has a row of cells for each angle. With s = width + height,
 *
 *     theta of row n    n * deltaTheta                 n = 0 ... floor(3.14159 / deltaTheta)
 *     rho of cell r     r * deltaRho - s               r = 0 ... rhoCount - 1, rhoCount = floor((2 s + 1) / deltaRho)
 *     a point votes     in every row, for the cell r nearest to x * c + (y * d + o), of two equally near ones the even
 *                       one; for the first or the last cell where that lies outside of the row
 *     c, d, o           cos(theta) / deltaRho, sin(theta) / deltaRho and s / deltaRho, computed in double
 *
 * where c, d, o, the coordinates, both products and both sums are rounded to float. The number of rows is computed in
 * double, rhoCount in float, and the theta and rho that are reported are computed in double and rounded to float. All
 * of this is rounded to nearest, whatever the floating-point modes of the calling thread are.
 *
 * A cell is a line when it has at least threshold votes, and more than its neighbours: the cells of the same rho in the
 * rows before and behind, and of the next smaller and larger rho in its row. A neighbour with as many votes counts as
 * less where it has the larger theta or rho; so a rectangle of equal cells gives one line. Neighbours outside of the
 * accumulator count as less. Of more than maxLineCount lines those with the most votes are reported. Lines with more
 * votes come first, of equal ones those of smaller theta, then those of smaller rho.
 *
 * vekiHoughLine_Region considers only cells with minRho <= rho <= maxRho and minTheta <= theta <= maxTheta, as they
 * would be reported. The others do not exist for it, as neighbours neither; it takes less time for fewer angles.
 *
 * @param source         first pixel of the image; every value but 0 is a point
 * @param sourceStep     bytes from row to row; at least 1, and not compared with the width: rows may overlap
 * @param roiSize        size of the image, at least 1 x 1
 * @param deltaRho       distance between cells, in pixels: above 0, at most width + height
 * @param deltaTheta     angle between rows of cells, in radians: above 0, at most 3.14159f
 * @param threshold      least number of votes of a line, at least 1
 * @param minRho, maxRho       range of rho; may be infinite
 * @param minTheta, maxTheta   range of theta; may be infinite
 * @param lines          receives rho and theta of each line, one after the other: room for 2 * maxLineCount floats
 * @param maxLineCount   most lines that are reported, at least 1
 * @param lineCount      receives the number of lines; floats behind those of the last line stay as they are
 * @param buffer         work buffer at any address, of the size that vekiHoughLineGetSize gives for the same values
 * @param bufferSize     receives the bytes of the work buffer, for both operations: with rows = floor(3.14159 /
 *                       deltaTheta) and rhoCount as above, either being 2147483647 where it is larger,
 *                       (4 width + 48) height + 16 maxLineCount + 8 (rows + 1) + 16 rhoCount + 256 modulo 2^32
 *
 * @retval StatusOk                  the lines were written, or the size was written
 * @retval StatusBufferSizeWarning   of vekiHoughLineGetSize: the size that was written is negative. As an unsigned
 *                                   number it is right where the work buffer needs less than 4294967296 bytes
 * @retval StatusNullPointer         source, lines, lineCount or the buffer is null; of vekiHoughLineGetSize, bufferSize
 * @retval StatusStepError           sourceStep is below 1
 * @retval StatusSizeError           width or height is below 1; or, not of vekiHoughLineGetSize, maxLineCount is below
 *                                   1 or, after all other checks, the work buffer needs 4294967296 bytes or more
 * @retval StatusBadArgument         deltaRho or deltaTheta is not above 0; or, not of vekiHoughLineGetSize, deltaRho is
 *                                   above width + height, deltaTheta is above 3.14159f, or threshold is below 1
 * @retval StatusRangeError          minRho is not at most maxRho, or minTheta is not at most maxTheta
 *
 * The calling thread does all the work.
 * @{
 */
/** work buffer of vekiHoughLine */
VEKCV_API Status VEKCV_CALL vekiHoughLineGetSize_8u_C1R(RoiSize roiSize, float deltaRho, float deltaTheta,
                                                        int32_t maxLineCount, int32_t* bufferSize);
/** straight lines */
VEKCV_API Status VEKCV_CALL vekiHoughLine_8u32f_C1R(const uint8_t* source, int32_t sourceStep, RoiSize roiSize,
                                                    float deltaRho, float deltaTheta, int32_t threshold, float* lines,
                                                    int32_t maxLineCount, int32_t* lineCount, uint8_t* buffer);
/** straight lines in ranges of rho and theta */
VEKCV_API Status VEKCV_CALL vekiHoughLine_Region_8u32f_C1R(const uint8_t* source, int32_t sourceStep, RoiSize roiSize,
                                                           float deltaRho, float deltaTheta, int32_t threshold,
                                                           float minRho, float maxRho, float minTheta, float maxTheta,
                                                           float* lines, int32_t maxLineCount, int32_t* lineCount,
                                                           uint8_t* buffer);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup SampleLine Line samples
 * The pixels of an image along a line, as the midpoint algorithm selects them: one for each step along the longer
 * direction, from the start to the end, both of which belong to them. With dx = end.x - start.x, dy = end.y - start.y,
 * the longer direction is that of columns where |dx| <= |dy|. With major and minor the larger and the smaller of |dx|
 * and |dy|, and error = major at the start, each step goes one pixel along the longer direction and subtracts 2 * minor
 * from the error; where that makes it negative, the step also goes one pixel along the other direction and adds
 * 2 * major.
 *
 * @param source        first pixel of the image
 * @param sourceStep    bytes from row to row; need not be a whole number of elements
 * @param roiSize       size of the image, at least 1 x 1
 * @param destination   receives max(|dx|, |dy|) + 1 pixels with all their channels; must not overlap the source
 * @param start, end    the ends of the line, in the image; may be the same pixel
 *
 * @retval StatusOk              all samples were written
 * @retval StatusNullPointer     source or destination is null
 * @retval StatusSizeError       width or height is below 1
 * @retval StatusStepError       the step is smaller than a row
 * @retval StatusOutOfRange      an end of the line is not in the image
 * @retval StatusCountOverflow   the number of samples does not fit an int32_t; no line in an image has so many
 *
 * The calling thread does all the work.
 * @{
 */
/** pixels along a line */
VEKCV_API Status VEKCV_CALL vekiSampleLine_8u_C1R(const uint8_t* source, int32_t sourceStep, RoiSize roiSize,
                                                  uint8_t* destination, ImagePoint start, ImagePoint end);
VEKCV_API Status VEKCV_CALL vekiSampleLine_8u_C3R(const uint8_t* source, int32_t sourceStep, RoiSize roiSize,
                                                  uint8_t* destination, ImagePoint start, ImagePoint end);
VEKCV_API Status VEKCV_CALL vekiSampleLine_16u_C1R(const uint16_t* source, int32_t sourceStep, RoiSize roiSize,
                                                   uint16_t* destination, ImagePoint start, ImagePoint end);
VEKCV_API Status VEKCV_CALL vekiSampleLine_16u_C3R(const uint16_t* source, int32_t sourceStep, RoiSize roiSize,
                                                   uint16_t* destination, ImagePoint start, ImagePoint end);
VEKCV_API Status VEKCV_CALL vekiSampleLine_32f_C1R(const float* source, int32_t sourceStep, RoiSize roiSize,
                                                   float* destination, ImagePoint start, ImagePoint end);
VEKCV_API Status VEKCV_CALL vekiSampleLine_32f_C3R(const float* source, int32_t sourceStep, RoiSize roiSize,
                                                   float* destination, ImagePoint start, ImagePoint end);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup FastArctan Arctangent
 * Angles of vectors (x, y) in degrees, from a polynomial of second degree. With ax = |x|, ay = |y|, and every operation
 * rounded to float,
 *
 *     t = min(ax, ay) / max(ax, ay, 1e-8f)
 *     a = (-15.8131895f * t + 61.0941963f) * t - 0.14050041f
 *     a = 90 - a    where ax < ay
 *     a = 180 - a   where x < 0
 *     a = 360 - a   where y < 0
 *
 * Vectors with a coordinate of 1e-8 and more get angles that are at most 0.15 degrees off. They are not cut to the
 * range from 0 to 360: at t = 0 the polynomial gives -0.14050041, so (1, 0) and (0, 0) have an angle below 0, and x > 0
 * with y slightly below 0 has one above 360. -0 is not below 0. A NaN in x or y, or infinity in both, gives NaN.
 *
 * @param y, x     coordinates of the vectors
 * @param angle    receives the angles; may be the same array as x or y
 * @param length   number of vectors, at least 1
 *
 * @retval StatusOk            all angles were written
 * @retval StatusNullPointer   an array is null
 * @retval StatusSizeError     length is below 1
 *
 * The calling thread does all the work.
 * @{
 */
/** angles of vectors, roughly */
VEKCV_API Status VEKCV_CALL vekibFastArctan_32f(const float* y, const float* x, float* angle, int32_t length);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup GradientColorToGray Colour gradients to grey
 * One channel from the three of an image, such as the magnitudes of the gradients of its colours, by a norm that is
 * scaled so that three equal channels give their value:
 *
 *     NormInf   max(max(c0, c1), c2)
 *     NormL1    ((c0 + c1) + c2) / 3
 *     NormL2    sqrt(((c0 * c0 + c1 * c1) + c2 * c2) / 3)
 *
 * Of 8u and 16u this is exact and then rounded to the nearest integer; no result is halfway between two. So NormL1 of
 * 8u is ((c0 + c1 + c2) * 1365 + 2048) >> 12. In floats every operation is rounded to float, and max(a, b) is a where
 * a > b, else b, also where one of them is NaN.
 *
 * @param source        first pixel of the image of three channels
 * @param destination   first pixel of the result; must not overlap the source
 * @param sourceStep, destinationStep   bytes from row to row
 * @param roiSize       size of both images, at least 1 x 1
 * @param norm          NormInf, NormL1 or NormL2
 *
 * @retval StatusOk                the result was written
 * @retval StatusNullPointer       an image is null
 * @retval StatusSizeError         width or height is below 1
 * @retval StatusStepError         a step is smaller than a row
 * @retval StatusStepNotMultiple   the step of a 16u or 32f image is not a multiple of 2 or 4
 * @retval StatusBadArgument       norm is none of the three
 *
 * Regions of 262144 pixels and more are shared among the threads.
 * @{
 */
/** three channels to one by a norm */
VEKCV_API Status VEKCV_CALL vekiGradientColorToGray_8u_C3C1R(const uint8_t* source, int32_t sourceStep,
                                                             uint8_t* destination, int32_t destinationStep,
                                                             RoiSize roiSize, int32_t norm);
VEKCV_API Status VEKCV_CALL vekiGradientColorToGray_16u_C3C1R(const uint16_t* source, int32_t sourceStep,
                                                              uint16_t* destination, int32_t destinationStep,
                                                              RoiSize roiSize, int32_t norm);
VEKCV_API Status VEKCV_CALL vekiGradientColorToGray_32f_C3C1R(const float* source, int32_t sourceStep,
                                                              float* destination, int32_t destinationStep,
                                                              RoiSize roiSize, int32_t norm);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup DistanceTransform Distance transforms
 * For each pixel the length of the shortest way to a pixel of the source that is 0, by steps to pixels of the region
 * that have weights: a to the next pixel of a row or column, b to the next one of a diagonal and, in masks of 5 x 5, c
 * to the pixel at the move of a knight (chamfer distances). After Borgefors, "Distance transformations in digital
 * images" (1986).
 *
 * With d the result, S the largest value of its type (255, 65535 or 3.4028235e38) and d outside of the region counting
 * as more than S:
 *
 *     forward, rows from top to bottom, pixels from left to right:
 *         d(x, y) = 0 where the source is 0, else the least of S and, for 3 x 3,
 *             d(x - 1, y) + a, d(x - 1, y - 1) + b, d(x, y - 1) + a, d(x + 1, y - 1) + b
 *     backward, rows from bottom to top, pixels from right to left:
 *         d(x, y) = the least of itself and
 *             d(x + 1, y) + a, d(x + 1, y + 1) + b, d(x, y + 1) + a, d(x - 1, y + 1) + b
 *
 * where the terms with b are left out when 2 a <= b. For 5 x 5, the weights are first made no larger than those of
 * other steps to the same pixel, a' = min(a, 3 c) and b' = min(b, 2 a, 2 c), and there are steps of two sides and of
 * two diagonals, e = min(2 a', 2 b', 2 c) and f = min(c + a', 2 b'). The pixels of the mask that come before, in the
 * row of the pixel and in the two above it (backward the same, mirrored), count with
 *
 *     f  c  e  c  f
 *     c  b' a' b' c
 *     e  a' 0
 *
 * But where a knight is no help, that is with m = min(2 a, b) when a + m <= c, and of 8u32f unless
 * c - (a + m) <= -1e-7 (a + m) in double, the result is that of 3 x 3 with a and b.
 *
 * Integer results are exact, however large the weights are. Floats are sums in the order of the steps, rounded after
 * each; e, f and the other derived weights are rounded to float, too. Where steps aside and back are shorter than
 * straight ones, such as with b < a in 3 x 3, two passes may miss the shortest way, and the result is that of the
 * passes.
 *
 * vekiGetDistanceTransformMask gives the usual weights, of 3 x 3 two and of 5 x 5 three:
 *
 *     maskSize, norm    32s         32f
 *     3, NormInf        1, 1        1, 1
 *     3, NormL1         1, 2        1, 2
 *     3, NormL2         2, 3        0.955f, 1.3693f
 *     5, NormInf        1, 1, 2     1, 1, 2
 *     5, NormL1         1, 2, 3     1, 2, 3
 *     5, NormL2         5, 7, 11    1, 1.4f, 2.1969f
 *
 * of which those of NormL2 approach Euclidean distances: the floats pixels, the integers 2 or 5 times as much.
 *
 * @param source             first pixel of the source; every value but 0 is a pixel whose distance is computed
 * @param destination        first pixel of the result; an 8u result may be the source, with the same step; otherwise
 *                           they must not overlap
 * @param sourceDestination  first pixel of an image that is the source and becomes the result
 * @param sourceStep, destinationStep, sourceDestinationStep   bytes from row to row
 * @param roiSize            size of the images, at least 1 x 1
 * @param metrics            a and b, of 5 x 5 also c, all above 0; of vekiGetDistanceTransformMask where they are
 *                           written
 * @param maskSize           3 or 5
 * @param norm               NormInf, NormL1 or NormL2
 * @param maskCode           maskSize * 10 + norm
 *
 * @retval StatusOk                the result was written
 * @retval StatusNullPointer       an image or metrics is null
 * @retval StatusSizeError         width or height is below 1; maskSize, or maskCode / 10, is neither 3 nor 5
 * @retval StatusStepError         a step is smaller than a row
 * @retval StatusStepNotMultiple   the step of a 16u or 32f image is not a multiple of 2 or 4
 * @retval StatusMetricError       a weight that counts is not above 0, or NaN
 * @retval StatusBadArgument       norm is none of the three, which is checked last; or, which is checked first of all,
 *                                 the remainder of maskCode / 10 is none of them
 *
 * The floating-point modes of the calling thread have no effect. The calling thread does all the work.
 * @{
 */
/** standard weights */
VEKCV_API Status VEKCV_CALL vekiGetDistanceTransformMask_32s(int32_t maskSize, int32_t norm, int32_t* metrics);
VEKCV_API Status VEKCV_CALL vekiGetDistanceTransformMask_32f(int32_t maskSize, int32_t norm, float* metrics);
VEKCV_API Status VEKCV_CALL vekiGetDistanceTransformMask(int32_t maskCode, float* metrics);
/** by steps to the 8 neighbours */
VEKCV_API Status VEKCV_CALL vekiDistanceTransform_3x3_8u_C1R(const uint8_t* source, int32_t sourceStep,
                                                             uint8_t* destination, int32_t destinationStep,
                                                             RoiSize roiSize, const int32_t* metrics);
VEKCV_API Status VEKCV_CALL vekiDistanceTransform_3x3_8u_C1IR(uint8_t* sourceDestination, int32_t sourceDestinationStep,
                                                              RoiSize roiSize, const int32_t* metrics);
VEKCV_API Status VEKCV_CALL vekiDistanceTransform_3x3_8u16u_C1R(const uint8_t* source, int32_t sourceStep,
                                                                uint16_t* destination, int32_t destinationStep,
                                                                RoiSize roiSize, const int32_t* metrics);
VEKCV_API Status VEKCV_CALL vekiDistanceTransform_3x3_8u32f_C1R(const uint8_t* source, int32_t sourceStep,
                                                                float* destination, int32_t destinationStep,
                                                                RoiSize roiSize, const float* metrics);
/** by steps to the 8 neighbours and the 8 at a knight's move */
VEKCV_API Status VEKCV_CALL vekiDistanceTransform_5x5_8u_C1R(const uint8_t* source, int32_t sourceStep,
                                                             uint8_t* destination, int32_t destinationStep,
                                                             RoiSize roiSize, const int32_t* metrics);
VEKCV_API Status VEKCV_CALL vekiDistanceTransform_5x5_8u_C1IR(uint8_t* sourceDestination, int32_t sourceDestinationStep,
                                                              RoiSize roiSize, const int32_t* metrics);
VEKCV_API Status VEKCV_CALL vekiDistanceTransform_5x5_8u16u_C1R(const uint8_t* source, int32_t sourceStep,
                                                                uint16_t* destination, int32_t destinationStep,
                                                                RoiSize roiSize, const int32_t* metrics);
VEKCV_API Status VEKCV_CALL vekiDistanceTransform_5x5_8u32f_C1R(const uint8_t* source, int32_t sourceStep,
                                                                float* destination, int32_t destinationStep,
                                                                RoiSize roiSize, const float* metrics);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup TrueDistanceTransform Exact distance transform
 * For each pixel the Euclidean distance, in pixels, to the nearest pixel of the source that is 0:
 *
 *     destination(x, y) = sqrt(minimum of (x - i)^2 + (y - j)^2 over all (i, j) where the source is 0)
 *
 * The minimum is rounded to float, which changes none below 16777216, and the square root once more. Where the region
 * has no zero pixel the minimum is 3.4028235e38. The time depends little on how far zero pixels are: for a row it grows
 * by its length times the logarithm of that.
 *
 * @param source        first pixel of the source; every value but 0 is a pixel whose distance is computed
 * @param destination   first pixel of the result; must not overlap the source
 * @param sourceStep, destinationStep   bytes from row to row
 * @param roiSize       size of the images, at least 1 x 1
 * @param buffer        work buffer at any address, of the size that GetBufferSize gives for the same region and number
 *                      of threads
 * @param bufferSize    receives the bytes of the work buffer: with n the larger one of width and height, rounded up to
 *                      a multiple of 4, 24 n + 56 for each configured thread
 *
 * @retval StatusOk                the result was written
 * @retval StatusNullPointer       an image or the buffer is null; of GetBufferSize, bufferSize
 * @retval StatusSizeError         width or height is below 1; of GetBufferSize also that the size is above 2147483647
 * @retval StatusStepError         a step is smaller than a row
 * @retval StatusStepNotMultiple   destinationStep is not a multiple of 4
 *
 * The floating-point modes of the calling thread have no effect. Regions of 65536 pixels and more are shared among the
 * threads.
 * @{
 */
/** work buffer of vekiTrueDistanceTransform_8u32f_C1R */
VEKCV_API Status VEKCV_CALL vekiTrueDistanceTransformGetBufferSize_8u32f_C1R(RoiSize roiSize, int32_t* bufferSize);
/** Euclidean distances */
VEKCV_API Status VEKCV_CALL vekiTrueDistanceTransform_8u32f_C1R(const uint8_t* source, int32_t sourceStep,
                                                                float* destination, int32_t destinationStep,
                                                                RoiSize roiSize, uint8_t* buffer);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup FastMarching Fast marching
 * When a front arrives that starts at the edge of a mask and takes a unit of time for a pixel: the order in which
 * vekiInpaint restores pixels, and how far they are from the known ones. Pixels whose mask is not 0 are unknown. Of a
 * pixel, four others are neighbours: left, right, above and below; there are none outside of the region.
 *
 *     pixel                                    distance
 *     unknown, with a known neighbour          1
 *     unknown                                  T, or 999999 where all pixels are unknown
 *     known, with an unknown neighbour         -0.0000000001
 *     known, T at most radius + 0.00001        -T
 *     known                                    0
 *
 * T is the solution of the following equations, the only one. a is the smaller T of the neighbours to the left and to
 * the right, b that of those above and below. The pixels of the first line have T = 1, those of the third one have T =
 * 0.0000000001, and neighbours that are not there or have no T count as 999999; no T is above that either.
 *
 *     T = (a + b + sqrt(2 - (a - b)^2)) / 2    where |a - b| < 1
 *     T = min(a, b) + 1                        elsewhere
 *
 * They are computed in double precision and rounded to float, again and again for the pixels whose neighbours have
 * changed, which only lowers T, until nothing changes. The result does not depend on the order of the pixels. The time
 * that this takes is proportional to the pixels within the mask and within the radius around it, but for large masks it
 * also has a small part that grows with pixels times depth. After Sethian, "A fast marching level set method for
 * monotonically advancing fronts" (1996).
 *
 * @param mask           first pixel of the mask
 * @param distance       first pixel of the result
 * @param maskStep, distanceStep   bytes from row to row
 * @param roiSize        size of both images, at least 1 x 1
 * @param radius         how far known pixels get their distance, such as that of vekiInpaintInitAlloc; any number:
 *                       infinity stands for all known pixels, and NaN and what is below 0.7 for those with an unknown
 *                       neighbour
 * @param buffer         work buffer at any address, of the size that GetBufferSize gives for the same region
 * @param bufferSize     receives the bytes of the work buffer: (height + 34) * (w + 5) + 40, where w is the width
 *                       rounded up to a multiple of 32
 *
 * @retval StatusOk                the result was written
 * @retval StatusNullPointer       an image or the buffer is null; of GetBufferSize, bufferSize
 * @retval StatusSizeError         width or height is below 1; of GetBufferSize also that the size is above 2147483647
 * @retval StatusStepError         a step is smaller than a row
 * @retval StatusStepNotMultiple   distanceStep is not a multiple of 4
 *
 * The floating-point modes of the calling thread have no effect. The calling thread does all the work.
 * @{
 */
/** work buffer of vekiFastMarching_8u32f_C1R: a byte for each pixel, and some more */
VEKCV_API Status VEKCV_CALL vekiFastMarchingGetBufferSize_8u32f_C1R(RoiSize roiSize, int32_t* bufferSize);
/** arrival times */
VEKCV_API Status VEKCV_CALL vekiFastMarching_8u32f_C1R(const uint8_t* mask, int32_t maskStep, float* distance,
                                                       int32_t distanceStep, RoiSize roiSize, float radius,
                                                       uint8_t* buffer);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup Inpaint Inpainting
 * Pixels restored from their surroundings: scratches, text or objects vanish from a picture. Pixels whose mask is not 0
 * are unknown. Their distance T, that of vekiFastMarching with the same mask and radius, tells the order: they are
 * restored one after the other, the smallest T first; of equal T the upper row first, and in a row the left pixel
 * first. All pixels of the result that are known from the start are those of the source.
 *
 * An unknown pixel p becomes the weighted mean of the pixels q that are known by then, at most a radius away: |p - q|^2
 * <= radius^2. With d = |p - q| and g, the slope of T at p, the weights are
 *
 *     method 0   1 / 4096 / d^3 * max(|(p - q) . g|, 2.5e-25) / (1 + |T(p) - T(q)|)
 *     method 1   1 / 4096 / d^4 / (1 + |T(p) - T(q)|)
 *
 * so close pixels, those as far from the edge of the mask, and with method 0 those in the direction in which the front
 * moves weigh most. Method 0 is after Telea, "An image inpainting technique based on the fast marching method" (2004);
 * method 1 keeps more of the contrast. Each component of g is the difference to the neighbour with the smaller T of the
 * two in that direction, left and right or above and below, over which the front came: T(p) - T(left) or T(right) -
 * T(p); of two equal ones to the left or upper one. It is 0 where neither is smaller than T(p).
 *
 * The means are rounded to the nearest integer. Channels have the same weights. A pixel gets 0 where the sum of its
 * weights is below 0.0001, as it is where all pixels are unknown; with the distances of vekiFastMarching nowhere else.
 * Any other distances are used, too, with NaN and what is above 999999 as 999999, and what is below -999999 as that.
 * Weights and sums are floats.
 *
 * A state holds all that follows from the mask and the distances, which need not exist any longer, and memory for the
 * pixels around the mask. It is one block of memory, released by the Free function, and serves any number of images,
 * one call at a time.
 *
 * @param state          result of InitAlloc: the state; else the state
 * @param mask           first pixel of the mask
 * @param distance       first pixel of the distances
 * @param source         first pixel of the source
 * @param destination    first pixel of the result; may be the same image as the source
 * @param maskStep, distanceStep, sourceStep, destinationStep   bytes from row to row
 * @param roiSize        size of the images, at least 1 x 1; of vekiInpaint, that of the mask of the state
 * @param radius         of the surroundings of a pixel, at least 1; infinity stands for all pixels. The time of a call
 *                       grows with its square
 * @param method         0 or 1
 *
 * @retval StatusOk                 the result was written, or the state was made or released
 * @retval StatusNullPointer        a pointer is null
 * @retval StatusSizeError          width or height is below 1; then, of vekiInpaint, the width is not that of the
 *                                  state, or the height is not
 * @retval StatusStepError          a step is smaller than a row
 * @retval StatusStepNotMultiple    distanceStep is not a multiple of 4
 * @retval StatusBadArgument        method is neither 0 nor 1; radius is below 1 or NaN; the state is that of the other
 *                                  number of channels
 * @retval StatusMemoryAllocation   there is no memory for the state, and *state is as it was
 *
 * The floating-point modes of the calling thread have no effect. The calling thread does all the work.
 * @{
 */
/** What pixels to restore, and how. */
typedef struct InpaintState InpaintState;

/** makes a state */
VEKCV_API Status VEKCV_CALL vekiInpaintInitAlloc_8u_C1R(InpaintState** state, const float* distance,
                                                        int32_t distanceStep, const uint8_t* mask, int32_t maskStep,
                                                        RoiSize roiSize, float radius, int32_t method);
VEKCV_API Status VEKCV_CALL vekiInpaintInitAlloc_8u_C3R(InpaintState** state, const float* distance,
                                                        int32_t distanceStep, const uint8_t* mask, int32_t maskStep,
                                                        RoiSize roiSize, float radius, int32_t method);
/** restores pixels */
VEKCV_API Status VEKCV_CALL vekiInpaint_8u_C1R(const uint8_t* source, int32_t sourceStep, uint8_t* destination,
                                               int32_t destinationStep, RoiSize roiSize, InpaintState* state);
VEKCV_API Status VEKCV_CALL vekiInpaint_8u_C3R(const uint8_t* source, int32_t sourceStep, uint8_t* destination,
                                               int32_t destinationStep, RoiSize roiSize, InpaintState* state);
/** releases a state */
VEKCV_API Status VEKCV_CALL vekiInpaintFree_8u_C1R(InpaintState* state);
VEKCV_API Status VEKCV_CALL vekiInpaintFree_8u_C3R(InpaintState* state);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup FloodFill Flood fill
 * Repaints the connected region of an image that contains the seed, in place. A pixel v joins the region
 *
 * - in plain forms where it equals the seed s as it was before: v = s
 * - in Range forms where it is close to that seed: s - minDelta <= v <= s + maxDelta
 * - in Grad forms where it is close to a neighbour p that has joined: p - minDelta <= v <= p + maxDelta
 *
 * and only as a neighbour of a pixel of the region: one of the four that share a side with it in 4Con forms, one of the
 * eight that share a side or a corner in 8Con forms. All values are those before the fill, and of three channels all
 * must pass. Sums and differences of integers are exact. Those of floats are rounded to float, and a NaN passes no
 * test. The seed itself always belongs to the region.
 *
 * Plain and Range forms do nothing where the seed equals newValue: neither the image nor the component is written.
 * Other pixels that equal newValue do not join in Range forms, even if they are close to the seed. Grad forms have no
 * such exception.
 *
 * Range forms keep a list of runs, pixels side by side, whose neighbours are still to be looked at. The run that is
 * found last is looked at first, and leaves the list then: its neighbours in the row away from the run from which it
 * was found, from left to right, and then those in the other row. The run that would be number width * height / 4
 * (rounded down) in the list empties it instead, without a status, and what could be reached from there only is left as
 * it is; the area counts all pixels that were written, but the rectangle need not hold runs that were not looked at.
 * The run of the seed is the first in the list, so in regions of 4 to 7 pixels in several rows nothing else is filled.
 * The other forms fill all that can be reached.
 *
 * @param image         first pixel of the image, which is changed in place
 * @param imageStep     bytes from row to row
 * @param roiSize       size of the region of interest, at least 1 x 1; pixels beyond it are not there
 * @param seed          a pixel of the region of interest
 * @param newValue      what is written; an array of one for each channel in forms of three
 * @param minDelta, maxDelta   how far below and above a value others may lie; arrays in forms of three channels
 * @param component     receives what was filled
 * @param buffer        work buffer at any address, of the size that vekiFloodFillGetSize, for Grad forms
 *                      vekiFloodFillGetSize_Grad, gives for the same region
 * @param bufferSize    receives the bytes of the work buffer: 6 * width * height + 32, for Grad forms
 *                      (width + 2) * (height + 2) more
 *
 * @retval StatusOk                the region was filled, or the size was written
 * @retval StatusNullPointer       image, component or the buffer is null, or an array of values; of GetSize, bufferSize
 * @retval StatusSizeError         width or height is below 1; of GetSize also that the size is above 2147483647; of the
 *                                 others also, after all other checks, that the size of vekiFloodFillGetSize is
 * @retval StatusStepError         the step is smaller than a row
 * @retval StatusStepNotMultiple   the step of a 16u or 32f image is not a multiple of 2 or 4
 * @retval StatusOutOfRange        the seed is not in the region of interest
 *
 * The calling thread does all the work.
 * @{
 */
/** A region that was filled. */
typedef struct ConnectedComponent {
    double area;     /**< number of pixels */
    double value[3]; /**< what was written to each channel; 0 where there is none */
    ImageRect rect;  /**< smallest rectangle that holds the region */
} ConnectedComponent;

/** work buffer of the plain and range forms */
VEKCV_API Status VEKCV_CALL vekiFloodFillGetSize(RoiSize roiSize, int32_t* bufferSize);
/** work buffer of the gradient forms */
VEKCV_API Status VEKCV_CALL vekiFloodFillGetSize_Grad(RoiSize roiSize, int32_t* bufferSize);
/** pixels that equal the seed */
VEKCV_API Status VEKCV_CALL vekiFloodFill_4Con_8u_C1IR(uint8_t* image, int32_t imageStep, RoiSize roiSize,
                                                       ImagePoint seed, uint8_t newValue, ConnectedComponent* component,
                                                       uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_4Con_8u_C3IR(uint8_t* image, int32_t imageStep, RoiSize roiSize,
                                                       ImagePoint seed, const uint8_t* newValue,
                                                       ConnectedComponent* component, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_4Con_16u_C1IR(uint16_t* image, int32_t imageStep, RoiSize roiSize,
                                                        ImagePoint seed, uint16_t newValue,
                                                        ConnectedComponent* component, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_4Con_16u_C3IR(uint16_t* image, int32_t imageStep, RoiSize roiSize,
                                                        ImagePoint seed, const uint16_t* newValue,
                                                        ConnectedComponent* component, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_4Con_32f_C1IR(float* image, int32_t imageStep, RoiSize roiSize,
                                                        ImagePoint seed, float newValue, ConnectedComponent* component,
                                                        uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_4Con_32f_C3IR(float* image, int32_t imageStep, RoiSize roiSize,
                                                        ImagePoint seed, const float* newValue,
                                                        ConnectedComponent* component, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_8Con_8u_C1IR(uint8_t* image, int32_t imageStep, RoiSize roiSize,
                                                       ImagePoint seed, uint8_t newValue, ConnectedComponent* component,
                                                       uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_8Con_8u_C3IR(uint8_t* image, int32_t imageStep, RoiSize roiSize,
                                                       ImagePoint seed, const uint8_t* newValue,
                                                       ConnectedComponent* component, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_8Con_16u_C1IR(uint16_t* image, int32_t imageStep, RoiSize roiSize,
                                                        ImagePoint seed, uint16_t newValue,
                                                        ConnectedComponent* component, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_8Con_16u_C3IR(uint16_t* image, int32_t imageStep, RoiSize roiSize,
                                                        ImagePoint seed, const uint16_t* newValue,
                                                        ConnectedComponent* component, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_8Con_32f_C1IR(float* image, int32_t imageStep, RoiSize roiSize,
                                                        ImagePoint seed, float newValue, ConnectedComponent* component,
                                                        uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_8Con_32f_C3IR(float* image, int32_t imageStep, RoiSize roiSize,
                                                        ImagePoint seed, const float* newValue,
                                                        ConnectedComponent* component, uint8_t* buffer);
/** pixels that are close to their neighbour */
VEKCV_API Status VEKCV_CALL vekiFloodFill_Grad4Con_8u_C1IR(uint8_t* image, int32_t imageStep, RoiSize roiSize,
                                                           ImagePoint seed, uint8_t newValue, uint8_t minDelta,
                                                           uint8_t maxDelta, ConnectedComponent* component,
                                                           uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Grad4Con_8u_C3IR(uint8_t* image, int32_t imageStep, RoiSize roiSize,
                                                           ImagePoint seed, const uint8_t* newValue,
                                                           const uint8_t* minDelta, const uint8_t* maxDelta,
                                                           ConnectedComponent* component, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Grad4Con_16u_C1IR(uint16_t* image, int32_t imageStep, RoiSize roiSize,
                                                            ImagePoint seed, uint16_t newValue, uint16_t minDelta,
                                                            uint16_t maxDelta, ConnectedComponent* component,
                                                            uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Grad4Con_16u_C3IR(uint16_t* image, int32_t imageStep, RoiSize roiSize,
                                                            ImagePoint seed, const uint16_t* newValue,
                                                            const uint16_t* minDelta, const uint16_t* maxDelta,
                                                            ConnectedComponent* component, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Grad4Con_32f_C1IR(float* image, int32_t imageStep, RoiSize roiSize,
                                                            ImagePoint seed, float newValue, float minDelta,
                                                            float maxDelta, ConnectedComponent* component,
                                                            uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Grad4Con_32f_C3IR(float* image, int32_t imageStep, RoiSize roiSize,
                                                            ImagePoint seed, const float* newValue,
                                                            const float* minDelta, const float* maxDelta,
                                                            ConnectedComponent* component, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Grad8Con_8u_C1IR(uint8_t* image, int32_t imageStep, RoiSize roiSize,
                                                           ImagePoint seed, uint8_t newValue, uint8_t minDelta,
                                                           uint8_t maxDelta, ConnectedComponent* component,
                                                           uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Grad8Con_8u_C3IR(uint8_t* image, int32_t imageStep, RoiSize roiSize,
                                                           ImagePoint seed, const uint8_t* newValue,
                                                           const uint8_t* minDelta, const uint8_t* maxDelta,
                                                           ConnectedComponent* component, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Grad8Con_16u_C1IR(uint16_t* image, int32_t imageStep, RoiSize roiSize,
                                                            ImagePoint seed, uint16_t newValue, uint16_t minDelta,
                                                            uint16_t maxDelta, ConnectedComponent* component,
                                                            uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Grad8Con_16u_C3IR(uint16_t* image, int32_t imageStep, RoiSize roiSize,
                                                            ImagePoint seed, const uint16_t* newValue,
                                                            const uint16_t* minDelta, const uint16_t* maxDelta,
                                                            ConnectedComponent* component, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Grad8Con_32f_C1IR(float* image, int32_t imageStep, RoiSize roiSize,
                                                            ImagePoint seed, float newValue, float minDelta,
                                                            float maxDelta, ConnectedComponent* component,
                                                            uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Grad8Con_32f_C3IR(float* image, int32_t imageStep, RoiSize roiSize,
                                                            ImagePoint seed, const float* newValue,
                                                            const float* minDelta, const float* maxDelta,
                                                            ConnectedComponent* component, uint8_t* buffer);
/** pixels that are close to the seed */
VEKCV_API Status VEKCV_CALL vekiFloodFill_Range4Con_8u_C1IR(uint8_t* image, int32_t imageStep, RoiSize roiSize,
                                                            ImagePoint seed, uint8_t newValue, uint8_t minDelta,
                                                            uint8_t maxDelta, ConnectedComponent* component,
                                                            uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Range4Con_8u_C3IR(uint8_t* image, int32_t imageStep, RoiSize roiSize,
                                                            ImagePoint seed, const uint8_t* newValue,
                                                            const uint8_t* minDelta, const uint8_t* maxDelta,
                                                            ConnectedComponent* component, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Range4Con_16u_C1IR(uint16_t* image, int32_t imageStep, RoiSize roiSize,
                                                             ImagePoint seed, uint16_t newValue, uint16_t minDelta,
                                                             uint16_t maxDelta, ConnectedComponent* component,
                                                             uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Range4Con_16u_C3IR(uint16_t* image, int32_t imageStep, RoiSize roiSize,
                                                             ImagePoint seed, const uint16_t* newValue,
                                                             const uint16_t* minDelta, const uint16_t* maxDelta,
                                                             ConnectedComponent* component, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Range4Con_32f_C1IR(float* image, int32_t imageStep, RoiSize roiSize,
                                                             ImagePoint seed, float newValue, float minDelta,
                                                             float maxDelta, ConnectedComponent* component,
                                                             uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Range4Con_32f_C3IR(float* image, int32_t imageStep, RoiSize roiSize,
                                                             ImagePoint seed, const float* newValue,
                                                             const float* minDelta, const float* maxDelta,
                                                             ConnectedComponent* component, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Range8Con_8u_C1IR(uint8_t* image, int32_t imageStep, RoiSize roiSize,
                                                            ImagePoint seed, uint8_t newValue, uint8_t minDelta,
                                                            uint8_t maxDelta, ConnectedComponent* component,
                                                            uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Range8Con_8u_C3IR(uint8_t* image, int32_t imageStep, RoiSize roiSize,
                                                            ImagePoint seed, const uint8_t* newValue,
                                                            const uint8_t* minDelta, const uint8_t* maxDelta,
                                                            ConnectedComponent* component, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Range8Con_16u_C1IR(uint16_t* image, int32_t imageStep, RoiSize roiSize,
                                                             ImagePoint seed, uint16_t newValue, uint16_t minDelta,
                                                             uint16_t maxDelta, ConnectedComponent* component,
                                                             uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Range8Con_16u_C3IR(uint16_t* image, int32_t imageStep, RoiSize roiSize,
                                                             ImagePoint seed, const uint16_t* newValue,
                                                             const uint16_t* minDelta, const uint16_t* maxDelta,
                                                             ConnectedComponent* component, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Range8Con_32f_C1IR(float* image, int32_t imageStep, RoiSize roiSize,
                                                             ImagePoint seed, float newValue, float minDelta,
                                                             float maxDelta, ConnectedComponent* component,
                                                             uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiFloodFill_Range8Con_32f_C3IR(float* image, int32_t imageStep, RoiSize roiSize,
                                                             ImagePoint seed, const float* newValue,
                                                             const float* minDelta, const float* maxDelta,
                                                             ConnectedComponent* component, uint8_t* buffer);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup LabelMarkers Labels of markers
 * Numbers the connected regions of an image in place: all pixels that are not 0, whatever they hold, become regions,
 * whose pixels get the same label. The regions get labels in the order of their first pixels, from the top row to the
 * bottom one, and in a row from left to right: minLabel, minLabel + 1 and so on, and after maxLabel minLabel again.
 * Neighbours are the eight pixels that share a side or a corner with a pixel for NormInf, and the four that share a
 * side for NormL1.
 *
 * @param markers       first pixel of the image, which is changed in place
 * @param markersStep   bytes from row to row
 * @param roiSize       size of the image, at least 1 x 1
 * @param minLabel, maxLabel   first and last label: 1 <= minLabel <= maxLabel, and maxLabel is at most 254 for 8u and
 *                             65534 for 16u
 * @param norm          which pixels are neighbours: NormL1 (four) or NormInf (eight)
 * @param labelCount    receives the number of regions, which may be larger than that of labels
 * @param buffer        work buffer at any address, of the size that GetBufferSize gives for the same region
 * @param bufferSize    receives the bytes of the work buffer: 6 * width * height + 32
 *
 * @retval StatusOk                all regions got labels, or the size was written
 * @retval StatusNullPointer       markers, labelCount or the buffer is null; of GetBufferSize, bufferSize
 * @retval StatusSizeError         width or height is below 1; of GetBufferSize also that the size is above 2147483647;
 *                                 of vekiLabelMarkers also, after all other checks, that it is
 * @retval StatusStepError         the step is smaller than a row
 * @retval StatusStepNotMultiple   the step of a 16u image is not a multiple of 2
 * @retval StatusBadArgument       the labels are not as above, or norm is neither NormL1 nor NormInf
 *
 * The calling thread does all the work.
 * @{
 */
/** work buffer of vekiLabelMarkers */
VEKCV_API Status VEKCV_CALL vekiLabelMarkersGetBufferSize_8u_C1R(RoiSize roiSize, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiLabelMarkersGetBufferSize_16u_C1R(RoiSize roiSize, int32_t* bufferSize);
/** numbers connected regions */
VEKCV_API Status VEKCV_CALL vekiLabelMarkers_8u_C1IR(uint8_t* markers, int32_t markersStep, RoiSize roiSize,
                                                     int32_t minLabel, int32_t maxLabel, int32_t norm,
                                                     int32_t* labelCount, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiLabelMarkers_16u_C1IR(uint16_t* markers, int32_t markersStep, RoiSize roiSize,
                                                      int32_t minLabel, int32_t maxLabel, int32_t norm,
                                                      int32_t* labelCount, uint8_t* buffer);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup BoundSegments Boundaries of segments
 * Marks where the segments of an image of labels meet, in place. The pixels are visited in raster order, and what is
 * written counts for those that follow. A pixel becomes borderValue when one of these neighbours has neither its value
 * nor borderValue:
 *
 *     NormL1     above and left
 *     NormInf    above left, above, above right and left
 *
 * Those outside of the region do not exist. So where two segments meet there is a line one pixel wide, in most places
 * on the right or the lower side. In the end no two pixels that are neighbours, of four (NormL1) or of eight (NormInf),
 * have different values unless one has borderValue.
 *
 * @param markers      first pixel of the labels, which become the result
 * @param markersStep  bytes from row to row; need not be a whole number of elements
 * @param roiSize      size of the image, at least 1 x 1
 * @param borderValue  any value; pixels that have it stay, and separate segments
 * @param norm         which pixels are neighbours: NormL1 or NormInf
 *
 * @retval StatusOk            the result was written
 * @retval StatusNullPointer   markers is null
 * @retval StatusSizeError     width or height is below 1
 * @retval StatusStepError     the step is smaller than a row
 * @retval StatusBadArgument   norm is neither NormL1 nor NormInf
 *
 * The calling thread does all the work: what becomes of a pixel may depend on any one before it.
 * @{
 */
/** marks where segments meet */
VEKCV_API Status VEKCV_CALL vekiBoundSegments_8u_C1IR(uint8_t* markers, int32_t markersStep, RoiSize roiSize,
                                                      uint8_t borderValue, int32_t norm);
VEKCV_API Status VEKCV_CALL vekiBoundSegments_16u_C1IR(uint16_t* markers, int32_t markersStep, RoiSize roiSize,
                                                       uint16_t borderValue, int32_t norm);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup SegmentWatershed Watershed segmentation
 * Segments an image by a flood that begins at markers: the source is a relief, dark pixels are low, and where the water
 * from different markers meets, segments end. Often the source is a gradient, so that they end at edges. After Meyer,
 * "Un algorithme optimal pour la ligne de partage des eaux" (1991), and Beucher and Meyer, "The Morphological Approach
 * to Segmentation: The Watershed Transformation" (1993). The values of markers are
 *
 *     0                       no label yet
 *     1 to 254 (65534)        labels
 *     255 (65535)             walls: in no segment. They stay, and hold off the water
 *
 * Pixels wait in a queue of 256 levels, where within a level the first to come is the first to go. All pixels with
 * labels come in raster order, each to the level of its grey value. Then, as long as any wait, the next one of the
 * lowest level is taken out. Its neighbours without a label, in raster order, get its label, and each comes to the
 * level of its grey value, or to that of the pixel taken out where this one is higher.
 *
 * So a pixel gets the label whose water is there first; across a plateau labels advance at the same speed from where
 * they come to it. Every pixel gets one, except where walls lie between it and all markers. Without labels nothing
 * changes.
 *
 * @param source       first pixel of the relief
 * @param markers      first pixel of the markers, which become the result; must not overlap the source
 * @param sourceStep, markersStep   bytes from row to row; need not be a whole number of elements
 * @param roiSize      size of both images, at least 1 x 1, and such that GetBufferSize gives a size
 * @param norm         which pixels are neighbours: NormL1 (four) or NormInf (eight)
 * @param flag         0, or the sum of
 *                     1  in the end boundaries of the value 255 (65535) are drawn, as vekiBoundSegments does with the
 *                        same norm
 *                     2  light pixels are low: the relief is 255 - source
 * @param buffer       work buffer at any address, of the size that GetBufferSize gives for the same region and type
 * @param bufferSize   receives the bytes of the work buffer, the larger number of
 *                     12 * width * height + b * (width + 2) * (height + 2) + 36 and
 *                     height + 66 + (6 * height + 2) * (b * width, rounded up to a multiple of 32);
 *                     b is 1 for 8u and 2 for 8u16u
 *
 * @retval StatusOk            the result was written
 * @retval StatusNullPointer   an image or the buffer is null; of GetBufferSize, bufferSize
 * @retval StatusSizeError     width or height is below 1; of GetBufferSize also that the size is above 2147483647
 * @retval StatusStepError     a step is smaller than a row
 * @retval StatusBadArgument   norm is neither NormL1 nor NormInf, or flag is not 0, 1, 2 or 3
 *
 * The calling thread does all the work.
 * @{
 */
/** work buffer of vekiSegmentWatershed: 13 or 14 bytes for each pixel, and some more */
VEKCV_API Status VEKCV_CALL vekiSegmentWatershedGetBufferSize_8u_C1R(RoiSize roiSize, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiSegmentWatershedGetBufferSize_8u16u_C1R(RoiSize roiSize, int32_t* bufferSize);
/** floods a relief from markers */
VEKCV_API Status VEKCV_CALL vekiSegmentWatershed_8u_C1IR(const uint8_t* source, int32_t sourceStep, uint8_t* markers,
                                                         int32_t markersStep, RoiSize roiSize, int32_t norm,
                                                         int32_t flag, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiSegmentWatershed_8u16u_C1IR(const uint8_t* source, int32_t sourceStep,
                                                            uint16_t* markers, int32_t markersStep, RoiSize roiSize,
                                                            int32_t norm, int32_t flag, uint8_t* buffer);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup SegmentGradient Gradient segmentation
 * Segments an image by markers that grow, first to where pixels differ least. After Adams and Bischof, "Seeded Region
 * Growing" (1994), and Meyer, "Color Image Segmentation" (1992). The values of markers are
 *
 *     0            no label yet
 *     1 to 254     labels
 *     255          reserved: in no segment. Such pixels stay, and nothing grows into them
 *
 * The difference of two pixels is that of their grey values, or the largest one of their three channels, without sign.
 * Pixels wait in a queue of 256 levels, where within a level the first to come is the first to go. A pixel without a
 * label comes to it as soon as a neighbour has one, once; those that come at the same time do so in raster order. With
 * the sum over those of its neighbours that have labels by then, its level is
 *
 *     max(0, 256 - sum of w(difference))
 *     w(d) = 256 * 2^(-d / 32), rounded to an integer: from w(0) = 256 down to w(255) = 1
 *
 * With one such neighbour that grows with the difference; two of them count as much as one that differs by 32 less. As
 * long as any wait, the next pixel of the lowest level is taken out. It gets the label of the neighbour that differs
 * least from it, of those that have labels now, and where several do that of the first in raster order. Every pixel
 * gets one, except where reserved ones lie between it and all labels. Without labels nothing changes.
 *
 * @param source       first pixel of the source
 * @param markers      first pixel of the markers, which become the result; must not overlap the source
 * @param sourceStep, markersStep   bytes from row to row
 * @param roiSize      size of both images, at least 1 x 1, and such that GetBufferSize gives a size
 * @param norm         which pixels are neighbours: NormL1 (four) or NormInf (eight)
 * @param flag         bits, of which these count; with both, 64 comes first
 *                     64   in the end boundaries of the value 255 are drawn, as vekiBoundSegments does with NormL1
 *                     128  the same with NormInf
 * @param buffer       work buffer at any address, of the size that GetBufferSize gives for the same region
 * @param bufferSize   receives the bytes of the work buffer, 13 * width * height + 103
 *
 * @retval StatusOk            the result was written
 * @retval StatusNullPointer   an image or the buffer is null; of GetBufferSize, bufferSize
 * @retval StatusSizeError     width or height is below 1; of GetBufferSize also that the size is above 2147483647
 * @retval StatusStepError     a step is smaller than a row
 * @retval StatusBadArgument   norm is neither NormL1 nor NormInf
 *
 * The calling thread does all the work.
 * @{
 */
/** work buffer of vekiSegmentGradient: 13 bytes for each pixel, and some more */
VEKCV_API Status VEKCV_CALL vekiSegmentGradientGetBufferSize_8u_C1R(RoiSize roiSize, int32_t* bufferSize);
VEKCV_API Status VEKCV_CALL vekiSegmentGradientGetBufferSize_8u_C3R(RoiSize roiSize, int32_t* bufferSize);
/** grows markers over pixels that differ little */
VEKCV_API Status VEKCV_CALL vekiSegmentGradient_8u_C1IR(const uint8_t* source, int32_t sourceStep, uint8_t* markers,
                                                        int32_t markersStep, RoiSize roiSize, int32_t norm,
                                                        int32_t flag, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiSegmentGradient_8u_C3IR(const uint8_t* source, int32_t sourceStep, uint8_t* markers,
                                                        int32_t markersStep, RoiSize roiSize, int32_t norm,
                                                        int32_t flag, uint8_t* buffer);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup UpdateMotionHistory Motion history
 * An image of floats that records for each pixel when it last moved, and forgets it after a while: call it for every
 * frame of a video with the silhouette of what moves, such as a foreground or the difference of two frames. Newer
 * motion has larger values, so the gradient of the history tells which way things move.
 *
 *     threshold = timestamp - duration, rounded to float
 *     history   = timestamp    where the silhouette is not 0
 *                 0            elsewhere, where history < threshold
 *                 as it was    in all other pixels
 *
 * What is kept is kept bit for bit, that which equals the threshold, too. Timestamps are in any unit, and those of
 * later frames should be larger; 0 stands for no motion. With a duration of 0 only the motion of this frame remains,
 * and what is newer. Of a 32f silhouette -0 counts as 0, and NaN as motion. Comparisons with NaN are false: a history
 * of NaN is kept, and with a timestamp or a duration of NaN nothing is forgotten.
 *
 * @param silhouette       first pixel of the silhouette
 * @param motionHistory    first pixel of the history, which is read and written
 * @param silhouetteStep, motionHistoryStep   bytes from row to row
 * @param roiSize          size of both images, at least 1 x 1
 * @param timestamp        time of the silhouette
 * @param duration         how long motion is remembered, at least 0
 *
 * A 32f silhouette may be the same image as the history. Images that overlap in any other way give undefined results.
 *
 * @retval StatusOk                the history was updated
 * @retval StatusNullPointer       an image is null
 * @retval StatusSizeError         width or height is below 1
 * @retval StatusStepError         a step is smaller than a row
 * @retval StatusStepNotMultiple   motionHistoryStep, or silhouetteStep of a 32f silhouette, is not a multiple of 4;
 *                                 silhouetteStep of a 16u silhouette is odd
 * @retval StatusOutOfRange        duration is below 0
 *
 * The floating-point modes of the calling thread have no effect. The calling thread does all the work.
 * @{
 */
/** records when pixels last moved */
VEKCV_API Status VEKCV_CALL vekiUpdateMotionHistory_8u32f_C1IR(const uint8_t* silhouette, int32_t silhouetteStep,
                                                               float* motionHistory, int32_t motionHistoryStep,
                                                               RoiSize roiSize, float timestamp, float duration);
VEKCV_API Status VEKCV_CALL vekiUpdateMotionHistory_16u32f_C1IR(const uint16_t* silhouette, int32_t silhouetteStep,
                                                                float* motionHistory, int32_t motionHistoryStep,
                                                                RoiSize roiSize, float timestamp, float duration);
VEKCV_API Status VEKCV_CALL vekiUpdateMotionHistory_32f_C1IR(const float* silhouette, int32_t silhouetteStep,
                                                             float* motionHistory, int32_t motionHistoryStep,
                                                             RoiSize roiSize, float timestamp, float duration);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup ForegroundGaussian Foreground by Gaussian mixtures
 * Moving objects before a background that is learned frame by frame: a pixel is described by five Gaussians, and is
 * background where it matches one of those that it matches often. After Stauffer and Grimson, "Adaptive background
 * mixture models for real-time tracking" (1999). InitAlloc makes a model from a first frame; each call of
 * vekiForegroundGaussian takes one more, tells foreground from background, and learns.
 *
 * A Gaussian (a component) has a weight, a variance, a mean for each channel, and the number of times that it was
 * matched. At first component 0 has weight 1, count 1 and the mean of the pixel of the first frame; all others have
 * weight 0, count 0 and mean 0; every variance is 12.5. For a pixel x, in double precision and in the order that is
 * written here:
 *
 *  1. The pixel matches the first component, in their order, with variance * matchDeviations^2 > (mean - x)^2 in every
 *     channel. Components of count 0 take part.
 *  2. weight = weight + (m - weight) / (N + 1) for every component; m is 1 for the matched one and 0 for others, and N
 *     the sum of all counts. The matched one's count grows by 1, and with rate = 1 / count
 *         mean = mean + (x - mean) * rate
 *         variance = variance + ((x - mean before)^2 - variance) * rate
 *     With three channels the square is the mean of those of the channels. In the one frame whose number is
 *     windowLength, the first frame behind that of InitAlloc having number 1, weight = weight + (m - weight) * (1 /
 *     windowLength) and rate = 1 / (windowLength * weight), with the new weight.
 *  3. Where nothing matched, the last component is replaced: count 1, variance initialVariance, mean x. Then all
 *     weights become count / the sum of all counts.
 *  4. The components are sorted by weight / sqrt(variance), the greatest first; equal ones keep their order.
 *  5. background = the mean of the first component, plus 0.5, without its fraction.
 *  6. foreground = 0 where the matched component is among the first ones, up to that with which the sum of their
 *     weights exceeds backgroundRatio; else 255.
 *
 * A model averages over all of its frames: the older it is, the more slowly it follows a change of the scene. Counts
 * stay at 2147483647 once they are there. With three equal channels results may differ from those of one channel by the
 * rounding of the mean of three squares.
 *
 * The state is one block of memory of about 170 (three channels: 252) bytes for each pixel, released by the Free
 * function. A caller may read its fields, the images and the components at any time between calls, and may change
 * windowLength, backgroundRatio, matchDeviations and initialVariance, which each call uses as they are then.
 *
 * @param source       first pixel of the frame
 * @param background   first pixel of the background; as many channels as the source
 * @param foreground   first pixel of the mask; one channel in all forms
 * @param sourceStep   bytes from row to row
 * @param backgroundStep, foregroundStep   bytes from row to row; not checked
 * @param roiSize      size of all images, at least 1 x 1; after InitAlloc, that of the first frame
 * @param parameters   not read, but must not be null: reserved for tuning. The defaults below are used
 * @param state        result of InitAlloc: the model; else the model. It serves one call at a time
 *
 * The results may be written over the source: they are copied there in the end, the foreground first.
 *
 * @retval StatusOk                 the results were written, or the model was made or released
 * @retval StatusNullPointer        a pointer is null
 * @retval StatusSizeError          width or height is below 1; then, that the size is not that of the model
 * @retval StatusStepError          sourceStep is smaller than a row
 * @retval StatusBadArgument        the model has another number of channels
 * @retval StatusMemoryAllocation   there is no memory for the model, or it would take more than 2147483647 bytes, and
 *                                  *state is as it was
 *
 * The floating-point modes of the calling thread have no effect. The calling thread does all the work.
 * @{
 */
/** Reserved for tuning: what it holds is not read. */
typedef struct ForegroundGaussianParameters {
    int32_t windowLength;    /**< 200: the number of the frame with a fixed rate */
    int32_t componentCount;  /**< 5: Gaussians of each pixel */
    double backgroundRatio;  /**< 0.7: what weights the components of the background exceed together */
    double matchDeviations;  /**< 2.5: how many standard deviations from its mean a component is matched */
    double initialDeviation; /**< 15: not used */
    double initialWeight;    /**< 0.05: not used; a new component has the weight of its count */
    double initialVariance;  /**< 900: of a component that replaces another */
} ForegroundGaussianParameters;

/** A Gaussian of a pixel with one channel. */
typedef struct GaussianComponentC1 {
    int32_t matchCount;
    int32_t reserved; /**< 0 */
    double weight;
    double variance;
    double mean;
} GaussianComponentC1;

/** A Gaussian of a pixel with three channels. */
typedef struct GaussianComponentC3 {
    int32_t matchCount;
    int32_t reserved; /**< 0 */
    double weight;
    double variance;
    double mean[3];
} GaussianComponentC3;

/** A model; what is not described here is that of the parameters. */
typedef struct ForegroundGaussianState {
    uint8_t* backgroundImage; /**< the background of the last frame */
    int32_t backgroundStep;   /**< bytes of a row */
    uint8_t* foregroundImage; /**< the mask of the last frame */
    int32_t foregroundStep;   /**< bytes of a row */
    int32_t windowLength;
    int32_t componentCount;
    double backgroundRatio;
    double matchDeviations;
    double initialDeviation;
    double initialWeight;
    double initialVariance;
    void** pixelModels;   /**< for each pixel, by rows, its components, GaussianComponentC1 or GaussianComponentC3 */
    int32_t frameCounter; /**< frames behind the first one; it is never reset */
} ForegroundGaussianState;

/** makes a model from a first frame */
VEKCV_API Status VEKCV_CALL vekiForegroundGaussianInitAlloc_8u_C1R(const uint8_t* source, int32_t sourceStep,
                                                                   RoiSize roiSize,
                                                                   const ForegroundGaussianParameters* parameters,
                                                                   ForegroundGaussianState** state);
VEKCV_API Status VEKCV_CALL vekiForegroundGaussianInitAlloc_8u_C3R(const uint8_t* source, int32_t sourceStep,
                                                                   RoiSize roiSize,
                                                                   const ForegroundGaussianParameters* parameters,
                                                                   ForegroundGaussianState** state);
/** tells foreground from background, and learns */
VEKCV_API Status VEKCV_CALL vekiForegroundGaussian_8u_C1R(const uint8_t* source, int32_t sourceStep,
                                                          uint8_t* background, int32_t backgroundStep,
                                                          uint8_t* foreground, int32_t foregroundStep, RoiSize roiSize,
                                                          ForegroundGaussianState* state);
VEKCV_API Status VEKCV_CALL vekiForegroundGaussian_8u_C3R(const uint8_t* source, int32_t sourceStep,
                                                          uint8_t* background, int32_t backgroundStep,
                                                          uint8_t* foreground, int32_t foregroundStep, RoiSize roiSize,
                                                          ForegroundGaussianState* state);
/** releases a model */
VEKCV_API Status VEKCV_CALL vekiForegroundGaussianFree_8u_C1R(ForegroundGaussianState* state);
VEKCV_API Status VEKCV_CALL vekiForegroundGaussianFree_8u_C3R(ForegroundGaussianState* state);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup ForegroundHistogram Foreground by histograms
 * Moving objects before a background that is learned frame by frame: of each pixel it is known how often it had which
 * values and which changes of its value, and how often it was background with them. After Li, Huang, Gu and Tian,
 * "Foreground Object Detection from Videos Containing Complex Background" (2003). InitAlloc makes a model from a first
 * frame. For each further one, vekiForegroundHistogram tells foreground from background and changes nothing; then
 * vekiForegroundHistogramUpdate learns the frame with a mask, which may be that one or one that was corrected.
 *
 * A pixel has a reference, the value of its background; a table of values, of which the channels are divided into
 * valueLevels levels; and a table of changes, from its value in the frame learned before to this one, both divided
 * into changeLevels levels. An entry of a table has a frequency f and a frequency as background b. Tables hold up to
 * valueCapacity and changeCapacity entries, the most frequent ones first. A pixel matches an entry where all levels
 * differ by at most the tolerance. It is near another value where all channels differ by at most tolerance * 256 /
 * valueLevels.
 *
 * Classification. A pixel near its reference is background. For another one, F is the sum of f and B that of b over
 * the entries that it matches among the first valueEntries values, where it is near its value in the frame before, and
 * among the first changeEntries changes else. It is background where F > 0 and 2 * B >= F. Then the mask is cleaned:
 * removesSpecks erases regions of foreground, connected by eight neighbours, of less than minimumArea pixels;
 * fillsHoles fills regions of background, connected by four neighbours, that do not reach the border of the image.
 *
 * Learning. The rate of update number k is the larger one of gradualRate and min(startRate, 1 / k). In the table of
 * values, and in that of changes where the pixel is not near its value before, the first entry that it matches moves
 * to f = 1 and to b = 1 (background in the mask) or 0, and all others move to 0, by the rate: f = f + (1 - f) * rate.
 * Where it matches none, a new entry has f = rate and b = rate or 0; it takes the place of the last one of a full
 * table. Entries with f below 1 / 65536 are forgotten. Where the sum of f - b over the first valueEntries
 * (changeEntries) exceeds the majority, all that the table holds becomes background: b = f; in the table of values
 * that is a sudden change, and the reference becomes the pixel. Else the reference of a pixel of the background moves
 * to its value by referenceRate where it is near, and becomes it where it is not, but near its value before.
 *
 * Values and changes that come back, such as those of leaves in the wind, are background once masks have said so at
 * least as often as not. An object that stops is background after 460 updates, the least n with (1 - gradualRate)^n <
 * 1 - majority; in the beginning, when rates are larger, after as few as 35.
 *
 * The state is one block of memory of about 790 (three channels: 960) bytes for each pixel, released by the Free
 * function. A caller may read its fields at any time between calls, and may change the parameters from fillsHoles on,
 * which each call uses as they are then: rates and majority from 0 to 1, tolerance from 0 to 255.
 *
 * @param source       first pixel of the frame
 * @param foreground   first pixel of the mask, one channel in all forms: as a result 0 (background) or 255; of Update,
 *                     not 0 for foreground
 * @param background   first pixel of the result of Update: the references, rounded to the nearest integer; as many
 *                     channels as the source, and may be the same image
 * @param sourceStep   bytes from row to row
 * @param foregroundStep, backgroundStep   bytes from row to row; not checked
 * @param roiSize      size of all images, at least 1 x 1; after InitAlloc, that of the first frame
 * @param parameters   not read, but must not be null: reserved for tuning. The defaults below are used
 * @param state        result of InitAlloc: the model; else the model. It serves one call at a time
 *
 * @retval StatusOk                 the results were written, or the model was made or released
 * @retval StatusNullPointer        a pointer is null
 * @retval StatusSizeError          width or height is below 1; then, that the size is not that of the model
 * @retval StatusStepError          sourceStep is smaller than a row
 * @retval StatusBadArgument        the model has another number of channels
 * @retval StatusMemoryAllocation   there is no memory for the model, or it would take more than 2147483647 bytes, and
 *                                  *state is as it was
 *
 * The floating-point modes of the calling thread have no effect. The calling thread does all the work.
 * @{
 */
/** Reserved for tuning: what it holds is not read. */
typedef struct ForegroundHistogramParameters {
    int32_t valueLevels;    /**< 128 */
    int32_t valueEntries;   /**< 15: entries that classify */
    int32_t valueCapacity;  /**< 25 */
    int32_t changeLevels;   /**< 64 */
    int32_t changeEntries;  /**< 25: entries that classify */
    int32_t changeCapacity; /**< 40 */
    int32_t fillsHoles;     /**< 1; 0 leaves holes in objects */
    int32_t removesSpecks;  /**< 1; 0 leaves small regions */
    float referenceRate;    /**< 0.1: how fast the reference follows */
    float gradualRate;      /**< 0.005: how fast the tables follow in the end */
    float startRate;        /**< 0.1: how fast they follow at most */
    float tolerance;        /**< 2: levels that may differ */
    float majority;         /**< 0.9: of foreground, from which on all is background */
    float minimumArea;      /**< 15: pixels of an object */
} ForegroundHistogramParameters;

/** A model: what a caller may know of it. */
typedef struct ForegroundHistogramState {
    ForegroundHistogramParameters parameters;
    int32_t updateCount; /**< frames that were learned behind the first one; at most 2147483647 */
} ForegroundHistogramState;

/** makes a model from a first frame */
VEKCV_API Status VEKCV_CALL vekiForegroundHistogramInitAlloc_8u_C1R(const uint8_t* source, int32_t sourceStep,
                                                                    RoiSize roiSize,
                                                                    const ForegroundHistogramParameters* parameters,
                                                                    ForegroundHistogramState** state);
VEKCV_API Status VEKCV_CALL vekiForegroundHistogramInitAlloc_8u_C3R(const uint8_t* source, int32_t sourceStep,
                                                                    RoiSize roiSize,
                                                                    const ForegroundHistogramParameters* parameters,
                                                                    ForegroundHistogramState** state);
/** tells foreground from background */
VEKCV_API Status VEKCV_CALL vekiForegroundHistogram_8u_C1R(const uint8_t* source, int32_t sourceStep,
                                                           uint8_t* foreground, int32_t foregroundStep, RoiSize roiSize,
                                                           ForegroundHistogramState* state);
VEKCV_API Status VEKCV_CALL vekiForegroundHistogram_8u_C3R(const uint8_t* source, int32_t sourceStep,
                                                           uint8_t* foreground, int32_t foregroundStep, RoiSize roiSize,
                                                           ForegroundHistogramState* state);
/** learns a frame */
VEKCV_API Status VEKCV_CALL vekiForegroundHistogramUpdate_8u_C1R(const uint8_t* source, int32_t sourceStep,
                                                                 const uint8_t* foreground, int32_t foregroundStep,
                                                                 uint8_t* background, int32_t backgroundStep,
                                                                 RoiSize roiSize, ForegroundHistogramState* state);
VEKCV_API Status VEKCV_CALL vekiForegroundHistogramUpdate_8u_C3R(const uint8_t* source, int32_t sourceStep,
                                                                 const uint8_t* foreground, int32_t foregroundStep,
                                                                 uint8_t* background, int32_t backgroundStep,
                                                                 RoiSize roiSize, ForegroundHistogramState* state);
/** releases a model */
VEKCV_API Status VEKCV_CALL vekiForegroundHistogramFree_8u_C1R(ForegroundHistogramState* state);
VEKCV_API Status VEKCV_CALL vekiForegroundHistogramFree_8u_C3R(ForegroundHistogramState* state);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup OpticalFlowPyrLK Optical flow
 * Points followed from one image to the next, by windows around them. After Lucas and Kanade, "An Iterative Image
 * Registration Technique with an Application to Stereo Vision" (1981), on pyramids after Bouguet, "Pyramidal
 * Implementation of the Lucas Kanade Feature Tracker" (2001).
 *
 * The records tell the images of both pyramids, their sizes and their steps. Used are the levels from 0 to the least of
 * maxLevel and the two levelCounts; of others nothing counts, and their images may be null. A place on level k is the
 * place on level 0 times levelScales[k] of `previous`, rounded to float; the scales of `next` are not used. A point
 * begins at nextPoints, in pixels of level 0, which is its own place where nothing better is known. Then, from the
 * coarsest level down, P being its place in the previous image, Q the present one in the next image, and sums those
 * over the windowSize^2 pixels d of a window, with r = windowSize / 2 and d from (-r, -r) to (r, r):
 *
 *     I(d) = previous at P + d          Ix(d) = (I(dx + 1, dy) - I(dx - 1, dy)) / 2
 *     J(d) = next at Q + d              Iy(d) = (I(dx, dy + 1) - I(dx, dy - 1)) / 2
 *     xx = sum of Ix Ix,  xy = sum of Ix Iy,  yy = sum of Iy Iy,  D = xx yy - xy xy
 *     bx = sum of (I - J) Ix,  by = sum of (I - J) Iy
 *     Q += ((yy bx - xy by) / D, (xx by - xy bx) / D)
 *
 * The last two lines are repeated until such a step, which is made, is shorter than threshold in pixels of the level,
 * or not a number, but maxIterations times at most; with a threshold of 0 always so many times. Samples between pixels
 * are interpolated, first along the two rows, then between them, as a + f (b - a); pixels outside of the image are like
 * the nearest ones in it. Places that are infinite or not numbers are allowed.
 *
 * A window is weak where the smaller eigenvalue (xx + yy - sqrt((xx - yy)^2 + 4 xy^2)) / 2, per pixel of the window and
 * with pixels divided by the range of their type (255, 65535, 1), is below 0.000001, or where D is not above 0. On a
 * level above 0 that level is skipped; on level 0 the point is lost and has the place from the levels above. A point is
 * lost, too, whose final place is outside, that is x < 0, y < 0, x > width - 1, y > height - 1 or not a number; it is
 * not moved into the image. The error of other points is the mean of |I - J| at their final place on level 0.
 *
 * All is computed in float, in the order that is written here, and each result rounded. A sum is made of sixteen
 * running sums: column x of the window, counted from 0 at the left, is added to that of x mod 16, column after column,
 * each from its top; sum k and sum k + 8 are added then, of these k and k + 4, and so on. So the results are the same
 * in all variants. Since the range of 32f images is 1, their windows are seldom weak where pixels are larger.
 *
 * A state holds memory for windows of one size, for as many threads as are configured when it is made; a later change
 * of their number is harmless. It is one block of memory, released by the Free function, and serves any number of
 * images up to its size, one call at a time. Nothing else is allocated.
 *
 * @param state            result of InitAlloc: the state; else the state
 * @param roiSize          greatest width and height of level 0, at least 1 x 1
 * @param windowSize       width and height of windows in pixels of each level: odd, 3 to 63; else that of the state
 * @param previous, next   records of the pyramids of the two images
 * @param previousPoints   places of the points in the previous image
 * @param nextPoints       first guesses of their places in the next image, which become the places; may be the same
 *                         array as previousPoints
 * @param found            receives 1, or 0 for a point that is lost
 * @param error            receives the error in pixel values, 0 for a point that is lost
 * @param pointCount       number of points, at least 1
 * @param maxLevel         greatest level to use, at least 0
 * @param maxIterations    greatest number of steps on each level, at least 1
 * @param threshold        length of a step in pixels, at least 0
 *
 * @retval StatusOk                 all points were treated, or the state was made or released
 * @retval StatusNullPointer        a pointer is null, an array of a record is, or the image of a level in use, which is
 *                                  level 0 where maxLevel is below 0
 * @retval StatusSizeError          of InitAlloc: width or height is below 1, or windowSize is even or not from 3 to 63.
 *                                  Else, in this order: pointCount is below 1, windowSize is not that of the state,
 *                                  maxIterations is below 1; a level in use has other sizes in the two records, or
 *                                  one below 1, or level 0 is larger than the state serves
 * @retval StatusStepError          a step of a level in use is smaller than a row
 * @retval StatusStepNotMultiple    a step of a level in use is not a multiple of 2 (16u) or 4 (32f)
 * @retval StatusBadArgument        maxLevel is below 0, threshold is below 0 or not a number, or the state is that of
 *                                  another type
 * @retval StatusMemoryAllocation   there is no memory for the state, and *state is as it was
 *
 * The floating-point modes of the calling thread have no effect. Windows of 16384 pixels together and more are shared
 * among the threads, pointCount * windowSize^2 being their number; a thread takes a few points at a time, and there are
 * at most as many threads as the state was made for.
 * @{
 */
/** Memory for the functions below. */
typedef struct OpticalFlowState OpticalFlowState;

/** makes a state */
VEKCV_API Status VEKCV_CALL vekiOpticalFlowPyrLKInitAlloc_8u_C1R(OpticalFlowState** state, RoiSize roiSize,
                                                                 int32_t windowSize);
VEKCV_API Status VEKCV_CALL vekiOpticalFlowPyrLKInitAlloc_16u_C1R(OpticalFlowState** state, RoiSize roiSize,
                                                                  int32_t windowSize);
VEKCV_API Status VEKCV_CALL vekiOpticalFlowPyrLKInitAlloc_32f_C1R(OpticalFlowState** state, RoiSize roiSize,
                                                                  int32_t windowSize);
/** follows points from one image to the next */
VEKCV_API Status VEKCV_CALL vekiOpticalFlowPyrLK_8u_C1R(const Pyramid* previous, const Pyramid* next,
                                                        const ImagePoint32f* previousPoints, ImagePoint32f* nextPoints,
                                                        int8_t* found, float* error, int32_t pointCount,
                                                        int32_t windowSize, int32_t maxLevel, int32_t maxIterations,
                                                        float threshold, OpticalFlowState* state);
VEKCV_API Status VEKCV_CALL vekiOpticalFlowPyrLK_16u_C1R(const Pyramid* previous, const Pyramid* next,
                                                         const ImagePoint32f* previousPoints, ImagePoint32f* nextPoints,
                                                         int8_t* found, float* error, int32_t pointCount,
                                                         int32_t windowSize, int32_t maxLevel, int32_t maxIterations,
                                                         float threshold, OpticalFlowState* state);
VEKCV_API Status VEKCV_CALL vekiOpticalFlowPyrLK_32f_C1R(const Pyramid* previous, const Pyramid* next,
                                                         const ImagePoint32f* previousPoints, ImagePoint32f* nextPoints,
                                                         int8_t* found, float* error, int32_t pointCount,
                                                         int32_t windowSize, int32_t maxLevel, int32_t maxIterations,
                                                         float threshold, OpticalFlowState* state);
/** releases a state */
VEKCV_API Status VEKCV_CALL vekiOpticalFlowPyrLKFree_8u_C1R(OpticalFlowState* state);
VEKCV_API Status VEKCV_CALL vekiOpticalFlowPyrLKFree_16u_C1R(OpticalFlowState* state);
VEKCV_API Status VEKCV_CALL vekiOpticalFlowPyrLKFree_32f_C1R(OpticalFlowState* state);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup Undistort Undistortion
 * Images as a camera with a lens without distortion would have taken them. Pixel (x, y) of the result is the source at
 *
 *     xs = x + (x - cx) * f        f = k1 * r2 + k2 * r2 * r2
 *     ys = y + (y - cy) * f        r2 = ((x - cx) / fx)^2 + ((y - cy) / fy)^2
 *
 * All is computed in float, each operation rounded, in this order: with dx = x - cx and dy = y - cy, where x and y are
 * rounded to float first,
 *
 *     x2 = dx * dx * (1 / (fx * fx))        y2 = dy * dy * (1 / (fy * fy))
 *     f = (k1 * y2 + k2 * (y2 * y2)) + ((k2 * x2 + k1) * x2 + 2 * k2 * y2 * x2)
 *
 * vekiUndistortRadial writes the pixels with 0 <= xs < width - 1 and 0 <= ys < height - 1, and no others: those keep
 * what the destination held. So the last row and column of the source are only met as neighbours, and without
 * distortion (k1 = k2 = 0) all pixels but those of the last row and column are copied. With ix and iy, the integer
 * parts of xs and ys, and ax = xs - ix and ay = ys - iy, a pixel is
 *
 *     s(ix, iy) * (1 - ax) * (1 - ay) + s(ix + 1, iy) * ax * (1 - ay)
 *         + s(ix, iy + 1) * (1 - ax) * ay + s(ix + 1, iy + 1) * ax * ay
 *
 * from left to right; integer results are this value plus 0.5 without its fraction. Parameters that are infinite or
 * NaN, or so large or small that xs or ys are, leave pixels out likewise.
 *
 * vekiCreateMapCameraUndistort writes xs and ys of all pixels, for a function that samples images by maps. With p1 or
 * p2 other than 0 they have tangential terms, too, with u = dx * (1 / fx) and v = dy * (1 / fy):
 *
 *     xs = (x + dx * f) + fx * (2 * p1 * u * v + p2 * ((x2 + y2) + (x2 + x2)))
 *     ys = (y + dy * f) + fy * (2 * p2 * u * v + p1 * ((x2 + y2) + (y2 + y2)))
 *
 * Maps of 131072 pixels and more whose rows begin at multiples of 16 bytes are written past the caches.
 *
 * @param source        first pixel of the distorted image
 * @param destination   first pixel of the result; must not overlap the source
 * @param xMap, yMap    first element of each map; must not overlap each other
 * @param sourceStep, destinationStep, xMapStep, yMapStep   bytes from row to row
 * @param roiSize       size of all images, at least 1 x 1
 * @param fx, fy        focal lengths in pixels, not 0
 * @param cx, cy        principal point in pixels
 * @param k1, k2        radial coefficients
 * @param p1, p2        tangential coefficients
 * @param buffer        not used, and may be null; for programs that pass a buffer of the size that
 *                      vekiUndistortGetSize gives
 * @param bufferSize    receives the bytes of the work buffer: 24 for each pixel of a row, whose width is rounded up to
 *                      a multiple of 4, and 32
 *
 * @retval StatusOk                the result was written
 * @retval StatusNullPointer       an image or a map is null; of vekiUndistortGetSize, bufferSize
 * @retval StatusSizeError         width or height is below 1; of vekiUndistortGetSize also, after all other checks,
 *                                 that the size is above 2147483647
 * @retval StatusStepError         a step is smaller than a row
 * @retval StatusStepNotMultiple   the step of a 16u or 32f image or of a map is not a multiple of 2 or 4
 * @retval StatusBadArgument       fx or fy is 0
 *
 * The floating-point modes of the calling thread have no effect. Regions of 262144 pixels and more are shared among the
 * threads.
 * @{
 */
/** work buffer of the functions below */
VEKCV_API Status VEKCV_CALL vekiUndistortGetSize(RoiSize roiSize, int32_t* bufferSize);
/** removes radial distortion */
VEKCV_API Status VEKCV_CALL vekiUndistortRadial_8u_C1R(const uint8_t* source, int32_t sourceStep, uint8_t* destination,
                                                       int32_t destinationStep, RoiSize roiSize, float fx, float fy,
                                                       float cx, float cy, float k1, float k2, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiUndistortRadial_8u_C3R(const uint8_t* source, int32_t sourceStep, uint8_t* destination,
                                                       int32_t destinationStep, RoiSize roiSize, float fx, float fy,
                                                       float cx, float cy, float k1, float k2, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiUndistortRadial_16u_C1R(const uint16_t* source, int32_t sourceStep,
                                                        uint16_t* destination, int32_t destinationStep, RoiSize roiSize,
                                                        float fx, float fy, float cx, float cy, float k1, float k2,
                                                        uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiUndistortRadial_16u_C3R(const uint16_t* source, int32_t sourceStep,
                                                        uint16_t* destination, int32_t destinationStep, RoiSize roiSize,
                                                        float fx, float fy, float cx, float cy, float k1, float k2,
                                                        uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiUndistortRadial_32f_C1R(const float* source, int32_t sourceStep, float* destination,
                                                        int32_t destinationStep, RoiSize roiSize, float fx, float fy,
                                                        float cx, float cy, float k1, float k2, uint8_t* buffer);
VEKCV_API Status VEKCV_CALL vekiUndistortRadial_32f_C3R(const float* source, int32_t sourceStep, float* destination,
                                                        int32_t destinationStep, RoiSize roiSize, float fx, float fy,
                                                        float cx, float cy, float k1, float k2, uint8_t* buffer);
/** where each pixel comes from */
VEKCV_API Status VEKCV_CALL vekiCreateMapCameraUndistort_32f_C1R(float* xMap, int32_t xMapStep, float* yMap,
                                                                 int32_t yMapStep, RoiSize roiSize, float fx, float fy,
                                                                 float cx, float cy, float k1, float k2, float p1,
                                                                 float p2, uint8_t* buffer);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup CopySubpix Sub-pixel copies
 * Images that are shifted by a fraction of a pixel, by bilinear interpolation: a result lies fx columns right of a
 * pixel of the source, and fy rows below it. vekiCopySubpix takes the fractions of dx and dy, dx minus its integer
 * part, plus 1 where that is negative; the integer parts are not applied, as the caller begins with the pixel of the
 * source that they lead to. Offsets that are infinite or NaN count as 0.
 *
 * 8u and 16u results have weights of 14 bits. With wx the integer part of fx * 16384 + 0.5, likewise wy,
 *
 *     w00 = ((16384 - wx) * (16384 - wy) + 16384) >> 14        w01 = (wx * (16384 - wy) + 16384) >> 14
 *     w10 = ((16384 - wx) * wy + 16384) >> 14                  w11 = (wx * wy + 16384) >> 14
 *
 * and the largest of them (of equal ones the first of w00, w10, w11, w01) becomes smaller by what their sum is above
 * 16384. The result is
 *
 *     sum = w00 * s(x, y) + w01 * s(x + 1, y) + w10 * s(x, y + 1) + w11 * s(x + 1, y + 1)
 *     destination(x, y) = (sum + 8192) >> 14
 *
 * No weight is 0: without a fraction they are 16381, 1, 1 and 1, which leaves 8u images as they are, and changes pixels
 * of 16u images by 12 at most. A result of Sfs is sum / 2^(14 + scaleFactor), rounded once, to the nearest integer and
 * up from a half, and saturated.
 *
 * 32f results have the fractions themselves, rounded to float, as weights, and are not rounded further: each operation
 * of
 *
 *     row(y) = s(x, y) + fx * (s(x + 1, y) - s(x, y))
 *     destination(x, y) = row(y) + fy * (row(y + 1) - row(y))
 *
 * is rounded to float. So they are the source without a fraction, and constants stay constant; pixels that are
 * infinite, or that far apart, give infinities or NaN.
 *
 * vekiCopySubpixIntersect cuts out a patch of dw x dh pixels around a point of a source. The first pixel of the patch
 * is at lx = point.x - (dw - 1) * 0.5, computed in double, that is at column ix = trunc(dw + lx) - dw with the fraction
 * fx = lx - ix; likewise in rows. Coordinates beyond the source are clamped to it, so that the rest of a patch repeats
 * the pixels at the edges: all of the destination is written, and nothing outside the source is read. A coordinate that
 * is NaN counts as minus infinity. The columns that have their own pixels on both sides, from minPoint.x to maxPoint.x,
 * are
 *
 *     minPoint.x = min(max(-ix, 0), dw)
 *     maxPoint.x = dw - 1 where rx = ix + dw - 1 is at most the width of the source - 2,
 *                  or else the width of the source - rx + dw - 3
 *
 * or 0 to -1 where ix is at least the width of the source; likewise the rows.
 *
 * @param source            first pixel of the source; of vekiCopySubpix, one row and one column more than roiSize are
 *                          read, whatever the weights are
 * @param destination       first pixel of the result; must not overlap the source
 * @param sourceStep, destinationStep   bytes from row to row; that of the source may leave out the additional column of
 *                          vekiCopySubpix, which is then the first of the next row
 * @param roiSize           size of the result, at least 1 x 1
 * @param sourceRoi, destinationRoi   sizes of the source and of the patch, at least 1 x 1 each
 * @param dx, dy            how far right and below the source the result lies
 * @param point             centre of the patch in the source, where (0, 0) is the middle of its first pixel
 * @param scaleFactor       power of 2 by which results are divided; any value, negative ones enlarge
 * @param minPoint, maxPoint   receive the range of the patch that lies inside the source
 *
 * @retval StatusOk                the result was written
 * @retval StatusNullPointer       an image, minPoint or maxPoint is null
 * @retval StatusSizeError         a width or a height is below 1
 * @retval StatusStepError         a step is smaller than a row, without the additional column
 * @retval StatusStepNotMultiple   the step of a 16u or 32f image is not a multiple of 2 or 4
 *
 * The floating-point modes of the calling thread have no effect. Regions of 262144 pixels and more are shared among the
 * threads.
 * @{
 */
/** shifts by a fraction of a pixel */
VEKCV_API Status VEKCV_CALL vekiCopySubpix_8u_C1R(const uint8_t* source, int32_t sourceStep, uint8_t* destination,
                                                  int32_t destinationStep, RoiSize roiSize, float dx, float dy);
VEKCV_API Status VEKCV_CALL vekiCopySubpix_8u16u_C1R_Sfs(const uint8_t* source, int32_t sourceStep,
                                                         uint16_t* destination, int32_t destinationStep,
                                                         RoiSize roiSize, float dx, float dy, int32_t scaleFactor);
VEKCV_API Status VEKCV_CALL vekiCopySubpix_8u32f_C1R(const uint8_t* source, int32_t sourceStep, float* destination,
                                                     int32_t destinationStep, RoiSize roiSize, float dx, float dy);
VEKCV_API Status VEKCV_CALL vekiCopySubpix_16u_C1R(const uint16_t* source, int32_t sourceStep, uint16_t* destination,
                                                   int32_t destinationStep, RoiSize roiSize, float dx, float dy);
VEKCV_API Status VEKCV_CALL vekiCopySubpix_16u32f_C1R(const uint16_t* source, int32_t sourceStep, float* destination,
                                                      int32_t destinationStep, RoiSize roiSize, float dx, float dy);
VEKCV_API Status VEKCV_CALL vekiCopySubpix_32f_C1R(const float* source, int32_t sourceStep, float* destination,
                                                   int32_t destinationStep, RoiSize roiSize, float dx, float dy);
/** cuts out a patch around a point */
VEKCV_API Status VEKCV_CALL vekiCopySubpixIntersect_8u_C1R(const uint8_t* source, int32_t sourceStep, RoiSize sourceRoi,
                                                           uint8_t* destination, int32_t destinationStep,
                                                           RoiSize destinationRoi, ImagePoint32f point,
                                                           ImagePoint* minPoint, ImagePoint* maxPoint);
VEKCV_API Status VEKCV_CALL vekiCopySubpixIntersect_8u16u_C1R_Sfs(const uint8_t* source, int32_t sourceStep,
                                                                  RoiSize sourceRoi, uint16_t* destination,
                                                                  int32_t destinationStep, RoiSize destinationRoi,
                                                                  ImagePoint32f point, int32_t scaleFactor,
                                                                  ImagePoint* minPoint, ImagePoint* maxPoint);
VEKCV_API Status VEKCV_CALL vekiCopySubpixIntersect_8u32f_C1R(const uint8_t* source, int32_t sourceStep,
                                                              RoiSize sourceRoi, float* destination,
                                                              int32_t destinationStep, RoiSize destinationRoi,
                                                              ImagePoint32f point, ImagePoint* minPoint,
                                                              ImagePoint* maxPoint);
VEKCV_API Status VEKCV_CALL vekiCopySubpixIntersect_16u_C1R(const uint16_t* source, int32_t sourceStep,
                                                            RoiSize sourceRoi, uint16_t* destination,
                                                            int32_t destinationStep, RoiSize destinationRoi,
                                                            ImagePoint32f point, ImagePoint* minPoint,
                                                            ImagePoint* maxPoint);
VEKCV_API Status VEKCV_CALL vekiCopySubpixIntersect_16u32f_C1R(const uint16_t* source, int32_t sourceStep,
                                                               RoiSize sourceRoi, float* destination,
                                                               int32_t destinationStep, RoiSize destinationRoi,
                                                               ImagePoint32f point, ImagePoint* minPoint,
                                                               ImagePoint* maxPoint);
VEKCV_API Status VEKCV_CALL vekiCopySubpixIntersect_32f_C1R(const float* source, int32_t sourceStep, RoiSize sourceRoi,
                                                            float* destination, int32_t destinationStep,
                                                            RoiSize destinationRoi, ImagePoint32f point,
                                                            ImagePoint* minPoint, ImagePoint* maxPoint);
/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup SuperResolution Super-resolution kernels
 * An image from many smaller ones that differ by parts of a pixel: the steps of an iteration that take long. The caller
 * has an estimate H of the image and samples, the pixels of the small images. Each sample is what a camera sees of a
 * block of 2 x 2 or 3 x 3 pixels of H: their sum, weighted by one of a few point-spread functions (PSF). Sample i has
 * the block whose first pixel is offsets[i] elements behind that of the image, and the entry psfIndex[i] of the table
 * of a state. With P[r][c], the coefficients of that entry, and s = step / 4, the elements from row to row:
 *
 *     vekiSRHNCalcResidual     residual[i] = the sum of H[offsets[i] + r * s + c] * P[r][c], less lowRes[i]
 *     vekiSRHNUpdateGradient   g = weights[weightIndex[i]] * residual[i]
 *                              G[offsets[i] + r * s + c] += P[r][c] * g
 *
 * The products of a residual are added one after the other, row by row and from left to right, then lowRes, converted
 * to float, is subtracted. The gradient takes one sample after the other in their order, so where blocks overlap it
 * adds in that order. Every operation is rounded to float. Of the images the pixels of the blocks are used and no
 * others.
 *
 * Offsets and indices are not checked: those outside of the image, of the table and of the weights give undefined
 * results. An offset is y * s + x for the block whose first pixel is (x, y); it may be up to 4294967295.
 *
 * A state holds a copy of a table, and serves any number of calls, also at once. It is two blocks of memory: the state
 * itself, and behind it the table with 16 bytes for each entry of 2 x 2, or 48 of 3 x 3, rows of three coefficients and
 * a zero. Both Free functions release the states of both sizes.
 *
 * @param state          result of InitAlloc: the state; else the state
 * @param psfTable       4 or 9 coefficients for each entry, row by row
 * @param highRes        first pixel of the estimate
 * @param gradient       first pixel of the gradient, which is read and written
 * @param highResStep, gradientStep   bytes from row to row, at least those of a row of a block
 * @param lowRes         the values of the samples
 * @param offsets        where the blocks of the samples begin, in elements
 * @param psfIndex       the entries of the samples, counted from 0
 * @param residual       what the samples differ by: results of vekiSRHNCalcResidual, sources of vekiSRHNUpdateGradient
 * @param weightIndex    the weights of the samples
 * @param weights        what weightIndex counts from 0
 * @param count          number of entries of the table, or of samples: elements of lowRes, offsets, psfIndex, residual
 *                       and weightIndex; at least 1
 *
 * What is written must not overlap what is read.
 *
 * @retval StatusOk                 the results were written, or the state was made or released
 * @retval StatusNullPointer        a pointer is null
 * @retval StatusSizeError          count is below 1
 * @retval StatusStepError          a step is smaller than 8 bytes for 2 x 2 or 12 for 3 x 3, or is not a multiple of 4
 * @retval StatusBadArgument        the state is that of the other size
 * @retval StatusMemoryAllocation   there is no memory for the state, and *state is as it was
 *
 * The floating-point modes of the calling thread have no effect. The calling thread does all the work.
 * @{
 */
/** A table of point-spread functions. */
typedef struct SrhnState SrhnState;

/** makes a state from a table of point-spread functions */
VEKCV_API Status VEKCV_CALL vekiSRHNInitAlloc_PSF2x2(SrhnState** state, const float* psfTable, int32_t count);
VEKCV_API Status VEKCV_CALL vekiSRHNInitAlloc_PSF3x3(SrhnState** state, const float* psfTable, int32_t count);
/** what an estimate of an image gives for samples, less their values */
VEKCV_API Status VEKCV_CALL vekiSRHNCalcResidual_PSF2x2_8u32f_C1R(const float* highRes, int32_t highResStep,
                                                                  const uint8_t* lowRes, const uint32_t* offsets,
                                                                  const uint16_t* psfIndex, float* residual,
                                                                  int32_t count, const SrhnState* state);
VEKCV_API Status VEKCV_CALL vekiSRHNCalcResidual_PSF2x2_16u32f_C1R(const float* highRes, int32_t highResStep,
                                                                   const uint16_t* lowRes, const uint32_t* offsets,
                                                                   const uint16_t* psfIndex, float* residual,
                                                                   int32_t count, const SrhnState* state);
VEKCV_API Status VEKCV_CALL vekiSRHNCalcResidual_PSF3x3_8u32f_C1R(const float* highRes, int32_t highResStep,
                                                                  const uint8_t* lowRes, const uint32_t* offsets,
                                                                  const uint16_t* psfIndex, float* residual,
                                                                  int32_t count, const SrhnState* state);
VEKCV_API Status VEKCV_CALL vekiSRHNCalcResidual_PSF3x3_16u32f_C1R(const float* highRes, int32_t highResStep,
                                                                   const uint16_t* lowRes, const uint32_t* offsets,
                                                                   const uint16_t* psfIndex, float* residual,
                                                                   int32_t count, const SrhnState* state);
/** adds weighted residuals to a gradient */
VEKCV_API Status VEKCV_CALL vekiSRHNUpdateGradient_PSF2x2_32f_C1R(float* gradient, int32_t gradientStep,
                                                                  const uint32_t* offsets, const uint16_t* psfIndex,
                                                                  const float* residual, const uint8_t* weightIndex,
                                                                  int32_t count, const float* weights,
                                                                  const SrhnState* state);
VEKCV_API Status VEKCV_CALL vekiSRHNUpdateGradient_PSF3x3_32f_C1R(float* gradient, int32_t gradientStep,
                                                                  const uint32_t* offsets, const uint16_t* psfIndex,
                                                                  const float* residual, const uint8_t* weightIndex,
                                                                  int32_t count, const float* weights,
                                                                  const SrhnState* state);
/** releases a state */
VEKCV_API Status VEKCV_CALL vekiSRHNFree_PSF2x2(SrhnState* state);
VEKCV_API Status VEKCV_CALL vekiSRHNFree_PSF3x3(SrhnState* state);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
