// The tables of a project's file, version by version.
//
// Errors are exceptions: DatabaseError, damage among them, and std::runtime_error with a text for a person.
#pragma once

#include "host/engine/storage/Database.h"

namespace engine {

// Makes the tables in an empty file, and brings those of an earlier version up to date, each version in a
// transaction of its own. Throws for a file of a later version, which stays as it is, and for a database that
// holds something else, which counts as damage.
void bringUpToDate(Database& database);

// Throws unless the tables are those of this version.
void requireUpToDate(Database& database);

} // namespace engine
