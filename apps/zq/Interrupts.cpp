#include "apps/zq/Interrupts.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <iterator>
#include <system_error>

namespace zq {

namespace {

constexpr int handled[] = {SIGINT, SIGTERM, SIGHUP};

// What the handler touches: lock-free, and alive while handlers are installed.
std::atomic<engine::TaskState*> running{nullptr};
std::atomic<int> ending{0};
std::atomic<int> wakeUp{-1}; // the end of a pipe that waitForInput listens to
static_assert(std::atomic<engine::TaskState*>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

int pipeEnds[2] = {-1, -1};
struct sigaction before[std::size(handled)];
struct sigaction pipeBefore;

extern "C" void zqHandleSignal(int signal) {
    int const savedError = errno;
    engine::TaskState* const task = running.load();
    bool const cancelsOnly =
        signal == SIGINT && task != nullptr && task->status() != iBackgroundTask::eCancelling;
    if (task != nullptr) {
        task->cancel();
    }
    if (!cancelsOnly) {
        ending.store(signal);
        struct sigaction plain {};
        plain.sa_handler = SIG_DFL;
        ::sigaction(SIGINT, &plain, nullptr); // one more ends the program at once
    }
    char const mark = 0;
    [[maybe_unused]] auto const written = ::write(wakeUp.load(), &mark, 1);
    errno = savedError;
}

void drain() noexcept {
    char marks[64];
    while (::read(pipeEnds[0], marks, sizeof marks) > 0) {
    }
}

} // namespace

Interrupts::Interrupts() {
    if (::pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0) {
        throw std::system_error(errno, std::generic_category(), "no pipe for signals");
    }
    wakeUp.store(pipeEnds[1]);
    ending.store(0);
    struct sigaction action {};
    action.sa_handler = zqHandleSignal;
    ::sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < std::size(handled); ++i) {
        ::sigaction(handled[i], &action, &before[i]);
    }
    struct sigaction ignored {};
    ignored.sa_handler = SIG_IGN;
    ::sigaction(SIGPIPE, &ignored, &pipeBefore);
}

Interrupts::~Interrupts() {
    for (std::size_t i = 0; i < std::size(handled); ++i) {
        ::sigaction(handled[i], &before[i], nullptr);
    }
    ::sigaction(SIGPIPE, &pipeBefore, nullptr);
    wakeUp.store(-1);
    ::close(pipeEnds[0]);
    ::close(pipeEnds[1]);
}

Interrupts::Command::Command() noexcept : task_(state_) {
    drain();
    running.store(&state_);
}

Interrupts::Command::~Command() {
    running.store(nullptr);
}

bool Interrupts::Command::isCancelled() const noexcept {
    return state_.status() == iBackgroundTask::eCancelling;
}

int Interrupts::endingSignal() const noexcept {
    return ending.load();
}

bool Interrupts::waitForInput(int descriptor) const {
    for (;;) {
        engine::TaskState const* const task = running.load();
        if (ending.load() != 0 || (task != nullptr && task->status() == iBackgroundTask::eCancelling)) {
            return false;
        }
        pollfd waits[2] = {{descriptor, POLLIN, 0}, {pipeEnds[0], POLLIN, 0}};
        if (::poll(waits, 2, -1) < 0) {
            if (errno != EINTR) {
                return true; // reading tells what is wrong
            }
        } else if (waits[1].revents != 0) {
            drain();
        } else if (waits[0].revents != 0) {
            return true;
        }
    }
}

} // namespace zq
