// The standard input, line by line.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "apps/zq/Interrupts.h"

namespace zq {

// Thread: the main thread.
class LineReader {
public:
    // A longer line is not taken.
    static constexpr std::size_t longestLine = std::size_t{64} << 10; // bytes

    // The descriptor stays the caller's.
    LineReader(int descriptor, Interrupts const& interrupts);

    // The next line without its line end; nothing at the end of the input, on an error, and when a signal
    // came first. Throws std::length_error for a line that is too long, which is then passed over. `prompt`
    // is written to the standard error where a person types.
    [[nodiscard]] std::optional<std::string> readLine(std::string_view prompt);
    // The same, while a terminal does not show what is typed.
    [[nodiscard]] std::optional<std::string> readSecret(std::string_view prompt);
    [[nodiscard]] bool isTerminal() const noexcept { return isTerminal_; }

private:
    enum class Filling { bytes, end, interrupted };
    [[nodiscard]] Filling fill();
    void prompt(std::string_view text) const;

    int const descriptor_;
    Interrupts const& interrupts_;
    bool const isTerminal_;
    std::string pending_; // read and not yet given
};

} // namespace zq
