// vekcv_detect_bench: the detector of the tool against that of the peer, with the same cascade, on one thread each.
// Usage: vekcv_detect_bench CASCADE PICTURE [ROUNDS]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <opencv2/imgproc.hpp>
#include <opencv2/objdetect.hpp>

#include "detector.h"
#include "grey.h"
#include "picture_file.h"
#include "vekcore.h"

namespace {

constexpr double kScale = 1.1;
constexpr int32_t kNeighbours = 3, kMinSizes[] = {0, 40};
constexpr int kRounds = 11;
// Of the area of two rectangles, what they share when both are about the same object.
constexpr double kLeastShare = 0.6;

double millisecondsOf(const std::function<void()>& call) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    call();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double medianOf(std::vector<double> times) {
    std::ranges::nth_element(times, times.begin() + static_cast<ptrdiff_t>(times.size() / 2));
    return times[times.size() / 2];
}

double shareOf(const cv::Rect& a, const cv::Rect& b) {
    const double both = (a & b).area();
    return both / (a.area() + b.area() - both);
}

void print(const char* name, const std::vector<cv::Rect>& places) {
    std::printf("  %s:", name);
    for (const cv::Rect& place : places)
        std::printf("  %d %d %dx%d", place.x, place.y, place.width, place.height);
    std::puts(places.empty() ? " nothing" : "");
}

/** The rectangles among `places` that lie where none of the others lies. */
std::vector<cv::Rect> alone(std::vector<cv::Rect> places, const std::vector<cv::Rect>& others) {
    std::erase_if(places, [&](const cv::Rect& place) {
        return std::ranges::any_of(others, [&](const cv::Rect& other) { return shareOf(place, other) >= kLeastShare; });
    });
    return places;
}

/** Measures a picture, and tells whether we find something and the peer finds all of it. */
bool compare(Detector& detector, cv::CascadeClassifier& peer, const cv::Mat& picture, int32_t minSize, int rounds) {
    Picture grey(picture.cols, picture.rows, 1, 8);
    std::copy_n(picture.data, grey.bytes.size(), grey.bytes.begin());
    std::vector<Detection> objects;
    std::vector<cv::Rect> places, peerPlaces;
    std::vector<double> times, peerTimes;
    for (int round = 0; round < rounds; ++round) {
        times.push_back(millisecondsOf([&] { objects = detector.detect(grey, {kScale, minSize, kNeighbours}); }));
        peerTimes.push_back(millisecondsOf(
            [&] { peer.detectMultiScale(picture, peerPlaces, kScale, kNeighbours, 0, cv::Size(minSize, minSize)); }));
    }
    for (const auto& [place, windows] : objects)
        places.emplace_back(place.x, place.y, place.width, place.height);
    const double time = medianOf(times), peerTime = medianOf(peerTimes);
    std::printf("%d x %d, objects from %d pixels: vekcv %.2f ms, peer %.2f ms, ratio %.2f\n", picture.cols,
                picture.rows, minSize, time, peerTime, peerTime / time);
    print("vekcv finds", places);
    print("peer finds ", peerPlaces);
    const std::vector<cv::Rect> ours = alone(places, peerPlaces);
    print("vekcv alone", ours);
    print("peer alone ", alone(peerPlaces, places));
    return !places.empty() && ours.empty();
}

int run(const std::string& cascadePath, const std::string& picturePath, int rounds) {
    vekSetNumThreads(1);
    cv::setNumThreads(1);
    Detector detector(readCascade(cascadePath));
    cv::CascadeClassifier peer(cascadePath);
    Picture grey = inGrey(readPicture(picturePath));
    const cv::Mat picture(grey.height, grey.width, CV_8U, grey.bytes.data());
    cv::Mat twice;
    cv::resize(picture, twice, {}, 2, 2, cv::INTER_LINEAR);
    bool same = true;
    for (const cv::Mat& one : {picture, twice})
        for (const int32_t minSize : kMinSizes)
            same &= compare(detector, peer, one, minSize, rounds);
    return same ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 3 ? std::atoi(argv[3]) : kRounds;
    if (argc < 3 || argc > 4 || rounds < 1) {
        std::fputs("usage: vekcv_detect_bench CASCADE PICTURE [ROUNDS]\n", stderr);
        return 2;
    }
    try {
        return run(argv[1], argv[2], rounds);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vekcv_detect_bench: %s\n", error.what());
        return 1;
    }
}
