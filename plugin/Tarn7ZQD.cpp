#include "plugin/Tarn7ZQD.h"

#include "host/log/Log.h"
#include "host/preferences/config_int.h"
#include "tarn7/Tarn7Resource.h"

Tarn7ZQD::Tarn7ZQD() : ZqDeviceDriverBase(PluginCategory::deviceDriver, "14.7.2.0", "Tarn7") {}

Tarn7ZQD::~Tarn7ZQD() = default;

void Tarn7ZQD::postLoadInitialization() {
    loaded = 1;
    if (config_int("t7", 1) == 0) {
        return;
    }
    // Null, when the host has no memory, is the host's to judge.
    registerComponent(new Tarn7Resource);
}

void Tarn7ZQD::preUnloadDeinitialization() {
    if (loaded == 0) {
        return;
    }
    loaded = 0;
    try {
        closedown();
    } catch (...) {
        Log("Tarn7ZQD : Exception freeing resources");
    }
}
