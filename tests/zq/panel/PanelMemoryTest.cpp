// What the panel remembers from run to run: kept beside what others write, damaged, not to be written.

#include "tests/zq/panel/PanelFixture.h"

#include <fstream>

#include <sys/stat.h>

#include "apps/zq/panel/PanelMemory.h"
#include "host/engine/files/WholeFile.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using zq::panel::BasketClip;
using zq::panel::PageLooks;

class PanelMemory : public testing::Test {
protected:
    // As the next run finds it.
    [[nodiscard]] zq::panel::PanelMemory next() const { return zq::panel::PanelMemory(file()); }
    [[nodiscard]] std::filesystem::path file() const { return folder_.path() / "panel.toml"; }
    [[nodiscard]] std::string content() const {
        return engine::readWholeFile(file(), 1'000'000).value_or("none");
    }
    void write(std::string const& text) const { std::ofstream(file()) << text; }

    test::TemporaryFolder folder_;
    panel_tests::EngineHome home_; // for the log
};

TEST_F(PanelMemory, BeginsWithNothing) {
    zq::panel::PanelMemory const memory(file());
    EXPECT_EQ(memory.words("T7"), "");
    EXPECT_TRUE(memory.basket("T7").empty());
    EXPECT_EQ(memory.looks().theme, "system");
    EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_F(PanelMemory, KnowsWhichOptionsFilterAsWasSeenLast) {
    zq::panel::PanelMemory memory(file());
    EXPECT_EQ(memory.isFilter("T7", "1/0/a.b"), std::nullopt);
    memory.setIsFilter("T7", "1/0/a.b", true);
    memory.setIsFilter("T7", "1/1/\"", true);
    memory.setIsFilter("T7", "1/1/\"", false);
    EXPECT_EQ(next().isFilter("T7", "1/0/a.b"), true);
    EXPECT_EQ(next().isFilter("T7", "1/1/\""), false);
    EXPECT_EQ(next().isFilter("FQ", "1/0/a.b"), std::nullopt);
}

TEST_F(PanelMemory, KeepsThePortsInTheirOrderAndNoMoreThanItsMost) {
    zq::panel::PanelMemory memory(file());
    EXPECT_TRUE(memory.ports().empty());
    memory.addPort(40'000);
    memory.addPort(30'000);
    memory.addPort(40'000);
    EXPECT_EQ(next().ports(), (std::vector<int>{40'000, 30'000}));
    for (int port = 50'000; port < 50'020; ++port) {
        memory.addPort(port);
    }
    EXPECT_EQ(next().ports().size(), zq::panel::PanelMemory::mostPorts);
    write("ports = [80, -1, 99999, \"x\", 2048]\n");
    EXPECT_EQ(next().ports(), (std::vector<int>{2048}));
    write("ports = 7\n");
    next().addPort(4000);
    EXPECT_EQ(next().ports(), (std::vector<int>{4000}));
}

TEST_F(PanelMemory, IsThereAgainInTheNextRunForEachRepositoryByItself) {
    {
        zq::panel::PanelMemory memory(file());
        memory.setWords("T7", "red car");
        memory.setWords("a.b \"c\"", "\u00e4");
        memory.setBasket("T7", {{"1", "one", "$5"}, {"2", "", ""}});
        memory.setLooks({"dark", "list", 320});
    }
    zq::panel::PanelMemory const memory = next();
    EXPECT_EQ(memory.words("T7"), "red car");
    EXPECT_EQ(memory.words("a.b \"c\""), "\u00e4");
    EXPECT_EQ(memory.words("FQ"), "");
    std::vector<BasketClip> const basket = memory.basket("T7");
    ASSERT_EQ(basket.size(), 2U);
    EXPECT_EQ(basket[0].name, "one");
    EXPECT_EQ(basket[0].price, "$5");
    EXPECT_EQ(basket[1].id, "2");
    PageLooks const looks = memory.looks();
    EXPECT_EQ(looks.theme, "dark");
    EXPECT_EQ(looks.view, "list");
    EXPECT_EQ(looks.thumbnail_px, 320);
}

TEST_F(PanelMemory, KeepsEveryText) {
    std::string all = "'''\"\"\"]}\n";
    for (int byte = 0; byte < 0x80; ++byte) {
        all += static_cast<char>(byte);
    }
    zq::panel::PanelMemory(file()).setWords("T7", all);
    EXPECT_EQ(next().words("T7"), all);
    zq::panel::PanelMemory(file()).setWords("T7", "a\xff\xc0z");
    EXPECT_THAT(next().words("T7"), testing::MatchesRegex("a(\xef\xbf\xbd)+z"))
        << "what is no text is replaced";
}

TEST_F(PanelMemory, IsItsUsersAlone) {
    zq::panel::PanelMemory(file()).setWords("T7", "car");
    struct stat status {};
    ASSERT_EQ(::stat(file().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(PanelMemory, TheSameWordsAreNotWrittenAgain) {
    zq::panel::PanelMemory memory(file());
    memory.setWords("T7", "car");
    std::filesystem::remove(file());
    memory.setWords("T7", "car");
    EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_F(PanelMemory, ADamagedFileCountsAsEmptyAndIsReplacedByTheNextChange) {
    for (char const* const damage :
         {"words = [", "theme = 3\nview = []\nrepositories = \"x\"\n", "[repositories]\nT7 = 1\n",
          "[repositories.T7]\nbasket = [1, {id = 2}, {}]\nwords = {}\n", "thumbnail_size = 99999999999\n",
          "\xff\xfe"}) {
        write(damage);
        zq::panel::PanelMemory memory(file());
        EXPECT_EQ(memory.words("T7"), "") << damage;
        EXPECT_TRUE(memory.basket("T7").empty()) << damage;
        EXPECT_EQ(memory.looks().theme, "system") << damage;
        EXPECT_EQ(memory.looks().thumbnail_px, 200) << damage;
        memory.setWords("T7", "car");
        EXPECT_EQ(next().words("T7"), "car") << damage;
    }
}

TEST_F(PanelMemory, ADamageThatComesLaterLosesNothing) {
    zq::panel::PanelMemory memory(file());
    memory.setWords("T7", "car");
    write("[");
    memory.setLooks({"dark", "grid", 200});
    EXPECT_EQ(next().words("T7"), "car");
}

TEST_F(PanelMemory, TwoProgramsOfOneHomeKeepWhatEachHasChanged) {
    zq::panel::PanelMemory one(file());
    zq::panel::PanelMemory two(file());
    one.setWords("T7", "car");
    two.setLooks({"light", "grid", 200});
    EXPECT_EQ(next().words("T7"), "car");
    EXPECT_EQ(next().looks().theme, "light");
    EXPECT_EQ(two.words("T7"), "car");
}

TEST_F(PanelMemory, WhatCannotBeWrittenHoldsForTheRunAndTheLogSaysSo) {
    zq::panel::PanelMemory memory(folder_.path() / "gone" / "panel.toml");
    memory.setWords("T7", "car");
    EXPECT_EQ(memory.words("T7"), "car");
    EXPECT_THAT(home_.log(), testing::HasSubstr("panel.toml cannot be written"));
}

} // namespace
