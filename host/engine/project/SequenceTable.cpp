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

SequenceTable::Head SequenceTable::findOrMake(std::string_view name, Zq::FrameRate rate) {
    Statement row = database_.prepare("SELECT number, rate FROM sequence WHERE name = ?");
    row.bind(1, name);
    Head head{0, rate};
    if (row.step()) {
        RowReader(row) >> head.number >> head.rate;
        return head;
    }
    Statement make = database_.prepare("INSERT INTO sequence (name, rate) VALUES (?, ?)");
    RowWriter(make) << name << rate;
    make.run();
    head.number = database_.lastInsertId();
    return head;
}

void SequenceTable::append(Head const& sequence, std::int64_t edit, Placement& placement) {
    Statement end = database_.prepare("SELECT position + 1, start + length FROM placement "
                                      "WHERE sequence = ? ORDER BY position DESC LIMIT 1");
    end.bind(1, sequence.number);
    std::int64_t position = 0;
    placement.start = 0;
    if (end.step()) {
        RowReader(end) >> position >> placement.start;
    }
    Statement add = database_.prepare("INSERT INTO placement (sequence, position, edit, clip_in, clip_out, "
                                      "start, length) VALUES (?, ?, ?, ?, ?, ?, ?)");
    RowWriter(add) << sequence.number << position << edit << placement.in << placement.out << placement.start
                   << placement.length;
    add.run();
    placement.number = database_.lastInsertId();
}

void SequenceTable::remove(std::int64_t placement) {
    database_.prepare("DELETE FROM placement WHERE number = ?").bind(1, placement).run();
    database_.execute("DELETE FROM sequence WHERE number NOT IN (SELECT sequence FROM placement)");
}

} // namespace engine
