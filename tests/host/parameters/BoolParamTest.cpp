#include "host/parameters/BoolParam.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/host/parameters/Recorder.h"

namespace {

using GenericParam::BoolParam;
using testing::ElementsAre;
using testing::IsEmpty;

Zq::Ptr<BoolParam> quality(bool initial = true) {
    return Zq::makeShared<BoolParam>(L"Better previews", "price", WideString(), initial);
}

TEST(BoolParam, HasTheWordsAndTheValueThatItWasMadeWith) {
    auto const param = quality();
    EXPECT_TRUE(param->getLegend() == L"Better previews");
    EXPECT_TRUE(param->getID() == "price");
    EXPECT_TRUE(param->getTooltip().isEmpty());
    EXPECT_TRUE(param->getValueType() == "bool");
    EXPECT_TRUE(param->getValue());
    EXPECT_TRUE(param->getValueAsString() == L"true");
    EXPECT_TRUE(quality(false)->getValueAsString() == L"false");
}

TEST(BoolParam, TheHandlersAreToldTheValueAsText) {
    auto const param = quality();
    auto const recorder = Zq::makeShared<Recorder>();
    param->addChangeHandler(recorder);
    EXPECT_TRUE(param->setValue(false));
    EXPECT_FALSE(param->getValue());
    EXPECT_TRUE(param->setValueFromString(L"true"));
    EXPECT_TRUE(param->getValue());
    EXPECT_THAT(recorder->values, ElementsAre(L"false", L"true"));
}

TEST(BoolParam, ATextThatIsNoBooleanChangesNothing) {
    auto const param = quality();
    auto const recorder = Zq::makeShared<Recorder>();
    param->addChangeHandler(recorder);
    for (wchar_t const* text : {L"", L"no", L"2", L"-1", L"FALSE"}) {
        EXPECT_FALSE(param->setValueFromString(text));
    }
    EXPECT_TRUE(param->getValue());
    EXPECT_THAT(recorder->values, IsEmpty());
}

TEST(BoolParam, ResetTellsWhetherTheValueChanged) {
    auto const param = quality();
    auto const recorder = Zq::makeShared<Recorder>();
    param->addChangeHandler(recorder);
    EXPECT_FALSE(param->reset());
    EXPECT_TRUE(param->setValue(false));
    EXPECT_TRUE(param->reset());
    EXPECT_TRUE(param->getValue());
    EXPECT_THAT(recorder->values, ElementsAre(L"false", L"true"));
}

TEST(BoolParam, IsActiveUntilSetOtherwise) {
    auto const param = quality();
    EXPECT_TRUE(param->isActive());
    param->setActive(false);
    EXPECT_FALSE(param->isActive());
    param->setActive(true);
    EXPECT_TRUE(param->isActive());
}

TEST(BoolParam, CanBeSetWhileInactive) {
    auto const param = quality();
    param->setActive(false);
    EXPECT_TRUE(param->setValue(false));
    EXPECT_FALSE(param->getValue());
}

TEST(BoolParam, KeepsItsPresentationHints) {
    auto const param = quality();
    EXPECT_EQ(param->getPresentationHints(), 0U);
    param->setPresentationHints(0x80000002U);
    EXPECT_EQ(param->getPresentationHints(), 0x80000002U);
}

TEST(BoolParam, ACopyIsSetOnItsOwnAndHasNoHandlers) {
    auto const param = quality();
    auto const recorder = Zq::makeShared<Recorder>();
    param->addChangeHandler(recorder);
    EXPECT_TRUE(param->setValue(false));
    recorder->values.clear();
    auto const copy = param->makeCopy();
    ASSERT_TRUE(copy);
    EXPECT_TRUE(copy->getValueType() == "bool");
    EXPECT_TRUE(copy->getValueAsString() == L"false");
    EXPECT_TRUE(copy->reset());
    EXPECT_TRUE(copy->getValueAsString() == L"true");
    EXPECT_FALSE(param->getValue());
    EXPECT_THAT(recorder->values, IsEmpty());
}

} // namespace
