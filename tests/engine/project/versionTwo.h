// What version 2 of the project's tables has beyond version 1, and a history in it. Frozen: files like it
// exist.
#pragma once

namespace test {

// The edit was placed twice, and then relinked to a file that it plays still.
inline constexpr char const* fromVersionOneToTwo = R"(
UPDATE schema_version SET version = 2;
CREATE TABLE difference (
    edit INTEGER NOT NULL REFERENCES edit, position INTEGER NOT NULL, what INTEGER NOT NULL,
    promised TEXT NOT NULL, found TEXT NOT NULL, PRIMARY KEY (edit, position)
) WITHOUT ROWID;
CREATE TABLE step (
    number INTEGER PRIMARY KEY AUTOINCREMENT, kind INTEGER NOT NULL, words TEXT NOT NULL,
    edit INTEGER NOT NULL REFERENCES edit, placement INTEGER NOT NULL, previous_media TEXT NOT NULL,
    previous_bit_rate INTEGER NOT NULL
);
CREATE TABLE step_difference (
    step INTEGER NOT NULL REFERENCES step ON DELETE CASCADE, position INTEGER NOT NULL,
    what INTEGER NOT NULL, promised TEXT NOT NULL, found TEXT NOT NULL, PRIMARY KEY (step, position)
) WITHOUT ROWID;

INSERT INTO placement VALUES (8, 2, 1, 5, 0, 250, 50, 250);
UPDATE edit SET media = '/media/second.mov', bit_rate = 50000000;
INSERT INTO difference VALUES (5, 0, 1, '10.00 s', '8.00 s');
INSERT INTO step VALUES
    (11, 1, 'placed waves in Scene 1', 5, 7, '', 0),
    (12, 1, 'placed waves in Scene 1', 5, 8, '', 0),
    (14, 2, 'relinked waves', 5, 0, '/media/first.mov', 800000);
INSERT INTO step_difference VALUES (14, 0, 3, '2 channels', 'none');
)";

} // namespace test
