// Why a remote file could not be read.
#pragma once

#include <string>

namespace engine {

struct StreamError {
    enum class Kind {
        none,
        unreachable, // no connection, or TLS failed
        stalled,     // a deadline passed
        cut,         // the answer ended early
        missing,     // the server says that the file is not there
        refused,     // another answer of 400 to 499
        server,      // an answer of 500 and above
        protocol,    // an answer that does not fit its request
        changed,     // another file now bears the name
        cancelled,   // the reading task was cancelled
        ended,       // streaming has come to its end
    };

    Kind kind = Kind::none;
    std::string text; // one line, printable

    explicit operator bool() const noexcept { return kind != Kind::none; }
};

} // namespace engine
