#include "host/parameters/TextParam.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/parameters/BoolParam.h"
#include "host/parameters/Listener.h"
#include "repository/SearchOptions.h"
#include "tests/host/parameters/Recorder.h"

namespace {

using GenericParam::BoolParam;
using GenericParam::TextParam;
using testing::ElementsAre;
using testing::IsEmpty;

Zq::Ptr<TextParam> folder() {
    return Zq::makeShared<TextParam>(L"Folder", "folder", L"Where to look", L"/footage");
}

TEST(TextParam, HasTheWordsAndTheValueThatItWasMadeWith) {
    auto const param = folder();
    EXPECT_TRUE(param->getLegend() == L"Folder");
    EXPECT_TRUE(param->getID() == "folder");
    EXPECT_TRUE(param->getTooltip() == L"Where to look");
    EXPECT_TRUE(param->getValueType() == "text");
    EXPECT_TRUE(param->getValueAsString() == L"/footage");
}

TEST(TextParam, TakesEveryTextAndTellsItsHandlers) {
    auto const param = folder();
    auto const recorder = Zq::makeShared<Recorder>();
    param->addChangeHandler(recorder);
    for (wchar_t const* const text : {L"/x", L"", L"true", L"two\nlines"}) {
        EXPECT_EQ(setSearchOption({{L"", {param}}}, 0, 0, text), SearchOptionResult::set);
        EXPECT_TRUE(param->getValueAsString() == text);
    }
    EXPECT_THAT(recorder->values, ElementsAre(L"/x", L"", L"true", L"two\nlines"));
}

TEST(TextParam, AListenerGetsTheText) {
    struct Owner {
        void take(WideString text) { taken = std::move(text); }
        WideString taken;
    } owner;
    auto const param = folder();
    param->addChangeHandler(Zq::makeShared<GenericParam::Listener<Owner, WideString>>(owner, &Owner::take));
    EXPECT_TRUE(param->setValueFromString(L"/other"));
    EXPECT_TRUE(owner.taken == L"/other");
}

TEST(TextParam, ResetTellsWhetherTheValueChanged) {
    auto const param = folder();
    auto const recorder = Zq::makeShared<Recorder>();
    param->addChangeHandler(recorder);
    EXPECT_FALSE(param->reset());
    EXPECT_THAT(recorder->values, IsEmpty());
    EXPECT_TRUE(param->setValueFromString(L"/x"));
    EXPECT_TRUE(param->reset());
    EXPECT_TRUE(param->getValueAsString() == L"/footage");
    EXPECT_THAT(recorder->values, ElementsAre(L"/x", L"/footage"));
}

TEST(TextParam, ACopyIsSetOnItsOwnAndTellsNobody) {
    auto const param = folder();
    auto const recorder = Zq::makeShared<Recorder>();
    EXPECT_TRUE(param->setValueFromString(L"/x"));
    param->addChangeHandler(recorder);
    param->setActive(false);
    auto const copy = param->makeCopy();
    EXPECT_TRUE(copy->getValueAsString() == L"/x");
    EXPECT_FALSE(copy->isActive());
    EXPECT_TRUE(copy->reset());
    EXPECT_TRUE(copy->getValueAsString() == L"/footage");
    EXPECT_TRUE(param->getValueAsString() == L"/x");
    EXPECT_THAT(recorder->values, IsEmpty());
}

TEST(TextParam, IsNothingThatAnotherParameterCanDependOn) {
    auto const param = folder();
    auto const other = Zq::makeShared<BoolParam>(L"", "", L"", true);
    EXPECT_FALSE(other->isActiveIf(param, L"/footage"));
    EXPECT_FALSE(folder()->isLessThan(param));
    EXPECT_TRUE(param->isActiveIf(other, L"false"));
    EXPECT_FALSE(param->isActive());
}

} // namespace
