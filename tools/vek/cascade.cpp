#include "cascade.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <pugixml.hpp>
#include <string_view>

#include "picture.h"
#include "read_file.h"

namespace {

// The largest of the trained ones have 2.7 MB, 47 stages, 8468 features, 406 classifiers in a stage and 3 rectangles.
constexpr size_t kMostBytes = size_t{64} << 20;
constexpr size_t kMostStages = 1000, kMostFeatures = 100000, kMostClassifiers = 10000, kMostRectangles = 16;
// The squares of a window of white pixels fit an integral image; inside of a border of a pixel there is a pixel.
constexpr int32_t kLeastSide = 3, kLargestSide = 181;
// Sums of so many products with pixels remain finite.
constexpr double kLargestNumber = 1e25;
constexpr std::string_view kSpace = " \t\r\n";

/** What is wrong with a cascade. */
struct CascadeError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/** The text of an element, as numbers with space between. */
class Numbers {
  public:
    Numbers(pugi::xml_node element, const std::string& name) : text_(element.child_value()), name_(name) {
        if (!element)
            throw CascadeError(name_ + " is missing");
    }

    bool atEnd() {
        text_.remove_prefix(std::min(text_.find_first_not_of(kSpace), text_.size()));
        return text_.empty();
    }
    int32_t integer(int32_t least, int32_t largest) {
        const auto value = next<int32_t>();
        if (value < least || value > largest)
            throw CascadeError(name_ + " holds " + std::to_string(value) + ", which is not from " +
                               std::to_string(least) + " to " + std::to_string(largest));
        return value;
    }
    float real() {
        const auto value = next<double>();
        if (!(std::abs(value) <= kLargestNumber))
            throw CascadeError(name_ + " holds a number that is not finite or too large");
        return static_cast<float>(value);
    }
    void end() {
        if (!atEnd())
            throw CascadeError(name_ + " holds more than it should");
    }

  private:
    template <typename T>
    T next() {
        if (atEnd())
            throw CascadeError(name_ + " holds too few numbers");
        T value{};
        const auto [rest, error] = std::from_chars(text_.data(), text_.data() + text_.size(), value);
        const auto length = static_cast<size_t>(rest - text_.data());
        const bool isWhole = length == text_.size() || kSpace.find(text_[length]) != std::string_view::npos;
        if (error != std::errc() || !isWhole)
            throw CascadeError(name_ + " holds what is not a number, or too large a one");
        text_.remove_prefix(length);
        return value;
    }

    std::string_view text_;
    std::string name_;
};

int32_t onlyInteger(pugi::xml_node element, const std::string& name, int32_t least, int32_t largest) {
    Numbers numbers(element, name);
    const int32_t value = numbers.integer(least, largest);
    numbers.end();
    return value;
}

/** The items of a list, from 1 to so many. */
std::vector<pugi::xml_node> itemsOf(pugi::xml_node list, const std::string& name, size_t most) {
    std::vector<pugi::xml_node> items;
    for (const pugi::xml_node item : list.children("_"))
        items.push_back(item);
    if (items.empty() || items.size() > most)
        throw CascadeError(name + (items.empty() ? " are missing" : " are more than " + std::to_string(most)));
    return items;
}

std::string numbered(const std::string& name, size_t index) {
    return name + " " + std::to_string(index);
}

/** What a rectangle covers must lie in the window. */
void checkPlace(const ImageRect& place, bool tilted, RoiSize window, const std::string& name) {
    const int32_t left = tilted ? place.x - place.height : place.x, right = place.x + place.width;
    const int32_t bottom = place.y + place.height + (tilted ? place.width : 0);
    if (left < 0 || right > window.width || bottom > window.height)
        throw CascadeError(name + " leaves the window");
}

CascadeFeature featureFrom(pugi::xml_node element, RoiSize window, const std::string& name) {
    CascadeFeature feature;
    const pugi::xml_node tilted = element.child("tilted");
    feature.tilted = tilted && onlyInteger(tilted, name + ": tilted", 0, 1) == 1;
    for (const pugi::xml_node item : itemsOf(element.child("rects"), name + ": rectangles", kMostRectangles)) {
        const std::string rectangleName = name + ": rectangle " + std::to_string(feature.rectangles.size());
        Numbers numbers(item, rectangleName);
        CascadeRectangle rectangle{};
        rectangle.place.x = numbers.integer(0, window.width);
        rectangle.place.y = numbers.integer(0, window.height);
        rectangle.place.width = numbers.integer(1, window.width);
        rectangle.place.height = numbers.integer(1, window.height);
        rectangle.weight = numbers.real();
        numbers.end();
        checkPlace(rectangle.place, feature.tilted, window, rectangleName);
        feature.rectangles.push_back(rectangle);
    }
    return feature;
}

WeakClassifier classifierFrom(pugi::xml_node element, size_t featureCount, const std::string& name) {
    // A node names what comes next where the feature is below its threshold and where it is not: a node, or 0, -1, -2
    // and so on for a leaf.
    Numbers nodes(element.child("internalNodes"), name + ": internalNodes");
    const int32_t below = nodes.integer(INT16_MIN, INT16_MAX), above = nodes.integer(INT16_MIN, INT16_MAX);
    WeakClassifier classifier{};
    classifier.feature = static_cast<size_t>(nodes.integer(0, static_cast<int32_t>(featureCount) - 1));
    classifier.threshold = nodes.real();
    if (below != 0 || above != -1 || !nodes.atEnd())
        throw CascadeError(name + " is a tree of several nodes or of categories; only stumps can be used");
    Numbers leaves(element.child("leafValues"), name + ": leafValues");
    classifier.below = leaves.real();
    classifier.above = leaves.real();
    leaves.end();
    return classifier;
}

CascadeStage stageFrom(pugi::xml_node element, size_t featureCount, const std::string& name) {
    CascadeStage stage{};
    Numbers threshold(element.child("stageThreshold"), name + ": stageThreshold");
    stage.threshold = threshold.real();
    threshold.end();
    for (const pugi::xml_node item :
         itemsOf(element.child("weakClassifiers"), name + ": weakClassifiers", kMostClassifiers))
        stage.classifiers.push_back(
            classifierFrom(item, featureCount, name + ", " + numbered("classifier", stage.classifiers.size())));
    return stage;
}

/** The element of the cascade, whose kind is one that can be used. */
pugi::xml_node cascadeIn(const pugi::xml_document& document) {
    const pugi::xml_node root = document.child("opencv_storage");
    const pugi::xml_node element = root.find_child([](pugi::xml_node node) { return bool(node.first_child()); });
    const std::string_view type = element.attribute("type_id").value();
    if (type == "opencv-haar-classifier")
        throw CascadeError("is a cascade of the old format, which must be converted first");
    if (!element.child("stages") || (!type.empty() && type != "opencv-cascade-classifier"))
        throw CascadeError("holds no cascade");
    const std::string stages = element.child_value("stageType"), features = element.child_value("featureType");
    if (stages != "BOOST")
        throw CascadeError("has stages of type '" + stages + "'; only those of type BOOST can be used");
    if (features != "HAAR")
        throw CascadeError("has features of type '" + features + "'; only those of type HAAR can be used");
    return element;
}

Cascade cascadeFrom(const std::vector<uint8_t>& text) {
    pugi::xml_document document;
    if (const pugi::xml_parse_result result = document.load_buffer(text.data(), text.size()); !result)
        throw CascadeError(std::string("is not XML: ") + result.description());
    const pugi::xml_node element = cascadeIn(document);
    Cascade cascade{};
    cascade.window.width = onlyInteger(element.child("width"), "width", kLeastSide, kLargestSide);
    cascade.window.height = onlyInteger(element.child("height"), "height", kLeastSide, kLargestSide);
    for (const pugi::xml_node item : itemsOf(element.child("features"), "features", kMostFeatures))
        cascade.features.push_back(featureFrom(item, cascade.window, numbered("feature", cascade.features.size())));
    const std::vector<pugi::xml_node> stages = itemsOf(element.child("stages"), "stages", kMostStages);
    if (const pugi::xml_node count = element.child("stageNum"))
        if (static_cast<size_t>(onlyInteger(count, "stageNum", 1, kMostStages)) != stages.size())
            throw CascadeError("stageNum is not the number of stages");
    for (const pugi::xml_node item : stages)
        cascade.stages.push_back(stageFrom(item, cascade.features.size(), numbered("stage", cascade.stages.size())));
    return cascade;
}

}  // namespace

bool Cascade::hasTilted() const {
    return std::ranges::any_of(features, &CascadeFeature::tilted);
}

Cascade Cascade::transposed() const {
    Cascade result = *this;
    std::swap(result.window.width, result.window.height);
    for (CascadeFeature& feature : result.features)
        for (CascadeRectangle& rectangle : feature.rectangles) {
            const ImageRect place = rectangle.place;
            rectangle.place = feature.tilted ? ImageRect{place.y + place.height - 1, place.x - place.height,
                                                         place.width, place.height}
                                             : ImageRect{place.y, place.x, place.height, place.width};
        }
    return result;
}

Cascade readCascade(const std::string& path) {
    const auto text = readFile(path, [](const auto& beginning) { return beginning.size() <= kMostBytes; });
    if (text.size() > kMostBytes)
        throw Failure(path, "is too large for a cascade");
    try {
        return cascadeFrom(text);
    } catch (const CascadeError& error) {
        throw Failure(path, error.what());
    }
}
