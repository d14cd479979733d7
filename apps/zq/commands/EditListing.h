// Edits of the project as text and as JSON.
#pragma once

#include <span>
#include <string>

#include "host/engine/project/Project.h"
#include "host/json/Builder.h"

namespace zq {

// All that is set on an edit, without the braces.
void addEditMembers(JSON::Builder& json, engine::EditRecord const& edit);
// The same for a person, a line each.
[[nodiscard]] std::string describeEdit(engine::EditRecord const& edit);

// As "the length is 12.48 s and not 12.5 s".
[[nodiscard]] std::string inWords(engine::MediaDifference const& difference);
void addDifferences(JSON::Builder& json, char const* key,
                    std::span<engine::MediaDifference const> differences);
void addIntegers(JSON::Builder& json, char const* key, std::span<std::int64_t const> numbers);

} // namespace zq
