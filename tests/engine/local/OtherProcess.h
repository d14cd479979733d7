// The helper program of these tests, run as a second process.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <sys/types.h>

namespace test {

class OtherProcess {
public:
    explicit OtherProcess(std::vector<std::string> arguments);
    // Kills it where it still runs.
    ~OtherProcess();
    OtherProcess(OtherProcess const&) = delete;
    OtherProcess& operator=(OtherProcess const&) = delete;

    // Waits for the next line of its output; empty at the end of it.
    [[nodiscard]] std::string readLine() const;
    // Ends it at once, as a power cut would.
    void kill();
    // Its exit status; -1 when it was killed.
    [[nodiscard]] int wait();

private:
    pid_t process_ = -1;
    int output_ = -1;
};

} // namespace test
