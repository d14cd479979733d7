#include "host/files/Paths.h"

#include <algorithm>
#include <string_view>

#include "host/files/PlainFileName.h"

namespace {

#if defined(_WIN32)
constexpr wchar_t separator = L'\\';
constexpr std::wstring_view separators = L"\\/";
constexpr std::wstring_view rootEnd = L":";
#else
constexpr wchar_t separator = L'/';
constexpr std::wstring_view separators = L"/";
constexpr std::wstring_view rootEnd = L"";
#endif
constexpr std::wstring_view separatorsOfAnySystem = L"/\\";

// A segment may still get a suffix such as ".partial", or a mark, before it becomes a file.
constexpr std::uint32_t longestSegment_bytes = Zq::longestFileName_bytes - 32;

bool isSeparator(wchar_t unit) {
    return separators.find(unit) != std::wstring_view::npos;
}

// Where the file name begins.
std::size_t nameStart(std::wstring_view path) {
    std::size_t const last = path.find_last_of(separators);
    return last == std::wstring_view::npos ? 0 : last + 1;
}

} // namespace

WideString joinPaths(WideString const& folder, WideString const& name) {
    WideString path = folder;
    if (!path.isEmpty() && !isSeparator(path[path.length() - 1])) {
        path += separator;
    }
    return path + Zq::plainFileName(name.view());
}

WideString getPath(WideString const& path) {
    std::wstring_view folder = path.view().substr(0, nameStart(path.view()));
    std::wstring_view const withSeparator = folder;
    while (!folder.empty() && isSeparator(folder.back())) {
        folder.remove_suffix(1);
    }
    // A root is its separator: without it, it would be another folder.
    if (folder.empty() || rootEnd.find(folder.back()) != std::wstring_view::npos) {
        folder = withSeparator.substr(0, folder.size() + (withSeparator.size() > folder.size() ? 1 : 0));
    }
    return WideString(folder);
}

WideString fixForeignOSFileName(WideString const& name) {
    std::wstring_view rest = name.view().substr(0, name.view().find_first_of(L"?#"));
    WideString result;
    while (!rest.empty()) {
        std::size_t const end = std::min(rest.find_first_of(separatorsOfAnySystem), rest.size());
        if (end == 0) {
            result += separator;
            rest.remove_prefix(1);
        } else {
            result += Zq::plainFileName(rest.substr(0, end), longestSegment_bytes);
            rest.remove_prefix(end);
        }
    }
    return result;
}

WideString stripPathAndExt(WideString const& path) {
    std::wstring_view name = path.view().substr(nameStart(path.view()));
    std::size_t const dot = name.rfind(L'.');
    if (dot != std::wstring_view::npos && dot != 0 && name != L"..") {
        name = name.substr(0, dot);
    }
    return WideString(name);
}
