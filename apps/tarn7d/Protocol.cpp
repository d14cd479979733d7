#include "apps/tarn7d/Protocol.h"

#include <algorithm>
#include <cstring>

#include "apps/tarn7d/JsonText.h"
#include "apps/tarn7d/Log.h"
#include "apps/tarn7d/PasswordHash.h"
#include "apps/tarn7d/RequestBody.h"
#include "apps/tarn7d/Text.h"
#include "host/engine/crypto/Digest.h"
#include "host/text/Unicode.h"

#include "ServiceValues.h"

namespace tarn7d {

namespace {

constexpr ErrorRow errors[] = {
    {ErrorCode::unknownCommand, "unknown command"},
    {ErrorCode::badParameter, "bad parameter"},
    {ErrorCode::noSuchClip, "no such clip"},
    {ErrorCode::badRequest, "bad request"},
    {ErrorCode::badKey, "bad key"},
    {ErrorCode::badDigest, "bad digest"},
    {ErrorCode::wrongPassword, "wrong password"},
    {ErrorCode::unknownUser, "unknown user"},
    {ErrorCode::tooManyAttempts, "too many attempts"},
    {ErrorCode::signInRequired, "sign-in required"},
    {ErrorCode::emptyCart, "empty cart"},
    {ErrorCode::cartFull, "cart full"},
    {ErrorCode::notOwned, "not owned"},
    {ErrorCode::cannotPay, "cannot pay"},
    {ErrorCode::fileGone, "file gone"},
    {ErrorCode::internal, "internal"},
};

// A client asks for the data of all clips that its account owns in one request.
constexpr std::size_t mostCommands = 65535;

void addError(JSON::Builder& builder, CommandError const& error) {
    builder.add("e", true);
    builder.add("c", static_cast<std::int32_t>(error.code));
    addText(builder, "s", error.text);
}

std::string refusal(CommandError const& error) {
    JSON::Builder answer;
    answer.startChild(nullptr);
    addError(answer, error);
    answer.endChild();
    return jsonText(answer);
}

std::string const& apiKey() {
    static std::string const key(toUTF8(WideString(Tarn7ApiKey)).view());
    return key;
}

std::string digestOf(std::string_view commandText) {
    std::string text(commandText);
    text += Tarn7HashSalt;
    text += Tarn7HashPepper;
    return engine::sha256Hex(text);
}

std::optional<CommandError> checkEnvelope(JSON::Element const& envelope) {
    if (!equalInConstantTime(envelope.getStringView("api_key"), apiKey())) {
        return CommandError{ErrorCode::badKey,
                            "The key is not known to this service: the client is made for another one"};
    }
    if (envelope.getInt("ver", 0) != 1) {
        return CommandError{ErrorCode::badRequest, "Only version 1 of the protocol is spoken here"};
    }
    std::string const expected = digestOf(envelope.getStringView("commands_json"));
    if (!equalInConstantTime(envelope.getStringView("commands_hash"), expected)) {
        return CommandError{ErrorCode::badDigest, "The digest does not belong to the commands"};
    }
    return std::nullopt;
}

// Reading keeps objects apart from other members, so a list with anything but objects would lose its order.
bool isCommandList(std::string_view text, JSON::Element const& list) {
    std::size_t const first = text.find_first_not_of(" \t\r\n");
    return first != std::string_view::npos && text[first] == '[' && list.strings().empty() &&
           list.numbers().empty() && list.flags().empty() && list.children().size() <= mostCommands;
}

} // namespace

std::span<ErrorRow const> errorTable() {
    return errors;
}

Protocol::Protocol(ServiceParts parts) : parts_(std::move(parts)) {}

std::string Protocol::answer(std::string_view body, DownloadAddresses::Expiry addresses) {
    std::optional<RequestForm> const form = parseRequestBody(body);
    Zq::Ptr<JSON::Element> const envelope = form ? parseJson(form->envelope) : nullptr;
    if (envelope == nullptr) {
        return refusal({ErrorCode::badRequest, "The request is not a form with the field api"});
    }
    if (std::optional<CommandError> const error = checkEnvelope(*envelope)) {
        return refusal(*error);
    }
    std::string_view const text = envelope->getStringView("commands_json");
    Zq::Ptr<JSON::Element> const commands = parseJson(text);
    if (commands == nullptr || !isCommandList(text, *commands)) {
        return refusal({ErrorCode::badRequest, "The commands are not a list of objects, or too many"});
    }
    JSON::Builder answer;
    answer.startChild(nullptr);
    answer.add("e", false);
    addText(answer, "s", "");
    answer.startArray("commands");
    answerCommands(*commands, {form->session, addresses}, answer);
    answer.endArray();
    answer.endChild();
    return jsonText(answer);
}

std::vector<std::string> Protocol::commandWords(std::string_view body) {
    std::optional<RequestForm> const form = parseRequestBody(body);
    Zq::Ptr<JSON::Element> const envelope = form ? parseJson(form->envelope) : nullptr;
    Zq::Ptr<JSON::Element> const commands =
        envelope != nullptr ? parseJson(envelope->getStringView("commands_json")) : nullptr;
    std::vector<std::string> words;
    for (JSON::ChildMember const& child : JSON::orEmpty(commands).children()) {
        words.emplace_back(child.element->getStringView("command"));
    }
    return words;
}

void Protocol::answerCommands(JSON::Element const& commands, Context const& context, JSON::Builder& answer) {
    // Every request of a session keeps it from ending, whatever its commands need.
    (void)parts_.sessions.account(context.session);
    for (JSON::ChildMember const& child : commands.children()) {
        answer.startChild(nullptr);
        std::optional<CommandError> error;
        try {
            error = answerCommand(*child.element, context, answer);
        } catch (std::exception const& failure) {
            logLine(std::string("a command failed: ") + failure.what());
            error = CommandError{ErrorCode::internal, "The service failed"};
        }
        if (error) {
            addError(answer, *error);
        }
        answer.endChild();
    }
}

std::optional<CommandError> Protocol::answerCommand(JSON::Element const& command, Context const& context,
                                                    JSON::Builder& reply) {
    std::string_view const word = command.getStringView("command");
    std::span<CommandRow const> const table = commandTable();
    auto const row = std::find_if(table.begin(), table.end(),
                                  [word](CommandRow const& known) { return known.word == word; });
    if (row == table.end()) {
        constexpr std::size_t longestWord = 64;
        return CommandError{ErrorCode::unknownCommand, "Unknown command: " + cleanText(word, longestWord)};
    }
    CommandRequest request{command, context.session, std::nullopt, context.addresses};
    if (row->needs == CommandRow::Needs::account) {
        request.account = accountOf(context.session);
        if (!request.account) {
            return CommandError{ErrorCode::signInRequired, "Sign in first"};
        }
    }
    return row->handler(parts_, request, reply);
}

std::optional<Account> Protocol::accountOf(SessionKey session) {
    if (session == SessionKey{}) {
        return std::nullopt;
    }
    std::optional<std::int64_t> const id = parts_.sessions.account(session);
    return id ? parts_.accounts.find(*id) : std::nullopt;
}

} // namespace tarn7d
