// The table of the commands, and the commands that open and close a session.
#include "apps/tarn7d/Commands.h"

namespace tarn7d {

namespace {

using Needs = CommandRow::Needs;

constexpr CommandRow commands[] = {
    {"login", login, Needs::nothing},
    {"logout", logout, Needs::nothing},
    {"search", search, Needs::nothing},
    {"get_clip_data", getClipData, Needs::nothing},
    {"get_cart_formatted", getCart, Needs::account},
    {"modify_active_cart", modifyCart, Needs::account},
    {"purchase_using_cash", buyWithCash, Needs::account},
    {"purchase_using_credits", buyWithCredits, Needs::account},
    {"get_downloads_formatted", listOwned, Needs::account},
    {"download", download, Needs::account},
};

} // namespace

std::span<CommandRow const> commandTable() {
    return commands;
}

void addSuccess(JSON::Builder& reply) {
    reply.add("e", false);
    addText(reply, "s", "");
}

Reply login(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply) {
    std::string_view const name = request.parameters.getStringView("username");
    std::string_view const password = request.parameters.getStringView("password");
    if (auto const wait = parts.throttle.waitFor(name); wait.count() > 0) {
        return CommandError{ErrorCode::tooManyAttempts,
                            "Too many attempts. Try again in " + std::to_string(wait.count()) + " s"};
    }
    Accounts::CheckResult const result = parts.accounts.check(name, password);
    if (result.check != Accounts::Check::good) {
        parts.throttle.noteFailure(name);
        return result.check == Accounts::Check::unknownName
                   ? CommandError{ErrorCode::unknownUser, "Failed to find user"}
                   : CommandError{ErrorCode::wrongPassword, "Wrong password"};
    }
    parts.throttle.noteSuccess(name);
    SessionKey const session = parts.sessions.open(result.account.id);
    addSuccess(reply);
    reply.add("cx", session.context);
    reply.add("cm", session.marker);
    addInteger(reply, "credits", result.account.credits);
    return std::nullopt;
}

Reply logout(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply) {
    parts.sessions.close(request.session);
    addSuccess(reply);
    return std::nullopt;
}

} // namespace tarn7d
