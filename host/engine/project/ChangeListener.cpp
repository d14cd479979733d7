#include "host/engine/project/ChangeListener.h"

#include "host/log/Log.h"

namespace engine {

void ChangeListener::set(std::function<void()> listener) {
    std::lock_guard const lock(mutex_);
    listener_.swap(listener);
}

void ChangeListener::tell() noexcept {
    try {
        std::lock_guard const lock(mutex_);
        // A copy: the listener may set another one while it runs.
        if (std::function<void()> const listener = listener_) {
            listener();
        }
    } catch (std::exception const& error) {
        Log("Telling of a change failed: %s", error.what());
    } catch (...) {
        Log("Telling of a change failed");
    }
}

} // namespace engine
