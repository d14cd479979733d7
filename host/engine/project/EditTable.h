// The edits in the project's file, with their attributes, labels and differences.
//
// Errors are exceptions (DatabaseError). Several statements make one reading or writing: the caller holds a
// transaction.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/engine/project/EditRecord.h"
#include "host/engine/storage/Database.h"

namespace engine {

// Thread: one at a time.
class EditTable {
public:
    explicit EditTable(Database& database) : database_(database) {}

    // In the order in which they came to be; without external ids.
    [[nodiscard]] std::vector<EditRecord> all();
    [[nodiscard]] std::optional<EditRecord> find(Cookie const& cookie);
    // Those of them that are there, with as many statements for many as for one.
    [[nodiscard]] std::vector<EditRecord> find(std::set<Cookie> const& cookies);
    // The edit's number in the file; nothing where it is not there.
    [[nodiscard]] std::optional<std::int64_t> numberOf(Cookie const& cookie);
    // Adds the edit or replaces what there is of it, all but its external ids, and gives its number.
    std::int64_t save(EditRecord const& record);

private:
    // All, or those with a cookie in that JSON list.
    [[nodiscard]] std::vector<EditRecord> load(std::optional<std::string> const& cookies);
    void saveLists(std::int64_t number, EditRecord const& record);

    Database& database_;
};

} // namespace engine
