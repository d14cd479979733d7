// The sequences and their placements in the project's file.
//
// Errors are exceptions (DatabaseError). The caller holds a transaction.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/engine/project/PlacedPiece.h"
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
        Zq::FrameRate rate = Zq::FrameRate::unknown;
        std::int64_t size = 0; // placements
    };
    [[nodiscard]] std::optional<Head> head(std::string_view name);

    [[nodiscard]] std::optional<Project::Use> use(std::int64_t placement);
    [[nodiscard]] std::optional<PlacedPiece> piece(std::int64_t placement);
    // Puts the piece in its sequence, which is made where there is none of that name, before the one that
    // stands at its index, or at the end; those behind it move on. The placement gets that number, a new one
    // for 0. Gives the number.
    std::int64_t putIn(std::int64_t placement, PlacedPiece const& piece);
    // Takes the placement out; those behind it close up. The sequence stays, with nothing in it too.
    void takeOut(std::int64_t placement);
    // Removes the sequences that nothing is left in.
    void removeEmpty();

private:
    void shift(std::int64_t sequence, std::int64_t firstIndex, std::int64_t indices, std::int64_t frames);
    [[nodiscard]] std::int64_t findOrMake(std::string_view name, Zq::FrameRate rate);

    Database& database_;
};

} // namespace engine
