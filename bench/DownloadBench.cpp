// A whole file fetched through the host, beside `curl -o` to the same disk: speed, processor time and memory,
// in turn and as ratios of medians. Each side is a process of its own; the server is a third.
//
// usage: zq_bench_download [MiB of a file] [rounds]

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <sys/mman.h>

#include "bench/SideBySide.h"
#include "host/HostServices.h"
#include "host/engine/files/LocalFileManager.h"
#include "host/engine/files/LocalPath.h"
#include "host/engine/network/CurlNetwork.h"
#include "host/engine/os/TaskContext.h"
#include "host/text/Unicode.h"
#include "repository/HTTPFileSaver.h"

namespace {

namespace fs = std::filesystem;
using bench::median;
using bench::quoted;
using bench::Run;

// As the host of a purchase does it. ARGUMENTS: SERVER SECURE PATH FILE CA
int fetch(char** arguments) {
    std::string_view const server = arguments[0];
    bool const secure = std::string_view(arguments[1]) == "1";
    fs::path const file = arguments[3];
    engine::LocalFileManager files(L"bench", file.string() + ".journal");
    engine::TaskContext tasks;
    HostServices services;
    services.files = &files;
    services.tasks = &tasks;
    installHost(services);
    engine::NetworkSettings settings;
    if (secure) {
        settings.caFile = arguments[4];
    }
    engine::CurlNetwork network(settings);
    HTTPConnectionInfo info;
    info.server = fromUTF8(server);
    info.secure = secure ? 1 : 0;
    HTTPFileSaver saver(engine::wideText(file), LoggerHandle());
    std::string_view const path = arguments[2];
    int const status = network.createHTTPServer(info)->httpGetToReceiver(fromUTF8(path), saver);
    return status == 200 ? 0 : 1;
}

// A virtual machine gives memory that lies free back to its host, and the first to use it again pays for
// that: twenty times the price of writing a file. Here it is nobody who is measured.
void takeMemoryBack(std::uint64_t bytes) {
    void* const memory =
        ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
    if (memory != MAP_FAILED) {
        ::munmap(memory, bytes);
    }
}

class Bench {
public:
    Bench(bench::FileServerProcess const& server, std::uint64_t bytes, int rounds)
        : server_(server), bytes_(bytes), rounds_(rounds) {}

    void compare(char const* what, fs::path const& folder, bool secure, bool synced) {
        std::string const target = (folder / "fetched").string();
        std::string const path = "/" + std::to_string(bytes_);
        std::string const ours = fetchCommand(secure, path, target);
        std::string theirs = "curl -s -f --http1.1 -o " + quoted(target) + " --cacert " +
                             quoted(server_.caFile) + (secure ? " https://" : " http://") +
                             (secure ? server_.secureName : server_.plainName) + path;
        if (synced) {
            theirs = "sh -c \"" + theirs + " && sync -d " + quoted(target) + "\"";
        }
        std::vector<Run> zq;
        std::vector<Run> curl;
        for (int round = 0; round < rounds_; ++round) {
            for (bool const first : {true, false}) {
                bool const isOurs = first == (round % 2 == 0);
                takeMemoryBack(2 * bytes_);
                (isOurs ? zq : curl).push_back(bench::measure(isOurs ? ours : theirs));
                if (fs::file_size(target) != bytes_) {
                    throw std::runtime_error("the file is not whole");
                }
                fs::remove(target);
            }
        }
        double const gib = static_cast<double>(bytes_) / (1 << 30);
        std::printf("%-26s %8.2f %8.2f %7.2f   %6.2f %6.2f %7.2f   %6.1f %6.1f %+7.1f\n", what,
                    gib / median(zq, &Run::seconds), gib / median(curl, &Run::seconds),
                    median(curl, &Run::seconds) / median(zq, &Run::seconds),
                    median(zq, &Run::processorSeconds) / gib, median(curl, &Run::processorSeconds) / gib,
                    median(zq, &Run::processorSeconds) / median(curl, &Run::processorSeconds),
                    median(zq, &Run::peak_MiB), median(curl, &Run::peak_MiB),
                    median(zq, &Run::peak_MiB) - median(curl, &Run::peak_MiB));
        std::fflush(stdout);
    }

    // Peak memory of a file of 2 GiB over that of one of 1 MiB.
    void compareSizes(fs::path const& folder) {
        std::string const target = (folder / "fetched").string();
        std::vector<Run> large;
        std::vector<Run> small;
        for (int round = 0; round < 3; ++round) {
            large.push_back(bench::measure(fetchCommand(false, "/2147483648", target)));
            small.push_back(bench::measure(fetchCommand(false, "/1048576", target)));
            fs::remove(target);
        }
        std::printf("\npeak memory of 2 GiB over 1 MiB: %+.1f MiB (goal: <= +32)\n",
                    median(large, &Run::peak_MiB) - median(small, &Run::peak_MiB));
    }

private:
    [[nodiscard]] std::string fetchCommand(bool secure, std::string const& path,
                                           std::string const& target) const {
        return bench::program("zq_bench_download") + " fetch " +
               (secure ? server_.secureName + " 1 " : server_.plainName + " 0 ") + path + " " +
               quoted(target) + " " + quoted(server_.caFile);
    }

    bench::FileServerProcess const& server_;
    std::uint64_t const bytes_;
    int const rounds_;
};

int run(std::uint64_t bytes, int rounds) {
    bench::TemporaryFolder const disk(fs::temp_directory_path());
    bench::FileServerProcess const server(disk.path / "certificates");
    Bench bench(server, bytes, rounds);
    std::printf("zq / curl -o              %27s   %22s   %s\n", "GiB/s", "processor s/GiB", "peak MiB");
    fs::path const memory = "/dev/shm";
    if (fs::is_directory(memory)) {
        bench::TemporaryFolder const folder(memory);
        bench.compare("memory, plain", folder.path, false, false);
        bench.compare("memory, TLS", folder.path, true, false);
    }
    bench.compare("disk, plain", disk.path, false, false);
    bench.compare("disk, TLS", disk.path, true, false);
    bench.compare("disk, plain, curl + sync", disk.path, false, true);
    std::printf("goals: speed >= 2 plain, >= 1.4 TLS; processor <= 0.5; peak <= +8\n");
    bench.compareSizes(disk.path);
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    try {
        std::string_view const mode = count > 1 ? arguments[1] : "";
        if (mode == "fetch" && count == 7) {
            return fetch(arguments + 2);
        }
        std::uint64_t const mib = count > 1 ? std::strtoull(arguments[1], nullptr, 10) : 1024;
        int const rounds = count > 2 ? std::atoi(arguments[2]) : 5;
        if (mib == 0 || rounds <= 0) {
            return 2;
        }
        return run(mib << 20, rounds);
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
