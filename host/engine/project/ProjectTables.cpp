#include "host/engine/project/ProjectTables.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include "host/engine/project/ProjectSchema.h"

namespace engine {

namespace {

Database openChecked(std::filesystem::path const& file, ProjectTables::Access access) {
    bool const reads = access == ProjectTables::Access::read;
    std::error_code error;
    if (reads && !std::filesystem::is_regular_file(file, error)) {
        throw std::runtime_error("its file is not there");
    }
    Database database(file, Database::Sync::full);
    if (!database.isSound()) {
        throw DatabaseError(SQLITE_CORRUPT, "the check of the file failed");
    }
    if (reads) {
        requireUpToDate(database);
        database.execute("PRAGMA query_only=ON");
    } else {
        bringUpToDate(database);
    }
    return database;
}

} // namespace

ProjectTables::ProjectTables(std::filesystem::path const& file, Access access)
    : database(openChecked(file, access)), file_(file) {
    struct stat status {};
    if (::stat(file_.c_str(), &status) == 0) {
        device_ = status.st_dev;
        inode_ = status.st_ino;
    }
}

bool ProjectTables::isInPlace() const {
    struct stat status {};
    return ::stat(file_.c_str(), &status) == 0 && status.st_dev == device_ && status.st_ino == inode_;
}

std::int64_t ProjectTables::revision() {
    Statement row = database.prepare("SELECT number FROM revision");
    return row.step() ? row.integer(0) : 0;
}

void ProjectTables::raiseRevision() {
    database.execute("UPDATE revision SET number = number + 1");
}

ReadTransaction::ReadTransaction(Database& database) : database_(database) {
    database_.execute("BEGIN");
}

ReadTransaction::~ReadTransaction() {
    try {
        database_.execute("COMMIT");
    } catch (DatabaseError const&) {
        // Nothing was changed: there is nothing to keep.
    }
}

} // namespace engine
