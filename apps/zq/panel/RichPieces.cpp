#include "apps/zq/panel/RichPieces.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "apps/zq/JsonOutput.h"
#include "host/engine/os/BrowserUrl.h"

namespace zq::panel {

namespace {

constexpr std::pair<std::string_view, char> entities[] = {
    {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&#39;", '\''},
};

bool take(std::string_view& rest, std::string_view beginning) {
    if (!rest.starts_with(beginning)) {
        return false;
    }
    rest.remove_prefix(beginning.size());
    return true;
}

// The first character, with a named one as itself.
char takeCharacter(std::string_view& rest) {
    for (auto const& [name, character] : entities) {
        if (take(rest, name)) {
            return character;
        }
    }
    char const character = rest.front();
    rest.remove_prefix(1);
    return character;
}

// The declarations of a paragraph: a width in pixels and a colour, each at most once and in this order.
bool isParagraphStyle(std::string_view style) {
    if (take(style, "width:")) {
        std::size_t const digits = std::min(style.find_first_not_of("0123456789"), style.size());
        style.remove_prefix(digits);
        if (digits == 0 || !take(style, "px;")) {
            return false;
        }
    }
    if (take(style, "color:#")) {
        constexpr std::size_t length = 6;
        bool const isColour =
            style.size() > length &&
            style.substr(0, length).find_first_not_of("0123456789abcdef") == std::string_view::npos &&
            style[length] == ';';
        if (!isColour) {
            return false;
        }
        style.remove_prefix(length + 1);
    }
    return style.empty();
}

bool takeParagraph(std::string_view& rest) {
    if (take(rest, "<p>")) {
        return true;
    }
    std::string_view tag = rest;
    if (!take(tag, "<p style=\"")) {
        return false;
    }
    std::size_t const end = tag.find('"');
    if (end == std::string_view::npos || !tag.substr(end).starts_with("\">") ||
        !isParagraphStyle(tag.substr(0, end))) {
        return false;
    }
    rest = tag.substr(end + 2);
    return true;
}

// The address of a link that is closed again.
std::optional<std::string> takeLink(std::string_view& rest) {
    std::string_view tag = rest;
    if (!take(tag, "<a href=\"")) {
        return std::nullopt;
    }
    std::size_t const end = tag.find('"');
    if (end == std::string_view::npos || !tag.substr(end).starts_with("\">")) {
        return std::nullopt;
    }
    std::string address;
    for (std::string_view href = tag.substr(0, end); !href.empty();) {
        address += takeCharacter(href);
    }
    tag.remove_prefix(end + 2);
    std::optional<std::string> url = engine::browserUrl(wide(address));
    if (!url || tag.find("</a>") == std::string_view::npos) {
        return std::nullopt;
    }
    rest = tag;
    return url;
}

class Reader {
public:
    [[nodiscard]] std::vector<RichPiece> read(std::string_view rest) {
        while (!rest.empty()) {
            if (rest.front() != '<' || !takeTag(rest)) {
                add(takeCharacter(rest));
            }
        }
        return std::move(pieces_);
    }

private:
    bool takeTag(std::string_view& rest) {
        if (takeParagraph(rest)) {
            ++paragraphs_;
            breaks_ = !pieces_.empty();
            return true;
        }
        if (paragraphs_ > 0 && take(rest, "</p>")) {
            --paragraphs_;
            breaks_ = true;
            return true;
        }
        if (!quiet_ && rest.starts_with("<small>") && rest.find("</small>") != std::string_view::npos) {
            quiet_ = take(rest, "<small>");
            return true;
        }
        if (quiet_ && take(rest, "</small>")) {
            quiet_ = false;
            return true;
        }
        if (link_.empty()) {
            std::optional<std::string> link = takeLink(rest);
            link_ = link.value_or(std::string());
            return link.has_value();
        }
        if (take(rest, "</a>")) {
            link_.clear();
            return true;
        }
        return false;
    }

    void add(char character) {
        if (std::exchange(breaks_, false) && !pieces_.empty()) {
            append('\n', std::string(), false);
        }
        append(character, link_, quiet_);
    }

    void append(char character, std::string const& link, bool quiet) {
        if (pieces_.empty() || pieces_.back().link != link || pieces_.back().quiet != quiet) {
            pieces_.push_back({std::string(), link, quiet});
        }
        pieces_.back().text += character;
    }

    std::vector<RichPiece> pieces_;
    std::string link_;
    bool quiet_ = false;
    bool breaks_ = false;
    int paragraphs_ = 0;
};

} // namespace

std::vector<RichPiece> piecesOf(std::string_view rich) {
    return Reader().read(rich.substr(0, longestRichText_bytes));
}

void addRich(JSON::Builder& json, char const* key, std::string_view rich, GivenLinks& links) {
    json.startArray(key);
    for (RichPiece const& piece : piecesOf(rich)) {
        json.startChild(nullptr);
        addText(json, "text", piece.text);
        if (!piece.link.empty()) {
            addText(json, "link", piece.link);
            links.remember(piece.link);
        }
        if (piece.quiet) {
            json.add("quiet", true);
        }
        json.endChild();
    }
    json.endArray();
}

} // namespace zq::panel
