// Building and signing a request of 1, 10 and 100 commands, whole and in its parts.

#include <benchmark/benchmark.h>

#include "ServiceValues.h"
#include "bench/BenchHost.h"
#include "host/network/RequestUri.h"
#include "host/text/Unicode.h"

namespace {

LightweightVector<Tarn7Resource::Command> commandsFor(benchmark::State const& state) {
    LightweightVector<Tarn7Resource::Command> commands;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        Tarn7Resource::Command& command = commands.emplace_back(L"search");
        command.addParam("query", L"sunset \"over\" water & sky pricelt:50 linesgt:1079 durationgt:10");
        command.addNumber("p", 0);
        command.addNumber("col", 251);
        command.addNumber("sb", 1);
        command.addNumber("no", 50);
        command.addNumber("bm", 15);
    }
    return commands;
}

WideString listOf(LightweightVector<Tarn7Resource::Command> const& commands) {
    JSON::Builder builder;
    builder.startArray(nullptr);
    for (Tarn7Resource::Command const& command : commands) {
        command.writeTo(builder);
    }
    builder.endArray();
    return builder.getOutput();
}

WideString envelopeOf(WideString const& list) {
    JSON::Builder envelope;
    envelope.startChild(nullptr);
    envelope.add("api_key", Tarn7ApiKey, true);
    envelope.add("ver", 1);
    envelope.add("commands_json", list, true);
    envelope.endChild();
    return envelope.getOutput();
}

void signedRequest(benchmark::State& state) {
    bench::Host const host;
    bench::Resource resource(Zq::makeShared<bench::Server>(Zq::makeShared<bench::Answer>("{}")));
    auto const commands = commandsFor(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(resource.sendCommands(commands));
    }
}

void writingTheList(benchmark::State& state) {
    bench::Host const host;
    auto const commands = commandsFor(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(listOf(commands));
    }
}

void hashing(benchmark::State& state) {
    bench::Host const host;
    bench::Resource const resource{Zq::Ptr<iHTTPServer>()};
    WideString const list = listOf(commandsFor(state));
    for (auto _ : state) {
        benchmark::DoNotOptimize(resource.signedHash(list));
    }
}

void escapingTheEnvelope(benchmark::State& state) {
    bench::Host const host;
    WideString const list = listOf(commandsFor(state));
    for (auto _ : state) {
        benchmark::DoNotOptimize(envelopeOf(list));
    }
}

BENCHMARK(signedRequest)->Arg(1)->Arg(10)->Arg(100);
BENCHMARK(writingTheList)->Arg(1)->Arg(10)->Arg(100);
BENCHMARK(hashing)->Arg(1)->Arg(10)->Arg(100);
BENCHMARK(escapingTheEnvelope)->Arg(1)->Arg(10)->Arg(100);

} // namespace
