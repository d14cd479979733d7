#include "host/parameters/TextParam.h"

namespace GenericParam {

TextParam::TextParam(WideString legend, NarrowString id, WideString tooltip, WideString initial)
    : ParamBase(std::move(legend), std::move(id), std::move(tooltip)), initial_(std::move(initial)),
      value_(initial_) {}

TextParam::~TextParam() = default;

bool TextParam::setValueFromString(WideString const& text) {
    value_ = text;
    callChangeHandlers(value_);
    return true;
}

NarrowString TextParam::getValueType() const {
    return "text";
}

bool TextParam::reset() {
    // A copy: a handler may end this parameter.
    WideString const initial = initial_;
    return value_ != initial && setValueFromString(initial);
}

Zq::Ptr<iParam> TextParam::makeCopy() const {
    auto copy = Zq::makeShared<TextParam>(getLegend(), getID(), getTooltip(), initial_);
    if (copy) {
        copy->copyState(*this);
        copy->value_ = value_;
    }
    return copy;
}

Zq::Ptr<ValServerBase> TextParam::getValueServer() const {
    return {};
}

std::optional<std::int64_t> TextParam::numberFromString(WideString const&) const {
    return std::nullopt;
}

} // namespace GenericParam
