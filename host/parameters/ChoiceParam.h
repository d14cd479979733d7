// One entry out of a list.
#pragma once

#include "host/parameters/Choice.h"
#include "host/parameters/Param.h"

namespace GenericParam {

// The value, and its text, is the position in the list, counted from 0. The change handlers are told the tag
// of the chosen entry, as decimal text. The value type is "int".
class ZQ_API ChoiceParam final : public Param<std::uint32_t> {
public:
    // A position outside the list becomes 0. Nothing can be chosen from an empty list.
    ChoiceParam(WideString legend, NarrowString id, WideString tooltip, std::uint32_t initial,
                LightweightVector<Choice> choices);
    ~ChoiceParam() override;

    [[nodiscard]] LightweightVector<Choice> const& getChoices() const noexcept { return choices_; }
    // Tag of the chosen entry; -1 with an empty list.
    [[nodiscard]] std::int32_t getTag() const;
    // Chooses the first entry with that tag, as setValue does; false when there is none.
    [[nodiscard]] bool selectTag(std::int32_t tag);

    [[nodiscard]] NarrowString getValueType() const override;
    [[nodiscard]] Zq::Ptr<iParam> makeCopy() const override;

private:
    [[nodiscard]] bool isInRange(std::uint32_t value) const override { return value < choices_.size(); }
    [[nodiscard]] WideString getReportedValue() const override;

    LightweightVector<Choice> choices_;
};

} // namespace GenericParam
