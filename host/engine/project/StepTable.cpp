#include "host/engine/project/StepTable.h"

#include "host/engine/project/DifferenceTable.h"
#include "host/engine/project/Row.h"

namespace engine {

void StepTable::add(Step const& step, std::int64_t edit) {
    Statement add = database_.prepare("INSERT INTO step (kind, words, edit, placement, previous_media, "
                                      "previous_bit_rate) VALUES (?, ?, ?, ?, ?, ?)");
    RowWriter(add) << step.kind << std::string_view(step.words) << edit << step.placement
                   << step.previousMedia << step.previousBitRate;
    add.run();
    saveDifferences(database_, DifferencesOf::step, database_.lastInsertId(), step.previousDifferences);
}

std::optional<Step> StepTable::last() {
    Statement row = database_.prepare(
        "SELECT step.number, kind, words, cookie, placement, previous_media, previous_bit_rate FROM step "
        "JOIN edit ON edit.number = step.edit ORDER BY step.number DESC LIMIT 1");
    if (!row.step()) {
        return std::nullopt;
    }
    Step step;
    RowReader(row) >> step.number >> step.kind >> step.words >> step.edit >> step.placement >>
        step.previousMedia >> step.previousBitRate;
    step.previousDifferences = loadDifferences(database_, DifferencesOf::step, step.number);
    return step;
}

void StepTable::remove(std::int64_t number) {
    database_.prepare("DELETE FROM step WHERE number = ?").bind(1, number).run();
}

} // namespace engine
