// A lock that the same thread may enter again. Thread: any; who enters leaves as often.
#pragma once

#include <mutex>

class CriticalSection {
public:
    CriticalSection() = default;
    CriticalSection(CriticalSection const&) = delete;
    CriticalSection& operator=(CriticalSection const&) = delete;

    void enter() { mutex_.lock(); }
    void leave() { mutex_.unlock(); }

private:
    std::recursive_mutex mutex_;
};
