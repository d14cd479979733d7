#include "tests/engine/local/OtherProcess.h"

#include <cerrno>
#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace test {

OtherProcess::OtherProcess(std::vector<std::string> arguments) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    std::string const program = ZQ_LOCAL_HELPER;
    std::vector<char*> list{const_cast<char*>(program.c_str())};
    for (std::string& argument : arguments) {
        list.push_back(argument.data());
    }
    list.push_back(nullptr);
    int const error = posix_spawn(&process_, program.c_str(), &actions, nullptr, list.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    output_ = ends[0];
    if (error != 0) {
        ::close(output_);
        throw std::runtime_error("the helper program does not start");
    }
}

OtherProcess::~OtherProcess() {
    kill();
    (void)wait();
    ::close(output_);
}

std::string OtherProcess::readLine() const {
    std::string line;
    char character = '\0';
    while (::read(output_, &character, 1) == 1 && character != '\n') {
        line += character;
    }
    return line;
}

void OtherProcess::kill() {
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
    }
}

int OtherProcess::wait() {
    if (process_ <= 0) {
        return -1;
    }
    int status = 0;
    while (::waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace test
