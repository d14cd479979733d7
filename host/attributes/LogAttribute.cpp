#include "host/attributes/LogAttribute.h"

#include <algorithm>
#include <iterator>

namespace {

struct WellKnown {
    LogAttribute::eType type;
    std::uint32_t name; // in the host's strings
    char const* key;
};

constexpr WellKnown wellKnown[] = {
    {LogAttribute::eName, 10663, "name"},     {LogAttribute::eSource, 20006, "source"},
    {LogAttribute::eFrameRate, 20018, "fps"}, {LogAttribute::eClipId, 20023, "clip_id"},
    {LogAttribute::eFormat, 20045, "format"}, {LogAttribute::ePrice, 20059, "price"},
};

} // namespace

LogAttribute::LogAttribute(eType type) : flags(eShown | eEditable), type_(type) {
    auto const* const found = std::ranges::find(wellKnown, type, &WellKnown::type);
    if (found != std::end(wellKnown)) {
        displayName_.resource = found->name;
        key_ = found->key;
    }
}

LogAttribute::LogAttribute(UIString displayName, char const* key, DBFieldTypes::eType fieldType,
                           std::uint32_t attributeFlags, std::uint32_t width, eType type)
    : flags(attributeFlags), preferredWidth(width), displayName_(std::move(displayName)), key_(key),
      fieldType_(fieldType), type_(type) {}
