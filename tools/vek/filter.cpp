// vek filter: derivatives, the mean and the Gaussian filter.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <optional>

#include "commands.h"
#include "grey.h"
#include "library_call.h"
#include "options.h"
#include "picture_file.h"
#include "work_buffer.h"

namespace {

constexpr int32_t kLeastSize = 3, kLargestSize = 9999;
// With the least, nothing changes; with the largest, 6001 x 6001 pixels are averaged.
constexpr float kLeastSigma = 0.01f, kUsualSigma = 1.5f, kLargestSigma = 1000.f;

struct Options {
    std::string filter, input, output, border = "replicate";
    std::optional<int32_t> aperture, size;
    std::optional<float> sigma;
};

const std::map<std::string, int32_t> kBorders = {{"constant", BorderConstant},
                                                 {"replicate", BorderReplicate},
                                                 {"periodic", BorderPeriodic},
                                                 {"reflect", BorderReflect},
                                                 {"reflectedge", BorderReflectEdge}};

/** Which options a filter has beyond the border. */
enum class Takes { kNothing, kAperture, kSigmaAndSize };

struct Filter {
    Takes takes;
    std::function<Picture(const Picture& grey, const Options& options)> apply;
};

const std::vector<uint8_t>& asBytes(const std::vector<uint8_t>& pixels) {
    return pixels;
}

std::vector<uint8_t> asBytes(const std::vector<float>& pixels) {
    std::vector<uint8_t> bytes(pixels.size());
    std::ranges::transform(pixels, bytes.begin(),
                           [](float pixel) { return static_cast<uint8_t>(std::lrint(std::clamp(pixel, 0.f, 255.f))); });
    return bytes;
}

/** 128 where a derivative is 0; the largest magnitude becomes 1 or 255. */
std::vector<uint8_t> asBytes(const std::vector<int16_t>& derivatives) {
    int32_t largest = 1;
    for (const int32_t derivative : derivatives)
        largest = std::max(largest, std::abs(derivative));
    std::vector<uint8_t> bytes(derivatives.size());
    std::ranges::transform(derivatives, bytes.begin(), [=](int32_t derivative) {
        return static_cast<uint8_t>(128 + std::lrint(127. * derivative / largest));
    });
    return bytes;
}

/** Calls a function of the library, whose arguments between the size and the border are `kernel`. */
template <typename Result, typename T>
Picture filtered(const char* name, auto function, const std::vector<T>& pixels, const Picture& shape,
                 const Options& options, const WorkBuffer& buffer, auto... kernel) {
    Picture result(shape.width, shape.height, 1, 8);
    std::vector<Result> values(pixels.size());
    callLibrary(name, function, pixels.data(), shape.width * static_cast<int32_t>(sizeof(T)), values.data(),
                shape.width * static_cast<int32_t>(sizeof(Result)), shape.size(), kernel...,
                kBorders.at(options.border), T{0}, buffer.get());
    result.bytes = asBytes(values);
    return result;
}

/** A filter of fixed taps, with a mask of 3 x 3 or 5 x 5 where its functions ask for it. */
template <typename Result>
Filter fixed(const char* name, auto function, auto bufferSize) {
    constexpr bool kHasMasks = std::is_invocable_v<decltype(bufferSize), RoiSize, int32_t, int32_t*>;
    return {kHasMasks ? Takes::kAperture : Takes::kNothing, [=](const Picture& grey, const Options& options) {
                const auto call = [&](auto... mask) {
                    return filtered<Result>(name, function, grey.bytes, grey, options,
                                            workBuffer(bufferSize, grey.size(), mask...), mask...);
                };
                if constexpr (kHasMasks)
                    return call(int32_t{options.aperture == 5 ? MaskSize5x5 : MaskSize3x3});
                else
                    return call();
            }};
}

Picture gauss(const Picture& grey, const Options& options) {
    const float sigma = options.sigma.value_or(kUsualSigma);
    const int32_t size = options.size.value_or(2 * static_cast<int32_t>(std::ceil(3 * sigma)) + 1);
    const std::vector<float> pixels(grey.bytes.begin(), grey.bytes.end());
    return filtered<float>("vekiFilterGaussBorder_32f_C1R", vekiFilterGaussBorder_32f_C1R, pixels, grey, options,
                           workBuffer(vekiFilterGaussGetBufferSize_32f_C1R, grey.size(), size), size, sigma);
}

const std::map<std::string, Filter> kFilters = {
    {"sobel-horiz", fixed<int16_t>("vekiFilterSobelHorizBorder_8u16s_C1R", vekiFilterSobelHorizBorder_8u16s_C1R,
                                   vekiFilterSobelHorizGetBufferSize_8u16s_C1R)},
    {"sobel-vert", fixed<int16_t>("vekiFilterSobelVertBorder_8u16s_C1R", vekiFilterSobelVertBorder_8u16s_C1R,
                                  vekiFilterSobelVertGetBufferSize_8u16s_C1R)},
    {"sobel-neg-vert", fixed<int16_t>("vekiFilterSobelNegVertBorder_8u16s_C1R", vekiFilterSobelNegVertBorder_8u16s_C1R,
                                      vekiFilterSobelNegVertGetBufferSize_8u16s_C1R)},
    {"sobel-horiz-second",
     fixed<int16_t>("vekiFilterSobelHorizSecondBorder_8u16s_C1R", vekiFilterSobelHorizSecondBorder_8u16s_C1R,
                    vekiFilterSobelHorizSecondGetBufferSize_8u16s_C1R)},
    {"sobel-vert-second",
     fixed<int16_t>("vekiFilterSobelVertSecondBorder_8u16s_C1R", vekiFilterSobelVertSecondBorder_8u16s_C1R,
                    vekiFilterSobelVertSecondGetBufferSize_8u16s_C1R)},
    {"sobel-cross", fixed<int16_t>("vekiFilterSobelCrossBorder_8u16s_C1R", vekiFilterSobelCrossBorder_8u16s_C1R,
                                   vekiFilterSobelCrossGetBufferSize_8u16s_C1R)},
    {"scharr-horiz", fixed<int16_t>("vekiFilterScharrHorizBorder_8u16s_C1R", vekiFilterScharrHorizBorder_8u16s_C1R,
                                    vekiFilterScharrHorizGetBufferSize_8u16s_C1R)},
    {"scharr-vert", fixed<int16_t>("vekiFilterScharrVertBorder_8u16s_C1R", vekiFilterScharrVertBorder_8u16s_C1R,
                                   vekiFilterScharrVertGetBufferSize_8u16s_C1R)},
    {"laplacian", fixed<int16_t>("vekiFilterLaplacianBorder_8u16s_C1R", vekiFilterLaplacianBorder_8u16s_C1R,
                                 vekiFilterLaplacianGetBufferSize_8u16s_C1R)},
    {"lowpass", fixed<uint8_t>("vekiFilterLowpassBorder_8u_C1R", vekiFilterLowpassBorder_8u_C1R,
                               vekiFilterLowpassGetBufferSize_8u_C1R)},
    {"gauss", {Takes::kSigmaAndSize, gauss}},
};

void filter(const Options& options) {
    const Filter& chosen = kFilters.at(options.filter);
    if (options.aperture && chosen.takes != Takes::kAperture)
        throw UsageError(options.filter, "takes no --aperture");
    if ((options.sigma || options.size) && chosen.takes != Takes::kSigmaAndSize)
        throw UsageError(options.filter, "takes neither --sigma nor --size");
    checkPictureName(options.output);
    const Picture grey = inGrey(readEightBit(options.input, "filters are for"));
    writePicture(options.output, chosen.apply(grey, options));
}

std::string errorOfSize(const std::string& text) {
    return std::atoi(text.c_str()) % 2 == 0 ? "is even, but the kernel has a middle" : "";
}

}  // namespace

void addFilter(CLI::App& app) {
    CLI::App* const command = app.add_subcommand("filter", "A derivative, the mean or the Gaussian filter, in grey");
    command->footer(
        "  sobel-horiz, scharr-horiz     derivative in y: horizontal edges\n"
        "  sobel-vert                    derivative in x, left minus right: vertical edges\n"
        "  sobel-neg-vert, scharr-vert   derivative in x, right minus left\n"
        "  sobel-horiz-second            second derivative in y\n"
        "  sobel-vert-second             second derivative in x\n"
        "  sobel-cross                   derivative in x and y\n"
        "  laplacian                     sum of the second derivatives\n"
        "  lowpass                       mean of the pixels under the mask\n"
        "  gauss                         mean with Gaussian weights\n\n"
        "OUT of a derivative is 128 where it is 0, brighter where it is positive and darker where it is negative. The\n"
        "largest magnitude in the picture becomes 1 or 255, so the scale is another for each picture.");
    const auto options = std::make_shared<Options>();
    command->add_option("NAME", options->filter, "The filter; capitals do not matter")
        ->required()
        ->transform(CLI::IsMember(&kFilters, CLI::ignore_case));
    addGreyInput(*command, options->input);
    command->add_option("OUT", options->output, "Where the result goes (.png, .jpg)")->required();
    command
        ->add_option("--aperture", options->aperture,
                     "Width and height of the mask; 3 without it. Not for scharr and gauss")
        ->check(CLI::IsMember({3, 5}));
    command->add_option("--border", options->border, "What lies outside of the picture; constant is black")
        ->transform(CLI::IsMember(&kBorders, CLI::ignore_case))
        ->capture_default_str();
    command->add_option("--sigma", options->sigma, "Standard deviation of gauss in pixels, .01 to 1000; 1.5 without it")
        ->check(numberFrom(kLeastSigma, kLargestSigma));
    command->add_option("--size", options->size, "Width and height of gauss, odd; 2 * ceil(3 * sigma) + 1 without it")
        ->check(CLI::Range(kLeastSize, kLargestSize))
        ->check(errorOfSize);
    command->callback([=] { filter(*options); });
}
