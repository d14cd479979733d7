// A panel without its transport: the handlers over a real engine, one repository, and a clock of the test's.
#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "apps/zq/AnswerWatch.h"
#include "apps/zq/panel/ApiError.h"
#include "apps/zq/panel/Baskets.h"
#include "apps/zq/panel/Fetches.h"
#include "apps/zq/panel/Panel.h"
#include "apps/zq/panel/PanelSettings.h"
#include "apps/zq/panel/Purchases.h"
#include "host/engine/Engine.h"
#include "tests/zq/panel/ShelfRepository.h"

namespace panel_tests {

[[nodiscard]] Zq::Ptr<JSON::Element> parsed(std::string const& json);
[[nodiscard]] Zq::Ptr<JSON::Element> child(Zq::Ptr<JSON::Element> const& element, std::string_view key);
[[nodiscard]] Zq::Ptr<JSON::Element> item(Zq::Ptr<JSON::Element> const& element, std::string_view list,
                                          std::uint16_t index);
[[nodiscard]] std::string text(Zq::Ptr<JSON::Element> const& element, std::string_view key);
// The texts of a list.
[[nodiscard]] std::vector<std::string> texts(Zq::Ptr<JSON::Element> const& element, std::string_view list);

// The handlers of one repository's desk, called as the transport calls them.
class Handlers {
public:
    // The repository and the engine are borrowed.
    Handlers(engine::Engine& engine, iMediaFileRepository& repository, zq::StatisticsSource statistics);
    ~Handlers();

    struct Query {
        std::string key;
        std::string value;
    };
    // Runs the handler of that route, whose "{repository}" is this one and whose other parts are `parts`.
    // Throws as the handler does.
    zq::panel::Response call(std::string const& method, std::string const& pattern,
                             std::vector<std::string> parts = {}, std::vector<Query> const& query = {},
                             std::string const& body = "{}");
    // The code of the failure of the same; "none" where it does not fail.
    [[nodiscard]] std::string failureOf(std::string const& method, std::string const& pattern,
                                        std::vector<std::string> parts = {},
                                        std::vector<Query> const& query = {}, std::string const& body = "{}");
    [[nodiscard]] Zq::Ptr<JSON::Element> json(std::string const& method, std::string const& pattern,
                                              std::vector<std::string> parts = {},
                                              std::vector<Query> const& query = {},
                                              std::string const& body = "{}");
    zq::panel::RepositoryDesk& desk() { return *desks_.front(); }
    zq::panel::Purchases& purchases() { return *purchases_; }
    zq::panel::GivenLinks& links() { return links_; }
    zq::panel::PanelMemory& memory() { return memory_; }
    // Waits for what was posted to the desk.
    void flush();
    // All events so far, as they are sent.
    [[nodiscard]] std::string events();
    [[nodiscard]] std::size_t countEvents(std::string const& name);
    // Ends the desks, so that nothing runs any more.
    void end() { desk().end(); }

    zq::panel::Purchases::Clock::time_point now{}; // the calendar shows the same time

private:
    zq::AnswerWatch answers_;
    zq::panel::EventHub events_;
    zq::panel::GivenLinks links_;
    zq::panel::PanelMemory memory_;
    zq::panel::Baskets baskets_{events_, memory_};
    zq::OrderBook orders_;
    std::vector<std::unique_ptr<zq::panel::RepositoryDesk>> desks_;
    std::unique_ptr<zq::panel::Purchases> purchases_;
    zq::panel::Fetches fetches_;
    zq::panel::PanelSettings settings_;
    std::unique_ptr<zq::panel::Panel> panel_;
    zq::panel::Routes routes_;
    std::string heard_;
    std::shared_ptr<zq::panel::LiveText> stream_;
    std::uint64_t heardTo_ = 0;
};

// A temporary home with an engine in it.
class EngineHome {
public:
    // What is to be in the home before the engine starts is put there by `prepare`.
    explicit EngineHome(std::function<void(std::filesystem::path const& home)> const& prepare = {});
    ~EngineHome();
    [[nodiscard]] engine::Engine& engine() { return *engine_; }
    [[nodiscard]] std::filesystem::path const& path() const;
    // The host's log as it is on disk.
    [[nodiscard]] std::string log() const;

private:
    class Folder;
    std::unique_ptr<Folder> folder_;
    std::unique_ptr<engine::Engine> engine_;
};

} // namespace panel_tests
