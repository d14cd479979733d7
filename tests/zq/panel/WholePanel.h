// All handlers of a panel over a real engine and the test's repositories, called as the transport calls them.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "apps/zq/panel/Fetches.h"
#include "apps/zq/panel/PanelSettings.h"
#include "tests/zq/panel/PanelFixture.h"

namespace panel_tests {

class WholePanel {
public:
    // All borrowed.
    WholePanel(engine::Engine& engine, std::vector<iMediaFileRepository*> const& repositories,
               zq::StatisticsSource statistics);
    ~WholePanel();

    // Runs the handler of that route, whose parts in braces are `parts`. Throws as the handler does.
    zq::panel::Response call(std::string const& method, std::string const& pattern,
                             std::vector<std::string> parts = {},
                             std::vector<Handlers::Query> const& query = {}, std::string const& body = "{}");
    [[nodiscard]] Zq::Ptr<JSON::Element> json(std::string const& method, std::string const& pattern,
                                              std::vector<std::string> parts = {},
                                              std::string const& body = "{}");
    // The code of the failure of the same; "none" where it does not fail.
    [[nodiscard]] std::string failureOf(std::string const& method, std::string const& pattern,
                                        std::vector<std::string> parts = {}, std::string const& body = "{}",
                                        std::vector<Handlers::Query> const& query = {});
    zq::panel::RepositoryDesk& desk(std::size_t index = 0) { return *desks_.at(index); }
    zq::panel::Fetches& fetches() { return *fetches_; }
    // Waits for the next event of that name whose data satisfies the condition, and gives the data; fails the
    // test and gives null where none comes for a long time. Events are looked at once.
    Zq::Ptr<JSON::Element> awaitEvent(std::string const& name,
                                      std::function<bool(Zq::Ptr<JSON::Element> const&)> const& isWanted);
    // Waits for the task's end; the event that tells it.
    Zq::Ptr<JSON::Element> awaitEnd(std::int64_t task);

private:
    zq::AnswerWatch answers_;
    zq::panel::EventHub events_;
    zq::panel::GivenLinks links_;
    zq::panel::PanelMemory memory_;
    zq::panel::Baskets baskets_{events_, memory_};
    zq::OrderBook orders_;
    std::vector<std::unique_ptr<zq::panel::RepositoryDesk>> desks_;
    std::unique_ptr<zq::panel::Purchases> purchases_;
    std::unique_ptr<zq::panel::Fetches> fetches_;
    zq::panel::PanelSettings settings_;
    std::unique_ptr<zq::panel::Panel> panel_;
    zq::panel::Routes routes_;
    std::shared_ptr<zq::panel::LiveText> stream_;
    std::string heard_;
};

} // namespace panel_tests
