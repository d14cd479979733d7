// The host's record of which external thing a host object stands for.
#pragma once

#include "host/object/Api.h"

class ZQ_API ExtIDMgr {
public:
    // The one manager, made on first use. Thread: any.
    static ExtIDMgr& instance();

private:
    ExtIDMgr() = default;
};
