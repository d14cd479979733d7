#include "apps/tarn7d/Protocol.h"

#include <algorithm>
#include <cstring>

#include "apps/tarn7d/Log.h"
#include "apps/tarn7d/PasswordHash.h"
#include "apps/tarn7d/RequestBody.h"
#include "apps/tarn7d/Text.h"
#include "host/engine/crypto/Digest.h"
#include "host/engine/json/SimdjsonReader.h"
#include "host/text/Unicode.h"

#include "ServiceValues.h"

namespace tarn7d {

namespace {

constexpr ErrorRow errors[] = {
    {ErrorCode::unknownCommand, "unknown command"},
    {ErrorCode::notAvailable, "not available"},
    {ErrorCode::badParameter, "bad parameter"},
    {ErrorCode::noSuchClip, "no such clip"},
    {ErrorCode::badRequest, "bad request"},
    {ErrorCode::badKey, "bad key"},
    {ErrorCode::badDigest, "bad digest"},
    {ErrorCode::wrongPassword, "wrong password"},
    {ErrorCode::unknownUser, "unknown user"},
    {ErrorCode::tooManyAttempts, "too many attempts"},
    {ErrorCode::signInRequired, "sign-in required"},
    {ErrorCode::internal, "internal"},
};

// A page of clips may ask for the data of each of its clips in one request.
constexpr std::size_t mostCommands = 2000;

// Bytes for the JSON reader, which works in wide steps and would copy a text without room behind it.
class PaddedBytes final : public iMemHolder {
public:
    explicit PaddedBytes(std::string_view bytes) : size_(bytes.size()) {
        storage_.reserve(bytes.size() + padding);
        storage_.append(bytes);
        storage_.append(padding, '\0');
    }
    [[nodiscard]] char const* getData() const noexcept override { return storage_.data(); }
    [[nodiscard]] std::size_t getSize() const noexcept override { return size_; }
    [[nodiscard]] std::size_t getPadding() const noexcept override { return padding; }

private:
    static constexpr std::size_t padding = 64;
    std::size_t size_;
    std::string storage_;
};

Zq::Ptr<JSON::Element> parse(std::string_view text) {
    engine::SimdjsonReader reader;
    return reader.parse(PaddedBytes(text));
}

void addText(JSON::Builder& builder, char const* key, std::string_view text) {
    builder.add(key, fromUTF8(text), true);
}

void addError(JSON::Builder& builder, CommandError const& error) {
    builder.add("e", true);
    builder.add("c", static_cast<std::int32_t>(error.code));
    addText(builder, "s", error.text);
}

std::string finish(JSON::Builder const& builder) {
    NarrowString const text = toUTF8(builder.getOutput());
    return std::string(text.view());
}

std::string refusal(CommandError const& error) {
    JSON::Builder answer;
    answer.startChild(nullptr);
    addError(answer, error);
    answer.endChild();
    return finish(answer);
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

std::string Protocol::answer(std::string_view body) {
    std::optional<RequestForm> const form = parseRequestBody(body);
    Zq::Ptr<JSON::Element> const envelope = form ? parse(form->envelope) : nullptr;
    if (envelope == nullptr) {
        return refusal({ErrorCode::badRequest, "The request is not a form with the field api"});
    }
    if (std::optional<CommandError> const error = checkEnvelope(*envelope)) {
        return refusal(*error);
    }
    std::string_view const text = envelope->getStringView("commands_json");
    Zq::Ptr<JSON::Element> const commands = parse(text);
    if (commands == nullptr || !isCommandList(text, *commands)) {
        return refusal({ErrorCode::badRequest, "The commands are not a list of objects, or too many"});
    }
    JSON::Builder answer;
    answer.startChild(nullptr);
    answer.add("e", false);
    addText(answer, "s", "");
    answer.startArray("commands");
    answerCommands(*commands, form->session, answer);
    answer.endArray();
    answer.endChild();
    return finish(answer);
}

void Protocol::answerCommands(JSON::Element const& commands, SessionKey session, JSON::Builder& answer) {
    for (JSON::ChildMember const& child : commands.children()) {
        answer.startChild(nullptr);
        std::optional<CommandError> error;
        try {
            error = answerCommand(*child.element, session, answer);
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

std::optional<CommandError> Protocol::answerCommand(JSON::Element const& command, SessionKey session,
                                                    JSON::Builder& reply) {
    std::string_view const word = command.getStringView("command");
    std::span<CommandRow const> const table = commandTable();
    auto const row = std::find_if(table.begin(), table.end(),
                                  [word](CommandRow const& known) { return known.word == word; });
    if (row == table.end()) {
        constexpr std::size_t longestWord = 64;
        return CommandError{ErrorCode::unknownCommand, "Unknown command: " + cleanText(word, longestWord)};
    }
    if (row->handler == nullptr) {
        return CommandError{ErrorCode::notAvailable,
                            "The command " + std::string(word) + " is not available on this service yet"};
    }
    CommandRequest const request{command, session, accountOf(session)};
    if (row->needs == CommandRow::Needs::account && !request.account) {
        return CommandError{ErrorCode::signInRequired, "Sign in first"};
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
