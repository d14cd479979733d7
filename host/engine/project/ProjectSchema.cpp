#include "host/engine/project/ProjectSchema.h"

#include <iterator>

#include <sqlite3.h>

#include "host/log/Log.h"

namespace engine {

namespace {

void makeTables(Database& database) {
    database.execute(R"(
CREATE TABLE schema_version (version INTEGER NOT NULL);
INSERT INTO schema_version VALUES (0);

CREATE TABLE edit (
    number INTEGER PRIMARY KEY AUTOINCREMENT,
    cookie TEXT NOT NULL UNIQUE,
    video_channels INTEGER NOT NULL,
    audio_channels INTEGER NOT NULL,
    duration REAL NOT NULL,
    rate INTEGER NOT NULL,
    source_medium INTEGER NOT NULL,
    source_duration REAL NOT NULL,
    frame_based INTEGER NOT NULL,
    transfer INTEGER NOT NULL,
    sequence_kind INTEGER NOT NULL,
    recording INTEGER NOT NULL,
    bit_rate INTEGER NOT NULL,
    preview TEXT NOT NULL,
    media TEXT NOT NULL,
    picture_measured INTEGER NOT NULL,
    picture_format INTEGER NOT NULL,
    picture_data_format INTEGER NOT NULL,
    picture_anamorphic INTEGER NOT NULL,
    picture_scan INTEGER NOT NULL,
    picture_aspect INTEGER NOT NULL,
    picture_has_scan_and_aspect INTEGER NOT NULL,
    picture_rate INTEGER NOT NULL,
    picture_has_rate INTEGER NOT NULL,
    picture_width INTEGER NOT NULL,
    picture_height INTEGER NOT NULL,
    picture_depth INTEGER NOT NULL,
    picture_bits_per_pixel INTEGER NOT NULL,
    picture_has_size INTEGER NOT NULL,
    picture_row_alignment INTEGER NOT NULL,
    picture_row_bytes INTEGER NOT NULL,
    picture_has_row_bytes INTEGER NOT NULL
);

CREATE TABLE log_attribute (
    edit INTEGER NOT NULL REFERENCES edit,
    position INTEGER NOT NULL,
    type INTEGER NOT NULL,
    key TEXT NOT NULL,
    value TEXT NOT NULL,
    PRIMARY KEY (edit, position)
) WITHOUT ROWID;

CREATE TABLE label (
    edit INTEGER NOT NULL REFERENCES edit,
    position INTEGER NOT NULL,
    frame INTEGER NOT NULL,
    scan INTEGER NOT NULL,
    rate INTEGER NOT NULL,
    counts_in_1001 INTEGER NOT NULL,
    source_offset INTEGER NOT NULL,
    PRIMARY KEY (edit, position)
) WITHOUT ROWID;

CREATE TABLE external_id (
    object TEXT NOT NULL,
    kind TEXT NOT NULL,
    id TEXT NOT NULL,
    serial INTEGER NOT NULL,
    PRIMARY KEY (object, kind)
) WITHOUT ROWID;
CREATE INDEX external_id_by_id ON external_id (kind, id, serial);
CREATE INDEX external_id_by_serial ON external_id (serial);

CREATE TABLE sequence (
    number INTEGER PRIMARY KEY AUTOINCREMENT,
    name TEXT NOT NULL UNIQUE,
    rate INTEGER NOT NULL
);

CREATE TABLE placement (
    number INTEGER PRIMARY KEY AUTOINCREMENT,
    sequence INTEGER NOT NULL REFERENCES sequence,
    position INTEGER NOT NULL,
    edit INTEGER NOT NULL REFERENCES edit,
    clip_in INTEGER NOT NULL,
    clip_out INTEGER NOT NULL,
    start INTEGER NOT NULL,
    length INTEGER NOT NULL,
    UNIQUE (sequence, position)
);
CREATE INDEX placement_by_edit ON placement (edit);
)");
}

void addStepsAndDifferences(Database& database) {
    database.execute(R"(
CREATE TABLE difference (
    edit INTEGER NOT NULL REFERENCES edit,
    position INTEGER NOT NULL,
    what INTEGER NOT NULL,
    promised TEXT NOT NULL,
    found TEXT NOT NULL,
    PRIMARY KEY (edit, position)
) WITHOUT ROWID;

CREATE TABLE step (
    number INTEGER PRIMARY KEY AUTOINCREMENT,
    kind INTEGER NOT NULL,
    words TEXT NOT NULL,
    edit INTEGER NOT NULL REFERENCES edit,
    placement INTEGER NOT NULL,
    previous_media TEXT NOT NULL,
    previous_bit_rate INTEGER NOT NULL
);

CREATE TABLE step_difference (
    step INTEGER NOT NULL REFERENCES step ON DELETE CASCADE,
    position INTEGER NOT NULL,
    what INTEGER NOT NULL,
    promised TEXT NOT NULL,
    found TEXT NOT NULL,
    PRIMARY KEY (step, position)
) WITHOUT ROWID;
)");
}

void addRedoAndRevision(Database& database) {
    // An empty sequence stands for a placement that is nowhere on the other side of its step: of the kinds
    // that were there before, only placing has to do with one, and before it there was none.
    database.execute(R"(
ALTER TABLE step RENAME COLUMN previous_media TO media;
ALTER TABLE step RENAME COLUMN previous_bit_rate TO bit_rate;
ALTER TABLE step ADD COLUMN undone INTEGER NOT NULL DEFAULT 0;
ALTER TABLE step ADD COLUMN sequence TEXT NOT NULL DEFAULT '';
ALTER TABLE step ADD COLUMN rate INTEGER NOT NULL DEFAULT 0;
ALTER TABLE step ADD COLUMN position INTEGER NOT NULL DEFAULT 0;
ALTER TABLE step ADD COLUMN clip_in INTEGER NOT NULL DEFAULT 0;
ALTER TABLE step ADD COLUMN clip_out INTEGER NOT NULL DEFAULT 0;
ALTER TABLE step ADD COLUMN length INTEGER NOT NULL DEFAULT 0;

CREATE TABLE revision (number INTEGER NOT NULL);
INSERT INTO revision VALUES (0);
)");
}

// Each brings a file from the version that is its index to the next.
constexpr void (*migrations[])(Database&) = {makeTables, addStepsAndDifferences, addRedoAndRevision};
constexpr auto known = static_cast<std::int64_t>(std::size(migrations));

bool hasRow(Database& database, char const* sql) {
    return database.prepare(sql).step();
}

// 0 for a file without tables.
std::int64_t versionOf(Database& database) {
    if (!hasRow(database, "SELECT 1 FROM sqlite_schema WHERE type = 'table' AND name = 'schema_version'")) {
        if (hasRow(database, "SELECT 1 FROM sqlite_schema")) {
            throw DatabaseError(SQLITE_NOTADB, "it is the database of something else");
        }
        return 0;
    }
    Statement version = database.prepare("SELECT version FROM schema_version");
    if (!version.step() || version.integer(0) < 1) {
        throw DatabaseError(SQLITE_NOTADB, "it does not say which version it is");
    }
    return version.integer(0);
}

void refuseLater(std::int64_t version) {
    if (version > known) {
        throw std::runtime_error("a later version of the program made it (version " +
                                 std::to_string(version) + ", this one knows " + std::to_string(known) + ")");
    }
}

} // namespace

void bringUpToDate(Database& database) {
    std::int64_t const found = versionOf(database);
    refuseLater(found);
    for (std::int64_t version = found; version < known; ++version) {
        Transaction transaction(database);
        migrations[version](database);
        database.prepare("UPDATE schema_version SET version = ?").bind(1, version + 1).run();
        transaction.commit();
    }
    if (found != 0 && found < known) {
        Log("The project was brought from version %lld to %lld", static_cast<long long>(found),
            static_cast<long long>(known));
    }
}

void requireUpToDate(Database& database) {
    std::int64_t const found = versionOf(database);
    refuseLater(found);
    if (found < known) {
        throw std::runtime_error("an earlier version of the program has it open in another process");
    }
}

} // namespace engine
