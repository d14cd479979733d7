#include "apps/zq/panel/PanelMemory.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <sstream>
#include <utility>

#include "apps/zq/Text.h"
#include "host/engine/files/WholeFile.h"
#include "host/engine/settings/TomlFile.h"
#include "host/log/Log.h"

namespace zq::panel {

namespace {

// The file is a person's to edit; below are ports that need rights.
constexpr std::int64_t lowestPort = 1024;
constexpr std::int64_t highestPort = 65'535;
constexpr std::size_t largestFile_bytes = std::size_t{16} << 20;
constexpr std::string_view head = "# What the panel remembers. It is written anew at each change.\n";

// Services and browsers may send what is no UTF-8, which TOML cannot hold.
std::string wellFormed(std::string const& text) {
    return utf8(wide(text));
}

toml::table& tableIn(toml::table& table, std::string_view key) {
    toml::table* const found = table[key].as_table();
    return found != nullptr ? *found : *table.insert_or_assign(key, toml::table()).first->second.as_table();
}

toml::table& repositoryIn(toml::table& root, std::string const& shortName) {
    return tableIn(tableIn(root, "repositories"), wellFormed(shortName));
}

std::string textOf(toml::table const& table, std::string_view key) {
    return table[key].value_or(std::string());
}

} // namespace

class PanelMemory::Implementation {
public:
    explicit Implementation(std::filesystem::path file)
        : file_(std::move(file)), values_(read().value_or(toml::table())) {}

    // Looks at the values.
    template <class Look>
    auto see(Look const& look) {
        std::lock_guard const lock(mutex_);
        return look(std::as_const(values_));
    }

    template <class Change>
    void change(Change const& change) {
        std::lock_guard const lock(mutex_);
        if (std::optional<toml::table> now = read()) {
            values_ = *std::move(now);
        }
        change(values_);
        std::ostringstream text;
        text << head << toml::toml_formatter(values_, toml::format_flags::none) << '\n';
        if (!engine::writeWholeFile(file_, text.str(), engine::Durability::cache, engine::Readers::owner)) {
            Log("%s cannot be written: what the panel should remember is lost at its end", file_.c_str());
        }
    }

private:
    [[nodiscard]] std::optional<toml::table> read() const {
        std::error_code error;
        if (!std::filesystem::exists(file_, error)) {
            return std::nullopt;
        }
        std::optional<std::string> const text = engine::readWholeFile(file_, largestFile_bytes);
        if (!text) {
            Log("%s cannot be read: the panel remembers nothing", file_.c_str());
            return std::nullopt;
        }
        try {
            return engine::parseToml(*text, file_);
        } catch (engine::TomlMistake const& mistake) {
            Log("What the panel remembers cannot be read: %s", mistake.what());
            return std::nullopt;
        }
    }

    std::filesystem::path const file_;
    std::mutex mutex_;
    toml::table values_;
};

PanelMemory::PanelMemory(std::filesystem::path file)
    : implementation_(std::make_unique<Implementation>(std::move(file))) {}

PanelMemory::~PanelMemory() = default;

PageLooks PanelMemory::looks() const {
    return implementation_->see([](toml::table const& values) {
        PageLooks looks;
        looks.theme = values["theme"].value_or(looks.theme);
        looks.view = values["view"].value_or(looks.view);
        looks.thumbnail_px = values["thumbnail_size"].value_or(looks.thumbnail_px);
        return looks;
    });
}

void PanelMemory::setLooks(PageLooks const& looks) {
    implementation_->change([&](toml::table& values) {
        values.insert_or_assign("theme", looks.theme);
        values.insert_or_assign("view", looks.view);
        values.insert_or_assign("thumbnail_size", looks.thumbnail_px);
    });
}

std::string PanelMemory::words(std::string const& repository) const {
    return implementation_->see([&](toml::table const& values) {
        return values["repositories"][wellFormed(repository)]["words"].value_or(std::string());
    });
}

void PanelMemory::setWords(std::string const& repository, std::string const& words) {
    std::string const kept = wellFormed(words);
    if (this->words(repository) == kept) {
        return;
    }
    implementation_->change(
        [&](toml::table& values) { repositoryIn(values, repository).insert_or_assign("words", kept); });
}

std::vector<BasketClip> PanelMemory::basket(std::string const& repository) const {
    return implementation_->see([&](toml::table const& values) {
        std::vector<BasketClip> clips;
        toml::array const* const list = values["repositories"][wellFormed(repository)]["basket"].as_array();
        if (list == nullptr) {
            return clips;
        }
        for (toml::node const& item : *list) {
            toml::table const* const clip = item.as_table();
            if (clip != nullptr && !textOf(*clip, "id").empty()) {
                clips.push_back({textOf(*clip, "id"), textOf(*clip, "name"), textOf(*clip, "price")});
            }
        }
        return clips;
    });
}

void PanelMemory::setBasket(std::string const& repository, std::vector<BasketClip> const& clips) {
    toml::array list;
    for (BasketClip const& clip : clips) {
        list.push_back(toml::table{
            {"id", wellFormed(clip.id)}, {"name", wellFormed(clip.name)}, {"price", wellFormed(clip.price)}});
    }
    implementation_->change(
        [&](toml::table& values) { repositoryIn(values, repository).insert_or_assign("basket", list); });
}

std::optional<bool> PanelMemory::isFilter(std::string const& repository, std::string const& option) const {
    return implementation_->see([&](toml::table const& values) {
        return values["repositories"][wellFormed(repository)]["filters"][wellFormed(option)].value<bool>();
    });
}

void PanelMemory::setIsFilter(std::string const& repository, std::string const& option, bool isFilter) {
    if (this->isFilter(repository, option) != isFilter) {
        implementation_->change([&](toml::table& values) {
            tableIn(repositoryIn(values, repository), "filters")
                .insert_or_assign(wellFormed(option), isFilter);
        });
    }
}

std::vector<int> PanelMemory::ports() const {
    return implementation_->see([](toml::table const& values) {
        std::vector<int> ports;
        if (toml::array const* const list = values["ports"].as_array()) {
            for (toml::node const& item : *list) {
                std::int64_t const port = item.value_or(std::int64_t{0});
                if (port >= lowestPort && port <= highestPort && ports.size() < mostPorts) {
                    ports.push_back(static_cast<int>(port));
                }
            }
        }
        return ports;
    });
}

void PanelMemory::addPort(int port) {
    std::vector<int> const before = ports();
    if (before.size() >= mostPorts || std::ranges::find(before, port) != before.end()) {
        return;
    }
    implementation_->change([&](toml::table& values) {
        toml::array* list = values["ports"].as_array();
        if (list == nullptr) {
            list = values.insert_or_assign("ports", toml::array()).first->second.as_array();
        }
        list->push_back(port);
    });
}

} // namespace zq::panel
