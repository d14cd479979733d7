// The desk of a repository: one thread, one call at a time, searches that give way to newer ones.

#include "tests/zq/panel/PanelFixture.h"

#include <atomic>
#include <chrono>
#include <future>
#include <semaphore>
#include <thread>

#include "apps/zq/Text.h"
#include "apps/zq/panel/KnownClips.h"
#include "host/engine/os/isTaskCancelled.h"

namespace {

using namespace panel_tests;
using namespace zq::panel;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class Desk : public testing::Test {
protected:
    Desk() {
        repository_->onSearch = [this](SearchQuery const& query) { return answer(query); };
    }

    // A page with one clip; the words "wait" are answered when the search is cancelled or the test says so.
    SearchResults answer(SearchQuery const& query) {
        if (query.words == L"wait") {
            began_.release();
            while (!engine::isTaskCancelled() && !goOn_) {
                std::this_thread::yield();
            }
        }
        SearchResults results;
        if (!engine::isTaskCancelled()) {
            results.assets.push_back(ShelfRepository::clip("1", zq::utf8(query.words), "$5"));
            results.pageCount = results.totalCount = 1;
        }
        return results;
    }
    static SearchQuery query(wchar_t const* words, std::uint16_t page = 1) {
        SearchQuery made;
        made.words = words;
        made.page = page;
        return made;
    }
    // How a search ends: the name of its clip, or the code of its failure.
    std::string search(SearchQuery const& wanted, RepositoryDesk::SearchTurn const& turn = {}) {
        try {
            SearchResults const found = handlers_.desk().search(turn, wanted);
            return std::string(
                found.assets.at(0).logAttributes.find(LogAttribute(LogAttribute::eName)).view());
        } catch (ApiError const& error) {
            return std::string(rowOf(error.code()).word);
        }
    }

    EngineHome home_;
    Zq::Ptr<ShelfRepository> const repository_ = Zq::makeShared<ShelfRepository>();
    std::counting_semaphore<> began_{0};
    std::atomic<bool> goOn_{false};
    Handlers handlers_{home_.engine(), *repository_, [] { return std::vector<engine::ServerStatistics>(); }};
};

TEST_F(Desk, WorkRunsInItsOrderOnOneThreadOfItsOwn) {
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    for (int number = 0; number < 5; ++number) {
        handlers_.desk().post([&, number](zq::Session&) {
            order.push_back(number);
            threads.push_back(std::this_thread::get_id());
        });
    }
    EXPECT_EQ(handlers_.desk().ask([](zq::Session& session) { return zq::utf8(session.shortName()); }), "SH");
    EXPECT_THAT(order, ElementsAre(0, 1, 2, 3, 4));
    EXPECT_THAT(threads, testing::Each(threads.front()));
    EXPECT_NE(threads.front(), std::this_thread::get_id());
}

TEST_F(Desk, WhatAsksNobodyRunsBeforeTheSearchesThatWait) {
    std::future<std::string> running = std::async(std::launch::async, [this] {
        return search(query(L"wait"), {"one", 0});
    });
    began_.acquire();
    std::vector<std::string> order;
    auto const post = [&](char const* name, Turn turn) {
        handlers_.desk().post([&order, name](zq::Session&) { order.emplace_back(name); }, turn);
    };
    post("a search", Turn::inOrder);
    post("basket", Turn::beforeSearches);
    post("a sign-in", Turn::inOrder);
    post("options", Turn::beforeSearches);
    EXPECT_THAT(order, IsEmpty()) << "one call at a time";
    goOn_ = true;
    EXPECT_EQ(running.get(), "wait");
    handlers_.flush();
    EXPECT_THAT(order, ElementsAre("basket", "options", "a search", "a sign-in"));
}

TEST_F(Desk, HowItsServerIsReachedIsKnownWhileItIsBusy) {
    repository_->description.connection.server = L"a.example:8443";
    handlers_.flush();
    std::future<std::string> running = std::async(std::launch::async, [this] {
        return search(query(L"wait"), {"one", 0});
    });
    began_.acquire();
    EXPECT_EQ(zq::utf8(handlers_.desk().connection().server), "a.example:8443");
    goOn_ = true;
    EXPECT_EQ(running.get(), "wait");
}

TEST_F(Desk, WhatWorkThrowsComesToWhoeverAsked) {
    EXPECT_THROW(handlers_.desk().ask([](zq::Session&) { throw zq::CommandError("no"); }), zq::CommandError);
    handlers_.desk().post([](zq::Session&) { throw std::runtime_error("dropped"); });
    EXPECT_EQ(handlers_.desk().ask([](zq::Session&) { return 3; }), 3);
}

TEST_F(Desk, ItsOwnThreadCannotWaitForItself) {
    EXPECT_THROW(handlers_.desk().ask([this](zq::Session&) { handlers_.desk().ask([](zq::Session&) {}); }),
                 std::logic_error);
}

TEST_F(Desk, ANewerSearchCancelsTheOneThatRuns) {
    std::string first;
    std::thread waiting([&] { first = search(query(L"wait")); });
    began_.acquire();
    EXPECT_EQ(search(query(L"car")), "car");
    waiting.join();
    EXPECT_EQ(first, "conflict");
    EXPECT_EQ(handlers_.desk().knownClip("1").has_value(), true);
}

TEST_F(Desk, OfTheSearchesThatWaitOnlyTheNewestRuns) {
    std::binary_semaphore entered(0);
    std::binary_semaphore leave(0);
    handlers_.desk().post([&](zq::Session&) {
        entered.release();
        leave.acquire();
    });
    entered.acquire();
    constexpr int count = 5;
    std::atomic<int> dropped{0};
    std::atomic<int> found{0};
    std::vector<std::thread> all;
    for (int number = 0; number < count; ++number) {
        all.emplace_back([&, number] {
            SearchQuery wanted;
            wanted.words = zq::wide("words " + std::to_string(number));
            (search(wanted) == "conflict" ? dropped : found) += 1;
        });
    }
    while (dropped < count - 1) { // before the desk has come to any of them
        std::this_thread::yield();
    }
    leave.release();
    for (std::thread& one : all) {
        one.join();
    }
    EXPECT_EQ(found, 1);
}

TEST_F(Desk, TheNextPageOfTheSameWordsLetsTheFirstOneEnd) {
    std::string first;
    std::thread waiting([&] { first = search(query(L"wait", 1)); });
    began_.acquire();
    std::string second;
    std::thread next([&] { second = search(query(L"wait", 2)); });
    goOn_ = true;
    waiting.join();
    next.join();
    EXPECT_EQ(first, "wait");
    EXPECT_EQ(second, "wait");
}

TEST_F(Desk, ASearchCanBeCancelled) {
    std::string end;
    std::thread waiting([&] { end = search(query(L"wait")); });
    began_.acquire();
    static_cast<void>(handlers_.call("DELETE", "/search"));
    waiting.join();
    EXPECT_EQ(end, "conflict");
}

TEST_F(Desk, APagesSearchesGiveWayToItsOwnAndToNoOthers) {
    auto const begin = [this](wchar_t const* words, char const* asker) {
        return std::async(std::launch::async, [this, words, asker] {
            return search(query(words), {asker, 0});
        });
    };
    std::future<std::string> running = begin(L"wait", "one");
    began_.acquire();
    std::future<std::string> another = begin(L"tape", "three");
    std::future<std::string> cancelled = begin(L"car", "two");
    do { // the desk is busy, so that nothing but this ends it
        static_cast<void>(handlers_.call("DELETE", "/search", {}, {{"asker", "two"}}));
        static_cast<void>(handlers_.call("DELETE", "/search"));
    } while (cancelled.wait_for(std::chrono::seconds(0)) != std::future_status::ready);
    EXPECT_EQ(cancelled.get(), "conflict");
    goOn_ = true;
    EXPECT_EQ(running.get(), "wait");
    EXPECT_EQ(another.get(), "tape");
}

TEST_F(Desk, ASearchThatArrivesLateGivesWayToThoseThatWereMadeAfterIt) {
    std::future<std::string> running = std::async(std::launch::async, [this] {
        return search(query(L"wait"), {"one", 7});
    });
    began_.acquire();
    EXPECT_EQ(search(query(L"old"), {"one", 6}), "conflict");
    EXPECT_EQ(search(query(L"wait"), {"one", 6}), "conflict")
        << "the same words, before an option was changed";
    EXPECT_EQ(text(handlers_.json("GET", ""), "words"), "wait");
    static_cast<void>(handlers_.call("DELETE", "/search", {}, {{"asker", "one"}, {"turn", "6"}}));
    std::future<std::string> next = std::async(std::launch::async, [this] {
        return search(query(L"wait", 2), {"one", 7});
    });
    std::future<std::string> other = std::async(std::launch::async, [this] {
        return search(query(L"tape"), {"two", 1});
    });
    goOn_ = true;
    EXPECT_EQ(running.get(), "wait");
    EXPECT_EQ(next.get(), "wait");
    EXPECT_EQ(other.get(), "tape");
    EXPECT_EQ(search(query(L"car"), {"one", 8}), "car");
}

TEST_F(Desk, AnAskersNextSearchTakesThePlaceOfAllPagesOfTheOneBefore) {
    std::future<std::string> running = std::async(std::launch::async, [this] {
        return search(query(L"wait", 2), {"one", 1});
    });
    began_.acquire();
    std::future<std::string> next = std::async(std::launch::async, [this] {
        return search(query(L"wait"), {"one", 2});
    });
    EXPECT_EQ(running.get(), "conflict");
    goOn_ = true;
    EXPECT_EQ(next.get(), "wait") << "the same words, after an option was changed";
}

TEST_F(Desk, TheNameOfAnAskerIsBounded) {
    std::string const longest(64, 'x');
    EXPECT_EQ(handlers_.failureOf("GET", "/search", {}, {{"asker", longest}}), "none");
    EXPECT_EQ(handlers_.failureOf("GET", "/search", {}, {{"asker", longest + "x"}}), "bad_request");
    EXPECT_EQ(handlers_.failureOf("DELETE", "/search", {}, {{"asker", longest + "x"}}), "bad_request");
}

TEST_F(Desk, TheWordsOfTheLastSearchAreThereAgainAndTheirChangeAloneIsNoEvent) {
    EXPECT_THAT(handlers_.desk().description(), HasSubstr(",\"words\":\"\"}"));
    EXPECT_EQ(search(query(L"red \"car\"")), "red \"car\"");
    EXPECT_EQ(text(handlers_.json("GET", ""), "words"), "red \"car\"");
    EXPECT_EQ(handlers_.countEvents("repository"), 0U);
    EXPECT_EQ(zq::panel::PanelMemory(home_.path() / "panel.toml").words("SH"), "red \"car\"");
    handlers_.desk().ask([this](zq::Session&) { repository_->signedInUser = L"ada"; });
    EXPECT_THAT(handlers_.events(), HasSubstr(R"("words":"red \"car\"")"));
}

TEST_F(Desk, WordsThatFindNothingBecauseOfAFailureAreRememberedToo) {
    repository_->connectResult = 11;
    EXPECT_THROW(static_cast<void>(search(query(L"car"))), zq::CommandError);
    EXPECT_EQ(text(handlers_.json("GET", ""), "words"), "car");
}

TEST_F(Desk, TheEndCancelsWhatRunsDropsWhatWaitsAndTakesNothingMore) {
    std::string running;
    std::thread one([&] { running = search(query(L"wait")); });
    began_.acquire();
    std::atomic<int> ran{0};
    std::vector<std::thread> others;
    std::atomic<int> dropped{0};
    for (int i = 0; i < 4; ++i) {
        others.emplace_back([&] {
            try {
                handlers_.desk().ask([&](zq::Session&) { ++ran; });
            } catch (ApiError const& error) {
                dropped += error.code() == ErrorCode::conflict ? 1 : 0;
            }
        });
    }
    handlers_.desk().end();
    one.join();
    for (std::thread& other : others) {
        other.join();
    }
    EXPECT_EQ(running, "conflict");
    EXPECT_EQ(ran, 0);
    EXPECT_EQ(dropped, 4);
    EXPECT_THROW(handlers_.desk().ask([](zq::Session&) {}), ApiError);
}

TEST_F(Desk, ManySearchesAtOnceEndEachWithItsOwnResultOrGivenUp) {
    std::atomic<int> found{0};
    std::atomic<int> given{0};
    std::vector<std::thread> all;
    for (int i = 0; i < 8; ++i) {
        all.emplace_back([&, i] {
            for (int round = 0; round < 20; ++round) {
                std::string const words = "words " + std::to_string(i) + " " + std::to_string(round);
                SearchQuery wanted;
                wanted.words = zq::wide(words);
                std::string const end = search(wanted);
                EXPECT_TRUE(end == words || end == "conflict") << end;
                (end == words ? found : given) += 1;
            }
        });
    }
    for (std::thread& one : all) {
        one.join();
    }
    EXPECT_EQ(found + given, 160);
    EXPECT_GT(found, 0);
}

TEST_F(Desk, ChangedOptionsAreAnEvent) {
    handlers_.desk().ask([this](zq::Session&) { repository_->tellOptionsChanged(); });
    EXPECT_THAT(handlers_.events(),
                HasSubstr("event: options\ndata: {\"repository\":\"SH\",\"results\":true}"));
}

TEST_F(Desk, AChangedUserIsAnEventAndWorkThatChangesNothingIsNone) {
    handlers_.desk().ask([](zq::Session&) {});
    EXPECT_EQ(handlers_.countEvents("repository"), 0U);
    handlers_.desk().ask([this](zq::Session&) { repository_->signedInUser = L"ada"; });
    EXPECT_EQ(handlers_.countEvents("repository"), 1U) << "told before the result is given";
    EXPECT_THAT(handlers_.events(), HasSubstr("\"user\":\"ada\""));
    EXPECT_THAT(handlers_.desk().description(), HasSubstr("\"user\":\"ada\""));
}

TEST(KnownClips, KeepTheOnesUsedLast) {
    KnownClips clips;
    for (std::size_t number = 0; number < KnownClips::most; ++number) {
        clips.remember(std::to_string(number), {});
    }
    EXPECT_TRUE(clips.find("0"));
    clips.remember("new", {});
    EXPECT_EQ(clips.size(), KnownClips::most);
    EXPECT_TRUE(clips.find("0"));
    EXPECT_FALSE(clips.find("1"));
    EXPECT_TRUE(clips.find("new"));
}

} // namespace
