// A text that a person types, such as the path of a folder.
#pragma once

#include "host/parameters/ParamBase.h"

namespace GenericParam {

// Every text is a value. The change handlers are told the text itself. The value type is "text". A text is no
// number: constraints are not asked, and no other parameter can depend on it.
class ZQ_API TextParam final : public ParamBase {
public:
    TextParam(WideString legend, NarrowString id, WideString tooltip, WideString initial);
    ~TextParam() override;

    [[nodiscard]] WideString getValueAsString() const override { return value_; }
    [[nodiscard]] bool setValueFromString(WideString const& text) override;
    [[nodiscard]] NarrowString getValueType() const override;
    bool reset() override;
    [[nodiscard]] Zq::Ptr<iParam> makeCopy() const override;
    // Null.
    [[nodiscard]] Zq::Ptr<ValServerBase> getValueServer() const override;
    // None.
    [[nodiscard]] std::optional<std::int64_t> numberFromString(WideString const& text) const override;

private:
    WideString initial_;
    WideString value_;
};

} // namespace GenericParam
