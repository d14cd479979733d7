#include <functional>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "tests/fake_host/FakeHost.h"
#include "tests/repository/TestRepository.h"

namespace repository_tests {
namespace {

using Listener = iMediaFileRepository::Listener;

class Recorder final : public Listener {
public:
    explicit Recorder(std::vector<std::int32_t>& heard) : heard_(heard) {}
    ~Recorder() override {
        if (whenGone) {
            whenGone();
        }
    }
    int operator()(NotifyMsg message) override {
        heard_.push_back(message.getCode());
        if (whenCalled) {
            whenCalled();
        }
        return 0;
    }

    std::function<void()> whenCalled;
    std::function<void()> whenGone;

private:
    std::vector<std::int32_t>& heard_;
};

class Listeners : public testing::Test {
protected:
    fake::Host host;
    TestRepository repository;
    std::vector<std::int32_t> heard;
    std::vector<std::int32_t> other;
};

TEST_F(Listeners, AListenerHearsUntilItsGuardEnds) {
    Zq::Ptr<Zq::Guard> guard = repository.addListener(Zq::makeShared<Recorder>(heard));
    ASSERT_TRUE(guard);
    repository.notifier.issueNotification(NotifyMsg(), iMediaFileRepository::eSearchOptionsChanged);
    guard.reset();
    repository.notifier.issueNotification(NotifyMsg(), 25);
    EXPECT_EQ(heard, (std::vector<std::int32_t>{24}));
}

TEST_F(Listeners, ACopyOfTheGuardKeepsTheListener) {
    Zq::Ptr<Zq::Guard> guard = repository.addListener(Zq::makeShared<Recorder>(heard));
    Zq::Ptr<Zq::Guard> copy = guard;
    guard.reset();
    repository.notifier.issueNotification(NotifyMsg(), 24);
    copy.reset();
    repository.notifier.issueNotification(NotifyMsg(), 24);
    EXPECT_EQ(heard.size(), 1U);
}

TEST_F(Listeners, ListenersHearInTheOrderInWhichTheyCame) {
    auto const first = Zq::makeShared<Recorder>(heard);
    auto const second = Zq::makeShared<Recorder>(heard);
    std::vector<char> order;
    first->whenCalled = [&order] { order.push_back('a'); };
    second->whenCalled = [&order] { order.push_back('b'); };
    Zq::Ptr<Zq::Guard> const one = repository.addListener(first);
    Zq::Ptr<Zq::Guard> const two = repository.addListener(second);
    repository.notifier.issueNotification(NotifyMsg(), 24);
    EXPECT_EQ(order, (std::vector<char>{'a', 'b'}));
}

TEST_F(Listeners, NoListenerGivesNoGuard) {
    EXPECT_FALSE(repository.addListener({}));
}

TEST_F(Listeners, AListenerAddedTwiceHasTwoPlaces) {
    auto const listener = Zq::makeShared<Recorder>(heard);
    Zq::Ptr<Zq::Guard> one = repository.addListener(listener);
    Zq::Ptr<Zq::Guard> const two = repository.addListener(listener);
    repository.notifier.issueNotification(NotifyMsg(), 24);
    EXPECT_EQ(heard.size(), 2U);
    one.reset();
    repository.notifier.issueNotification(NotifyMsg(), 24);
    EXPECT_EQ(heard.size(), 3U);
}

TEST_F(Listeners, AListenerMayRemoveItselfWhileItIsCalled) {
    auto const listener = Zq::makeShared<Recorder>(heard);
    Zq::Ptr<Zq::Guard> guard = repository.addListener(listener);
    listener->whenCalled = [&guard] { guard.reset(); };
    repository.notifier.issueNotification(NotifyMsg(), 24);
    repository.notifier.issueNotification(NotifyMsg(), 24);
    EXPECT_EQ(heard.size(), 1U);
}

TEST_F(Listeners, OneThatAnotherRemovesDuringACallStaysRemoved) {
    auto const remover = Zq::makeShared<Recorder>(heard);
    Zq::Ptr<Zq::Guard> const first = repository.addListener(remover);
    Zq::Ptr<Zq::Guard> second = repository.addListener(Zq::makeShared<Recorder>(other));
    remover->whenCalled = [&second] { second.reset(); };
    repository.notifier.issueNotification(NotifyMsg(), 24);
    std::size_t const during = other.size();
    repository.notifier.issueNotification(NotifyMsg(), 24);
    EXPECT_EQ(other.size(), during);
    EXPECT_EQ(heard.size(), 2U);
}

TEST_F(Listeners, AListenerMayAddAnotherWhileItIsCalled) {
    auto const adder = Zq::makeShared<Recorder>(heard);
    Zq::Ptr<Zq::Guard> added;
    adder->whenCalled = [&] {
        if (!added) {
            added = repository.addListener(Zq::makeShared<Recorder>(other));
        }
    };
    Zq::Ptr<Zq::Guard> const guard = repository.addListener(adder);
    repository.notifier.issueNotification(NotifyMsg(), 24);
    repository.notifier.issueNotification(NotifyMsg(), 24);
    EXPECT_EQ(heard.size(), 2U);
    EXPECT_EQ(other.size(), 1U);
}

TEST_F(Listeners, AListenerWhoseEndComesBackToTheNotifierDoesNotLockUp) {
    auto listener = Zq::makeShared<Recorder>(heard);
    Zq::Ptr<Zq::Guard> second = repository.addListener(Zq::makeShared<Recorder>(other));
    listener->whenGone = [&second] { second.reset(); };
    Zq::Ptr<Zq::Guard> guard = repository.addListener(listener);
    listener.reset();
    guard.reset();
    repository.notifier.issueNotification(NotifyMsg(), 24);
    EXPECT_TRUE(heard.empty());
    EXPECT_TRUE(other.empty());
}

TEST_F(Listeners, AGuardMayOutliveTheRepository) {
    auto mortal = std::make_unique<TestRepository>();
    bool gone = false;
    auto listener = Zq::makeShared<Recorder>(heard);
    listener->whenGone = [&gone] { gone = true; };
    Zq::Ptr<Zq::Guard> guard = mortal->addListener(listener);
    listener.reset();
    mortal.reset();
    guard.reset();
    EXPECT_TRUE(gone);
    EXPECT_TRUE(heard.empty());
}

TEST_F(Listeners, ANotificationCarriesItsSubject) {
    class SubjectReader final : public Listener {
    public:
        int operator()(NotifyMsg message) override {
            subject = message.getSubject();
            return 0;
        }
        Zq::Ptr<iObject> subject;
    };
    auto const reader = Zq::makeShared<SubjectReader>();
    Zq::Ptr<Zq::Guard> const guard = repository.addListener(reader);
    Zq::Ptr<iObject> const subject = Zq::makeShared<fake::Image>();
    repository.notifier.issueNotification(NotifyMsg(subject), 24);
    EXPECT_EQ(reader->subject, subject);
}

TEST_F(Listeners, NewsOfTheProjectOtherThanItsEndChangeNothing) {
    (void)repository.search(SearchQuery());
    ASSERT_EQ(repository.searchResultCache.size(), 1U);
    ProjectListener& listener = repository;
    listener.handleLogsModification({Cookie()});
    listener.handleLogsDeletion({Cookie()});
    listener.handleLogDirtied(Cookie());
    listener.handleLogStorage(Cookie());
    listener.handleProjectEntry();
    listener.handleLobbyEntry();
    EXPECT_EQ(repository.searchResultCache.size(), 1U);
}

} // namespace
} // namespace repository_tests
