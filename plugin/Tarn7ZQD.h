// The plug-in object: brings the Tarn7 repository to the host. Thread: loader.
#pragma once

#include "host/modules/ZqPluginBase.h"

class Tarn7ZQD : public ZqDeviceDriverBase {
public:
    Tarn7ZQD();
    ~Tarn7ZQD() override;

    // Marks the plug-in as loaded, then registers the repository unless the configuration key "t7" is 0.
    void postLoadInitialization() override;
    // Once: destroys the repository. No exception passes.
    void preUnloadDeinitialization() override;
};
