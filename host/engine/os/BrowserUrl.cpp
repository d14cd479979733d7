#include "host/engine/os/BrowserUrl.h"

#include <string_view>

#include "host/text/Unicode.h"
#include "host/web/ParsedURI.h"

namespace engine {

namespace {

// Characters of a path and query that stay; "%" too, as what is encoded already must not be encoded twice.
constexpr std::string_view plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
                                   "-._~/?:@!$&'()*+,;=%[]";

} // namespace

std::optional<std::string> browserUrl(WideString const& address) {
    ParsedURI const parsed = ParsedURI::parse(address);
    if (!parsed.valid() || address.startsWith(L"Virtual:")) {
        return std::nullopt;
    }
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string url = parsed.secure != 0 ? "https://" : "http://";
    url += toUTF8(parsed.server).view();
    for (char const character : toUTF8(parsed.path)) {
        if (plain.find(character) != std::string_view::npos) {
            url += character;
        } else {
            auto const byte = static_cast<unsigned char>(character);
            url += {'%', digits[byte >> 4], digits[byte & 15]};
        }
    }
    return url;
}

} // namespace engine
