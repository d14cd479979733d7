// The steps that can be taken back, and those that were and can be done again, in the project's file.
//
// A step holds the other side of its change: what was before it, and once it is taken back, what was after
// it. Going either way exchanges that with what the project has.
//
// Errors are exceptions (DatabaseError). The caller holds a transaction.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/engine/project/EditRecord.h"
#include "host/engine/project/PlacedPiece.h"
#include "host/engine/project/StepKind.h"
#include "host/engine/storage/Database.h"

namespace engine {

struct Step {
    using Kind = StepKind;

    std::int64_t number = 0; // given by the table
    Kind kind = Kind::placing;
    std::string words; // what was done, for a person
    Cookie edit;
    // Of a relinking: what the edit plays on the other side.
    WideString media;
    std::int64_t bitRate = 0;
    std::vector<MediaDifference> differences;
    // Of all others: the placement, and how it stands on the other side; nothing where it does not.
    std::int64_t placement = 0;
    std::optional<PlacedPiece> piece;
};

// Thread: one at a time.
class StepTable {
public:
    // Older steps are forgotten.
    static constexpr int most = 1000;

    explicit StepTable(Database& database) : database_(database) {}

    // Adds a step that was just done: what was taken back before it cannot be done again. `edit` is the
    // number of step.edit.
    void add(Step const& step, std::int64_t edit);
    // What to take back next, and what to do again next.
    [[nodiscard]] std::optional<Step> lastDone();
    [[nodiscard]] std::optional<Step> nextUndone();
    // The same in words alone; empty where there is none.
    [[nodiscard]] std::string wordsOfLastDone();
    [[nodiscard]] std::string wordsOfNextUndone();
    // Keeps the other side of a step of the table, and whether it is taken back.
    void save(Step const& step, bool undone);

private:
    [[nodiscard]] std::optional<Step> find(std::string_view condition);
    [[nodiscard]] std::string words(std::string_view condition);

    Database& database_;
};

} // namespace engine
