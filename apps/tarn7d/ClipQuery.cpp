#include "apps/tarn7d/ClipQuery.h"

#include <algorithm>

#include "apps/tarn7d/Text.h"

namespace tarn7d {

namespace {

constexpr int mostWords = 32;
constexpr std::size_t longestText = 4000;

std::int64_t scaled(std::int64_t value, std::int64_t factor) {
    std::int64_t const most = std::numeric_limits<std::int64_t>::max() / factor;
    return std::clamp(value, -most, most) * factor;
}

void atMost(std::int64_t& bound, std::int64_t value) {
    bound = std::min(bound, value);
}
void atLeast(std::int64_t& bound, std::int64_t value) {
    bound = std::max(bound, value);
}

bool applyFilter(std::string_view word, ClipQuery& query) {
    std::size_t const colon = word.find(':');
    std::int64_t number = 0;
    if (colon == std::string_view::npos || !parseInteger(word.substr(colon + 1), number)) {
        return false;
    }
    std::string_view const name = word.substr(0, colon);
    if (name == "pricelt") {
        atMost(query.highestPrice_cents, scaled(number, 100));
    } else if (name == "linesgt") {
        atLeast(query.linesAbove, number);
    } else if (name == "durationgt") {
        atLeast(query.durationAbove_ms, scaled(number, 1000));
    } else {
        return false;
    }
    return true;
}

bool isSearchable(std::string_view word) {
    return std::any_of(word.begin(), word.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
               static_cast<unsigned char>(c) >= 0x80;
    });
}

std::string quotedPrefix(std::string_view word) {
    std::string phrase = "\"";
    for (char const c : segmentForSearch(word)) {
        phrase += c;
        if (c == '"') {
            phrase += c;
        }
    }
    while (phrase.back() == ' ') {
        phrase.pop_back();
    }
    return phrase + "\"*";
}

std::string_view takeWord(std::string_view& text) {
    std::string_view rest = text;
    while (!rest.empty()) {
        std::string_view const before = rest;
        if (!isBlank(takeCharacter(rest))) {
            rest = before;
            break;
        }
    }
    std::string_view const start = rest;
    while (!rest.empty()) {
        std::string_view const before = rest;
        if (isBlank(takeCharacter(rest))) {
            rest = before;
            break;
        }
    }
    text = rest;
    return start.substr(0, start.size() - rest.size());
}

} // namespace

ClipQuery parseClipQuery(std::string_view text, FilterWords filterWords) {
    text = text.substr(0, longestText);
    ClipQuery query;
    int words = 0;
    while (!text.empty()) {
        std::string_view const word = takeWord(text);
        bool const isFilter = filterWords == FilterWords::read && applyFilter(word, query);
        if (isFilter || !isSearchable(word) || words == mostWords) {
            continue;
        }
        ++words;
        query.expression += query.expression.empty() ? "" : " ";
        query.expression += quotedPrefix(word);
    }
    return query;
}

} // namespace tarn7d
