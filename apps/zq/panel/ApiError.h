// The failures that the panel's page is told, each with a code that it can act on.
#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "apps/zq/Reason.h"

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
// counts as `failed`. The reason is what the page goes by where it has one.
class ApiError : public std::runtime_error {
public:
    ApiError(ErrorCode code, std::string const& text, Reason reason = Reason::none)
        : std::runtime_error(text), code_(code), reason_(reason) {}
    [[nodiscard]] ErrorCode code() const noexcept { return code_; }
    [[nodiscard]] Reason reason() const noexcept { return reason_; }

private:
    ErrorCode code_;
    Reason reason_;
};

} // namespace zq::panel
