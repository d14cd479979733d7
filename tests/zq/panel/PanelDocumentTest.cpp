// The panel's document against the program: routes, events and error codes are the same in both.

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "apps/zq/panel/ApiError.h"
#include "apps/zq/panel/Baskets.h"
#include "apps/zq/panel/Fetches.h"
#include "apps/zq/panel/Panel.h"
#include "apps/zq/panel/PanelServer.h"
#include "apps/zq/panel/PanelSettings.h"
#include "apps/zq/panel/Purchases.h"
#include "tests/zq/panel/PanelFixture.h"

namespace {

using namespace zq::panel;
using testing::UnorderedElementsAreArray;

std::string contentOf(std::filesystem::path const& file) {
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    EXPECT_FALSE(text.str().empty()) << file;
    return text.str();
}

// The rows of the table behind that heading, as the texts of their cells without code marks.
std::vector<std::vector<std::string>> tableBehind(std::string const& document, std::string const& heading) {
    std::vector<std::vector<std::string>> rows;
    std::istringstream lines(document.substr(document.find(heading)));
    std::string line;
    while (std::getline(lines, line) && !line.starts_with('|')) {
    }
    for (bool more = true; more && line.starts_with('|');
         more = static_cast<bool>(std::getline(lines, line))) {
        std::vector<std::string> cells;
        std::istringstream row(line.substr(1));
        for (std::string cell; std::getline(row, cell, '|');) {
            std::erase(cell, '`');
            std::size_t const first = std::min(cell.find_first_not_of(' '), cell.size());
            cells.push_back(cell.substr(first, cell.find_last_not_of(' ') + 1 - first));
        }
        rows.push_back(cells);
    }
    rows.erase(rows.begin(), rows.begin() + std::min<std::ptrdiff_t>(2, std::ssize(rows))); // head and rule
    return rows;
}

std::string const& document() {
    static std::string const text = contentOf(ZQ_PANEL_DOCUMENT);
    return text;
}

TEST(PanelDocumentTest, TheRoutesAreThoseOfTheProgram) {
    panel_tests::EngineHome home;
    EventHub events;
    GivenLinks links;
    std::vector<std::unique_ptr<RepositoryDesk>> desks;
    PanelMemory memory(home.path() / "panel.toml");
    Baskets baskets(events, memory);
    zq::OrderBook orders(home.path() / "purchases.db");
    Purchases purchases(orders, desks, events, links, baskets);
    Fetches fetches(home.engine(), events);
    PanelSettings settings(home.engine(), events, memory);
    Panel const panel{home.engine(), events, desks, baskets, purchases, fetches, settings, links};
    PanelServer const server(allRoutes(panel), WebFiles({}), 0);
    std::multiset<std::string> inProgram;
    for (Route const& route : server.routes()) {
        inProgram.insert(route.method + " " + route.pattern);
    }
    std::multiset<std::string> inDocument;
    for (auto const& row : tableBehind(document(), "\n## Routes\n")) {
        inDocument.insert(row.at(0) + " " + row.at(1));
    }
    EXPECT_THAT(inProgram, UnorderedElementsAreArray(inDocument));
}

TEST(PanelDocumentTest, TheErrorCodesAreThoseOfTheProgram) {
    std::set<std::string> inProgram;
    for (ErrorRow const& row : errorTable()) {
        inProgram.insert(std::string(row.word));
    }
    std::set<std::string> inDocument;
    for (auto const& row : tableBehind(document(), "| Code | Status |")) {
        inDocument.insert(row.at(0));
        for (ErrorRow const& known : errorTable()) {
            if (known.word == row.at(0)) {
                EXPECT_THAT(row.at(1), testing::HasSubstr(std::to_string(known.status))) << row.at(0);
            }
        }
    }
    EXPECT_THAT(inProgram, UnorderedElementsAreArray(inDocument));
    EXPECT_EQ(inProgram.size(), errorTable().size()) << "each code once";
}

TEST(PanelDocumentTest, TheReasonsAreThoseOfTheProgram) {
    std::multiset<std::string> inProgram;
    for (zq::ReasonRow const& row : zq::reasonTable()) {
        if (!row.word.empty()) {
            inProgram.insert(std::string(row.word));
        }
        EXPECT_EQ(zq::wordOf(row.reason), row.word);
    }
    std::multiset<std::string> inDocument;
    for (auto const& row : tableBehind(document(), "| Reason | Meaning |")) {
        inDocument.insert(row.at(0));
    }
    EXPECT_THAT(inProgram, UnorderedElementsAreArray(inDocument));
}

TEST(PanelDocumentTest, EachCodeOfTheProgramHasARow) {
    for (int code = 0; code <= static_cast<int>(ErrorCode::internal); ++code) {
        EXPECT_EQ(static_cast<int>(rowOf(static_cast<ErrorCode>(code)).code), code);
    }
}

// What the sources of the panel send, by the name that stands in the call.
TEST(PanelDocumentTest, TheEventsAreThoseOfTheProgram) {
    std::set<std::string> inProgram{"reset"}; // the hub's own
    std::regex const call(R"re((?:\bevents_?\b|\bhub_?\b)(?:\.|->)send\(\s*"([a-z]+)")re");
    std::regex const anyCall(R"re((?:\bevents_?\b|\bhub_?\b)(?:\.|->)send\()re");
    for (auto const& entry : std::filesystem::directory_iterator(ZQ_PANEL_SOURCES)) {
        if (entry.path().extension() != ".cpp" && entry.path().extension() != ".h") {
            continue;
        }
        std::string const source = contentOf(entry.path());
        std::ptrdiff_t named = 0;
        for (std::sregex_iterator found(source.begin(), source.end(), call), end; found != end; ++found) {
            inProgram.insert((*found)[1]);
            ++named;
        }
        EXPECT_EQ(std::distance(std::sregex_iterator(source.begin(), source.end(), anyCall), {}), named)
            << entry.path() << " sends an event whose name does not stand in the call";
    }
    std::set<std::string> inDocument;
    for (auto const& row : tableBehind(document(), "\n## Events\n")) {
        inDocument.insert(row.at(0));
    }
    EXPECT_THAT(inProgram, UnorderedElementsAreArray(inDocument));
}

} // namespace
