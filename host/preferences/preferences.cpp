#include "host/HostServices.h"
#include "host/preferences/EditorPreferences.h"
#include "host/preferences/config_int.h"
#include "host/preferences/configb.h"

iPreferenceStore::~iPreferenceStore() = default;
iConfiguration::~iConfiguration() = default;

bool EditorPreferences::getPreference(char const* key, bool otherwise) const {
    iPreferenceStore* const store = installedHost().preferences;
    return store != nullptr ? store->readBool(key).value_or(otherwise) : otherwise;
}

std::int32_t EditorPreferences::getPreference(char const* key, std::int32_t otherwise) const {
    iPreferenceStore* const store = installedHost().preferences;
    return store != nullptr ? store->readInt(key).value_or(otherwise) : otherwise;
}

WideString EditorPreferences::getPreference(char const* key, WideString const& otherwise) const {
    iPreferenceStore* const store = installedHost().preferences;
    return store != nullptr ? store->readText(key).value_or(otherwise) : otherwise;
}

void EditorPreferences::setPreference(char const* key, bool value) const {
    if (iPreferenceStore* const store = installedHost().preferences) {
        store->write(key, value);
    }
}

void EditorPreferences::setPreference(char const* key, std::int32_t value) const {
    if (iPreferenceStore* const store = installedHost().preferences) {
        store->write(key, value);
    }
}

void EditorPreferences::setPreference(char const* key, WideString const& value) const {
    if (iPreferenceStore* const store = installedHost().preferences) {
        store->write(key, value);
    }
}

std::uint64_t EditorPreferences::revision() const {
    iPreferenceStore* const store = installedHost().preferences;
    return store != nullptr ? store->revision() : 0;
}

EditorPreferences& prefs() noexcept {
    static EditorPreferences preferences;
    return preferences;
}

std::int32_t config_int(char const* key, std::int32_t otherwise) {
    iConfiguration* const configuration = installedHost().configuration;
    return configuration != nullptr ? configuration->readInt(key).value_or(otherwise) : otherwise;
}

std::int32_t configb::in(char const* key, NarrowString& value) const {
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (entries_[i].key == key) {
            value = entries_[i].value;
            return static_cast<std::int32_t>(i);
        }
    }
    return -1;
}

void configb::set(char const* key, NarrowString const& value) {
    for (Entry& entry : entries_) {
        if (entry.key == key) {
            entry.value = value;
            return;
        }
    }
    entries_.push_back({NarrowString(key), value});
}
