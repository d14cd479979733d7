#include "host/parameters/ChoiceParam.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/host/parameters/Recorder.h"

namespace {

using GenericParam::ChoiceParam;
using testing::ElementsAre;
using testing::IsEmpty;

// The list of a filter: the entry that filters nothing, then three rows.
LightweightVector<Choice> heights() {
    return {{UIString(L"Any"), -1},
            {UIString(L"HD (720)"), 0},
            {UIString(L"HD (1080)"), 1},
            {UIString(L"4k"), 2}};
}

Zq::Ptr<ChoiceParam> heightFilter(std::uint32_t initial = 0) {
    return Zq::makeShared<ChoiceParam>(L"Height", "size", L"Least height", initial, heights());
}

TEST(ChoiceParam, HasTheWordsAndTheListThatItWasMadeWith) {
    auto const param = heightFilter(2);
    EXPECT_TRUE(param->getLegend() == L"Height");
    EXPECT_TRUE(param->getID() == "size");
    EXPECT_TRUE(param->getTooltip() == L"Least height");
    EXPECT_TRUE(param->getValueType() == "int");
    ASSERT_EQ(param->getChoices().size(), 4U);
    EXPECT_TRUE(param->getChoices()[3].text.text == L"4k");
    EXPECT_EQ(param->getChoices()[3].text.resource, UIString::noResource);
    EXPECT_EQ(param->getChoices()[3].text.extra, 0);
}

TEST(ChoiceParam, OpensAtThePositionThatItWasMadeWith) {
    auto const param = heightFilter(2);
    EXPECT_EQ(param->getValue(), 2U);
    EXPECT_TRUE(param->getValueAsString() == L"2");
    EXPECT_EQ(param->getTag(), 1);
}

TEST(ChoiceParam, TheHandlersAreToldTheTagAndNotThePosition) {
    auto const param = heightFilter();
    auto const recorder = Zq::makeShared<Recorder>();
    param->addChangeHandler(recorder);
    EXPECT_TRUE(param->setValue(1));
    EXPECT_TRUE(param->setValueFromString(L"3"));
    EXPECT_TRUE(param->setValue(0));
    EXPECT_THAT(recorder->values, ElementsAre(L"0", L"2", L"-1"));
}

TEST(ChoiceParam, IsChosenByTagToo) {
    auto const param = heightFilter();
    auto const recorder = Zq::makeShared<Recorder>();
    param->addChangeHandler(recorder);
    EXPECT_TRUE(param->selectTag(2));
    EXPECT_EQ(param->getValue(), 3U);
    EXPECT_TRUE(param->selectTag(-1));
    EXPECT_EQ(param->getValue(), 0U);
    EXPECT_THAT(recorder->values, ElementsAre(L"2", L"-1"));
}

TEST(ChoiceParam, AnUnknownTagOrPositionChangesNothing) {
    auto const param = heightFilter(2);
    auto const recorder = Zq::makeShared<Recorder>();
    param->addChangeHandler(recorder);
    EXPECT_FALSE(param->selectTag(3));
    EXPECT_FALSE(param->setValue(4));
    for (wchar_t const* text : {L"4", L"-1", L"", L"4k", L"true", L"4294967296"}) {
        EXPECT_FALSE(param->setValueFromString(text));
    }
    EXPECT_EQ(param->getValue(), 2U);
    EXPECT_THAT(recorder->values, IsEmpty());
}

TEST(ChoiceParam, APositionOutsideTheListOpensTheFirstEntry) {
    auto const param = heightFilter(4);
    EXPECT_EQ(param->getValue(), 0U);
    EXPECT_EQ(param->getTag(), -1);
    EXPECT_FALSE(param->reset());
}

TEST(ChoiceParam, NothingCanBeChosenFromAnEmptyList) {
    auto const param = Zq::makeShared<ChoiceParam>(L"", "", L"", 1U, LightweightVector<Choice>());
    EXPECT_EQ(param->getTag(), -1);
    EXPECT_EQ(param->getValue(), 0U);
    EXPECT_FALSE(param->setValue(0));
    EXPECT_FALSE(param->selectTag(-1));
}

TEST(ChoiceParam, ResetTellsWhetherTheValueChangedAndCallsTheHandlersOnlyThen) {
    auto const param = heightFilter(2);
    auto const recorder = Zq::makeShared<Recorder>();
    param->addChangeHandler(recorder);
    EXPECT_FALSE(param->reset());
    EXPECT_THAT(recorder->values, IsEmpty());
    EXPECT_TRUE(param->setValue(3));
    EXPECT_TRUE(param->reset());
    EXPECT_EQ(param->getValue(), 2U);
    EXPECT_THAT(recorder->values, ElementsAre(L"2", L"1"));
}

TEST(ChoiceParam, ACopyHasTheSameWordsListAndValue) {
    auto const param = heightFilter(2);
    EXPECT_TRUE(param->setValue(3));
    param->setActive(false);
    param->setPresentationHints(6);
    auto const copy = Zq::dynamicCast<ChoiceParam>(param->makeCopy());
    ASSERT_TRUE(copy);
    EXPECT_TRUE(copy->getLegend() == L"Height");
    EXPECT_TRUE(copy->getID() == "size");
    EXPECT_TRUE(copy->getTooltip() == L"Least height");
    EXPECT_EQ(copy->getChoices().size(), 4U);
    EXPECT_EQ(copy->getTag(), 2);
    EXPECT_FALSE(copy->isActive());
    EXPECT_EQ(copy->getPresentationHints(), 6U);
    EXPECT_TRUE(copy->reset());
    EXPECT_EQ(copy->getValue(), 2U);
}

TEST(ChoiceParam, ACopyIsSetOnItsOwnAndHasNoHandlers) {
    auto const param = heightFilter();
    auto const recorder = Zq::makeShared<Recorder>();
    param->addChangeHandler(recorder);
    auto const copy = param->makeCopy();
    EXPECT_TRUE(copy->setValueFromString(L"1"));
    EXPECT_TRUE(param->getValueAsString() == L"0");
    EXPECT_THAT(recorder->values, IsEmpty());
    EXPECT_TRUE(param->setValue(3));
    EXPECT_TRUE(copy->getValueAsString() == L"1");
}

} // namespace
