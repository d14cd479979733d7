#include "host/object/ExtIDMgr.h"

ExtIDMgr& ExtIDMgr::instance() {
    static ExtIDMgr manager;
    return manager;
}
