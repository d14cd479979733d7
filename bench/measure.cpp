// Runs a command and prints what it took: seconds of the clock, seconds of the processor, peak memory in KiB,
// and its exit status. A program of its own and a small one: a process begins with its parent's peak memory.
//
// usage: zq_bench_measure COMMAND [ARGUMENT...]
#include <chrono>
#include <cstdio>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

int main(int count, char** arguments) {
    if (count < 2) {
        return 2;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    auto const start = std::chrono::steady_clock::now();
    pid_t process = 0;
    if (posix_spawnp(&process, arguments[1], &actions, nullptr, arguments + 1, environ) != 0) {
        return 3;
    }
    rusage usage{};
    int status = 0;
    wait4(process, &status, 0, &usage);
    std::chrono::duration<double> const elapsed = std::chrono::steady_clock::now() - start;
    auto const seconds = [](timeval const& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    std::printf("%.6f %.6f %ld %d\n", elapsed.count(), seconds(usage.ru_utime) + seconds(usage.ru_stime),
                usage.ru_maxrss, WIFEXITED(status) ? WEXITSTATUS(status) : 255);
    return 0;
}
