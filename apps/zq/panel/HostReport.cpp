#include "apps/zq/panel/HostReport.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

#include <pwd.h>
#include <sys/utsname.h>
#include <unistd.h>

#include "apps/zq/Version.h"
#include "apps/zq/panel/CacheFolder.h"
#include "apps/zq/panel/HostLog.h"
#include "apps/zq/terminal/PlainText.h"
#include "host/engine/files/WholeFile.h"
#include "host/engine/log/maskSecrets.h"

namespace zq::panel {

namespace {

constexpr std::size_t mostLogLines = 200;
constexpr std::size_t largestFile_bytes = std::size_t{1} << 16;

std::string line(std::string_view name, std::string_view value) {
    return std::string(name) + ": " + plainText(value.empty() ? "-" : value) + "\n";
}

std::string distribution() {
    std::string const text = engine::readWholeFile("/etc/os-release", largestFile_bytes).value_or("");
    constexpr std::string_view key = "PRETTY_NAME=";
    std::size_t const at = text.find(key);
    if (at == std::string::npos) {
        return {};
    }
    std::string name = text.substr(at + key.size(), text.find('\n', at) - at - key.size());
    std::erase(name, '"');
    return name;
}

std::string systemName() {
    struct utsname names {};
    std::string system;
    if (::uname(&names) == 0) {
        system = std::string(names.sysname) + " " + names.release + " " + names.machine;
    }
    std::string const made = distribution();
    return made.empty() ? system : made + ", " + system;
}

struct MachineUser {
    std::string name;
    std::string home;
};

MachineUser machineUser() {
    MachineUser user;
    constexpr std::size_t room_bytes = 16'384;
    std::vector<char> room(room_bytes);
    struct passwd entry {};
    struct passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, room.data(), room.size(), &found) == 0 && found != nullptr) {
        user.name = found->pw_name;
        user.home = found->pw_dir;
    }
    if (char const* const home = std::getenv("HOME"); home != nullptr && *home != '\0') {
        user.home = home;
    }
    return user;
}

std::string withoutHome(std::string text, std::string const& home) {
    if (home.size() < 2) {
        return text;
    }
    for (std::size_t at = text.find(home); at != std::string::npos; at = text.find(home, at + 1)) {
        text.replace(at, home.size(), "~");
    }
    return text;
}

bool isWordCharacter(char character) {
    return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_' ||
           static_cast<unsigned char>(character) >= 0x80;
}

std::string settingsLines(engine::Engine const& engine) {
    engine::HostSettings const& settings = engine.settings();
    std::string text = line("language", engine.language());
    text += line("home folder", engine.home().native());
    text += line("media folder", settings.mediaFolder.native());
    text += line("cache folder", settings.cacheFolder.native());
    text += line("cache limit", std::to_string(settings.cacheLimit_MiB) + " MiB");
    text += line("cache used", std::to_string(cacheSize(settings.cacheFolder) >> 20) + " MiB");
    text += line("proxy", withoutUser(settings.network.proxy));
    text += line("certificates", settings.network.caFile.native());
    for (auto const& [asked, reached] : settings.network.connect) {
        text += line("connect", asked + " at " + reached);
    }
    return text;
}

} // namespace

std::string withoutUser(std::string const& address) {
    std::size_t const scheme = address.find("://");
    std::size_t const begin = scheme == std::string::npos ? 0 : scheme + 3;
    // The last "@": a password that was written down as it is may have a "/" in it.
    std::size_t const at = address.rfind('@');
    return at == std::string::npos || at < begin ? address
                                                 : address.substr(0, begin) + "***" + address.substr(at);
}

std::string withoutWords(std::string_view text, std::span<std::string const> words) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        bool const begins = at == 0 || !isWordCharacter(text[at - 1]);
        auto const found = std::ranges::find_if(words, [&](std::string const& word) {
            std::size_t const end = at + word.size();
            return begins && !word.empty() && text.substr(at).starts_with(word) &&
                   (end == text.size() || !isWordCharacter(text[end]));
        });
        if (found != words.end()) {
            result += "***";
            at += found->size();
        } else {
            result += text[at++];
        }
    }
    return result;
}

std::vector<std::string> moduleLines(std::span<engine::ModuleReport const> modules) {
    std::vector<std::string> lines;
    for (engine::ModuleReport const& module : modules) {
        std::string const file = module.path.filename().native();
        lines.push_back(module.loaded ? module.name + " " + module.version + " (" + file + ")"
                                      : file + " is not loaded: " + module.error);
    }
    return lines;
}

std::string hostReport(engine::Engine const& engine, ReportFacts const& facts) {
    std::string text = line("program", std::string("zq ") + version) + line("system", systemName());
    for (std::string const& module : facts.modules) {
        text += line("module", module);
    }
    text += settingsLines(engine);
    text += "\nThe end of the log:\n";
    for (std::string const& logged : lastLogLines(engine.home(), mostLogLines)) {
        text += plainText(logged) + "\n";
    }
    MachineUser const user = machineUser();
    std::vector<std::string> names = facts.accounts;
    names.push_back(user.name);
    return withoutWords(withoutHome(engine::maskSecrets(text), user.home), names);
}

} // namespace zq::panel
