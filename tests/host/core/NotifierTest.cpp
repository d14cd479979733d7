#include "host/object/Notifier.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/host/core/LimitedMemory.h"

namespace {

class Listener final : public NotifierBase::Callback {
public:
    explicit Listener(std::function<void(NotifyMsg const&)> function) : function_(std::move(function)) {}
    int operator()(NotifyMsg message) override {
        function_(message);
        return 0;
    }

private:
    std::function<void(NotifyMsg const&)> function_;
};

Zq::Ptr<NotifierBase::Callback> listener(std::function<void(NotifyMsg const&)> function) {
    return Zq::makeShared<Listener>(std::move(function));
}

class Subject final : public virtual iObject {};

TEST(Notifier, CallsListenersInTheOrderInWhichTheyWereAdded) {
    NotifierBase notifier;
    std::string calls;
    std::vector<Zq::Ptr<Zq::Guard>> guards;
    for (char const name : {'a', 'b', 'c'}) {
        guards.push_back(notifier.addListener(listener([&calls, name](NotifyMsg const&) { calls += name; })));
    }
    notifier.issueNotification(NotifyMsg(), 24);
    EXPECT_EQ(calls, "abc");
    guards.erase(guards.begin() + 1);
    notifier.issueNotification(NotifyMsg(), 24);
    EXPECT_EQ(calls, "abcac");
}

TEST(Notifier, AMessageHasItsCodeAndItsSubject) {
    NotifierBase notifier;
    Zq::Ptr<Subject> const subject = Zq::makeShared<Subject>();
    std::vector<std::int32_t> codes;
    Zq::Ptr<iObject> seen;
    Zq::Ptr<Zq::Guard> const guard = notifier.addListener(listener([&](NotifyMsg const& message) {
        codes.push_back(message.getCode());
        seen = message.getSubject();
    }));
    notifier.issueNotification(NotifyMsg(subject), 24);
    EXPECT_TRUE(seen == subject);
    notifier.issueNotification(NotifyMsg(), -1);
    EXPECT_FALSE(seen);
    EXPECT_EQ(codes, (std::vector<std::int32_t>{24, -1}));
}

TEST(Notifier, WithoutListenersNothingHappens) {
    NotifierBase().issueNotification(NotifyMsg(), 1);
}

TEST(Notifier, NoListenerHasNoPlace) {
    NotifierBase notifier;
    EXPECT_FALSE(notifier.addListener(nullptr));
    notifier.issueNotification(NotifyMsg(), 1);
}

TEST(Notifier, TheLastCopyOfAGuardEndsThePlace) {
    NotifierBase notifier;
    int calls = 0;
    Zq::Ptr<Zq::Guard> first = notifier.addListener(listener([&](NotifyMsg const&) { ++calls; }));
    Zq::Ptr<Zq::Guard> second = first;
    first.reset();
    notifier.issueNotification(NotifyMsg(), 1);
    EXPECT_EQ(calls, 1);
    second.reset();
    notifier.issueNotification(NotifyMsg(), 1);
    EXPECT_EQ(calls, 1);
}

TEST(Notifier, OneListenerMayHaveTwoPlaces) {
    NotifierBase notifier;
    int calls = 0;
    Zq::Ptr<NotifierBase::Callback> const twice = listener([&](NotifyMsg const&) { ++calls; });
    Zq::Ptr<Zq::Guard> const first = notifier.addListener(twice);
    Zq::Ptr<Zq::Guard> second = notifier.addListener(twice);
    notifier.issueNotification(NotifyMsg(), 1);
    EXPECT_EQ(calls, 2);
    second.reset();
    notifier.issueNotification(NotifyMsg(), 1);
    EXPECT_EQ(calls, 3);
}

TEST(Notifier, AListenerMayRemoveItselfWhileItIsCalled) {
    NotifierBase notifier;
    int calls = 0;
    int later = 0;
    Zq::Ptr<Zq::Guard> own;
    own = notifier.addListener(listener([&](NotifyMsg const&) {
        ++calls;
        own.reset();
    }));
    Zq::Ptr<Zq::Guard> const other = notifier.addListener(listener([&](NotifyMsg const&) { ++later; }));
    notifier.issueNotification(NotifyMsg(), 1);
    notifier.issueNotification(NotifyMsg(), 1);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(later, 2);
}

TEST(Notifier, AListenerThatAnotherRemovesIsNotCalledAnyMore) {
    NotifierBase notifier;
    int calls = 0;
    Zq::Ptr<Zq::Guard> second;
    Zq::Ptr<Zq::Guard> const first =
        notifier.addListener(listener([&](NotifyMsg const&) { second.reset(); }));
    second = notifier.addListener(listener([&](NotifyMsg const&) { ++calls; }));
    notifier.issueNotification(NotifyMsg(), 1);
    EXPECT_EQ(calls, 0);
}

TEST(Notifier, AListenerAddedWhileCalledHearsTheNextNotification) {
    NotifierBase notifier;
    int calls = 0;
    std::vector<Zq::Ptr<Zq::Guard>> added;
    Zq::Ptr<Zq::Guard> const first = notifier.addListener(listener([&](NotifyMsg const&) {
        if (added.empty()) {
            added.push_back(notifier.addListener(listener([&](NotifyMsg const&) { ++calls; })));
        }
    }));
    notifier.issueNotification(NotifyMsg(), 1);
    EXPECT_EQ(calls, 0);
    notifier.issueNotification(NotifyMsg(), 1);
    EXPECT_EQ(calls, 1);
}

TEST(Notifier, AListenerMayIssueAnother) {
    NotifierBase notifier;
    std::vector<std::int32_t> codes;
    Zq::Ptr<Zq::Guard> const guard = notifier.addListener(listener([&](NotifyMsg const& message) {
        codes.push_back(message.getCode());
        if (message.getCode() < 3) {
            notifier.issueNotification(NotifyMsg(), message.getCode() + 1);
        }
    }));
    notifier.issueNotification(NotifyMsg(), 1);
    EXPECT_EQ(codes, (std::vector<std::int32_t>{1, 2, 3}));
}

TEST(Notifier, AGuardMayOutliveTheNotifier) {
    LimitedMemory memory;
    Zq::Ptr<Zq::Guard> guard;
    {
        NotifierBase notifier;
        guard = notifier.addListener(listener([](NotifyMsg const&) {}));
    }
    EXPECT_GT(memory.live(), 0);
    guard.reset();
    EXPECT_EQ(memory.live(), 0);
}

TEST(Notifier, AListenerMayEndTheNotifier) {
    auto notifier = std::make_unique<NotifierBase>();
    int calls = 0;
    Zq::Ptr<Zq::Guard> const first =
        notifier->addListener(listener([&](NotifyMsg const&) { notifier.reset(); }));
    Zq::Ptr<Zq::Guard> const second = notifier->addListener(listener([&](NotifyMsg const&) { ++calls; }));
    notifier->issueNotification(NotifyMsg(), 1);
    EXPECT_EQ(notifier, nullptr);
    EXPECT_EQ(calls, 1);
}

TEST(Notifier, AListenersEndMayComeBackToTheNotifier) {
    NotifierBase notifier;
    struct Owner final : NotifierBase::Callback {
        int operator()(NotifyMsg) override { return 0; }
        ~Owner() override { other.reset(); }
        Zq::Ptr<Zq::Guard> other;
    };
    Zq::Ptr<Owner> owner = Zq::makeShared<Owner>();
    int calls = 0;
    owner->other = notifier.addListener(listener([&](NotifyMsg const&) { ++calls; }));
    Zq::Ptr<Zq::Guard> guard = notifier.addListener(owner);
    owner.reset();
    guard.reset();
    notifier.issueNotification(NotifyMsg(), 1);
    EXPECT_EQ(calls, 0);
}

TEST(Notifier, AListenerThatGetsNoGuardGetsNoPlace) {
    LimitedMemory memory;
    NotifierBase notifier;
    int calls = 0;
    Zq::Ptr<NotifierBase::Callback> const heard = listener([&](NotifyMsg const&) { ++calls; });
    memory.allow(0);
    EXPECT_FALSE(notifier.addListener(heard));
    notifier.issueNotification(NotifyMsg(), 1);
    EXPECT_EQ(calls, 0);
}

} // namespace
