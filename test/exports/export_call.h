// Calls of any export, with arguments that follow from its declaration.
#pragma once

#include <cstdlib>
#include <list>
#include <memory>
#include <vector>

#include "faults.h"
#include "fuzz/call.h"
#include "random.h"
#include "test/feature/haar_features.h"

namespace exports {

/** Where images and work buffers begin, in bytes behind a multiple of the elements. */
enum class Address { kAligned = 0, kOdd = 1 };

/**
 * An export with arguments for a region: images of zeros with the shortest steps that are accepted, a kernel of 3 taps
 * or 3 x 3, a classifier of one feature, a structuring element of 3 x 3, pyramids of rate 1.5.
 */
class ExportCall {
  public:
    ExportCall(const fuzz::Export& target, RoiSize roi, Address address = Address::kAligned);

    /** Fills all images, kernels and what the call writes to; floats stay finite. */
    void fill(uint32_t seed);

    Status run() const { return call_.target->call(call_.values.data()); }

    /** All that may be wrong with an argument, in the order in which it is found. */
    std::vector<Fault> faults() const { return faultsOf(*call_.target, call_.plainValues); }

    /** Puts faults into the valid arguments, of which a later one may take the place of an earlier one. */
    void setFaults(std::initializer_list<Fault> faults);

    std::string describe() const { return call_.describe(); }

    /** Whether a call that succeeds makes, changes or releases an object, so that another one would not be the same. */
    bool changesObjects() const;

    /** Whether the images and results of two calls of an export are the same. */
    bool wroteTheSameAs(const ExportCall& other) const;

  private:
    struct Operand {
        fuzz::Element element;
        bool isMask, isScratch, isFixed;
        size_t bytes;
        uint8_t* data;
    };

    fuzz::Value valueOf(const fuzz::Parameter& parameter, size_t index);
    fuzz::Value number(const fuzz::Parameter& parameter) const;
    Operand& addOperand(const fuzz::Parameter& parameter, size_t bytes, Address address);
    void* addMetrics(const fuzz::Parameter& parameter);
    void* addZeros(const fuzz::Parameter& parameter);
    void* addRows(const fuzz::Parameter& parameter);
    const HaarClassifier* addClassifier();
    const Pyramid* addPyramid();
    void* addMorphologyState();
    void* addSrhnState();
    void* addStateOfForm();
    void* addState(const fuzz::Export& initAlloc, const fuzz::Export& free);
    RoiSize nextLevel() const;
    size_t rowBytesOf(const fuzz::Parameter& image) const;

    fuzz::Call call_;
    RoiSize roi_;
    Address address_;
    std::list<std::unique_ptr<void, decltype(&std::free)>> memory_;
    std::vector<Operand> operands_;
    std::list<std::vector<uint8_t*>> rows_;
    std::list<haar::ClassifierPointer> classifiers_;
    std::list<std::shared_ptr<void>> states_;
};

/** Whether an export gives a new object. */
bool makesObject(const fuzz::Export& target);

/**
 * The exports that take the region of images, among them queries of the sizes of work buffers, but for those that make
 * an object.
 */
std::vector<const fuzz::Export*> exportsWithRegions();

/** Whether an export reads or writes images. */
bool hasImages(const fuzz::Export& target);

}  // namespace exports
