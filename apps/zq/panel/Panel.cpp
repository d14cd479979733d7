#include "apps/zq/panel/Panel.h"

#include <algorithm>

#include "apps/zq/panel/ApiError.h"

namespace zq::panel {

RepositoryDesk& Panel::desk(std::string_view shortName) const {
    auto const found = std::ranges::find_if(
        desks, [&](std::unique_ptr<RepositoryDesk> const& desk) { return desk->shortName() == shortName; });
    if (found == desks.end()) {
        throw ApiError(ErrorCode::notFound, "there is no repository \"" + std::string(shortName) + "\"");
    }
    return **found;
}

} // namespace zq::panel
