// A SQLite file, its statements and its transactions, owned by value.
//
// Errors are exceptions here (DatabaseError): the services above catch them at their own border and turn them
// into the result that their contract names. One Database belongs to one thread at a time; open the file a
// second time for a second thread or process, SQLite's locking keeps them in order.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace engine {

class DatabaseError : public std::runtime_error {
public:
    DatabaseError(int code, std::string const& message) : std::runtime_error(message), code_(code) {}

    // SQLite's primary result code, as SQLITE_BUSY.
    [[nodiscard]] int code() const noexcept { return code_; }
    // True when the file itself is not, or no longer, a database.
    [[nodiscard]] bool isDamage() const noexcept;

private:
    int code_;
};

// A prepared statement. Parameters are bound by position from 1, columns are read by position from 0.
class Statement {
public:
    Statement(sqlite3* database, std::string_view sql);

    Statement& bind(int position, std::int64_t value);
    Statement& bind(int position, int value) { return bind(position, static_cast<std::int64_t>(value)); }
    Statement& bind(int position, double value);
    Statement& bind(int position, std::string_view text);
    Statement& bind(int position, std::nullptr_t);

    // Moves to the next row; false when there is none.
    [[nodiscard]] bool step();
    // Runs a statement that gives no rows, and makes it ready for new parameters.
    void run();
    // Makes the statement ready for another run; bound parameters stay.
    void reset();

    [[nodiscard]] std::int64_t integer(int column) const;
    [[nodiscard]] double real(int column) const;
    // Valid until the next step or reset.
    [[nodiscard]] std::string_view text(int column) const;
    [[nodiscard]] bool isNull(int column) const;

private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const noexcept;
    };
    void check(int code) const;

    std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

class Database {
public:
    enum class Sync { full, normal };

    // Opens or makes the file with write-ahead logging and waits up to five seconds for another writer.
    // Sync::full has every commit on disk when it returns.
    explicit Database(std::filesystem::path const& file, Sync sync = Sync::full);

    void execute(char const* sql);
    [[nodiscard]] Statement prepare(std::string_view sql) { return Statement(database_.get(), sql); }
    [[nodiscard]] std::int64_t lastInsertId() const noexcept;
    // Rows changed by the last statement.
    [[nodiscard]] std::int64_t changes() const noexcept;
    // Runs SQLite's own quick check; false when the file is damaged.
    [[nodiscard]] bool isSound();

    [[nodiscard]] int schemaVersion();
    void setSchemaVersion(int version);

private:
    struct Close {
        void operator()(sqlite3* database) const noexcept;
    };
    std::unique_ptr<sqlite3, Close> database_;
};

// Begins an immediate transaction, which is rolled back unless commit() was called.
class Transaction {
public:
    explicit Transaction(Database& database);
    ~Transaction();
    Transaction(Transaction const&) = delete;
    Transaction& operator=(Transaction const&) = delete;

    void commit();

private:
    Database& database_;
    bool open_ = true;
};

} // namespace engine
