#include "host/engine/files/LocalPath.h"

#include "host/text/Unicode.h"

namespace engine {

std::filesystem::path localPath(WideString const& text) {
    if (text.contains(std::wstring_view(L"\0", 1))) {
        return {};
    }
    return std::string(toUTF8(text).view());
}

WideString wideText(std::filesystem::path const& path) {
    return fromUTF8(std::string_view(path.native()));
}

} // namespace engine
