// From the bytes of an answer to the host's search results, beside what two JSON readers need to parse them.

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>
#include <simdjson.h>

#include "bench/AnswerSample.h"
#include "bench/BenchHost.h"

namespace {

std::string answerOf(benchmark::State const& state) {
    return bench::searchAnswer(static_cast<std::size_t>(state.range(0)));
}

void countBytes(benchmark::State& state, std::string const& answer) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(answer.size()));
}

void results(benchmark::State& state) {
    bench::Host const host;
    std::string const answer = answerOf(state);
    bench::Resource resource(Zq::makeShared<bench::Server>(Zq::makeShared<bench::Answer>(answer)));
    SearchQuery query;
    query.words = L"sunset";
    query.pageSize = static_cast<std::uint16_t>(state.range(0));
    for (auto _ : state) {
        SearchResults page = resource.searchInternal(query);
        if (page.assets.size() != static_cast<std::size_t>(state.range(0))) {
            state.SkipWithError("the page is not whole");
        }
        benchmark::DoNotOptimize(page);
    }
    countBytes(state, answer);
}

void nlohmannParse(benchmark::State& state) {
    std::string const answer = answerOf(state);
    for (auto _ : state) {
        nlohmann::json parsed = nlohmann::json::parse(answer);
        benchmark::DoNotOptimize(parsed);
    }
    countBytes(state, answer);
}

void simdjsonParse(benchmark::State& state) {
    simdjson::padded_string const answer(answerOf(state));
    simdjson::dom::parser parser;
    for (auto _ : state) {
        simdjson::dom::element parsed = parser.parse(answer);
        benchmark::DoNotOptimize(parsed);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(answer.size()));
}

BENCHMARK(results)->Arg(10)->Arg(100)->Arg(1000);
BENCHMARK(nlohmannParse)->Arg(10)->Arg(100)->Arg(1000);
BENCHMARK(simdjsonParse)->Arg(10)->Arg(100)->Arg(1000);

} // namespace
