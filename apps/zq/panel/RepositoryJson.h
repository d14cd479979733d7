// How a repository presents itself, as the panel's JSON: description, columns, sign-in forms, search options.
// Thread: the repository's.
#pragma once

#include <functional>
#include <string>

#include "apps/zq/Session.h"
#include "apps/zq/panel/GivenLinks.h"
#include "host/json/Builder.h"
#include "repository/SearchRecords.h"

namespace zq::panel {

// A repository; its links are given from then on.
[[nodiscard]] std::string repositoryJson(Session& session, GivenLinks& links);

// The fields of a sign-in form, which is JSON of the repository's own. What is no form has no fields.
void addFields(JSON::Builder& json, char const* key, WideString const& form, GivenLinks& links);

// A parameter that the repository had no memory for is left out, as everywhere.
[[nodiscard]] LightweightVector<SearchOptionGroup> readOptions(Session& session);
// Whether results depend on the boolean at that place, as far as is known.
using IsFilter =
    std::function<bool(std::size_t group, std::size_t index, GenericParam::iParam const& option)>;
void addOptions(JSON::Builder& json, char const* key, LightweightVector<SearchOptionGroup> const& groups,
                IsFilter const& isFilter);

} // namespace zq::panel
