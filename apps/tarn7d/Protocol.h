// The protocol between the request's bytes and the answer's: envelope, digest, commands, replies. No
// transport here.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "apps/tarn7d/Accounts.h"
#include "apps/tarn7d/Catalogue.h"
#include "apps/tarn7d/DownloadAddresses.h"
#include "apps/tarn7d/Payments.h"
#include "apps/tarn7d/Sessions.h"
#include "apps/tarn7d/Shop.h"
#include "host/json/Builder.h"
#include "host/json/parse.h"

namespace tarn7d {

// The value of "c" in an error reply or an error answer.
enum class ErrorCode : std::int32_t {
    unknownCommand = 1,
    badParameter = 3,
    noSuchClip = 4,
    badRequest = 10,
    badKey = 11,
    badDigest = 12,
    wrongPassword = 20,
    unknownUser = 21,
    tooManyAttempts = 22,
    signInRequired = 101,
    emptyCart = 103,
    cartFull = 104,
    notOwned = 105,
    cannotPay = 106,
    fileGone = 107,
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
    Shop& shop;
    Payments& payments;
    DownloadAddresses& downloads;
    std::string iconBase;     // address of the thumbnails' folder, with the "/" at its end
    std::string previewBase;  // the same of the previews
    std::string downloadBase; // scheme and server of full files, without a "/" at its end
    std::string paymentBase;  // address of a payment page, up to its token
};

struct CommandRequest {
    JSON::Element const& parameters; // the command's own object
    SessionKey session;
    std::optional<Account> account; // the session's; always there where the command needs one
    DownloadAddresses::Expiry addressExpiry;
};

// One command of the service. The handler writes the members of its reply, or writes nothing and says why.
struct CommandRow {
    using Handler = std::optional<CommandError> (*)(ServiceParts& parts, CommandRequest const& request,
                                                    JSON::Builder& reply);
    enum class Needs { nothing, account };

    std::string_view word;
    Handler handler;
    Needs needs;
};

// All command words that the protocol knows.
[[nodiscard]] std::span<CommandRow const> commandTable();

// Answers requests. Any thread.
class Protocol {
public:
    explicit Protocol(ServiceParts parts);

    // The answer to a form body, as JSON in UTF-8: always an answer, whatever the body holds. Does not throw
    // for anything but lack of memory. With Expiry::past the addresses in it have expired already.
    [[nodiscard]] std::string answer(std::string_view body,
                                     DownloadAddresses::Expiry addresses = DownloadAddresses::Expiry::usual);

    // The command words of a form body, in their order; none if it holds no list of commands.
    [[nodiscard]] static std::vector<std::string> commandWords(std::string_view body);

private:
    struct Context {
        SessionKey session;
        DownloadAddresses::Expiry addresses;
    };
    void answerCommands(JSON::Element const& commands, Context const& context, JSON::Builder& answer);
    [[nodiscard]] std::optional<CommandError> answerCommand(JSON::Element const& command,
                                                            Context const& context, JSON::Builder& reply);
    [[nodiscard]] std::optional<Account> accountOf(SessionKey session);

    ServiceParts parts_;
};

} // namespace tarn7d
