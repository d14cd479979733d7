// A second process that runs a piece of the test, with a line of bytes to it and one back.
#pragma once

#include <csignal>
#include <stdexcept>

#include <sys/wait.h>
#include <unistd.h>

#include "host/engine/files/FileDescriptor.h"

namespace test {

// The child's end of the lines.
class ParentLine {
public:
    ParentLine(int in, int out) : in_(in), out_(out) {}
    void tell(char word) const { (void)!::write(out_, &word, 1); }
    // 0 when the parent is gone.
    [[nodiscard]] char hear() const {
        char word = 0;
        return ::read(in_, &word, 1) == 1 ? word : '\0';
    }

private:
    int in_;
    int out_;
};

class ChildProcess {
public:
    // Runs the work in the child, which ends with it. To be made before the test opens anything that a child
    // must not share, such as a lock.
    template <class Work>
    explicit ChildProcess(Work const& work) {
        int down[2];
        int up[2];
        if (::pipe(down) != 0 || ::pipe(up) != 0 || (id_ = ::fork()) < 0) {
            throw std::runtime_error("no second process");
        }
        if (id_ == 0) {
            ::close(down[1]);
            ::close(up[0]);
            work(ParentLine(down[0], up[1]));
            ::_exit(0);
        }
        ::close(down[0]);
        ::close(up[1]);
        toChild_ = engine::FileDescriptor(down[1]);
        fromChild_ = engine::FileDescriptor(up[0]);
    }
    ~ChildProcess() { kill(); }
    ChildProcess(ChildProcess const&) = delete;
    ChildProcess& operator=(ChildProcess const&) = delete;

    void tell(char word) const { (void)!::write(toChild_.get(), &word, 1); }
    // 0 when the child is gone.
    [[nodiscard]] char hear() const {
        char word = 0;
        return ::read(fromChild_.get(), &word, 1) == 1 ? word : '\0';
    }
    // At once and without a last word; waits until it is gone.
    void kill() {
        if (id_ > 0) {
            ::kill(id_, SIGKILL);
            ::waitpid(id_, nullptr, 0);
            id_ = -1;
        }
    }

private:
    pid_t id_ = -1;
    engine::FileDescriptor toChild_;
    engine::FileDescriptor fromChild_;
};

} // namespace test
