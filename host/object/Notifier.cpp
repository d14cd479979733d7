#include "host/object/Notifier.h"

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

Zq::Guard::~Guard() = default;

struct NotifierBase::Listeners {
    std::mutex mutex;
    std::uint64_t next = 0;
    std::vector<std::pair<std::uint64_t, Zq::Ptr<Callback>>> all;

    [[nodiscard]] auto find(std::uint64_t number) {
        return std::ranges::find(all, number, &std::pair<std::uint64_t, Zq::Ptr<Callback>>::first);
    }
    // A listener removed since the notification began is not called any more.
    [[nodiscard]] bool has(std::uint64_t number) {
        std::lock_guard const lock(mutex);
        return find(number) != all.end();
    }
};

class NotifierBase::Place final : public Zq::Guard {
public:
    Place(std::shared_ptr<Listeners> listeners, std::uint64_t number)
        : listeners_(std::move(listeners)), number_(number) {}
    ~Place() override {
        Zq::Ptr<Callback> removed; // ends outside the lock: its destructor may come back here
        std::lock_guard const lock(listeners_->mutex);
        auto const found = listeners_->find(number_);
        if (found != listeners_->all.end()) {
            removed.swap(found->second);
            listeners_->all.erase(found);
        }
    }

private:
    std::shared_ptr<Listeners> listeners_;
    std::uint64_t number_;
};

NotifierBase::NotifierBase() : listeners_(std::make_shared<Listeners>()) {}
NotifierBase::~NotifierBase() = default;

Zq::Ptr<Zq::Guard> NotifierBase::addListener(Zq::Ptr<Callback> const& listener) {
    if (!listener) {
        return {};
    }
    std::uint64_t number = 0;
    {
        std::lock_guard const lock(listeners_->mutex);
        number = listeners_->next++;
    }
    // The guard first: a listener without one could never be removed.
    Zq::Ptr<Zq::Guard> guard = Zq::makeShared<Place>(listeners_, number);
    if (guard) {
        std::lock_guard const lock(listeners_->mutex);
        listeners_->all.emplace_back(number, listener);
    }
    return guard;
}

void NotifierBase::issueNotification(NotifyMsg message, std::int32_t code) {
    message.code_ = code;
    std::shared_ptr<Listeners> const listeners = listeners_; // a listener may end this notifier
    std::vector<std::pair<std::uint64_t, Zq::Ptr<Callback>>> called;
    {
        std::lock_guard const lock(listeners->mutex);
        called = listeners->all;
    }
    for (auto const& [number, listener] : called) {
        if (listeners->has(number)) {
            (*listener)(message);
        }
    }
}
