#include "tests/tarn7/Tarn7Fixture.h"

namespace tarn7_tests {
namespace {

using Command = Tarn7Resource::Command;

std::string written(Command const& command) {
    JSON::Builder builder;
    command.writeTo(builder);
    return utf8(builder.getOutput());
}

class CommandText : public testing::Test {
protected:
    fake::Host host;
};

TEST_F(CommandText, ACommandWithoutParametersWritesItsWordAlone) {
    EXPECT_EQ(written(Command(L"logout")), R"({"command":"logout"})");
}

TEST_F(CommandText, StringsComeBeforeNumbersAndNumbersBeforeFlagsWhateverTheOrderOfAdding) {
    Command command(L"word");
    command.addFlag("f", true);
    command.addParam("first", L"a");
    command.addNumber("one", 1);
    command.addNumber("two", -2);
    command.addParam("second", L"b");
    command.addFlag("g", false);
    EXPECT_EQ(written(command),
              R"({"command":"word","first":"a","second":"b","one":1,"two":-2,"f":true,"g":false})");
}

TEST_F(CommandText, AKeyMayOccurTwiceAndKeepsItsOrder) {
    Command command(L"word");
    command.addParam("k", L"2");
    command.addParam("k", L"1");
    command.addNumber("n", 2);
    command.addNumber("n", 1);
    EXPECT_EQ(written(command), R"({"command":"word","k":"2","k":"1","n":2,"n":1})");
}

TEST_F(CommandText, ANumberThatIsTheLargestOrTheSmallestOf32BitsKeepsItsValue) {
    Command command(L"word");
    command.addNumber("most", 2147483647);
    command.addNumber("least", -2147483647 - 1);
    EXPECT_EQ(written(command), R"({"command":"word","most":2147483647,"least":-2147483648})");
}

TEST_F(CommandText, ANullKeyWritesTheEmptyKey) {
    Command command(L"word");
    command.addParam(nullptr, L"a");
    command.addNumber(nullptr, 1);
    command.addFlag(nullptr, true);
    EXPECT_EQ(written(command), R"({"command":"word","":"a","":1,"":true})");
}

TEST_F(CommandText, TextBeyondAsciiSurvivesTheWayThroughUTF8) {
    Command command(L"word");
    command.addParam("k", wide("h\u00e9llo \u4e16 \U0001f3ac"));
    EXPECT_EQ(written(command), "{\"command\":\"word\",\"k\":\"h\u00e9llo \u4e16 \U0001f3ac\"}");
}

TEST_F(CommandText, QuotesBackslashesAndControlCharactersAreEscaped) {
    Command command(L"wo\"rd");
    command.addParam("k\n", L"a\\b\t\x01");
    EXPECT_EQ(written(command), R"({"command":"wo\"rd","k\n":"a\\b\t\u0001"})");
}

TEST_F(CommandText, ACommandCanBeReadLikeAnAnswer) {
    Command command(L"get_clip_data");
    command.addParam("itemid", L"42");
    command.addNumber("p", 7);
    command.addFlag("f", true);
    EXPECT_EQ(utf8(command.getWString("itemid")), "42");
    EXPECT_EQ(command.getInt("p", 0), 7);
    EXPECT_TRUE(command.getBool("f", false));
    EXPECT_EQ(command.getNumChildren(), 0);
    EXPECT_EQ(command.getString("command").length(), 0U);
}

TEST_F(CommandText, ACopyHasParametersOfItsOwn) {
    Command first(L"word");
    first.addParam("k", L"a");
    Command second(first);
    second.addParam("k", L"b");
    second.addNumber("n", 1);
    EXPECT_EQ(written(first), R"({"command":"word","k":"a"})");
    EXPECT_EQ(written(second), R"({"command":"word","k":"a","k":"b","n":1})");
}

TEST_F(CommandText, ACommandThatWasMovedFromKeepsItsWord) {
    Command first(L"word");
    first.addParam("k", L"a");
    Command const second(std::move(first));
    EXPECT_EQ(written(second), R"({"command":"word","k":"a"})");
    EXPECT_TRUE(written(first).starts_with(R"({"command":"word")")); // NOLINT(bugprone-use-after-move)
}

TEST_F(CommandText, AssigningTakesOverWordAndParameters) {
    Command first(L"first");
    first.addParam("k", L"a");
    Command second(L"second");
    second.addNumber("n", 1);
    second = first;
    EXPECT_EQ(written(second), R"({"command":"first","k":"a"})");
}

TEST_F(CommandText, AListThatGrowsKeepsEveryCommandWhole) {
    LightweightVector<Command> list;
    for (int i = 0; i < 20; ++i) {
        list.emplace_back(L"get_clip_data").addParam("itemid", Zq::WStringFromInteger(i));
    }
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(written(list[static_cast<std::size_t>(i)]),
                  R"({"command":"get_clip_data","itemid":")" + std::to_string(i) + R"("})");
    }
}

// The numbers of an answer are doubles; a command made from one would hold such a double.
class FractionalCommand : public Command {
public:
    using Command::Command;
    void addFraction(std::string_view key, double value) { appendNumber(key, value); }
};

TEST_F(CommandText, AFractionIsCutTowardZeroOnTheWire) {
    FractionalCommand command(L"word");
    command.addFraction("up", 2.9);
    command.addFraction("down", -2.9);
    EXPECT_EQ(written(command), R"({"command":"word","up":2,"down":-2})");
}

class Reply : public testing::Test {
protected:
    static std::string status(Tarn7Resource::Response const& response, std::uint16_t index) {
        return utf8(Tarn7Resource::commandStatusText(response, index));
    }
    fake::Host host;
};

TEST_F(Reply, EachCommandHasItsOwnReplyByIndex) {
    auto const response = parsed(R"({"commands":[{"s":"zero"},{"s":"one"}]})");
    EXPECT_EQ(status(response, 0), "zero");
    EXPECT_EQ(status(response, 1), "one");
}

TEST_F(Reply, BehindTheLastReplyThereIsNoneAndNoText) {
    auto const response = parsed(R"({"commands":[{"s":"zero"},{"s":"one"}]})");
    EXPECT_EQ(Tarn7Resource::commandReply(response, 2), nullptr);
    EXPECT_EQ(Tarn7Resource::commandReply(response, 65535), nullptr);
    EXPECT_EQ(status(response, 2), "");
}

TEST_F(Reply, WithoutAResponseOrWithoutCommandsThereIsNone) {
    EXPECT_EQ(Tarn7Resource::commandReply({}, 0), nullptr);
    EXPECT_EQ(status({}, 0), "");
    EXPECT_EQ(Tarn7Resource::commandReply(parsed(R"({"e":false})"), 0), nullptr);
    EXPECT_EQ(Tarn7Resource::commandReply(parsed(R"({"commands":"x"})"), 0), nullptr);
    EXPECT_EQ(Tarn7Resource::commandReply(parsed(R"({"commands":[]})"), 0), nullptr);
}

TEST_F(Reply, TheLastIndexIsNoReplyOfAListThatIsLongerThanItsCountTells) {
    std::string text = R"({"commands":[{})";
    for (int i = 1; i < 65536; ++i) {
        text += ",{}";
    }
    auto const response = parsed(text + "]}");
    EXPECT_NE(Tarn7Resource::commandReply(response, 65534), nullptr);
    EXPECT_EQ(Tarn7Resource::commandReply(response, 65535), nullptr);
}

TEST_F(Reply, NoResponseIsAFailure) {
    EXPECT_TRUE(Tarn7Resource::responseFailed({}));
}

TEST_F(Reply, TheFlagAtTheTopIsAFailureAlsoWithoutCommands) {
    EXPECT_TRUE(Tarn7Resource::responseFailed(parsed(R"({"e":true})")));
    EXPECT_TRUE(Tarn7Resource::responseFailed(parsed(R"({"e":true,"commands":[{"s":""}]})")));
}

TEST_F(Reply, ATextInTheFirstReplyIsAFailureWithoutTheFlag) {
    EXPECT_TRUE(Tarn7Resource::responseFailed(parsed(R"({"commands":[{"s":"no"}]})")));
    EXPECT_TRUE(Tarn7Resource::responseFailed(parsed(R"({"e":false,"commands":[{"s":"no"}]})")));
}

TEST_F(Reply, ATextAtTheTopOrInALaterReplyIsNoFailure) {
    EXPECT_FALSE(Tarn7Resource::responseFailed(parsed(R"({"s":"no","commands":[{}]})")));
    EXPECT_FALSE(Tarn7Resource::responseFailed(parsed(R"({"commands":[{"s":""},{"s":"no"}]})")));
}

TEST_F(Reply, TheFlagOfAReplyIsNotTheOneAtTheTop) {
    EXPECT_FALSE(Tarn7Resource::responseFailed(parsed(R"({"commands":[{"e":true}]})")));
}

TEST_F(Reply, AnAnswerWithoutAnyOfTheseIsNoFailure) {
    EXPECT_FALSE(Tarn7Resource::responseFailed(parsed("{}")));
    EXPECT_FALSE(Tarn7Resource::responseFailed(parsed(R"({"e":"true","commands":[{"s":5}]})")));
}

} // namespace
} // namespace tarn7_tests
