#include "host/engine/preferences/SqlitePreferences.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "host/engine/files/FileDescriptor.h"
#include "host/engine/preferences/setAside.h"
#include "host/log/Log.h"

namespace engine {

namespace {

// Two processes that find the same damage must not set aside each other's fresh file.
FileDescriptor lockForOpening(std::filesystem::path const& file) {
    FileDescriptor lock(::open((file.native() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (lock && ::flock(lock.get(), LOCK_EX) != 0) {
        return {};
    }
    return lock;
}

} // namespace

SqlitePreferences::SqlitePreferences(std::filesystem::path file) : file_(std::move(file)) {
    open();
}

void SqlitePreferences::open() {
    table_.reset();
    FileDescriptor const lock = lockForOpening(file_);
    for (bool mayReplace = true; table_ == nullptr; mayReplace = false) {
        try {
            table_ = std::make_unique<PreferenceTable>(file_);
            opened_ = identify();
            load();
        } catch (DatabaseError const& error) {
            table_.reset();
            std::filesystem::path const moved =
                error.isDamage() && mayReplace ? setAside(file_) : std::filesystem::path();
            if (moved.empty()) {
                logOnce(error.what());
                return;
            }
            Log("The preferences in %s cannot be read (%s): the file is kept as %s, defaults apply",
                file_.c_str(), error.what(), moved.filename().c_str());
        }
    }
}

void SqlitePreferences::load() {
    // The version comes first: what is committed in between shows as a change at the next look.
    std::int64_t const version = table_->dataVersion();
    Values fresh;
    table_->forEach([&fresh](std::string key, PreferenceValue value) {
        fresh.insert_or_assign(std::move(key), std::move(value));
    });
    values_.swap(fresh);
    seenVersion_ = version;
    ++revision_;
}

void SqlitePreferences::refresh() {
    if (table_ == nullptr) {
        return;
    }
    try {
        if (table_->dataVersion() != seenVersion_) {
            load();
        }
    } catch (DatabaseError const& error) {
        if (error.isDamage()) {
            open();
        } else {
            logOnce(error.what());
        }
    }
}

SqlitePreferences::Identity SqlitePreferences::identify() const {
    struct stat status {};
    return ::stat(file_.c_str(), &status) == 0 ? Identity{status.st_dev, status.st_ino} : Identity{};
}

void SqlitePreferences::logOnce(char const* problem) {
    if (!logged_) {
        logged_ = true;
        Log("Preferences are not kept in %s (%s): changes last until the program ends", file_.c_str(),
            problem);
    }
}

bool SqlitePreferences::store(std::string_view key, PreferenceValue const& value) {
    // Somebody may have removed the file, or set it aside: what is written must be where the next start
    // looks.
    if (table_ != nullptr && identify() != opened_) {
        open();
    }
    for (int attempt = 0; attempt < 2 && table_ != nullptr; ++attempt) {
        try {
            table_->write(key, value);
            return true;
        } catch (DatabaseError const& error) {
            if (!error.isDamage()) {
                logOnce(error.what());
                return false;
            }
            open();
        }
    }
    return false;
}

void SqlitePreferences::keep(char const* key, PreferenceValue value) {
    std::string name = key != nullptr ? key : "";
    std::lock_guard const lock(mutex_);
    if (store(name, value)) {
        unsaved_.erase(name);
        values_.insert_or_assign(std::move(name), std::move(value));
    } else {
        unsaved_.insert_or_assign(std::move(name), std::move(value));
    }
    ++revision_;
}

template <class Type>
std::optional<Type> SqlitePreferences::read(char const* key) {
    std::string_view const name = key != nullptr ? key : "";
    std::lock_guard const lock(mutex_);
    refresh();
    for (Values const* const values : {&unsaved_, &values_}) {
        if (auto const found = values->find(name); found != values->end()) {
            Type const* const value = std::get_if<Type>(&found->second);
            return value != nullptr ? std::optional<Type>(*value) : std::nullopt;
        }
    }
    return std::nullopt;
}

std::optional<bool> SqlitePreferences::readBool(char const* key) {
    return read<bool>(key);
}

std::optional<std::int32_t> SqlitePreferences::readInt(char const* key) {
    return read<std::int32_t>(key);
}

std::optional<WideString> SqlitePreferences::readText(char const* key) {
    return read<WideString>(key);
}

void SqlitePreferences::write(char const* key, bool value) {
    keep(key, value);
}

void SqlitePreferences::write(char const* key, std::int32_t value) {
    keep(key, value);
}

void SqlitePreferences::write(char const* key, WideString const& value) {
    keep(key, value);
}

std::uint64_t SqlitePreferences::revision() {
    std::lock_guard const lock(mutex_);
    refresh();
    return revision_;
}

} // namespace engine
