// What the module does when it or a thread comes and goes.
#pragma once

#include "host/modules/ModuleThreads.h"

// False only when processAttach finds no thread slot, which refuses the load. Thread: loader for process
// notifications, the thread itself for thread notifications.
bool moduleNotification(Zq::ModuleReason reason);
