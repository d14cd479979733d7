#include "apps/tarn7d/Process.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace tarn7d {

namespace {

class SpawnSettings {
public:
    explicit SpawnSettings(int errorPipe) {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_adddup2(&actions_, errorPipe, STDERR_FILENO);
        posix_spawnattr_init(&attributes_);
        // The service blocks signals and ignores a broken pipe; what it starts must not inherit that.
        sigset_t none;
        sigset_t standard;
        sigemptyset(&none);
        sigemptyset(&standard);
        sigaddset(&standard, SIGPIPE);
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setsigdefault(&attributes_, &standard);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&actions_);
        posix_spawnattr_destroy(&attributes_);
    }
    SpawnSettings(SpawnSettings const&) = delete;
    SpawnSettings& operator=(SpawnSettings const&) = delete;

    [[nodiscard]] int start(pid_t& pid, std::vector<std::string> const& arguments) const {
        std::vector<char*> pointers;
        for (std::string const& argument : arguments) {
            pointers.push_back(const_cast<char*>(argument.c_str()));
        }
        pointers.push_back(nullptr);
        return posix_spawnp(&pid, pointers.front(), &actions_, &attributes_, pointers.data(), environ);
    }

private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

// Reads standard error until the program closes it; false when asked to stop before.
bool readErrors(int pipe, std::stop_token const& stop, std::string& errors) {
    constexpr int step_ms = 100;
    constexpr std::size_t keptBytes = 4096;
    std::array<char, 4096> block{};
    while (!stop.stop_requested()) {
        pollfd waiting{pipe, POLLIN, 0};
        if (::poll(&waiting, 1, step_ms) <= 0) {
            continue;
        }
        ssize_t const got = ::read(pipe, block.data(), block.size());
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return true;
        }
        errors.append(block.data(), static_cast<std::size_t>(got));
        if (errors.size() > keptBytes) {
            errors.erase(0, errors.size() - keptBytes);
        }
    }
    return false;
}

int waitFor(pid_t pid) {
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) {
            return -1;
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace

ProcessResult runProcess(std::vector<std::string> const& arguments, std::stop_token const& stop,
                         ProcessPriority priority) {
    ProcessResult result;
    std::array<int, 2> pipe{};
    if (stop.stop_requested() || arguments.empty() || ::pipe2(pipe.data(), O_CLOEXEC) != 0) {
        result.stopped = stop.stop_requested();
        return result;
    }
    pid_t pid = 0;
    int const error = SpawnSettings(pipe[1]).start(pid, arguments);
    ::close(pipe[1]);
    if (error != 0) {
        ::close(pipe[0]);
        result.errors = arguments.front() + ": " + std::generic_category().message(error);
        return result;
    }
    if (priority == ProcessPriority::background) {
        constexpr int niceness = 10;
        ::setpriority(PRIO_PROCESS, static_cast<id_t>(pid), niceness);
    }
    result.stopped = !readErrors(pipe[0], stop, result.errors);
    if (result.stopped) {
        ::kill(pid, SIGKILL);
    }
    ::close(pipe[0]);
    int const status = waitFor(pid);
    result.exitStatus = result.stopped ? -1 : status;
    return result;
}

} // namespace tarn7d
