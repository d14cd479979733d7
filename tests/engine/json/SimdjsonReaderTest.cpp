#include "host/engine/json/SimdjsonReader.h"

#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

using engine::SimdjsonReader;

// Bytes with as much readable room behind them as it says, in a block of exactly that size: a sanitizer sees
// every read beyond it.
class Bytes final : public iMemHolder {
public:
    explicit Bytes(std::string_view text, std::size_t padding = 0)
        : size_(text.size()), padding_(padding), data_(new char[text.size() + padding]) {
        std::memcpy(data_.get(), text.data(), text.size());
        std::memset(data_.get() + text.size(), '7', padding);
    }
    [[nodiscard]] char const* getData() const noexcept override { return data_.get(); }
    [[nodiscard]] std::size_t getSize() const noexcept override { return size_; }
    [[nodiscard]] std::size_t getPadding() const noexcept override { return padding_; }

private:
    std::size_t size_;
    std::size_t padding_;
    std::unique_ptr<char[]> data_;
};

Zq::Ptr<JSON::Element> parse(std::string_view text, std::size_t padding = 64) {
    Bytes const bytes(text, padding);
    return SimdjsonReader().parse(bytes);
}

double numberIn(std::string_view text) {
    Zq::Ptr<JSON::Element> const element = parse(text);
    if (!element || element->numbers().size() != 1) {
        ADD_FAILURE() << "not one number: " << text.substr(0, 60);
        return std::numeric_limits<double>::quiet_NaN();
    }
    return element->numbers()[0].value;
}

std::string stringIn(std::string_view text) {
    Zq::Ptr<JSON::Element> const element = parse(text);
    if (!element || element->strings().size() != 1) {
        ADD_FAILURE() << "not one string: " << text.substr(0, 60);
        return {};
    }
    return std::string(element->strings()[0].value);
}

std::string repeated(std::string_view text, std::size_t count) {
    std::string all;
    all.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

std::string nested(std::size_t depth, std::string_view core) {
    return repeated("[", depth) + std::string(core) + repeated("]", depth);
}

constexpr std::string_view sampleAnswer =
    R"({"e":false,"commands":[{"s":"","total":2,"items":[{"id":12,"t":"Über den Wolken","k":["a","b"],)"
    R"("p":1.5e1,"u":"https:\/\/x\/é\ud83d\ude00"},{"id":13,"hd":true,"none":null}]}]})";

constexpr std::string_view zeroByte("[1]\0", 4);
constexpr std::string_view zeroByteInString("[\"a\0b\"]", 7);

constexpr std::string_view validTexts[] = {"{}",
                                           "[]",
                                           " [ ] ",
                                           "\t\r\n{\n}\n",
                                           "[1]",
                                           "[1,2]",
                                           "[[],{}]",
                                           "{\"a\":{}}",
                                           "{\"\":0}",
                                           "{\"a\":1,\"a\":2}",
                                           "0",
                                           "-0",
                                           "-1",
                                           "1.5",
                                           "1e5",
                                           "1E5",
                                           "1e+5",
                                           "1e-5",
                                           "0e1",
                                           "0.0",
                                           "-0.1e-1",
                                           "true",
                                           "false",
                                           "null",
                                           "\"\"",
                                           "\"a\"",
                                           "[null]",
                                           "[true,false,null]",
                                           "[\"\\u0000\"]",
                                           "[\"\\\"\\\\\\/\\b\\f\\n\\r\\t\"]",
                                           "[\"\x7f\"]",
                                           "[\"\\ud83d\\ude00\"]",
                                           "[\"\\uD83D\\uDE00\"]",
                                           "[\"\xc3\xa9\"]",
                                           "[\"\xf0\x9f\x98\x80\"]",
                                           "[\"\xef\xbf\xbf\"]",
                                           "[\"\xe2\x80\xa8\"]",
                                           "[\"new\\u00A0line\"]",
                                           "[123e65]",
                                           "[123.456e78]",
                                           "[1E22]",
                                           "[1e-999]",
                                           "[-1e-999]",
                                           "[1e999]",
                                           "[99999999999999999999999]",
                                           "[\"\\ud800\"]",
                                           "[\"\\udc00\"]",
                                           "\xef\xbb\xbf{}",
                                           "[\"\\ud800\",1e999]",
                                           "{\"a\":\"b\"} \n"};

constexpr std::string_view invalidTexts[] = {"",
                                             " ",
                                             "\n",
                                             "[",
                                             "]",
                                             "{",
                                             "}",
                                             "[1",
                                             "[1,",
                                             "[1,]",
                                             "[,1]",
                                             "[,]",
                                             "[1,,2]",
                                             "[1 2]",
                                             "[1]2",
                                             "[1]]",
                                             "[1}",
                                             "{]",
                                             "{\"a\"}",
                                             "{\"a\":}",
                                             "{\"a\":1,}",
                                             "{,}",
                                             "{\"a\" 1}",
                                             "{\"a\",1}",
                                             "{1:1}",
                                             "{a:1}",
                                             "{'a':1}",
                                             "{\"a\":1 \"b\":2}",
                                             "{\"a\":1}x",
                                             "{}{}",
                                             "[] []",
                                             "1 2",
                                             "tru",
                                             "truex",
                                             "True",
                                             "nul",
                                             "nulll",
                                             "NULL",
                                             "fals",
                                             "NaN",
                                             "Infinity",
                                             "-Infinity",
                                             "-",
                                             "+1",
                                             "--1",
                                             "01",
                                             "-01",
                                             "00",
                                             "1.",
                                             ".5",
                                             "-.5",
                                             "1.e5",
                                             "1e",
                                             "1e+",
                                             "1e-",
                                             "1e5.5",
                                             "0x10",
                                             "1_000",
                                             "1e999x",
                                             "[1e999",
                                             "[01e999]",
                                             "[1e999,]",
                                             "[1.e999]",
                                             "[99999999999999999999a]",
                                             "\"",
                                             "\"a",
                                             "\"\\\"",
                                             "\"\\x41\"",
                                             "\"\\u12\"",
                                             "\"\\u12g4\"",
                                             "\"\\ud800\\u12g4\"",
                                             "[\"\\ud800]",
                                             "\"\\",
                                             "\"\\u",
                                             "\"\\ud800\\",
                                             "\"a\nb\"",
                                             "\"a\tb\"",
                                             "\"\x01\"",
                                             "\"\x1f\"",
                                             "\"\\a\"",
                                             "'a'",
                                             "[\"a\", b]",
                                             "\"\xff\"",
                                             "\"\xc3\"",
                                             "\"\xc0\xaf\"",
                                             "\"\xed\xa0\x80\"",
                                             "\"\xf4\x90\x80\x80\"",
                                             "\"\xe2\x80\"",
                                             "\xff\xfe[\x01",
                                             "\xef\xbb\xbf",
                                             "\xef\xbb\xbf\xef\xbb\xbf{}",
                                             "\xef\xbb{}",
                                             "/**/[]",
                                             "[]//",
                                             "[1/**/]",
                                             "#",
                                             "<html></html>",
                                             "[\xc2\xa0]",
                                             zeroByte,
                                             zeroByteInString};

TEST(SimdjsonReader, ReadsEveryKindOfJson) {
    for (std::string_view const text : validTexts) {
        EXPECT_TRUE(parse(text)) << text;
        EXPECT_TRUE(parse(text, 0)) << text;
    }
}

TEST(SimdjsonReader, RefusesWhatIsNotJson) {
    for (std::string_view const text : invalidTexts) {
        EXPECT_FALSE(parse(text)) << text;
        EXPECT_FALSE(parse(text, 0)) << text;
    }
}

TEST(SimdjsonReader, MembersStayInOrderWithDuplicatesAndWithoutNull) {
    auto const element = parse(
        R"({"a":"1","n":3,"f":true,"a":"2","x":null,"n":4,"f":false,"o":{"k":"v"},"l":[1,"z"],"o":[]})");
    ASSERT_TRUE(element);
    ASSERT_EQ(element->strings().size(), 2u);
    EXPECT_EQ(element->strings()[0].key, "a");
    EXPECT_EQ(element->strings()[0].value, "1");
    EXPECT_EQ(element->strings()[1].value, "2");
    ASSERT_EQ(element->numbers().size(), 2u);
    EXPECT_EQ(element->numbers()[0].value, 3);
    EXPECT_EQ(element->numbers()[1].value, 4);
    ASSERT_EQ(element->flags().size(), 2u);
    EXPECT_TRUE(element->flags()[0].value);
    EXPECT_FALSE(element->flags()[1].value);
    ASSERT_EQ(element->children().size(), 3u);
    EXPECT_EQ(element->children()[0].key, "o");
    EXPECT_EQ(element->children()[1].key, "l");
    EXPECT_EQ(element->children()[2].key, "o");
    EXPECT_EQ(element->getChild("o")->getString("k"), "v");
    JSON::Element const& list = *element->children()[1].element;
    ASSERT_EQ(list.numbers().size(), 1u);
    EXPECT_EQ(list.numbers()[0].key, "");
    ASSERT_EQ(list.strings().size(), 1u);
    EXPECT_EQ(list.strings()[0].key, "");
}

TEST(SimdjsonReader, ANestedAnswerIsReadWhole) {
    auto const answer = parse(sampleAnswer);
    ASSERT_TRUE(answer);
    auto const reply = answer->getChild("commands")->getChild(std::uint16_t{0});
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->getInt("total", -1), 2);
    auto const items = reply->getChild("items");
    ASSERT_EQ(items->getNumChildren(), 2);
    auto const first = items->getChild(std::uint16_t{0});
    EXPECT_EQ(first->getStringView("t"), "Über den Wolken");
    EXPECT_EQ(first->getStringView("u"), "https://x/é\xf0\x9f\x98\x80");
    EXPECT_EQ(first->getFloat("p", 0), 15.0f);
    EXPECT_EQ(first->getChild("k")->strings()[1].value, "b");
    auto const second = items->getChild(std::uint16_t{1});
    EXPECT_EQ(second->getInt("id", -1), 13);
    EXPECT_TRUE(second->getBool("hd", false));
    EXPECT_FALSE(second->hasNum("none"));
}

TEST(SimdjsonReader, AScalarAloneIsAMemberWithTheEmptyKey) {
    EXPECT_EQ(numberIn("42"), 42);
    EXPECT_EQ(stringIn("\"text\""), "text");
    auto const flag = parse("true");
    ASSERT_TRUE(flag);
    EXPECT_TRUE(flag->getBool("", false));
    auto const nothing = parse("null");
    ASSERT_TRUE(nothing);
    EXPECT_TRUE(nothing->strings().empty() && nothing->numbers().empty() && nothing->flags().empty() &&
                nothing->children().empty());
}

TEST(SimdjsonReader, NumbersOutsideADoubleAreTheNearestDouble) {
    constexpr double largest = std::numeric_limits<double>::max();
    EXPECT_EQ(numberIn("[1e309]"), largest);
    EXPECT_EQ(numberIn("[-1e309]"), -largest);
    EXPECT_EQ(numberIn("-1e999999"), -largest);
    EXPECT_EQ(numberIn("1e99999999999999999999999999"), largest);
    EXPECT_EQ(numberIn("1.7976931348623157e308"), largest);
    EXPECT_EQ(numberIn(repeated("9", 400)), largest);
    EXPECT_EQ(numberIn("-" + repeated("9", 400) + ".5"), -largest);
    EXPECT_EQ(numberIn("0." + repeated("0", 20) + "1e9999"), largest);
    EXPECT_EQ(numberIn("1e-999999"), 0);
    EXPECT_EQ(numberIn("1e-99999999999999999999999999"), 0);
    EXPECT_EQ(numberIn("0." + repeated("0", 500) + "1"), 0);
    EXPECT_EQ(numberIn("0e999999"), 0);
    EXPECT_EQ(numberIn("-0"), 0);
    EXPECT_EQ(numberIn("4.9e-324"), std::numeric_limits<double>::denorm_min());
}

TEST(SimdjsonReader, LongIntegersLosePrecisionAndDoNotFail) {
    EXPECT_EQ(numberIn("9007199254740993"), 9007199254740992.0);
    EXPECT_EQ(numberIn("9223372036854775807"), 9223372036854775808.0);
    EXPECT_EQ(numberIn("-9223372036854775808"), -9223372036854775808.0);
    EXPECT_EQ(numberIn("-9223372036854775809"), -9223372036854775808.0);
    EXPECT_EQ(numberIn("18446744073709551615"), 18446744073709551616.0);
    EXPECT_EQ(numberIn("18446744073709551616"), 18446744073709551616.0);
    EXPECT_EQ(numberIn("[123456789012345678901234567890]"), 123456789012345678901234567890.0);
    EXPECT_EQ(numberIn("1" + repeated("0", 300)), 1e300);
    EXPECT_EQ(parse("{\"n\":1e999}")->getInt("n", 0), std::numeric_limits<std::int64_t>::max());
}

TEST(SimdjsonReader, OneNumberOutOfRangeLeavesTheRestOfTheAnswerAsItWas) {
    auto const element = parse(R"({"text":"1e999 \" 1e999","n":1e999,"m":12,"x":"\udc00é","k\ud800":-0.5})");
    ASSERT_TRUE(element);
    EXPECT_EQ(element->getStringView("text"), "1e999 \" 1e999");
    EXPECT_EQ(element->getStringView("x"), "\xef\xbf\xbdé");
    EXPECT_EQ(element->numbers()[0].value, std::numeric_limits<double>::max());
    EXPECT_EQ(element->numbers()[1].value, 12);
    EXPECT_EQ(element->numbers()[2].key, "k\xef\xbf\xbd");
}

TEST(SimdjsonReader, UnpairedSurrogatesBecomeReplacementCharacters) {
    EXPECT_EQ(stringIn("\"\\ud800\""), "\xef\xbf\xbd");
    EXPECT_EQ(stringIn("\"\\uDFFFx\""), "\xef\xbf\xbdx");
    EXPECT_EQ(stringIn("\"a\\ud800\\u0041\""), "a\xef\xbf\xbd"
                                               "A");
    EXPECT_EQ(stringIn("\"\\ud800\\ud83d\\ude00\""), "\xef\xbf\xbd\xf0\x9f\x98\x80");
    EXPECT_EQ(stringIn("\"\\udc00\\ud800\""), "\xef\xbf\xbd\xef\xbf\xbd");
    EXPECT_EQ(stringIn("\"\\ud800\\n\""), "\xef\xbf\xbd\n");
    EXPECT_EQ(stringIn("\"\\\\ud800\""), "\\ud800");
    EXPECT_EQ(stringIn("\"\\\\\\ud800\""), "\\\xef\xbf\xbd");
}

TEST(SimdjsonReader, AZeroEscapeIsPartOfTheValue) {
    EXPECT_EQ(stringIn("\"a\\u0000b\""), std::string("a\0b", 3));
    auto const element = parse("{\"k\\u0000\":1,\"k\":2}");
    ASSERT_TRUE(element);
    EXPECT_EQ(element->getInt("k", 0), 2);
}

TEST(SimdjsonReader, TheDeepestNestingIs512) {
    for (std::string_view const core : {"", "1", "\"\"", "null"}) {
        EXPECT_TRUE(parse(nested(512, core))) << core;
        EXPECT_FALSE(parse(nested(513, core))) << core;
    }
    EXPECT_TRUE(parse(nested(511, "{}")));
    EXPECT_FALSE(parse(nested(512, "{}")));
    EXPECT_TRUE(parse(repeated("{\"a\":", 511) + "{}" + repeated("}", 511)));
    EXPECT_FALSE(parse(repeated("{\"a\":", 512) + "{}" + repeated("}", 512)));
    EXPECT_FALSE(parse(nested(100'000, "")));
    EXPECT_FALSE(parse(repeated("[", 100'000)));
    EXPECT_FALSE(parse(repeated("{\"a\":", 100'000)));
    EXPECT_TRUE(parse("[1]")) << "a refused text leaves the reader usable";
}

TEST(SimdjsonReader, TheLargestTextIs64MiB) {
    std::string text(SimdjsonReader::largestText, ' ');
    text.replace(0, 5, "[\"a\",");
    text.replace(text.size() - 2, 2, "1]");
    auto const element = parse(text);
    ASSERT_TRUE(element);
    EXPECT_EQ(element->strings().size(), 1u);
    text += ' ';
    EXPECT_FALSE(parse(text));
}

TEST(SimdjsonReader, AStringOfManyMebibytesIsReadWhole) {
    std::string const inner = repeated("0123456789abcdef", 1 << 18);
    EXPECT_EQ(stringIn("[\"" + inner + "\"]"), inner);
}

TEST(SimdjsonReader, ManyEmptyStringsFitTheStoreOfTexts) {
    std::string const text = "[" + repeated("\"\",", 99'999) + "\"\"]";
    auto const element = parse(text);
    ASSERT_TRUE(element);
    ASSERT_EQ(element->strings().size(), 100'000u);
    EXPECT_EQ(element->strings()[99'999].value, "");
}

TEST(SimdjsonReader, TheNumberOfChildrenSaturates) {
    auto const children = [](std::size_t count) {
        return parse("[" + repeated("{},", count - 1) + "{}]")->getNumChildren();
    };
    EXPECT_EQ(children(65'535), 65'535);
    EXPECT_EQ(children(65'536), 65'535);
    EXPECT_EQ(children(70'000), 65'535);
}

TEST(SimdjsonReader, EveryTruncationOfAnAnswerIsRefused) {
    for (std::size_t length = 0; length < sampleAnswer.size(); ++length) {
        EXPECT_FALSE(parse(sampleAnswer.substr(0, length), 0)) << length;
        EXPECT_FALSE(parse(sampleAnswer.substr(0, length), 64)) << length;
    }
    EXPECT_TRUE(parse(sampleAnswer));
}

TEST(SimdjsonReader, AnyByteInAnyPlaceOfAnAnswerIsSafe) {
    std::size_t read = 0;
    for (std::size_t at = 0; at < sampleAnswer.size(); ++at) {
        for (char const byte : {'\0', '"', '\\', '[', '}', '9', 'e', '-', ',', '\xff', '\xed'}) {
            std::string text(sampleAnswer);
            text[at] = byte;
            read += parse(text, 0) ? 1u : 0u;
        }
    }
    EXPECT_GT(read, 0u);
    EXPECT_TRUE(parse(sampleAnswer));
}

TEST(SimdjsonReader, AChildKeepsTheWholeAnswerAlive) {
    Zq::Ptr<JSON::Element> child;
    {
        auto const answer = parse(R"({"a":{"text":"kept"}})");
        child = answer->getChild("a");
    }
    (void)parse(R"({"other":"answer","that":"takes its place"})");
    EXPECT_EQ(child->getStringView("text"), "kept");
}

TEST(SimdjsonReader, AnswersOfOneThreadDoNotDisturbEachOther) {
    std::vector<Zq::Ptr<JSON::Element>> answers;
    for (int i = 0; i < 50; ++i) {
        answers.push_back(
            parse("{\"n\":\"" + repeated(std::to_string(i), 1u + static_cast<unsigned>(i)) + "\"}"));
    }
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(answers[static_cast<unsigned>(i)]->getStringView("n"),
                  repeated(std::to_string(i), 1u + static_cast<unsigned>(i)));
    }
}

TEST(SimdjsonReader, AnAnswerOutlivesTheThreadThatReadIt) {
    Zq::Ptr<JSON::Element> answer;
    std::thread([&answer] { answer = parse(sampleAnswer); }).join();
    ASSERT_TRUE(answer);
    EXPECT_FALSE(answer->getBool("e", true));
    EXPECT_TRUE(answer->getChild("commands"));
}

} // namespace
