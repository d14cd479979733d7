// Listeners and notifications.
#pragma once

#include <cstdint>
#include <memory>

#include "host/object/Ptr.h"

// What a listener is told: a code, and what the notification is about, where there is something.
class NotifyMsg {
public:
    NotifyMsg() = default;
    explicit NotifyMsg(Zq::Ptr<iObject> subject) : subject_(std::move(subject)) {}

    [[nodiscard]] std::int32_t getCode() const noexcept { return code_; }
    [[nodiscard]] Zq::Ptr<iObject> const& getSubject() const noexcept { return subject_; }

private:
    friend class NotifierBase;
    Zq::Ptr<iObject> subject_;
    std::int32_t code_ = 0;
};

// A function that is called with a message.
template <class Result, class Message>
class iCallbackBase : public virtual iObject {
public:
    virtual Result operator()(Message message) = 0;
};

namespace Zq {

// Ends what it stands for, such as a listener's place, when its last owner lets go.
class ZQ_API Guard : public virtual iObject {
public:
    ~Guard() override;
};

} // namespace Zq

// Sends messages to the listeners of one object, in the order in which they were added.
//
// Thread: any. A listener is called on the thread that issues, with no lock held, so it may add and remove
// listeners; one that is removed meanwhile is not called any more, one that is added is called from the next
// notification on. A listener that another thread removes at that moment may be called once more.
class ZQ_API NotifierBase {
public:
    using Callback = iCallbackBase<int, NotifyMsg>;

    NotifierBase();
    ~NotifierBase();
    NotifierBase(NotifierBase const&) = delete;
    NotifierBase& operator=(NotifierBase const&) = delete;

    // The listener is called until the guard ends. The guard may outlive the notifier.
    [[nodiscard]] Zq::Ptr<Zq::Guard> addListener(Zq::Ptr<Callback> const& listener);
    void issueNotification(NotifyMsg message, std::int32_t code);

private:
    struct Listeners;
    class Place;
    std::shared_ptr<Listeners> listeners_; // shared with the guards, which may live longer
};
