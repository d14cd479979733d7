// The host's configuration, as host.toml gives it.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "host/preferences/config_int.h"

namespace engine {

// Thread: any; the values do not change.
class TomlConfiguration final : public iConfiguration {
public:
    explicit TomlConfiguration(std::map<std::string, std::int32_t, std::less<>> values)
        : values_(std::move(values)) {}

    std::optional<std::int32_t> readInt(char const* key) override {
        auto const found = key != nullptr ? values_.find(std::string_view(key)) : values_.end();
        return found != values_.end() ? std::optional(found->second) : std::nullopt;
    }

private:
    std::map<std::string, std::int32_t, std::less<>> const values_;
};

} // namespace engine
