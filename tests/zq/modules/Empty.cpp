// A module without a plug-in.

#include "host/modules/PluginEntry.h"

extern "C" __attribute__((visibility("default"))) std::uint8_t zqPluginInstance(ZqPluginBase** instance) {
    *instance = nullptr;
    return 0;
}
