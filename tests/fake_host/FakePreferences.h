// Preferences, configuration and strings in memory.
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <variant>
#include <vector>

#include "host/preferences/EditorPreferences.h"
#include "host/preferences/config_int.h"
#include "host/resources/resourceStr.h"
#include "host/text/Unicode.h"

namespace fake {

// Thread: any.
class Preferences final : public iPreferenceStore {
public:
    using Value = std::variant<bool, std::int32_t, WideString>;
    struct Write {
        std::string key;
        Value value;
    };

    std::optional<bool> readBool(char const* key) override { return read<bool>(key); }
    std::optional<std::int32_t> readInt(char const* key) override { return read<std::int32_t>(key); }
    std::optional<WideString> readText(char const* key) override { return read<WideString>(key); }
    void write(char const* key, bool value) override { keep(key, value); }
    void write(char const* key, std::int32_t value) override { keep(key, value); }
    void write(char const* key, WideString const& value) override { keep(key, value); }
    std::uint64_t revision() override {
        std::lock_guard const lock(mutex_);
        return writes_.size();
    }

    // Everything that was written, in order.
    [[nodiscard]] std::vector<Write> writes() const {
        std::lock_guard const lock(mutex_);
        return writes_;
    }

private:
    template <class Type>
    std::optional<Type> read(char const* key) const {
        std::lock_guard const lock(mutex_);
        auto const found = values_.find(key);
        Type const* const value = found != values_.end() ? std::get_if<Type>(&found->second) : nullptr;
        return value != nullptr ? std::optional<Type>(*value) : std::nullopt;
    }
    void keep(char const* key, Value value) {
        std::lock_guard const lock(mutex_);
        writes_.push_back({key, value});
        values_[key] = std::move(value);
    }

    mutable std::mutex mutex_;
    std::map<std::string, Value> values_;
    std::vector<Write> writes_;
};

class Configuration final : public iConfiguration {
public:
    std::optional<std::int32_t> readInt(char const* key) override {
        asked.emplace_back(key);
        auto const found = values.find(key);
        return found != values.end() ? std::optional(found->second) : std::nullopt;
    }

    std::map<std::string, std::int32_t> values;
    std::vector<std::string> asked;
};

// A text for every number: "#" and the number, unless the test has set another.
class Strings final : public iResourceStrings {
public:
    WideString read(ResId number) override {
        auto const found = texts.find(number);
        return found != texts.end() ? found->second : fromUTF8("#" + std::to_string(number));
    }

    std::map<ResId, WideString> texts;
};

} // namespace fake
