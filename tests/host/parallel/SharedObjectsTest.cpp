// Texts, objects and notifiers that several threads hold at once.

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <functional>
#include <thread>
#include <vector>

#include "host/json/Tree.h"
#include "host/object/Notifier.h"
#include "host/tasks/CriticalSection.h"
#include "host/text/LightweightString.h"

namespace {

constexpr int threadCount = 4;
constexpr int rounds = 2000;

// Runs the function on several threads that start together, and waits for all.
void together(std::function<void(int)> const& function) {
    std::barrier start(threadCount);
    std::vector<std::jthread> threads;
    for (int i = 0; i < threadCount; ++i) {
        threads.emplace_back([&, i] {
            start.arrive_and_wait();
            function(i);
        });
    }
}

TEST(SharedText, EachThreadChangesItsOwnCopyOfOneBuffer) {
    WideString const shared(L"shared");
    std::atomic<int> wrong{0};
    together([&](int number) {
        for (int i = 0; i < rounds; ++i) {
            WideString mine = shared;
            WideString const other = mine;
            mine += static_cast<wchar_t>(L'0' + number);
            if (mine.length() != 7 || !mine.startsWith(L"shared") || other != shared) {
                ++wrong;
            }
        }
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(shared, L"shared");
}

TEST(SharedText, TheOwnerThatRemainsAppendsInPlaceWhileOthersLetGo) {
    for (int round = 0; round < 200; ++round) {
        std::vector<WideString> copies(threadCount, WideString(L"ab"));
        copies[0].reserve(16);
        for (std::size_t i = 1; i < copies.size(); ++i) {
            copies[i] = copies[0];
        }
        together([&](int number) {
            WideString mine = std::move(copies[static_cast<std::size_t>(number)]);
            mine += static_cast<wchar_t>(L'0' + number);
            EXPECT_EQ(mine.length(), 3U);
            EXPECT_EQ(mine[2], static_cast<wchar_t>(L'0' + number));
        });
    }
}

class Counted final : public virtual iObject {
public:
    explicit Counted(std::atomic<int>* ended) : ended_(ended) {}
    ~Counted() override { ended_->fetch_add(1); }
    int number = 0; // not atomic: the last owner must see what the others wrote before they let go

private:
    std::atomic<int>* ended_;
};

TEST(SharedObject, EndsOnceWhicheverThreadLetsGoLast) {
    std::atomic<int> ended{0};
    for (int round = 0; round < 200; ++round) {
        std::vector<Zq::Ptr<Counted>> owners(threadCount, Zq::makeShared<Counted>(&ended));
        together([&](int number) {
            Zq::Ptr<Counted> mine = std::move(owners[static_cast<std::size_t>(number)]);
            for (int i = 0; i < 20; ++i) {
                Zq::Ptr<iObject> const another = mine;
                EXPECT_TRUE(another);
            }
            if (number == 0) {
                mine->number = round;
            }
        });
        EXPECT_EQ(ended, round + 1);
    }
}

TEST(SharedAnswer, ItsElementsAreReadAndReleasedByManyThreads) {
    Zq::Ptr<JSON::Tree> tree = Zq::makeShared<JSON::Tree>();
    for (int i = 0; i < threadCount; ++i) {
        JSON::Element& child = tree->addChild(tree->root(), "");
        tree->addNumber(child, "id", i);
    }
    std::vector<Zq::Ptr<JSON::Element>> items;
    for (std::uint16_t i = 0; i < threadCount; ++i) {
        items.push_back(JSON::Tree::rootOf(tree)->getChild(i));
    }
    tree.reset();
    together([&](int number) {
        Zq::Ptr<JSON::Element> const mine = std::move(items[static_cast<std::size_t>(number)]);
        for (int i = 0; i < rounds; ++i) {
            Zq::Ptr<JSON::Element> const again = mine;
            EXPECT_EQ(again->getInt("id", -1), number);
            EXPECT_EQ(JSON::orEmpty(nullptr).getInt("id", -1), -1);
        }
    });
}

class Counter final : public NotifierBase::Callback {
public:
    int operator()(NotifyMsg) override {
        calls.fetch_add(1);
        return 0;
    }
    std::atomic<int> calls{0};
};

TEST(SharedNotifier, ListenersComeAndGoWhileOthersAreNotified) {
    NotifierBase notifier;
    Zq::Ptr<Counter> const constant = Zq::makeShared<Counter>();
    Zq::Ptr<Zq::Guard> const guard = notifier.addListener(constant);
    together([&](int number) {
        for (int i = 0; i < rounds; ++i) {
            if (number % 2 == 0) {
                notifier.issueNotification(NotifyMsg(), i);
            } else {
                Zq::Ptr<Counter> const passing = Zq::makeShared<Counter>();
                Zq::Ptr<Zq::Guard> const place = notifier.addListener(passing);
                EXPECT_TRUE(place);
            }
        }
    });
    EXPECT_EQ(constant->calls, threadCount / 2 * rounds);
}

TEST(CriticalSection, KeepsOtherThreadsOutUntilItsLastLeave) {
    CriticalSection section;
    int number = 0; // not atomic: the section guards it
    together([&](int) {
        for (int i = 0; i < rounds; ++i) {
            section.enter();
            section.enter();
            ++number;
            section.leave();
            ++number;
            section.leave();
        }
    });
    EXPECT_EQ(number, 2 * threadCount * rounds);
}

} // namespace
