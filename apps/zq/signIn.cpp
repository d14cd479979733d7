#include "apps/zq/signIn.h"

#include <optional>

#include "apps/zq/Reply.h"
#include "apps/zq/Text.h"

namespace zq {

namespace {

// Result codes of a sign-in.
constexpr std::int32_t signedIn = 0;
constexpr std::int32_t unknownUser = 2;
constexpr std::int32_t wrongPassword = 7;

std::string inWords(std::int32_t code, ServiceWatch const& watch) {
    switch (code) {
    case signedIn:
        return {};
    case unknownUser:
        return "the service knows no user of that name";
    case wrongPassword:
        return "the password is wrong";
    default:
        return watch.failure().value_or("the service refused the sign-in");
    }
}

} // namespace

SignIn signIn(Session& session, std::string const& user) {
    if (!session.needsSignIn()) {
        throw CommandError(utf8(session.repository().getName()) + " has no accounts: nobody signs in");
    }
    static_cast<void>(session.connected());
    std::optional<std::string> const password = session.input().readSecret("password: ");
    if (!password) {
        throw CommandError("the next line of the standard input should be the password");
    }
    return signIn(session, user, *password);
}

SignIn signIn(Session& session, std::string const& user, std::string const& password) {
    configb form;
    form.set("username", toUTF8(wide(user)));
    form.set("password", toUTF8(wide(password)));
    return signIn(session, form);
}

SignIn signIn(Session& session, configb const& form) {
    iMediaFileRepository& repository = session.connected();
    session.endFetches();
    session.forgetCredits();
    ServiceWatch const watch = session.watch();
    SignIn result;
    result.code = repository.login(form);
    result.error = inWords(result.code, watch);
    bool const isTold = result.code == signedIn || result.code == unknownUser || result.code == wrongPassword;
    result.reason = isTold || !watch.failure() ? Reason::none : reasonOf(watch);
    result.user = session.user();
    return result;
}

} // namespace zq
