// Orders of the command line: on disk before they are sent, and sent once, whatever becomes of the answer.

#include <gmock/gmock.h>
#include <httplib.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "host/engine/storage/Database.h"
#include "tests/zq/EmbeddedService.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using zq_tests::errorOf;
using zq_tests::Finished;
using zq_tests::itemOf;
using zq_tests::parsed;

constexpr char const* buying = "purchase_using_credits";
constexpr char const* inDoubt = "nothing was bought: a purchase with one of these clips is in doubt: its end "
                                "comes first; \"zq owned\" asks for the list of what is owned";

class Buy : public zq_tests::EmbeddedService {
protected:
    Buy()
        : EmbeddedService({"--fault-desk"}), car_(clip("car")), sea_(clip("sea")),
          desk_(std::make_unique<httplib::Client>("127.0.0.1", static_cast<int>(faultPort_))) {
        desk_->set_bearer_token_auth(faultToken_);
    }
    // The next request with that command goes wrong so; of orders, all that follow are counted.
    void spoil(char const* command, std::string const& kind, std::string const& arguments = "{}",
               int count = 1) {
        add(command, kind, arguments, count);
        if (command == std::string_view(buying)) {
            add(buying, "delay", R"({"ms":1})", 100);
        }
    }
    void heal() { ASSERT_TRUE(desk_->Delete("/faults")); }
    // How many orders have reached the service since it was spoilt.
    [[nodiscard]] std::int64_t countOrders() {
        auto const answer = desk_->Get("/faults");
        if (!answer) {
            return -1;
        }
        Zq::Ptr<JSON::Element> const list = parsed(answer->body);
        return itemOf(list, "faults", 0).getInt("met", 0) + itemOf(list, "faults", 1).getInt("met", 0);
    }
    void awaitOrder() {
        auto const patience = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (countOrders() == 0 && std::chrono::steady_clock::now() < patience) {
        }
        ASSERT_EQ(countOrders(), 1);
    }
    [[nodiscard]] Finished annaRuns(Words words) const {
        Words all{"--login", "anna"};
        all.insert(all.end(), words.begin(), words.end());
        return run(all, "open sesame\n");
    }
    [[nodiscard]] Finished buy(std::string const& id) const { return annaRuns({"buy", id, "--credits"}); }
    [[nodiscard]] std::string owned() const { return annaRuns({"owned"}).out; }
    // The order was sent so much earlier.
    void pass(std::chrono::seconds time) const {
        engine::Database(home() / "purchases.db")
            .execute(("UPDATE purchase SET sent_s = sent_s - " + std::to_string(time.count())).c_str());
    }
    [[nodiscard]] std::string stateInBook() const {
        engine::Database book(home() / "purchases.db");
        engine::Statement row = book.prepare("SELECT state FROM purchase ORDER BY number DESC LIMIT 1");
        return row.step() ? std::string(row.text(0)) : std::string();
    }
    // What the panel of the same home shows.
    [[nodiscard]] std::string purchasesInPanel() const {
        auto const panel = start({"panel", "--no-browser"});
        std::string const address = panel->readLine();
        std::size_t const path = address.find("/enter");
        httplib::Client browser(address.substr(0, path));
        auto const entered = browser.Get(address.substr(path));
        std::string const cookie = entered ? entered->get_header_value("Set-Cookie") : std::string();
        auto const shown =
            browser.Get("/api/repositories/T7/purchases", {{"Cookie", cookie.substr(0, cookie.find(';'))}});
        std::string const body = shown ? shown->body : std::string();
        panel->sendSignal(SIGTERM);
        static_cast<void>(panel->finish());
        return body;
    }

    std::string const car_;
    std::string const sea_;

private:
    void add(char const* command, std::string const& kind, std::string const& arguments, int count) {
        auto const answer =
            desk_->Post("/faults",
                        "{\"match\":{\"command\":\"" + std::string(command) + "\"},\"kind\":\"" + kind +
                            "\",\"count\":" + std::to_string(count) + ",\"arguments\":" + arguments + "}",
                        "application/json");
        ASSERT_TRUE(answer);
        ASSERT_EQ(answer->status, 201) << answer->body;
    }

    std::unique_ptr<httplib::Client> const desk_;
};

TEST_F(Buy, ThatIsKilledWhileTheAnswerIsAwaitedIsInDoubtUntilTheListTells) {
    spoil(buying, "stall", R"({"ms":60000})"); // carried out
    {
        auto const killed = start({"--login", "anna", "buy", car_, "--credits"});
        killed->write("open sesame\n");
        awaitOrder();
        killed->sendSignal(SIGKILL);
        EXPECT_EQ(killed->finish().status, -1);
    }
    Finished const again = buy(car_);
    EXPECT_EQ(again.status, 1);
    EXPECT_THAT(again.err, HasSubstr(inDoubt));
    EXPECT_THAT(buy(car_).err, HasSubstr(inDoubt)) << "each time";
    EXPECT_EQ(countOrders(), 1) << "it was sent once";
    EXPECT_THAT(purchasesInPanel(), AllOf(HasSubstr("\"clips\":[\"" + car_ + "\"]"),
                                          HasSubstr("\"doubtful\""), HasSubstr("\"user\":\"anna\"")));
    EXPECT_EQ(buy(sea_).status, 0) << "other clips can be bought meanwhile";

    EXPECT_THAT(owned(), HasSubstr("the purchase of " + car_ +
                                   ", which was in doubt: bought: the account owns the clips\n"));
    EXPECT_THAT(purchasesInPanel(), Not(HasSubstr("doubtful")));
    EXPECT_THAT(owned(), Not(HasSubstr("in doubt")));
}

TEST_F(Buy, WhoseAnswerIsLostSaysThatItIsInDoubtAndWhatToDo) {
    spoil(buying, "lost-answer");
    std::vector<std::string> const lines =
        signedIn({"buy " + car_ + " --credits", "buy " + car_ + " --credits", "owned"});
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_THAT(errorOf(lines[0]), StartsWith("the purchase is in doubt: the answer was lost: "));
    EXPECT_THAT(errorOf(lines[0]), HasSubstr("\"zq owned\" asks for it"));
    EXPECT_EQ(parsed(lines[0])->getString("state"), "doubtful");
    EXPECT_THAT(errorOf(lines[1]), StartsWith(inDoubt));
    Zq::Ptr<JSON::Element> const list = parsed(lines[2]);
    EXPECT_EQ(itemOf(list, "purchases", 0).getString("state"), "done");
    EXPECT_EQ(countOrders(), 1);
}

TEST_F(Buy, ThatIsInterruptedSaysThatItIsInDoubt) {
    spoil(buying, "stall", R"({"ms":60000})");
    auto const program = start({"--login", "anna", "buy", car_, "--credits"});
    program->write("open sesame\n");
    awaitOrder();
    program->sendSignal(SIGINT);
    Finished const finished = program->finish();
    EXPECT_EQ(finished.status, 1);
    EXPECT_THAT(finished.err, HasSubstr("the purchase is in doubt: "));
    EXPECT_EQ(stateInBook(), "doubtful");
}

TEST_F(Buy, OutcomesAreInTheBookAsThePanelWritesThem) {
    EXPECT_EQ(parsed(signedIn({"buy " + car_ + " " + car_ + " --credits"})[0])->getString("state"), "done");
    EXPECT_EQ(stateInBook(), "done");
    EXPECT_THAT(purchasesInPanel(), HasSubstr("\"state\":\"done\"")) << "the list has not told yet";
    static_cast<void>(owned());
    EXPECT_THAT(purchasesInPanel(), HasSubstr("\"purchases\":[]")) << "it has";
    EXPECT_EQ(buy(car_).status, 0) << "what is owned costs nothing";

    EXPECT_EQ(buy("424242").status, 1);
    EXPECT_EQ(stateInBook(), "refused");
    environment.emplace_back("ZQ_BROWSER=true");
    EXPECT_EQ(parsed(signedIn({"buy " + sea_ + " --cash"})[0])->getString("state"), "waiting");
    EXPECT_THAT(purchasesInPanel(), AllOf(HasSubstr("\"waiting\""), HasSubstr("/pay/")));
    EXPECT_EQ(buy(sea_).status, 0) << "nobody has paid yet";
}

TEST_F(Buy, WhatWasJustBoughtIsNotBoughtAgainWhileTheListCannotBeRead) {
    EXPECT_EQ(buy(car_).status, 0);
    spoil("get_downloads_formatted", "status", R"({"status":503})", 10);
    EXPECT_EQ(buy(car_).status, 1);
    heal();
    EXPECT_EQ(buy(car_).status, 0);
}

TEST_F(Buy, AnErrorOfTheServiceItselfIsDecidedSoonByTheList) {
    spoil(buying, "status", R"({"status":500})"); // not carried out
    Finished const failed = buy(car_);
    EXPECT_EQ(failed.status, 1);
    EXPECT_THAT(failed.err, HasSubstr("the purchase is in doubt: the service refused the request: "));
    EXPECT_THAT(owned(), HasSubstr("the purchase of " + car_ + ": in doubt still"));
    EXPECT_THAT(buy(car_).err, HasSubstr(inDoubt));
    EXPECT_EQ(countOrders(), 1);
    pass(std::chrono::minutes(3));
    EXPECT_THAT(owned(),
                HasSubstr("which was in doubt: nothing was bought: the account does not own the clips"));
    EXPECT_EQ(buy(car_).status, 0);
    EXPECT_EQ(countOrders(), 2);
}

TEST_F(Buy, AnErrorOfAGatewayIsInDoubtForHalfAnHour) {
    spoil(buying, "status", R"({"status":504})");
    EXPECT_EQ(buy(car_).status, 1);
    pass(std::chrono::minutes(29));
    EXPECT_THAT(owned(), HasSubstr("in doubt still"));
    EXPECT_THAT(buy(car_).err, HasSubstr(inDoubt));
    pass(std::chrono::minutes(3));
    EXPECT_THAT(owned(), HasSubstr("nothing was bought"));
    EXPECT_EQ(buy(car_).status, 0);
}

TEST_F(Buy, AnOrderThatCannotBeWrittenDownIsNotSent) {
    spoil(buying, "delay", R"({"ms":1})");
    std::filesystem::create_directory(home() / "purchases.db");
    Finished const refused = buy(car_);
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, HasSubstr("nothing was bought: the order cannot be written down: "));
    EXPECT_EQ(countOrders(), 0);
}

} // namespace
