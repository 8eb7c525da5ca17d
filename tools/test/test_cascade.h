// Cascades that tests write, and what they find by their definition.
#pragma once

#include <cmath>
#include <fstream>
#include <sstream>

#include "picture.h"

struct TestRectangle {
    int x, y, width, height, weight;
};

struct TestFeature {
    std::vector<TestRectangle> rectangles;
    bool tilted;
    double threshold, below, above;
};

struct TestStage {
    double threshold;
    std::vector<TestFeature> features;
};

struct TestCascade {
    int width, height;
    std::vector<TestStage> stages;

    std::string xml() const {
        std::ostringstream text, features;
        text << "<?xml version=\"1.0\"?>\n<!-- A test. -->\n<opencv_storage>\n<cascade "
                "type_id=\"opencv-cascade-classifier\"><stageType>BOOST</stageType>\n<featureType>HAAR</featureType>\n"
             << "<height>" << height << "</height>\n<width>" << width << "</width>\n<stageNum>" << stages.size()
             << "</stageNum>\n<stages>\n";
        int index = 0;
        for (const TestStage& stage : stages) {
            text << "<_>\n<stageThreshold>" << stage.threshold << "</stageThreshold>\n<weakClassifiers>\n";
            for (const TestFeature& feature : stage.features) {
                text << "<_><internalNodes>\n  0 -1 " << index++ << ' ' << feature.threshold
                     << "</internalNodes>\n<leafValues>\n  " << feature.below << ' ' << feature.above
                     << "</leafValues></_>\n";
                features << "<_><rects>\n";
                for (const TestRectangle& one : feature.rectangles)
                    features << "<_>" << one.x << ' ' << one.y << ' ' << one.width << ' ' << one.height << ' '
                             << one.weight << ".</_>\n";
                features << "</rects>\n";
                if (feature.tilted)
                    features << "<tilted>1</tilted>";
                features << "</_>\n";
            }
            text << "</weakClassifiers></_>\n";
        }
        text << "</stages>\n<features>\n" << features.str() << "</features></cascade>\n</opencv_storage>\n";
        return text.str();
    }
};

inline void writeText(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

/** Evaluates the windows of a picture pixel by pixel. */
class DirectDetector {
  public:
    DirectDetector(const TestCascade& cascade, const Picture& grey) : cascade_(cascade), grey_(grey) {}

    /** 1 where the window passes, 0 where it does not, -1 where rounding decides. */
    int passes(int x, int y) const {
        const double norm = deviation(x, y) * (cascade_.width - 2) * (cascade_.height - 2);
        for (const TestStage& stage : cascade_.stages) {
            double sum = 0;
            for (const TestFeature& feature : stage.features) {
                const double least = feature.threshold * norm;
                const auto response = static_cast<double>(responseOf(feature, x, y));
                if (std::abs(response - least) <= 1e-4 * norm)
                    return -1;
                sum += response < least ? feature.below : feature.above;
            }
            if (std::abs(sum - stage.threshold) < 1e-4)
                return -1;
            if (sum < stage.threshold)
                return 0;
        }
        return 1;
    }

  private:
    int pixel(int x, int y) const { return grey_.bytes.at(static_cast<size_t>(y * grey_.width + x)); }

    /** Of the window without a border of one pixel. */
    double deviation(int left, int top) const {
        double sum = 0, squares = 0;
        for (int y = top + 1; y < top + cascade_.height - 1; ++y)
            for (int x = left + 1; x < left + cascade_.width - 1; ++x) {
                sum += pixel(x, y);
                squares += pixel(x, y) * pixel(x, y);
            }
        const double area = (cascade_.width - 2) * (cascade_.height - 2), mean = sum / area;
        return std::sqrt(std::max(squares / area - mean * mean, 0.));
    }

    int responseOf(const TestFeature& feature, int x, int y) const {
        int response = 0;
        for (const TestRectangle& one : feature.rectangles)
            for (int down = 0; down < one.height; ++down)
                for (int across = 0; across < one.width; ++across)
                    if (feature.tilted) {
                        // Each step to the lower right and to the lower left covers two pixels, one above the other.
                        const int column = x + one.x - 1 + across - down, row = y + one.y + across + down;
                        response += one.weight * (pixel(column, row) + pixel(column, row + 1));
                    } else {
                        response += one.weight * pixel(x + one.x + across, y + one.y + down);
                    }
        return response;
    }

    const TestCascade& cascade_;
    const Picture& grey_;
};
