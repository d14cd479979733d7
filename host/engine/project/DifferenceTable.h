// Lists of differences in the project's file: those of an edit, and those that a step of undoing brings back.
//
// Errors are exceptions (DatabaseError).
#pragma once

#include <vector>

#include "host/engine/project/EditRecord.h"
#include "host/engine/storage/Database.h"

namespace engine {

enum class DifferencesOf { edit, step };

// Thread: one at a time.
[[nodiscard]] std::vector<MediaDifference> loadDifferences(Database& database, DifferencesOf owner,
                                                           std::int64_t number);
// Replaces the owner's list.
void saveDifferences(Database& database, DifferencesOf owner, std::int64_t number,
                     std::vector<MediaDifference> const& differences);

} // namespace engine
