// A preview that plays off a server, through the host's file layer and beside libav's own HTTP: the time to
// the first frame, a jump, and reading from one end to the other, in turn and as ratios of medians; and what
// a preview costs in requests and bytes.
//
// usage: zq_bench_preview [rounds] [only what is named like this, such as "seek"]

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "apps/tarn7d/CertificateAuthority.h"
#include "bench/DelayRelay.h"
#include "bench/LibavClip.h"
#include "bench/RangeServer.h"
#include "bench/SideBySide.h"
#include "host/HostServices.h"
#include "host/engine/files/LocalFileManager.h"
#include "host/engine/files/LocalPath.h"
#include "host/engine/media/MediaReader.h"
#include "host/engine/network/CurlNetwork.h"
#include "host/engine/os/TaskContext.h"
#include "host/engine/streaming/StreamingFiles.h"
#include "host/text/Unicode.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using bench::quoted;
using engine::StreamingStatistics;

constexpr double clip_s = 60;
constexpr double jump_s = clip_s * 0.75;
constexpr int framesPerSecond = 25;
constexpr std::uint32_t step_bytes = 32 << 10; // what a demuxer reads at once
constexpr std::uint64_t storeLimit_bytes = std::uint64_t{4} << 30;
char const* const indexInFront = "front.mp4";
char const* const indexAtTheEnd = "end.mp4";

double seconds(std::function<void()> const& work) {
    Clock::time_point const begin = Clock::now();
    work();
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

double median(std::vector<double> values) {
    std::ranges::nth_element(values, values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2));
    return values[values.size() / 2];
}

void run(std::string const& command) {
    // The shell takes nothing but names that this program has chosen.
    if (std::system(command.c_str()) != 0) { // NOLINT(cert-env33-c)
        throw std::runtime_error("failed: " + command);
    }
}

void makeMedia(fs::path const& folder) {
    fs::create_directories(folder);
    std::string const quiet = "ffmpeg -nostdin -v error -y ";
    std::string const end = quoted(folder / indexAtTheEnd);
    run(quiet + "-f lavfi -i testsrc2=size=1280x720:rate=" + std::to_string(framesPerSecond) +
        " -f lavfi -i sine=440:sample_rate=48000 -t " + std::to_string(clip_s) +
        " -vf noise=alls=20:allf=t -pix_fmt yuv420p -c:v libx264 -preset ultrafast -g 50"
        " -b:v 6M -maxrate 6M -bufsize 6M -c:a aac -b:a 128k " +
        end);
    run(quiet + "-i " + end + " -c copy -movflags +faststart " + quoted(folder / indexInFront));
}

// Where the files are served, and how far away.
struct Place {
    std::string what;
    bool secure;
    std::uint16_t port;

    [[nodiscard]] std::string server() const { return "127.0.0.1:" + std::to_string(port); }
    [[nodiscard]] std::string url(char const* name) const {
        return (secure ? "https://" : "http://") + server() + "/" + name;
    }
};

// The host as it is after its start: nothing is connected, and of files only the store is known.
class FreshHost {
public:
    FreshHost(Place const& place, fs::path const& authorities, fs::path store)
        : store_(std::move(store)), network_(settings(authorities)), server_(connect(place)),
          streams_(store_ / "catalogue", storeLimit_bytes) {}

    [[nodiscard]] Zq::Ptr<StreamingFile> file(char const* name) {
        fs::path const cache = store_ / (std::string(name) + ".partial");
        Zq::Ptr<StreamingFile> file = streams_.create(server_, fromUTF8(name), L"", engine::wideText(cache));
        if (!file) {
            throw std::runtime_error("no streaming file");
        }
        return file;
    }
    [[nodiscard]] StreamingStatistics spent() const { return streams_.statistics(); }
    // Once what was asked for has come, also what nobody waits for any more.
    [[nodiscard]] StreamingStatistics spentInTheEnd() const {
        constexpr std::chrono::milliseconds quiet(300);
        StreamingStatistics before = spent();
        for (;;) {
            std::this_thread::sleep_for(quiet);
            StreamingStatistics const now = spent();
            if (now.bytesReceived == before.bytesReceived && now.requests == before.requests) {
                return now;
            }
            before = now;
        }
    }

private:
    [[nodiscard]] static engine::NetworkSettings settings(fs::path const& authorities) {
        engine::NetworkSettings settings;
        settings.caFile = authorities;
        return settings;
    }
    [[nodiscard]] Zq::Ptr<iHTTPServer> connect(Place const& place) {
        fs::create_directories(store_);
        HTTPConnectionInfo info;
        info.server = fromUTF8(std::string_view(place.server()));
        info.secure = place.secure ? 1 : 0;
        return network_.createHTTPServer(info);
    }

    fs::path const store_;
    engine::CurlNetwork network_;
    Zq::Ptr<iHTTPServer> const server_;
    engine::StreamingFiles streams_;
};

using Reader = std::unique_ptr<engine::MediaReader>;

void showNext(engine::MediaReader& reader) {
    auto const frame = reader.next();
    if (!frame || !*frame) {
        throw std::runtime_error("no frame: " + frame.error());
    }
}

Reader openToFirstFrame(engine::Result<Reader> opened) {
    if (!opened) {
        throw std::runtime_error("no clip: " + opened.error());
    }
    showNext(**opened);
    return std::move(*opened);
}

void jump(engine::MediaReader& reader) {
    if (auto const frame = reader.seek(jump_s); !frame) {
        throw std::runtime_error("no jump: " + frame.error());
    }
}

class Bench {
public:
    Bench(fs::path folder, fs::path authorities, int rounds, std::string only)
        : folder_(std::move(folder)), authorities_(std::move(authorities)), rounds_(rounds),
          only_(std::move(only)) {}

    void title(char const* against) const {
        std::printf("\n%-44s %10s %10s %8s   %s\n", "", "ms", against, "ratio", "goal");
    }

    void firstFrame(Place const& place, char const* name, char const* goal) {
        compare(
            place.what + ", first frame, " + name, goal, rounds_,
            [&] {
                FreshHost host(place, authorities_, freshStore());
                Reader reader;
                return seconds([&] { reader = openToFirstFrame(open(host, name)); });
            },
            [&] {
                std::optional<bench::LibavClip> clip;
                return seconds([&] { clip.emplace(place.url(name), authorities_).nextFrame(); });
            });
    }

    void secondOpen(Place const& place, char const* name, char const* goal) {
        std::string const what = place.what + ", second open, " + name;
        if (!isWanted(what)) {
            return;
        }
        fs::path const store = freshStore();
        {
            FreshHost host(place, authorities_, store);
            (void)openToFirstFrame(open(host, name));
            (void)host.spentInTheEnd();
        }
        std::uint64_t requests = 0;
        compare(
            what, goal, rounds_ * 3,
            [&] {
                FreshHost host(place, authorities_, store);
                Reader reader;
                double const time = seconds([&] { reader = openToFirstFrame(open(host, name)); });
                requests = std::max(requests, host.spent().requests);
                return time;
            },
            [&] {
                WideString const path = engine::wideText(folder_ / "media" / name);
                Reader reader;
                return seconds([&] { reader = openToFirstFrame(engine::MediaReader::open(path)); });
            });
        std::printf("%-44s %10llu requests at most\n", "", static_cast<unsigned long long>(requests));
    }

    void seek(Place const& place, char const* name, char const* goal) {
        compare(
            place.what + ", seek to 75 %, " + name, goal, rounds_,
            [&] {
                FreshHost host(place, authorities_, freshStore());
                Reader const reader = openToFirstFrame(open(host, name));
                (void)host.spentInTheEnd();
                return seconds([&] { jump(*reader); });
            },
            [&] {
                bench::LibavClip clip(place.url(name), authorities_);
                clip.nextFrame();
                std::this_thread::sleep_for(std::chrono::milliseconds(300));
                return seconds([&] { clip.seek(jump_s); });
            });
    }

    // The ratio is that of the speeds.
    void sequential(Place const& place, char const* goal) {
        compare(
            place.what + ", whole file in sequence", goal, std::max(rounds_ / 2, 3),
            [&] {
                FreshHost host(place, authorities_, freshStore());
                std::vector<char> bytes(step_bytes);
                return seconds([&] {
                    Zq::Ptr<StreamingFile> const file = host.file(indexInFront);
                    std::uint64_t total = 0;
                    std::int64_t count = 0;
                    while ((count = file->read(bytes.data(), step_bytes)) > 0) {
                        total += static_cast<std::uint64_t>(count);
                    }
                    checkWhole(total);
                });
            },
            [&] {
                return seconds([&] {
                    checkWhole(bench::readAllByLibav(place.url(indexInFront), authorities_, step_bytes));
                });
            },
            true);
    }

    // What one preview asks of the network: to its first frame, a second at its own pace, and a jump.
    void cost(Place const& place, bench::RangeServer const& server, char const* name) {
        std::string const what = place.what + ", open, " + name;
        if (!isWanted(what)) {
            return;
        }
        FreshHost host(place, authorities_, freshStore());
        Reader const reader = openToFirstFrame(open(host, name));
        StreamingStatistics const atOnce = host.spent();
        StreamingStatistics const opened = host.spentInTheEnd();
        tell(what, {}, opened);
        std::printf("%-44s %10.1f KiB had come at the first frame\n", "",
                    static_cast<double>(atOnce.bytesReceived) / 1024);
        for (Clock::time_point due = Clock::now(); int i : std::vector<int>(framesPerSecond)) {
            (void)i;
            due += std::chrono::milliseconds(1000 / framesPerSecond);
            std::this_thread::sleep_until(due);
            showNext(*reader);
        }
        StreamingStatistics const played = host.spentInTheEnd();
        tell("one second of play", opened, played);
        jump(*reader);
        tell("seek to 75 %", played, host.spentInTheEnd());

        std::uint64_t const before = server.requests();
        bench::LibavClip clip(place.url(name), authorities_);
        clip.nextFrame();
        std::uint64_t const first = server.requests();
        clip.seek(jump_s);
        std::printf("%-44s %10llu requests to the first frame, %llu for the seek\n", "libav's own HTTP",
                    static_cast<unsigned long long>(first - before),
                    static_cast<unsigned long long>(server.requests() - first));
    }

private:
    using Timed = std::function<double()>;

    [[nodiscard]] static engine::Result<Reader> open(FreshHost& host, char const* name) {
        return engine::MediaReader::open(Zq::Ptr<iFile>(host.file(name)));
    }
    [[nodiscard]] fs::path freshStore() {
        std::error_code ignored;
        fs::remove_all(folder_ / "stores", ignored);
        return folder_ / "stores" / std::to_string(++stores_);
    }
    void checkWhole(std::uint64_t total) const {
        if (total != fs::file_size(folder_ / "media" / indexInFront)) {
            throw std::runtime_error("not the whole file was read");
        }
    }

    [[nodiscard]] bool isWanted(std::string const& what) const {
        return what.find(only_) != std::string::npos;
    }

    void compare(std::string const& what, char const* goal, int rounds, Timed const& zq, Timed const& other,
                 bool ofSpeed = false) const {
        if (!isWanted(what)) {
            return;
        }
        std::vector<double> ours;
        std::vector<double> theirs;
        for (int round = 0; round < rounds; ++round) {
            // Whoever comes second may find a warmer machine.
            for (int side = 0; side < 2; ++side) {
                (side == round % 2 ? ours : theirs).push_back(side == round % 2 ? zq() : other());
            }
        }
        double const ratio = median(ours) / median(theirs);
        std::printf("%-44s %10.2f %10.2f %8.2f   %s\n", what.c_str(), median(ours) * 1000,
                    median(theirs) * 1000, ofSpeed ? 1 / ratio : ratio, goal);
        std::fflush(stdout);
    }

    static void tell(std::string const& what, StreamingStatistics const& before,
                     StreamingStatistics const& after) {
        auto const received = static_cast<double>(after.bytesReceived - before.bytesReceived);
        auto const read = static_cast<double>(after.bytesRead - before.bytesRead);
        std::printf("%-44s %10llu %10.1f %10.1f %8.2f   %s\n", what.c_str(),
                    static_cast<unsigned long long>(after.requests - before.requests), received / 1024,
                    read / 1024, received / read, before.opens == 0 ? "<= 1.6" : "");
        std::fflush(stdout);
    }

    fs::path const folder_;
    fs::path const authorities_;
    int const rounds_;
    std::string const only_;
    int stores_ = 0;
};

struct Servers {
    Servers(fs::path const& folder, tarn7d::CertificateFiles const& certificates)
        : plain(folder), secure(folder, certificates.certificate, certificates.key),
          farPlain(plain.port(), {}), farSecure(secure.port(), {}), slowPlain(plain.port(), slowStart()),
          slowSecure(secure.port(), slowStart()) {}

    // As the systems that are in use have it.
    [[nodiscard]] static bench::Link slowStart() {
        bench::Link link;
        link.firstWindow_bytes = 10 * 1460;
        return link;
    }

    bench::RangeServer plain;
    bench::RangeServer secure;
    bench::DelayRelay farPlain;
    bench::DelayRelay farSecure;
    bench::DelayRelay slowPlain;
    bench::DelayRelay slowSecure;
};

void compareAll(Servers const& servers, Bench& bench) {
    Place const near{"loopback", false, servers.plain.port()};
    Place const nearSecure{"loopback, TLS", true, servers.secure.port()};
    Place const far{"40 ms", false, servers.farPlain.port()};
    Place const farSecure{"40 ms, TLS", true, servers.farSecure.port()};
    Place const slow{"40 ms, slow start", false, servers.slowPlain.port()};
    Place const slowSecure{"40 ms, slow start, TLS", true, servers.slowSecure.port()};

    bench.title("libav");
    for (Place const* const place : {&near, &nearSecure}) {
        bench.firstFrame(*place, indexInFront, "");
        bench.firstFrame(*place, indexAtTheEnd, "");
    }
    for (Place const* const place : {&far, &slow}) {
        bench.firstFrame(*place, indexInFront, "<= 1.05");
        bench.firstFrame(*place, indexAtTheEnd, "<= 0.55");
    }
    for (Place const* const place : {&farSecure, &slowSecure}) {
        bench.firstFrame(*place, indexInFront, "");
        bench.firstFrame(*place, indexAtTheEnd, "<= 0.35");
    }
    bench.seek(near, indexInFront, "");
    for (Place const* const place : {&far, &slow, &farSecure, &slowSecure}) {
        bench.seek(*place, indexInFront, "<= 0.6");
    }
    bench.sequential(near, ">= 0.97 of the speed");
    bench.sequential(nearSecure, ">= 0.97 of the speed");
    bench.sequential(far, ">= 0.97 of the speed");
    bench.sequential(slow, ">= 0.97 of the speed");

    bench.title("local file");
    bench.secondOpen(far, indexInFront, "<= 1.3");
    bench.secondOpen(far, indexAtTheEnd, "<= 1.3");

    std::printf("\n%-44s %10s %10s %10s %8s   %s\n", "", "requests", "KiB", "read, KiB", "ratio", "goal");
    for (char const* const name : {indexInFront, indexAtTheEnd}) {
        bench.cost(near, servers.plain, name);
        bench.cost(far, servers.plain, name);
    }
}

int measureAll(int rounds, char const* only) {
    std::optional<bench::TemporaryFolder> folder(fs::temp_directory_path());
    engine::LocalFileManager files(L"bench", folder->path / "journal");
    engine::TaskContext tasks;
    HostServices services;
    services.files = &files;
    services.tasks = &tasks;
    installHost(services);
    av_log_set_level(AV_LOG_QUIET);
    makeMedia(folder->path / "media");
    fs::create_directories(folder->path / "certificates");
    auto const certificates = tarn7d::ensureCertificates(folder->path / "certificates", {"127.0.0.1"});
    Servers const servers(folder->path / "media", certificates);
    int status = 0;
    try {
        Bench bench(folder->path, certificates.ca, rounds, only);
        compareAll(servers, bench);
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        status = 1;
    }
    folder.reset();
    std::fflush(stdout);
    std::_Exit(status); // the servers' threads go on to the end
}

} // namespace

int main(int count, char** arguments) {
    int const rounds = count > 1 ? std::atoi(arguments[1]) : 9;
    if (rounds <= 0) {
        return 2;
    }
    try {
        return measureAll(rounds, count > 2 ? arguments[2] : "");
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
