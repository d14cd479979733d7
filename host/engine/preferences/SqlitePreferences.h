// Preferences in a SQLite file that several processes may share.
//
// The table is small and held in memory as well; a read asks SQLite only whether another process has
// committed since, which touches shared memory and no disk.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include <sys/types.h>

#include "host/engine/preferences/PreferenceTable.h"
#include "host/preferences/EditorPreferences.h"

namespace engine {

// Thread: any.
class SqlitePreferences final : public iPreferenceStore {
public:
    // Opens or makes the file. One that is damaged or that a later version wrote is set aside under a name
    // with the time, and an empty one takes its place. Where no file can be opened, values hold in memory.
    explicit SqlitePreferences(std::filesystem::path file);

    std::optional<bool> readBool(char const* key) override;
    std::optional<std::int32_t> readInt(char const* key) override;
    std::optional<WideString> readText(char const* key) override;
    void write(char const* key, bool value) override;
    void write(char const* key, std::int32_t value) override;
    void write(char const* key, WideString const& value) override;
    std::uint64_t revision() override;

private:
    using Values = std::map<std::string, PreferenceValue, std::less<>>;
    // Which file on the disk a path leads to.
    struct Identity {
        dev_t device = 0;
        ino_t number = 0;
        bool operator==(Identity const&) const = default;
    };

    template <class Type>
    std::optional<Type> read(char const* key);
    void keep(char const* key, PreferenceValue value);

    // With the lock held, all of these.
    void open();
    void load();
    void refresh();
    [[nodiscard]] bool store(std::string_view key, PreferenceValue const& value);
    void logOnce(char const* problem);
    [[nodiscard]] Identity identify() const;

    std::filesystem::path const file_;
    std::mutex mutex_;
    std::unique_ptr<PreferenceTable> table_; // null where no file can be opened
    Identity opened_;
    std::int64_t seenVersion_ = 0;
    Values values_;
    Values unsaved_; // what could not be written; it hides what the file has
    std::uint64_t revision_ = 1;
    bool logged_ = false;
};

} // namespace engine
