#include "apps/tarn7d/Accounts.h"

#include <semaphore>

#include "apps/tarn7d/AccountsDatabase.h"
#include "apps/tarn7d/PasswordHash.h"
#include "apps/tarn7d/Text.h"

namespace tarn7d {

namespace {

constexpr std::size_t longestName = 100;

// Hashing is made to be expensive: without a bound, sign-ins would take every processor and much memory.
std::counting_semaphore<2>& hashingSlots() {
    static std::counting_semaphore<2> slots(2);
    return slots;
}

class HashingSlot {
public:
    HashingSlot() { hashingSlots().acquire(); }
    ~HashingSlot() { hashingSlots().release(); }
    HashingSlot(HashingSlot const&) = delete;
    HashingSlot& operator=(HashingSlot const&) = delete;
};

std::string toHex(std::string_view bytes) {
    std::string hex;
    for (char const c : bytes) {
        auto const byte = static_cast<unsigned char>(c);
        hex += "0123456789abcdef"[byte >> 4];
        hex += "0123456789abcdef"[byte & 15];
    }
    return hex;
}

PasswordHash hashInSlot(std::string_view password) {
    HashingSlot const slot;
    PasswordHash const hash = hashPassword(password);
    return {toHex(hash.salt), toHex(hash.digest)};
}

std::string fromHex(std::string_view hex) {
    auto const digit = [](char c) { return c <= '9' ? c - '0' : c - 'a' + 10; };
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes += static_cast<char>(static_cast<unsigned char>(digit(hex[i]) << 4 | digit(hex[i + 1])));
    }
    return bytes;
}

Account readAccount(engine::Statement const& row) {
    return {row.integer(0), std::string(row.text(1)), row.integer(2), row.integer(3) != 0};
}

bool isName(std::string_view name) {
    return !name.empty() && cleanText(name, longestName) == name;
}

} // namespace

Accounts::Accounts(std::filesystem::path const& databaseFile)
    : database_(openAccountsDatabase(databaseFile)) {}

bool Accounts::add(std::string_view name, std::string_view password, std::int64_t credits) {
    if (!isName(name) || credits < 0 || find(name)) {
        return false;
    }
    PasswordHash const hash = hashInSlot(password);
    std::lock_guard const lock(mutex_);
    database_
        .prepare("INSERT INTO account (name, salt, digest, credits) VALUES (?1, ?2, ?3, ?4) "
                 "ON CONFLICT (name) DO NOTHING")
        .bind(1, name)
        .bind(2, std::string_view(hash.salt))
        .bind(3, std::string_view(hash.digest))
        .bind(4, credits)
        .run();
    return database_.changes() == 1;
}

bool Accounts::remove(std::string_view name) {
    std::lock_guard const lock(mutex_);
    database_.prepare("DELETE FROM account WHERE name=?1").bind(1, name).run();
    return database_.changes() == 1;
}

bool Accounts::setPassword(std::string_view name, std::string_view password) {
    PasswordHash const hash = hashInSlot(password);
    std::lock_guard const lock(mutex_);
    database_.prepare("UPDATE account SET salt=?2, digest=?3 WHERE name=?1")
        .bind(1, name)
        .bind(2, std::string_view(hash.salt))
        .bind(3, std::string_view(hash.digest))
        .run();
    return database_.changes() == 1;
}

bool Accounts::setCredits(std::string_view name, std::int64_t credits) {
    if (credits < 0) {
        return false;
    }
    std::lock_guard const lock(mutex_);
    database_.prepare("UPDATE account SET credits=?2 WHERE name=?1").bind(1, name).bind(2, credits).run();
    return database_.changes() == 1;
}

bool Accounts::setPaymentsBlocked(std::string_view name, bool blocked) {
    std::lock_guard const lock(mutex_);
    database_.prepare("UPDATE account SET payments_blocked=?2 WHERE name=?1")
        .bind(1, name)
        .bind(2, blocked ? 1 : 0)
        .run();
    return database_.changes() == 1;
}

std::vector<Account> Accounts::list() {
    std::lock_guard const lock(mutex_);
    engine::Statement rows =
        database_.prepare("SELECT id, name, credits, payments_blocked FROM account ORDER BY name");
    std::vector<Account> accounts;
    while (rows.step()) {
        accounts.push_back(readAccount(rows));
    }
    return accounts;
}

std::optional<Account> Accounts::find(std::string_view name) {
    std::lock_guard const lock(mutex_);
    engine::Statement row =
        database_.prepare("SELECT id, name, credits, payments_blocked FROM account WHERE name=?1");
    row.bind(1, name);
    return row.step() ? std::optional(readAccount(row)) : std::nullopt;
}

std::optional<Account> Accounts::find(std::int64_t id) {
    std::lock_guard const lock(mutex_);
    engine::Statement row =
        database_.prepare("SELECT id, name, credits, payments_blocked FROM account WHERE id=?1");
    row.bind(1, id);
    return row.step() ? std::optional(readAccount(row)) : std::nullopt;
}

Accounts::CheckResult Accounts::check(std::string_view name, std::string_view password) {
    CheckResult result;
    PasswordHash stored;
    {
        std::lock_guard const lock(mutex_);
        engine::Statement row =
            database_.prepare("SELECT id, name, credits, payments_blocked, salt, digest FROM account "
                              "WHERE name=?1");
        row.bind(1, name);
        if (!row.step()) {
            return result;
        }
        result.account = readAccount(row);
        stored = {fromHex(row.text(4)), fromHex(row.text(5))};
    }
    HashingSlot const slot;
    result.check = isPassword(password, stored) ? Check::good : Check::wrongPassword;
    return result;
}

} // namespace tarn7d
