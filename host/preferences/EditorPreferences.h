// The editor's preferences: small values by key that outlive the program.
#pragma once

#include <cstdint>
#include <optional>

#include "host/text/LightweightString.h"

// What stands behind the door. A value is found again under the type that it was stored with. Thread: any.
class ZQ_API iPreferenceStore {
public:
    virtual ~iPreferenceStore();
    [[nodiscard]] virtual std::optional<bool> readBool(char const* key) = 0;
    [[nodiscard]] virtual std::optional<std::int32_t> readInt(char const* key) = 0;
    [[nodiscard]] virtual std::optional<WideString> readText(char const* key) = 0;
    // On disk on return. A failure is logged by the store; the value then holds for the life of the program.
    virtual void write(char const* key, bool value) = 0;
    virtual void write(char const* key, std::int32_t value) = 0;
    virtual void write(char const* key, WideString const& value) = 0;
    // A number that has changed when any preference may have, also by another process.
    [[nodiscard]] virtual std::uint64_t revision() = 0;
};

class ZQ_API EditorPreferences {
public:
    // The stored value, or the default where none of that type is stored.
    [[nodiscard]] bool getPreference(char const* key, bool otherwise) const;
    [[nodiscard]] std::int32_t getPreference(char const* key, std::int32_t otherwise) const;
    [[nodiscard]] WideString getPreference(char const* key, WideString const& otherwise) const;
    [[nodiscard]] WideString getPreference(char const* key, wchar_t const* otherwise) const {
        return getPreference(key, WideString(otherwise));
    }
    // Stores at once.
    void setPreference(char const* key, bool value) const;
    void setPreference(char const* key, std::int32_t value) const;
    void setPreference(char const* key, WideString const& value) const;
    void setPreference(char const* key, wchar_t const* value) const { setPreference(key, WideString(value)); }
    // Differs from an earlier result when a preference may have changed since.
    [[nodiscard]] std::uint64_t revision() const;
};

// Thread: any.
[[nodiscard]] ZQ_API EditorPreferences& prefs() noexcept;
