// A program of this build as a child process, with pipes or a terminal around it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace zq_tests {

struct Finished {
    int status = -1; // exit status; -1 when a signal killed the program
    std::string out;
    std::string err;
};

class RunningProgram {
public:
    enum class Around {
        pipes,
        terminal, // the program's input, output and errors are one terminal of 80 columns
    };

    // `environment` holds "NAME=value" and replaces the test's own, but for PATH. Throws std::runtime_error.
    RunningProgram(std::string const& program, std::vector<std::string> const& arguments,
                   std::vector<std::string> const& environment, Around around = Around::pipes);
    // Kills what still runs.
    ~RunningProgram();
    RunningProgram(RunningProgram const&) = delete;
    RunningProgram& operator=(RunningProgram const&) = delete;

    void write(std::string_view text);
    void closeInput();
    // Nobody reads the output any more.
    void closeOutput();
    void sendSignal(int number) const;
    // The next line of the output. Throws std::runtime_error when none comes within 30 seconds.
    [[nodiscard]] std::string readLine();
    // The output up to the first occurrence of the text, which is included.
    [[nodiscard]] std::string readThrough(std::string_view text);
    // Closes the input of a program in pipes, reads all it says and waits for its end.
    [[nodiscard]] Finished finish();

private:
    // False at the end of everything.
    bool pump();

    pid_t process_ = -1;
    int input_ = -1;
    int output_ = -1;
    int errors_ = -1;
    std::string out_;
    std::string err_;
};

} // namespace zq_tests
