// The module: its one plug-in object, and the one symbol by which the host finds that.

#include "FolderRepository.h"
#include "host/modules/PluginEntry.h"
#include "host/modules/ZqPluginBase.h"

namespace {

class FolderPlugin final : public ZqDeviceDriverBase {
public:
    FolderPlugin() : ZqDeviceDriverBase(PluginCategory::deviceDriver, "1.0", "Folder") {}

    void postLoadInitialization() override {
        ZqDeviceDriverBase::postLoadInitialization();
        // The plug-in owns it from here on and ends it before the module is unloaded.
        registerComponent(new FolderRepository);
    }
};

FolderPlugin plugin;

} // namespace

extern "C" ZQ_API std::uint8_t zqPluginInstance(ZqPluginBase** instance) {
    *instance = &plugin;
    return plugin.isLoaded();
}
