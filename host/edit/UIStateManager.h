// What the host keeps of what its user does.
#pragma once

#include <cstdint>

#include "host/object/Api.h"

// Actions by number; those that are not named here are the host's.
enum class eUIActionType : std::int32_t {
    downloadMedia = 34, // the full media of a clip is about to be fetched
};

// What stands behind the door. Thread: any.
class ZQ_API iActionRecord {
public:
    virtual ~iActionRecord();
    virtual void recordAction(eUIActionType action) = 0;
};

class ZQ_API UIStateManager {
public:
    // The one manager. Thread: any.
    static UIStateManager& instance();
    void recordAction(eUIActionType action);

private:
    UIStateManager() = default;
};
