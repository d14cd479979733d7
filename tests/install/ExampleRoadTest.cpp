// The road of a clip of the example's repository: from the folder to a sequence, to the full file, to an
// export.

#include <gmock/gmock.h>

#include <fstream>

#include "tests/install/ExampleFixture.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;
using zq_tests::Finished;
using zq_tests::itemOf;
using zq_tests::parsed;
using zq_tests::textOf;

std::string read(fs::path const& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class ExampleRoad : public zq_tests::ExampleFixture {
protected:
    [[nodiscard]] std::string errorOf(Words const& words) const {
        return textOf(JSON::orEmpty(ask(words)), "error");
    }
    [[nodiscard]] std::string exported(char const* format) const {
        fs::path const file = folder() / (std::string("export.") + format);
        EXPECT_TRUE(ask({"export", "A", "--format", format, file.string()})->getBool("ok", false));
        return read(file);
    }
};

TEST_F(ExampleRoad, OpeningAClipFindsOutWhatItsNameDoesNotTell) {
    Zq::Ptr<JSON::Element> const edit = ask({"open", clip("sunset")});
    EXPECT_EQ(textOf(*edit, "name"), "Sunset over sea");
    EXPECT_EQ(textOf(*edit, "frameRateText"), "23.976");
    EXPECT_EQ(edit->getInt("durationInFrames", 0), 12);
    EXPECT_EQ(edit->getInt("audioChannels", -1), 1);
    EXPECT_TRUE(edit->getBool("videoMeasured", false));
    EXPECT_EQ(JSON::orEmpty(edit->getChild("video")).getInt("width", 0), 1920);
    EXPECT_TRUE(edit->getBool("temporary", false));
    EXPECT_EQ(textOf(*edit, "previewLocation"), (footage() / "Sunset over sea.mp4").string());
}

TEST_F(ExampleRoad, PlaysFromTheDisk) {
    fs::path const picture = folder() / "frame.png";
    Zq::Ptr<JSON::Element> const played =
        ask({"play", clip("boat"), "--seconds", "1", "--frame", picture.string()});
    EXPECT_EQ(played->getInt("frames", 0), 25) << textOf(*played, "error");
    EXPECT_EQ(played->getInt("requests", -1), 0);
    EXPECT_TRUE(fs::exists(picture));
}

TEST_F(ExampleRoad, LeadsFromASearchToAnExportOfTheFullFiles) {
    std::string const boat = clip("boat");
    std::string const file = (footage() / "Harbour" / "Boat.mov").string();
    Zq::Ptr<JSON::Element> const placed =
        ask({"place", boat, "--sequence", "A", "--in", "0.2", "--out", "0.8"});
    EXPECT_EQ(placed->getInt("length", 0), 15) << textOf(*placed, "error");
    Zq::Ptr<JSON::Element> const before = ask({"edits"});
    EXPECT_EQ(textOf(itemOf(before, "edits", 0), "mediaLocation"), "");
    EXPECT_THAT(exported("edl"), HasSubstr("preview"));

    Zq::Ptr<JSON::Element> const fetched = ask({"fetch", boat});
    EXPECT_EQ(textOf(itemOf(fetched, "relinked", 0), "file"), file) << textOf(*fetched, "error");
    EXPECT_THAT(JSON::orEmpty(itemOf(fetched, "relinked", 0).getChild("differences")).children(), SizeIs(0));
    EXPECT_THAT(JSON::orEmpty(fetched->getChild("failed")).children(), SizeIs(0));

    Zq::Ptr<JSON::Element> const edits = ask({"edits"});
    EXPECT_EQ(textOf(itemOf(edits, "edits", 0), "mediaLocation"), file);
    EXPECT_EQ(itemOf(ask({"sequence", "A"}), "placements", 0).getInt("in", 0), 5) << "no cut has moved";
    Zq::Ptr<JSON::Element> const usage = ask({"usage", "A"});
    EXPECT_EQ(usage->getInt("clipsToBuy", -1), 0);
    EXPECT_EQ(textOf(itemOf(usage, "uses", 0), "clip"), boat);
    for (char const* const format : {"edl", "mlt", "fcpxml", "otio"}) {
        std::string const text = exported(format);
        EXPECT_THAT(text, HasSubstr(file)) << format;
        EXPECT_THAT(text, Not(HasSubstr("preview, not licensed"))) << format;
    }
    Zq::Ptr<JSON::Element> const found = ask({"find", boat});
    EXPECT_EQ(textOf(*found, "id"), boat);
    EXPECT_EQ(textOf(*found, "localPath"), file);
}

TEST_F(ExampleRoad, FetchesAllThatTheFolderHolds) {
    Zq::Ptr<JSON::Element> const fetched = ask({"fetch", "--owned"});
    EXPECT_THAT(JSON::orEmpty(fetched->getChild("relinked")).children(), SizeIs(3));
    EXPECT_EQ(ask({"owned"})->getInt("totalCount", 0), 3);
}

TEST_F(ExampleRoad, SellsNothingAndSignsNobodyIn) {
    std::string const boat = clip("boat");
    EXPECT_EQ(errorOf({"buy", boat, "--credits"}), "Folder sells nothing: fetch takes what it has");
    EXPECT_EQ(errorOf({"buy", boat, "--cash"}), "Folder sells nothing: fetch takes what it has");
    EXPECT_EQ(errorOf({"login", "anna"}), "Folder has no accounts: nobody signs in");
    EXPECT_EQ(errorOf({"--login", "anna", "owned"}), "Folder has no accounts: nobody signs in");
    EXPECT_TRUE(ask({"logout"})->getBool("ok", false));
    EXPECT_EQ(run({"--repository", "FO", "form"}).out, "no sign-in is needed\n");
    EXPECT_EQ(errorOf({"fetch", "1"}), "there is no clip 1");
    EXPECT_THAT(run({"info"}).out, HasSubstr(footage().string()));
}

TEST_F(ExampleRoad, AClipsPictureLiesBesideIt) {
    std::string const boat = clip("boat");
    fs::path const picture = folder() / "boat.png";
    EXPECT_THAT(errorOf({"thumbnail", boat, picture.string()}), HasSubstr("no picture"));
    static_cast<void>(ask({"play", boat, "--frame", (footage() / "Harbour" / "Boat.png").string()}));
    Zq::Ptr<JSON::Element> const shown = ask({"thumbnail", boat, picture.string()});
    EXPECT_EQ(shown->getInt("width", 0), 320) << textOf(*shown, "error");
    EXPECT_TRUE(fs::exists(picture));
}

TEST_F(ExampleRoad, ADamagedFileIsToldAndStaysWhereItIs) {
    fs::path const file = footage() / "Damaged.mov";
    std::ofstream(file) << "no media";
    std::string const id = clip("damaged");
    EXPECT_THAT(errorOf({"place", id, "--sequence", "A"}),
                HasSubstr("the frame rate of the clip is unknown"));
    EXPECT_THAT(errorOf({"play", id}), HasSubstr("this is no media file"));
    EXPECT_THAT(errorOf({"fetch", id}), HasSubstr("this is no media file"));
    EXPECT_EQ(read(file), "no media");
    fs::remove(file);
    test::putFootage(test::Footage::plain, file);
    EXPECT_EQ(ask({"place", id, "--sequence", "A"})->getInt("length", 0), 25)
        << "mended, it is looked at anew";
}

TEST_F(ExampleRoad, AFolderMayVanishAtAnyMoment) {
    std::string const boat = clip("boat");
    auto const zq = shell();
    auto const answer = [&](std::string const& line) {
        zq->write(line + "\n");
        return parsed(zq->readLine());
    };
    EXPECT_EQ(answer("search")->getInt("totalCount", 0), 3);
    EXPECT_EQ(answer("place " + boat + " --sequence A")->getInt("length", 0), 25);
    fs::remove_all(footage());
    for (std::string const& line : Words{"search", "search boat", "fetch " + boat, "owned"}) {
        EXPECT_THAT(textOf(*answer(line), "error"), HasSubstr("cannot be read: No such file")) << line;
    }
    EXPECT_THAT(textOf(*answer("play " + boat), "error"), HasSubstr("there is no such file"));
    EXPECT_EQ(answer("place " + boat + " --sequence A")->getInt("length", 0), 25)
        << "the edit is the project's";
    fs::create_directory(footage());
    EXPECT_EQ(answer("search")->getInt("totalCount", -1), 0);
    EXPECT_TRUE(answer("search")->getBool("ok", false));
    EXPECT_THAT(textOf(*answer("fetch " + boat), "error"), HasSubstr("there is no clip " + boat));
}

} // namespace
