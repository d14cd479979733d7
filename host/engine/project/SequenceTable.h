// The sequences and their placements in the project's file.
//
// Errors are exceptions (DatabaseError). The caller holds a transaction.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/engine/project/Project.h"
#include "host/engine/storage/Database.h"

namespace engine {

// Thread: one at a time.
class SequenceTable {
public:
    explicit SequenceTable(Database& database) : database_(database) {}

    [[nodiscard]] std::vector<std::string> names();
    [[nodiscard]] std::optional<Sequence> find(std::string_view name);
    // Every placement of the edit, in the order in which they were made.
    [[nodiscard]] std::vector<Project::Use> usesOf(Cookie const& edit);

    // A sequence as placements are added to it.
    struct Head {
        std::int64_t number = 0;
        Zq::FrameRate rate = Zq::FrameRate::unknown;
    };
    // The sequence of that name; made with the rate where there is none.
    [[nodiscard]] Head findOrMake(std::string_view name, Zq::FrameRate rate);
    // Adds the placement at the end, and gives it its number and its start.
    void append(Head const& sequence, std::int64_t edit, Placement& placement);
    // Removes the placement, the last of its sequence, and the sequence when nothing is left in it.
    void remove(std::int64_t placement);

private:
    Database& database_;
};

} // namespace engine
