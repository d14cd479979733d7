// Writes each step of its life to the host's log, under the name that the build gives it, and throws where
// the build says so.

#include <stdexcept>

#include "host/log/Log.h"
#include "tests/zq/modules/ModulePlugin.h"

namespace {

// Of a type that no one else knows: its code is gone with the module.
class OwnError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    ~OwnError() override { Log(LIFE_NAME " error gone"); }
};

class Life final : public ZqDeviceDriverBase {
public:
    Life() : ZqDeviceDriverBase(PluginCategory::deviceDriver, "1.2", LIFE_NAME) {}
    ~Life() override { Log(LIFE_NAME " gone"); }

    void postLoadInitialization() override {
        ZqDeviceDriverBase::postLoadInitialization();
        Log(LIFE_NAME " loaded");
        if (LIFE_THROWS == 1) {
            throw OwnError("no licence");
        }
        if (LIFE_THROWS == 2) {
            throw 42;
        }
    }
    void postEnumerationInitialization() override {
        Log(LIFE_NAME " enumerated");
        if (LIFE_THROWS == 3) {
            throw OwnError("no partner");
        }
    }
    void preUnloadDeinitialization() override {
        Log(LIFE_NAME " unloading");
        ZqDeviceDriverBase::preUnloadDeinitialization();
        if (LIFE_THROWS == 4) {
            throw OwnError("no end");
        }
    }
};

} // namespace

ZQ_TEST_MODULE(Life)
