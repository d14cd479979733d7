#include "host/engine/os/DesktopShell.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/engine/files/LocalPath.h"
#include "host/engine/os/BrowserUrl.h"
#include "host/log/Log.h"

extern char** environ;

namespace engine {

namespace {

std::vector<std::string> browsers() {
    if (char const* const forced = std::getenv("ZQ_BROWSER")) {
        return {forced};
    }
    std::vector<std::string> programs{"xdg-open"};
    if (char const* const named = std::getenv("BROWSER")) {
        std::string const list = named;
        programs.push_back(list.substr(0, list.find(':')));
    }
    return programs;
}

class SpawnSettings {
public:
    SpawnSettings() {
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setflags(&attributes_,
                                 POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        // What a browser prints must not mix with what the host prints.
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    }
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&actions_);
        posix_spawnattr_destroy(&attributes_);
    }
    SpawnSettings(SpawnSettings const&) = delete;
    SpawnSettings& operator=(SpawnSettings const&) = delete;

    // 0 or the system's error number.
    int start(std::string program, std::string argument, pid_t& process) const {
        char* const arguments[] = {program.data(), argument.data(), nullptr};
        return posix_spawnp(&process, program.c_str(), &actions_, &attributes_, arguments, environ);
    }

private:
    posix_spawnattr_t attributes_{};
    posix_spawn_file_actions_t actions_{};
};

// Collects the process when it ends, on a thread that takes no signals and lasts no longer than the process.
void collectLater(pid_t process) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    try {
        std::thread([process] {
            while (::waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
            }
        }).detach();
    } catch (std::system_error const&) {
        // Without a thread the ended process stays in the table until the host ends.
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

// Has the first browser that can be started show what the argument names.
bool startBrowser(std::string const& argument) {
    SpawnSettings const settings;
    for (std::string const& program : browsers()) {
        pid_t process = 0;
        int const error = program.empty() ? ENOENT : settings.start(program, argument, process);
        if (error == 0) {
            collectLater(process);
            return true;
        }
        Log("The browser \"%s\" could not be started: %s", program.c_str(),
            std::generic_category().message(error).c_str());
    }
    return false;
}

} // namespace

bool DesktopShell::openInBrowser(WideString const& url) {
    std::optional<std::string> const address = browserUrl(url);
    if (!address) {
        Log("An address that is neither http nor https was not opened in the browser");
        return false;
    }
    bool const started = startBrowser(*address);
    remember({*address, started});
    return started;
}

bool DesktopShell::openFileInBrowser(std::filesystem::path const& file) {
    return startBrowser(file.native());
}

void DesktopShell::remember(Page page) {
    std::lock_guard const lock(mutex_);
    lastPage_ = std::move(page);
}

DesktopShell::Page DesktopShell::takeLastPage() {
    std::lock_guard const lock(mutex_);
    return std::exchange(lastPage_, {});
}

WideString DesktopShell::getStandardFolder(int number) {
    if (number != mediaFolder) {
        return {};
    }
    std::error_code error;
    std::filesystem::create_directories(media_, error);
    WideString folder = wideText(media_);
    if (!folder.endsWith(L"/")) {
        folder += L'/';
    }
    return folder;
}

} // namespace engine
