#include "tests/zq/panel/PanelFixture.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "apps/zq/MemoryBlock.h"
#include "host/engine/json/SimdjsonReader.h"
#include "host/engine/tasks/TaskQueue.h"
#include "tests/support/TemporaryFolder.h"

namespace panel_tests {

namespace fs = std::filesystem;
using namespace zq::panel;

Zq::Ptr<JSON::Element> parsed(std::string const& json) {
    return engine::SimdjsonReader().parse(zq::MemoryBlock(json));
}

Zq::Ptr<JSON::Element> child(Zq::Ptr<JSON::Element> const& element, std::string_view key) {
    return JSON::orEmpty(element).getChild(key);
}

Zq::Ptr<JSON::Element> item(Zq::Ptr<JSON::Element> const& element, std::string_view list,
                            std::uint16_t index) {
    return JSON::orEmpty(child(element, list)).getChild(index);
}

std::string text(Zq::Ptr<JSON::Element> const& element, std::string_view key) {
    return std::string(JSON::orEmpty(element).getStringView(key));
}

std::vector<std::string> texts(Zq::Ptr<JSON::Element> const& element, std::string_view list) {
    Zq::Ptr<JSON::Element> const found = child(element, list);
    std::vector<std::string> all;
    for (JSON::StringMember const& member : JSON::orEmpty(found).strings()) {
        all.emplace_back(member.value);
    }
    return all;
}

namespace {

zq::Session::Surroundings surroundings(engine::Engine& engine, iMediaFileRepository& repository,
                                       zq::StatisticsSource statistics, zq::AnswerWatch& answers) {
    zq::Session::Surroundings made;
    made.repository = &repository;
    made.statistics = std::move(statistics);
    made.answers = &answers;
    made.engine = &engine;
    return made;
}

} // namespace

Handlers::Handlers(engine::Engine& engine, iMediaFileRepository& repository, zq::StatisticsSource statistics)
    : memory_(engine.home() / "panel.toml"), orders_(engine.home() / "purchases.db"),
      fetches_(engine, events_), settings_(engine, events_, memory_) {
    desks_.push_back(std::make_unique<RepositoryDesk>(
        surroundings(engine, repository, std::move(statistics), answers_), events_, links_, memory_));
    purchases_ = std::make_unique<Purchases>(
        orders_, desks_, events_, links_, baskets_,
        Purchases::Clocks{[this] { return now; },
                          [this] { return std::chrono::system_clock::time_point(now.time_since_epoch()); }},
        Purchases::Watching::byOthers);
    panel_ = std::make_unique<Panel>(
        Panel{engine, events_, desks_, baskets_, *purchases_, fetches_, settings_, links_});
    addRepositoryRoutes(routes_, *panel_);
    addClipRoutes(routes_, *panel_);
    addShopRoutes(routes_, *panel_);
    heardTo_ = events_.last();
    stream_ = events_.listen(0);
}

Handlers::~Handlers() {
    purchases_.reset();
}

Response Handlers::call(std::string const& method, std::string const& pattern, std::vector<std::string> parts,
                        std::vector<Query> const& query, std::string const& body) {
    auto const found = std::ranges::find_if(routes_, [&](Route const& route) {
        return route.method == method && route.pattern == "/api/repositories/{repository}" + pattern;
    });
    if (found == routes_.end()) {
        throw std::logic_error("no route " + method + " " + pattern);
    }
    Request request;
    request.captures.push_back(desk().shortName());
    request.captures.insert(request.captures.end(), parts.begin(), parts.end());
    for (Query const& part : query) {
        request.query.emplace(part.key, part.value);
    }
    request.body = parsed(body);
    return found->handler(request);
}

std::string Handlers::failureOf(std::string const& method, std::string const& pattern,
                                std::vector<std::string> parts, std::vector<Query> const& query,
                                std::string const& body) {
    try {
        static_cast<void>(call(method, pattern, std::move(parts), query, body));
    } catch (ApiError const& error) {
        return std::string(rowOf(error.code()).word);
    } catch (zq::CommandError const&) {
        return "failed";
    }
    return "none";
}

Zq::Ptr<JSON::Element> Handlers::json(std::string const& method, std::string const& pattern,
                                      std::vector<std::string> parts, std::vector<Query> const& query,
                                      std::string const& body) {
    return parsed(call(method, pattern, std::move(parts), query, body).body);
}

void Handlers::flush() {
    // What is posted may post in its turn.
    for (int round = 0; round < 2; ++round) {
        desk().ask([](zq::Session&) {});
    }
}

std::string Handlers::events() {
    while (heardTo_ != events_.last()) {
        std::string piece;
        std::uint64_t const last = events_.last();
        static_cast<void>(stream_->next(piece));
        heard_ += piece;
        heardTo_ = last;
    }
    return heard_;
}

std::size_t Handlers::countEvents(std::string const& name) {
    std::string const all = events();
    std::string const line = "\nevent: " + name + "\n";
    std::size_t count = 0;
    for (std::size_t at = all.find(line); at != std::string::npos; at = all.find(line, at + 1)) {
        ++count;
    }
    return count;
}

class EngineHome::Folder {
public:
    test::TemporaryFolder folder;
};

EngineHome::EngineHome(std::function<void(fs::path const& home)> const& prepare)
    : folder_(std::make_unique<Folder>()) {
    if (prepare) {
        prepare(path());
    }
    std::ofstream(path() / "host.toml") << "[folders]\nmedia = \"" << (path() / "media").string() << "\"\n";
    engine::EngineOptions options;
    options.home = path();
    options.language = "en";
    options.stringsFolder = ZQ_STRINGS;
    auto engine = engine::Engine::start(options);
    if (!engine) {
        throw std::runtime_error(engine.error());
    }
    engine_ = std::move(*engine);
}

EngineHome::~EngineHome() {
    engine_->tasks().shutDown();
}

fs::path const& EngineHome::path() const {
    return folder_->folder.path();
}

std::string EngineHome::log() const {
    std::string all;
    std::error_code error;
    for (fs::directory_entry const& entry : fs::recursive_directory_iterator(path() / "logs", error)) {
        std::ifstream stream(entry.path(), std::ios::binary);
        all.append(std::istreambuf_iterator<char>(stream), {});
    }
    return all;
}

} // namespace panel_tests
