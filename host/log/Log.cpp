#include "host/log/Log.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <string>

#include "host/HostServices.h"
#include "host/text/Unicode.h"
#include "host/text/oneLine.h"

namespace {

constexpr std::size_t longestLine = 4096;

// The text up to the limit, without a character that lies across it.
std::string_view cut(std::string_view text) {
    if (text.size() <= longestLine) {
        return text;
    }
    std::size_t end = longestLine;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) {
        --end;
    }
    return text.substr(0, end);
}

} // namespace

iLogSink::~iLogSink() = default;

void Log(char const* format, ...) {
    iLogSink* const sink = installedHost().log;
    if (sink == nullptr) {
        return;
    }
    char text[longestLine + 2]; // one more than fits into a line: so cut() sees what follows
    std::va_list arguments;
    va_start(arguments, format);
    int const length = std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    if (length < 0) {
        return;
    }
    std::string_view written(text, std::min(static_cast<std::size_t>(length), sizeof text - 1));
    if (written.ends_with('\n')) {
        written.remove_suffix(1);
    }
    WideString const characters = fromUTF8(cut(written));
    WideString line;
    line.reserve(characters.length());
    for (wchar_t const character : characters) {
        if (!Zq::breaksLine(character)) {
            line += character;
            continue;
        }
        char escape[8];
        std::snprintf(escape, sizeof escape, character < 0x100 ? "\\x%02x" : "\\u%04x",
                      static_cast<unsigned>(character));
        for (char const* part = escape; *part != '\0'; ++part) {
            line += static_cast<wchar_t>(*part);
        }
    }
    sink->write(cut(toUTF8(line).view()));
}
