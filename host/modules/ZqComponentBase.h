// What a plug-in registers with the host. Thread: loader.
#pragma once

#include <cstdint>

#include "host/object/HostAllocated.h"
#include "host/text/LightweightString.h"

// The part that all components of one object share.
class ZQ_API ZqComponentBaseSharedResourceTag : public HostAllocated {
public:
    virtual ~ZqComponentBaseSharedResourceTag();
};

class ZQ_API ZqComponentBase : public virtual ZqComponentBaseSharedResourceTag {
public:
    // One line that describes the component, for a log.
    [[nodiscard]] virtual NarrowString debug() const;
    [[nodiscard]] virtual bool operator==(ZqComponentBase const& other) const;
};

enum class ZqResourceType : std::int32_t { mediaFileRepository = 26 };

// A component that is a resource of some type, with a name and a tag of four characters.
class ZQ_API ZqResourceTypeBase : public ZqComponentBase {
public:
    ZqResourceTypeBase(NarrowString name, ZqResourceType type, std::uint32_t tag);

    [[nodiscard]] NarrowString debug() const override;
    using ZqComponentBase::operator==;
    // Two resources of one type and tag are the same.
    [[nodiscard]] virtual bool operator==(ZqResourceTypeBase const& other) const;
    // Resources of a higher priority are offered first.
    [[nodiscard]] virtual int priority() const;

    [[nodiscard]] NarrowString const& getResourceName() const noexcept { return name_; }
    [[nodiscard]] ZqResourceType getResourceType() const noexcept { return type_; }
    [[nodiscard]] std::uint32_t getResourceTag() const noexcept { return tag_; }

private:
    NarrowString name_;
    ZqResourceType type_;
    std::uint32_t tag_;
};
