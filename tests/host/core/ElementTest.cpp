#include "host/json/Element.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "host/json/Tree.h"
#include "tests/host/core/LimitedMemory.h"
#include "tests/host/core/PrintText.h"
#include "tests/host/core/Record.h"

namespace {

using JSON::Element;
using JSON::Tree;

// {"s":"root","list":[{"id":1},{"id":2}],"info":{"name":"n","deep":{"on":true}}}
Zq::Ptr<Element> answer() {
    Zq::Ptr<Tree> const tree = Zq::makeShared<Tree>();
    Element& root = tree->root();
    tree->addString(root, "s", "root");
    Element& list = tree->addChild(root, "list");
    tree->addNumber(tree->addChild(list, ""), "id", 1);
    tree->addNumber(tree->addChild(list, ""), "id", 2);
    Element& info = tree->addChild(root, "info");
    tree->addString(info, "name", "n");
    tree->addFlag(tree->addChild(info, "deep"), "on", true);
    return Tree::rootOf(tree);
}

TEST(Element, KeepsEachKindInOrderWithItsDuplicates) {
    Record record;
    record.appendString("b", "1");
    record.appendNumber("n", 1);
    record.appendString("a", "2");
    record.appendFlag("f", true);
    record.appendString("b", "3");
    record.appendNumber("n", 2);
    ASSERT_EQ(record.strings().size(), 3U);
    EXPECT_EQ(record.strings()[0].key, "b");
    EXPECT_EQ(record.strings()[1].key, "a");
    EXPECT_EQ(record.strings()[2].value, "3");
    ASSERT_EQ(record.numbers().size(), 2U);
    EXPECT_EQ(record.numbers()[1].value, 2);
    ASSERT_EQ(record.flags().size(), 1U);
    EXPECT_TRUE(record.children().empty());
}

TEST(Element, TheFirstOfEqualKeysIsRead) {
    Record record;
    record.appendString("k", "first");
    record.appendString("k", "second");
    record.appendNumber("k", 1);
    record.appendNumber("k", 2);
    record.appendFlag("k", true);
    record.appendFlag("k", false);
    EXPECT_EQ(record.getString("k"), "first");
    EXPECT_EQ(record.getInt("k", 9), 1);
    EXPECT_TRUE(record.getBool("k", false));
}

TEST(Element, AMissingKeyGivesTheDefault) {
    Record record;
    record.appendString("text", "1");
    record.appendNumber("number", 1);
    record.appendFlag("flag", true);
    EXPECT_TRUE(record.getBool("x", true));
    EXPECT_FALSE(record.getBool("x", false));
    EXPECT_EQ(record.getInt("x", -1), -1);
    EXPECT_EQ(record.getFloat("x", 1.5F), 1.5F);
    EXPECT_TRUE(record.getString("x").isEmpty());
    EXPECT_TRUE(record.getWString("x").isEmpty());
    EXPECT_TRUE(record.getStringView("x").empty());
    EXPECT_FALSE(record.hasNum("x"));
    EXPECT_FALSE(record.getChild("x"));
    EXPECT_FALSE(record.getChild(0));
    EXPECT_EQ(record.getNumChildren(), 0);
}

TEST(Element, AMemberOfAnotherKindIsNoMember) {
    Record record;
    record.appendString("text", "1");
    record.appendNumber("number", 1);
    record.appendFlag("flag", true);
    EXPECT_EQ(record.getInt("text", -1), -1);
    EXPECT_EQ(record.getInt("flag", -1), -1);
    EXPECT_FALSE(record.getBool("number", false));
    EXPECT_TRUE(record.getString("number").isEmpty());
    EXPECT_FALSE(record.hasNum("text"));
    EXPECT_TRUE(record.hasNum("number"));
}

TEST(Element, KeysAreComparedExactly) {
    Record record;
    record.appendNumber("key", 1);
    EXPECT_FALSE(record.hasNum("Key"));
    EXPECT_FALSE(record.hasNum("ke"));
    EXPECT_FALSE(record.hasNum("key "));
}

TEST(Element, TheEmptyKeyIsAKey) {
    Record record;
    record.appendString("", "item");
    EXPECT_EQ(record.getString(""), "item");
}

TEST(Element, TextsAreCopiedIntoTheElement) {
    Record record;
    {
        std::string key = "a key that is long enough for the heap";
        std::string value = "a value that is long enough for the heap";
        record.appendString(key, value);
        key.assign(key.size(), 'x');
        value.assign(value.size(), 'x');
    }
    EXPECT_EQ(record.getString("a key that is long enough for the heap"),
              "a value that is long enough for the heap");
}

TEST(Element, WideTextIsTheDecodedText) {
    Record record;
    record.appendString("k", "\xc3\xa9\xf0\x9f\x98\x80\xff");
    WideString const text = record.getWString("k");
    ASSERT_EQ(text.length(), 4U);
    EXPECT_EQ(text[0], static_cast<wchar_t>(0xe9));
    EXPECT_EQ(text[1], static_cast<wchar_t>(0xd83d));
    EXPECT_EQ(text[2], static_cast<wchar_t>(0xde00));
    EXPECT_EQ(text[3], static_cast<wchar_t>(0xfffd));
}

TEST(Element, IntegersAreCutTowardZeroAndClampedTo64Bits) {
    Record record;
    record.appendNumber("fraction", -12.9);
    record.appendNumber("huge", 1e300);
    record.appendNumber("deep", -1e300);
    record.appendNumber("id", 9007199254740991.0);
    EXPECT_EQ(record.getInt("fraction", 0), -12);
    EXPECT_EQ(record.getInt("huge", 0), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(record.getInt("deep", 0), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(record.getInt("id", 0), 9007199254740991);
}

TEST(Element, FloatsAreTheNearestAndStayInRange) {
    Record record;
    record.appendNumber("price", 19.99);
    record.appendNumber("huge", 1e300);
    record.appendNumber("deep", -1e300);
    EXPECT_EQ(record.getFloat("price", 0), 19.99F);
    EXPECT_EQ(record.getFloat("huge", 0), std::numeric_limits<float>::max());
    EXPECT_EQ(record.getFloat("deep", 0), -std::numeric_limits<float>::max());
}

TEST(Element, ManyMembersKeepTheirOrder) {
    Record record;
    for (int i = 0; i < 5000; ++i) {
        record.appendString(std::to_string(i), std::to_string(2 * i));
    }
    ASSERT_EQ(record.strings().size(), 5000U);
    for (std::size_t i = 0; i < 5000; ++i) {
        ASSERT_EQ(record.strings()[i].key, std::to_string(i));
        ASSERT_EQ(record.strings()[i].value, std::to_string(2 * i));
    }
}

TEST(Element, ChildrenAreFoundByKeyAndByIndex) {
    Zq::Ptr<Element> const root = answer();
    EXPECT_EQ(root->getNumChildren(), 2);
    Zq::Ptr<Element> const list = root->getChild("list");
    ASSERT_TRUE(list);
    EXPECT_EQ(list->getNumChildren(), 2);
    EXPECT_EQ(list->getChild(0)->getInt("id", 0), 1);
    EXPECT_EQ(list->getChild(1)->getInt("id", 0), 2);
    EXPECT_FALSE(list->getChild(2));
    EXPECT_FALSE(list->getChild(0xffff));
    EXPECT_FALSE(root->getChild("s")) << "a text is no child";
    EXPECT_TRUE(root->getChild("info")->getChild("deep")->getBool("on", false));
}

TEST(Element, ReservedRoomChangesNothingElse) {
    Zq::Ptr<Tree> const tree = Zq::makeShared<Tree>();
    tree->reserve(tree->root(), {.strings = 2, .numbers = 1, .flags = 1, .children = 1});
    EXPECT_TRUE(tree->root().strings().empty());
    tree->addString(tree->root(), "a", "1");
    tree->addString(tree->root(), "b", "2");
    tree->addString(tree->root(), "c", "3");
    EXPECT_EQ(tree->root().getString("c"), "3");
}

TEST(Element, AChildAloneKeepsTheWholeAnswerAlive) {
    LimitedMemory memory;
    {
        Zq::Ptr<Element> item = answer()->getChild("list")->getChild(1);
        ASSERT_TRUE(item);
        EXPECT_EQ(item->getInt("id", 0), 2);
        Zq::Ptr<Element> deep = answer()->getChild("info")->getChild("deep");
        item = deep;
        deep.reset();
        EXPECT_TRUE(item->getBool("on", false));
        EXPECT_GT(memory.live(), 0);
    }
    EXPECT_EQ(memory.live(), 0);
}

TEST(Element, TextsThatTheTreeKeepsLiveAsLongAsAnyElement) {
    Zq::Ptr<Element> child;
    {
        auto text = std::make_unique<std::uint8_t[]>(8);
        std::memcpy(text.get(), "keyvalue", 8);
        std::string_view const all(reinterpret_cast<char const*>(text.get()), 8);
        Zq::Ptr<Tree> const tree = Zq::makeShared<Tree>();
        tree->keepText(std::move(text));
        tree->addString(tree->addChild(tree->root(), "c"), all.substr(0, 3), all.substr(3));
        child = Tree::rootOf(tree)->getChild("c");
    }
    EXPECT_EQ(child->getString("key"), "value");
}

TEST(Element, TheNumberOfChildrenStopsAt65535) {
    Zq::Ptr<Tree> const tree = Zq::makeShared<Tree>();
    for (int i = 0; i < 65534; ++i) {
        (void)tree->addChild(tree->root(), "");
    }
    EXPECT_EQ(tree->root().getNumChildren(), 65534);
    (void)tree->addChild(tree->root(), "");
    EXPECT_EQ(tree->root().getNumChildren(), 65535);
    tree->addFlag(tree->addChild(tree->root(), "last"), "on", true);
    EXPECT_EQ(tree->root().getNumChildren(), 65535);
    EXPECT_EQ(tree->root().children().size(), 65536U);
    EXPECT_TRUE(tree->root().getChild(std::uint16_t{65535})->getBool("on", false));
}

TEST(Element, ACopyHasListsOfItsOwn) {
    Record first;
    first.appendString("k", "v");
    first.appendNumber("n", 1);
    first.appendFlag("f", true);
    Record second(first);
    second.appendString("k2", "v2");
    first.appendNumber("n2", 2);
    EXPECT_EQ(first.strings().size(), 1U);
    EXPECT_EQ(second.strings().size(), 2U);
    EXPECT_EQ(second.numbers().size(), 1U);
    EXPECT_EQ(second.getString("k"), "v");
    EXPECT_TRUE(second.getBool("f", false));
    EXPECT_NE(first.strings()[0].value.data(), second.strings()[0].value.data());
}

TEST(Element, ACopyOutlivesWhatItWasCopiedFrom) {
    LimitedMemory memory;
    {
        auto first = std::make_unique<Record>();
        first->appendString("k", "v");
        Record const second(*first);
        first.reset();
        EXPECT_EQ(second.getString("k"), "v");
    }
    EXPECT_EQ(memory.live(), 0);
}

TEST(Element, ACopyOfAnAnswerKeepsItsChildrenAlive) {
    LimitedMemory memory;
    {
        auto copy = std::make_unique<Element>(*answer());
        EXPECT_EQ(copy->getString("s"), "root");
        Element const again(*copy);
        Zq::Ptr<Element> const list = copy->getChild("list");
        copy.reset();
        EXPECT_EQ(list->getChild(1)->getInt("id", 0), 2);
        EXPECT_TRUE(again.getChild("info")->getChild("deep")->getBool("on", false));
    }
    EXPECT_EQ(memory.live(), 0);
}

TEST(Element, ACopyOfAChildKeepsItsOwnChildrenAlive) {
    Element const info(*answer()->getChild("info"));
    EXPECT_EQ(info.getString("name"), "n");
    EXPECT_TRUE(info.getChild("deep")->getBool("on", false));
}

TEST(Element, MovingTakesTheMembersAndLeavesNone) {
    Record first;
    first.appendString("k", "v");
    first.appendNumber("n", 1);
    char const* const place = first.strings()[0].value.data();
    Record second(std::move(first));
    EXPECT_EQ(second.getString("k"), "v");
    EXPECT_EQ(second.strings()[0].value.data(), place);
    EXPECT_TRUE(first.strings().empty()); // NOLINT(bugprone-use-after-move): that state is what is tested
    EXPECT_TRUE(first.numbers().empty());
    first.appendString("again", "usable");
    EXPECT_EQ(first.getString("again"), "usable");
    EXPECT_EQ(second.strings().size(), 1U);
}

TEST(Element, MovingAnEmptyElementIsEmpty) {
    Element first;
    Element const second(std::move(first));
    EXPECT_TRUE(second.strings().empty());
    EXPECT_EQ(second.getNumChildren(), 0);
}

TEST(Element, MovingFromAnAnswerLeavesTheAnswerWhole) {
    LimitedMemory memory;
    {
        Zq::Ptr<Element> root = answer();
        Element const moved(std::move(*root));
        EXPECT_EQ(root->getString("s"), "root");
        EXPECT_EQ(root->getChild("list")->getNumChildren(), 2);
        root.reset();
        EXPECT_EQ(moved.getString("s"), "root");
        EXPECT_EQ(moved.getChild("list")->getChild(0)->getInt("id", 0), 1);
    }
    EXPECT_EQ(memory.live(), 0);
}

TEST(Element, AssigningReplacesAllMembers) {
    LimitedMemory memory;
    {
        Record first;
        first.appendString("old", "1");
        Record second;
        second.appendNumber("new", 2);
        first = second;
        EXPECT_TRUE(first.strings().empty());
        EXPECT_EQ(first.getInt("new", 0), 2);
        EXPECT_EQ(second.getInt("new", 0), 2);
        Record const& same = first;
        first = same;
        EXPECT_EQ(first.getInt("new", 0), 2);
        first = Record();
        EXPECT_TRUE(first.numbers().empty());
    }
    EXPECT_EQ(memory.live(), 0);
}

TEST(Element, AnAnswerAssignedToAnElementKeepsItsChildren) {
    Element element;
    element = *answer();
    EXPECT_EQ(element.getChild("list")->getNumChildren(), 2);
    element = Element();
    EXPECT_EQ(element.getNumChildren(), 0);
}

TEST(Element, WithoutAnElementTheAccessorsGiveTheirDefaults) {
    Zq::Ptr<Element> const none;
    EXPECT_EQ(JSON::orEmpty(none).getInt("k", 5), 5);
    EXPECT_TRUE(JSON::orEmpty(none).getString("k").isEmpty());
    EXPECT_FALSE(JSON::orEmpty(none).getChild("k"));
    Zq::Ptr<Element> const root = answer();
    EXPECT_EQ(&JSON::orEmpty(root), root.get());
}

TEST(Element, WithoutMemoryAppendingThrowsAndChangesNothing) {
    LimitedMemory memory;
    Record empty;
    Record record;
    record.appendString("k", "v");
    memory.allow(0);
    EXPECT_THROW(empty.appendNumber("n", 1), std::bad_alloc);
    EXPECT_THROW(record.appendString("long", std::string(4096, 'x')), std::bad_alloc);
    EXPECT_TRUE(empty.numbers().empty());
    ASSERT_EQ(record.strings().size(), 1U);
    EXPECT_EQ(record.getString("long"), "");
    EXPECT_EQ(record.getStringView("k"), "v");
}

} // namespace
