#include "apps/tarn7d/AccountsDatabase.h"

#include <iterator>
#include <stdexcept>

namespace tarn7d {

namespace {

// No account gets the number of a removed one: sessions and purchases are bound to numbers.
constexpr char const* accountTables = R"sql(
CREATE TABLE account (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    name TEXT NOT NULL UNIQUE,
    salt TEXT NOT NULL,
    digest TEXT NOT NULL,
    credits INTEGER NOT NULL CHECK (credits >= 0));
)sql";

// A clip that is owned has one line in one purchase: the primary key of "owned" is what makes charging twice
// impossible.
constexpr char const* shopTables = R"sql(
ALTER TABLE account ADD COLUMN payments_blocked INTEGER NOT NULL DEFAULT 0;
CREATE TABLE cart (
    account INTEGER NOT NULL, clip INTEGER NOT NULL,
    PRIMARY KEY (account, clip)) WITHOUT ROWID;
CREATE TABLE purchase (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    account INTEGER NOT NULL,
    made INTEGER NOT NULL,
    way TEXT NOT NULL CHECK (way IN ('credits', 'card')),
    total_cents INTEGER NOT NULL, total_credits INTEGER NOT NULL);
CREATE INDEX purchase_account ON purchase (account, id);
CREATE TABLE purchase_line (
    purchase INTEGER NOT NULL, clip INTEGER NOT NULL,
    title TEXT NOT NULL, price_cents INTEGER NOT NULL, credits INTEGER NOT NULL,
    PRIMARY KEY (purchase, clip)) WITHOUT ROWID;
CREATE TABLE owned (
    account INTEGER NOT NULL, clip INTEGER NOT NULL, purchase INTEGER NOT NULL,
    PRIMARY KEY (account, clip)) WITHOUT ROWID;
CREATE TABLE payment (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    token_digest TEXT NOT NULL UNIQUE,
    account INTEGER NOT NULL,
    expires INTEGER NOT NULL,
    cart_digest TEXT NOT NULL,
    purchase INTEGER);
CREATE INDEX payment_account ON payment (account, id);
CREATE TRIGGER account_removed AFTER DELETE ON account BEGIN
    DELETE FROM cart WHERE account=OLD.id;
    DELETE FROM owned WHERE account=OLD.id;
    DELETE FROM payment WHERE account=OLD.id;
    DELETE FROM purchase_line WHERE purchase IN (SELECT id FROM purchase WHERE account=OLD.id);
    DELETE FROM purchase WHERE account=OLD.id;
END;
)sql";

// Step n brings a file from version n to version n + 1.
constexpr char const* steps[] = {accountTables, shopTables};
constexpr int newestVersion = static_cast<int>(std::size(steps));

void bringUpToDate(engine::Database& database) {
    engine::Transaction transaction(database);
    int const version = database.schemaVersion();
    if (version > newestVersion) {
        throw std::runtime_error("a newer version of the service made it");
    }
    for (int step = version; step < newestVersion; ++step) {
        database.execute(steps[step]);
    }
    if (version < newestVersion) {
        database.setSchemaVersion(newestVersion);
    }
    transaction.commit();
}

} // namespace

engine::Database openAccountsDatabase(std::filesystem::path const& file) {
    engine::Database database(file);
    std::filesystem::permissions(file,
                                 std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    bringUpToDate(database);
    if (!database.isSound()) {
        throw std::runtime_error("it is damaged");
    }
    return database;
}

} // namespace tarn7d
