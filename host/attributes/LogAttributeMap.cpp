#include "host/attributes/LogAttributeMap.h"

#include <algorithm>

#include "host/text/Unicode.h"

namespace {

bool isCustom(LogAttribute const& attribute) {
    return attribute.getType() >= LogAttribute::eFirstCustom;
}

auto sameAs(LogAttribute const& attribute) {
    return [&attribute, custom = isCustom(attribute)](LogAttributeMap::Entry const& entry) {
        return entry.type == attribute.getType() && (!custom || entry.key == attribute.getKey());
    };
}

} // namespace

void LogAttributeMap::add(LogAttribute const& attribute, NarrowString value) {
    auto const found = std::ranges::find_if(entries_, sameAs(attribute));
    if (found != entries_.end()) {
        found->value = std::move(value);
    } else {
        entries_.push_back({attribute.getType(), isCustom(attribute) ? attribute.getKey() : NarrowString(),
                            std::move(value)});
    }
}

void LogAttributeMap::add(LogAttribute const& attribute, WideString const& value) {
    add(attribute, toUTF8(value));
}

NarrowString LogAttributeMap::find(LogAttribute const& attribute) const {
    auto const found = std::ranges::find_if(entries_, sameAs(attribute));
    return found != entries_.end() ? found->value : NarrowString();
}
