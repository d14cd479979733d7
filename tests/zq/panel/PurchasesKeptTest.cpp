// Purchases over the ends of programs: what was sent is known afterwards, and to other programs of the home.

#include "tests/zq/panel/BuyingFixture.h"

#include <filesystem>
#include <fstream>

#include "host/engine/storage/Database.h"
#include "host/os/OS.h"
#include "host/os/iShell.h"
#include "tests/support/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;
using namespace panel_tests;
using namespace zq::panel;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

class KeptPurchases : public Buying {
protected:
    [[nodiscard]] fs::path book() const { return home_.path() / "purchases.db"; }

    // The program ends, and another begins, in which nobody is signed in.
    void end() {
        now_ = handlers_->now;
        handlers_.reset();
        repository_->signedInUser.clear();
    }
    void beginAnew() {
        handlers_ = begin(*repository_);
        handlers_->now = now_;
    }
    void restart() {
        end();
        beginAnew();
    }
    // What a program that is killed at this moment leaves.
    void takePicture() {
        for (char const* const part : {"", "-wal"}) {
            fs::path const file = book().concat(part);
            if (fs::exists(file)) {
                fs::copy_file(file, picture_.path() / file.filename(), fs::copy_options::overwrite_existing);
            }
        }
    }
    // The program was killed when the picture was taken.
    void restartFromPicture() {
        end();
        for (char const* const part : {"", "-wal", "-shm"}) {
            fs::remove(book().concat(part));
        }
        for (fs::directory_entry const& file : fs::directory_iterator(picture_.path())) {
            fs::copy_file(file.path(), home_.path() / file.path().filename());
        }
        beginAnew();
    }
    void signIn(char const* user) {
        repository_->onLogin = [user](ShelfRepository& self, configb const&) {
            self.signedInUser = zq::wide(user);
            return 0;
        };
        static_cast<void>(handlers_->call("POST", "/login", {}, {}, R"({"values":{"username":"x"}})"));
        handlers_->flush();
    }
    [[nodiscard]] std::string state(std::uint16_t index = 0) { return text(listed(index), "state"); }

    test::TemporaryFolder picture_;
    Purchases::Clock::time_point now_{};
};

TEST_F(KeptPurchases, OneThatWasOnItsWayWhenTheProgramWasKilledIsInDoubtUntilTheOwnedListTells) {
    answer_ = [this] {
        takePicture();
        return 2;
    };
    static_cast<void>(buy("k", "\"1\",\"2\""));
    restartFromPicture();
    auto const purchase = listed();
    EXPECT_EQ(text(purchase, "state"), "doubtful");
    EXPECT_EQ(text(purchase, "key"), "k");
    EXPECT_EQ(text(purchase, "user"), "ada");
    EXPECT_THAT(texts(purchase, "clips"), ElementsAre("1", "2"));
    EXPECT_THAT(text(purchase, "text"), HasSubstr("the program ended before the answer came"));
    signIn("ada");
    EXPECT_EQ(state(), "doubtful");
    EXPECT_EQ(failure(order("l", "\"2\"")), "conflict");
    EXPECT_EQ(failure(order("l", "\"2\"", "page")), "conflict");
    EXPECT_EQ(text(buy("k", "\"1\",\"2\""), "state"), "doubtful") << "the same order is not sent again";
    EXPECT_EQ(sent_.size(), 1U);
    own("1");
    own("2");
    pass(2s);
    EXPECT_EQ(state(), "done");
    EXPECT_EQ(sent_.size(), 1U);
}

TEST_F(KeptPurchases, OneThatTheServiceNeverSawCanBeBoughtOnceTheListHasTold) {
    answer_ = [this] {
        takePicture();
        return 2;
    };
    static_cast<void>(buy("k", "\"1\""));
    restartFromPicture();
    sent_.clear();
    signIn("ada");
    pass(29min);
    EXPECT_EQ(state(), "doubtful");
    pass(1min);
    EXPECT_EQ(state(), "refused");
    EXPECT_EQ(text(listed(), "text"), "nothing was bought: the account does not own the clips");
    EXPECT_TRUE(sent_.empty());
    answer_ = [] { return 2; };
    EXPECT_EQ(text(buy("l", "\"1\""), "state"), "done");
}

TEST_F(KeptPurchases, OneInDoubtIsInDoubtAfterARestartAndTheSignInHasTheListTell) {
    answer_ = [this] { return losesAnswer(); };
    static_cast<void>(buy("k", "\"1\""));
    std::string const before = text(listed(), "text");
    restart();
    EXPECT_EQ(state(), "doubtful");
    EXPECT_EQ(text(listed(), "text"), before);
    EXPECT_EQ(listed()->getInt("code", -1), 0);
    pass(1h);
    EXPECT_EQ(repository_->ownedReads, 0) << "nobody is signed in";
    EXPECT_EQ(state(), "doubtful");
    own("1");
    signIn("ada");
    EXPECT_EQ(state(), "done");
    restart();
    EXPECT_EQ(countListed(), 0) << "what is decided is of the run that decided it";
    EXPECT_EQ(sent_.size(), 1U);
}

TEST_F(KeptPurchases, ADoubtOfLongAgoIsDecidedAMinuteAfterTheSignIn) {
    answer_ = [this] { return losesAnswer(); };
    static_cast<void>(buy("k", "\"1\""));
    end();
    now_ += 24h;
    beginAnew();
    signIn("ada");
    EXPECT_EQ(state(), "doubtful") << "one look is not enough";
    pass(59s);
    EXPECT_EQ(state(), "doubtful");
    pass(1s);
    EXPECT_EQ(state(), "refused");
}

TEST_F(KeptPurchases, AnErrorOfTheServiceItselfIsDecidedAsSoonInTheNextRun) {
    answer_ = [this] { return failsWith(503); };
    static_cast<void>(buy("k", "\"1\""));
    restart();
    EXPECT_EQ(state(), "doubtful");
    signIn("ada");
    pass(119s);
    EXPECT_EQ(state(), "doubtful");
    pass(1s);
    EXPECT_EQ(state(), "refused");
}

TEST_F(KeptPurchases, AClockThatWasSetBackShortensNoWatch) {
    now_ = Purchases::Clock::time_point(48h);
    handlers_->now = now_;
    answer_ = [this] { return losesAnswer(); };
    static_cast<void>(buy("k", "\"1\""));
    end();
    now_ -= 24h;
    beginAnew();
    signIn("ada");
    pass(29min);
    EXPECT_EQ(state(), "doubtful");
    pass(1min);
    EXPECT_EQ(state(), "refused");
}

TEST_F(KeptPurchases, AFailedListOfALaterRunIsReadAgain) {
    answer_ = [this] { return losesAnswer(); };
    static_cast<void>(buy("k", "\"1\""));
    restart();
    offline_ = true;
    signIn("ada");
    EXPECT_EQ(state(), "doubtful");
    EXPECT_THAT(text(listed(), "trouble"), HasSubstr("no route"));
    own("1");
    offline_ = false;
    pass(2s);
    EXPECT_EQ(state(), "done");
}

TEST_F(KeptPurchases, WhatWasBoughtBeforeTheEndIsNotBoughtAgainBeforeTheListCanBeRead) {
    offline_ = true;
    EXPECT_EQ(text(buy("k", "\"1\""), "state"), "done");
    restart();
    EXPECT_EQ(state(), "done");
    signIn("ada");
    EXPECT_EQ(failure(order("l", "\"1\"")), "conflict");
    EXPECT_TRUE(item(handlers_->json("PUT", "/basket", {}, {}, R"({"clips":["1"]})"), "clips", 0)
                    ->getBool("owned", false));
    EXPECT_EQ(sent_.size(), 1U);
    own("1");
    offline_ = false;
    pass(2s);
    restart();
    EXPECT_EQ(countListed(), 0);
}

TEST_F(KeptPurchases, AnAwaitedPaymentIsAwaitedAfterARestartAndItsPageCanBeOpened) {
    ASSERT_EQ(setenv("ZQ_BROWSER", "/bin/true", 1), 0);
    answer_ = [] { return OS().shell().openInBrowser(L"https://shelf.example/pay/1") ? 2 : 0; };
    static_cast<void>(buy("k", "\"1\"", "page"));
    restart();
    EXPECT_EQ(state(), "waiting");
    EXPECT_EQ(text(listed(), "payment"), "page");
    EXPECT_EQ(text(listed(), "page"), "https://shelf.example/pay/1");
    EXPECT_TRUE(handlers_->links().contains("https://shelf.example/pay/1"));
    own("1");
    signIn("ada");
    EXPECT_EQ(state(), "done");
}

TEST_F(KeptPurchases, APaymentPageThatMayHaveOpenedBeforeTheProgramWasKilledIsInDoubt) {
    answer_ = [this] {
        takePicture();
        return 2;
    };
    static_cast<void>(buy("k", "\"1\"", "page"));
    restartFromPicture();
    EXPECT_EQ(state(), "doubtful");
    EXPECT_EQ(text(listed(), "payment"), "page");
    signIn("ada");
    EXPECT_EQ(failure(order("l", "\"1\"", "page")), "conflict");
    own("1");
    pass(2s);
    EXPECT_EQ(state(), "done");
}

TEST_F(KeptPurchases, TheDoubtOfOneAccountIsNotAnothers) {
    answer_ = [this] { return losesAnswer(); };
    static_cast<void>(buy("k", "\"1\""));
    restart();
    own("1");
    signIn("bob");
    pass(1h);
    static_cast<void>(handlers_->call("GET", "/owned"));
    EXPECT_EQ(state(), "doubtful") << "his list tells nothing of hers";
    ownNothing();
    static_cast<void>(handlers_->call("GET", "/owned"));
    answer_ = [] { return 2; };
    EXPECT_EQ(text(buy("l", "\"1\""), "state"), "done") << "her doubt is none of his";
    own("1");
    EXPECT_EQ(text(listed(0), "user"), "bob");
    signIn("ada");
    EXPECT_EQ(state(1), "done");
}

TEST_F(KeptPurchases, AnOrderThatCannotBeWrittenDownIsNotSent) {
    end();
    for (char const* const part : {"", "-wal", "-shm"}) {
        fs::remove(book().concat(part));
    }
    std::ofstream(book()) << "this is no book of orders, and it is longer than the head of one would be";
    beginAnew();
    signIn("ada");
    static_cast<void>(handlers_->call("PUT", "/basket", {}, {}, R"({"clips":["1"]})"));
    try {
        static_cast<void>(buy("k", "\"1\""));
        ADD_FAILURE() << "it was sent";
    } catch (ApiError const& error) {
        EXPECT_EQ(error.code(), ErrorCode::conflict);
        EXPECT_THAT(error.what(), HasSubstr("nothing was sent: the order cannot be written down"));
        EXPECT_THAT(error.what(), HasSubstr(book().string()));
    }
    EXPECT_TRUE(sent_.empty());
    EXPECT_EQ(countListed(), 0);
    EXPECT_EQ(handlers_->failureOf("DELETE", "/purchases/{key}", {"k"}), "conflict");
    fs::remove(book());
    EXPECT_EQ(text(buy("k", "\"1\""), "state"), "done") << "once the file is put away";
}

TEST_F(KeptPurchases, AnOutcomeThatCannotBeWrittenDownIsInDoubtInTheNextRun) {
    answer_ = [this] {
        engine::Database(book()).execute("CREATE TRIGGER full BEFORE UPDATE ON purchase "
                                         "BEGIN SELECT RAISE(ABORT, 'the disk is full'); END");
        return 2;
    };
    EXPECT_EQ(text(buy("k", "\"1\""), "state"), "done");
    EXPECT_EQ(state(), "done");
    pass(2s);
    EXPECT_EQ(state(), "done") << "what this run knows it knows better than the book";
    EXPECT_EQ(failure(order("l", "\"1\"")), "conflict");
    end();
    engine::Database(book()).execute("DROP TRIGGER full");
    beginAnew();
    EXPECT_EQ(state(), "doubtful");
    own("1");
    signIn("ada");
    EXPECT_EQ(state(), "done");
    EXPECT_EQ(sent_.size(), 1U);
}

// A second program on the same home, with the same account.
class TwoPrograms : public KeptPurchases {
protected:
    TwoPrograms() {
        prepare(*otherRepository_);
        other_ = begin(*otherRepository_);
    }
    void TearDown() override {
        if (handlers_ != nullptr) {
            handlers_->end(); // nothing of the first one runs while the host is given back
        }
        other_.reset(); // as the later one
    }
    [[nodiscard]] std::string failureThere(std::string const& body) {
        return other_->failureOf("POST", "/purchases", {}, {}, body);
    }
    [[nodiscard]] std::string stateThere() {
        return text(item(other_->json("GET", "/purchases"), "purchases", 0), "state");
    }
    void passThere(std::chrono::seconds time) {
        other_->now += time;
        other_->purchases().lookAtDue();
        other_->flush();
    }

    Zq::Ptr<ShelfRepository> const otherRepository_ = Zq::makeShared<ShelfRepository>();
    std::unique_ptr<Handlers> other_;
};

TEST_F(TwoPrograms, WhatOneHasSentTheOtherDoesNotSend) {
    answer_ = [this] {
        EXPECT_EQ(failureThere(order("l", "\"1\",\"2\"")), "conflict") << "while it runs";
        EXPECT_EQ(text(other_->json("POST", "/purchases", {}, {}, order("k", "\"1\"")), "state"), "running");
        passThere(0s);
        EXPECT_EQ(stateThere(), "running");
        return losesAnswer();
    };
    static_cast<void>(buy("k", "\"1\""));
    EXPECT_EQ(failureThere(order("l", "\"1\"")), "conflict") << "while it is in doubt";
    EXPECT_EQ(sent_.size(), 1U);
    answer_ = [] { return 2; };
    EXPECT_EQ(text(other_->json("POST", "/purchases", {}, {}, order("m", "\"2\"")), "state"), "done");
}

TEST_F(TwoPrograms, EachShowsWhatTheOtherHasBought) {
    answer_ = [this] { return losesAnswer(); };
    static_cast<void>(buy("k", "\"1\""));
    passThere(0s);
    EXPECT_EQ(stateThere(), "doubtful");
    EXPECT_EQ(other_->countEvents("purchase"), 1U);
    auto const basket = other_->json("PUT", "/basket", {}, {}, R"({"clips":["1"]})");
    EXPECT_TRUE(item(basket, "clips", 0)->getBool("undecided", false));
    own("1");
    passThere(2s);
    EXPECT_EQ(stateThere(), "done") << "its list has told";
    EXPECT_EQ(state(), "doubtful");
    handlers_->purchases().lookAtDue();
    EXPECT_EQ(state(), "done") << "as the other has written";
    EXPECT_EQ(repository_->ownedReads, 0);
}

TEST_F(TwoPrograms, WhatOneHasBoughtTheOtherDoesNotBuyBeforeItsListIsRead) {
    offline_ = true;
    EXPECT_EQ(text(buy("k", "\"1\""), "state"), "done");
    EXPECT_EQ(failureThere(order("l", "\"1\"")), "conflict");
    EXPECT_EQ(sent_.size(), 1U);
}

TEST_F(TwoPrograms, WhatOneHasBoughtAndSeenListedTheOtherDoesNotBuyWithItsOlderList) {
    static_cast<void>(other_->call("GET", "/owned"));
    own("1");
    EXPECT_EQ(text(buy("k", "\"1\""), "state"), "done");
    handlers_->flush();
    EXPECT_EQ(failureThere(order("l", "\"1\"")), "conflict") << "a new list has told";
    EXPECT_EQ(otherRepository_->ownedReads, 2);
    EXPECT_EQ(failureThere(order("l", "\"1\"")), "conflict") << "it is known to be owned";
    EXPECT_EQ(otherRepository_->ownedReads, 2);
    EXPECT_EQ(sent_.size(), 1U);
}

TEST_F(TwoPrograms, AClipThatAnotherHasBoughtIsNotBoughtWhileTheListCannotBeRead) {
    own("1");
    EXPECT_EQ(text(buy("k", "\"1\""), "state"), "done");
    handlers_->flush();
    offline_ = true;
    EXPECT_EQ(failureThere(order("l", "\"1\"")), "failed");
    EXPECT_EQ(sent_.size(), 1U);
}

TEST_F(TwoPrograms, WhenOneEndsOnTheWayTheOtherHasItInDoubt) {
    zq::KeptOrder order;
    order.repository = handlers_->desk().shortName();
    order.user = "ada";
    order.key = "k";
    order.clips = {"1"};
    {
        zq::OrderBook killed(book());
        EXPECT_EQ(killed.begin(order, 0).kind, zq::OrderBook::Begun::Kind::written);
        pass(0s);
        EXPECT_EQ(state(), "running");
        pass(1h);
        EXPECT_EQ(state(), "running") << "for as long as its program lives";
        EXPECT_EQ(repository_->ownedReads, 0);
    }
    own("1");
    pass(0s);
    EXPECT_EQ(handlers_->countEvents("purchase"), 3U) << "running, in doubt, done";
    EXPECT_THAT(handlers_->events(), HasSubstr("\"state\":\"doubtful\""));
    EXPECT_EQ(state(), "done");
}

} // namespace
