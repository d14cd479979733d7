// What Ctrl-C and the system's request to end mean for this program.
//
// The first SIGINT during a command cancels it; one at the prompt, a second one, SIGTERM and SIGHUP end the
// program in order. A third SIGINT ends it at once. SIGPIPE is ignored: writing then fails as such.
#pragma once

#include "host/engine/os/TaskContext.h"

namespace zq {

// One at a time in a process. Thread: the main thread, except for the signals themselves.
class Interrupts {
public:
    // Installs the handlers. Throws std::system_error where that fails.
    Interrupts();
    Interrupts(Interrupts const&) = delete;
    Interrupts& operator=(Interrupts const&) = delete;
    // Puts back what was there.
    ~Interrupts();

    // The calling thread runs one command, as a task that a signal cancels.
    class Command {
    public:
        Command() noexcept;
        Command(Command const&) = delete;
        Command& operator=(Command const&) = delete;
        ~Command();
        [[nodiscard]] bool isCancelled() const noexcept;

    private:
        engine::TaskState state_;
        engine::ScopedTask task_;
    };

    // The signal that asks the program to end; 0 while none has.
    [[nodiscard]] int endingSignal() const noexcept;
    // Waits until the descriptor can be read, or has ended. False when a signal ends the command or the
    // program first.
    [[nodiscard]] bool waitForInput(int descriptor) const;
};

} // namespace zq
