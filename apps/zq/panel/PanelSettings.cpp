#include "apps/zq/panel/PanelSettings.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include "apps/zq/JsonOutput.h"
#include "apps/zq/panel/ApiError.h"
#include "apps/zq/panel/CacheFolder.h"
#include "apps/zq/panel/changeToml.h"
#include "host/engine/files/WholeFile.h"
#include "host/engine/resources/TomlStrings.h"
#include "host/engine/settings/HomeFolder.h"
#include "host/engine/settings/TomlFile.h"
#include "host/json/NumberMembers.h"

namespace zq::panel {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t longestText_bytes = 4'000;
constexpr std::size_t largestFile_bytes = std::size_t{1} << 20;
constexpr double largestCache_MiB = 1 << 24;
constexpr double smallestThumbnail_px = 64;
constexpr double largestThumbnail_px = 640;

// A file with this at its top is written anew by the program that starts everything on embedded defaults.
constexpr std::string_view writtenAnew = "# Written by ./run at each start";

constexpr std::string_view themes[] = {"dark", "light", "system"};
constexpr std::string_view views[] = {"grid", "list"};

struct LanguageName {
    std::string_view code;
    std::string_view name; // in the language itself
};
constexpr LanguageName languageNames[] = {
    {"de", "Deutsch"},  {"en", "English"}, {"es", "Español"}, {"fr", "Français"},
    {"it", "Italiano"}, {"ja", "日本語"},  {"ko", "한국어"},  {"zh", "中文"},
};

std::vector<std::string> languages() {
    return engine::availableLanguages(engine::findStringsFolder(engine::findProgramFolder()));
}

std::string nameOf(std::string const& code) {
    auto const* const found = std::ranges::find(languageNames, code, &LanguageName::code);
    return std::string(found != std::end(languageNames) ? found->name : code);
}

[[noreturn]] void refuse(std::string_view name, std::string const& what,
                         Reason reason = Reason::unusableValue) {
    throw ApiError(ErrorCode::badRequest, "\"" + std::string(name) + "\" " + what, reason);
}

// What is kept, where it is one of the words.
std::string choice(std::string const& kept, std::span<std::string_view const> words, std::string otherwise) {
    return std::ranges::find(words, kept) != words.end() ? kept : std::move(otherwise);
}

// How the page looks, whatever a person has written into the file.
PageLooks looksIn(PanelMemory const& memory) {
    PageLooks const usual;
    PageLooks looks = memory.looks();
    looks.theme = choice(looks.theme, themes, usual.theme);
    looks.view = choice(looks.view, views, usual.view);
    bool const fits = looks.thumbnail_px >= smallestThumbnail_px && looks.thumbnail_px <= largestThumbnail_px;
    looks.thumbnail_px = fits ? looks.thumbnail_px : usual.thumbnail_px;
    return looks;
}

// The body's members, each looked at.
class Body {
public:
    explicit Body(Request const& request) : body_(JSON::orEmpty(request.body)) {}

    [[nodiscard]] std::optional<std::string> text(std::string_view name) const {
        auto const texts = body_.strings();
        auto const found = std::ranges::find(texts, name, &JSON::StringMember::key);
        if (found == texts.end()) {
            if (has(body_.numbers(), name) || has(body_.flags(), name) || has(body_.children(), name)) {
                refuse(name, "is a text");
            }
            return std::nullopt;
        }
        if (found->value.size() > longestText_bytes) {
            refuse(name, "is too long");
        }
        bool const isPlain = std::ranges::none_of(found->value, [](char character) {
            auto const byte = static_cast<unsigned char>(character);
            return byte < ' ' || byte == 0x7f;
        });
        if (!isPlain) {
            refuse(name, "has control characters");
        }
        return std::string(found->value);
    }
    [[nodiscard]] std::optional<std::int64_t> number(std::string_view name, double least, double most) const {
        std::optional<double> const number = JSON::findNumber(body_, name);
        bool const isOther =
            has(body_.strings(), name) || has(body_.flags(), name) || has(body_.children(), name);
        if (isOther ||
            (number && (!(*number >= least && *number <= most) || *number != std::floor(*number)))) {
            refuse(name,
                   "is a whole number from " + std::to_string(static_cast<std::int64_t>(least)) + " to " +
                       std::to_string(static_cast<std::int64_t>(most)),
                   Reason::outOfRange);
        }
        return number ? std::optional(static_cast<std::int64_t>(*number)) : std::nullopt;
    }
    [[nodiscard]] std::optional<std::string> word(std::string_view name,
                                                  std::span<std::string_view const> words) const {
        std::optional<std::string> value = text(name);
        if (value && std::ranges::find(words, *value) == words.end()) {
            refuse(name, "cannot be \"" + *value + "\"");
        }
        return value;
    }
    // A place of this machine; empty for the usual one.
    [[nodiscard]] std::optional<std::string> path(std::string_view name) const {
        std::optional<std::string> value = text(name);
        if (value && !value->empty() && !value->starts_with('/') && !value->starts_with("~/")) {
            refuse(name, "is a path from \"/\" or \"~/\" on", Reason::noPath);
        }
        return value;
    }

private:
    template <class Members>
    static bool has(Members const& members, std::string_view name) {
        return std::ranges::any_of(members, [name](auto const& member) { return member.key == name; });
    }

    JSON::Element const& body_;
};

void addPath(std::vector<TomlChange>& changes, std::string table, std::string key,
             std::optional<std::string> const& value) {
    if (value && value->empty()) {
        changes.push_back({std::move(table), std::move(key), std::nullopt});
    } else if (value) {
        changes.push_back({std::move(table), std::move(key), *value});
    }
}

std::vector<TomlChange> hostChanges(Body const& body) {
    std::vector<TomlChange> changes;
    if (std::optional<std::string> const language = body.text("language")) {
        std::vector<std::string> const known = languages();
        if (!language->empty() && std::ranges::find(known, *language) == known.end()) {
            refuse("language", "is none of the host's: \"" + *language + "\"");
        }
        addPath(changes, "", "language", language);
    }
    addPath(changes, "folders", "media", body.path("mediaFolder"));
    addPath(changes, "folders", "cache", body.path("cacheFolder"));
    if (auto const limit = body.number("cacheLimitMiB", 1, largestCache_MiB)) {
        changes.push_back({"folders", "cache_limit_mib", *limit});
    }
    if (std::optional<std::string> const proxy = body.text("proxy")) {
        if (proxy->find(' ') != std::string::npos) {
            refuse("proxy", "is an address, as http://host:port", Reason::noAddress);
        }
        addPath(changes, "network", "proxy", proxy);
    }
    addPath(changes, "network", "ca_file", body.path("caFile"));
    return changes;
}

void dropMark(std::string& text) {
    if (text.starts_with(writtenAnew)) {
        text.erase(0, std::min(text.find('\n'), text.size() - 1) + 1);
    }
}

fs::path settingsFile(engine::Engine const& engine) {
    return engine.home() / "host.toml";
}

void requireFolder(std::string_view name, fs::path const& folder) {
    std::error_code error;
    fs::file_status const status = fs::status(folder, error);
    if (status.type() != fs::file_type::not_found && status.type() != fs::file_type::directory) {
        refuse(name, "leads to " + folder.native() + ", which is no folder that can be reached",
               Reason::noFolder);
    }
}

void changeHostFile(engine::Engine const& engine, std::span<TomlChange const> changes) {
    fs::path file = settingsFile(engine);
    std::error_code error;
    if (fs::exists(file, error)) {
        file = fs::canonical(file, error); // a link stays one
    }
    std::optional<std::string> text = std::string();
    if (error || fs::exists(file, error)) {
        text = engine::readWholeFile(file, largestFile_bytes);
    }
    if (!text) {
        throw ApiError(ErrorCode::conflict, file.native() + " cannot be read", Reason::settingsFile);
    }
    std::string changed;
    try {
        changed = changeToml(*text, file, changes);
    } catch (engine::TomlMistake const& mistake) {
        throw ApiError(ErrorCode::conflict, mistake.what(), Reason::settingsFile);
    }
    if (changed == *text) {
        return;
    }
    dropMark(changed);
    // Relative paths in it start at its home, wherever a link leads.
    engine::Result<engine::HostSettings> const settings =
        engine::parseHostSettings(changed, settingsFile(engine));
    if (!settings) {
        bool const wasGood = static_cast<bool>(engine::parseHostSettings(*text, settingsFile(engine)));
        throw ApiError(wasGood ? ErrorCode::badRequest : ErrorCode::conflict, settings.error(),
                       wasGood ? Reason::unusableValue : Reason::settingsFile);
    }
    requireFolder("mediaFolder", settings->mediaFolder);
    requireFolder("cacheFolder", settings->cacheFolder);
    if (!engine::writeWholeFile(file, changed, engine::Durability::synced)) {
        throw ApiError(ErrorCode::conflict, file.native() + " cannot be written", Reason::settingsFile);
    }
}

std::vector<std::string> needingRestart(engine::HostSettings const& now,
                                        engine::HostSettings const& atStart) {
    std::vector<std::string> names;
    auto const compare = [&names](char const* name, auto const& a, auto const& b) {
        if (a != b) {
            names.emplace_back(name);
        }
    };
    compare("language", now.language, atStart.language);
    compare("mediaFolder", now.mediaFolder, atStart.mediaFolder);
    compare("cacheFolder", now.cacheFolder, atStart.cacheFolder);
    compare("cacheLimitMiB", now.cacheLimit_MiB, atStart.cacheLimit_MiB);
    compare("proxy", now.network.proxy, atStart.network.proxy);
    compare("caFile", now.network.caFile, atStart.network.caFile);
    return names;
}

} // namespace

std::string PanelSettings::language() const {
    engine::Result<engine::HostSettings> const now = engine::loadHostSettings(engine_.home());
    // One that was set before the program began gives way to its command line.
    bool const isNew = now && now->language != engine_.settings().language;
    return isNew && !now->language.empty() ? now->language : engine_.language();
}

std::string PanelSettings::theme() const {
    return looksIn(memory_).theme;
}

std::string PanelSettings::json() const {
    engine::HostSettings const& atStart = engine_.settings();
    engine::Result<engine::HostSettings> const loaded = engine::loadHostSettings(engine_.home());
    engine::HostSettings const& now = loaded ? *loaded : atStart; // a mistake is told when it is changed
    JSON::Builder json;
    json.startChild(nullptr);
    addText(json, "language", language());
    json.startArray("languages");
    for (std::string const& code : languages()) {
        json.startChild(nullptr);
        addText(json, "code", code);
        addText(json, "name", nameOf(code));
        json.endChild();
    }
    json.endArray();
    PageLooks const looks = looksIn(memory_);
    addText(json, "theme", looks.theme);
    addText(json, "mediaFolder", now.mediaFolder.native());
    addText(json, "cacheFolder", now.cacheFolder.native());
    addNumber(json, "cacheLimitMiB", now.cacheLimit_MiB);
    addNumber(json, "cacheUsed", cacheSize(atStart.cacheFolder));
    addText(json, "proxy", now.network.proxy);
    addText(json, "caFile", now.network.caFile.native());
    std::vector<WideString> pairs;
    for (auto const& [asked, reached] : now.network.connect) {
        pairs.push_back(L"[" + quoted(wide(asked)) + L"," + quoted(wide(reached)) + L"]");
    }
    addItems(json, "connect", pairs);
    addNumber(json, "thumbnailSize", looks.thumbnail_px);
    addText(json, "view", looks.view);
    addTexts(json, "needsRestart", needingRestart(now, atStart));
    addText(json, "path", settingsFile(engine_).native());
    json.endChild();
    return utf8(json.getOutput());
}

void PanelSettings::change(Request const& request) {
    Body const body(request);
    std::vector<TomlChange> const changes = hostChanges(body);
    std::optional<std::string> const newTheme = body.word("theme", themes);
    std::optional<std::string> const newView = body.word("view", views);
    auto const thumbnail = body.number("thumbnailSize", smallestThumbnail_px, largestThumbnail_px);
    {
        std::lock_guard const lock(changing_);
        if (!changes.empty()) {
            changeHostFile(engine_, changes);
        }
        if (newTheme || newView || thumbnail) {
            PageLooks looks = looksIn(memory_);
            looks.theme = newTheme.value_or(looks.theme);
            looks.view = newView.value_or(looks.view);
            looks.thumbnail_px = static_cast<std::int32_t>(thumbnail.value_or(looks.thumbnail_px));
            memory_.setLooks(looks);
        }
    }
    events_.send("settings", json());
}

std::uint64_t PanelSettings::clearCache() {
    std::uint64_t const freed = clearCacheFolder(engine_.settings().cacheFolder);
    events_.send("settings", json());
    return freed;
}

} // namespace zq::panel
