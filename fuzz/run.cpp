#include "run.h"

#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "preconditions.h"
#include "standin_core.h"
#include "table.h"

namespace fuzz {
namespace {

using Elements = std::vector<uint8_t>;

struct Results {
    Status status;
    std::vector<Elements> elements;  // of each operand that is written; empty for all others
    std::vector<Elements> objects;   // what each object tells
};

/** A call that is made once, in a variant and with a number of threads. */
class SingleCall {
  public:
    SingleCall(const Call& call, uint32_t variant, int threads)
        : call_(call),
          target_(*call.target),
          variant_(variant),
          threads_(threads),
          values_(call.values),
          objects_(values_.size()) {}

    Results results() {
        if (std::getenv("VEKCV_FUZZ_TRACE") != nullptr)
            std::fprintf(stderr, "variant %u, threads %d: %s\n", variant_, threads_, call_.describe().c_str());
        vekcv::VariantIndex = static_cast<int32_t>(variant_);
        vekSetNumThreads(threads_);
        setenv("STANDIN_CACHE_BYTES", call_.hasTinyCache ? "16" : "1048576", 1);
        for (const auto* all : {&call_.operands, &call_.addresses})
            for (const auto& operand : *all)
                if (operand != nullptr)
                    operand->restore();

        const int allocations = standInBlocks();
        makeBuffer();
        makeObjects();
        standInFailAfter(call_.allowedAllocations);
        Results results{target_.call(values_.data()), {}, {}};
        standInFailAfter(INT_MAX);
        checkMemory(results.status);
        results.elements = writtenElements();
        releaseObjects(results);
        if (standInBlocks() != allocations)
            fail("memory was not released");
        return results;
    }

    [[noreturn]] void fail(const std::string& text) const {
        std::fprintf(stderr, "FINDING: %s\n  variant %u, threads %d\n  %s\n", text.c_str(), variant_, threads_,
                     call_.describe().c_str());
        std::abort();
    }

  private:
    /** Has as many bytes as its query gives for the arguments without faults. Its content differs in every call. */
    void makeBuffer() {
        const size_t i = target_.indexOf("buffer");
        if (i == Export::kNone)
            return;
        const Export* const query = queryOf(target_);
        int32_t bytes = 1;
        std::vector<Value> values;
        for (const Parameter& parameter : query->parameters) {
            values.emplace_back();
            if (parameter.name == "bufferSize")
                values.back().set(&bytes);
            else
                values.back() = call_.argumentOfQuery(parameter.name);
        }
        if (query->call(values.data()) != StatusOk)
            bytes = 1;  // the call fails, too
        buffer_ = std::make_unique<Operand>(Element::k8u, Extent{0, 0, bytes, 1}, 0, call_.bufferPlace);
        buffer_->fill({Content::kConstant, variant_ * 2 + static_cast<uint32_t>(threads_)});
        buffer_->save();
        if (!call_.isNull[i])
            values_[i].set(buffer_->pointer());
    }

    void makeObjects() {
        for (size_t i = 0; i < target_.parameters.size(); ++i) {
            if (target_.parameters[i].kind != Kind::kState)
                continue;
            vekSetNumThreads(call_.states[i]->threadsFor(threads_));
            objects_[i] = call_.states[i]->build(call_);
            vekSetNumThreads(threads_);
            if (objects_[i] == nullptr)
                fail("an object cannot be made");
            if (!call_.isNull[i])
                values_[i].set(objects_[i]);
        }
    }

    /** Takes the objects that the call made. With an error it may leave the slot as it is or set it to null. */
    void takeNewObjects(Results& results) {
        for (size_t i = 0; i < target_.parameters.size(); ++i) {
            if (target_.parameters[i].kind != Kind::kStateSlot || call_.isNull[i])
                continue;
            const Operand& slot = *call_.operands[i];
            void* const object = *static_cast<void**>(slot.pointer());
            if (results.status == StatusOk && (object == nullptr || slot.isUntouched()))
                fail("no object was given");
            if (results.status == StatusOk)
                objects_[i] = object;
            else if (object != nullptr && !slot.isUntouched())
                fail("an object was given in spite of status " + std::to_string(results.status));
            // Not the address, which differs in every call.
            results.elements[i] = {object == nullptr, slot.isUntouched()};
        }
    }

    void releaseObjects(Results& results) {
        takeNewObjects(results);
        const bool isOk = results.status == StatusOk;
        if (target_.releases() && isOk)
            return;
        for (size_t i = 0; i < objects_.size(); ++i) {
            if (objects_[i] == nullptr)
                continue;
            if (isOk || !target_.makesInPlace())
                results.objects.push_back(call_.states[i]->observe(call_, objects_[i]));
            call_.states[i]->release(objects_[i]);
        }
    }

    bool isWritten(size_t i) const {
        return !target_.parameters[i].isConst || target_.parameters[i].kind == Kind::kStateSlot;
    }

    void checkMemory(Status status) const {
        const bool mayWrite = status >= 0 || call_.writesInSpiteOfError;
        for (size_t i = 0; i < target_.parameters.size(); ++i) {
            const std::string name(target_.parameters[i].name);
            if (call_.addresses[i] != nullptr && !call_.addresses[i]->isUntouched())
                fail("the addresses of rows were written: " + name);
            const Operand* const operand = call_.operands[i].get();
            if (operand == nullptr)
                continue;
            if (!isWritten(i) && !operand->isUntouched())
                fail("a source was written: " + name);
            if (!mayWrite && target_.parameters[i].kind != Kind::kStateSlot && !operand->isUntouched())
                fail("an output was written in spite of status " + std::to_string(status) + ": " + name);
            if (!operand->areSurroundingsUntouched())
                fail("bytes outside were written: " + name);
        }
        const auto checkScratch = [&](const Operand* memory, const std::string& name) {
            if (memory != nullptr && !(mayWrite ? memory->areSurroundingsUntouched() : memory->isUntouched()))
                fail("bytes outside of " + name + ", or in spite of an error, were written");
        };
        checkScratch(buffer_.get(), "the buffer");
        for (const auto& state : call_.states)
            if (state != nullptr)
                checkScratch(state->memory(), "the memory of an object");
        if (status >= 0 && !call_.fault.empty())
            fail("status " + std::to_string(status) + " in spite of a fault");
    }

    std::vector<Elements> writtenElements() const {
        std::vector<Elements> all;
        for (size_t i = 0; i < target_.parameters.size(); ++i)
            all.push_back(call_.operands[i] != nullptr && isWritten(i) ? call_.operands[i]->elements() : Elements());
        return all;
    }

    const Call& call_;
    const Export& target_;
    uint32_t variant_;
    int threads_;
    std::vector<Value> values_;
    std::unique_ptr<Operand> buffer_;
    std::vector<void*> objects_;  // made for a parameter, or by the call
};

template <typename T>
size_t firstDifference(const Elements& a, const Elements& b, bool hasAnyZero) {
    for (size_t at = 0; at < a.size(); at += sizeof(T)) {
        T x, y;
        std::memcpy(&x, &a[at], sizeof x);
        std::memcpy(&y, &b[at], sizeof y);
        const bool isSame = std::memcmp(&x, &y, sizeof x) == 0 || (std::isnan(x) && std::isnan(y));
        if (!isSame && !(hasAnyZero && x == 0 && y == 0))
            return at / sizeof(T);
    }
    return a.size() / sizeof(T);
}

/** Whether the region is large enough for threads in any family. */
bool mayBeShared(const Call& call) {
    const auto roi = call.value("roiSize").as<RoiSize>();
    return int64_t{roi.width} * roi.height >= 16384;
}

/** What differs between two results; empty where nothing does. A NaN is the same as any other. */
std::string difference(const Call& call, const Results& expected, const Results& actual, bool isSameTeam) {
    if (expected.status != actual.status)
        return "status " + std::to_string(actual.status) + " instead of " + std::to_string(expected.status);
    for (size_t i = 0; i < expected.elements.size(); ++i) {
        const Elements &a = expected.elements[i], &b = actual.elements[i];
        if (a == b)
            continue;
        const Parameter& parameter = call.target->parameters[i];
        const bool isFloat = call.target->name.find("32f") != std::string_view::npos;
        if (!isSameTeam && call.rules->dependsOnTeam && isFloat && mayBeShared(call))
            continue;
        const bool hasAnyZero = call.rules->hasAnyZero;
        const bool hasFloats = parameter.element == Element::k32f || parameter.element == Element::kPoint32f;
        const auto at = hasFloats                            ? firstDifference<float>(a, b, hasAnyZero)
                        : parameter.element == Element::k64f ? firstDifference<double>(a, b, hasAnyZero)
                                                             : firstDifference<uint8_t>(a, b, hasAnyZero);
        const size_t element = hasFloats ? 4 : parameter.element == Element::k64f ? 8 : 1;
        if (at * element < a.size())
            return std::string(parameter.name) + " differs at " + (element == 1 ? "byte " : "element ") +
                   std::to_string(at) + " of " + std::to_string(a.size() / element);
    }
    return expected.objects == actual.objects ? "" : "an object differs";
}

}  // namespace

uint32_t variantsOfProcessor() {
    __builtin_cpu_init();
    uint32_t count = 2;
    if (__builtin_cpu_supports("avx2"))
        count = 3;
    if (count == 3 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
        __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl"))
        count = 4;
    return count < VEKCV_VARIANTS ? count : VEKCV_VARIANTS;
}

Status runAndCompare(const Call& call) {
    constexpr int kThreads[] = {1, 3};
    Results alone{};
    for (const int threads : kThreads) {
        const Results expected = SingleCall(call, 0, threads).results();
        SingleCall other(call, call.otherVariant, threads);
        if (const std::string text = difference(call, expected, other.results(), true); !text.empty())
            other.fail("not as in variant 0: " + text);
        if (threads == 1) {
            alone = expected;
            continue;
        }
        // The sizes of buffers depend on the number of threads, and so may what memory is needed.
        if (call.target->isQuery() || alone.status == StatusMemoryAllocation ||
            expected.status == StatusMemoryAllocation)
            continue;
        if (const std::string text = difference(call, alone, expected, false); !text.empty())
            SingleCall(call, 0, threads).fail("not as with one thread: " + text);
    }
    return alone.status;
}

}  // namespace fuzz
