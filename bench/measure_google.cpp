#include <benchmark/benchmark.h>

#include <algorithm>

#include "measure.h"

namespace bench {
namespace {

/** Keeps the times of the single repetitions. */
class Collector : public benchmark::BenchmarkReporter {
  public:
    explicit Collector(const std::vector<Contestant>& contestants)
        : contestants_(contestants), times_(contestants.size()) {}

    const std::vector<std::vector<double>>& times() const { return times_; }

    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration)
                continue;
            const auto found = std::find_if(
                contestants_.begin(), contestants_.end(),
                [&](const Contestant& contestant) { return contestant.name == run.run_name.function_name; });
            times_.at(static_cast<size_t>(found - contestants_.begin())).push_back(run.GetAdjustedRealTime());
        }
    }

  private:
    const std::vector<Contestant>& contestants_;
    std::vector<std::vector<double>> times_;
};

void timeCall(benchmark::State& state, const Call& call, bool warmUp) {
    if (warmUp)
        call();
    for (auto _ : state) {
        call();
        benchmark::ClobberMemory();
    }
}

}  // namespace

void initializeMeasurement(const char* program) {
    std::string arguments[] = {program, "--benchmark_enable_random_interleaving=true"};
    char* values[] = {arguments[0].data(), arguments[1].data(), nullptr};
    int count = 2;
    benchmark::Initialize(&count, values);
}

std::vector<std::vector<double>> measure(const std::vector<Contestant>& contestants, Effort effort) {
    // Repetitions are shuffled among all registered benchmarks: with no others than the contestants they stay close.
    benchmark::ClearRegisteredBenchmarks();
    for (const Contestant& contestant : contestants)
        benchmark::RegisterBenchmark(contestant.name.c_str(), timeCall, contestant.call, effort.warmUp)
            ->UseRealTime()
            ->MinTime(effort.secondsPerRound)
            ->Repetitions(effort.rounds);
    Collector collector(contestants);
    benchmark::RunSpecifiedBenchmarks(&collector);
    return collector.times();
}

}  // namespace bench
