// The host's record of which external thing a host object stands for.
#pragma once

#include "host/object/Identity.h"
#include "host/text/LightweightString.h"

// What stands behind the door. An object has one id of a kind; several objects may have the same one. Thread:
// any.
class ZQ_API iExternalIds {
public:
    virtual ~iExternalIds();
    // Empty where there is none.
    [[nodiscard]] virtual WideString find(Cookie const& object, WideString const& kind) = 0;
    // The object that was associated with the id last; the null cookie where there is none.
    [[nodiscard]] virtual Cookie findObject(WideString const& kind, WideString const& id) = 0;
    // Replaces the object's id of that kind. Kept as long as the object is.
    virtual void associate(Cookie const& object, WideString const& kind, WideString const& id) = 0;
};

class ZQ_API ExtIDMgr {
public:
    // The one manager, made on first use. Thread: any.
    static ExtIDMgr& instance();

    // The id under which the outside knows the object; `kind` is who gave the id, as a repository's short
    // name. Empty where there is none.
    [[nodiscard]] WideString getAssociatedID(Cookie const& object, WideString const& kind) const;
    [[nodiscard]] Cookie findAssociatedObject(WideString const& kind, WideString const& id) const;
    void setAssociatedID(Cookie const& object, WideString const& kind, WideString const& id);

private:
    ExtIDMgr() = default;
};
