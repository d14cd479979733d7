// The open file of a project: its tables, brought up to date and checked.
//
// Errors are exceptions: DatabaseError, damage among them, and std::runtime_error with a text for a person.
#pragma once

#include <filesystem>

#include <sys/types.h>

#include "host/engine/project/EditTable.h"
#include "host/engine/project/ExternalIdTable.h"
#include "host/engine/project/SequenceTable.h"
#include "host/engine/project/StepTable.h"
#include "host/engine/storage/Database.h"

namespace engine {

// Thread: one at a time.
class ProjectTables {
public:
    enum class Access {
        write, // makes the file where there is none; for the holder of the writer's lock
        read,  // changes nothing
    };

    ProjectTables(std::filesystem::path const& file, Access access);
    ProjectTables(ProjectTables const&) = delete;
    ProjectTables& operator=(ProjectTables const&) = delete;

    // False when the file was removed or replaced since: what is written would be lost.
    [[nodiscard]] bool isInPlace() const;

    // The number that rises with each transaction that changes the project; 0 for a new one.
    [[nodiscard]] std::int64_t revision();
    void raiseRevision();

    Database database;
    EditTable edits{database};
    ExternalIdTable ids{database};
    SequenceTable sequences{database};
    StepTable steps{database};

private:
    std::filesystem::path const file_;
    dev_t device_ = 0;
    ino_t inode_ = 0;
};

// One view of the file for several statements that read.
class ReadTransaction {
public:
    explicit ReadTransaction(Database& database);
    ~ReadTransaction();
    ReadTransaction(ReadTransaction const&) = delete;
    ReadTransaction& operator=(ReadTransaction const&) = delete;

private:
    Database& database_;
};

} // namespace engine
