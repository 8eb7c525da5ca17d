#include <opencv2/core.hpp>

#include "arith/peer.h"
#include "opencv.h"

namespace bench::peer {
namespace {

/** A source, or one channel of it: the peer copies that into a matrix of its own, which is made once. */
class Source {
  public:
    Source(const Case& work, size_t operand) : image_(matrix(work.operands[operand])) {
        if (image_.channels() > 1) {
            channel_.create(image_.size(), image_.depth());
            index_ = static_cast<int>(work.parameters[0]) - 1;
        }
    }

    const cv::Mat& operator()() const {
        if (channel_.empty())
            return image_;
        cv::extractChannel(image_, channel_, index_);
        return channel_;
    }

  private:
    cv::Mat image_, channel_;
    int index_ = 0;
};

/** The results of a case, in their order. */
std::vector<Operand> results(const Case& work) {
    std::vector<Operand> operands = work.operands;
    std::erase_if(operands, [](const Operand& operand) { return operand.role != Role::kResult; });
    return operands;
}

template <typename T>
void write(const Operand& result, T value) {
    *static_cast<T*>(result.memory.get()) = value;
}

Call norm(const Case& work, int type) {
    if (work.operands[1].role == Role::kSource)
        return [source1 = Source(work, 0), source2 = Source(work, 1), mask = mask(work), type,
                result = results(work)[0]] { write(result, cv::norm(source1(), source2(), type, mask)); };
    return [source = Source(work, 0), mask = mask(work), type, result = results(work)[0]] {
        write(result, cv::norm(source(), type, mask));
    };
}

}  // namespace

Call normInf(const Case& work) {
    return norm(work, cv::NORM_INF);
}

Call normL1(const Case& work) {
    return norm(work, cv::NORM_L1);
}

Call normL2(const Case& work) {
    return norm(work, cv::NORM_L2);
}

Call normRelInf(const Case& work) {
    return norm(work, cv::NORM_RELATIVE | cv::NORM_INF);
}

Call normRelL1(const Case& work) {
    return norm(work, cv::NORM_RELATIVE | cv::NORM_L1);
}

Call normRelL2(const Case& work) {
    return norm(work, cv::NORM_RELATIVE | cv::NORM_L2);
}

Call mean(const Case& work) {
    return [source = Source(work, 0), mask = mask(work), result = results(work)[0]] {
        write(result, cv::mean(source(), mask)[0]);
    };
}

Call meanAndDeviation(const Case& work) {
    return [source = Source(work, 0), mask = mask(work), results = results(work)] {
        cv::Scalar mean, deviation;
        cv::meanStdDev(source(), mean, deviation, mask);
        write(results[0], mean[0]);
        write(results[1], deviation[0]);
    };
}

Call extrema(const Case& work) {
    return [source = Source(work, 0), mask = mask(work), results = results(work)] {
        double minimum, maximum;
        cv::Point minimumIndex, maximumIndex;
        cv::minMaxLoc(source(), &minimum, &maximum, &minimumIndex, &maximumIndex, mask);
        write(results[0], static_cast<float>(minimum));
        write(results[1], static_cast<float>(maximum));
        write(results[2], ImagePoint{minimumIndex.x, minimumIndex.y});
        write(results[3], ImagePoint{maximumIndex.x, maximumIndex.y});
    };
}

}  // namespace bench::peer
