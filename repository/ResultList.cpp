#include "repository/ResultList.h"

#include <cmath>
#include <utility>

#include "host/resources/resourceStr.h"
#include "host/text/Numbers.h"
#include "host/text/Unicode.h"

namespace {

constexpr ResId clipNames = 10663;

} // namespace

LightweightVector<LogAttribute> resultColumns(std::initializer_list<LogAttribute> attributes) {
    LightweightVector<LogAttribute> columns(attributes);
    columns.front().setDisplayName(UIString(resourceStrW(clipNames)));
    for (LogAttribute& column : columns) {
        column.flags &= ~std::uint32_t{LogAttribute::eEditable};
    }
    return columns;
}

ClipAttributes::ClipAttributes(WideString const& shortName, NarrowString source)
    : shortName_(toUTF8(shortName)), sourceName_(std::move(source)) {}

void ClipAttributes::addTo(RemoteAsset& asset, NarrowString name, std::int32_t number) const {
    asset.logAttributes.reserve(4); // a service adds one of its own at most
    asset.logAttributes.add(name_, std::move(name));
    NarrowString clipId = shortName_;
    Zq::appendInteger(clipId, number);
    asset.logAttributes.add(clipId_, std::move(clipId));
    asset.logAttributes.add(source_, sourceName_);
}

std::uint16_t countPages(std::uint16_t totalCount, std::uint16_t pageSize) noexcept {
    return pageSize == 0 ? std::uint16_t{0}
                         : static_cast<std::uint16_t>(
                               std::ceil(static_cast<float>(totalCount) / static_cast<float>(pageSize)));
}
