#include "host/engine/log/maskSecrets.h"

#include <algorithm>
#include <array>

namespace engine {

namespace {

// In lower case. A longer name that ends in one of these counts too.
constexpr std::array<std::string_view, 11> secretNames = {
    "password", "passwd",        "passphrase", "apicx",         "apicm",     "api_key",
    "apikey",   "commands_hash", "secret",     "authorization", "signature",
};

char lower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A')) : character;
}

bool startsWith(std::string_view text, std::string_view word) {
    return text.size() >= word.size() && std::ranges::equal(text.substr(0, word.size()), word, {}, lower);
}

// A character of a line that may be percent-encoded.
struct Character {
    char value;
    std::size_t length; // in the line
};

Character characterAt(std::string_view text) {
    struct Encoded {
        std::string_view text;
        char value;
    };
    static constexpr std::array<Encoded, 6> known = {
        {{"%22", '"'}, {"%27", '\''}, {"%3a", ':'}, {"%3d", '='}, {"%5c", '\\'}, {"%20", ' '}}};
    for (Encoded const& encoded : known) {
        if (startsWith(text, encoded.text)) {
            return {encoded.value, encoded.text.size()};
        }
    }
    return {text.front(), 1};
}

// What stands between a name and its value: quotes, backslashes in front of them, blanks, and one ":" or "=".
struct Separator {
    std::size_t length = 0;
    char assignment = '\0';
    bool blank = false;          // behind the assignment
    char quote = '\0';           // opens the value; 0 where none does
    std::size_t backslashes = 0; // in front of that quote
};

Separator separatorOf(std::string_view text) {
    Separator found;
    while (found.length < text.size()) {
        auto const [character, length] = characterAt(text.substr(found.length));
        if (found.assignment != '\0' && (character == '"' || character == '\'')) {
            found.length += length;
            found.quote = character;
            return found;
        }
        if (character == '\\') {
            ++found.backslashes;
        } else if (character == '"' || character == '\'' || character == ' ') {
            found.backslashes = 0;
            found.blank = found.assignment != '\0';
        } else if (found.assignment == '\0' && (character == ':' || character == '=')) {
            found.backslashes = 0;
            found.assignment = character;
        } else {
            break;
        }
        found.length += length;
    }
    return found;
}

// True when a quote behind `count` backslashes ends the text that a quote behind `opening` ones began: each
// level of text in text doubles the backslashes. Deeper levels than one run on to the end of the line.
bool closes(std::size_t count, std::size_t opening) {
    return count < opening || (opening == 0 && count % 2 == 0) || (opening == 1 && count % 4 == 1);
}

std::size_t quotedLength(std::string_view text, Separator const& separator) {
    std::size_t backslashes = 0;
    std::size_t width = 1; // of one of them in the line
    for (std::size_t i = 0; i < text.size();) {
        auto const [character, length] = characterAt(text.substr(i));
        if (character == separator.quote && closes(backslashes, separator.backslashes)) {
            return i - std::min(backslashes, separator.backslashes) * width;
        }
        backslashes = character == '\\' ? backslashes + 1 : 0;
        width = character == '\\' ? length : width;
        i += length;
    }
    return text.size();
}

std::size_t valueLength(std::string_view text, Separator const& separator) {
    if (separator.quote != '\0') {
        return quotedLength(text, separator);
    }
    // A value behind "name: " may be several words, as that of a header is.
    std::string_view const ends = separator.blank ? "&" : "& \t;,\"')}]";
    return std::min(text.find_first_of(ends), text.size());
}

} // namespace

std::string maskSecrets(std::string_view line) {
    std::string result;
    result.reserve(line.size());
    while (!line.empty()) {
        auto const* const name = std::ranges::find_if(
            secretNames, [line](std::string_view word) { return startsWith(line, word); });
        Separator const separator =
            name != secretNames.end() ? separatorOf(line.substr(name->size())) : Separator();
        if (separator.assignment == '\0') {
            result += line.front();
            line.remove_prefix(1);
            continue;
        }
        std::size_t const value = name->size() + separator.length;
        result += line.substr(0, value);
        line.remove_prefix(value);
        if (std::size_t const length = valueLength(line, separator); length != 0) {
            result += "***";
            line.remove_prefix(length);
        }
    }
    return result;
}

} // namespace engine
