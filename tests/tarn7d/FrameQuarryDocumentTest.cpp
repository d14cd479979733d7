// The section of the protocol document, held against the code.
#include "tests/tarn7d/FrameQuarryFixture.h"

#include <fstream>
#include <sstream>

#include <gmock/gmock.h>

#include "apps/tarn7d/Renditions.h"
#include "tests/tarn7d/TestFootage.h"

namespace {

using namespace tarn7d;
using testing::SizeIs;

std::string documentSection(std::string const& heading) {
    std::ostringstream text;
    text << std::ifstream(TARN7D_PROTOCOL_DOCUMENT).rdbuf();
    std::string const document = text.str();
    std::size_t const start = document.find("\n" + heading + "\n");
    if (start == std::string::npos) {
        return {};
    }
    return document.substr(start, document.find("\n#", start + 1) - start);
}

// What stands in backticks in the first cell of the section's tables.
std::vector<std::string> documentedNames(std::string const& heading) {
    std::istringstream text(documentSection(heading));
    std::vector<std::string> names;
    for (std::string line; std::getline(text, line);) {
        if (line.starts_with("| `")) {
            std::string const cell = line.substr(2, line.find(" |", 2) - 2);
            for (std::size_t at = 0; (at = cell.find('`', at)) != std::string::npos;) {
                std::size_t const end = cell.find('`', at + 1);
                names.push_back(cell.substr(at + 1, end - at - 1));
                at = end + 1;
            }
        }
    }
    return names;
}

std::set<std::string> asSet(std::vector<std::string> const& names) {
    return {names.begin(), names.end()};
}

class FrameQuarryDocument : public test::FrameQuarryFixture {};

TEST_F(FrameQuarryDocument, NamesTheRefusalsInTheirOrder) {
    std::vector<std::string> known;
    for (FrameQuarryRefusalRow const& row : frameQuarryRefusals()) {
        EXPECT_FALSE(row.message.empty());
        known.emplace_back(row.code);
    }
    EXPECT_EQ(documentedNames("### FrameQuarry refusals"), known);
}

TEST_F(FrameQuarryDocument, NamesTheMembersOfTheAnswer) {
    test::putFootage(test::Footage::large, service_.footage / "city.mov");
    service_.catalogue.scan(Catalogue::Settling::none);
    Element const answer = ask(request());
    EXPECT_EQ(asSet(documentedNames("### FrameQuarry answer")), keysOf(*answer));
    Element const item = answer->getChild("info")->getChild(0);
    EXPECT_EQ(asSet(documentedNames("### FrameQuarry item")), keysOf(*item));
    EXPECT_EQ(asSet(documentedNames("### FrameQuarry version")),
              keysOf(*item->getChild("download_format_details")->getChild(0)));
}

TEST_F(FrameQuarryDocument, NamesParametersThatCountOnceOnly) {
    std::vector<std::string> const names = documentedNames("## FrameQuarry protocol");
    EXPECT_THAT(names, SizeIs(6));
    for (std::string const& name : names) {
        EXPECT_EQ(code(request().query() + "&" + name + "=1"), "bad_request") << name;
    }
}

TEST_F(FrameQuarryDocument, TheExampleOfTheDocumentIsAGoodRequest) {
    putClips({"Beach sunset", "City"});
    service_.now = 1'800'000'000;
    std::string const section = documentSection("### FrameQuarry example");
    std::string const line = "GET " + std::string(FrameQuarryProtocol::searchPath) + "?";
    std::size_t const start = section.find(line);
    ASSERT_NE(start, std::string::npos);
    std::size_t const query = start + line.size();
    Element const answer = ask(section.substr(query, section.find('\n', query) - query));
    ASSERT_EQ(codeOf(answer), "");
    EXPECT_EQ(answer->getInt("totalSearchResults", -1), 1);
}

TEST_F(FrameQuarryDocument, NamesFilesThatTheServiceKnows) {
    std::vector<std::string> const names = documentedNames("## Media");
    EXPECT_THAT(names, SizeIs(5));
    for (std::string const& name : names) {
        std::string const number = "NNNNNNNNN";
        ASSERT_TRUE(name.starts_with(number)) << name;
        EXPECT_TRUE(parseRenditionName("000000001" + name.substr(number.size()))) << name;
    }
}

} // namespace
