#include "apps/tarn7d/Catalogue.h"

#include <fstream>
#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/TemporaryFolder.h"
#include "tests/tarn7d/TestFootage.h"

namespace {

namespace fs = std::filesystem;
using namespace tarn7d;
using test::Footage;
using test::putFootage;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

class CatalogueTest : public testing::Test {
protected:
    CatalogueTest() { fs::create_directories(footage()); }

    [[nodiscard]] fs::path footage() const { return folder_.path() / "footage"; }
    void open() {
        catalogue_.reset();
        catalogue_ = std::make_unique<Catalogue>(folder_.path() / "catalogue.db", footage());
    }
    Catalogue::ScanReport scan(Catalogue::Settling settling = Catalogue::Settling::none) {
        if (catalogue_ == nullptr) {
            open();
        }
        return catalogue_->scan(settling);
    }
    void describe(std::string const& file, std::string const& text) {
        std::ofstream(footage() / file) << text;
    }
    [[nodiscard]] ClipPage find(std::string_view query, std::int64_t first = 0, std::int64_t count = 100) {
        return catalogue_->search(parseClipQuery(query), first, count);
    }
    [[nodiscard]] std::vector<std::string> titles(std::string_view query) {
        std::vector<std::string> result;
        for (Clip const& clip : find(query).clips) {
            result.push_back(clip.description.title);
        }
        return result;
    }
    [[nodiscard]] std::map<std::string, std::int64_t> numbers() {
        std::map<std::string, std::int64_t> result;
        for (Clip const& clip : find("").clips) {
            result[clip.path.string()] = clip.id;
        }
        return result;
    }

    test::TemporaryFolder folder_;
    std::unique_ptr<Catalogue> catalogue_;
};

TEST_F(CatalogueTest, ProbingReadsTheFormatOfAFile) {
    putFootage(Footage::plain, footage() / "plain.mov");
    putFootage(Footage::interlaced, footage() / "tape.mov");
    putFootage(Footage::large, footage() / "large.mp4");
    putFootage(Footage::fast, footage() / "fast.mov");
    EXPECT_EQ(scan().added, 4);
    std::map<std::string, MediaInfo> media;
    for (Clip const& clip : find("").clips) {
        media[clip.path.string()] = clip.media;
    }
    EXPECT_EQ(media["plain.mov"].codec, "mpeg4");
    EXPECT_EQ(media["plain.mov"].width, 320);
    EXPECT_EQ(media["plain.mov"].height, 240);
    EXPECT_EQ(media["plain.mov"].standard, 6);
    EXPECT_EQ(media["plain.mov"].rate, (Rate{25, 1}));
    EXPECT_EQ(media["plain.mov"].duration_ms, 1000);
    EXPECT_EQ(media["plain.mov"].sound, "no snd");
    EXPECT_EQ(media["tape.mov"].codec, "dvc");
    EXPECT_EQ(media["tape.mov"].standard, 2);
    EXPECT_EQ(media["tape.mov"].aspect, "4:3");
    EXPECT_EQ(media["tape.mov"].rate, (Rate{30000, 1001}));
    EXPECT_EQ(media["tape.mov"].sound, "48 kHz stereo pcm_s16le");
    EXPECT_EQ(media["large.mp4"].codec, "H.264 (main, avc1)");
    EXPECT_EQ(media["large.mp4"].standard, 4);
    EXPECT_EQ(media["large.mp4"].rate, (Rate{24000, 1001}));
    EXPECT_EQ(media["large.mp4"].sound, "44.1 kHz mono aac");
    EXPECT_EQ(media["fast.mov"].codec, "Apple ProRes 422 (hq)");
    EXPECT_EQ(media["fast.mov"].standard, 9);
}

TEST_F(CatalogueTest, FilesThatAreNoMovingPicturesAreSkippedOnce) {
    describe("notes.txt", "some text");
    describe("broken.mov", "no movie at all");
    describe("list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:10\n#EXTINF:10,\n/etc/hostname\n");
    EXPECT_EQ(scan().skipped, 3);
    EXPECT_EQ(scan().skipped, 0);
    open();
    EXPECT_EQ(scan().skipped, 0);
    EXPECT_EQ(find("").total, 0);
}

TEST_F(CatalogueTest, ASecondScanOpensNoFileAgain) {
    putFootage(Footage::plain, footage() / "a.mov");
    putFootage(Footage::plain, footage() / "b.mov");
    EXPECT_EQ(scan().added, 2);
    EXPECT_EQ(scan().added, 0);
    open();
    EXPECT_EQ(scan().added, 0);
    EXPECT_EQ(find("").total, 2);
}

TEST_F(CatalogueTest, NumbersStayWithTheirFilesAndAreNeverReused) {
    putFootage(Footage::plain, footage() / "a.mov");
    putFootage(Footage::plain, footage() / "b.mov");
    scan();
    auto const before = numbers();
    ASSERT_EQ(before.size(), 2U);

    fs::remove(footage() / "b.mov");
    EXPECT_EQ(scan().removed, 1);
    EXPECT_EQ(find("").total, 1);
    EXPECT_FALSE(catalogue_->find(before.at("b.mov")));

    open();
    putFootage(Footage::plain, footage() / "c.mov");
    scan();
    EXPECT_EQ(numbers().at("a.mov"), before.at("a.mov"));
    EXPECT_GT(numbers().at("c.mov"), before.at("b.mov"));

    putFootage(Footage::plain, footage() / "b.mov");
    scan();
    EXPECT_EQ(numbers().at("b.mov"), before.at("b.mov"));
}

TEST_F(CatalogueTest, AFileThatIsReplacedKeepsItsNumberAndIsReadAnew) {
    putFootage(Footage::plain, footage() / "a.mov");
    scan();
    std::int64_t const id = numbers().at("a.mov");
    putFootage(Footage::fast, footage() / "a.mov");
    EXPECT_EQ(scan().added, 1);
    EXPECT_EQ(catalogue_->find(id)->media.codec, "Apple ProRes 422 (hq)");
    EXPECT_EQ(find("").total, 1);
}

TEST_F(CatalogueTest, AClipThatBecomesUnreadableLeavesTheResults) {
    putFootage(Footage::plain, footage() / "a.mov");
    scan();
    describe("a.mov", "overwritten");
    scan();
    EXPECT_EQ(find("").total, 0);
    EXPECT_EQ(scan().skipped, 0);
}

TEST_F(CatalogueTest, AGrowingFileWaitsUntilItIsSeenTwiceTheSame) {
    scan();
    putFootage(Footage::plain, footage() / "a.mov");
    EXPECT_EQ(scan(Catalogue::Settling::wait).waiting, 1);
    EXPECT_EQ(find("").total, 0);
    EXPECT_EQ(scan(Catalogue::Settling::wait).added, 1);
    EXPECT_EQ(find("").total, 1);
}

TEST_F(CatalogueTest, ASideFileGivesTitleKeywordsAndPrice) {
    putFootage(Footage::plain, footage() / "a.mov");
    describe("a.toml", "title = \"Quiet \\\"harbour\\\"\"\nkeywords = [\"sea\", \"boats\"]\nprice = 19.99\n");
    scan();
    Clip const clip = find("harbour boats").clips.at(0);
    EXPECT_EQ(clip.description.title, "Quiet \"harbour\"");
    EXPECT_EQ(clip.description.price_cents, 1999);

    describe("a.toml", "title = \"Loud harbour\"\n");
    EXPECT_EQ(scan().added, 1);
    EXPECT_THAT(titles("harbour"), ElementsAre("Loud harbour"));
    EXPECT_THAT(titles("quiet"), ElementsAre());
}

TEST_F(CatalogueTest, ABadSideFileIsAsGoodAsNone) {
    putFootage(Footage::plain, footage() / "old_town.mov");
    describe("old_town.toml", "title = [[[ \n price = \"free\"");
    scan();
    EXPECT_THAT(titles(""), ElementsAre("Old town"));
}

TEST_F(CatalogueTest, FoldersAreKeywordsAndHiddenNamesAreLeftOut) {
    putFootage(Footage::plain, footage() / "wildlife" / "herons.mov");
    putFootage(Footage::plain, footage() / ".trash" / "old.mov");
    putFootage(Footage::plain, footage() / ".hidden.mov");
    scan();
    EXPECT_THAT(titles("wildlife"), ElementsAre("Herons"));
    EXPECT_EQ(find("").total, 1);
}

TEST_F(CatalogueTest, HostileNamesAreFilesLikeAnyOther) {
    std::vector<std::string> const names{"-y.mov",    "concat:a.mov|b.mov", "http:x.mov", "a\nb.mov",
                                         "'; rm.mov", "\xff\xfe.mov",       "%s%n.mov",   "a\"b.mov"};
    for (std::string const& name : names) {
        putFootage(Footage::plain, footage() / name);
    }
    EXPECT_EQ(scan().added, static_cast<int>(names.size()));
    EXPECT_EQ(find("").total, static_cast<std::int64_t>(names.size()));
    for (Clip const& clip : find("").clips) {
        EXPECT_EQ(clip.description.title.find('\n'), std::string::npos);
        EXPECT_TRUE(fs::exists(catalogue_->fileOf(clip)));
    }
}

class SearchTest : public CatalogueTest {
protected:
    SearchTest() {
        add("a", "Beach sunset", "sea holiday", 5.00);
        add("b", "Sunset over the city", "night", 5.01);
        add("c", "Café at noon", "sunset", 20);
        add("d", "東京の夕日", "japan", 50);
        add("e", "غروب الشمس", "desert", 1);
        add("f", "Ηλιοβασίλεμα 🌅", "greece", 2);
        scan();
    }
    void add(std::string const& name, std::string const& title, std::string const& keywords, double price) {
        putFootage(name == "b" ? Footage::large : Footage::plain, footage() / (name + ".mov"));
        describe(name + ".toml", "title = \"" + title + "\"\nkeywords = \"" + keywords +
                                     "\"\nprice = " + std::to_string(price) + "\n");
    }
};

TEST_F(SearchTest, AllWordsMustMatchInTitleOrKeywords) {
    EXPECT_THAT(titles("sunset"),
                UnorderedElementsAre("Beach sunset", "Sunset over the city", "Café at noon"));
    EXPECT_THAT(titles("sunset sea"), ElementsAre("Beach sunset"));
    EXPECT_THAT(titles("SUNS hol"), ElementsAre("Beach sunset"));
    EXPECT_THAT(titles("sunset submarine"), ElementsAre());
}

TEST_F(SearchTest, TitlesWeighMoreThanKeywords) {
    EXPECT_EQ(titles("sunset").back(), "Café at noon");
}

TEST_F(SearchTest, DiacriticsAndLetterCaseDoNotMatter) {
    EXPECT_THAT(titles("CAFE"), ElementsAre("Café at noon"));
}

TEST_F(SearchTest, EveryScriptCanBeSearched) {
    EXPECT_THAT(titles("夕日"), ElementsAre("東京の夕日"));
    EXPECT_THAT(titles("東京"), ElementsAre("東京の夕日"));
    EXPECT_THAT(titles("غروب"), ElementsAre("غروب الشمس"));
    EXPECT_THAT(titles("Ηλιο"), ElementsAre("Ηλιοβασίλεμα 🌅"));
    EXPECT_THAT(titles("🌅"), ElementsAre("Ηλιοβασίλεμα 🌅"));
}

TEST_F(SearchTest, AChosenPriceIsTheHighestThatPasses) {
    EXPECT_THAT(titles("sunset pricelt:5"), ElementsAre("Beach sunset"));
    EXPECT_THAT(titles("pricelt:1"), ElementsAre("غروب الشمس"));
    EXPECT_EQ(find("pricelt:50").total, 6);
}

TEST_F(SearchTest, LinesAndLengthMustBeExceeded) {
    EXPECT_EQ(find("linesgt:239").total, 6);
    EXPECT_THAT(titles("linesgt:240"), ElementsAre("Sunset over the city"));
    EXPECT_THAT(titles("linesgt:1079"), ElementsAre("Sunset over the city"));
    EXPECT_EQ(find("linesgt:1080").total, 0);
    EXPECT_EQ(find("durationgt:0").total, 6);
    EXPECT_EQ(find("durationgt:1").total, 0);
}

TEST_F(SearchTest, PagesFollowEachOtherWithoutGapsAndKnowTheTotal) {
    std::vector<std::int64_t> whole;
    for (Clip const& clip : find("").clips) {
        whole.push_back(clip.id);
    }
    EXPECT_TRUE(std::is_sorted(whole.begin(), whole.end()));
    std::vector<std::int64_t> paged;
    for (std::int64_t first = 0; first < 8; first += 2) {
        ClipPage const page = find("", first, 2);
        EXPECT_EQ(page.total, 6);
        for (Clip const& clip : page.clips) {
            paged.push_back(clip.id);
        }
    }
    EXPECT_EQ(paged, whole);
    EXPECT_TRUE(find("", 0, 0).clips.empty());
}

TEST_F(SearchTest, TheIndexsOperatorsHaveNoMeaning) {
    for (char const* query :
         {"\"", "\"\"\"", "AND", "OR NOT", "NEAR(sunset sea)", "title:sunset", "sun*set", "^sunset", "-", "(",
          "{title} : x", "sunset + sea", "';DROP TABLE clip;--", "—", "\\", "%"}) {
        EXPECT_NO_THROW((void)find(query)) << query;
    }
    EXPECT_THAT(titles("title:sunset"), ElementsAre());
    EXPECT_EQ(find("").total, 6);
}

TEST_F(CatalogueTest, AFileThatIsNoDatabaseIsRefused) {
    std::ofstream(folder_.path() / "catalogue.db") << std::string(5000, 'x');
    EXPECT_THROW(open(), std::runtime_error);
}

} // namespace
