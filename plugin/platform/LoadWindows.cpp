// How the module hears of its loading, its threads and its unloading on Windows.

#include "plugin/ModuleNotification.h"

#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    return moduleNotification(static_cast<Zq::ModuleReason>(reason)) ? TRUE : FALSE;
}
