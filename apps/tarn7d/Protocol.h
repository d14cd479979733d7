// The protocol between the request's bytes and the answer's: envelope, digest, commands, replies. No
// transport here.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "apps/tarn7d/Accounts.h"
#include "apps/tarn7d/Catalogue.h"
#include "apps/tarn7d/Sessions.h"
#include "host/json/Builder.h"
#include "host/json/parse.h"

namespace tarn7d {

// The value of "c" in an error reply or an error answer.
enum class ErrorCode : std::int32_t {
    unknownCommand = 1,
    notAvailable = 2,
    badParameter = 3,
    noSuchClip = 4,
    badRequest = 10,
    badKey = 11,
    badDigest = 12,
    wrongPassword = 20,
    unknownUser = 21,
    tooManyAttempts = 22,
    signInRequired = 101,
    internal = 500,
};

struct ErrorRow {
    ErrorCode code;
    std::string_view name;
};

// All error codes, each once.
[[nodiscard]] std::span<ErrorRow const> errorTable();

struct CommandError {
    ErrorCode code;
    std::string text; // "s"
};

// What the commands work on; all of it may be used from any thread, and outlives the protocol.
struct ServiceParts {
    Catalogue& catalogue;
    Accounts& accounts;
    Sessions& sessions;
    SignInThrottle& throttle;
    std::string iconBase;    // address of the thumbnails' folder, with the "/" at its end
    std::string previewBase; // the same of the previews
};

struct CommandRequest {
    JSON::Element const& parameters; // the command's own object
    SessionKey session;
    std::optional<Account> account; // the session's, if it is a good one
};

// One command of the service. The handler writes the members of its reply, or writes nothing and says why.
struct CommandRow {
    using Handler = std::optional<CommandError> (*)(ServiceParts& parts, CommandRequest const& request,
                                                    JSON::Builder& reply);
    enum class Needs { nothing, account };

    std::string_view word;
    Handler handler; // null: known, but not offered by this service
    Needs needs;
};

// All command words that the protocol knows.
[[nodiscard]] std::span<CommandRow const> commandTable();

// Answers requests. Any thread.
class Protocol {
public:
    explicit Protocol(ServiceParts parts);

    // The answer to a form body, as JSON in UTF-8: always an answer, whatever the body holds. Does not throw
    // for anything but lack of memory.
    [[nodiscard]] std::string answer(std::string_view body);

private:
    void answerCommands(JSON::Element const& commands, SessionKey session, JSON::Builder& answer);
    [[nodiscard]] std::optional<CommandError> answerCommand(JSON::Element const& command, SessionKey session,
                                                            JSON::Builder& reply);
    [[nodiscard]] std::optional<Account> accountOf(SessionKey session);

    ServiceParts parts_;
};

} // namespace tarn7d
