// Words made into commands, and what the pieces around them do with signals and input.

#include <gmock/gmock.h>
#include <signal.h>
#include <unistd.h>

#include <limits>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "apps/zq/Interpreter.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/LineReader.h"

namespace {

using testing::HasSubstr;
using zq::Interrupts;
using zq::LineReader;
using zq::Output;
using zq::prepareCommand;
using zq::PreparedCommand;

PreparedCommand prepare(std::vector<std::string> const& words) {
    return prepareCommand(words, Output::Format::text);
}

TEST(Commands, HaveNamesOfTheirOwnAndSayWhatTheyDo) {
    std::set<std::string_view> names;
    for (zq::CommandEntry const& entry : zq::commandTable()) {
        EXPECT_TRUE(names.insert(entry.name).second) << entry.name;
        EXPECT_NE(std::string_view(entry.summary), "");
    }
    EXPECT_TRUE(names.contains("search") && names.contains("fetch"));
}

TEST(Commands, AllGiveHelp) {
    for (zq::CommandEntry const& entry : zq::commandTable()) {
        PreparedCommand const prepared = prepare({entry.name, "--help"});
        EXPECT_TRUE(prepared.reply.ok());
        EXPECT_EQ(prepared.command, nullptr);
        EXPECT_THAT(prepared.reply.text, HasSubstr(std::string("Usage: zq ") + entry.name));
    }
}

TEST(Commands, AreExplainedByHelpWithTheirName) {
    EXPECT_EQ(prepare({"help", "play"}).reply.text, prepare({"play", "--help"}).reply.text);
    EXPECT_EQ(prepare({"help", "help"}).reply.text, prepare({"help", "--help"}).reply.text);
    EXPECT_EQ(prepare({"help", "serch"}).reply.error, prepare({"serch"}).reply.error);
    EXPECT_EQ(prepare({"help", "play", "--json"}).format, Output::Format::json);
    EXPECT_EQ(prepare(std::vector<std::string>(100'000, "help")).command, nullptr);
    EXPECT_NE(prepare({"help"}).command, nullptr);
}

TEST(Commands, ThatAreMistypedAreGuessed) {
    EXPECT_EQ(prepare({"serch"}).reply.error, "there is no command \"serch\"; did you mean \"search\"?");
    EXPECT_EQ(prepare({"xyzzyxyzzy"}).reply.error,
              "there is no command \"xyzzyxyzzy\"; \"help\" lists the commands");
}

TEST(Commands, RefuseArgumentsThatTheyDoNotKnow) {
    EXPECT_THAT(prepare({"search", "--bogus"}).reply.error, HasSubstr("--bogus"));
    EXPECT_THAT(prepare({"login", "anna", "secret"}).reply.error, HasSubstr("not expected"));
    EXPECT_THAT(prepare({"search", "--page", "0"}).reply.error, HasSubstr("range"));
    EXPECT_THAT(prepare({"search", "--page", "65536"}).reply.error, HasSubstr("range"));
    EXPECT_THAT(prepare({"set", "0", "1"}).reply.error, HasSubstr("VALUE"));
    EXPECT_EQ(prepare({"cancel", "-1"}).reply.error, "cancel: N: \"-1\" is no task's number");
    EXPECT_EQ(prepare({"cancel", "-1"}).command, nullptr);
    EXPECT_THAT(prepare({"place", "7"}).reply.error, HasSubstr("--sequence"));
    EXPECT_THAT(prepare({"place", "7", "--sequence", "a", "--in", "-1"}).reply.error, HasSubstr("--in"));
    EXPECT_THAT(prepare({"place", "7", "--sequence", "a", "--out", "nan"}).reply.error, HasSubstr("--out"));
    EXPECT_NE(prepare({"place", "7", "--sequence", "a", "--in", "2.5", "--out", "4"}).command, nullptr);
    EXPECT_NE(prepare({"place", "7", "--sequence", "a", "--at", "1"}).command, nullptr);
    EXPECT_THAT(prepare({"place", "7", "--sequence", "a", "--at", "0"}).reply.error,
                HasSubstr("\"0\" is no position: those count from 1"));
    for (std::string const word : {"-1", "0", "010", "1.5", "two", "", "9999999999999999999"}) {
        EXPECT_THAT(prepare({"move", word, "1"}).reply.error, HasSubstr("is no piece's number")) << word;
        EXPECT_THAT(prepare({"move", "1", word}).reply.error, HasSubstr("is no position")) << word;
        EXPECT_THAT(prepare({"remove", word}).reply.error, HasSubstr("is no piece's number")) << word;
    }
    EXPECT_THAT(prepare({"move", "1"}).reply.error, HasSubstr("POSITION"));
    EXPECT_THAT(prepare({"trim", "--in", "1"}).reply.error, HasSubstr("PIECE"));
    EXPECT_THAT(prepare({"trim", "1", "--in", "-1"}).reply.error, HasSubstr("--in"));
    EXPECT_NE(prepare({"trim", "1", "--in", "0.5"}).command, nullptr);
    EXPECT_THAT(prepare({"redo", "2"}).reply.error, HasSubstr("not expected"));
    EXPECT_THAT(prepare({"cancel", "first"}).reply.error, HasSubstr("first"));
    EXPECT_THAT(prepare({"export", "a", "b.mlt"}).reply.error, HasSubstr("--format"));
    EXPECT_NE(prepare({"set", "0", "1", "-1"}).command, nullptr) << "a negative tag is no option";
}

TEST(Commands, AnswerInJsonWhereAskedTo) {
    EXPECT_EQ(prepare({"stats", "--json"}).format, Output::Format::json);
    EXPECT_EQ(prepare({"stats"}).format, Output::Format::text);
    EXPECT_EQ(prepareCommand({"stats"}, Output::Format::json).format, Output::Format::json);
    EXPECT_EQ(prepare({"search", "--bogus", "--json"}).format, Output::Format::json);
}

TEST(Commands, BuyInOneWay) {
    EXPECT_THAT(prepare({"buy", "7"}).reply.error, HasSubstr("--credits"));
    EXPECT_THAT(prepare({"buy", "7", "--credits", "--cash"}).reply.error, HasSubstr("--cash"));
    EXPECT_THAT(prepare({"buy", "--credits"}).reply.error, HasSubstr("ID"));
    EXPECT_NE(prepare({"buy", "7", "8", "--credits"}).command, nullptr);
    EXPECT_NE(prepare({"buy", "--cash", "7"}).command, nullptr);
}

TEST(JsonLine, HasTheErrorOnlyWhereThereIsOne) {
    zq::Reply reply;
    EXPECT_EQ(zq::jsonLine(reply), R"({"ok":true})");
    reply.error = "no \"luck\"\n";
    EXPECT_EQ(zq::jsonLine(reply), R"({"ok":false,"error":"no \"luck\"\n"})");
    reply.members = [](JSON::Builder& json) { json.add("code", 7); };
    EXPECT_EQ(zq::jsonLine(reply), R"({"ok":false,"error":"no \"luck\"\n","code":7})");
}

TEST(JsonLine, HoldsNothingThatATerminalWouldObey) {
    zq::Reply reply;
    reply.error = "a\033[5m\u009b\u202e\x7f\U000e0041 東京";
    EXPECT_EQ(zq::jsonLine(reply),
              "{\"ok\":false,\"error\":\"a\\u001b[5m\\u009b\\u202e\\u007f\\udb40\\udc41 東京\"}");
}

TEST(JsonLine, WritesArraysOfScalars) {
    JSON::Builder json;
    json.startChild(nullptr);
    WideString const items[] = {zq::quoted(L"a\"b"), zq::quoted(L"")};
    zq::addItems(json, "list", items);
    zq::addItems(json, "none", {});
    json.endChild();
    EXPECT_EQ(zq::utf8(json.getOutput()), R"({"list":["a\"b",""],"none":[]})");
}

TEST(JsonLine, WritesDecimalsThatAreNumbers) {
    JSON::Builder json;
    json.startChild(nullptr);
    zq::addDecimal(json, "a", 0.1);
    zq::addDecimal(json, "b", -3);
    zq::addDecimal(json, "c", std::numeric_limits<double>::infinity());
    std::string const texts[] = {"x", "\"y\""};
    zq::addTexts(json, "d", texts);
    json.endChild();
    EXPECT_EQ(zq::utf8(json.getOutput()), R"({"a":0.1,"b":-3,"c":0,"d":["x","\"y\""]})");
}

TEST(Interrupts, TheFirstCancelsTheCommandAndTheSecondEndsTheProgram) {
    Interrupts const interrupts;
    {
        Interrupts::Command const command;
        EXPECT_FALSE(command.isCancelled());
        ::raise(SIGINT);
        EXPECT_TRUE(command.isCancelled());
        EXPECT_EQ(interrupts.endingSignal(), 0);
        ::raise(SIGINT);
        EXPECT_EQ(interrupts.endingSignal(), SIGINT);
    }
}

TEST(Interrupts, OneBetweenCommandsEndsTheProgram) {
    Interrupts const interrupts;
    ::raise(SIGINT);
    EXPECT_EQ(interrupts.endingSignal(), SIGINT);
}

TEST(Interrupts, ATerminationCancelsAndEnds) {
    Interrupts const interrupts;
    Interrupts::Command const command;
    ::raise(SIGTERM);
    EXPECT_TRUE(command.isCancelled());
    EXPECT_EQ(interrupts.endingSignal(), SIGTERM);
}

TEST(Interrupts, OneOfACommandDoesNotReachTheNext) {
    Interrupts const interrupts;
    {
        Interrupts::Command const command;
        ::raise(SIGINT);
    }
    Interrupts::Command const next;
    EXPECT_FALSE(next.isCancelled());
    EXPECT_EQ(interrupts.endingSignal(), 0);
}

class Input : public testing::Test {
protected:
    Input() {
        if (::pipe(ends_) != 0) {
            throw std::runtime_error("no pipe");
        }
    }
    ~Input() override {
        ::close(ends_[0]);
        closeWriter();
    }
    void write(std::string_view text) {
        ASSERT_EQ(::write(ends_[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void closeWriter() {
        if (ends_[1] >= 0) {
            ::close(std::exchange(ends_[1], -1));
        }
    }
    [[nodiscard]] int descriptor() const { return ends_[0]; }

    Interrupts const interrupts_;

private:
    int ends_[2];
};

TEST_F(Input, ComesLineByLineWithOrWithoutALastLineEnd) {
    LineReader reader(descriptor(), interrupts_);
    write("one\r\n\ntwo");
    closeWriter();
    EXPECT_EQ(reader.readLine(""), "one");
    EXPECT_EQ(reader.readLine(""), "");
    EXPECT_EQ(reader.readSecret("password: "), "two");
    EXPECT_EQ(reader.readLine(""), std::nullopt);
    EXPECT_FALSE(reader.isTerminal());
}

TEST_F(Input, WithALineThatIsTooLongGoesOnBehindIt) {
    LineReader reader(descriptor(), interrupts_);
    std::string const part(LineReader::longestLine / 4, 'x');
    std::thread writer([&] {
        for (int i = 0; i < 5; ++i) {
            write(part);
        }
        write("\nnext\n");
    });
    EXPECT_THROW(static_cast<void>(reader.readLine("")), std::length_error);
    EXPECT_EQ(reader.readLine(""), "next");
    writer.join();
}

TEST_F(Input, IsNotWaitedForAfterASignal) {
    LineReader reader(descriptor(), interrupts_);
    ::raise(SIGTERM);
    EXPECT_EQ(reader.readLine(""), std::nullopt);
}

TEST_F(Input, OfACancelledCommandIsNoPassword) {
    LineReader reader(descriptor(), interrupts_);
    write("half a password");
    Interrupts::Command const command;
    ::raise(SIGINT);
    EXPECT_EQ(reader.readSecret(""), std::nullopt);
}

} // namespace
