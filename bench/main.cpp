// Runs every benchmark interleaved and prints what is claimed as ratios of medians.

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

// Keeps the median time of each benchmark by name, beside the usual table.
class Medians final : public benchmark::ConsoleReporter {
public:
    Medians() : ConsoleReporter(OO_None) {}

    void ReportRuns(std::vector<Run> const& runs) override {
        for (Run const& run : runs) {
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median") {
                medians_[nameOf(run)] = timeOf(run);
            }
            failed_ = failed_ || run.error_occurred;
        }
        ConsoleReporter::ReportRuns(runs);
    }

    // 0 where no such benchmark has run.
    [[nodiscard]] double of(std::string const& name) const {
        auto const found = medians_.find(name);
        return found != medians_.end() ? found->second : 0;
    }
    [[nodiscard]] bool failed() const { return failed_; }

private:
    // "results/100", without the settings that the library adds.
    [[nodiscard]] static std::string nameOf(Run const& run) {
        std::string name = run.run_name.function_name;
        return run.run_name.args.empty() ? name : name + '/' + run.run_name.args;
    }

    // A search waits for its server, so its time is the clock's. All else is computing.
    [[nodiscard]] static double timeOf(Run const& run) {
        return run.run_name.function_name.starts_with("search") ? run.GetAdjustedRealTime()
                                                                : run.GetAdjustedCPUTime();
    }

    std::map<std::string, double> medians_;
    bool failed_ = false;
};

struct Ratio {
    char const* what;
    char const* measured;
    char const* against;
    char const* goal;
};

constexpr Ratio ratios[] = {
    {"results of 10 clips / nlohmann parsing", "results/10", "nlohmannParse/10", "<= 0.5"},
    {"results of 100 clips / nlohmann parsing", "results/100", "nlohmannParse/100", "<= 0.5"},
    {"results of 1000 clips / nlohmann parsing", "results/1000", "nlohmannParse/1000", "<= 0.5"},
    {"results of 100 clips / simdjson parsing", "results/100", "simdjsonParse/100", "<= 6"},
    {"results of 1000 clips / simdjson parsing", "results/1000", "simdjsonParse/1000", "<= 6"},
    {"1000 clips / 100 clips", "results/1000", "results/100", "about 10"},
    {"owned list of 100 / nlohmann parsing", "owned/100", "nlohmannParseOwned/100", "<= 0.5"},
    {"owned list of 1000 / nlohmann parsing", "owned/1000", "nlohmannParseOwned/1000", "<= 0.5"},
    {"owned list of 10000 / nlohmann parsing", "owned/10000", "nlohmannParseOwned/10000", "<= 0.5"},
    {"owned list of 50000 / nlohmann parsing", "owned/50000", "nlohmannParseOwned/50000", "<= 0.5"},
    {"owned list, 1000 / 100", "owned/1000", "owned/100", "about 10"},
    {"owned list, 10000 / 1000", "owned/10000", "owned/1000", "about 10, caches aside"},
    {"owned list, 50000 / 10000", "owned/50000", "owned/10000", "about 5, caches aside"},
    {"first owned list, 1000 / 100", "ownedAtFirst/1000", "ownedAtFirst/100", "about 10"},
    {"first owned list, 10000 / 1000", "ownedAtFirst/10000", "ownedAtFirst/1000", "about 10, caches aside"},
    {"first owned list, 50000 / 10000", "ownedAtFirst/50000", "ownedAtFirst/10000", "about 5, caches aside"},
    {"search through zq / the same by curl", "searchThroughZq", "searchByCurl", "<= 1.1"},
    {"hashing / whole request of 1", "hashing/1", "signedRequest/1", ""},
    {"hashing / whole request of 100", "hashing/100", "signedRequest/100", ""},
    {"writing the list / whole request of 100", "writingTheList/100", "signedRequest/100", ""},
    {"escaping the envelope / whole request of 100", "escapingTheEnvelope/100", "signedRequest/100", ""},
};

void print(Medians const& medians) {
    std::printf("\n%-48s %10s   %s\n", "ratio of medians", "measured", "goal");
    for (Ratio const& ratio : ratios) {
        double const against = medians.of(ratio.against);
        if (against > 0) {
            std::printf("%-48s %10.3f   %s\n", ratio.what, medians.of(ratio.measured) / against, ratio.goal);
        }
    }
}

} // namespace

int main(int count, char** arguments) {
    std::vector<char*> all(arguments, arguments + count);
    // In turn and not one after the other: the machine's speed drifts.
    char interleave[] = "--benchmark_enable_random_interleaving=true";
    char repeat[] = "--benchmark_repetitions=9";
    char brief[] = "--benchmark_min_time=0.05";
    char aggregates[] = "--benchmark_display_aggregates_only=true";
    all.insert(all.begin() + 1, {interleave, repeat, brief, aggregates});
    int size = static_cast<int>(all.size());
    benchmark::Initialize(&size, all.data());
    if (benchmark::ReportUnrecognizedArguments(size, all.data())) {
        return 2;
    }
    Medians medians;
    benchmark::RunSpecifiedBenchmarks(&medians);
    print(medians);
    return medians.failed() ? 1 : 0;
}
