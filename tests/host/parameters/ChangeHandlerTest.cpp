#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/parameters/BoolParam.h"
#include "host/parameters/ChoiceParam.h"
#include "host/parameters/Listener.h"
#include "tests/host/parameters/Recorder.h"

namespace {

using GenericParam::BoolParam;
using GenericParam::ChoiceParam;
using GenericParam::Listener;
using testing::ElementsAre;
using testing::IsEmpty;

// Keeps a filter and a flag, as a repository does.
class Filters {
public:
    void handlePrice(std::int32_t tag) { tags.push_back(tag); }
    void handleQuality(bool quality) { qualities.push_back(quality); }

    std::vector<std::int32_t> tags;
    std::vector<bool> qualities;
};

Zq::Ptr<ChoiceParam> prices() {
    return Zq::makeShared<ChoiceParam>(
        L"Price", "price", WideString(), 0U,
        LightweightVector<Choice>{{UIString(L"Any"), -1}, {UIString(L"$5"), 0}, {UIString(L"$10"), 1}});
}

Zq::Ptr<BoolParam> flag() {
    return Zq::makeShared<BoolParam>(L"Flag", "flag", WideString(), false);
}

TEST(Listener, HandsTheTagOfAChoiceToItsOwner) {
    Filters filters;
    auto const param = prices();
    param->addChangeHandler(Zq::makeShared<Listener<Filters, std::int32_t>>(filters, &Filters::handlePrice));
    EXPECT_TRUE(param->setValue(2));
    EXPECT_TRUE(param->setValue(0));
    EXPECT_THAT(filters.tags, ElementsAre(1, -1));
}

TEST(Listener, HandsABooleanToItsOwner) {
    Filters filters;
    auto const param = flag();
    param->addChangeHandler(Zq::makeShared<Listener<Filters, bool>>(filters, &Filters::handleQuality));
    EXPECT_TRUE(param->setValue(true));
    EXPECT_TRUE(param->setValueFromString(L"false"));
    EXPECT_THAT(filters.qualities, ElementsAre(true, false));
}

TEST(Listener, ATextThatIsNoValueCallsNobody) {
    Filters filters;
    Listener<Filters, std::int32_t> price(filters, &Filters::handlePrice);
    Listener<Filters, bool> quality(filters, &Filters::handleQuality);
    price.valueChanged(L"cheap");
    price.valueChanged(L"");
    price.valueChanged(L"2147483648");
    quality.valueChanged(L"maybe");
    EXPECT_THAT(filters.tags, IsEmpty());
    EXPECT_THAT(filters.qualities, IsEmpty());
}

TEST(ChangeHandler, IsCalledAlsoWhenTheValueIsTheOneAlreadyThere) {
    auto const param = prices();
    auto const recorder = Zq::makeShared<Recorder>();
    param->addChangeHandler(recorder);
    EXPECT_TRUE(param->setValue(1));
    EXPECT_TRUE(param->setValue(1));
    EXPECT_THAT(recorder->values, ElementsAre(L"0", L"0"));
}

TEST(ChangeHandler, SeesTheNewValueInTheParameter) {
    auto const param = flag();
    std::vector<bool> seen;
    param->addChangeHandler(Zq::makeShared<Recorder>([&] { seen.push_back(param->getValue()); }));
    EXPECT_TRUE(param->setValue(true));
    EXPECT_THAT(seen, ElementsAre(true));
}

TEST(ChangeHandler, ThoseAddedFirstAreCalledFirst) {
    auto const param = flag();
    std::vector<int> order;
    param->addChangeHandler(Zq::makeShared<Recorder>([&] { order.push_back(1); }));
    param->addChangeHandler(Zq::makeShared<Recorder>([&] { order.push_back(2); }));
    EXPECT_TRUE(param->setValue(true));
    EXPECT_THAT(order, ElementsAre(1, 2));
}

TEST(ChangeHandler, NullIsNotAdded) {
    auto const param = flag();
    param->addChangeHandler({});
    EXPECT_TRUE(param->setValue(true));
}

TEST(ChangeHandler, ARemovedOneIsNotCalled) {
    auto const param = flag();
    auto const recorder = Zq::makeShared<Recorder>();
    param->addChangeHandler(recorder);
    param->removeChangeHandler(recorder);
    EXPECT_TRUE(param->setValue(true));
    EXPECT_THAT(recorder->values, IsEmpty());
}

TEST(ChangeHandler, OneAddedDuringACallIsFirstCalledAtTheNext) {
    auto const param = flag();
    auto const late = Zq::makeShared<Recorder>();
    bool isAdded = false;
    param->addChangeHandler(Zq::makeShared<Recorder>([&] {
        if (!std::exchange(isAdded, true)) {
            for (int i = 0; i < 100; ++i) {
                param->addChangeHandler(late);
            }
        }
    }));
    EXPECT_TRUE(param->setValue(true));
    EXPECT_THAT(late->values, IsEmpty());
    EXPECT_TRUE(param->setValue(false));
    EXPECT_EQ(late->values.size(), 100U);
}

TEST(ChangeHandler, MayRemoveItselfDuringACall) {
    auto const param = flag();
    Zq::Ptr<Recorder> self;
    self = Zq::makeShared<Recorder>([&] { param->removeChangeHandler(self); });
    auto const other = Zq::makeShared<Recorder>();
    param->addChangeHandler(self);
    param->addChangeHandler(other);
    EXPECT_TRUE(param->setValue(true));
    EXPECT_TRUE(param->setValue(false));
    EXPECT_THAT(self->values, ElementsAre(L"true"));
    EXPECT_THAT(other->values, ElementsAre(L"true", L"false"));
}

TEST(ChangeHandler, MayEndTheParameterDuringACall) {
    auto param = prices();
    auto const after = Zq::makeShared<Recorder>();
    param->addChangeHandler(Zq::makeShared<Recorder>([&] { param.reset(); }));
    param->addChangeHandler(after);
    ChoiceParam* const bare = param.get();
    EXPECT_TRUE(bare->selectTag(1));
    EXPECT_FALSE(param);
    EXPECT_THAT(after->values, ElementsAre(L"1"));
}

TEST(ChangeHandler, MaySetTheParameterAgain) {
    auto const param = prices();
    param->addChangeHandler(Zq::makeShared<Recorder>([&] {
        if (param->getValue() != 0) {
            EXPECT_TRUE(param->setValue(0));
        }
    }));
    auto const recorder = Zq::makeShared<Recorder>();
    param->addChangeHandler(recorder);
    EXPECT_TRUE(param->setValue(2));
    EXPECT_EQ(param->getValue(), 0U);
    EXPECT_THAT(recorder->values, ElementsAre(L"-1", L"1"));
}

TEST(ChangeHandler, LivesNoLongerThanItsParameter) {
    auto const recorder = Zq::makeShared<Recorder>();
    {
        auto const param = flag();
        param->addChangeHandler(recorder);
        EXPECT_EQ(recorder->refCount().owners.load(), 2U);
    }
    EXPECT_EQ(recorder->refCount().owners.load(), 1U);
}

} // namespace
