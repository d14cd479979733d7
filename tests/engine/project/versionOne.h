// A project's file as version 1 of its tables has it. Frozen: files like it exist.
#pragma once

namespace test {

inline constexpr char const* versionOne = R"(
CREATE TABLE schema_version (version INTEGER NOT NULL);
INSERT INTO schema_version VALUES (1);
CREATE TABLE edit (
    number INTEGER PRIMARY KEY AUTOINCREMENT, cookie TEXT NOT NULL UNIQUE,
    video_channels INTEGER NOT NULL, audio_channels INTEGER NOT NULL, duration REAL NOT NULL,
    rate INTEGER NOT NULL, source_medium INTEGER NOT NULL, source_duration REAL NOT NULL,
    frame_based INTEGER NOT NULL, transfer INTEGER NOT NULL, sequence_kind INTEGER NOT NULL,
    recording INTEGER NOT NULL, bit_rate INTEGER NOT NULL, preview TEXT NOT NULL, media TEXT NOT NULL,
    picture_measured INTEGER NOT NULL, picture_format INTEGER NOT NULL,
    picture_data_format INTEGER NOT NULL, picture_anamorphic INTEGER NOT NULL,
    picture_scan INTEGER NOT NULL, picture_aspect INTEGER NOT NULL,
    picture_has_scan_and_aspect INTEGER NOT NULL, picture_rate INTEGER NOT NULL,
    picture_has_rate INTEGER NOT NULL, picture_width INTEGER NOT NULL, picture_height INTEGER NOT NULL,
    picture_depth INTEGER NOT NULL, picture_bits_per_pixel INTEGER NOT NULL,
    picture_has_size INTEGER NOT NULL, picture_row_alignment INTEGER NOT NULL,
    picture_row_bytes INTEGER NOT NULL, picture_has_row_bytes INTEGER NOT NULL
);
CREATE TABLE log_attribute (
    edit INTEGER NOT NULL REFERENCES edit, position INTEGER NOT NULL, type INTEGER NOT NULL,
    key TEXT NOT NULL, value TEXT NOT NULL, PRIMARY KEY (edit, position)
) WITHOUT ROWID;
CREATE TABLE label (
    edit INTEGER NOT NULL REFERENCES edit, position INTEGER NOT NULL, frame INTEGER NOT NULL,
    scan INTEGER NOT NULL, rate INTEGER NOT NULL, counts_in_1001 INTEGER NOT NULL,
    source_offset INTEGER NOT NULL, PRIMARY KEY (edit, position)
) WITHOUT ROWID;
CREATE TABLE external_id (
    object TEXT NOT NULL, kind TEXT NOT NULL, id TEXT NOT NULL, serial INTEGER NOT NULL,
    PRIMARY KEY (object, kind)
) WITHOUT ROWID;
CREATE INDEX external_id_by_id ON external_id (kind, id, serial);
CREATE INDEX external_id_by_serial ON external_id (serial);
CREATE TABLE sequence (
    number INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL UNIQUE, rate INTEGER NOT NULL
);
CREATE TABLE placement (
    number INTEGER PRIMARY KEY AUTOINCREMENT, sequence INTEGER NOT NULL REFERENCES sequence,
    position INTEGER NOT NULL, edit INTEGER NOT NULL REFERENCES edit, clip_in INTEGER NOT NULL,
    clip_out INTEGER NOT NULL, start INTEGER NOT NULL, length INTEGER NOT NULL,
    UNIQUE (sequence, position)
);
CREATE INDEX placement_by_edit ON placement (edit);

INSERT INTO edit VALUES (
    5, 'c1000000000000000000000000000001010203', 1, 2, 10.0, 3, 2, 10.02, 1, 0, 0, 0, 800000,
    'Virtual:T7 https://host/p.mov', '', 0, 4, 4294967295, 0, 3, 2, 1, 3, 1, 1920, 1080, 8, 16, 1, 0, 0, 0
);
INSERT INTO log_attribute VALUES (5, 0, 1, '', 'waves'), (5, 1, 59, '', '12');
INSERT INTO label VALUES (5, 0, 0, 1, 3, 0, 0);
INSERT INTO external_id VALUES ('c1000000000000000000000000000001010203', 'T7', '4711', 9);
INSERT INTO sequence VALUES (2, 'Scene 1', 3);
INSERT INTO placement VALUES (7, 2, 0, 5, 25, 75, 0, 50);
)";

} // namespace test
