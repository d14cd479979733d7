// A sequence that is arranged with the built program: its answers for programs and for people, over several
// runs.

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "tests/zq/EmbeddedService.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using zq_tests::errorOf;
using zq_tests::Finished;
using zq_tests::itemOf;
using zq_tests::parsed;

// Pieces 1 (10 frames of the car), 2 (the whole sea, 13 frames of 25 a second) and 3 (5 frames of the car) in
// "My cut".
class Arranging : public zq_tests::EmbeddedService {
protected:
    Arranging() : car_(clip("car")), sea_(clip("sea")) {
        std::vector<std::string> const lines =
            answers({place(car_, "--out 0.4"), place(sea_, ""), place(car_, "--in 0.2 --out 0.4")});
        for (std::string const& line : lines) {
            EXPECT_EQ(errorOf(line), "") << line;
        }
    }

    [[nodiscard]] static std::string place(std::string const& clip, std::string const& rest) {
        return "place " + clip + " --sequence 'My cut' " + rest;
    }
    // The numbers of the pieces in a line of "sequence"; they stand one behind the other.
    static std::vector<std::int64_t> piecesIn(std::string const& line) {
        Zq::Ptr<JSON::Element> const answer = parsed(line);
        std::vector<std::int64_t> numbers;
        std::int64_t end = 0;
        for (std::uint16_t i = 0; itemOf(answer, "placements", i).getInt("number", 0) != 0; ++i) {
            JSON::Element const& piece = itemOf(answer, "placements", i);
            numbers.push_back(piece.getInt("number", 0));
            EXPECT_EQ(piece.getInt("start", -1), end) << line;
            end += piece.getInt("length", 0);
        }
        return numbers;
    }
    [[nodiscard]] std::vector<std::int64_t> pieces() const {
        return piecesIn(answers({"sequence 'My cut'"})[0]);
    }
    // With what differs from one service to the next written as a word.
    [[nodiscard]] std::string fixed(std::string text) const {
        auto const replace = [&text](std::string const& what, std::string const& with) {
            for (std::size_t at = text.find(what); at != std::string::npos;
                 at = text.find(what, at + with.size())) {
                text.replace(at, what.size(), with);
            }
        };
        replace("\"clip\":\"" + car_ + "\"", "\"clip\":\"CAR\"");
        replace("\"clip\":\"" + sea_ + "\"", "\"clip\":\"SEA\"");
        for (std::size_t at = text.find("\"edit\":\""); at != std::string::npos;
             at = text.find("\"edit\":\"", at + 1)) {
            text.replace(at + 8, 38, "COOKIE");
        }
        return text;
    }

    std::string const car_;
    std::string const sea_;
};

TEST_F(Arranging, AnswersInJsonAsTheGoldenFileHasIt) {
    std::vector<std::string> const lines =
        answers({place(car_, "--out 0.2 --at 1"), "move 3 1", "trim 3 --in 0.24 --out 0.32",
                 "trim 3 --out 0.28", "remove 2", "undo", "redo", "redo", "sequence 'My cut'"});
    std::ifstream stream(std::filesystem::path(ZQ_GOLDEN) / "arranging.jsonl");
    std::vector<std::string> expected;
    for (std::string line; std::getline(stream, line);) {
        expected.push_back(line);
    }
    ASSERT_THAT(lines, SizeIs(expected.size()));
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(fixed(lines[i]), expected[i]);
    }
}

TEST_F(Arranging, PlacesAtAPosition) {
    ASSERT_EQ(run({"place", car_, "--sequence", "My cut", "--at", "2"}).status, 0);
    EXPECT_THAT(pieces(), ElementsAre(1, 4, 2, 3));
    ASSERT_EQ(run({"place", car_, "--sequence", "My cut", "--at", "5"}).status, 0);
    EXPECT_THAT(pieces(), ElementsAre(1, 4, 2, 3, 5));
    EXPECT_THAT(run({"place", car_, "--sequence", "My cut", "--at", "7"}).err,
                HasSubstr("positions go from 1 to 6"));
    EXPECT_THAT(run({"place", car_, "--sequence", "New", "--at", "2"}).err,
                HasSubstr("the only position is 1"));
    EXPECT_EQ(answers({"sequence"})[0], R"({"ok":true,"sequences":["My cut"]})");
}

TEST_F(Arranging, TellsAPersonWhatItDid) {
    EXPECT_EQ(run({"move", "1", "2"}).out,
              "moved Red car in \"My cut\" at 00:00:00:13: 00:00:00:00 to 00:00:00:10, 10 frames\n");
    EXPECT_EQ(run({"undo"}).out, "taken back: moving \"Red car\" in \"My cut\"\n");
    EXPECT_EQ(run({"redo"}).out, "done again: moving \"Red car\" in \"My cut\"\n");
    EXPECT_EQ(run({"trim", "1", "--in", "0.2"}).out,
              "trimmed Red car in \"My cut\" at 00:00:00:13: 00:00:00:05 to 00:00:00:10, 5 frames\n");
    EXPECT_EQ(run({"remove", "2"}).out, "removed Sea from \"My cut\"\n");
    EXPECT_EQ(run({"remove", "3"}).out, "removed Red car from \"My cut\"\n");
    EXPECT_EQ(run({"remove", "1"}).out, "removed Red car from \"My cut\", which had no other piece\n");
    EXPECT_THAT(run({"sequence", "My cut"}).err, HasSubstr("there is no sequence \"My cut\""));
}

TEST_F(Arranging, GoesBackAndForthOverRunsOfTheProgram) {
    EXPECT_EQ(run({"move", "3", "1"}).status, 0);
    EXPECT_EQ(run({"trim", "3", "--out", "0.28"}).status, 0);
    EXPECT_EQ(run({"remove", "1"}).status, 0);
    EXPECT_THAT(pieces(), ElementsAre(3, 2));
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(run({"undo"}).status, 0);
    }
    EXPECT_THAT(pieces(), ElementsAre(1, 2, 3));
    EXPECT_EQ(run({"redo"}).status, 0);
    EXPECT_THAT(pieces(), ElementsAre(3, 1, 2));
    EXPECT_EQ(run({"remove", "2"}).status, 0);
    EXPECT_THAT(run({"redo"}).err, HasSubstr("there is nothing to do again"));
    EXPECT_THAT(pieces(), ElementsAre(3, 1));
}

TEST_F(Arranging, RefusesWhatCannotBe) {
    std::vector<std::string> const lines =
        answers({"move 9 1", "move 1 4", "trim 1", "trim 1 --in 0.4", "trim 3 --out 0.2", "trim 1 --in 9",
                 "remove 9", "redo", "sequence 'My cut'"});
    EXPECT_EQ(errorOf(lines[0]), "no sequence has a piece 9");
    EXPECT_EQ(errorOf(lines[1]), "positions go from 1 to 3");
    EXPECT_EQ(errorOf(lines[2]), "trimming needs an in point or an out point");
    EXPECT_EQ(errorOf(lines[3]), "the in point (0.4 s) does not lie before the end of the piece");
    EXPECT_EQ(errorOf(lines[4]), "the out point (0.2 s) does not lie behind the beginning of the piece");
    EXPECT_EQ(errorOf(lines[5]), "the in point (9 s) lies outside the clip, which has 1 s");
    EXPECT_EQ(errorOf(lines[6]), "no sequence has a piece 9");
    EXPECT_EQ(errorOf(lines[7]), "there is nothing to do again");
    EXPECT_THAT(piecesIn(lines[8]), ElementsAre(1, 2, 3));
}

TEST_F(Arranging, LooksOnWhileAnotherProgramWorks) {
    auto const first = start({"--json", "shell"});
    first->write("move 3 1\n");
    EXPECT_EQ(errorOf(first->readLine()), "");
    std::vector<std::string> const lines =
        answers({"sequence 'My cut'", "move 1 1", "trim 1 --in 0.2", "remove 1", "undo", "redo"});
    EXPECT_THAT(piecesIn(lines[0]), ElementsAre(3, 1, 2));
    for (std::size_t i = 1; i < lines.size(); ++i) {
        EXPECT_THAT(errorOf(lines[i]), HasSubstr("another zq works on this project")) << i;
    }
    first->write("undo\nquit\n");
    EXPECT_EQ(first->finish().status, 0);
    EXPECT_THAT(pieces(), ElementsAre(1, 2, 3));
}

} // namespace
