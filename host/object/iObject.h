// The root of everything that the host shares by counting owners.
#pragma once

#include "host/object/Api.h"
#include "host/object/HostAllocated.h"
#include "host/object/RefCount.h"

// An object with a virtual destructor, allocated by the host.
class ZQ_API iVirtual : public HostAllocated {
public:
    virtual ~iVirtual();
};

namespace Zq {

// Carries the count of an object's owners. A copy of an object has no owners yet.
class ZQ_API InternalRefCount : public HostAllocated {
public:
    InternalRefCount() = default;
    InternalRefCount(InternalRefCount const&) noexcept {}
    InternalRefCount& operator=(InternalRefCount const&) noexcept { return *this; }
    virtual ~InternalRefCount();

    [[nodiscard]] RefCount& refCount() noexcept { return count_; }

private:
    RefCount count_;
};

} // namespace Zq

class ZQ_API iObject : public virtual iVirtual, public virtual Zq::InternalRefCount {
public:
    ~iObject() override;
};
