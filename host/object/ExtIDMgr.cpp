#include "host/object/ExtIDMgr.h"

#include "host/HostServices.h"

iExternalIds::~iExternalIds() = default;

ExtIDMgr& ExtIDMgr::instance() {
    static ExtIDMgr manager;
    return manager;
}

WideString ExtIDMgr::getAssociatedID(Cookie const& object, WideString const& kind) const {
    iExternalIds* const ids = installedHost().externalIds;
    return ids != nullptr ? ids->find(object, kind) : WideString();
}

Cookie ExtIDMgr::findAssociatedObject(WideString const& kind, WideString const& id) const {
    iExternalIds* const ids = installedHost().externalIds;
    return ids != nullptr ? ids->findObject(kind, id) : Cookie();
}

void ExtIDMgr::setAssociatedID(Cookie const& object, WideString const& kind, WideString const& id) {
    if (iExternalIds* const ids = installedHost().externalIds) {
        ids->associate(object, kind, id);
    }
}
