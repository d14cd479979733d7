// What the example's repository tells of a folder, also of one that means no good.

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <fstream>

#include "tests/install/ExampleFixture.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using zq_tests::itemOf;
using zq_tests::namesIn;
using zq_tests::parsed;
using zq_tests::textOf;

class ExampleSearch : public zq_tests::ExampleFixture {};

TEST_F(ExampleSearch, IsOfferedBehindTheService) {
    Zq::Ptr<JSON::Element> const info = ask({"info"});
    EXPECT_EQ(textOf(itemOf(info, "modules", 0), "name"), "Folder");
    EXPECT_EQ(textOf(itemOf(info, "modules", 1), "name"), "Tarn7");
    EXPECT_THAT(run({"columns"}).out, HasSubstr("Price")) << "the service's column";
    EXPECT_THAT(run({"--repository", "FO", "columns"}).out, HasSubstr("Modified"));
}

TEST_F(ExampleSearch, FindsTheWordsInNamesAndFoldersWhateverTheirCase) {
    EXPECT_THAT(search({}), ElementsAre("Boat", "Sunset over sea", "ÜBER"));
    EXPECT_THAT(search({"HARBOUR", "boat"}), ElementsAre("Boat"));
    EXPECT_THAT(search({"sea sunset"}), ElementsAre("Sunset over sea"));
    EXPECT_THAT(search({"über"}), ElementsAre("ÜBER"));
    EXPECT_THAT(search({"mov"}), ElementsAre("Boat", "ÜBER"));
    EXPECT_THAT(search({"boat", "sea"}), IsEmpty());
}

TEST_F(ExampleSearch, TellsSizeFormatAndPlaceOfAClip) {
    Zq::Ptr<JSON::Element> const answer = ask({"search", "sunset"});
    JSON::Element const& asset = itemOf(answer, "assets", 0);
    fs::path const file = footage() / "Sunset over sea.mp4";
    EXPECT_EQ(textOf(asset, "proxyLocation"), file.string());
    EXPECT_EQ(textOf(asset, "localPath"), file.string());
    EXPECT_EQ(textOf(asset, "mediaExtension"), "mp4");
    Zq::Ptr<JSON::Element> const display = asset.getChild("display");
    EXPECT_EQ(textOf(JSON::orEmpty(display), "45"), "mp4");
    EXPECT_THAT(textOf(JSON::orEmpty(display), "1001"), testing::MatchesRegex("[0-9]+\\.[0-9] MB"));
    EXPECT_THAT(textOf(JSON::orEmpty(display), "1002"),
                testing::MatchesRegex("20[0-9][0-9]-[01][0-9]-[0-3][0-9]"));
    EXPECT_EQ(textOf(JSON::orEmpty(asset.getChild("log")), "23"), "FO" + textOf(asset, "id"));
}

TEST_F(ExampleSearch, PagesHoldEachClipOnce) {
    Zq::Ptr<JSON::Element> const first = ask({"search", "--page-size", "2"});
    Zq::Ptr<JSON::Element> const second = ask({"search", "--page-size", "2", "--page", "2"});
    Zq::Ptr<JSON::Element> const third = ask({"search", "--page-size", "2", "--page", "3"});
    EXPECT_THAT(namesIn(first), ElementsAre("Boat", "Sunset over sea"));
    EXPECT_THAT(namesIn(second), ElementsAre("ÜBER"));
    EXPECT_THAT(namesIn(third), IsEmpty());
    for (Zq::Ptr<JSON::Element> const& page : {first, second, third}) {
        EXPECT_EQ(page->getInt("totalCount", 0), 3);
        EXPECT_EQ(page->getInt("pageCount", 0), 2);
    }
}

TEST_F(ExampleSearch, AClipKeepsItsNumberAndIsFoundByIt) {
    std::string const boat = clip("boat");
    EXPECT_EQ(clip("boat"), boat);
    EXPECT_THAT(search({boat}), ElementsAre("Boat"));
    // Also where the whole folder has moved, and with a separator behind it.
    fs::rename(footage(), folder() / "moved");
    show((folder() / "moved").string() + "/");
    EXPECT_EQ(clip("boat"), boat);
}

TEST_F(ExampleSearch, ShowsInTheSameProcessWhatComesToTheFolder) {
    auto const zq = shell();
    zq->write("search\n");
    EXPECT_EQ(namesIn(parsed(zq->readLine())).size(), 3U);
    test::putFootage(test::Footage::plain, footage() / "Another.mov");
    zq->write("search\n");
    EXPECT_THAT(namesIn(parsed(zq->readLine())), ElementsAre("Another", "Boat", "Sunset over sea", "ÜBER"));
}

TEST_F(ExampleSearch, TheFolderIsAnOptionOfTheSearch) {
    Zq::Ptr<JSON::Element> const options = ask({"options"});
    Zq::Ptr<JSON::Element> const params = itemOf(options, "groups", 0).getChild("params");
    Zq::Ptr<JSON::Element> const option = JSON::orEmpty(params).getChild(0);
    EXPECT_EQ(textOf(JSON::orEmpty(option), "type"), "text");
    EXPECT_EQ(textOf(JSON::orEmpty(option), "value"), footage().string());

    show("clips"); // below the host's media folder
    EXPECT_THAT(textOf(*ask({"search"}), "error"), HasSubstr((home() / "media" / "clips").string()));
    test::putFootage(test::Footage::plain, home() / "media" / "clips" / "One.mov");
    EXPECT_THAT(search({}), ElementsAre("One"));
}

TEST_F(ExampleSearch, AFolderThatCannotBeReadIsNamedWithTheReason) {
    show(folder() / "nowhere");
    EXPECT_EQ(textOf(*ask({"search"}), "error"),
              "the folder " + (folder() / "nowhere").string() + " cannot be read: No such file or directory");
    show(footage() / "ÜBER.MOV");
    EXPECT_THAT(textOf(*ask({"search"}), "error"), HasSubstr("cannot be read: Not a directory"));
}

TEST_F(ExampleSearch, NamesCannotLeadItAstray) {
    fs::path const odd = folder() / "odd";
    test::putFootage(test::Footage::plain, odd / "two\nlines.mov");
    test::putFootage(test::Footage::plain, odd / "not \xff utf-8.mov");
    test::putFootage(test::Footage::plain, odd / "._beside.mov");
    test::putFootage(test::Footage::plain, odd / ".hidden" / "inside.mov");
    test::putFootage(test::Footage::plain, odd / "-rf \xe2\x80\xae$(true).mov");
    fs::create_directory_symlink(odd, odd / "circle");
    fs::create_symlink("itself.mov", odd / "itself.mov");
    fs::create_symlink(footage() / "ÜBER.MOV", odd / "linked.mov");
    ASSERT_EQ(::mkfifo((odd / "pipe.mov").c_str(), 0600), 0);
    fs::create_directory(odd / "folder.mov");
    std::ofstream(odd / "text.txt") << "text";
    show(odd);

    EXPECT_THAT(search({}), ElementsAre("-rf \xe2\x80\xae$(true)", "linked", "two\nlines"));
    zq_tests::Finished const table = run({"--repository", "FO", "search", "lines"});
    EXPECT_THAT(table.out, HasSubstr("two lines"));
    std::string const id = clip("lines");
    Zq::Ptr<JSON::Element> const placed = ask({"place", id, "--sequence", "A"});
    EXPECT_EQ(placed->getInt("length", 0), 25);
}

TEST_F(ExampleSearch, CountsNoFurtherThanTheContractDoes) {
    fs::path const many = folder() / "many";
    constexpr int files = 66'000;
    for (int i = 0; i < files; i += 1000) { // names of one file a folder, which costs a tenth of files
        fs::path const part = many / std::to_string(i / 1000);
        auto const clip = [&](int number) { return part / ("clip " + std::to_string(number) + ".mov"); };
        fs::create_directories(part);
        std::ofstream{clip(i)};
        for (int further = i + 1; further < i + 1000; ++further) {
            fs::create_hard_link(clip(i), clip(further));
        }
    }
    show(many);
    Zq::Ptr<JSON::Element> const all = ask({"search", "--page-size", "500", "--page", "132"});
    EXPECT_EQ(all->getInt("totalCount", 0), 65'535);
    EXPECT_EQ(all->getInt("pageCount", 0), 132);
    EXPECT_EQ(namesIn(all).size(), 35U);
    EXPECT_THAT(search({"clip 65999"}), ElementsAre("clip 65999"));
}

} // namespace
