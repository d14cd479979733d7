#include "host/engine/project/SequenceTable.h"

#include "host/engine/project/Row.h"

namespace engine {

namespace {

RowReader& operator>>(RowReader& row, Placement& placement) {
    return row >> placement.number >> placement.edit >> placement.in >> placement.out >> placement.start >>
           placement.length;
}

} // namespace

std::vector<std::string> SequenceTable::names() {
    Statement rows = database_.prepare("SELECT name FROM sequence ORDER BY name");
    std::vector<std::string> names;
    while (rows.step()) {
        names.emplace_back(rows.text(0));
    }
    return names;
}

std::optional<Sequence> SequenceTable::find(std::string_view name) {
    Statement head = database_.prepare("SELECT number, name, rate FROM sequence WHERE name = ?");
    head.bind(1, name);
    if (!head.step()) {
        return std::nullopt;
    }
    std::int64_t number = 0;
    Sequence sequence;
    RowReader(head) >> number >> sequence.name >> sequence.rate;
    Statement rows = database_.prepare(
        "SELECT placement.number, edit.cookie, clip_in, clip_out, start, length FROM placement "
        "JOIN edit ON edit.number = placement.edit WHERE sequence = ? ORDER BY position");
    rows.bind(1, number);
    while (rows.step()) {
        RowReader row(rows);
        row >> sequence.placements.emplace_back();
    }
    return sequence;
}

std::vector<Project::Use> SequenceTable::usesOf(Cookie const& edit) {
    Statement rows = database_.prepare(
        "SELECT sequence.name, placement.number, edit.cookie, clip_in, clip_out, start, length FROM edit "
        "JOIN placement ON placement.edit = edit.number JOIN sequence ON sequence.number = sequence "
        "WHERE edit.cookie = ? ORDER BY placement.number");
    RowWriter(rows) << edit;
    std::vector<Project::Use> uses;
    while (rows.step()) {
        Project::Use& use = uses.emplace_back();
        RowReader row(rows);
        row >> use.sequence >> use.placement;
    }
    return uses;
}

std::optional<SequenceTable::Head> SequenceTable::head(std::string_view name) {
    Statement row =
        database_.prepare("SELECT rate, (SELECT count(*) FROM placement WHERE sequence = sequence.number) "
                          "FROM sequence WHERE name = ?");
    row.bind(1, name);
    if (!row.step()) {
        return std::nullopt;
    }
    Head head;
    RowReader(row) >> head.rate >> head.size;
    return head;
}

std::optional<Project::Use> SequenceTable::use(std::int64_t placement) {
    Statement rows = database_.prepare(
        "SELECT sequence.name, placement.number, edit.cookie, clip_in, clip_out, start, length FROM "
        "placement "
        "JOIN edit ON edit.number = placement.edit JOIN sequence ON sequence.number = sequence "
        "WHERE placement.number = ?");
    rows.bind(1, placement);
    if (!rows.step()) {
        return std::nullopt;
    }
    Project::Use use;
    RowReader row(rows);
    row >> use.sequence >> use.placement;
    return use;
}

std::optional<PlacedPiece> SequenceTable::piece(std::int64_t placement) {
    Statement row = database_.prepare(
        "SELECT sequence.name, sequence.rate, edit, position, clip_in, clip_out, length FROM placement "
        "JOIN sequence ON sequence.number = sequence WHERE placement.number = ?");
    row.bind(1, placement);
    if (!row.step()) {
        return std::nullopt;
    }
    PlacedPiece piece;
    RowReader(row) >> piece.sequence >> piece.rate >> piece.edit >> piece.index >> piece.in >> piece.out >>
        piece.length;
    return piece;
}

std::int64_t SequenceTable::putIn(std::int64_t placement, PlacedPiece const& piece) {
    std::int64_t const sequence = findOrMake(piece.sequence, piece.rate);
    Statement before = database_.prepare(
        "SELECT count(*), coalesce(sum(length), 0) FROM placement WHERE sequence = ? AND position < ?");
    RowWriter(before) << sequence << piece.index;
    std::int64_t index = 0;
    std::int64_t start = 0;
    if (before.step()) {
        RowReader(before) >> index >> start;
    }
    shift(sequence, index, 1, piece.length);
    Statement add = database_.prepare("INSERT INTO placement (number, sequence, position, edit, clip_in, "
                                      "clip_out, start, length) VALUES (nullif(?, 0), ?, ?, ?, ?, ?, ?, ?)");
    RowWriter(add) << placement << sequence << index << piece.edit << piece.in << piece.out << start
                   << piece.length;
    add.run();
    return database_.lastInsertId();
}

void SequenceTable::takeOut(std::int64_t placement) {
    Statement row = database_.prepare("SELECT sequence, position, length FROM placement WHERE number = ?");
    row.bind(1, placement);
    if (!row.step()) {
        return;
    }
    std::int64_t sequence = 0;
    std::int64_t index = 0;
    std::int64_t length = 0;
    RowReader(row) >> sequence >> index >> length;
    row.reset();
    database_.prepare("DELETE FROM placement WHERE number = ?").bind(1, placement).run();
    shift(sequence, index + 1, -1, -length);
}

void SequenceTable::removeEmpty() {
    database_.execute("DELETE FROM sequence WHERE number NOT IN (SELECT sequence FROM placement)");
}

// By way of negative positions: no two placements may stand at one position, not even between two rows of an
// update.
void SequenceTable::shift(std::int64_t sequence, std::int64_t firstIndex, std::int64_t indices,
                          std::int64_t frames) {
    Statement aside = database_.prepare(
        "UPDATE placement SET position = -1 - position WHERE sequence = ? AND position >= ?");
    RowWriter(aside) << sequence << firstIndex;
    aside.run();
    Statement back = database_.prepare("UPDATE placement SET position = -1 - position + ?, start = start + ? "
                                       "WHERE sequence = ? AND position < 0");
    RowWriter(back) << indices << frames << sequence;
    back.run();
}

std::int64_t SequenceTable::findOrMake(std::string_view name, Zq::FrameRate rate) {
    Statement row = database_.prepare("SELECT number FROM sequence WHERE name = ?");
    row.bind(1, name);
    if (row.step()) {
        return row.integer(0);
    }
    Statement make = database_.prepare("INSERT INTO sequence (name, rate) VALUES (?, ?)");
    RowWriter(make) << name << rate;
    make.run();
    return database_.lastInsertId();
}

} // namespace engine
