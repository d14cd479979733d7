// Runs another program to its end, without a shell.
#pragma once

#include <stop_token>
#include <string>
#include <vector>

namespace tarn7d {

struct ProcessResult {
    int exitStatus = -1;  // -1 when it could not be started, was stopped or died by a signal
    bool stopped = false; // ended here because a stop was asked for
    std::string errors;   // the end of what it wrote to standard error
};

enum class ProcessPriority { normal, background };

// Runs the program, found in PATH, with exactly these arguments, nothing on standard input and its standard
// output dropped. Blocks until it ends; when asked to stop, kills it within a tenth of a second. Any thread;
// does not throw for anything but lack of memory.
[[nodiscard]] ProcessResult runProcess(std::vector<std::string> const& arguments, std::stop_token const& stop,
                                       ProcessPriority priority = ProcessPriority::normal);

} // namespace tarn7d
