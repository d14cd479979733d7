// What is certain of a service's answers, and whose they are.

#include <gmock/gmock.h>

#include <thread>

#include "apps/zq/AnswerWatch.h"
#include "apps/zq/MemoryBlock.h"
#include "apps/zq/ServiceWatch.h"
#include "host/HostServices.h"
#include "host/engine/json/SimdjsonReader.h"
#include "host/engine/network/ServerStatistics.h"

namespace {

using Fate = zq::ServiceWatch::Fate;
using testing::IsEmpty;
using testing::SizeIs;

class Watched : public testing::Test {
protected:
    Watched() : before_(installHost(services())), answers_(std::make_unique<zq::AnswerWatch>()) {}
    ~Watched() override {
        answers_.reset();
        static_cast<void>(installHost(before_));
    }
    // A request of this thread goes out, and this is its answer.
    void exchange(std::string const& answer, int status = 200) {
        engine::ServerStatistics call{
            .server = "https://a.example", .requests = 1, .bytesSent = 10, .lastError = {}};
        call.countStatus(status);
        network_.add(call);
        static_cast<void>(JSON::parse(Zq::makeShared<zq::MemoryBlock>(answer)));
    }
    void lose() {
        network_.add({.server = "https://a.example",
                      .requests = 1,
                      .failures = 1,
                      .bytesSent = 10,
                      .lastError = "cut"});
    }
    zq::ServiceWatch watch() {
        return {[this] { return network_.ofThisThread(); }, *answers_};
    }

    static constexpr char const* yes = R"({"commands":[{"credits":7}]})";
    static constexpr char const* no = R"({"e":true,"s":"too poor"})";
    engine::StatisticsTable network_;

private:
    HostServices services() {
        HostServices services = installedHost();
        services.json = &reader_;
        return services;
    }
    engine::SimdjsonReader reader_;
    HostServices const before_;

protected:
    std::unique_ptr<zq::AnswerWatch> answers_;
};

TEST_F(Watched, WithoutARequestNothingWasSent) {
    EXPECT_EQ(watch().fate(), Fate::notSent);
}

TEST_F(Watched, ARequestThatFoundNoServerWasNotSent) {
    zq::ServiceWatch const watching = watch();
    network_.add({.server = "https://a.example", .requests = 1, .failures = 1, .lastError = "no route"});
    EXPECT_EQ(watching.fate(), Fate::notSent);
    EXPECT_TRUE(watching.failure());
}

TEST_F(Watched, WholeAnswersAreAnswersAndOneThatSaysNoIsARefusal) {
    zq::ServiceWatch const watching = watch();
    exchange(yes);
    EXPECT_EQ(watching.fate(), Fate::answered);
    exchange(no);
    exchange(yes);
    EXPECT_EQ(watching.fate(), Fate::refused);
    EXPECT_EQ(watching.failure(), "the service refused the request: too poor");
}

TEST_F(Watched, OneLostAnswerLeavesNothingCertainWhateverTheOthersSay) {
    zq::ServiceWatch const watching = watch();
    lose();
    exchange(no);
    EXPECT_EQ(watching.fate(), Fate::lost);
}

TEST_F(Watched, AnAnswerThatIsNoneIsLost) {
    zq::ServiceWatch const watching = watch();
    exchange("<html>");
    EXPECT_EQ(watching.fate(), Fate::lost);
}

TEST_F(Watched, AnErrorOfTheServiceItselfEndsTheRequestAndOneOfAGatewayLosesIt) {
    for (int const status : {400, 403, 404, 429, 500, 501, 503, 599}) {
        zq::ServiceWatch const watching = watch();
        exchange("<html>", status);
        EXPECT_EQ(watching.fate(), Fate::ended) << status;
    }
    for (int const status : {408, 502, 504, 520, 524}) {
        zq::ServiceWatch const watching = watch();
        exchange("<html>", status);
        EXPECT_EQ(watching.fate(), Fate::lost) << status;
    }
}

TEST_F(Watched, AStatusThatBlamesTheRequestIsARefusalWhereTheServiceSaysNoInItsWords) {
    {
        zq::ServiceWatch const watching = watch();
        exchange(no, 402);
        EXPECT_EQ(watching.fate(), Fate::refused);
    }
    for (auto const& [answer, status] :
         {std::pair(no, 500), std::pair(yes, 403), std::pair("{}", 403), std::pair("", 404)}) {
        zq::ServiceWatch const watching = watch();
        exchange(answer, status);
        EXPECT_EQ(watching.fate(), Fate::ended) << answer << status;
    }
}

TEST_F(Watched, WhatCannotBeUnderstoodIsNotExcusedByTheErrorOfAnotherRequest) {
    for (char const* const other : {no, "<html>"}) {
        zq::ServiceWatch const watching = watch();
        exchange(other, 503);
        exchange("<html>");
        EXPECT_EQ(watching.fate(), Fate::lost) << other;
    }
    zq::ServiceWatch const watching = watch();
    exchange("<html>", 503);
    lose();
    EXPECT_EQ(watching.fate(), Fate::lost);
}

TEST_F(Watched, WhatOtherThreadsHearIsNotOfThisOne) {
    zq::ServiceWatch const watching = watch();
    std::thread([this] {
        lose();
        exchange(no);
    }).join();
    EXPECT_EQ(watching.fate(), Fate::notSent);
    EXPECT_FALSE(watching.failure());
    exchange(yes);
    EXPECT_EQ(watching.fate(), Fate::answered);
    EXPECT_EQ(answers_->heard().credits, 7);
    std::thread([this] { EXPECT_FALSE(answers_->heard().credits); }).join();
}

TEST(ServerStatistics, OfAThreadAreItsOwnCallsSinceItFirstAsked) {
    engine::StatisticsTable table;
    engine::ServerStatistics const call{.server = "https://a.example", .requests = 1, .lastError = {}};
    table.add(call);
    EXPECT_THAT(table.ofThisThread(), IsEmpty());
    table.add(call);
    std::thread([&] { table.add(call); }).join();
    ASSERT_THAT(table.ofThisThread(), SizeIs(1));
    EXPECT_EQ(table.ofThisThread()[0].requests, 1U);
    EXPECT_EQ(table.all()[0].requests, 3U);
}

} // namespace
