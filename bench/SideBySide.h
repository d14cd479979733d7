// Programs that are measured from outside, side by side: each run is a process of its own, and so is the
// server that they speak to.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace bench {

// The word as the shell takes it; without "'".
[[nodiscard]] std::string quoted(std::string const& word);
// A program beside this one, quoted.
[[nodiscard]] std::string program(std::string const& name);

struct Run {
    double seconds = 0;
    double processorSeconds = 0;
    double peak_MiB = 0;
};

// Runs a command of the shell's form. Throws std::runtime_error when it fails.
[[nodiscard]] Run measure(std::string const& command);
[[nodiscard]] double median(std::vector<Run> const& runs, double Run::*member);

// zq_bench_server, for as long as this object.
class FileServerProcess {
public:
    // Its certificates go to the folder, which is made.
    explicit FileServerProcess(std::filesystem::path const& folder);
    ~FileServerProcess();
    FileServerProcess(FileServerProcess const&) = delete;
    FileServerProcess& operator=(FileServerProcess const&) = delete;

    std::string plainName;  // host:port, HTTP
    std::string secureName; // host:port, HTTPS
    std::string caFile;     // what is to be trusted for it

private:
    std::FILE* pipe_ = nullptr;
    int input_ = -1;
};

class TemporaryFolder {
public:
    explicit TemporaryFolder(std::filesystem::path const& place);
    ~TemporaryFolder();
    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    std::filesystem::path path;
};

} // namespace bench
