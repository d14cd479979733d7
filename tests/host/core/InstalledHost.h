// Services behind the doors for the life of one test.
#pragma once

#include "host/HostServices.h"

class InstalledHost {
public:
    explicit InstalledHost(HostServices const& services) : before_(installHost(services)) {}
    ~InstalledHost() { installHost(before_); }
    InstalledHost(InstalledHost const&) = delete;
    InstalledHost& operator=(InstalledHost const&) = delete;

private:
    HostServices before_;
};
