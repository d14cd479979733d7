// What a good request finds.
#include "tests/tarn7d/FrameQuarryFixture.h"

#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>

#include "host/json/NumberMembers.h"
#include "tests/tarn7d/TestFootage.h"

namespace {

using namespace tarn7d;
using test::FrameQuarryRequest;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

class FrameQuarrySearchTest : public test::FrameQuarryFixture {};

TEST_F(FrameQuarrySearchTest, ASearchAnswersWithTypedItems) {
    test::putFootage(test::Footage::plain, service_.footage / "a sunset.mov");
    test::putFootage(test::Footage::large, service_.footage / "b city.mov");
    std::ofstream(service_.footage / "a sunset.toml")
        << "title = \"S\u00fcd & \\\"West\\\" = \u5915\u65e5\"\n";
    service_.catalogue.scan(Catalogue::Settling::none);

    Element const answer = ask(request("\u5915\u65e5"));
    ASSERT_EQ(codeOf(answer), "");
    EXPECT_EQ(answer->getInt("totalSearchResults", -1), 1);
    ASSERT_EQ(answer->getChild("info")->getNumChildren(), 1);
    Element const item = answer->getChild("info")->getChild(0);
    EXPECT_EQ(item->getInt("id", -1), 1);
    EXPECT_EQ(item->getStringView("title"), "S\u00fcd & \"West\" = \u5915\u65e5");
    EXPECT_EQ(JSON::findNumber(*item, "duration"), 1.0);
    EXPECT_EQ(item->getStringView("thumbnail_url"), "https://media.example/icons/000000001_iconm.jpeg");
    EXPECT_EQ(item->getStringView("preview_url"), "https://media.example/previews/000000001.mp4");
    Element const versions = item->getChild("download_format_details");
    ASSERT_NE(versions, nullptr);
    ASSERT_EQ(versions->getNumChildren(), 1);
    Element const original = versions->getChild(0);
    EXPECT_EQ(original->getStringView("name"), "Original");
    EXPECT_EQ(original->getStringView("extension"), "mov");
    EXPECT_EQ(original->getInt("width", -1), 320);
    EXPECT_EQ(original->getInt("height", -1), 240);
    EXPECT_EQ(JSON::findNumber(*original, "frame_rate"), 25.0);
    EXPECT_EQ(original->getInt("size_bytes", -1),
              static_cast<std::int64_t>(std::filesystem::file_size(service_.footage / "a sunset.mov")));
}

TEST_F(FrameQuarrySearchTest, ALargeClipHasItsSmallerVersionBehindTheOriginal) {
    test::putFootage(test::Footage::large, service_.footage / "city.mov");
    service_.catalogue.scan(Catalogue::Settling::none);
    Element const item = firstItem();
    EXPECT_EQ(JSON::findNumber(*item, "duration"), 0.501); // 12 frames
    Element const versions = item->getChild("download_format_details");
    ASSERT_EQ(versions->getNumChildren(), 2);
    EXPECT_EQ(JSON::findNumber(*versions->getChild(0), "frame_rate"), 23.976);
    EXPECT_EQ(versions->getChild(0)->getInt("width", -1), 1920);
    EXPECT_EQ(versions->getChild(1)->getStringView("extension"), "mp4");
    EXPECT_EQ(versions->getChild(1)->getInt("width", -1), 1280);
    EXPECT_EQ(versions->getChild(1)->getInt("height", -1), 720);
    EXPECT_FALSE(versions->getChild(1)->hasNum("size_bytes"));
}

TEST_F(FrameQuarrySearchTest, NumbersKeepTheirFractionsAndTheirRange) {
    putClips({"A clip"});
    engine::Database(service_.catalogueFile).execute("UPDATE clip SET size=5000000000, duration_ms=12480");
    Element const item = firstItem();
    EXPECT_EQ(JSON::findNumber(*item, "duration"), 12.48);
    Element const original = item->getChild("download_format_details")->getChild(0);
    EXPECT_EQ(JSON::findNumber(*original, "frame_rate"), 29.97);
    EXPECT_EQ(JSON::findNumber(*original, "size_bytes"), 5e9);
}

TEST_F(FrameQuarrySearchTest, AnUnknownRateIsLeftOut) {
    putClips({"A clip"});
    engine::Database(service_.catalogueFile).execute("UPDATE clip SET rate_numerator=0");
    Element const item = firstItem();
    Element const original = item->getChild("download_format_details")->getChild(0);
    EXPECT_FALSE(original->hasNum("frame_rate"));
    EXPECT_EQ(original->getInt("width", -1), 720);
}

TEST_F(FrameQuarrySearchTest, PagesAreBroughtIntoTheirBounds) {
    putClips({"One", "Two", "Three"});
    struct {
        char const* page;
        char const* size;
        std::vector<std::int64_t> ids;
    } const cases[] = {
        {"1", "2", {1, 2}},
        {"2", "2", {3}},
        {"3", "2", {}},
        {"0", "2", {1, 2}},
        {"-5", "2", {1, 2}},
        {"", "2", {1, 2}},
        {"two", "2", {1, 2}},
        {"2x", "2", {1, 2}},
        {"1", "0", {}},
        {"1", "-1", {}},
        {"1", "", {1, 2, 3}},
        {"1", "many", {1, 2, 3}},
        {"1", "1001", {1, 2, 3}},
        {"99999999999999999999", "99999999999999999999", {}},
        {"2147483648", "1000", {}},
        {"-99999999999999999999", "1", {1}},
    };
    for (auto const& expected : cases) {
        FrameQuarryRequest const made = pageOf(expected.page, expected.size);
        EXPECT_THAT(found(made), ElementsAreArray(expected.ids)) << expected.page << " " << expected.size;
        EXPECT_EQ(total(made), 3) << expected.page << " " << expected.size;
    }
}

TEST_F(FrameQuarrySearchTest, APageHoldsAThousandClipsAtMostAndFiftyUnasked) {
    putClips(std::vector<std::string>(1002, "A clip"));
    EXPECT_THAT(found(pageOf("1", "5000")), SizeIs(1000));
    EXPECT_THAT(found(pageOf("2", "1000")), ElementsAre(1001, 1002));
    EXPECT_THAT(found(pageOf("1", "x")), SizeIs(50));
    EXPECT_EQ(total(pageOf("1", "0")), 1002);
}

TEST_F(FrameQuarrySearchTest, ClipsComeInTheOrderOfTheOtherSearch) {
    putClips({"City at night, with a harbour and many lights on the water", "Night", "Harbour",
              "Night harbour", "Harbour by day"});
    for (std::string const words : {"", "night", "harbour", "HARB", "night harbour", "nothing"}) {
        Element const reply =
            service_.askOne(R"({"command":"search","query":)" + test::jsonString(words) + "}");
        EXPECT_EQ(found(words), idsOf(JSON::orEmpty(reply).getChild("items"))) << words;
        EXPECT_EQ(total(request(words)), JSON::orEmpty(reply).getInt("tot_nbr_rows", -2)) << words;
    }
    EXPECT_THAT(found("night"), SizeIs(3));
    EXPECT_EQ(found("night").front(), 2);
}

TEST_F(FrameQuarrySearchTest, FilterWordsAreOrdinaryWords) {
    putClips({"Cheap pricelt:5 shot", "Another"});
    EXPECT_THAT(found("pricelt:5"), ElementsAre(1));
    EXPECT_THAT(found("linesgt:1"), IsEmpty());
    EXPECT_THAT(found("durationgt:0"), IsEmpty());
}

TEST_F(FrameQuarrySearchTest, HostileWordsAreWords) {
    putClips({"Sunset"});
    for (std::string const& words :
         {std::string("\" OR title:*"), std::string("sunset' UNION SELECT * --"), std::string("NEAR(a b)"),
          std::string("a\0b", 3), std::string("\xff\xfe\xc3"), std::string("\xed\xa0\x80"),
          std::string("<script>&amp;{\"info\":[]}"), std::string("%s%n%d"), std::string("*:^-(")}) {
        // Raw bytes: what is not UTF-8 has no other form.
        FrameQuarryRequest const rest = request();
        std::string const query = rest.query();
        std::string escaped = "keywords=";
        for (char const c : words) {
            constexpr char digits[] = "0123456789ABCDEF";
            auto const byte = static_cast<unsigned char>(c);
            escaped += {'%', digits[byte >> 4], digits[byte & 15]};
        }
        EXPECT_EQ(code(escaped + query.substr(query.find('&'))), "") << words;
    }
    EXPECT_THAT(found("sunset"), ElementsAre(1));
}

TEST_F(FrameQuarrySearchTest, AFailureOfTheServiceIsARefusal) {
    engine::Database(service_.catalogueFile).execute("DROP TABLE clip");
    EXPECT_EQ(code(request()), "internal");
}

} // namespace
