// vek filter, against sums over masks as the manual gives them.
#include <cmath>
#include <functional>

#include "border.h"
#include "run_vek.h"

namespace {

struct NamedBorder {
    const char* name;
    int rule;
};
constexpr NamedBorder kBorders[] = {{"constant", BorderConstant},
                                    {"replicate", BorderReplicate},
                                    {"periodic", BorderPeriodic},
                                    {"reflect", BorderReflect},
                                    {"reflectedge", BorderReflectEdge}};

constexpr const char* kNames[] = {"sobel-horiz",       "sobel-vert",  "sobel-neg-vert", "sobel-horiz-second",
                                  "sobel-vert-second", "sobel-cross", "scharr-horiz",   "scharr-vert",
                                  "laplacian",         "lowpass",     "gauss"};

/** The pixels around (x, y), each times its number in a square mask with odd sides. */
template <typename T>
T sumAround(const Picture& of, int x, int y, const std::vector<T>& mask, int rule) {
    const int size = static_cast<int>(std::lround(std::sqrt(mask.size())));
    T sum = 0;
    for (int j = 0; j < size; ++j)
        for (int i = 0; i < size; ++i) {
            const int row = borderPixel(rule, y + j - size / 2, of.height),
                      column = borderPixel(rule, x + i - size / 2, of.width);
            if (row >= 0 && column >= 0)
                sum += mask[static_cast<size_t>(j * size + i)] * of.bytes[static_cast<size_t>(row * of.width + column)];
        }
    return sum;
}

template <typename T>
std::vector<T> sumsAround(const Picture& of, const std::vector<T>& mask, int rule) {
    std::vector<T> sums;
    for (int y = 0; y < of.height; ++y)
        for (int x = 0; x < of.width; ++x)
            sums.push_back(sumAround(of, x, y, mask, rule));
    return sums;
}

/** Writes a picture, filters it, and reads the result. */
Picture filtered(const Picture& source, const std::string& name, const std::string& options) {
    writePicture("in.png", source);
    return outputOf("filter " + name + " in.png out.png " + options);
}

/** What each pixel must be, give or take `tolerance`. */
void expectPixels(const std::vector<double>& expected, const Picture& out, double tolerance) {
    ASSERT_EQ(expected.size(), out.bytes.size());
    for (size_t i = 0; i < expected.size(); ++i)
        ASSERT_NEAR(expected[i], out.bytes[i], tolerance)
            << i % static_cast<size_t>(out.width) << ", " << i / static_cast<size_t>(out.width);
}

void checkDerivative(const Picture& source, const std::string& name, const std::string& options,
                     const std::vector<int>& mask, int rule) {
    SCOPED_TRACE(::testing::Message() << source.shape() << " " << name << " " << options);
    const std::vector<int> derivatives = sumsAround(source, mask, rule);
    int largest = 1;
    for (int derivative : derivatives)
        largest = std::max(largest, std::abs(derivative));
    std::vector<double> expected;
    for (int derivative : derivatives)
        expected.push_back(128 + derivative * 127. / largest);
    expectPixels(expected, filtered(source, name, options), 0.5);
}

/** The mask of a filter of rows and a filter of columns. */
std::vector<int> product(const std::vector<int>& row, const std::vector<int>& column) {
    std::vector<int> mask;
    for (int down : column)
        for (int across : row)
            mask.push_back(down * across);
    return mask;
}

std::vector<int> sum(std::vector<int> a, const std::vector<int>& b) {
    std::ranges::transform(a, b, a.begin(), std::plus());
    return a;
}

TEST_F(Vek, ShowsDerivatives) {
    struct Derivative {
        const char* arguments;
        std::vector<int> mask;
    };
    const std::vector<int> smooth{1, 2, 1}, rising{-1, 0, 1}, falling{1, 0, -1}, second{1, -2, 1}, scharr{3, 10, 3};
    const std::vector<int> smooth5{1, 4, 6, 4, 1}, rising5{-1, -2, 0, 2, 1}, falling5{1, 2, 0, -2, -1},
        second5{1, 0, -2, 0, 1};
    const Picture source = picture(29, 17, 1, 8, 1);
    for (const Derivative& one : std::initializer_list<Derivative>{
             {"sobel-horiz", product(smooth, rising)},
             {"sobel-vert", product(falling, smooth)},
             {"sobel-neg-vert", product(rising, smooth)},
             {"sobel-horiz-second", product(smooth, second)},
             {"sobel-vert-second", product(second, smooth)},
             {"sobel-cross", product(falling, rising)},
             {"scharr-horiz", product(scharr, rising)},
             {"scharr-vert", product(rising, scharr)},
             {"laplacian", {2, 0, 2, 0, -8, 0, 2, 0, 2}},
             {"sobel-horiz --aperture 5", product(smooth5, rising5)},
             {"sobel-vert --aperture 5", product(falling5, smooth5)},
             {"sobel-neg-vert --aperture 5", product(rising5, smooth5)},
             {"sobel-horiz-second --aperture 5", product(smooth5, second5)},
             {"sobel-vert-second --aperture 5", product(second5, smooth5)},
             {"sobel-cross --aperture 5", product(falling5, rising5)},
             {"laplacian --aperture 5", sum(product(smooth5, second5), product(second5, smooth5))},
         })
        checkDerivative(source, one.arguments, "", one.mask, BorderReplicate);

    const std::vector<int> horiz = product(smooth, rising), vert5 = product(falling5, smooth5);
    for (const NamedBorder& border : kBorders) {
        const std::string option = std::string("--border ") + border.name;
        checkDerivative(source, "sobel-horiz", option + " --aperture 3", horiz, border.rule);
        checkDerivative(source, "sobel-vert", option + " --aperture 5", vert5, border.rule);
    }
    checkDerivative(picture(1, 1, 1, 8, 1), "sobel-horiz", "", horiz, BorderReplicate);
    checkDerivative(picture(300, 270, 1, 8, 1), "sobel-vert", "--aperture 5 --threads 3", vert5, BorderReplicate);
}

TEST_F(Vek, ShowsTheSignOfDerivatives) {
    Picture edge(6, 3, 1, 8);
    for (size_t i = 0; i < edge.bytes.size(); ++i)
        edge.bytes[i] = i % 6 < 3 ? 10 : 12;
    std::vector<double> brighter, darker;
    for (size_t i = 0; i < edge.bytes.size(); ++i) {
        const bool atEdge = i % 6 == 2 || i % 6 == 3;
        brighter.push_back(atEdge ? 255 : 128);
        darker.push_back(atEdge ? 1 : 128);
    }
    expectPixels(brighter, filtered(edge, "sobel-neg-vert", ""), 0);
    expectPixels(darker, filtered(edge, "sobel-vert", ""), 0);
    expectPixels(std::vector<double>(edge.bytes.size(), 128), filtered(edge, "sobel-horiz", ""), 0);
}

TEST_F(Vek, FiltersWithTheMean) {
    const Picture source = picture(29, 17, 1, 8, 2);
    for (const NamedBorder& border : kBorders)
        for (int size : {3, 5}) {
            SCOPED_TRACE(::testing::Message() << border.name << " " << size);
            const auto area = static_cast<size_t>(size * size);
            std::vector<double> expected;
            for (int sum : sumsAround(source, std::vector<int>(area, 1), border.rule))
                expected.push_back(std::floor(sum / static_cast<double>(area) + 0.5));
            const std::string options = std::string("--border ") + border.name + " --aperture " + std::to_string(size);
            expectPixels(expected, filtered(source, "lowpass", options), 0);
        }
}

TEST_F(Vek, FiltersWithGaussianWeights) {
    struct Case {
        const char* options;
        double sigma;
        int size;
    };
    const Picture source = picture(23, 14, 1, 8, 3);
    for (const Case& one : {Case{"", 1.5, 11}, Case{"--sigma 0.8", 0.8, 7}, Case{"--size 3", 1.5, 3},
                            Case{"--sigma 6 --size 5", 6, 5}, Case{"--sigma 9", 9, 55}, Case{"--sigma .01", .01, 3}})
        for (const NamedBorder& border : kBorders) {
            SCOPED_TRACE(::testing::Message() << one.options << " " << border.name);
            std::vector<double> mask;
            double sum = 0;
            for (int y = -(one.size / 2); y <= one.size / 2; ++y)
                for (int x = -(one.size / 2); x <= one.size / 2; ++x)
                    sum += mask.emplace_back(std::exp(-(x * x + y * y) / (2 * one.sigma * one.sigma)));
            for (double& weight : mask)
                weight /= sum;
            const std::string options = std::string(one.options) + " --border " + border.name;
            // Beyond half a level, the rounding of floats.
            expectPixels(sumsAround(source, mask, border.rule), filtered(source, "gauss", options), 0.501);
        }
}

TEST_F(Vek, FiltersByEveryName) {
    const Picture color = picture(31, 22, 3, 8, 4), grey = greyOf(color);
    std::vector<Picture> results;
    for (const std::string name : kNames) {
        SCOPED_TRACE(name);
        results.push_back(filtered(grey, name, ""));
        ASSERT_TRUE(results.back().hasShapeOf(grey)) << results.back().shape();
        EXPECT_EQ(results.back().bytes, filtered(color, inCapitals(name), "--border REPLICATE").bytes);
        for (size_t i = 0; i + 1 < results.size(); ++i)
            EXPECT_NE(results[i].bytes, results.back().bytes) << kNames[i];
        expectFailure("filter blur in.png x.png", 2, name);
    }
    const Result timed = vek("filter laplacian in.png out.png --time");
    EXPECT_NE(std::string::npos, timed.output.find("ms  vekiFilterLaplacianBorder_8u16s_C1R")) << timed.output;
}

TEST_F(Vek, RefusesWrongUseOfFilters) {
    writePicture("in.png", picture(16, 8, 1, 8, 1));
    for (const std::string arguments :
         {"", "sobel-horiz", "sobel-horiz in.png", "blur in.png x.png", "lowpass in.png x.png --aperture 4",
          "lowpass in.png x.png --aperture wide", "lowpass in.png x.png --mask 5", "lowpass in.png x.png --border none",
          "lowpass in.png x.png --border 1", "gauss in.png x.png --size 1", "gauss in.png x.png --size 4",
          "gauss in.png x.png --size -5", "gauss in.png x.png --size 99999999999", "gauss in.png x.png --sigma 0",
          "gauss in.png x.png --sigma -1", "gauss in.png x.png --sigma inf", "gauss in.png x.png --sigma much"})
        expectFailure("filter " + arguments, 2, "");
    expectFailure("filter gauss in.png x.png --sigma nan", 2, "--sigma: is not a number from 0.01 to 1000");
    for (const std::string name : kNames) {
        if (name == "gauss" || name.starts_with("scharr"))
            expectFailure("filter " + name + " in.png x.png --aperture 3", 2, name + ": takes no --aperture");
        if (name != "gauss")
            for (const std::string option : {" --sigma 2", " --size 5"})
                expectFailure("filter " + name + " in.png x.png" + option, 2,
                              name + ": takes neither --sigma nor --size");
    }
}

TEST_F(Vek, SaysWhatCannotBeFiltered) {
    writePicture("in.png", picture(16, 8, 1, 8, 1));
    writePicture("deep.png", picture(16, 8, 1, 16, 1));
    writePicture("long.png", Picture(30000, 1, 1, 8));
    expectFailure("filter gauss missing.png x.png", 1, "missing.png: cannot be opened");
    expectFailure("filter gauss deep.png x.png", 1, "deep.png: is 16 x 8, 16-bit grey; filters are for 8-bit pictures");
    expectFailure("filter gauss long.png x.png --size 9999", 1, "the work buffer: would be larger than 2 GiB");
    expectFailure("filter gauss in.png x.bmp", 2, "x.bmp: pictures are written as");
    expectFailure("filter gauss in.png missing/x.png", 1, "missing/x.png: cannot be written");
}

}  // namespace
