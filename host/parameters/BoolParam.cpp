#include "host/parameters/BoolParam.h"

namespace GenericParam {

BoolParam::BoolParam(WideString legend, NarrowString id, WideString tooltip, bool initial)
    : Param(std::move(legend), std::move(id), std::move(tooltip), initial) {}

BoolParam::~BoolParam() = default;

NarrowString BoolParam::getValueType() const {
    return "bool";
}

Zq::Ptr<iParam> BoolParam::makeCopy() const {
    auto copy = Zq::makeShared<BoolParam>(getLegend(), getID(), getTooltip(), getInitialValue());
    if (copy) {
        copy->copyFrom(*this);
    }
    return copy;
}

} // namespace GenericParam
