#include "host/engine/storage/Database.h"

#include <sqlite3.h>

namespace engine {

namespace {

[[noreturn]] void fail(sqlite3* database, int code) {
    char const* const text = database != nullptr ? sqlite3_errmsg(database) : sqlite3_errstr(code);
    throw DatabaseError(code & 0xff, text);
}

constexpr int longestWait_ms = 5000;

template <class Attempt>
int repeatWhileBusy(Attempt const& attempt) {
    constexpr int step_ms = 5;
    int code = attempt();
    for (int waited_ms = 0; (code & 0xff) == SQLITE_BUSY && waited_ms < longestWait_ms;
         waited_ms += step_ms) {
        sqlite3_sleep(step_ms);
        code = attempt();
    }
    return code;
}

} // namespace

bool DatabaseError::isDamage() const noexcept {
    return code_ == SQLITE_CORRUPT || code_ == SQLITE_NOTADB;
}

void Statement::Finalize::operator()(sqlite3_stmt* statement) const noexcept {
    sqlite3_finalize(statement);
}

Statement::Statement(sqlite3* database, std::string_view sql) {
    sqlite3_stmt* statement = nullptr;
    int const code =
        sqlite3_prepare_v2(database, sql.data(), static_cast<int>(sql.size()), &statement, nullptr);
    if (code != SQLITE_OK) {
        fail(database, code);
    }
    statement_.reset(statement);
}

void Statement::check(int code) const {
    if (code != SQLITE_OK) {
        fail(sqlite3_db_handle(statement_.get()), code);
    }
}

Statement& Statement::bind(int position, std::int64_t value) {
    check(sqlite3_bind_int64(statement_.get(), position, value));
    return *this;
}

Statement& Statement::bind(int position, double value) {
    check(sqlite3_bind_double(statement_.get(), position, value));
    return *this;
}

Statement& Statement::bind(int position, std::string_view text) {
    // An empty view may have no pointer, which SQLite would take as NULL.
    char const* const data = text.data() != nullptr ? text.data() : "";
    check(sqlite3_bind_text64(statement_.get(), position, data, text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
    return *this;
}

Statement& Statement::bind(int position, std::nullptr_t) {
    check(sqlite3_bind_null(statement_.get(), position));
    return *this;
}

bool Statement::step() {
    int const code = sqlite3_step(statement_.get());
    if (code == SQLITE_ROW) {
        return true;
    }
    if (code != SQLITE_DONE) {
        fail(sqlite3_db_handle(statement_.get()), code);
    }
    return false;
}

void Statement::run() {
    while (step()) {
    }
    reset();
}

void Statement::reset() {
    sqlite3_reset(statement_.get());
}

std::int64_t Statement::integer(int column) const {
    return sqlite3_column_int64(statement_.get(), column);
}

double Statement::real(int column) const {
    return sqlite3_column_double(statement_.get(), column);
}

std::string_view Statement::text(int column) const {
    unsigned char const* const data = sqlite3_column_text(statement_.get(), column);
    if (data == nullptr) {
        return {};
    }
    auto const size = static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column));
    return {reinterpret_cast<char const*>(data), size};
}

bool Statement::isNull(int column) const {
    return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

void Database::Close::operator()(sqlite3* database) const noexcept {
    sqlite3_close_v2(database);
}

Database::Database(std::filesystem::path const& file, Sync sync) {
    sqlite3* database = nullptr;
    int const flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    int const code = sqlite3_open_v2(file.c_str(), &database, flags, nullptr);
    database_.reset(database);
    if (code != SQLITE_OK) {
        fail(database, code);
    }
    sqlite3_busy_timeout(database, longestWait_ms);
    // Two that open a new file at once both want it alone for this, and one is refused without a wait.
    int const wal = repeatWhileBusy(
        [&] { return sqlite3_exec(database, "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr); });
    if (wal != SQLITE_OK) {
        fail(database, wal);
    }
    execute(sync == Sync::full ? "PRAGMA synchronous=FULL" : "PRAGMA synchronous=NORMAL");
    execute("PRAGMA foreign_keys=ON");
}

void Database::execute(char const* sql) {
    int const code = sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) {
        fail(database_.get(), code);
    }
}

std::int64_t Database::lastInsertId() const noexcept {
    return sqlite3_last_insert_rowid(database_.get());
}

std::int64_t Database::changes() const noexcept {
    return sqlite3_changes64(database_.get());
}

bool Database::isSound() {
    Statement check = prepare("PRAGMA quick_check(1)");
    return check.step() && check.text(0) == "ok";
}

int Database::schemaVersion() {
    Statement version = prepare("PRAGMA user_version");
    return version.step() ? static_cast<int>(version.integer(0)) : 0;
}

void Database::setSchemaVersion(int version) {
    execute(("PRAGMA user_version=" + std::to_string(version)).c_str());
}

Transaction::Transaction(Database& database) : database_(database) {
    database_.execute("BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
    if (open_) {
        try {
            database_.execute("ROLLBACK");
        } catch (DatabaseError const&) {
            // SQLite has rolled back by itself on the errors that make ROLLBACK fail.
        }
    }
}

void Transaction::commit() {
    database_.execute("COMMIT");
    open_ = false;
}

} // namespace engine
