#include "host/json/Builder.h"

#include "host/text/Numbers.h"
#include "host/text/Unicode.h"

namespace JSON {

void Builder::separate() {
    if (!first_) {
        output_.append(L',');
    }
    first_ = false;
}

void Builder::writeKey(char const* key) {
    separate();
    writeQuoted(fromUTF8(std::string_view(key != nullptr ? key : "")).view());
    output_.append(L':');
}

void Builder::open(char const* key, wchar_t bracket) {
    if (key != nullptr || (!objects_.empty() && objects_.back())) {
        writeKey(key);
    } else {
        separate();
    }
    output_.append(bracket);
    objects_.push_back(bracket == L'{');
    first_ = true;
}

void Builder::close(wchar_t bracket) {
    output_.append(bracket);
    if (!objects_.empty()) {
        objects_.pop_back();
    }
    first_ = false;
}

void Builder::startChild(char const* key) {
    open(key, L'{');
}
void Builder::endChild() {
    close(L'}');
}
void Builder::startArray(char const* key) {
    open(key, L'[');
}
void Builder::endArray() {
    close(L']');
}

void Builder::add(char const* key, WideString const& value, bool quoted) {
    writeKey(key);
    if (quoted) {
        writeQuoted(value.view());
    } else {
        output_.append(value.view());
    }
}

void Builder::add(char const* key, std::int32_t value) {
    writeKey(key);
    output_.append(Zq::WStringFromInteger(value).view());
}

void Builder::add(char const* key, bool value) {
    writeKey(key);
    output_.append(std::wstring_view(value ? L"true" : L"false"));
}

// Escapes what RFC 8259, section 7 requires: the quotation mark, the backslash and the control characters.
void Builder::writeQuoted(std::wstring_view text) {
    static constexpr char digits[] = "0123456789abcdef";
    output_.append(L'"');
    std::size_t plain = 0; // start of the run that needs no escape
    for (std::size_t i = 0; i < text.size(); ++i) {
        wchar_t const character = text[i];
        if (static_cast<char32_t>(character) >= 0x20 && character != L'"' && character != L'\\') {
            continue;
        }
        output_.append(text.substr(plain, i - plain));
        plain = i + 1;
        output_.append(L'\\');
        switch (character) {
        case L'\b':
            output_.append(L'b');
            break;
        case L'\f':
            output_.append(L'f');
            break;
        case L'\n':
            output_.append(L'n');
            break;
        case L'\r':
            output_.append(L'r');
            break;
        case L'\t':
            output_.append(L't');
            break;
        case L'"':
        case L'\\':
            output_.append(character);
            break;
        default: {
            auto const code = static_cast<unsigned>(character);
            wchar_t const escape[] = {L'u', L'0', L'0', static_cast<wchar_t>(digits[(code >> 4) & 15]),
                                      static_cast<wchar_t>(digits[code & 15])};
            output_.append(std::wstring_view(escape, 5));
        }
        }
    }
    output_.append(text.substr(plain));
    output_.append(L'"');
}

} // namespace JSON
