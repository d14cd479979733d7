// The pictures of a page, a hundred of them, fetched through the host into an empty cache, beside
// `curl --parallel` on six connections: from the start of a program to its end, in turn, as a ratio of
// medians.
//
// usage: zq_bench_thumbnails [rounds]

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench/SideBySide.h"
#include "host/HostServices.h"
#include "host/engine/files/DiskCache.h"
#include "host/engine/network/CurlNetwork.h"
#include "host/text/Unicode.h"
#include "repository/Thumbnails.h"

namespace {

namespace fs = std::filesystem;
using bench::quoted;
using bench::Run;

constexpr int pictures = 100;
constexpr int size_bytes = 12'000;

// ARGUMENTS: ADDRESS CACHE CA. Each picture's address is the given one with its number.
int fetch(std::string_view mode, char** arguments) {
    std::vector<WideString> page;
    for (int i = 1; i <= pictures; ++i) {
        std::string const address = arguments[0] + std::to_string(i);
        page.push_back(fromUTF8(std::string_view(address)));
    }
    engine::NetworkSettings settings;
    settings.caFile = arguments[2];
    engine::CurlNetwork network(settings);
    engine::DiskCache cache(arguments[1], std::uint64_t{1} << 30);
    HostServices services;
    services.network = &network;
    services.cache = &cache;
    installHost(services);
    if (mode == "nothing") {
        return 0;
    }
    if (mode == "together") {
        return network.prefetch(page, cache) == page.size() ? 0 : 1;
    }
    Thumbnails thumbnails;
    for (WideString const& address : page) {
        if (thumbnails.fetch(address, ParsedURI::parse(address)).isEmpty()) {
            return 1;
        }
    }
    return 0;
}

std::size_t filesIn(fs::path const& folder) {
    std::size_t count = 0;
    for (auto const& entry : fs::recursive_directory_iterator(folder)) {
        count += entry.is_regular_file() && entry.file_size() == size_bytes ? 1U : 0U;
    }
    return count;
}

void compare(char const* what, std::string const& address, bench::FileServerProcess const& server,
             fs::path const& root, int rounds) {
    fs::path const folder = root / "pictures";
    std::string const rest = " " + quoted(address) + " " + quoted(folder) + " " + quoted(server.caFile);
    std::string const own = bench::program("zq_bench_thumbnails");
    std::string const curl = "curl --no-progress-meter -f --parallel --parallel-max 6 --http2 --cacert " +
                             quoted(server.caFile) + " -o " + quoted(folder / "#1") + " ";
    struct Side {
        std::string command;
        std::size_t files;
    };
    std::vector<Side> const sides{{own + " together" + rest, pictures},
                                  {own + " singly" + rest, pictures},
                                  {curl + quoted(address + "[1-" + std::to_string(pictures) + "]"), pictures},
                                  {own + " nothing" + rest, 0},
                                  {"curl --version", 0}};
    std::vector<std::vector<Run>> runs(sides.size());
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < sides.size(); ++i) {
            std::size_t const which = (i + static_cast<std::size_t>(round)) % sides.size();
            fs::create_directories(folder);
            runs[which].push_back(bench::measure(sides[which].command));
            if (filesIn(folder) != sides[which].files) {
                throw std::runtime_error("not all pictures came: " + sides[which].command);
            }
            fs::remove_all(folder);
        }
    }
    auto const without = [&runs](std::size_t side, std::size_t start) {
        return (bench::median(runs[side], &Run::seconds) - bench::median(runs[start], &Run::seconds)) * 1000;
    };
    double const together = without(0, 3);
    double const singly = without(1, 3);
    double const byCurl = without(2, 4);
    std::printf("%-22s %10.1f %10.1f %10.1f   %8.2f\n", what, together, singly, byCurl, together / byCurl);
    std::fflush(stdout);
}

} // namespace

int main(int count, char** arguments) {
    try {
        std::string_view const mode = count > 1 ? arguments[1] : "";
        if (count == 5) {
            return fetch(mode, arguments + 2);
        }
        int const rounds = count > 1 ? std::atoi(arguments[1]) : 15;
        if (rounds <= 0) {
            return 2;
        }
        bench::TemporaryFolder const root(fs::temp_directory_path());
        bench::FileServerProcess const server(root.path / "certificates");
        std::string const path = "/" + std::to_string(size_bytes);
        std::printf("100 pictures, ms           a page    singly       curl   page/curl (goal: <= 1.0)\n");
        compare("plain", "http://" + server.plainName + path + "-", server, root.path, rounds);
        compare("TLS", "https://" + server.secureName + path + "-", server, root.path, rounds);
        // A server that takes its time, as one far away does.
        compare("TLS, 40 ms an answer", "https://" + server.secureName + path + "+40-", server, root.path,
                std::min(rounds, 5));
        return 0;
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
