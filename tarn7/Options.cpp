// The search filters, the preview quality, and the columns of the results list.

#include <algorithm>
#include <optional>
#include <span>

#include "host/parameters/BoolParam.h"
#include "host/parameters/ChoiceParam.h"
#include "host/parameters/Listener.h"
#include "host/preferences/EditorPreferences.h"
#include "host/resources/resourceStr.h"
#include "repository/ResultList.h"
#include "tarn7/FilterChoices.h"
#include "tarn7/Tarn7Resource.h"

namespace {

using Choices = std::span<tarn7::FilterChoice const>;

constexpr std::int32_t noFilterTag = -1;

// The list of a filter: the entry for no filter, then the rows of the table.
LightweightVector<Choice> choiceList(Choices rows) {
    LightweightVector<Choice> list;
    list.push_back({UIString(resourceStrW(10005)), noFilterTag});
    for (std::size_t row = 0; row < rows.size(); ++row) {
        list.push_back({UIString(rows[row].text), static_cast<std::int32_t>(row)});
    }
    return list;
}

// Position in that list: the entry for no filter comes first and stands for every value in no row.
std::uint32_t positionOf(Choices rows, std::int32_t value) {
    auto const found = std::ranges::find(rows, value, &tarn7::FilterChoice::value);
    return found != rows.end() ? static_cast<std::uint32_t>(found - rows.begin()) + 1 : 0;
}

// What a filter keeps for an entry: 0 for no filter. No value for a tag that no entry has.
std::optional<std::int32_t> valueOf(Choices rows, std::int32_t tag) {
    if (tag == noFilterTag) {
        return 0;
    }
    if (tag < 0 || static_cast<std::size_t>(tag) >= rows.size()) {
        return std::nullopt;
    }
    return rows[static_cast<std::size_t>(tag)].value;
}

} // namespace

LightweightVector<SearchOptionGroup> Tarn7Resource::getSearchOptions() {
    struct Filter {
        char const* preference;
        char const* id;
        ResId legend;
        Choices rows;
        void (Tarn7Resource::*handler)(std::int32_t);
    };
    Filter const filters[] = {
        {tarn7::pricePreference, "price", 13652, tarn7::Tarn7PriceChoices, &Tarn7Resource::handlePriceChange},
        {tarn7::heightPreference, "size", 13653, tarn7::Tarn7HeightChoices, &Tarn7Resource::handleSizeChange},
        {tarn7::lengthPreference, "len", 13654, tarn7::Tarn7LengthChoices,
         &Tarn7Resource::handleLengthChange},
    };

    SearchOptionGroup filterGroup;
    filterGroup.legend = resourceStrW(13761);
    for (Filter const& filter : filters) {
        std::uint32_t const position =
            positionOf(filter.rows, prefs().getPreference(filter.preference, std::int32_t{0}));
        auto const param = Zq::makeShared<GenericParam::ChoiceParam>(
            resourceStrW(filter.legend), filter.id, WideString(), position, choiceList(filter.rows));
        if (!param) {
            continue; // no memory
        }
        param->addChangeHandler(
            Zq::makeShared<GenericParam::Listener<Tarn7Resource, std::int32_t>>(*this, filter.handler));
        filterGroup.params.push_back(param);
    }

    SearchOptionGroup previewGroup;
    previewGroup.legend = resourceStrW(10106);
    // Shares its id with the price filter: stored layouts of the search panel know it under that name.
    auto const quality =
        Zq::makeShared<GenericParam::BoolParam>(resourceStrW(14110), "price", WideString(), hqProxies);
    if (quality) {
        quality->addChangeHandler(Zq::makeShared<GenericParam::Listener<Tarn7Resource, bool>>(
            *this, &Tarn7Resource::handleProxyQualityChange));
        previewGroup.params.push_back(quality);
    }

    return {filterGroup, previewGroup};
}

void Tarn7Resource::handleFilterChange(char const* preference, std::int32_t value) {
    prefs().setPreference(preference, value);
    searchResultCache.clear();
    notifier.issueNotification(NotifyMsg(), eSearchOptionsChanged);
}

void Tarn7Resource::handlePriceChange(std::int32_t tag) {
    if (auto const value = valueOf(tarn7::Tarn7PriceChoices, tag)) {
        handleFilterChange(tarn7::pricePreference, *value);
    }
}

void Tarn7Resource::handleSizeChange(std::int32_t tag) {
    if (auto const value = valueOf(tarn7::Tarn7HeightChoices, tag)) {
        handleFilterChange(tarn7::heightPreference, *value);
    }
}

void Tarn7Resource::handleLengthChange(std::int32_t tag) {
    if (auto const value = valueOf(tarn7::Tarn7LengthChoices, tag)) {
        handleFilterChange(tarn7::lengthPreference, *value);
    }
}

// The quality has no part in a search, so cached results stay and nobody is told.
void Tarn7Resource::handleProxyQualityChange(bool useHighQuality) {
    hqProxies = useHighQuality;
    prefs().setPreference("T7 HQ Proxies", useHighQuality);
}

LogAttribute Tarn7Resource::getDurationAttribute() {
    static LogAttribute const duration(UIString(L"Duration"), "len", DBFieldTypes::duration, 1, 1,
                                       static_cast<LogAttribute::eType>(1003));
    return duration;
}

LightweightVector<LogAttribute> Tarn7Resource::getLogAttributes() const {
    return resultColumns({LogAttribute(LogAttribute::eName), LogAttribute(LogAttribute::eFormat),
                          LogAttribute(LogAttribute::eFrameRate), LogAttribute(LogAttribute::ePrice),
                          getDurationAttribute()});
}
