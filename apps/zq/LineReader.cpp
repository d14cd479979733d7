#include "apps/zq/LineReader.h"

#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

namespace zq {

namespace {

// A terminal that does not show what is typed, while this lives.
class HiddenInput {
public:
    explicit HiddenInput(int descriptor) : descriptor_(descriptor) {
        hidden_ = ::tcgetattr(descriptor, &before_) == 0;
        if (hidden_) {
            termios quiet = before_;
            quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            ::tcsetattr(descriptor, TCSAFLUSH, &quiet);
        }
    }
    HiddenInput(HiddenInput const&) = delete;
    HiddenInput& operator=(HiddenInput const&) = delete;
    ~HiddenInput() {
        if (hidden_) {
            ::tcsetattr(descriptor_, TCSADRAIN, &before_);
            [[maybe_unused]] auto const written = ::write(STDERR_FILENO, "\n", 1);
        }
    }

private:
    int descriptor_;
    bool hidden_ = false;
    termios before_{};
};

} // namespace

LineReader::LineReader(int descriptor, Interrupts const& interrupts)
    : descriptor_(descriptor), interrupts_(interrupts), isTerminal_(::isatty(descriptor) != 0) {}

void LineReader::prompt(std::string_view text) const {
    if (isTerminal_) {
        [[maybe_unused]] auto const written = ::write(STDERR_FILENO, text.data(), text.size());
    }
}

LineReader::Filling LineReader::fill() {
    char bytes[4096];
    for (;;) {
        if (!interrupts_.waitForInput(descriptor_)) {
            return Filling::interrupted;
        }
        ssize_t const count = ::read(descriptor_, bytes, sizeof bytes);
        if (count > 0) {
            pending_.append(bytes, static_cast<std::size_t>(count));
            return Filling::bytes;
        }
        if (count == 0 || errno != EINTR) {
            return Filling::end;
        }
    }
}

std::optional<std::string> LineReader::readLine(std::string_view promptText) {
    prompt(promptText);
    bool tooLong = false;
    std::size_t end = pending_.find('\n');
    while (end == std::string::npos) {
        if (pending_.size() > longestLine) {
            tooLong = true;
            pending_.clear();
        }
        std::size_t const searched = pending_.size();
        Filling const filling = fill();
        if (filling == Filling::interrupted || (filling == Filling::end && pending_.empty())) {
            prompt("\n"); // what follows begins on a line of its own
            return std::nullopt;
        }
        if (filling == Filling::end) {
            pending_ += '\n'; // the last line may come without one
        }
        end = pending_.find('\n', searched);
    }
    std::string line = pending_.substr(0, end);
    pending_.erase(0, end + 1);
    if (tooLong || line.size() > longestLine) {
        throw std::length_error("the line is longer than " + std::to_string(longestLine) + " bytes");
    }
    if (line.ends_with('\r')) {
        line.pop_back();
    }
    return line;
}

std::optional<std::string> LineReader::readSecret(std::string_view promptText) {
    if (!isTerminal_) {
        return readLine({});
    }
    HiddenInput const hidden(descriptor_);
    return readLine(promptText);
}

} // namespace zq
