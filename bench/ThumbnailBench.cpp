// The pictures of a page, a hundred of them, fetched through the host into an empty cache, beside
// `curl --parallel` on six connections: from the start of a program to its end, in turn, as a ratio of
// medians.
//
// usage: zq_bench_thumbnails [rounds]

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
int fetch(char** arguments, bool together) {
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
    if (together) {
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
    std::vector<std::string> const commands{bench::program("zq_bench_thumbnails") + " together" + rest,
                                            bench::program("zq_bench_thumbnails") + " singly" + rest,
                                            "curl -s -f --parallel --parallel-max 6 --http2 --cacert " +
                                                quoted(server.caFile) + " -o " + quoted(folder / "#1") + " " +
                                                quoted(address + "[1-" + std::to_string(pictures) + "]")};
    std::vector<std::vector<Run>> runs(commands.size());
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < commands.size(); ++i) {
            std::size_t const which = (i + static_cast<std::size_t>(round)) % commands.size();
            fs::create_directories(folder);
            runs[which].push_back(bench::measure(commands[which]));
            if (filesIn(folder) != pictures) {
                throw std::runtime_error("not all pictures came: " + commands[which]);
            }
            fs::remove_all(folder);
        }
    }
    double const together = bench::median(runs[0], &Run::seconds);
    double const singly = bench::median(runs[1], &Run::seconds);
    double const curl = bench::median(runs[2], &Run::seconds);
    std::printf("%-8s %10.1f %10.1f %10.1f   %8.2f\n", what, together * 1000, singly * 1000, curl * 1000,
                together / curl);
    std::fflush(stdout);
}

} // namespace

int main(int count, char** arguments) {
    try {
        std::string_view const mode = count > 1 ? arguments[1] : "";
        if (count == 5 && (mode == "together" || mode == "singly")) {
            return fetch(arguments + 2, mode == "together");
        }
        int const rounds = count > 1 ? std::atoi(arguments[1]) : 15;
        if (rounds <= 0) {
            return 2;
        }
        bench::TemporaryFolder const root(fs::temp_directory_path());
        bench::FileServerProcess const server(root.path / "certificates");
        std::string const path = "/" + std::to_string(size_bytes) + "-";
        std::printf("100 pictures, ms:   a page    singly       curl   page/curl (goal: <= 1.0)\n");
        compare("plain", "http://" + server.plainName + path, server, root.path, rounds);
        compare("TLS", "https://" + server.secureName + path, server, root.path, rounds);
        return 0;
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
