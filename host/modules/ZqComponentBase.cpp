#include "host/modules/ZqComponentBase.h"

ZqComponentBaseSharedResourceTag::~ZqComponentBaseSharedResourceTag() = default;

NarrowString ZqComponentBase::debug() const {
    return "component";
}

bool ZqComponentBase::operator==(ZqComponentBase const& other) const {
    return this == &other;
}

ZqResourceTypeBase::ZqResourceTypeBase(NarrowString name, ZqResourceType type, std::uint32_t tag)
    : name_(std::move(name)), type_(type), tag_(tag) {}

NarrowString ZqResourceTypeBase::debug() const {
    return "resource " + name_;
}

bool ZqResourceTypeBase::operator==(ZqResourceTypeBase const& other) const {
    return type_ == other.type_ && tag_ == other.tag_;
}

int ZqResourceTypeBase::priority() const {
    return 0;
}
