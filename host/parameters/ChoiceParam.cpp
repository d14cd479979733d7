#include "host/parameters/ChoiceParam.h"

#include <algorithm>

#include "host/parameters/DataConvert.h"

namespace GenericParam {

ChoiceParam::ChoiceParam(WideString legend, NarrowString id, WideString tooltip, std::uint32_t initial,
                         LightweightVector<Choice> choices)
    : Param(std::move(legend), std::move(id), std::move(tooltip), initial < choices.size() ? initial : 0),
      choices_(std::move(choices)) {}

ChoiceParam::~ChoiceParam() = default;

std::int32_t ChoiceParam::getTag() const {
    return isInRange(getValue()) ? choices_[getValue()].tag : -1;
}

bool ChoiceParam::selectTag(std::int32_t tag) {
    auto const found = std::ranges::find(choices_, tag, &Choice::tag);
    return found != choices_.end() && setValue(static_cast<std::uint32_t>(found - choices_.begin()));
}

NarrowString ChoiceParam::getValueType() const {
    return "int";
}

Zq::Ptr<iParam> ChoiceParam::makeCopy() const {
    auto copy = Zq::makeShared<ChoiceParam>(getLegend(), getID(), getTooltip(), getInitialValue(), choices_);
    if (copy) {
        copy->copyFrom(*this);
    }
    return copy;
}

WideString ChoiceParam::getReportedValue() const {
    return DataConvert::convert(getTag());
}

} // namespace GenericParam
