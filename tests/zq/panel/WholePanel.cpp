#include "tests/zq/panel/WholePanel.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>

namespace panel_tests {

using namespace zq::panel;

WholePanel::WholePanel(engine::Engine& engine, std::vector<iMediaFileRepository*> const& repositories,
                       zq::StatisticsSource statistics)
    : memory_(engine.home() / "panel.toml"), orders_(engine.home() / "purchases.db"),
      settings_(engine, events_, memory_) {
    for (iMediaFileRepository* const repository : repositories) {
        zq::Session::Surroundings surroundings;
        surroundings.repository = repository;
        surroundings.statistics = statistics;
        surroundings.answers = &answers_;
        surroundings.engine = &engine;
        desks_.push_back(std::make_unique<RepositoryDesk>(surroundings, events_, links_, memory_));
    }
    purchases_ = std::make_unique<Purchases>(orders_, desks_, events_, links_, baskets_, Purchases::Clocks(),
                                             Purchases::Watching::byOthers);
    fetches_ = std::make_unique<Fetches>(engine, events_);
    panel_ = std::make_unique<Panel>(
        Panel{engine, events_, desks_, baskets_, *purchases_, *fetches_, settings_, links_});
    addStateRoutes(routes_, *panel_);
    addClipRoutes(routes_, *panel_);
    addRepositoryRoutes(routes_, *panel_);
    addShopRoutes(routes_, *panel_);
    addFetchRoutes(routes_, *panel_);
    addProjectRoutes(routes_, *panel_);
    addSettingsRoutes(routes_, *panel_);
    stream_ = events_.listen(0);
}

WholePanel::~WholePanel() {
    routes_.clear();
    fetches_.reset();
    purchases_.reset();
}

Response WholePanel::call(std::string const& method, std::string const& pattern,
                          std::vector<std::string> parts, std::vector<Handlers::Query> const& query,
                          std::string const& body) {
    auto const found = std::ranges::find_if(routes_, [&](Route const& route) {
        return route.method == method && route.pattern == "/api" + pattern;
    });
    if (found == routes_.end()) {
        throw std::logic_error("no route " + method + " " + pattern);
    }
    Request request;
    request.captures = std::move(parts);
    for (Handlers::Query const& part : query) {
        request.query.emplace(part.key, part.value);
    }
    request.body = parsed(body);
    return found->handler(request);
}

Zq::Ptr<JSON::Element> WholePanel::json(std::string const& method, std::string const& pattern,
                                        std::vector<std::string> parts, std::string const& body) {
    return parsed(call(method, pattern, std::move(parts), {}, body).body);
}

std::string WholePanel::failureOf(std::string const& method, std::string const& pattern,
                                  std::vector<std::string> parts, std::string const& body,
                                  std::vector<Handlers::Query> const& query) {
    try {
        static_cast<void>(call(method, pattern, std::move(parts), query, body));
    } catch (ApiError const& error) {
        return std::string(rowOf(error.code()).word);
    } catch (zq::CommandError const&) {
        return "failed";
    }
    return "none";
}

Zq::Ptr<JSON::Element>
WholePanel::awaitEvent(std::string const& name,
                       std::function<bool(Zq::Ptr<JSON::Element> const&)> const& isWanted) {
    constexpr std::string_view end = "\n\n";
    auto const latest = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (std::chrono::steady_clock::now() < latest) {
        std::size_t const at = heard_.find(end);
        if (at == std::string::npos) {
            std::string piece;
            if (!stream_->next(piece)) {
                break;
            }
            heard_ += piece;
            continue;
        }
        std::string const event = heard_.substr(0, at + 1);
        heard_.erase(0, at + end.size());
        std::size_t const data = event.find("data: ");
        if (event.find("event: " + name + "\n") == std::string::npos || data == std::string::npos) {
            continue;
        }
        Zq::Ptr<JSON::Element> const told = parsed(event.substr(data + 6, event.find('\n', data) - data - 6));
        if (isWanted(told)) {
            return told;
        }
    }
    ADD_FAILURE() << "no event \"" << name << "\" of that kind";
    return {};
}

Zq::Ptr<JSON::Element> WholePanel::awaitEnd(std::int64_t task) {
    return awaitEvent("task", [task](Zq::Ptr<JSON::Element> const& told) {
        std::string const state = text(told, "state");
        return told->getInt("task", 0) == task &&
               (state == "done" || state == "failed" || state == "cancelled");
    });
}

} // namespace panel_tests
