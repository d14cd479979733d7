#include "apps/zq/Output.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "apps/zq/JsonOutput.h"
#include "apps/zq/terminal/PlainText.h"

namespace zq {

namespace {

// False when the descriptor takes no more.
bool writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        ssize_t const count = ::write(descriptor, text.data(), text.size());
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

void complain(std::string_view kind, char const* colour, std::string_view text) {
    char const* const noColour = std::getenv("NO_COLOR");
    bool const coloured = ::isatty(STDERR_FILENO) != 0 && (noColour == nullptr || *noColour == '\0');
    std::string line = "zq: ";
    line += coloured ? colour + std::string(kind) + "\033[0m" : std::string(kind);
    line += ": " + plainText(text) + "\n";
    static_cast<void>(writeAll(STDERR_FILENO, line));
}

} // namespace

void Output::write(std::string_view text) {
    broken_ = broken_ || !writeAll(STDOUT_FILENO, text);
}

void Output::print(Reply const& reply, Format format) {
    if (reply.told) {
        return;
    }
    if (format == Format::json) {
        write(jsonLine(reply) + "\n");
        return;
    }
    for (std::string const& warning : reply.warnings) {
        warn(warning);
    }
    if (reply.ok()) {
        write(reply.text);
    } else {
        fail(reply.error);
    }
}

void Output::say(std::string_view line) {
    write(plainText(line) + "\n");
}

void Output::warn(std::string_view text) const {
    complain("warning", "\033[33m", text);
}

void Output::fail(std::string_view text) const {
    complain("error", "\033[31m", text);
}

} // namespace zq
