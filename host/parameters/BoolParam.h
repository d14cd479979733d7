// A thing that is on or off.
#pragma once

#include "host/parameters/Param.h"

namespace GenericParam {

// The value's text, which the change handlers are told too, is "true" or "false". The value type is "bool".
class ZQ_API BoolParam final : public Param<bool> {
public:
    BoolParam(WideString legend, NarrowString id, WideString tooltip, bool initial);
    ~BoolParam() override;

    [[nodiscard]] NarrowString getValueType() const override;
    [[nodiscard]] Zq::Ptr<iParam> makeCopy() const override;

private:
    [[nodiscard]] bool isInRange(bool) const override { return true; }
};

} // namespace GenericParam
