// The steps that can be taken back, in the project's file.
//
// Errors are exceptions (DatabaseError). The caller holds a transaction.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/engine/project/EditRecord.h"
#include "host/engine/storage/Database.h"

namespace engine {

struct Step {
    enum class Kind { placing = 1, relinking = 2 };

    std::int64_t number = 0; // given by the table
    Kind kind = Kind::placing;
    std::string words; // what was done, for a person
    Cookie edit;
    std::int64_t placement = 0; // that was made
    // What the edit had before it was relinked.
    WideString previousMedia;
    std::int64_t previousBitRate = 0;
    std::vector<MediaDifference> previousDifferences;
};

// Thread: one at a time.
class StepTable {
public:
    explicit StepTable(Database& database) : database_(database) {}

    // `edit` is the number of step.edit.
    void add(Step const& step, std::int64_t edit);
    [[nodiscard]] std::optional<Step> last();
    void remove(std::int64_t number);

private:
    Database& database_;
};

} // namespace engine
