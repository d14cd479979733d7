// The project's routes: arranging, undoing, what is refused, usage, and files for other editors.

#include "tests/tarn7d/TestFootage.h"
#include "tests/zq/panel/WholePanel.h"

#include <filesystem>
#include <fstream>

#include "apps/zq/Text.h"
#include "apps/zq/panel/plainFileName.h"
#include "host/engine/project/Project.h"

namespace {

namespace fs = std::filesystem;
using namespace panel_tests;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class PanelProject : public testing::Test {
protected:
    PanelProject() {
        addEdit("1", "one", "$5");
        addEdit("2", "two, \"the\" second", "$7.50");
        addEdit("3", "three", "");
    }
    void addEdit(std::string const& id, std::string const& name, std::string const& price) {
        engine::Project& project = home_.engine().project();
        EditModifier edit(project.makeNewClip(1, 0, 2.0, Zq::FrameRate::f25, Cookie()));
        LogAttributeMap attributes;
        attributes.add(LogAttribute(LogAttribute::eName), NarrowString(name));
        attributes.add(LogAttribute(LogAttribute::ePrice), NarrowString(price));
        edit->setLogAttributes(attributes);
        edit->setTemporary(false);
        project.associate(edit->getCookie(), L"SH", zq::wide(id));
    }
    static std::string body(std::string const& clip, std::string const& more = "") {
        return R"({"repository":"SH","clip":")" + clip + "\"" + more + "}";
    }
    Zq::Ptr<JSON::Element> place(std::string const& clip, std::string const& more = "") {
        return panel_.json("POST", "/sequences/{sequence}/pieces", {"cut"}, body(clip, more));
    }
    std::string refusal(std::string const& text) {
        return panel_.failureOf("POST", "/sequences/{sequence}/pieces", {"cut"}, text);
    }
    Zq::Ptr<JSON::Element> cut() { return panel_.json("GET", "/sequences/{sequence}", {"cut"}); }
    std::vector<std::string> clips() {
        std::vector<std::string> ids;
        auto const pieces = child(cut(), "pieces"); // owns what is read below
        for (JSON::ChildMember const& piece : JSON::orEmpty(pieces).children()) {
            ids.emplace_back(piece.element->getStringView("clip"));
        }
        return ids;
    }
    std::string pieceAt(std::uint16_t index) {
        return std::to_string(item(cut(), "pieces", index)->getInt("piece", 0));
    }
    std::string changing(std::string const& piece, std::string const& text) {
        return panel_.failureOf("PATCH", "/sequences/{sequence}/pieces/{piece}", {"cut", piece}, text);
    }

    EngineHome home_;
    Zq::Ptr<ShelfRepository> const repository_ = Zq::makeShared<ShelfRepository>();
    WholePanel panel_{
        home_.engine(), {repository_.get()}, [] { return std::vector<engine::ServerStatistics>(); }};
};

TEST_F(PanelProject, ShowsAnEmptySequenceWhereThereIsNone) {
    EXPECT_EQ(text(cut(), "name"), "cut");
    EXPECT_EQ(child(cut(), "pieces")->getNumChildren(), 0);
    EXPECT_FALSE(cut()->hasNum("rate"));
    auto const project = panel_.json("GET", "/project");
    EXPECT_TRUE(project->getBool("writable", false));
    EXPECT_EQ(text(project, "undo"), "");
    EXPECT_THAT(texts(project, "sequences"), IsEmpty());
}

TEST_F(PanelProject, PlacesClipsWithTheirTimes) {
    static_cast<void>(place("1"));
    auto const sequence = place("2", R"(,"in":0.4,"out":1.2,"at":0)");
    EXPECT_THAT(clips(), ElementsAre("2", "1"));
    EXPECT_FLOAT_EQ(sequence->getFloat("duration", 0), 2.8F);
    EXPECT_EQ(child(sequence, "rate")->numbers()[0].value, 25);
    auto const first = item(sequence, "pieces", 0);
    EXPECT_EQ(text(first, "repository"), "SH");
    EXPECT_EQ(text(first, "name"), "two, \"the\" second");
    EXPECT_EQ(text(first, "state"), "preview");
    EXPECT_EQ(first->getInt("task", -1), 0);
    EXPECT_FLOAT_EQ(first->getFloat("in", 0), 0.4F);
    EXPECT_FLOAT_EQ(first->getFloat("out", 0), 1.2F);
    EXPECT_FLOAT_EQ(first->getFloat("clipDuration", 0), 2.0F);
    EXPECT_EQ(text(first, "sourceIn"), "00:00:00:10");
    EXPECT_EQ(text(first, "recordOut"), "00:00:00:20");
    auto const second = item(sequence, "pieces", 1);
    EXPECT_EQ(second->getInt("index", 0), 1);
    EXPECT_FLOAT_EQ(second->getFloat("start", 0), 0.8F);
}

TEST_F(PanelProject, MovesTrimsRemovesAndTakesStepsBack) {
    static_cast<void>(place("1"));
    static_cast<void>(place("2"));
    EXPECT_EQ(changing(pieceAt(1), R"({"at":0})"), "none");
    EXPECT_THAT(clips(), ElementsAre("2", "1"));
    EXPECT_EQ(changing(pieceAt(0), R"({"out":1})"), "none");
    EXPECT_FLOAT_EQ(cut()->getFloat("duration", 0), 3.0F);
    EXPECT_EQ(panel_.failureOf("DELETE", "/sequences/{sequence}/pieces/{piece}", {"cut", pieceAt(1)}),
              "none");
    EXPECT_THAT(clips(), ElementsAre("2"));
    auto const undone = panel_.json("POST", "/project/undo");
    EXPECT_THAT(text(undone, "text"), HasSubstr("removing"));
    EXPECT_EQ(text(child(undone, "project"), "redo"), text(undone, "text"));
    auto const step = child(child(undone, "project"), "redoStep");
    EXPECT_EQ(text(step, "kind"), "removing");
    EXPECT_EQ(text(step, "clip"), "one");
    EXPECT_EQ(text(step, "sequence"), "cut");
    EXPECT_EQ(text(child(child(undone, "project"), "undoStep"), "kind"), "trimming");
    EXPECT_THAT(clips(), ElementsAre("2", "1"));
    static_cast<void>(panel_.json("POST", "/project/redo"));
    EXPECT_THAT(clips(), ElementsAre("2"));
    EXPECT_EQ(panel_.failureOf("POST", "/project/redo"), "conflict");
}

TEST_F(PanelProject, TellsEveryChangeToThePages) {
    static_cast<void>(place("1"));
    auto const told = panel_.awaitEvent(
        "project", [](auto const& project) { return texts(project, "sequences").size() == 1; });
    EXPECT_THAT(text(told, "undo"), HasSubstr("placing"));
    std::int64_t const revision = told->getInt("revision", 0);
    static_cast<void>(panel_.json("POST", "/project/undo"));
    panel_.awaitEvent("project", [revision](auto const& project) {
        return project->getInt("revision", 0) > revision && texts(project, "sequences").empty();
    });
}

TEST_F(PanelProject, RefusesWhatHasNoMeaning) {
    static_cast<void>(place("1"));
    EXPECT_EQ(refusal("{}"), "bad_request");
    EXPECT_EQ(refusal(body("1", R"(,"in":"0")")), "bad_request");
    EXPECT_EQ(refusal(body("1", R"(,"in":-1)")), "bad_request");
    EXPECT_EQ(refusal(body("1", R"(,"at":0.5)")), "bad_request");
    EXPECT_EQ(refusal(body("1", R"(,"at":1e300)")), "bad_request");
    EXPECT_EQ(refusal(body("1", R"(,"at":7)")), "conflict");
    EXPECT_EQ(refusal(body("1", R"(,"in":1,"out":1)")), "conflict");
    EXPECT_EQ(refusal(body("1", R"(,"in":3)")), "conflict");
    EXPECT_EQ(refusal(R"({"repository":"XX","clip":"1"})"), "not_found");
    EXPECT_EQ(refusal(body("77")), "not_found");
    EXPECT_EQ(changing(pieceAt(0), "{}"), "bad_request");
    EXPECT_EQ(changing(pieceAt(0), R"({"at":0,"in":1})"), "bad_request");
    EXPECT_EQ(changing(pieceAt(0), R"({"at":5})"), "conflict");
    EXPECT_EQ(changing("99", R"({"at":0})"), "not_found");
    EXPECT_EQ(panel_.failureOf("DELETE", "/sequences/{sequence}/pieces/{piece}", {"other", pieceAt(0)}),
              "not_found");
    EXPECT_THAT(clips(), ElementsAre("1"));
}

TEST_F(PanelProject, CountsPositionsAsTheRequestDoes) {
    auto const textOfRefusal = [this](std::string const& method, std::vector<std::string> parts,
                                      std::string const& what) -> std::string {
        try {
            static_cast<void>(panel_.call(method,
                                          parts.size() == 1 ? "/sequences/{sequence}/pieces"
                                                            : "/sequences/{sequence}/pieces/{piece}",
                                          parts, {}, what));
        } catch (zq::panel::ApiError const& error) {
            return error.what();
        }
        return "none";
    };
    EXPECT_EQ(textOfRefusal("POST", {"cut"}, body("1", R"(,"at":1)")), "\"at\" can only be 0");
    static_cast<void>(place("1"));
    EXPECT_EQ(textOfRefusal("POST", {"cut"}, body("2", R"(,"at":2)")), "\"at\" goes from 0 to 1");
    EXPECT_EQ(textOfRefusal("PATCH", {"cut", pieceAt(0)}, R"({"at":1})"), "\"at\" can only be 0");
    static_cast<void>(place("2", R"(,"at":1)"));
    EXPECT_EQ(textOfRefusal("PATCH", {"cut", pieceAt(0)}, R"({"at":2})"), "\"at\" goes from 0 to 1");
    EXPECT_EQ(textOfRefusal("PATCH", {"cut", pieceAt(0)}, R"({"at":1})"), "none");
    EXPECT_THAT(clips(), ElementsAre("2", "1"));
}

TEST_F(PanelProject, SaysWhichFilesAreThere) {
    static_cast<void>(place("1"));
    engine::Project& project = home_.engine().project();
    Cookie const edit = project.findObject(L"SH", L"1");
    fs::path const film = home_.path() / "film.mov";
    test::putFootage(test::Footage::plain, film);
    auto const relinked = project.relink(edit, zq::wide(film.string()));
    ASSERT_TRUE(relinked) << relinked.error();
    auto const piece = item(cut(), "pieces", 0);
    EXPECT_EQ(text(piece, "state"), "full");
    EXPECT_EQ(child(piece, "differences")->getNumChildren(), relinked->differences.size());
    EXPECT_EQ(text(item(piece, "differences", 0), "found"), relinked->differences.at(0).found);
    fs::remove(film);
    EXPECT_EQ(text(item(cut(), "pieces", 0), "state"), "missing");
}

TEST_F(PanelProject, GivesTheBytesOfFullMediaByTheIdOfItsClip) {
    auto const refused = [this](std::string const& clip) {
        return panel_.failureOf("GET", "/repositories/{repository}/clips/{clip}/media", {"SH", clip});
    };
    EXPECT_EQ(refused("1"), "not_found") << "it plays its preview still";
    fs::path const film = home_.path() / "film.mov";
    test::putFootage(test::Footage::plain, film);
    engine::Project& project = home_.engine().project();
    ASSERT_TRUE(project.relink(project.findObject(L"SH", L"1"), zq::wide(film.string())));
    auto const media = panel_.call("GET", "/repositories/{repository}/clips/{clip}/media", {"SH", "1"});
    EXPECT_EQ(media.type, "video/mp4");
    EXPECT_EQ(media.fresh_s, 0U);
    std::string bytes(static_cast<std::size_t>(fs::file_size(film)), '\0');
    ASSERT_EQ(media.content->size(), bytes.size());
    std::ifstream(film, std::ios::binary).read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    std::string got(100, '\0');
    EXPECT_EQ(media.content->read(1'000, got), got.size());
    EXPECT_EQ(got, bytes.substr(1'000, 100));
    for (std::string const& clip :
         {film.string(), std::string("../film.mov"), std::string("2"), std::string()}) {
        EXPECT_EQ(refused(clip), "not_found") << clip;
    }
    fs::remove(film);
    EXPECT_EQ(refused("1"), "not_found");
}

TEST_F(PanelProject, ReportsWhatASequenceCosts) {
    for (std::string const clip : {"1", "2", "1", "3"}) {
        static_cast<void>(place(clip));
    }
    auto const open = panel_.json("GET", "/sequences/{sequence}/usage", {"cut"});
    EXPECT_EQ(text(open, "totalText"), "$12.50");
    EXPECT_FLOAT_EQ(open->getFloat("total", 0), 12.5F);
    EXPECT_EQ(open->getInt("clipsToBuy", 0), 3);
    EXPECT_EQ(open->getInt("clipsWithoutPrice", 0), 1);
    EXPECT_FALSE(open->getBool("ownershipKnown", true));
    EXPECT_EQ(text(item(open, "uses", 0), "owned"), "unknown");
    EXPECT_EQ(text(item(open, "uses", 1), "recordIn"), "00:00:02:00");
    EXPECT_EQ(item(open, "uses", 1)->getInt("start", 0), 50) << "in frames, as the command line has it";

    repository_->signedInUser = L"ada";
    repository_->onOwned = [](auto&) {
        return LightweightVector<RemoteAsset>{ShelfRepository::clip("2", "two", "")};
    };
    auto const known = panel_.json("GET", "/sequences/{sequence}/usage", {"cut"});
    EXPECT_TRUE(known->getBool("ownershipKnown", false));
    EXPECT_EQ(text(known, "totalText"), "$5");
    EXPECT_EQ(text(item(known, "uses", 1), "owned"), "owned");
    EXPECT_EQ(panel_.failureOf("GET", "/sequences/{sequence}/usage", {"other"}), "not_found");
}

TEST_F(PanelProject, ReportsUnderWhoseTermsClipsAreUsedAndWhatIsOfNobodyHere) {
    repository_->description.legalNotice = L"Clips of this shelf, &lt;as is&gt;";
    repository_->signedInUser = L"ada";
    static_cast<void>(place("1"));
    engine::Project& project = home_.engine().project();
    EditModifier edit(project.makeNewClip(1, 0, 1.0, Zq::FrameRate::f25, Cookie()));
    edit->setTemporary(false);
    project.associate(edit->getCookie(), L"XX", L"77");
    ASSERT_TRUE(project.place("cut", edit->getCookie(), {}, {}));
    auto const usage = panel_.json("GET", "/sequences/{sequence}/usage", {"cut"});
    EXPECT_EQ(child(usage, "uses")->getNumChildren(), 1);
    EXPECT_EQ(text(item(usage, "uses", 0), "repository"), "SH");
    EXPECT_EQ(child(usage, "repositories")->getNumChildren(), 1);
    auto const licensor = item(usage, "repositories", 0);
    EXPECT_EQ(text(licensor, "shortName"), "SH");
    EXPECT_EQ(text(licensor, "user"), "ada");
    EXPECT_EQ(text(licensor, "legalNotice"), "Clips of this shelf, <as is>");
    ASSERT_EQ(child(usage, "others")->getNumChildren(), 1);
    EXPECT_EQ(text(item(usage, "others", 0), "recordIn"), "00:00:02:00");
    auto const csv = panel_.call("GET", "/sequences/{sequence}/usage", {"cut"}, {{"format", "csv"}});
    EXPECT_THAT(csv.body, HasSubstr("ada,\"Clips of this shelf, <as is>\"\r\n"));
    EXPECT_THAT(csv.body, HasSubstr(",00:00:02:00,00:00:03:00,unknown,,,,\r\n")) << "none is left out";
}

TEST_F(PanelProject, GivesTheReportAsAFile) {
    static_cast<void>(place("2"));
    auto const csv = panel_.call("GET", "/sequences/{sequence}/usage", {"cut"}, {{"format", "csv"}});
    EXPECT_EQ(csv.saveAs, "cut usage.csv");
    EXPECT_EQ(csv.type, "text/csv; charset=utf-8");
    EXPECT_EQ(csv.body, "repository,clip,name,source in,source out,record in,record out,owned,price,"
                        "licensor,account,legal notice\r\n"
                        "SH,2,\"two, \"\"the\"\" second\",00:00:00:00,00:00:02:00,00:00:00:00,00:00:02:00,"
                        "unknown,$7.50,,,\r\n");
    auto const json = panel_.call("GET", "/sequences/{sequence}/usage", {"cut"}, {{"format", "json"}});
    EXPECT_EQ(json.saveAs, "cut usage.json");
    EXPECT_EQ(text(parsed(json.body), "sequence"), "cut");
    EXPECT_EQ(panel_.failureOf("GET", "/sequences/{sequence}/usage", {"cut"}, "{}", {{"format", "pdf"}}),
              "bad_request");
}

TEST_F(PanelProject, LeavesForOtherEditorsWithWarningsBeforehand) {
    static_cast<void>(place("1"));
    for (std::string const format : {"mlt", "edl", "fcpxml", "otio"}) {
        auto const file = panel_.call("GET", "/sequences/{sequence}/export", {"cut"}, {{"format", format}});
        EXPECT_EQ(file.saveAs, "cut." + format);
        EXPECT_THAT(file.body, HasSubstr("one")) << format;
        auto const check =
            panel_.call("GET", "/sequences/{sequence}/export", {"cut"}, {{"format", format}, {"check", "1"}});
        EXPECT_EQ(check.saveAs, "");
        EXPECT_EQ(text(item(parsed(check.body), "warnings", 0), "kind"), "preview") << format;
        EXPECT_EQ(text(item(parsed(check.body), "warnings", 0), "clip"), "one") << format;
    }
    EXPECT_EQ(panel_.failureOf("GET", "/sequences/{sequence}/export", {"cut"}), "bad_request");
    EXPECT_EQ(panel_.failureOf("GET", "/sequences/{sequence}/export", {"no"}, "{}", {{"format", "edl"}}),
              "not_found");
}

// The project of a panel that was started while another program worked on it.
class PanelBehindAnother : public testing::Test {
protected:
    PanelBehindAnother() { place("theirs"); }
    // As the other program does.
    void place(std::string const& sequence) {
        EditModifier const edit(other_->makeNewClip(1, 0, 2.0, Zq::FrameRate::f25, Cookie()));
        other_->associate(edit->getCookie(), L"SH", L"1");
        auto const placed = other_->place(sequence, edit->getCookie(), std::nullopt, std::nullopt);
        ASSERT_TRUE(placed) << placed.error();
    }
    std::string placing() {
        try {
            static_cast<void>(panel_.call("POST", "/sequences/{sequence}/pieces", {"cut"}, {},
                                          R"({"repository":"SH","clip":"1"})"));
        } catch (zq::panel::ApiError const& error) {
            EXPECT_EQ(error.code(), zq::panel::ErrorCode::conflict);
            return error.what();
        }
        return "none";
    }

    std::unique_ptr<engine::Project> other_;
    EngineHome home_{[this](fs::path const& home) {
        auto opened = engine::Project::open(home / "project.sqlite", nullptr);
        ASSERT_TRUE(opened) << opened.error();
        other_ = std::move(*opened);
    }};
    Zq::Ptr<ShelfRepository> const repository_ = Zq::makeShared<ShelfRepository>();
    WholePanel panel_{
        home_.engine(), {repository_.get()}, [] { return std::vector<engine::ServerStatistics>(); }};
};

TEST_F(PanelBehindAnother, CanOnlyBeLookedAt) {
    auto const project = panel_.json("GET", "/project");
    EXPECT_FALSE(project->getBool("writable", true));
    EXPECT_THAT(texts(project, "sequences"), ElementsAre("theirs"));
    auto const pieces = panel_.json("GET", "/sequences/{sequence}", {"theirs"});
    ASSERT_EQ(child(pieces, "pieces")->getNumChildren(), 1);
    std::string const text =
        "another program works on this project: until that ends it can only be looked at";
    EXPECT_EQ(placing(), text);
    std::string const piece = std::to_string(item(pieces, "pieces", 0)->getInt("piece", 0));
    EXPECT_EQ(
        panel_.failureOf("PATCH", "/sequences/{sequence}/pieces/{piece}", {"theirs", piece}, R"({"out":1})"),
        "conflict");
    EXPECT_EQ(panel_.failureOf("DELETE", "/sequences/{sequence}/pieces/{piece}", {"theirs", piece}),
              "conflict");
    EXPECT_EQ(panel_.failureOf("POST", "/project/undo"), "conflict");
    EXPECT_EQ(other_->sequence("theirs")->placements.size(), 1U);
}

TEST_F(PanelBehindAnother, ItsChangesAreToldToThePages) {
    place("more");
    auto const told = panel_.awaitEvent(
        "project", [](auto const& project) { return texts(project, "sequences").size() == 2; });
    EXPECT_FALSE(told->getBool("writable", true));
    ASSERT_TRUE(other_->undo());
    panel_.awaitEvent("project", [](auto const& project) { return texts(project, "sequences").size() == 1; });
}

TEST_F(PanelBehindAnother, WhenThatEndsThePagesAreToldAndCanChangeIt) {
    EXPECT_FALSE(panel_.json("GET", "/project")->getBool("writable", true));
    other_.reset();
    panel_.awaitEvent("project", [](auto const& project) { return project->getBool("writable", false); });
    EXPECT_EQ(placing(), "none");
}

TEST(PanelEvents, TellWhetherSomebodyListens) {
    zq::panel::EventHub events;
    EXPECT_FALSE(events.isHeard());
    std::shared_ptr<zq::panel::LiveText> page = events.listen(0);
    EXPECT_TRUE(events.isHeard());
    page.reset();
    EXPECT_FALSE(events.isHeard()) << "nothing is looked for then";
}

TEST(PlainFileName, HasNothingThatASystemTakesForAPlace) {
    using zq::panel::plainFileName;
    EXPECT_EQ(plainFileName("../a/b\\c:d\n", "edl"), "_a_b_c_d_.edl");
    EXPECT_EQ(plainFileName("", "edl"), "sequence.edl");
    EXPECT_EQ(plainFileName("..", "edl"), "sequence.edl");
    EXPECT_EQ(plainFileName(std::string(119, 'a') + "é", "mlt"), std::string(119, 'a') + ".mlt");
}

TEST(PlainFileName, HasNoMarkThatMakesItLookLikeAnother) {
    using zq::panel::plainFileName;
    EXPECT_EQ(plainFileName("cut \u202etlm.exe", "edl"), "cut _tlm.exe.edl");
    for (std::string const mark :
         {"\u061c", "\u200e", "\u200f", "\u2028", "\u2029", "\u0085", "\u202a", "\u202b", "\u202c", "\u202d",
          "\u202e", "\u2066", "\u2067", "\u2068", "\u2069"}) {
        EXPECT_EQ(plainFileName("a" + mark + "b" + mark, "edl"), "a_b_.edl");
    }
    EXPECT_EQ(plainFileName("\u2027\u2030 \u05e9\u05dc\u05d5\u05dd \u30ab", "edl"),
              "\u2027\u2030 \u05e9\u05dc\u05d5\u05dd \u30ab.edl");
}

} // namespace
