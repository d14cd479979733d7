// The standard input, output and error of a program, which its starter may have left closed.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace engine {

// Puts something into each of the three that is closed: otherwise the next file that is opened takes its
// number, and what the program prints goes into that file. Input is at its end then, and output fails. Call
// it before anything else opens a file.
inline void openStandardDescriptors() noexcept {
    for (int const descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) < 0 && errno == EBADF) {
            // The lowest free number is taken, and those below are open already. Only for reading, so that
            // output is not lost without a word.
            static_cast<void>(::open("/dev/null", O_RDONLY));
        }
    }
}

} // namespace engine
