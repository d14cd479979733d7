#include <algorithm>
#include <map>

#include "host/parameters/BoolParam.h"
#include "host/parameters/ChoiceParam.h"
#include "repository/SearchOptions.h"
#include "tests/fake_host/WatchedHost.h"
#include "tests/tarn7/Tarn7Fixture.h"

namespace tarn7_tests {
namespace {

using GenericParam::BoolParam;
using GenericParam::ChoiceParam;
using Handler = void (Tarn7Resource::*)(std::int32_t);

// Keeps the codes of the notifications, and asks the test about each.
class Codes final : public iCallbackBase<int, NotifyMsg> {
public:
    int operator()(NotifyMsg message) override {
        seen.push_back(message.getCode());
        withSubject = withSubject || message.getSubject() != nullptr;
        if (onNotification) {
            onNotification();
        }
        return 0;
    }
    std::vector<std::int32_t> seen;
    bool withSubject = false;
    std::function<void()> onNotification;
};

struct Filter {
    char const* preference;
    char const* id;
    char const* legend;
    Handler handler;
    std::vector<std::pair<std::int32_t, char const*>> rows;
};

// In the order in which the panel shows them.
std::vector<Filter> const filters = {
    {"T7 Price",
     "price",
     "#13652",
     &Tarn7Resource::handlePriceChange,
     {{5, "$5"}, {10, "$10"}, {20, "$20"}, {50, "$50"}, {100, "$100"}}},
    {"T7 Height",
     "size",
     "#13653",
     &Tarn7Resource::handleSizeChange,
     {{720, "HD (720)"}, {1080, "HD (1080)"}, {2160, "4k"}}},
    {"T7 Len",
     "len",
     "#13654",
     &Tarn7Resource::handleLengthChange,
     {{5, "5 secs"}, {10, "10 secs"}, {20, "20 secs"}, {30, "30 secs"}, {45, "45 secs"}, {60, "60 secs"}}},
};

class Options : public Tarn7Test {
protected:
    Options() : codes(Zq::makeShared<Codes>()), guard(resource.addListener(codes)) {}

    Zq::Ptr<ChoiceParam> choice(std::size_t position) {
        return Zq::dynamicCast<ChoiceParam>(findSearchOption(resource.getSearchOptions(), 0, position));
    }
    Zq::Ptr<BoolParam> quality() {
        return Zq::dynamicCast<BoolParam>(findSearchOption(resource.getSearchOptions(), 1, 0));
    }
    [[nodiscard]] std::int32_t stored(char const* key) { return host.preferences.readInt(key).value_or(-99); }
    // Leaves one page of results in the cache.
    void fillCache() {
        if (!resource.isConnected()) {
            connect();
        }
        host.network.answerWith(foundItems(R"([{"id":1,"fps_real":"25"}])"));
        ASSERT_EQ(resource.search({}).assets.size(), 1U);
        ASSERT_FALSE(resource.searchResultCache.empty());
    }

    Zq::Ptr<Codes> codes;
    Zq::Ptr<Zq::Guard> guard;
};

TEST_F(Options, ThereAreTwoGroupsWithTheHostsLegends) {
    auto const groups = resource.getSearchOptions();
    ASSERT_EQ(groups.size(), 2U);
    EXPECT_EQ(utf8(groups[0].legend), "#13761");
    EXPECT_EQ(groups[0].params.size(), 3U);
    EXPECT_EQ(utf8(groups[1].legend), "#10106");
    EXPECT_EQ(groups[1].params.size(), 1U);
}

TEST_F(Options, EachFilterHasItsIdItsLegendAndEveryRowOfItsTable) {
    for (std::size_t position = 0; position < filters.size(); ++position) {
        Filter const& filter = filters[position];
        SCOPED_TRACE(filter.preference);
        auto const param = choice(position);
        ASSERT_NE(param, nullptr);
        EXPECT_EQ(param->getID(), filter.id);
        EXPECT_EQ(utf8(param->getLegend()), filter.legend);
        EXPECT_TRUE(param->getTooltip().isEmpty());
        EXPECT_EQ(param->getValueType(), "int");
        auto const& choices = param->getChoices();
        ASSERT_EQ(choices.size(), filter.rows.size() + 1);
        EXPECT_EQ(utf8(choices[0].text.text), "#10005");
        EXPECT_EQ(choices[0].tag, -1);
        for (std::size_t row = 0; row < filter.rows.size(); ++row) {
            EXPECT_EQ(utf8(choices[row + 1].text.text), filter.rows[row].second);
            EXPECT_EQ(choices[row + 1].tag, static_cast<std::int32_t>(row));
        }
        for (Choice const& entry : choices) {
            EXPECT_EQ(entry.text.resource, 999999U);
            EXPECT_EQ(entry.text.extra, 0);
        }
    }
}

TEST_F(Options, WithoutPreferencesEveryListOpensOnTheEntryForNoFilter) {
    for (std::size_t position = 0; position < filters.size(); ++position) {
        EXPECT_EQ(choice(position)->getValue(), 0U);
        EXPECT_EQ(choice(position)->getTag(), -1);
    }
}

TEST_F(Options, AStoredValueOpensTheListOneBehindItsRow) {
    for (std::size_t position = 0; position < filters.size(); ++position) {
        Filter const& filter = filters[position];
        for (std::size_t row = 0; row < filter.rows.size(); ++row) {
            host.preferences.write(filter.preference, filter.rows[row].first);
            EXPECT_EQ(choice(position)->getValue(), row + 1) << filter.preference;
        }
    }
}

TEST_F(Options, AStoredHeightOf1080OpensAtPositionTwo) {
    host.preferences.write("T7 Height", 1080);
    auto const param = choice(1);
    EXPECT_EQ(param->getValue(), 2U);
    EXPECT_EQ(utf8(param->getChoices()[2].text.text), "HD (1080)");
}

TEST_F(Options, AStoredValueOfNoRowOpensTheListOnNoFilterAndStaysStored) {
    host.preferences.write("T7 Price", 15);
    EXPECT_EQ(choice(0)->getValue(), 0U);
    EXPECT_EQ(stored("T7 Price"), 15);
}

TEST_F(Options, TheQualityOptionBearsTheIdOfThePriceFilter) {
    auto const param = quality();
    ASSERT_NE(param, nullptr);
    EXPECT_EQ(param->getID(), "price");
    EXPECT_EQ(choice(0)->getID(), param->getID());
    EXPECT_EQ(utf8(param->getLegend()), "#14110");
    EXPECT_TRUE(param->getTooltip().isEmpty());
    EXPECT_EQ(param->getValueType(), "bool");
}

TEST_F(Options, TheQualityOptionShowsTheMemberAndNotThePreference) {
    EXPECT_TRUE(quality()->getValue());
    host.preferences.write("T7 HQ Proxies", false);
    EXPECT_TRUE(quality()->getValue());
    resource.hqProxies = false;
    EXPECT_FALSE(quality()->getValue());
}

TEST_F(Options, EachCallMakesNewParametersFromThePreferences) {
    auto const first = choice(0);
    host.preferences.write("T7 Price", 50);
    auto const second = choice(0);
    EXPECT_NE(first, second);
    EXPECT_EQ(first->getValue(), 0U);
    EXPECT_EQ(second->getValue(), 4U);
}

TEST_F(Options, WithoutMemoryForTheParametersTheGroupsStayEmpty) {
    host.memory.refuseSize(sizeof(ChoiceParam));
    auto groups = resource.getSearchOptions();
    ASSERT_EQ(groups.size(), 2U);
    EXPECT_TRUE(groups[0].params.empty());
    EXPECT_EQ(groups[1].params.size(), 1U);
    host.memory.refuseSize(sizeof(BoolParam));
    groups = resource.getSearchOptions();
    EXPECT_EQ(groups[0].params.size(), 3U);
    EXPECT_TRUE(groups[1].params.empty());
    host.memory.refuseSize(0);
}

TEST_F(Options, MakingTheOptionsTellsNobodyAndWritesNothing) {
    (void)resource.getSearchOptions();
    EXPECT_TRUE(codes->seen.empty());
    EXPECT_TRUE(host.preferences.writes().empty());
}

TEST_F(Options, EveryTagWritesTheValueOfItsRow) {
    for (Filter const& filter : filters) {
        SCOPED_TRACE(filter.preference);
        for (std::size_t row = 0; row < filter.rows.size(); ++row) {
            (resource.*filter.handler)(static_cast<std::int32_t>(row));
            EXPECT_EQ(stored(filter.preference), filter.rows[row].first);
        }
    }
}

TEST_F(Options, TheTagForNoFilterWritesZero) {
    for (Filter const& filter : filters) {
        (resource.*filter.handler)(0);
        (resource.*filter.handler)(-1);
        EXPECT_EQ(stored(filter.preference), 0) << filter.preference;
    }
}

TEST_F(Options, ChoosingAnEntryCallsTheHandlerWithItsTag) {
    auto const groups = resource.getSearchOptions();
    for (std::size_t position = 0; position < filters.size(); ++position) {
        Filter const& filter = filters[position];
        SCOPED_TRACE(filter.preference);
        for (std::size_t row = 0; row < filter.rows.size(); ++row) {
            EXPECT_EQ(setSearchOption(groups, 0, position, Zq::WStringFromInteger(static_cast<int>(row))),
                      SearchOptionResult::set);
            EXPECT_EQ(stored(filter.preference), filter.rows[row].first);
        }
        EXPECT_EQ(setSearchOption(groups, 0, position, L"-1"), SearchOptionResult::set);
        EXPECT_EQ(stored(filter.preference), 0);
    }
}

TEST_F(Options, APositionInTheListIsAnsweredByTheTagOfItsEntry) {
    auto const param = choice(1);
    EXPECT_TRUE(param->setValueFromString(L"3"));
    EXPECT_EQ(stored("T7 Height"), 2160);
    EXPECT_TRUE(param->setValueFromString(L"0"));
    EXPECT_EQ(stored("T7 Height"), 0);
}

TEST_F(Options, ATagThatNoEntryHasChangesNothing) {
    fillCache();
    std::size_t const written = host.preferences.writes().size();
    for (Filter const& filter : filters) {
        for (std::int32_t const tag :
             {-2, static_cast<std::int32_t>(filter.rows.size()), 2147483647, -2147483647 - 1}) {
            (resource.*filter.handler)(tag);
        }
    }
    EXPECT_EQ(host.preferences.writes().size(), written);
    EXPECT_TRUE(codes->seen.empty());
    EXPECT_FALSE(resource.searchResultCache.empty());
}

TEST_F(Options, AFilterWritesThenEmptiesTheCacheThenTells) {
    for (Filter const& filter : filters) {
        SCOPED_TRACE(filter.preference);
        fillCache();
        fake::WatchedHost watched;
        std::vector<std::string> steps;
        auto const cacheState = [this] {
            return std::string(resource.searchResultCache.empty() ? ", cache empty" : ", cache full");
        };
        watched.preferences.onWrite = [&](char const* key) { steps.push_back(key + cacheState()); };
        codes->onNotification = [&] { steps.push_back("told" + cacheState()); };
        (resource.*filter.handler)(1);
        codes->onNotification = nullptr;
        EXPECT_EQ(steps, (std::vector<std::string>{std::string(filter.preference) + ", cache full",
                                                   "told, cache empty"}));
    }
}

TEST_F(Options, AValueThatIsStoredAlreadyStillEmptiesTheCacheAndTells) {
    for (Filter const& filter : filters) {
        SCOPED_TRACE(filter.preference);
        (resource.*filter.handler)(1);
        fillCache();
        codes->seen.clear();
        (resource.*filter.handler)(1);
        EXPECT_TRUE(resource.searchResultCache.empty());
        EXPECT_EQ(codes->seen, std::vector<std::int32_t>{24});
        EXPECT_FALSE(codes->withSubject);
    }
}

TEST_F(Options, TheQualityIsKeptInMemoryAndInThePreferenceAndTellsNobody) {
    fillCache();
    resource.handleProxyQualityChange(false);
    EXPECT_FALSE(resource.hqProxies);
    EXPECT_EQ(host.preferences.readBool("T7 HQ Proxies"), false);
    EXPECT_FALSE(resource.searchResultCache.empty());
    EXPECT_TRUE(codes->seen.empty());
    resource.handleProxyQualityChange(true);
    EXPECT_TRUE(resource.hqProxies);
    EXPECT_EQ(host.preferences.readBool("T7 HQ Proxies"), true);
}

TEST_F(Options, TurningTheQualityOptionReachesTheHandler) {
    auto const groups = resource.getSearchOptions();
    EXPECT_EQ(setSearchOption(groups, 1, 0, L"false"), SearchOptionResult::set);
    EXPECT_FALSE(resource.hqProxies);
    EXPECT_EQ(setSearchOption(groups, 1, 0, L"true"), SearchOptionResult::set);
    EXPECT_TRUE(resource.hqProxies);
    EXPECT_EQ(host.preferences.readInt("T7 Price"), std::nullopt);
}

} // namespace
} // namespace tarn7_tests
