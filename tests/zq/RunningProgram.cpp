#include "tests/zq/RunningProgram.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace zq_tests {

namespace {

constexpr int patience_ms = 30'000;

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> list;
    for (std::string& text : texts) {
        list.push_back(text.data());
    }
    list.push_back(nullptr);
    return list;
}

void closeIfOpen(int& descriptor) {
    if (descriptor >= 0) {
        ::close(std::exchange(descriptor, -1));
    }
}

// False at the end of the stream.
bool readSome(int& descriptor, std::string& text) {
    char bytes[4096];
    ssize_t const count = ::read(descriptor, bytes, sizeof bytes);
    if (count > 0) {
        text.append(bytes, static_cast<std::size_t>(count));
        return true;
    }
    if (count < 0 && errno == EINTR) {
        return true;
    }
    closeIfOpen(descriptor); // a terminal whose program is gone reads as an error
    return false;
}

} // namespace

RunningProgram::RunningProgram(std::string const& program, std::vector<std::string> const& arguments,
                               std::vector<std::string> const& environment, Around around) {
    std::vector<std::string> words{program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables = environment;
    if (char const* const path = std::getenv("PATH")) {
        variables.push_back(std::string("PATH=") + path);
    }
    std::vector<char*> const argumentList = pointers(words);
    std::vector<char*> const variableList = pointers(variables);
    int in[2] = {-1, -1};
    int out[2] = {-1, -1};
    int err[2] = {-1, -1};
    if (around == Around::terminal) {
        winsize size{};
        size.ws_row = 24;
        size.ws_col = 80;
        process_ = ::forkpty(&output_, nullptr, nullptr, &size);
    } else {
        if (::pipe2(in, O_CLOEXEC) != 0 || ::pipe2(out, O_CLOEXEC) != 0 || ::pipe2(err, O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipes");
        }
        process_ = ::fork();
        if (process_ == 0) {
            ::dup2(in[0], STDIN_FILENO);
            ::dup2(out[1], STDOUT_FILENO);
            ::dup2(err[1], STDERR_FILENO);
        }
    }
    if (process_ == 0) {
        ::execve(argumentList[0], argumentList.data(), variableList.data());
        ::_exit(127);
    }
    if (process_ < 0) {
        throw std::runtime_error("no process");
    }
    if (around == Around::terminal) {
        input_ = ::fcntl(output_, F_DUPFD_CLOEXEC, 0);
        ::fcntl(output_, F_SETFD, FD_CLOEXEC);
        return;
    }
    ::close(in[0]);
    ::close(out[1]);
    ::close(err[1]);
    input_ = in[1];
    output_ = out[0];
    errors_ = err[0];
    // Writing to a program that has ended is part of some tests.
    ::signal(SIGPIPE, SIG_IGN);
}

RunningProgram::~RunningProgram() {
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
    closeIfOpen(input_);
    closeIfOpen(output_);
    closeIfOpen(errors_);
}

void RunningProgram::write(std::string_view text) {
    while (!text.empty()) {
        ssize_t const count = ::write(input_, text.data(), text.size());
        if (count < 0) {
            return; // the program has ended, which its status tells
        }
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

void RunningProgram::closeInput() {
    closeIfOpen(input_);
}

void RunningProgram::closeOutput() {
    closeIfOpen(output_);
}

void RunningProgram::sendSignal(int number) const {
    ::kill(process_, number);
}

bool RunningProgram::pump() {
    pollfd waits[2] = {{output_, POLLIN, 0}, {errors_, POLLIN, 0}};
    if (output_ < 0 && errors_ < 0) {
        return false;
    }
    int const ready = ::poll(waits, 2, patience_ms);
    if (ready == 0) {
        throw std::runtime_error("the program says nothing more; so far: " + out_ + err_);
    }
    if (waits[0].revents != 0) {
        readSome(output_, out_);
    }
    if (waits[1].revents != 0) {
        readSome(errors_, err_);
    }
    return true;
}

std::string RunningProgram::readThrough(std::string_view text) {
    std::size_t at = out_.find(text);
    while (at == std::string::npos) {
        if (!pump()) {
            throw std::runtime_error("the program ended; it said: " + out_ + err_);
        }
        at = out_.find(text);
    }
    std::string const part = out_.substr(0, at + text.size());
    out_.erase(0, part.size());
    return part;
}

std::string RunningProgram::readLine() {
    std::string line = readThrough("\n");
    line.pop_back();
    return line;
}

Finished RunningProgram::finish() {
    if (errors_ >= 0) {
        closeInput();
    }
    while (pump()) {
    }
    int status = 0;
    ::waitpid(std::exchange(process_, -1), &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, std::exchange(out_, {}), std::exchange(err_, {})};
}

} // namespace zq_tests
