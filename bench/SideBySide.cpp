#include "bench/SideBySide.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

namespace bench {

namespace fs = std::filesystem;

std::string quoted(std::string const& word) {
    return "'" + word + "'";
}

std::string program(std::string const& name) {
    return quoted(fs::read_symlink("/proc/self/exe").parent_path() / name);
}

Run measure(std::string const& command) {
    std::FILE* const pipe = ::popen((program("zq_bench_measure") + " " + command).c_str(), "r");
    Run run;
    long peak_KiB = 0;
    int status = -1;
    bool const read = pipe != nullptr && std::fscanf(pipe, "%lf %lf %ld %d", &run.seconds,
                                                     &run.processorSeconds, &peak_KiB, &status) == 4;
    if (pipe != nullptr) {
        ::pclose(pipe);
    }
    if (!read || status != 0) {
        throw std::runtime_error("failed: " + command);
    }
    run.peak_MiB = static_cast<double>(peak_KiB) / 1024;
    return run;
}

double median(std::vector<Run> const& runs, double Run::*member) {
    std::vector<double> values;
    for (Run const& run : runs) {
        values.push_back(run.*member);
    }
    std::ranges::nth_element(values, values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2));
    return values[values.size() / 2];
}

FileServerProcess::FileServerProcess(fs::path const& folder) {
    fs::create_directories(folder);
    std::array<int, 2> input{};
    // Only this process holds the writing end: the server's input ends with it.
    if (::pipe(input.data()) != 0 || ::fcntl(input[1], F_SETFD, FD_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    std::string const line =
        program("zq_bench_server") + " " + quoted(folder) + " <&" + std::to_string(input[0]);
    pipe_ = ::popen(line.c_str(), "r");
    ::close(input[0]);
    input_ = input[1];
    unsigned plain = 0;
    unsigned secure = 0;
    std::array<char, 512> ca{};
    if (pipe_ == nullptr || std::fscanf(pipe_, "%u %u %511s", &plain, &secure, ca.data()) != 3) {
        throw std::runtime_error("the server does not start");
    }
    plainName = "127.0.0.1:" + std::to_string(plain);
    secureName = "127.0.0.1:" + std::to_string(secure);
    caFile = ca.data();
}

FileServerProcess::~FileServerProcess() {
    ::close(input_);
    ::pclose(pipe_);
}

TemporaryFolder::TemporaryFolder(fs::path const& place) {
    std::string name = (place / "zq-bench-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no folder in " + place.string());
    }
    path = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(path, ignored);
}

} // namespace bench
