#include "host/engine/preferences/PreferenceTable.h"

#include <array>
#include <fstream>
#include <limits>
#include <optional>

#include <sqlite3.h>

#include "host/text/Unicode.h"

namespace engine {

namespace {

constexpr int schema = 1;

// How a row's type is kept.
enum class Kind : std::int64_t { flag = 0, integer = 1, text = 2 };

class ResetAtEnd {
public:
    explicit ResetAtEnd(Statement& statement) : statement_(statement) {}
    ~ResetAtEnd() { statement_.reset(); }
    ResetAtEnd(ResetAtEnd const&) = delete;
    ResetAtEnd& operator=(ResetAtEnd const&) = delete;

private:
    Statement& statement_;
};

// True for a file that does not begin as every database does. Asked before SQLite opens the file: when it
// closes one, it takes away what lies beside it.
bool isForeign(std::filesystem::path const& file) {
    static constexpr std::string_view mark("SQLite format 3\0", 16);
    std::error_code error;
    std::array<char, mark.size()> start{};
    std::ifstream stream(file, std::ios::binary);
    return std::filesystem::is_regular_file(file, error) && std::filesystem::file_size(file, error) != 0 &&
           stream.is_open() &&
           (!stream.read(start.data(), start.size()) || std::string_view(start.data(), start.size()) != mark);
}

Database openWithTable(std::filesystem::path const& file) {
    if (isForeign(file)) {
        throw DatabaseError(SQLITE_NOTADB, "it is not a database");
    }
    Database database(file, Database::Sync::full);
    if (!database.isSound()) {
        throw DatabaseError(SQLITE_CORRUPT, "the check of the file failed");
    }
    int const version = database.schemaVersion();
    if (version > schema) {
        throw DatabaseError(SQLITE_NOTADB, "a later version of the program wrote it");
    }
    if (version < schema) {
        Transaction transaction(database);
        database.execute(
            "CREATE TABLE IF NOT EXISTS preference ("
            "key TEXT PRIMARY KEY NOT NULL, type INTEGER NOT NULL, value NOT NULL) WITHOUT ROWID");
        database.setSchemaVersion(schema);
        transaction.commit();
    }
    return database;
}

Statement prepare(Database& database, std::string_view sql) {
    try {
        return database.prepare(sql);
    } catch (DatabaseError const& error) {
        if (error.code() == SQLITE_ERROR) {
            throw DatabaseError(SQLITE_NOTADB, error.what()); // a table, but not this one
        }
        throw;
    }
}

std::optional<PreferenceValue> valueOf(Statement const& row) {
    switch (static_cast<Kind>(row.integer(1))) {
    case Kind::flag:
        return row.integer(2) != 0;
    case Kind::integer: {
        std::int64_t const value = row.integer(2);
        bool const fits = value >= std::numeric_limits<std::int32_t>::min() &&
                          value <= std::numeric_limits<std::int32_t>::max();
        return fits ? std::optional<PreferenceValue>(static_cast<std::int32_t>(value)) : std::nullopt;
    }
    case Kind::text:
        return fromUTF8(row.text(2));
    }
    return std::nullopt;
}

} // namespace

PreferenceTable::PreferenceTable(std::filesystem::path const& file)
    : database_(openWithTable(file)), version_(prepare(database_, "PRAGMA data_version")),
      all_(prepare(database_, "SELECT key, type, value FROM preference")),
      put_(prepare(database_,
                   "INSERT INTO preference (key, type, value) VALUES (?, ?, ?) "
                   "ON CONFLICT (key) DO UPDATE SET type = excluded.type, value = excluded.value")) {}

std::int64_t PreferenceTable::dataVersion() {
    ResetAtEnd const reset(version_);
    return version_.step() ? version_.integer(0) : 0;
}

void PreferenceTable::forEach(std::function<void(std::string, PreferenceValue)> const& receiver) {
    ResetAtEnd const reset(all_);
    while (all_.step()) {
        if (std::optional<PreferenceValue> value = valueOf(all_)) {
            receiver(std::string(all_.text(0)), std::move(*value));
        }
    }
}

void PreferenceTable::write(std::string_view key, PreferenceValue const& value) {
    ResetAtEnd const reset(put_);
    put_.bind(1, key);
    if (bool const* const flag = std::get_if<bool>(&value)) {
        put_.bind(2, static_cast<std::int64_t>(Kind::flag)).bind(3, std::int64_t{*flag});
    } else if (std::int32_t const* const integer = std::get_if<std::int32_t>(&value)) {
        put_.bind(2, static_cast<std::int64_t>(Kind::integer)).bind(3, std::int64_t{*integer});
    } else {
        put_.bind(2, static_cast<std::int64_t>(Kind::text))
            .bind(3, toUTF8(std::get<WideString>(value)).view());
    }
    put_.run();
}

} // namespace engine
