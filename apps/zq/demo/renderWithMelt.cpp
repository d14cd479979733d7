#include "apps/zq/demo/renderWithMelt.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include "host/engine/files/FileDescriptor.h"

extern char** environ;

namespace zq {

namespace {

constexpr int pollInterval_ms = 100;
constexpr std::size_t longestOutputKept = 4096; // bytes

// A running melt, in a process group of its own: Ctrl-C on the terminal reaches it through this program only.
class Melt {
public:
    Melt(std::filesystem::path const& mlt, std::filesystem::path const& target) {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0) {
            error_ = errno;
            return;
        }
        output_ = engine::FileDescriptor(ends[0]);
        engine::FileDescriptor const input(ends[1]);
        posix_spawn_file_actions_t actions;
        posix_spawnattr_t attributes;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawnattr_init(&attributes);
        ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
        sigset_t none;
        ::sigemptyset(&none);
        sigset_t ordinary;
        ::sigemptyset(&ordinary);
        ::sigaddset(&ordinary, SIGPIPE);
        ::posix_spawnattr_setpgroup(&attributes, 0);
        ::posix_spawnattr_setsigmask(&attributes, &none);
        ::posix_spawnattr_setsigdefault(&attributes, &ordinary);
        ::posix_spawnattr_setflags(&attributes,
                                   POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        std::vector<std::string> words{
            "melt",           mlt.string(),      "-progress",  "-consumer",   "avformat:" + target.string(),
            "vcodec=libx264", "preset=veryfast", "acodec=aac", "real_time=-1"};
        std::vector<char*> arguments;
        for (std::string& word : words) {
            arguments.push_back(word.data());
        }
        arguments.push_back(nullptr);
        error_ =
            ::posix_spawnp(&process_, words[0].c_str(), &actions, &attributes, arguments.data(), environ);
        if (error_ != 0) {
            process_ = -1;
        }
        ::posix_spawnattr_destroy(&attributes);
        ::posix_spawn_file_actions_destroy(&actions);
    }
    ~Melt() {
        end();
        static_cast<void>(wait());
    }
    Melt(Melt const&) = delete;
    Melt& operator=(Melt const&) = delete;

    [[nodiscard]] int error() const noexcept { return error_; }

    // What it has said since the last call, which waits for a moment; nothing at the end.
    [[nodiscard]] bool read(std::string& text) {
        pollfd wait{output_.get(), POLLIN, 0};
        if (::poll(&wait, 1, pollInterval_ms) <= 0) {
            return true;
        }
        char bytes[1024];
        ssize_t const count = ::read(output_.get(), bytes, sizeof bytes);
        if (count > 0) {
            text.append(bytes, static_cast<std::size_t>(count));
        }
        return count > 0 || (count < 0 && errno == EINTR);
    }

    void end() const noexcept {
        if (process_ > 0) {
            ::kill(process_, SIGKILL);
        }
    }

    // True when it has ended well.
    [[nodiscard]] bool wait() noexcept {
        int status = 0;
        pid_t const process = std::exchange(process_, -1);
        while (process > 0 && ::waitpid(process, &status, 0) < 0 && errno == EINTR) {
        }
        return process > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

private:
    engine::FileDescriptor output_;
    pid_t process_ = -1;
    int error_ = 0;
};

// The number behind the last "percentage:" of what was said; 0 where there is none.
double lastFraction(std::string_view said) {
    constexpr std::string_view mark = "percentage:";
    std::size_t at = said.rfind(mark);
    if (at == std::string_view::npos) {
        return 0;
    }
    at = said.find_first_not_of(' ', at + mark.size());
    int percent = 0;
    for (; at < said.size() && said[at] >= '0' && said[at] <= '9' && percent <= 100; ++at) {
        percent = percent * 10 + (said[at] - '0');
    }
    return percent / 100.0;
}

// The last line that is no progress.
std::string lastWords(std::string_view said) {
    std::string found;
    while (!said.empty()) {
        std::size_t const end = said.find_first_of("\r\n");
        std::string_view const line = said.substr(0, end);
        if (!line.empty() && line.find("percentage:") == std::string_view::npos) {
            found = line;
        }
        said.remove_prefix(end == std::string_view::npos ? said.size() : end + 1);
    }
    return found.empty() ? "it does not say why" : found;
}

} // namespace

Rendering renderWithMelt(std::filesystem::path const& mlt, std::filesystem::path const& target,
                         std::function<bool(double fraction)> const& onProgress) {
    Rendering result;
    Melt melt(mlt, target);
    if (melt.error() != 0) {
        bool const missing = melt.error() == ENOENT;
        result.outcome = missing ? Rendering::Outcome::notInstalled : Rendering::Outcome::failed;
        result.reason = std::strerror(melt.error());
        return result;
    }
    std::string said;
    bool cancelled = false;
    while (melt.read(said)) {
        if (!cancelled && !onProgress(lastFraction(said))) {
            cancelled = true;
            melt.end();
        }
        if (said.size() > longestOutputKept) {
            said.erase(0, said.size() - longestOutputKept);
        }
    }
    bool const succeeded = melt.wait();
    if (cancelled) {
        result.outcome = Rendering::Outcome::cancelled;
    } else if (succeeded) {
        result.outcome = Rendering::Outcome::done;
    } else {
        result.reason = lastWords(said);
    }
    return result;
}

} // namespace zq
