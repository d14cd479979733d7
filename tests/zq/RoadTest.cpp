// The road from a search to a relinked edit, with the built program, the built module and the embedded
// service.

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "tests/tarn7d/TestFootage.h"
#include "tests/zq/EmbeddedService.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;
using zq_tests::errorOf;
using zq_tests::Finished;
using zq_tests::itemOf;
using zq_tests::keysOf;
using zq_tests::parsed;

std::string read(fs::path const& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class Road : public zq_tests::EmbeddedService {
protected:
    using EmbeddedService::EmbeddedService;

    Road() : car_(clip("car")), sea_(clip("sea")) {}

    [[nodiscard]] std::string place(std::string const& rest = {}) const {
        return "place " + car_ + " --sequence A " + rest;
    }

    std::string const car_;
    std::string const sea_;
};

TEST_F(Road, OpensTheEditOfAClipWithAllThatIsSetOnIt) {
    Zq::Ptr<JSON::Element> const edit = parsed(answers({"open " + car_})[0]);
    EXPECT_EQ(keysOf(JSON::orEmpty(edit)), (Words{"cookie",
                                                  "name",
                                                  "durationTimecode",
                                                  "frameRateText",
                                                  "previewLocation",
                                                  "mediaLocation",
                                                  "videoChannels",
                                                  "audioChannels",
                                                  "duration_s",
                                                  "durationInFrames",
                                                  "frameRate",
                                                  "sourceMedium",
                                                  "sourceDuration_s",
                                                  "transfer",
                                                  "sequenceKind",
                                                  "bitRate",
                                                  "ok",
                                                  "temporary",
                                                  "videoMeasured",
                                                  "frameBased",
                                                  "open",
                                                  "video",
                                                  "labels",
                                                  "differences",
                                                  "externalIds",
                                                  "log"}));
    EXPECT_EQ(edit->getString("name"), "Red car");
    EXPECT_TRUE(edit->getBool("temporary", false));
    EXPECT_EQ(edit->getInt("durationInFrames", 0), 25);
    EXPECT_EQ(edit->getString("durationTimecode"), "00:00:01:00");
    EXPECT_EQ(edit->getInt("audioChannels", -1), 0);
    EXPECT_EQ(itemOf(edit, "externalIds", 0).getString("id").view(), car_);
    EXPECT_EQ(itemOf(edit, "labels", 0).getInt("scanMode", 0), 1);
    EXPECT_TRUE(edit->getString("previewLocation").startsWith("Virtual:T7 https://"));
}

TEST_F(Road, PlacesPiecesAndTakesThemBack) {
    std::vector<std::string> const lines =
        answers({place("--in 0.2 --out 0.8"), "place " + sea_ + " --sequence A", "sequence A", "undo",
                 "sequence A", "edits", "sequence"});
    ASSERT_THAT(lines, SizeIs(7));
    Zq::Ptr<JSON::Element> const placed = parsed(lines[0]);
    EXPECT_EQ(placed->getInt("in", -1), 5);
    EXPECT_EQ(placed->getInt("out", -1), 20);
    EXPECT_EQ(placed->getInt("length", -1), 15);
    EXPECT_EQ(placed->getString("sourceIn"), "00:00:00:05");
    Zq::Ptr<JSON::Element> const both = parsed(lines[2]);
    EXPECT_EQ(itemOf(both, "placements", 0).getString("recordOut"), "00:00:00:15");
    EXPECT_EQ(itemOf(both, "placements", 1).getString("clip").view(), sea_);
    EXPECT_EQ(itemOf(both, "placements", 1).getInt("start", -1), 15);
    EXPECT_THAT(lines[3], StartsWith(R"({"ok":true,"undone":)"));
    EXPECT_EQ(parsed(lines[4])->getInt("length", -1), 15);
    EXPECT_EQ(itemOf(parsed(lines[5]), "edits", 0).getInt("uses", -1), 1);
    EXPECT_EQ(lines[6], R"({"ok":true,"sequences":["A"]})");
    EXPECT_EQ(parsed(answers({"sequence A"})[0])->getInt("length", -1), 15) << "it is kept for the next run";
}

TEST_F(Road, ShowsASequenceAsATable) {
    static_cast<void>(answers({place("--in 0.2 --out 0.8")}));
    Finished const shown = run({"sequence", "A"});
    EXPECT_EQ(shown.out, "Piece  Clip  Name       Source in   Source out           In          Out  Plays\n"
                         "    1     " +
                             car_ +
                             "  Red car  00:00:00:05  00:00:00:20  00:00:00:00  00:00:00:15  preview\n"
                             "A: 00:00:00:15, 15 frames at 25 frames a second\n");
}

TEST_F(Road, RefusesWhatCannotBePlaced) {
    std::vector<std::string> const lines = answers(
        {"place 424242 --sequence A", "place ../7 --sequence A", place("--in 0.8 --out 0.2"), place("--in 5"),
         "sequence A", "sequence B", "undo", "open 424242", "find 7", "find " + std::string(38, '0')});
    EXPECT_EQ(errorOf(lines[0]), "the service has no clip 424242");
    EXPECT_EQ(errorOf(lines[1]), "\"../7\" is no clip's number: those have decimal digits only, 18 at most");
    EXPECT_NE(errorOf(lines[2]), "");
    EXPECT_NE(errorOf(lines[3]), "");
    EXPECT_EQ(errorOf(lines[4]), "there is no sequence \"A\"; \"place\" makes one");
    EXPECT_EQ(errorOf(lines[5]), "there is no sequence \"B\"; \"place\" makes one");
    EXPECT_NE(errorOf(lines[6]), "") << "nothing was done";
    EXPECT_EQ(errorOf(lines[7]), "the service has no clip 424242");
    EXPECT_THAT(errorOf(lines[8]), StartsWith("the project has no edit of clip 7"));
    EXPECT_THAT(errorOf(lines[9]), StartsWith("the project has no edit 0000"));
}

TEST_F(Road, AsksForASignInWhereOneIsNeeded) {
    for (std::string const line : {"buy 1 --credits", "buy 1 --cash", "owned", "fetch 1", "fetch --owned"}) {
        EXPECT_THAT(errorOf(answers({line})[0]), StartsWith("Sign in first: zq login NAME")) << line;
    }
    EXPECT_EQ(run({"--json", "--login", "anna", "owned"}, "open sesame\n").out,
              "{\"ok\":true,\"totalCount\":0,\"assets\":[]}\n");
    Finished const refused = run({"--json", "--login", "anna", "owned"}, "wrong\n");
    EXPECT_EQ(refused.out, "{\"ok\":false,\"error\":\"the password is wrong\"}\n");
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(run({"--login", "anna", "owned"}).err, HasSubstr("should be the password"));
}

TEST_F(Road, LeadsFromTheCostToTheFullFile) {
    std::vector<std::string> const lines =
        signedIn({place("--in 0.2 --out 0.8"), "usage A", "buy " + car_ + " --credits", "usage A", "owned",
                  "fetch " + car_, "sequence A", "find " + car_, "fetch " + car_, "edits", "undo", "edits"});
    ASSERT_THAT(lines, SizeIs(12));

    Zq::Ptr<JSON::Element> const cost = parsed(lines[1]);
    EXPECT_EQ(itemOf(cost, "uses", 0).getString("owned"), "not owned");
    std::int64_t const price = itemOf(cost, "uses", 0).getInt("price", -1);
    EXPECT_GT(price, 0);
    EXPECT_EQ(cost->getInt("total", -1), price);
    EXPECT_EQ(cost->getInt("clipsToBuy", -1), 1);

    Zq::Ptr<JSON::Element> const bought = parsed(lines[2]);
    EXPECT_TRUE(bought->getBool("ok", false)) << lines[2];
    EXPECT_EQ(bought->getInt("code", -1), 2);
    EXPECT_EQ(bought->getInt("credits", -1), 100 - price);

    Zq::Ptr<JSON::Element> const after = parsed(lines[3]);
    EXPECT_EQ(itemOf(after, "uses", 0).getString("owned"), "owned");
    EXPECT_EQ(after->getInt("total", -1), 0);
    EXPECT_EQ(after->getInt("credits", -1), 100 - price);

    Zq::Ptr<JSON::Element> const list = parsed(lines[4]);
    JSON::Element const& owned = itemOf(list, "assets", 0);
    EXPECT_EQ(owned.getString("id").view(), car_);
    EXPECT_TRUE(owned.getBool("purchased", false));
    Words const keys = keysOf(owned);
    EXPECT_THAT(keys, testing::IsSupersetOf(Words{"tr", "v", "localPath"}));

    Zq::Ptr<JSON::Element> const fetched = parsed(lines[5]);
    EXPECT_TRUE(fetched->getBool("ok", false)) << lines[5];
    EXPECT_TRUE(fetched->getBool("result", false));
    JSON::Element const& relinked = itemOf(fetched, "relinked", 0);
    EXPECT_EQ(relinked.getString("id").view(), car_);
    fs::path const file = std::string(relinked.getString("file").view());
    EXPECT_EQ(read(file), read(folder() / "footage" / "red car.mov"));
    EXPECT_EQ(itemOf(fetched, "events", 0).getString("text"), "Red car");
    EXPECT_FALSE(itemOf(fetched, "failed", 0).getString("id").length());

    Zq::Ptr<JSON::Element> const sequence = parsed(lines[6]);
    EXPECT_FALSE(itemOf(sequence, "placements", 0).getBool("preview", true));
    EXPECT_EQ(itemOf(sequence, "placements", 0).getInt("in", -1), 5);
    EXPECT_EQ(itemOf(sequence, "placements", 0).getInt("out", -1), 20);

    EXPECT_EQ(parsed(lines[7])->getString("id").view(), car_);
    Zq::Ptr<JSON::Element> const again = parsed(lines[8]);
    EXPECT_TRUE(again->getBool("ok", false)) << "the file that is there is taken: " << lines[8];
    EXPECT_EQ(itemOf(parsed(lines[9]), "edits", 0).getString("mediaLocation").view(), file.string());
}

TEST_F(Road, TellsTheAddressOfThePaymentPageWhetherABrowserShowsItOrNot) {
    environment.emplace_back();
    for (std::string const browser : {"/no/browser", "true"}) {
        environment.back() = "ZQ_BROWSER=" + browser;
        Zq::Ptr<JSON::Element> const answer = parsed(signedIn({"buy " + car_ + " --cash"})[0]);
        EXPECT_EQ(answer->getInt("code", -1), 2);
        EXPECT_THAT(std::string(answer->getString("page").view()), HasSubstr("/pay/"));
    }
}

TEST_F(Road, OfAPurchaseThatIsTooDearEndsWithTheServicesWords) {
    ASSERT_EQ(addAccount("poor", "open sesame", "0").status, 0);
    std::vector<std::string> const lines =
        answers({"login poor", "open sesame", "buy " + car_ + " " + sea_ + " --credits",
                 "buy 424242 --credits", "buy 1,2 --credits", "owned"});
    EXPECT_EQ(errorOf(lines[1]),
              "nothing was bought: the service refused the request: The cart costs more than "
              "the account's credits");
    EXPECT_EQ(parsed(lines[1])->getInt("code", -1), 3);
    EXPECT_THAT(errorOf(lines[2]), StartsWith("nothing was bought: the service refused the request: "));
    EXPECT_EQ(parsed(lines[2])->getInt("code", -1), 0);
    EXPECT_EQ(errorOf(lines[3]), "\"1,2\" is no clip's number: those have decimal digits only, 18 at most");
    EXPECT_EQ(parsed(lines[4])->getInt("totalCount", -1), 0);
}

TEST_F(Road, HasTheCostAsASpreadsheet) {
    static_cast<void>(answers({place("--in 0.2 --out 0.8")}));
    std::string const table = run({"usage", "A", "--csv"}).out;
    EXPECT_THAT(
        table,
        StartsWith("repository,clip,name,source in,source out,record in,record out,owned,price,licensor,"
                   "account,legal notice\r\nT7," +
                   car_ + ",Red car,00:00:00:05,00:00:00:20,00:00:00:00,00:00:00:15,unknown,$"));
    EXPECT_THAT(run({"usage", "A"}).out, HasSubstr("A: to buy: 1 clip, $"));
    EXPECT_THAT(errorOf(answers({"usage B"})[0]), HasSubstr("there is \"A\""));
}

TEST_F(Road, TellsBeforeARelinkingWhatItWouldChange) {
    fs::path const other = folder() / "other.mov";
    test::putFootage(test::Footage::fast, other);
    std::ofstream(folder() / "text.mov") << "no media";
    std::vector<std::string> const lines =
        answers({place("--in 0.2 --out 0.8"), "relink " + car_ + " " + other.string() + " --check", "edits",
                 "relink " + car_ + " " + (folder() / "text.mov").string(),
                 "relink " + car_ + " " + (folder() / "none.mov").string(), "edits",
                 "relink " + car_ + " " + other.string(), "edits"});
    ASSERT_THAT(lines, SizeIs(8));
    Zq::Ptr<JSON::Element> const check = parsed(lines[1]);
    EXPECT_TRUE(check->getBool("ok", false)) << lines[1];
    EXPECT_FALSE(check->getBool("changed", true));
    EXPECT_EQ(JSON::orEmpty(check->getChild("file")).getInt("height", 0), 720);
    EXPECT_GT(JSON::orEmpty(check->getChild("differences")).getNumChildren(), 0);
    EXPECT_EQ(itemOf(check, "uses", 0).getString("sequence"), "A");
    auto const plays = [&](std::string const& line) {
        return std::string(itemOf(parsed(line), "edits", 0).getString("mediaLocation").view());
    };
    EXPECT_EQ(plays(lines[2]), "");
    EXPECT_NE(errorOf(lines[3]), "");
    EXPECT_THAT(errorOf(lines[4]), StartsWith("there is no file "));
    EXPECT_EQ(plays(lines[5]), "") << "the preview stays";
    EXPECT_TRUE(parsed(lines[6])->getBool("changed", false)) << lines[6];
    EXPECT_EQ(plays(lines[7]), other.string());
}

TEST_F(Road, EndsInAFileForAnotherProgramWithAWarningForEachPreview) {
    static_cast<void>(answers({place("--in 0.2 --out 0.8")}));
    fs::path const file = folder() / "A.mlt";
    Finished const finished = run({"export", "A", "--format", "mlt", file.string()});
    EXPECT_EQ(finished.status, 0) << finished.err;
    EXPECT_EQ(finished.out, file.string() + "\n");
    EXPECT_THAT(finished.err, HasSubstr("Red car"));
    EXPECT_THAT(read(file), HasSubstr("<mlt"));
    std::vector<std::string> const lines =
        answers({"export A --format otio " + file.string(), "export A --format avi " + file.string(),
                 "export B --format edl " + file.string(), "export A --format edl /dev/null/A.edl"});
    EXPECT_THAT(JSON::orEmpty(parsed(lines[0])->getChild("warnings")).strings(), SizeIs(1)) << lines[0];
    EXPECT_EQ(errorOf(lines[1]), "there is no format \"avi\"; there is mlt, edl, fcpxml and otio");
    EXPECT_THAT(errorOf(lines[2]), StartsWith("there is no sequence \"B\""));
    EXPECT_EQ(errorOf(lines[3]), "cannot write /dev/null/A.edl");
    EXPECT_THAT(read(file), StartsWith("{")) << "a failed export leaves the file as it was";
}

TEST_F(Road, IsClosedToASecondProgramForWriting) {
    auto const first = start({"--json", "shell"});
    first->write(place() + "\n");
    EXPECT_THAT(first->readLine(), StartsWith(R"({"ok":true,"sequence":"A")"));
    std::vector<std::string> const lines = answers({"sequence A", place(), "undo", "info"});
    EXPECT_EQ(parsed(lines[0])->getInt("length", -1), 25);
    EXPECT_THAT(errorOf(lines[1]), StartsWith("another zq works on this project"));
    EXPECT_THAT(errorOf(lines[2]), StartsWith("another zq works on this project"));
    EXPECT_THAT(lines[3], HasSubstr(R"("writable":false)"));
}

} // namespace
