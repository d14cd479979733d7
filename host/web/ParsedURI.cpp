#include "host/web/ParsedURI.h"

#include <algorithm>
#include <string_view>

#include "host/web/URIBuilder.h"

namespace {

constexpr std::wstring_view virtualPrefix = L"Virtual:";

wchar_t lower(wchar_t character) {
    return character >= L'A' && character <= L'Z' ? static_cast<wchar_t>(character + (L'a' - L'A'))
                                                  : character;
}

// True when `text` begins with `scheme`, in any letter case, and removes it.
bool takeScheme(std::wstring_view& text, std::wstring_view scheme) {
    if (text.size() < scheme.size() ||
        !std::ranges::equal(text.substr(0, scheme.size()), scheme, {}, lower)) {
        return false;
    }
    text.remove_prefix(scheme.size());
    return true;
}

bool isControl(wchar_t character) {
    return character < 0x20 || (character >= 0x7f && character < 0xa0);
}

bool isPort(std::wstring_view text) {
    int value = 0;
    for (wchar_t const character : text) {
        if (character < L'0' || character > L'9' || value > 6553) {
            return false;
        }
        value = value * 10 + (character - L'0');
    }
    return !text.empty() && value >= 1 && value <= 65535;
}

// A host name or an IPv6 literal in brackets, with a port or without.
bool isServer(std::wstring_view text) {
    if (text.starts_with(L'[')) {
        std::size_t const end = text.find(L']');
        if (end == std::wstring_view::npos || end == 1) {
            return false;
        }
        std::wstring_view const behind = text.substr(end + 1);
        std::wstring_view const address = text.substr(1, end - 1);
        return address.find_first_not_of(L"0123456789abcdefABCDEF:.") == std::wstring_view::npos &&
               (behind.empty() || (behind.front() == L':' && isPort(behind.substr(1))));
    }
    if (text.find_first_of(L" @\\[]<>\"'`{}|^%") != std::wstring_view::npos) {
        return false;
    }
    std::size_t const colon = text.find(L':');
    if (colon == std::wstring_view::npos) {
        return !text.empty();
    }
    return colon != 0 && isPort(text.substr(colon + 1));
}

} // namespace

ParsedURI ParsedURI::parse(WideString const& address) {
    std::wstring_view text = address.view();
    if (std::ranges::any_of(text, isControl)) {
        return {};
    }
    if (text.starts_with(virtualPrefix)) {
        // "Virtual:", the provider's name, one blank, the location.
        std::size_t const blank = text.find(L' ');
        if (blank == std::wstring_view::npos) {
            return {};
        }
        text.remove_prefix(blank + 1);
    }
    ParsedURI result;
    if (takeScheme(text, L"https://")) {
        result.secure = 1;
    } else if (!takeScheme(text, L"http://")) {
        return {};
    }
    std::size_t const end = std::min(text.find_first_of(L"/?#"), text.size());
    std::wstring_view const server = text.substr(0, end);
    if (!isServer(server)) {
        return {};
    }
    std::wstring_view rest = text.substr(end);
    rest = rest.substr(0, rest.find(L'#'));
    result.server = WideString(server);
    if (!rest.starts_with(L'/')) {
        result.path = L"/";
    }
    result.path.append(rest);
    return result;
}

WideString URIBuilder::join(WideString const& base, WideString const& relative) {
    std::wstring_view first = base.view();
    std::wstring_view second = relative.view();
    if (first.ends_with(L'/')) {
        first.remove_suffix(1);
    }
    if (second.starts_with(L'/')) {
        second.remove_prefix(1);
    }
    WideString result;
    result.reserve(static_cast<std::uint32_t>(first.size() + second.size() + 1));
    result.append(first);
    result.append(L'/');
    result.append(second);
    return result;
}
