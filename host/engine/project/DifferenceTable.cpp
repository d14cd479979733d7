#include "host/engine/project/DifferenceTable.h"

#include "host/engine/project/Row.h"

namespace engine {

namespace {

struct Sql {
    char const* load;
    char const* remove;
    char const* add;
};

constexpr Sql ofEdit{"SELECT what, promised, found FROM difference WHERE edit = ? ORDER BY position",
                     "DELETE FROM difference WHERE edit = ?",
                     "INSERT INTO difference VALUES (?, ?, ?, ?, ?)"};
constexpr Sql ofStep{"SELECT what, promised, found FROM step_difference WHERE step = ? ORDER BY position",
                     "DELETE FROM step_difference WHERE step = ?",
                     "INSERT INTO step_difference VALUES (?, ?, ?, ?, ?)"};

Sql const& sqlOf(DifferencesOf owner) {
    return owner == DifferencesOf::edit ? ofEdit : ofStep;
}

} // namespace

std::vector<MediaDifference> loadDifferences(Database& database, DifferencesOf owner, std::int64_t number) {
    Statement rows = database.prepare(sqlOf(owner).load);
    rows.bind(1, number);
    std::vector<MediaDifference> differences;
    while (rows.step()) {
        MediaDifference& difference = differences.emplace_back();
        RowReader(rows) >> difference.what >> difference.promised >> difference.found;
    }
    return differences;
}

void saveDifferences(Database& database, DifferencesOf owner, std::int64_t number,
                     std::vector<MediaDifference> const& differences) {
    database.prepare(sqlOf(owner).remove).bind(1, number).run();
    Statement add = database.prepare(sqlOf(owner).add);
    std::int64_t position = 0;
    for (MediaDifference const& difference : differences) {
        RowWriter(add) << number << position++ << difference.what << std::string_view(difference.promised)
                       << std::string_view(difference.found);
        add.run();
    }
}

} // namespace engine
