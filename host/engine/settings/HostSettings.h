// What the person who runs the host has set in host.toml.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "host/engine/network/NetworkSettings.h"
#include "host/engine/settings/Result.h"

namespace engine {

// Paths are absolute; a relative one in the file starts at the folder of the file, "~/" at the user's own.
struct HostSettings {
    std::string language;             // empty: the environment's
    std::string hostName = "Zq Host"; // what services are told
    std::map<std::string, std::int32_t, std::less<>> config;
    std::vector<std::filesystem::path> modulePath; // empty: those of the program

    NetworkSettings network;

    std::filesystem::path mediaFolder;
    std::filesystem::path cacheFolder;
    std::int64_t cacheLimit_MiB = 2048;
};

// The settings of host.toml in that home folder; the defaults where there is no such file. A mistake is a
// failure that names the file, the line, the column and what is expected there. Thread: any.
[[nodiscard]] Result<HostSettings> loadHostSettings(std::filesystem::path const& home);

// The same from a text; `file` names it in a failure. Thread: any.
[[nodiscard]] Result<HostSettings> parseHostSettings(std::string_view text,
                                                     std::filesystem::path const& file);

} // namespace engine
