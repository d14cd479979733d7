// How a module learns that it and the host's threads come and go.
//
// On Linux the module's load-time constructor calls attachModule and its destructor detachModule; between the
// two the host tells it of every thread that a ThreadAttachment stands for.
#pragma once

#include <cstdint>

#include "host/object/Api.h"

namespace Zq {

// Reason codes of a module notification.
enum class ModuleReason : std::uint32_t {
    processDetach = 0,
    processAttach = 1,
    threadAttach = 2,
    threadDetach = 3,
};

using ModuleNotification = bool (*)(ModuleReason reason);

// Sends processAttach, on this thread. A false answer refuses the load: the module hears no more, and
// takeRefusal tells the loader. Thread: loader.
ZQ_API void attachModule(ModuleNotification notification) noexcept;
// Sends processDetach to a module that was attached. Thread: loader.
ZQ_API void detachModule(ModuleNotification notification) noexcept;
// True when a module was refused since the last call. Thread: loader.
[[nodiscard]] ZQ_API bool takeRefusal() noexcept;

// Stands at the top of each thread of the host that calls into modules: tells all modules that are attached
// at that moment that the thread came, and on its end those that are then attached that it goes.
class ZQ_API ThreadAttachment {
public:
    ThreadAttachment() noexcept;
    ~ThreadAttachment();
    ThreadAttachment(ThreadAttachment const&) = delete;
    ThreadAttachment& operator=(ThreadAttachment const&) = delete;
};

} // namespace Zq
