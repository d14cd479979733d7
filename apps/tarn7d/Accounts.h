// The accounts of the service: names, passwords and credits, kept in a database.
#pragma once

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/engine/storage/Database.h"

namespace tarn7d {

struct Account {
    std::int64_t id = 0;
    std::string name;
    std::int64_t credits = 0;
    bool paymentsBlocked = false; // buys nothing, in neither way
};

// Any thread for every operation; a running service and the account commands may work on one file. All throw
// engine::DatabaseError when the file fails.
class Accounts {
public:
    enum class Check { good, unknownName, wrongPassword };
    struct CheckResult {
        Check check = Check::unknownName;
        Account account; // when good
    };

    // Opens or makes the file, readable by its owner alone. Throws std::runtime_error when it is damaged or
    // made by a newer version.
    explicit Accounts(std::filesystem::path const& databaseFile);

    // False if the name is taken or is no name: 1 to 100 characters, no control characters, no blanks at the
    // ends.
    [[nodiscard]] bool add(std::string_view name, std::string_view password, std::int64_t credits);
    // These give false if there is no account of the name.
    [[nodiscard]] bool remove(std::string_view name);
    [[nodiscard]] bool setPassword(std::string_view name, std::string_view password);
    [[nodiscard]] bool setCredits(std::string_view name, std::int64_t credits);
    [[nodiscard]] bool setPaymentsBlocked(std::string_view name, bool blocked);

    [[nodiscard]] std::vector<Account> list();
    [[nodiscard]] std::optional<Account> find(std::string_view name);
    [[nodiscard]] std::optional<Account> find(std::int64_t id);

    // Judges a sign-in. Takes about a tenth of a second of one processor for a known name; at most two are
    // computed at a time.
    [[nodiscard]] CheckResult check(std::string_view name, std::string_view password);

private:
    std::mutex mutex_; // guards the database
    engine::Database database_;
};

} // namespace tarn7d
