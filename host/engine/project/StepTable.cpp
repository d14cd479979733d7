#include "host/engine/project/StepTable.h"

#include "host/engine/project/DifferenceTable.h"
#include "host/engine/project/Row.h"

namespace engine {

namespace {

// Steps are numbered in the order in which they were done, and taken back from the last on.
constexpr std::string_view lastDoneSql = " WHERE undone = 0 ORDER BY step.number DESC LIMIT 1";
constexpr std::string_view nextUndoneSql = " WHERE undone = 1 ORDER BY step.number LIMIT 1";

// The piece's edit is that of the step.
RowWriter& operator<<(RowWriter& row, std::optional<PlacedPiece> const& piece) {
    PlacedPiece const written = piece.value_or(PlacedPiece());
    return row << std::string_view(written.sequence) << written.rate << written.index << written.in
               << written.out << written.length;
}

} // namespace

void StepTable::add(Step const& step, std::int64_t edit) {
    database_.execute("DELETE FROM step WHERE undone = 1");
    Statement add = database_.prepare("INSERT INTO step (kind, words, edit, media, bit_rate, placement, "
                                      "sequence, rate, position, clip_in, clip_out, length) "
                                      "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    RowWriter row(add);
    row << step.kind << std::string_view(step.words) << edit << step.media << step.bitRate << step.placement
        << step.piece;
    add.run();
    saveDifferences(database_, DifferencesOf::step, database_.lastInsertId(), step.differences);
    database_
        .prepare("DELETE FROM step WHERE number <= "
                 "(SELECT number FROM step ORDER BY number DESC LIMIT 1 OFFSET ?)")
        .bind(1, most)
        .run();
}

std::optional<Step> StepTable::lastDone() {
    return find(lastDoneSql);
}

std::optional<Step> StepTable::nextUndone() {
    return find(nextUndoneSql);
}

std::string StepTable::wordsOfLastDone() {
    return words(lastDoneSql);
}

std::string StepTable::wordsOfNextUndone() {
    return words(nextUndoneSql);
}

std::optional<Step> StepTable::find(std::string_view condition) {
    Statement row = database_.prepare(
        std::string(
            "SELECT step.number, kind, words, cookie, step.media, step.bit_rate, placement, edit.number, "
            "sequence, step.rate, position, clip_in, clip_out, length FROM step "
            "JOIN edit ON edit.number = step.edit") +
        std::string(condition));
    if (!row.step()) {
        return std::nullopt;
    }
    Step step;
    PlacedPiece piece;
    RowReader(row) >> step.number >> step.kind >> step.words >> step.edit >> step.media >> step.bitRate >>
        step.placement >> piece.edit >> piece.sequence >> piece.rate >> piece.index >> piece.in >>
        piece.out >> piece.length;
    if (!piece.sequence.empty()) {
        step.piece = std::move(piece);
    }
    step.differences = loadDifferences(database_, DifferencesOf::step, step.number);
    return step;
}

std::string StepTable::words(std::string_view condition) {
    Statement row = database_.prepare("SELECT words FROM step" + std::string(condition));
    return row.step() ? std::string(row.text(0)) : std::string();
}

void StepTable::save(Step const& step, bool undone) {
    Statement save =
        database_.prepare("UPDATE step SET undone = ?, media = ?, bit_rate = ?, sequence = ?, rate = ?, "
                          "position = ?, clip_in = ?, clip_out = ?, length = ? WHERE number = ?");
    RowWriter row(save);
    row << undone << step.media << step.bitRate << step.piece << step.number;
    save.run();
    saveDifferences(database_, DifferencesOf::step, step.number, step.differences);
}

} // namespace engine
