// Who is told that something changed.
#pragma once

#include <functional>
#include <mutex>

namespace engine {

// Thread: any.
class ChangeListener {
public:
    // Replaces the listener; none takes its place for an empty one. The former one does not run any more when
    // this returns, unless it is the listener itself that calls.
    void set(std::function<void()> listener);
    // Runs the listener, one call at a time. What it throws goes to the log.
    void tell() noexcept;

private:
    // Recursive: a listener may change what it listens to.
    std::recursive_mutex mutex_;
    std::function<void()> listener_;
};

} // namespace engine
