// How the module hears of its loading and unloading on POSIX systems.

#include "host/modules/ModuleThreads.h"
#include "plugin/ModuleNotification.h"

namespace {

[[gnu::constructor]] void loaded() {
    Zq::attachModule(&moduleNotification);
}
[[gnu::destructor]] void unloading() {
    Zq::detachModule(&moduleNotification);
}

} // namespace
