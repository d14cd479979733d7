// The one entry of a module.
#pragma once

#include <cstdint>

class ZqPluginBase;

// Writes the module's plug-in object, null if there is none, and returns its `loaded` byte, 0 for null. Makes
// nothing and may be called any number of times. Thread: any.
using PluginEntry = std::uint8_t (*)(ZqPluginBase** instance);

// The name under which a module exports it.
inline constexpr char pluginEntryName[] = "zqPluginInstance";
