// A plug-in object with the life of its module, for the small modules of these tests.
#pragma once

#include "host/modules/PluginEntry.h"
#include "host/modules/ZqPluginBase.h"

#define ZQ_TEST_MODULE(Plugin)                                                                               \
    extern "C" __attribute__((visibility("default"))) std::uint8_t zqPluginInstance(                         \
        ZqPluginBase** instance) {                                                                           \
        static Plugin plugin;                                                                                \
        *instance = &plugin;                                                                                 \
        return plugin.isLoaded();                                                                            \
    }
