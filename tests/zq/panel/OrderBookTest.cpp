// The book of orders: what it keeps, and for whom.

#include <gmock/gmock.h>

#include <atomic>
#include <barrier>
#include <fstream>
#include <limits>
#include <thread>

#include "apps/zq/OrderBook.h"
#include "host/engine/storage/Database.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using zq::KeptOrder;
using zq::OrderBook;
using zq::OrderState;
using Kind = OrderBook::Begun::Kind;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class TheOrderBook : public testing::Test {
protected:
    static KeptOrder order(std::string key, std::vector<std::string> clips = {"1"}) {
        KeptOrder made;
        made.repository = "SH";
        made.user = "ada";
        made.key = std::move(key);
        made.clips = std::move(clips);
        made.sent = std::chrono::system_clock::time_point(std::chrono::seconds(1'700'000'000));
        return made;
    }
    static KeptOrder ended(KeptOrder order, OrderState state, bool isAwaited) {
        order.state = state;
        order.isAwaited = isAwaited;
        return order;
    }

    // By somebody who knows the list of what is owned as of now.
    static OrderBook::Begun begin(OrderBook& book, KeptOrder const& order) {
        return book.begin(order, std::numeric_limits<std::int64_t>::max());
    }
    OrderBook::Begun begin(KeptOrder const& order) { return begin(book_, order); }

    test::TemporaryFolder folder_;
    std::filesystem::path const file_ = folder_.path() / "purchases.db";
    OrderBook book_{file_};
};

TEST_F(TheOrderBook, KeepsAllOfAnOrder) {
    std::string const hostile = "'); DROP TABLE purchase; -- \n\x1b \xe2\x80\xae \xff";
    KeptOrder kept = order(hostile, {hostile, "2", "1"});
    kept.user = hostile;
    kept.payment = zq::Payment::cash;
    EXPECT_EQ(begin(kept).kind, Kind::written);
    kept.state = OrderState::waiting;
    kept.code = -7;
    kept.wasEnded = true;
    kept.text = hostile;
    kept.page = hostile;
    book_.finish(kept);
    EXPECT_THAT(OrderBook(file_).news(), ElementsAre(kept));
}

TEST_F(TheOrderBook, TakesOverWhatAnEarlierVersionHasWritten) {
    KeptOrder kept = ended(order("k"), OrderState::doubtful, true);
    static_cast<void>(begin(order("k")));
    book_.finish(kept);
    engine::Database(file_).execute("ALTER TABLE purchase DROP COLUMN ended; PRAGMA user_version = 1");
    OrderBook later(file_);
    EXPECT_THAT(later.news(), ElementsAre(kept));
    KeptOrder next = order("l", {"2"});
    EXPECT_EQ(begin(later, next).kind, Kind::written);
    next = ended(next, OrderState::doubtful, true);
    next.wasEnded = true;
    later.finish(next);
    EXPECT_THAT(OrderBook(file_).news(), ElementsAre(testing::_, next));
}

TEST_F(TheOrderBook, BeginsAKeyOnce) {
    EXPECT_EQ(begin(order("k")).kind, Kind::written);
    book_.finish(ended(order("k"), OrderState::refused, false));
    OrderBook::Begun const again = begin(order("k", {"7"}));
    EXPECT_EQ(again.kind, Kind::known);
    EXPECT_THAT(again.order.clips, ElementsAre("1"));
    KeptOrder elsewhere = order("k");
    elsewhere.repository = "EX";
    EXPECT_EQ(begin(elsewhere).kind, Kind::written);
}

TEST_F(TheOrderBook, BeginsNoClipOfAnAccountThatMayHaveItAlready) {
    struct Row {
        OrderState state;
        bool isAwaited;
        Kind kind;
    };
    int number = 0;
    for (Row const& row :
         {Row{OrderState::doubtful, true, Kind::blocked}, Row{OrderState::done, true, Kind::blocked},
          Row{OrderState::done, false, Kind::written}, Row{OrderState::waiting, true, Kind::written},
          Row{OrderState::refused, true, Kind::written}, Row{OrderState::refused, false, Kind::written}}) {
        std::string const key = std::to_string(++number);
        KeptOrder const first = order(key, {"a" + key, "b" + key});
        ASSERT_EQ(begin(first).kind, Kind::written);
        EXPECT_EQ(begin(order("while " + key, {"b" + key})).kind, Kind::blocked);
        book_.finish(ended(first, row.state, row.isAwaited));
        EXPECT_EQ(begin(order("then " + key, {"x", "b" + key})).kind, row.kind) << key;
        book_.finish(ended(order("then " + key), OrderState::refused, false));
        KeptOrder others = order("bob " + key, {"b" + key});
        others.user = "bob";
        EXPECT_EQ(begin(others).kind, Kind::written) << "of another account";
    }
}

TEST_F(TheOrderBook, BeginsNoClipThatWasBoughtSinceTheListThatIsKnown) {
    std::int64_t const before = book_.newest();
    ASSERT_EQ(begin(order("k")).kind, Kind::written);
    book_.finish(ended(order("k"), OrderState::done, false));
    OrderBook::Begun const blocked = book_.begin(order("l"), before);
    EXPECT_EQ(blocked.kind, Kind::blocked);
    EXPECT_TRUE(blocked.order.isListed());
    EXPECT_EQ(book_.begin(order("l"), book_.newest()).kind, Kind::written) << "the list does not have it";
}

TEST_F(TheOrderBook, TellsNewsOnce) {
    EXPECT_THAT(book_.news(), IsEmpty());
    OrderBook other(file_);
    EXPECT_THAT(other.news(), IsEmpty());
    ASSERT_EQ(begin(other, order("k")).kind, Kind::written);
    EXPECT_THAT(book_.news(), ElementsAre(order("k")));
    EXPECT_THAT(book_.news(), IsEmpty());
    KeptOrder const doubtful = ended(order("k"), OrderState::doubtful, true);
    other.finish(doubtful);
    EXPECT_THAT(book_.news(), ElementsAre(doubtful));
    KeptOrder const done = ended(order("k"), OrderState::done, false);
    EXPECT_TRUE(book_.settle(done));
    EXPECT_THAT(other.news(), ElementsAre(done));
}

TEST_F(TheOrderBook, LetsNoListRefuseWhatIsDecided) {
    ASSERT_EQ(begin(order("k")).kind, Kind::written);
    EXPECT_FALSE(book_.settle(ended(order("k"), OrderState::done, false))) << "it runs";
    book_.finish(ended(order("k"), OrderState::doubtful, true));
    EXPECT_TRUE(book_.settle(ended(order("k"), OrderState::done, false)));
    EXPECT_FALSE(book_.settle(ended(order("k"), OrderState::refused, true)));
    EXPECT_EQ(begin(order("k")).order.state, OrderState::done);
}

TEST_F(TheOrderBook, WritesOneOfTwoThatBeginAtOnce) {
    OrderBook other(file_);
    for (int round = 0; round < 20; ++round) {
        std::string const clip = std::to_string(round);
        std::barrier<> start(2);
        std::atomic<int> written{0};
        auto const tryOnce = [&](OrderBook& book, std::string const& key) {
            start.arrive_and_wait();
            written += begin(book, order(key + clip, {clip})).kind == Kind::written ? 1 : 0;
        };
        std::thread thread([&] { tryOnce(other, "there "); });
        tryOnce(book_, "here ");
        thread.join();
        EXPECT_EQ(written, 1);
    }
}

TEST_F(TheOrderBook, FindsWhatIsInTheWay) {
    ASSERT_EQ(begin(order("k", {"1", "2"})).kind, Kind::written);
    OrderBook other(file_);
    EXPECT_EQ(other.inTheWay("SH", "ada", {"3", "2"}).value_or(KeptOrder()).key, "k");
    EXPECT_FALSE(other.inTheWay("SH", "ada", {"3"}));
    EXPECT_FALSE(other.inTheWay("SH", "bob", {"2"}));
    EXPECT_FALSE(other.inTheWay("EX", "ada", {"2"}));
}

TEST_F(TheOrderBook, KeepsTheLatestOfTheSettledAndAllOfTheOthers) {
    ASSERT_EQ(begin(order("open", {"open"})).kind, Kind::written);
    book_.finish(ended(order("open"), OrderState::doubtful, true));
    engine::Database raw(file_);
    raw.execute(
        ("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
         std::to_string(OrderBook::most + 5) +
         ") INSERT INTO purchase (repository, user, key, payment, state, text, page, awaited, sent_s, "
         "run, change) SELECT 'SH', 'ada', 'old ' || i, 'credits', 'refused', '', '', 0, 0, 0, "
         "100 + i FROM n")
            .c_str());
    ASSERT_EQ(begin(order("new", {"new"})).kind, Kind::written);
    EXPECT_EQ(begin(order("old 5")).kind, Kind::written) << "it has gone";
    EXPECT_EQ(begin(order("old 6")).kind, Kind::known);
    EXPECT_EQ(begin(order("open")).kind, Kind::known);
}

TEST_F(TheOrderBook, TakesAStateOfALaterVersionForADoubt) {
    ASSERT_EQ(begin(order("k")).kind, Kind::written);
    engine::Database(file_).execute("UPDATE purchase SET state = 'pondering', change = 2");
    EXPECT_EQ(begin(order("l")).kind, Kind::blocked);
    EXPECT_EQ(begin(order("k")).order.state, OrderState::doubtful);
}

TEST_F(TheOrderBook, SaysWhichFileCannotBeUsed) {
    std::ofstream(file_) << "this is no book of orders, and it is longer than the head of one would be";
    try {
        static_cast<void>(begin(order("k")));
        ADD_FAILURE() << "begun";
    } catch (zq::OrderBookError const& error) {
        EXPECT_THAT(error.what(), HasSubstr(file_.string()));
        EXPECT_THAT(error.what(), HasSubstr("damaged"));
    }
    EXPECT_THROW(static_cast<void>(book_.news()), zq::OrderBookError);
}

TEST_F(TheOrderBook, LeavesTheFileOfALaterVersionAlone) {
    ASSERT_EQ(begin(order("k")).kind, Kind::written);
    engine::Database(file_).setSchemaVersion(99);
    EXPECT_THROW(static_cast<void>(OrderBook(file_).newest()), zq::OrderBookError);
}

TEST_F(TheOrderBook, IsItsUsersAlone) {
    ASSERT_EQ(begin(order("k")).kind, Kind::written);
    using std::filesystem::perms;
    EXPECT_EQ(std::filesystem::status(file_).permissions() & (perms::group_all | perms::others_all),
              perms::none);
}

} // namespace
