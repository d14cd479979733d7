#include "apps/zq/Words.h"

namespace zq {

std::optional<std::vector<std::string>> splitWords(std::string_view line) {
    std::vector<std::string> words;
    std::string word;
    bool inWord = false; // also for a word of nothing but quotes
    char quote = '\0';
    for (std::size_t i = 0; i < line.size(); ++i) {
        char const character = line[i];
        bool const isBlank = character == ' ' || (character >= '\t' && character <= '\r');
        if (quote == '\0' && isBlank) {
            if (inWord) {
                words.push_back(std::move(word));
                word.clear();
                inWord = false;
            }
            continue;
        }
        if (quote == '\0' && !inWord && character == '#') {
            return words;
        }
        inWord = true;
        if (quote == '\0' && (character == '\'' || character == '"')) {
            quote = character;
        } else if (character == quote) {
            quote = '\0';
        } else if (character == '\\' && quote != '\'') {
            if (++i == line.size()) {
                return std::nullopt;
            }
            word += line[i];
        } else {
            word += character;
        }
    }
    if (quote != '\0') {
        return std::nullopt;
    }
    if (inWord) {
        words.push_back(std::move(word));
    }
    return words;
}

} // namespace zq
