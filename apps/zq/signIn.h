// Signing in at the service of the chosen repository.
#pragma once

#include <cstdint>
#include <string>

#include "apps/zq/Reason.h"
#include "apps/zq/Session.h"

namespace zq {

struct SignIn {
    std::int32_t code = 0;        // the repository's result
    std::string user;             // who is signed in afterwards; empty: nobody
    std::string error;            // in words; empty when the sign-in succeeded
    Reason reason = Reason::none; // of an error that the code does not tell
};

// Asks for the password, or reads it from the next line of the input, and signs in. Fetches that run are
// ended first. Throws CommandError where there is no password or no connection, and where the repository has
// no accounts.
[[nodiscard]] SignIn signIn(Session& session, std::string const& user);
// The same with that password.
[[nodiscard]] SignIn signIn(Session& session, std::string const& user, std::string const& password);

// The same with a form as it was filled in: a value for each field by its name.
[[nodiscard]] SignIn signIn(Session& session, configb const& form);

} // namespace zq
