// From the bytes of an owned list to the host's assets, for accounts of every size, beside what another JSON
// reader needs only to parse them.

#include <cstdio>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include "bench/BenchHost.h"

namespace {

// An item with two versions, of which the second is taken, about 660 bytes. A quarter of the rates can be
// trusted as they stand.
std::string item(std::size_t number) {
    static constexpr char const* rates[] = {"25", "30", "24", "60"};
    char const* const rate = rates[number % 4];
    std::size_t const length_ms = 1000 + number * 37 % 90000;
    char text[1000];
    int const size = std::snprintf(
        text, sizeof text,
        R"({"bid":"%zu","date":"2023-03-%02zuT10:00:00Z","order":%zu,"price":"79","versions":[)"
        R"({"tr":"%zu","v":"1","n":"Sunset over the harbour, boats at anchor","ext":"mov","bitoffset":4096,)"
        R"("size_mb":210.5,"dur":"%zu","fps":"%s","vs":6,"ox":3840,"oy":2160,"ar":"16:9",)"
        R"("codg":"Apple ProRes 422","coda":"PCM"},)"
        R"({"tr":"%zu","v":"2","n":"Sunset over the harbour, boats at anchor","ext":"mov",)"
        R"("size_mb":84.5,"dur":"%zu","fps":"%s","vs":4,"ox":1920,"oy":1080,"ar":"16:9",)"
        R"("codg":"H.264","coda":"no snd"}],"license":"standard","editorial":false,"note":null})",
        number + 1, 1 + number % 28, 700000 + number, 9000000 + number, length_ms, rate, 9000000 + number,
        length_ms, rate);
    return std::string(text, static_cast<std::size_t>(size));
}

std::string ownedAnswer(std::size_t items) {
    std::string answer = R"({"e":false,"commands":[{"icon_base":"https://www.tarn7.example/media/icons/",)"
                         R"("flv_base":"https://www.tarn7.example/media/previews/","items":[)";
    for (std::size_t i = 0; i < items; ++i) {
        answer += i != 0 ? "," : "";
        answer += item(i);
    }
    return answer + "]}]}";
}

// The lookup of the three quarters of the rates that are still open.
std::string lookupAnswer(std::size_t items) {
    std::string answer = R"({"e":false,"commands":[)";
    for (std::size_t i = 0; i < items - (items + 3) / 4; ++i) {
        answer += i != 0 ? "," : "";
        answer += R"({"clip_data":{"pim_aut_fps_real":"29.97","pim_aut_duration_ms":"12500"}})";
    }
    return answer + "]}";
}

// Gives the list, and the lookup to whoever asks for clip data.
class OwnedServer final : public iHTTPServer {
public:
    explicit OwnedServer(std::size_t items)
        : list_(Zq::makeShared<bench::Answer>(ownedAnswer(items))),
          lookup_(Zq::makeShared<bench::Answer>(lookupAnswer(items))) {}
    Zq::Ptr<iHTTPReply> get(WideString const&) override { return {}; }
    Zq::Ptr<iHTTPReply> postForm(WideString const& body, WideString const& path) override {
        bool const isLookup = body.contains(L"get_clip_data");
        return bench::Server(isLookup ? lookup_ : list_).postForm(body, path);
    }
    int httpGetToReceiver(WideString const&, iDataReceiver&) override { return 0; }

private:
    Zq::Ptr<iMemHolder> list_;
    Zq::Ptr<iMemHolder> lookup_;
};

void countItems(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void fetchList(benchmark::State& state, bench::Resource& resource) {
    LightweightVector<RemoteAsset> assets = resource.getPurchasedAssets();
    if (assets.size() != static_cast<std::size_t>(state.range(0)) ||
        assets.back().frameRate == Zq::FrameRate::unknown) {
        state.SkipWithError("the list is not whole");
    }
    benchmark::DoNotOptimize(assets);
}

// Every call of a session but its first: all rates are known.
void owned(benchmark::State& state) {
    bench::Host const host;
    bench::Resource resource(Zq::makeShared<OwnedServer>(static_cast<std::size_t>(state.range(0))));
    fetchList(state, resource);
    for (auto _ : state) {
        fetchList(state, resource);
    }
    countItems(state);
}

// The first call of a session, with the lookup of the open rates.
void ownedAtFirst(benchmark::State& state) {
    bench::Host const host;
    auto const server = Zq::makeShared<OwnedServer>(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        bench::Resource resource(server);
        fetchList(state, resource);
    }
    countItems(state);
}

void nlohmannParseOwned(benchmark::State& state) {
    std::string const answer = ownedAnswer(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        nlohmann::json parsed = nlohmann::json::parse(answer);
        benchmark::DoNotOptimize(parsed);
    }
    countItems(state);
}

BENCHMARK(owned)->Arg(100)->Arg(1000)->Arg(10000)->Arg(50000);
BENCHMARK(ownedAtFirst)->Arg(100)->Arg(1000)->Arg(10000)->Arg(50000);
BENCHMARK(nlohmannParseOwned)->Arg(100)->Arg(1000)->Arg(10000)->Arg(50000);

} // namespace
