#include "tests/install/ExampleFixture.h"

#include <fstream>

namespace zq_tests {

namespace fs = std::filesystem;

ExampleFixture::ExampleFixture() {
    test::putFootage(test::Footage::plain, footage() / "Harbour" / "Boat.mov");
    test::putFootage(test::Footage::large, footage() / "Sunset over sea.mp4");
    test::putFootage(test::Footage::plain, footage() / "ÜBER.MOV");
    // The example comes first: that the service is offered first all the same is the priority's doing.
    std::ofstream(home() / "host.toml")
        << "[modules]\npath = [\"" << ZQ_TEST_MODULES << "\", \"" << ZQ_INSTALLED_MODULES << "\"]\n";
    show(footage());
}

void ExampleFixture::show(fs::path const& folder) const {
    EXPECT_TRUE(ask({"set", "0", "0", folder.string()})->getBool("ok", false));
}

Zq::Ptr<JSON::Element> ExampleFixture::ask(Words words) const {
    words.insert(words.begin(), {"--repository", "FO", "--json"});
    return parsed(run(words).out);
}

std::unique_ptr<RunningProgram> ExampleFixture::shell() const {
    return start({"--repository", "FO", "--json", "shell"});
}

std::vector<std::string> ExampleFixture::search(Words words) const {
    words.insert(words.begin(), "search");
    Zq::Ptr<JSON::Element> const answer = ask(words);
    EXPECT_TRUE(JSON::orEmpty(answer).getBool("ok", false)) << textOf(JSON::orEmpty(answer), "error");
    return namesIn(answer);
}

std::string ExampleFixture::clip(std::string const& words) const {
    Zq::Ptr<JSON::Element> const answer = ask({"search", words});
    EXPECT_EQ(JSON::orEmpty(answer).getInt("totalCount", 0), 1) << words;
    return textOf(itemOf(answer, "assets", 0), "id");
}

std::string textOf(JSON::Element const& element, char const* key) {
    return std::string(element.getString(key).view());
}

std::vector<std::string> namesIn(Zq::Ptr<JSON::Element> const& answer) {
    std::vector<std::string> names;
    Zq::Ptr<JSON::Element> const assets = JSON::orEmpty(answer).getChild("assets");
    for (JSON::ChildMember const& asset : JSON::orEmpty(assets).children()) {
        names.push_back(textOf(JSON::orEmpty(asset.element->getChild("log")), "1"));
    }
    return names;
}

} // namespace zq_tests
