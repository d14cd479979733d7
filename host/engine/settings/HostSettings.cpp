#include "host/engine/settings/HostSettings.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "host/engine/files/WholeFile.h"
#include "host/engine/settings/TomlFile.h"

namespace engine {

namespace {

constexpr std::size_t largestFile = std::size_t{1} << 20;    // bytes
constexpr std::int64_t largestCache = std::int64_t{1} << 24; // MiB

bool isPort(std::string_view text) {
    bool const digits =
        !text.empty() && text.size() <= 5 && text.find_first_not_of("0123456789") == std::string_view::npos;
    int const port = digits ? std::stoi(std::string(text)) : 0;
    return port >= 1 && port <= 65535;
}

// "host:port", where an IPv6 host stands in brackets.
bool isEndpoint(std::string_view text) {
    std::size_t const colon = text.rfind(':');
    if (colon == std::string_view::npos || colon == 0 || !isPort(text.substr(colon + 1))) {
        return false;
    }
    std::string_view host = text.substr(0, colon);
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
        host = host.substr(1, host.size() - 2);
        return host.find_first_not_of("0123456789abcdefABCDEF:.") == std::string_view::npos;
    }
    return std::ranges::all_of(host, [](unsigned char character) {
        return (character > 0x20 && character < 0x7f &&
                std::string_view(":/@[]\\\"'").find(static_cast<char>(character)) ==
                    std::string_view::npos) ||
               character >= 0x80;
    });
}

std::filesystem::path absolutePath(std::string const& text, std::filesystem::path const& base) {
    std::filesystem::path path = text;
    if (text.starts_with("~/")) {
        if (char const* const user = std::getenv("HOME")) {
            path = std::filesystem::path(user) / text.substr(2);
        }
    }
    std::error_code error;
    return std::filesystem::absolute(base / path, error).lexically_normal();
}

class Reading {
public:
    Reading(HostSettings& settings, std::filesystem::path const& file)
        : settings_(settings), file_(file), base_(file.parent_path()) {}

    void root(toml::table const& table) {
        TomlReader const reader(table, file_);
        reader.allow({"language", "name", "config", "modules", "network", "folders"});
        if (std::string const* const language = reader.text("language")) {
            settings_.language = *language;
        }
        if (std::string const* const name = reader.text("name")) {
            settings_.hostName = *name;
        }
        read(reader, "config", &Reading::config);
        read(reader, "modules", &Reading::modules);
        read(reader, "network", &Reading::network);
        read(reader, "folders", &Reading::folders);
    }

private:
    void read(TomlReader const& reader, std::string_view name, void (Reading::*part)(toml::table const&)) {
        if (toml::table const* const table = reader.table(name)) {
            (this->*part)(*table);
        }
    }

    void config(toml::table const& table) {
        TomlReader const reader(table, file_);
        for (auto const& [key, node] : table) {
            std::int64_t const value =
                reader.integerOf(node, key.str(), std::numeric_limits<std::int32_t>::min(),
                                 std::numeric_limits<std::int32_t>::max());
            settings_.config.insert_or_assign(std::string(key.str()), static_cast<std::int32_t>(value));
        }
    }

    void modules(toml::table const& table) {
        TomlReader const reader(table, file_);
        reader.allow({"path"});
        if (toml::array const* const folders = reader.array("path")) {
            for (toml::node const& folder : *folders) {
                settings_.modulePath.push_back(path(reader, folder, "each folder of path"));
            }
        }
    }

    void network(toml::table const& table) {
        TomlReader const reader(table, file_);
        reader.allow({"connect", "ca_file", "proxy"});
        read(reader, "connect", &Reading::connections);
        if (toml::node const* const node = table.get("ca_file")) {
            settings_.network.caFile = path(reader, *node, "ca_file");
            std::error_code error;
            if (!std::filesystem::is_regular_file(settings_.network.caFile, error)) {
                reader.fail(*node, "ca_file: there is no file " + settings_.network.caFile.native() +
                                       ", expected one with certificates in PEM form");
            }
        }
        if (std::string const* const proxy = reader.text("proxy")) {
            settings_.network.proxy = *proxy;
        }
    }

    void connections(toml::table const& table) {
        TomlReader const reader(table, file_);
        for (auto const& [key, node] : table) {
            std::string const& target = reader.textOf(node, key.str());
            if (!isEndpoint(key.str()) || !isEndpoint(target)) {
                reader.fail(node, "connect must lead from \"host:port\" to \"host:port\"");
            }
            settings_.network.connect.insert_or_assign(std::string(key.str()), target);
        }
    }

    void folders(toml::table const& table) {
        TomlReader const reader(table, file_);
        reader.allow({"media", "cache", "cache_limit_mib"});
        if (toml::node const* const node = table.get("media")) {
            settings_.mediaFolder = path(reader, *node, "media");
        }
        if (toml::node const* const node = table.get("cache")) {
            settings_.cacheFolder = path(reader, *node, "cache");
        }
        if (toml::node const* const node = table.get("cache_limit_mib")) {
            settings_.cacheLimit_MiB = reader.integerOf(*node, "cache_limit_mib", 1, largestCache);
        }
    }

    std::filesystem::path path(TomlReader const& reader, toml::node const& node,
                               std::string_view name) const {
        std::string const& text = reader.textOf(node, name);
        if (text.empty() || text.find('\0') != std::string::npos) {
            reader.fail(node, std::string(name) + " must be the path of a file or folder");
        }
        return absolutePath(text, base_);
    }

    HostSettings& settings_;
    std::filesystem::path const& file_;
    std::filesystem::path const base_;
};

HostSettings defaultSettings(std::filesystem::path const& home) {
    HostSettings settings;
    settings.mediaFolder = home / "media";
    settings.cacheFolder = home / "cache";
    return settings;
}

} // namespace

Result<HostSettings> parseHostSettings(std::string_view text, std::filesystem::path const& file) {
    HostSettings settings = defaultSettings(file.parent_path());
    try {
        Reading(settings, file).root(parseToml(text, file));
    } catch (TomlMistake const& mistake) {
        return Failure{mistake.what()};
    }
    return settings;
}

Result<HostSettings> loadHostSettings(std::filesystem::path const& home) {
    std::filesystem::path const file = home / "host.toml";
    std::error_code error;
    std::filesystem::file_status const status = std::filesystem::status(file, error);
    if (status.type() == std::filesystem::file_type::not_found) {
        return defaultSettings(home);
    }
    std::optional<std::string> const text = readWholeFile(file, largestFile);
    if (!text) {
        return Failure{file.native() +
                       ":1:1: cannot be read, expected a file of at most 1 MiB that you may read"};
    }
    return parseHostSettings(*text, file);
}

} // namespace engine
