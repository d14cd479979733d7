#include "apps/zq/RichText.h"

#include <utility>

namespace zq {

namespace {

constexpr std::pair<std::string_view, std::string_view> entities[] = {
    {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&#39;", "'"}, {"&nbsp;", " "}, {"&amp;", "&"},
};

} // namespace

std::string plainFromRich(std::string_view rich) {
    std::string plain;
    while (!rich.empty()) {
        if (rich.front() == '<') {
            std::size_t const end = rich.find('>');
            rich.remove_prefix(end == std::string_view::npos ? rich.size() : end + 1);
            continue;
        }
        std::size_t taken = 0;
        for (auto const& [name, character] : entities) {
            if (rich.starts_with(name)) {
                plain += character;
                taken = name.size();
                break;
            }
        }
        if (taken == 0) {
            plain += rich.front();
            taken = 1;
        }
        rich.remove_prefix(taken);
    }
    return plain;
}

} // namespace zq
