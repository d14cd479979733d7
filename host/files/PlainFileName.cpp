#include "host/files/PlainFileName.h"

#include <algorithm>

#include "host/text/Unicode.h"
#include "host/text/oneLine.h"

namespace Zq {

namespace {

constexpr std::uint32_t longestExtension = 16; // in code units
constexpr wchar_t substitute = L'_';

bool isHighSurrogate(char32_t unit) {
    return unit >= 0xd800 && unit < 0xdc00;
}
bool isLowSurrogate(char32_t unit) {
    return unit >= 0xdc00 && unit < 0xe000;
}

// Marks that change the direction of the text around them make a name look like another one.
bool isDirectionMark(char32_t unit) {
    return unit == 0x061c || unit == 0x200e || unit == 0x200f || (unit >= 0x202a && unit <= 0x202e) ||
           (unit >= 0x2066 && unit <= 0x2069);
}

bool isForbidden(char32_t unit) {
    bool const isReserved =
        unit < 0x7f && std::u32string_view(U"/\\<>:\"|?*").find(unit) != std::u32string_view::npos;
    return breaksLine(static_cast<wchar_t>(unit)) || isReserved || isDirectionMark(unit) || unit > 0xffff;
}

bool isDotOrBlank(wchar_t unit) {
    return unit == L'.' || unit == L' ';
}

wchar_t upper(wchar_t unit) {
    return unit >= L'a' && unit <= L'z' ? static_cast<wchar_t>(unit - 32) : unit;
}

// Names of devices, which some systems see in every folder and whatever extension follows.
bool isDeviceName(std::wstring_view name) {
    std::wstring_view stem = name.substr(0, name.find(L'.'));
    while (!stem.empty() && stem.back() == L' ') {
        stem.remove_suffix(1);
    }
    auto const equals = [](std::wstring_view text, std::wstring_view device) {
        return std::ranges::equal(text, device, {}, upper);
    };
    for (wchar_t const* const device : {L"CON", L"PRN", L"AUX", L"NUL", L"CONIN$", L"CONOUT$", L"CLOCK$"}) {
        if (equals(stem, device)) {
            return true;
        }
    }
    if (stem.size() != 4 || !(equals(stem.substr(0, 3), L"COM") || equals(stem.substr(0, 3), L"LPT"))) {
        return false;
    }
    // The superscript digits 1, 2 and 3 count as digits here.
    return std::wstring_view(L"0123456789\u00b9\u00b2\u00b3").find(stem[3]) != std::wstring_view::npos;
}

// Each offending character replaced; the number of characters may shrink, a pair is kept as a pair.
WideString withoutForbidden(std::wstring_view name) {
    WideString result;
    result.reserve(static_cast<std::uint32_t>(name.size()));
    for (std::size_t i = 0; i < name.size(); ++i) {
        auto const unit = static_cast<char32_t>(name[i]);
        if (isHighSurrogate(unit) && i + 1 < name.size() &&
            isLowSurrogate(static_cast<char32_t>(name[i + 1]))) {
            result.append(name.substr(i, 2));
            ++i;
        } else {
            bool const isLone = isHighSurrogate(unit) || isLowSurrogate(unit);
            result.append(isLone || isForbidden(unit) ? substitute : name[i]);
        }
    }
    return result;
}

bool isPlain(std::wstring_view name, std::uint32_t limit_bytes) {
    return !name.empty() && !isDotOrBlank(name.back()) && withoutForbidden(name).view() == name &&
           !isDeviceName(name) && toUTF8(name).length() <= limit_bytes;
}

// Sixteen digits that differ wherever two names differ: the 64-bit FNV-1a hash of the code units.
WideString fingerprint(std::wstring_view name) {
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (wchar_t const unit : name) {
        for (unsigned shift = 0; shift < 32; shift += 8) {
            hash = (hash ^ ((static_cast<std::uint32_t>(unit) >> shift) & 0xffU)) * 0x100000001b3U;
        }
    }
    WideString digits;
    for (int shift = 60; shift >= 0; shift -= 4) {
        digits.append(L"0123456789abcdef"[(hash >> shift) & 0xfU]);
    }
    return digits;
}

// The longest beginning that takes no more than the limit and splits no pair.
std::wstring_view cut(std::wstring_view text, std::uint32_t limit_bytes) {
    std::uint32_t bytes = 0;
    std::size_t taken = 0;
    while (taken < text.size()) {
        std::size_t const units = isHighSurrogate(static_cast<char32_t>(text[taken])) ? 2 : 1;
        bytes += toUTF8(text.substr(taken, units)).length();
        if (bytes > limit_bytes) {
            break;
        }
        taken += units;
    }
    return text.substr(0, taken);
}

} // namespace

WideString plainFileName(std::wstring_view name, std::uint32_t limit_bytes) {
    if (isPlain(name, limit_bytes)) {
        return WideString(name);
    }
    WideString harmless = withoutForbidden(name);
    harmless.replaceAll(L"..", L"_");
    std::wstring_view stem = harmless.view();
    while (!stem.empty() && isDotOrBlank(stem.back())) {
        stem.remove_suffix(1);
    }
    std::wstring_view extension;
    std::size_t const dot = stem.rfind(L'.');
    if (dot != std::wstring_view::npos && dot != 0 && stem.size() - dot - 1 <= longestExtension) {
        extension = stem.substr(dot);
        stem.remove_suffix(extension.size());
    }
    WideString tail = WideString(1, substitute) + fingerprint(name);
    tail.append(extension);
    std::uint32_t const tail_bytes = toUTF8(tail).length();
    WideString result;
    if (stem.starts_with(L'.') || isDeviceName(stem)) {
        result.append(substitute);
    }
    std::uint32_t const room_bytes = limit_bytes - result.length();
    result.append(cut(stem, room_bytes > tail_bytes ? room_bytes - tail_bytes : 0));
    return result + tail;
}

} // namespace Zq
