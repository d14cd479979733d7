#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/parameters/BoolParam.h"
#include "host/parameters/ChoiceParam.h"
#include "tests/host/parameters/Recorder.h"

namespace {

using GenericParam::BoolParam;
using GenericParam::ChoiceParam;
using GenericParam::hintHidden;
using GenericParam::iParam;
using testing::ElementsAre;
using testing::IsEmpty;

Zq::Ptr<ChoiceParam> years(std::uint32_t initial) {
    return Zq::makeShared<ChoiceParam>(L"Year", "year", WideString(), initial,
                                       LightweightVector<Choice>{{UIString(L"1990"), 90},
                                                                 {UIString(L"2000"), 80},
                                                                 {UIString(L"2010"), 70},
                                                                 {UIString(L"2020"), 60}});
}

Zq::Ptr<BoolParam> flag(bool initial = false) {
    return Zq::makeShared<BoolParam>(L"Flag", "flag", WideString(), initial);
}

class EvenOnly final : public GenericParam::iValueConstraint {
public:
    [[nodiscard]] bool allows(std::int64_t value) const override { return value % 2 == 0; }
};

TEST(ValueConstraint, AForbiddenValueChangesNothingAndCallsNobody) {
    auto const param = years(0);
    auto const recorder = Zq::makeShared<Recorder>();
    param->addChangeHandler(recorder);
    param->addValueConstraint(Zq::makeShared<EvenOnly>());
    EXPECT_FALSE(param->setValue(1));
    EXPECT_FALSE(param->setValueFromString(L"3"));
    EXPECT_FALSE(param->selectTag(80));
    EXPECT_EQ(param->getValue(), 0U);
    EXPECT_THAT(recorder->values, IsEmpty());
    EXPECT_TRUE(param->setValue(2));
    EXPECT_THAT(recorder->values, ElementsAre(L"70"));
}

TEST(ValueConstraint, ThePresentValueStaysWhenARuleIsAdded) {
    auto const param = years(1);
    param->addValueConstraint(Zq::makeShared<EvenOnly>());
    EXPECT_EQ(param->getValue(), 1U);
}

TEST(ValueConstraint, ResetToAForbiddenValueChangesNothing) {
    auto const param = years(1);
    EXPECT_TRUE(param->setValue(2));
    param->addValueConstraint(Zq::makeShared<EvenOnly>());
    EXPECT_FALSE(param->reset());
    EXPECT_EQ(param->getValue(), 2U);
}

TEST(ValueConstraint, HoldsForACopyToo) {
    auto const param = years(0);
    param->addValueConstraint(Zq::makeShared<EvenOnly>());
    auto const copy = param->makeCopy();
    EXPECT_FALSE(copy->setValueFromString(L"1"));
    EXPECT_TRUE(copy->setValueFromString(L"2"));
}

TEST(ValueConstraint, NullIsNotAdded) {
    auto const param = years(0);
    param->addValueConstraint({});
    EXPECT_TRUE(param->setValue(1));
}

TEST(IsLessThan, AValueMustBeLessThanWhatTheOtherHasAtThatMoment) {
    auto const from = years(0);
    auto const to = years(2);
    EXPECT_TRUE(from->isLessThan(to));
    EXPECT_TRUE(from->setValue(1));
    EXPECT_FALSE(from->setValue(2));
    EXPECT_FALSE(from->setValue(3));
    EXPECT_EQ(from->getValue(), 1U);
    EXPECT_TRUE(to->setValue(3));
    EXPECT_TRUE(from->setValue(2));
}

TEST(IsGreaterThan, AValueMustBeGreaterThanWhatTheOtherHas) {
    auto const from = years(1);
    auto const to = years(3);
    EXPECT_TRUE(to->isGreaterThan(from));
    EXPECT_FALSE(to->setValue(0));
    EXPECT_FALSE(to->setValue(1));
    EXPECT_TRUE(to->setValue(2));
}

TEST(IsGreaterThan, TwoParametersThatLimitEachOtherBothEnd) {
    auto const recorder = Zq::makeShared<Recorder>();
    {
        auto const from = years(0);
        auto const to = years(3);
        EXPECT_TRUE(from->isLessThan(to));
        EXPECT_TRUE(to->isGreaterThan(from));
        from->addChangeHandler(recorder);
        to->addChangeHandler(recorder);
    }
    EXPECT_EQ(recorder->refCount().owners.load(), 1U);
}

TEST(IsLessThan, TheOtherMayBeGone) {
    auto const from = years(0);
    EXPECT_TRUE(from->isLessThan(years(2)));
    EXPECT_FALSE(from->setValue(2));
    EXPECT_TRUE(from->setValue(1));
}

TEST(IsLessThan, WhatCannotBeComparedIsRefused) {
    auto const param = years(0);
    EXPECT_FALSE(param->isLessThan({}));
    EXPECT_FALSE(param->isLessThan(param));
    EXPECT_FALSE(param->isLessThan(flag()));
    EXPECT_FALSE(param->isGreaterThan(flag(true)));
    EXPECT_TRUE(param->setValue(3));
}

TEST(IsActiveIf, AParameterIsActiveWhileTheOtherHasTheValue) {
    auto const param = years(0);
    auto const master = flag();
    EXPECT_TRUE(param->isActiveIf(master, L"true"));
    EXPECT_FALSE(param->isActive());
    EXPECT_TRUE(master->setValue(true));
    EXPECT_TRUE(param->isActive());
    param->setActive(false);
    EXPECT_FALSE(param->isActive());
}

TEST(IsActiveIf, EveryConditionMustHold) {
    auto const param = flag();
    auto const first = flag(true);
    auto const second = years(1);
    EXPECT_TRUE(param->isActiveIf(first, L"true"));
    EXPECT_TRUE(param->isActiveIf(second, L"1"));
    EXPECT_TRUE(param->isActive());
    EXPECT_TRUE(second->setValue(2));
    EXPECT_FALSE(param->isActive());
}

TEST(IsActiveIf, ACopyHasTheConditionToo) {
    auto const param = years(0);
    auto const master = flag();
    EXPECT_TRUE(param->isActiveIf(master, L"true"));
    auto const copy = param->makeCopy();
    EXPECT_FALSE(copy->isActive());
    EXPECT_TRUE(master->setValue(true));
    EXPECT_TRUE(copy->isActive());
}

TEST(IsVisibleIf, AParameterIsHiddenUnlessTheOtherHasTheValue) {
    auto const param = flag();
    auto const master = years(0);
    param->setPresentationHints(4);
    EXPECT_TRUE(param->isVisibleIf(master, L"2"));
    EXPECT_EQ(param->getPresentationHints(), 4U | hintHidden);
    EXPECT_TRUE(param->isActive());
    EXPECT_TRUE(master->selectTag(70));
    EXPECT_EQ(param->getPresentationHints(), 4U);
}

TEST(IsVisibleIf, AnImpossibleConditionIsRefused) {
    auto const param = flag();
    auto const master = years(0);
    EXPECT_FALSE(param->isVisibleIf({}, L"true"));
    EXPECT_FALSE(param->isVisibleIf(param, L"true"));
    EXPECT_FALSE(param->isVisibleIf(master, L"4"));
    EXPECT_FALSE(param->isVisibleIf(master, L"2010"));
    EXPECT_FALSE(param->isActiveIf(master, L""));
    EXPECT_EQ(param->getPresentationHints(), 0U);
    EXPECT_TRUE(param->isActive());
}

} // namespace
