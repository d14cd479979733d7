// A module that refuses to be attached.

#include "host/log/Log.h"
#include "host/modules/ModuleThreads.h"
#include "tests/zq/modules/ModulePlugin.h"

namespace {

bool refuse(Zq::ModuleReason) {
    return false;
}

[[gnu::constructor]] void attach() {
    Zq::attachModule(&refuse);
}

class Unreachable final : public ZqDeviceDriverBase {
public:
    Unreachable() : ZqDeviceDriverBase(PluginCategory::deviceDriver, "1", "unreachable") {
        Log("a refused module was asked for its plug-in");
    }
};

} // namespace

ZQ_TEST_MODULE(Unreachable)
