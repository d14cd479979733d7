// Told by the host of what happens to the project.
#pragma once

#include "host/object/Api.h"
#include "host/object/Identity.h"
#include "host/object/LightweightVector.h"

// Every operation does nothing here. Thread: repository.
class ZQ_API ProjectListener {
public:
    virtual ~ProjectListener();
    virtual void handleLogsModification(LightweightVector<Cookie> const& logs);
    virtual void handleLogsDeletion(LightweightVector<Cookie> const& logs);
    virtual void handleLogDirtied(Cookie const& log);
    virtual void handleLogStorage(Cookie const& log);
    virtual void handleProjectEntry();
    virtual void handleProjectExit();
    virtual void handleLobbyEntry();
};
