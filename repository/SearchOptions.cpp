#include "repository/SearchOptions.h"

#include <algorithm>

#include "host/parameters/BoolParam.h"
#include "host/parameters/ChoiceParam.h"
#include "host/parameters/DataConvert.h"

namespace {

using GenericParam::BoolParam;
using GenericParam::ChoiceParam;

SearchOptionResult resultOf(bool wasSet) {
    return wasSet ? SearchOptionResult::set : SearchOptionResult::refused;
}

SearchOptionResult choose(ChoiceParam& choice, WideString const& text) {
    std::int32_t tag = 0;
    if (!DataConvert::convert(text, tag) ||
        std::ranges::find(choice.getChoices(), tag, &Choice::tag) == choice.getChoices().end()) {
        return SearchOptionResult::noSuchTag;
    }
    return resultOf(choice.selectTag(tag));
}

SearchOptionResult turn(BoolParam& boolean, WideString const& text) {
    bool value = false;
    if (!DataConvert::convert(text, value)) {
        return SearchOptionResult::notABoolean;
    }
    return resultOf(boolean.setValue(value));
}

} // namespace

Zq::Ptr<GenericParam::iParam> findSearchOption(LightweightVector<SearchOptionGroup> const& groups,
                                               std::size_t group, std::size_t position) {
    if (group >= groups.size() || position >= groups[group].params.size()) {
        return {};
    }
    return groups[group].params[position];
}

SearchOptionResult setSearchOption(LightweightVector<SearchOptionGroup> const& groups, std::size_t group,
                                   std::size_t position, WideString const& text) {
    if (group >= groups.size()) {
        return SearchOptionResult::noSuchGroup;
    }
    // Held here: a change handler may make the groups anew.
    Zq::Ptr<GenericParam::iParam> const param = findSearchOption(groups, group, position);
    if (!param) {
        return SearchOptionResult::noSuchOption;
    }
    if (!param->isActive()) {
        return SearchOptionResult::inactive;
    }
    if (auto* const choice = dynamic_cast<ChoiceParam*>(param.get())) {
        return choose(*choice, text);
    }
    if (auto* const boolean = dynamic_cast<BoolParam*>(param.get())) {
        return turn(*boolean, text);
    }
    return resultOf(param->setValueFromString(text));
}
