// The form of a sign-in with a name and a password.
#pragma once

#include "host/preferences/configb.h"

// JSON: an object holding an array of two fields, "username" and "password". The name comes filled in with
// the value of the preference. Thread: any.
[[nodiscard]] ZQ_API WideString makeSignInForm(char const* userPreference);

// What was typed into the field; empty where the form has no such field. Thread: any.
[[nodiscard]] ZQ_API WideString typedValue(configb const& form, char const* key);
