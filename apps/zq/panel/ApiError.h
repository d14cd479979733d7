// The failures that the panel's page is told, each with a code that it can act on.
#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zq::panel {

enum class ErrorCode {
    badRequest,
    notJson,
    notEntered,
    foreignOrigin,
    notFound,
    notAllowed,
    conflict,
    tooLarge,
    wrongHost,
    failed,
    internal,
};

struct ErrorRow {
    ErrorCode code;
    std::string_view word; // in the answer
    int status;
};

// All codes, each once.
[[nodiscard]] std::span<ErrorRow const> errorTable();
[[nodiscard]] ErrorRow const& rowOf(ErrorCode code);

// Thrown by a handler that fails; its text is for a person. A CommandError of the program's own operations
// counts as `failed`.
class ApiError : public std::runtime_error {
public:
    ApiError(ErrorCode code, std::string const& text) : std::runtime_error(text), code_(code) {}
    [[nodiscard]] ErrorCode code() const noexcept { return code_; }

private:
    ErrorCode code_;
};

} // namespace zq::panel
