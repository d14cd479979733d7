#include "repository/SearchOptions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/parameters/BoolParam.h"
#include "host/parameters/ChoiceParam.h"
#include "tests/host/parameters/Recorder.h"

namespace {

using GenericParam::BoolParam;
using GenericParam::ChoiceParam;
using testing::ElementsAre;
using testing::IsEmpty;

// Two groups whose first parameters bear the same id.
class SearchOptions : public testing::Test {
protected:
    SearchOptions() {
        LightweightVector<Choice> const entries = {
            {UIString(L"Any"), -1}, {UIString(L"$5"), 0}, {UIString(L"$10"), 1}};
        price_ = Zq::makeShared<ChoiceParam>(L"Price", "price", WideString(), 0U, entries);
        quality_ = Zq::makeShared<BoolParam>(L"Quality", "price", WideString(), true);
        price_->addChangeHandler(prices_);
        quality_->addChangeHandler(qualities_);
        groups_ = {{L"Filters", {price_}}, {L"Previews", {quality_}}};
    }

    Zq::Ptr<Recorder> prices_ = Zq::makeShared<Recorder>();
    Zq::Ptr<Recorder> qualities_ = Zq::makeShared<Recorder>();
    Zq::Ptr<ChoiceParam> price_;
    Zq::Ptr<BoolParam> quality_;
    LightweightVector<SearchOptionGroup> groups_;
};

TEST_F(SearchOptions, AreFoundByPositionAlsoWhenTheirIdsAreTheSame) {
    EXPECT_TRUE(findSearchOption(groups_, 0, 0) == price_);
    EXPECT_TRUE(findSearchOption(groups_, 1, 0) == quality_);
    EXPECT_FALSE(findSearchOption(groups_, 0, 1));
    EXPECT_FALSE(findSearchOption(groups_, 2, 0));
}

TEST_F(SearchOptions, AChoiceIsSetByTag) {
    EXPECT_EQ(setSearchOption(groups_, 0, 0, L"1"), SearchOptionResult::set);
    EXPECT_EQ(price_->getValue(), 2U);
    EXPECT_EQ(setSearchOption(groups_, 0, 0, L"-1"), SearchOptionResult::set);
    EXPECT_EQ(price_->getValue(), 0U);
    EXPECT_THAT(prices_->values, ElementsAre(L"1", L"-1"));
    EXPECT_THAT(qualities_->values, IsEmpty());
}

TEST_F(SearchOptions, ABooleanIsSetByTrueOrFalse) {
    EXPECT_EQ(setSearchOption(groups_, 1, 0, L"false"), SearchOptionResult::set);
    EXPECT_FALSE(quality_->getValue());
    EXPECT_THAT(qualities_->values, ElementsAre(L"false"));
    EXPECT_THAT(prices_->values, IsEmpty());
}

TEST_F(SearchOptions, EveryMistakeHasItsOwnResultAndChangesNothing) {
    EXPECT_EQ(setSearchOption(groups_, 2, 0, L"1"), SearchOptionResult::noSuchGroup);
    EXPECT_EQ(setSearchOption(groups_, 0, 1, L"1"), SearchOptionResult::noSuchOption);
    EXPECT_EQ(setSearchOption(groups_, 0, 0, L"2"), SearchOptionResult::noSuchTag);
    EXPECT_EQ(setSearchOption(groups_, 0, 0, L"true"), SearchOptionResult::noSuchTag);
    EXPECT_EQ(setSearchOption(groups_, 0, 0, L""), SearchOptionResult::noSuchTag);
    EXPECT_EQ(setSearchOption(groups_, 1, 0, L"-1"), SearchOptionResult::notABoolean);
    EXPECT_EQ(setSearchOption({}, 0, 0, L"1"), SearchOptionResult::noSuchGroup);
    EXPECT_THAT(prices_->values, IsEmpty());
    EXPECT_THAT(qualities_->values, IsEmpty());
}

TEST_F(SearchOptions, AnInactiveOneIsNotSet) {
    price_->setActive(false);
    EXPECT_EQ(setSearchOption(groups_, 0, 0, L"1"), SearchOptionResult::inactive);
    EXPECT_THAT(prices_->values, IsEmpty());
}

TEST_F(SearchOptions, AForbiddenValueIsRefused) {
    EXPECT_TRUE(price_->isLessThan(
        Zq::makeShared<ChoiceParam>(L"", "", L"", 0U, LightweightVector<Choice>{{UIString(L"Any"), -1}})));
    EXPECT_EQ(setSearchOption(groups_, 0, 0, L"1"), SearchOptionResult::refused);
    EXPECT_EQ(price_->getValue(), 0U);
}

TEST_F(SearchOptions, AGroupMayHoldAGap) {
    groups_[0].params.push_back({});
    EXPECT_EQ(setSearchOption(groups_, 0, 1, L"1"), SearchOptionResult::noSuchOption);
}

TEST_F(SearchOptions, AHandlerMayEmptyTheGroups) {
    price_->addChangeHandler(Zq::makeShared<Recorder>([this] {
        groups_.clear();
        price_.reset();
    }));
    EXPECT_EQ(setSearchOption(groups_, 0, 0, L"1"), SearchOptionResult::set);
    EXPECT_TRUE(groups_.empty());
    EXPECT_THAT(prices_->values, ElementsAre(L"1"));
}

} // namespace
