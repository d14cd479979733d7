// What all parameters have in common: words, state, handlers, constraints and conditions.
#pragma once

#include <optional>

#include "host/object/LightweightVector.h"
#include "host/parameters/ValServer.h"
#include "host/parameters/iParam.h"

namespace GenericParam {

class ZQ_API ParamBase : public iParam {
public:
    ~ParamBase() override;
    ParamBase(ParamBase const&) = delete;
    ParamBase& operator=(ParamBase const&) = delete;

    [[nodiscard]] NarrowString getID() const override { return id_; }
    [[nodiscard]] WideString getLegend() const override { return legend_; }
    [[nodiscard]] WideString getTooltip() const override { return tooltip_; }
    [[nodiscard]] bool isActive() const override;
    void setActive(bool active) override { active_ = active; }
    void addChangeHandler(Zq::Ptr<iValueChangeHandler> handler) override;
    // The handler is called no more from the next setting of the value on.
    void removeChangeHandler(Zq::Ptr<iValueChangeHandler> const& handler);
    void addValueConstraint(Zq::Ptr<iValueConstraint> constraint) override;
    [[nodiscard]] std::uint32_t getPresentationHints() const override;
    void setPresentationHints(std::uint32_t hints) override { hints_ = hints; }
    [[nodiscard]] bool isActiveIf(Zq::Ptr<iParam> const& other, WideString const& value) override;
    [[nodiscard]] bool isLessThan(Zq::Ptr<iParam> const& other) override;
    [[nodiscard]] bool isGreaterThan(Zq::Ptr<iParam> const& other) override;
    [[nodiscard]] bool isVisibleIf(Zq::Ptr<iParam> const& other, WideString const& value) override;

    // The value, shared with this parameter; null when there was no memory for it.
    [[nodiscard]] virtual Zq::Ptr<ValServerBase> getValueServer() const = 0;
    // The number of a text in the form of getValueAsString; none for a text that is no value of this
    // parameter.
    [[nodiscard]] virtual std::optional<std::int64_t> numberFromString(WideString const& text) const = 0;

protected:
    ParamBase(WideString legend, NarrowString id, WideString tooltip);

    [[nodiscard]] bool isAllowed(std::int64_t value) const;
    // A handler may do anything, also end this parameter: the caller touches no member afterwards.
    void callChangeHandlers(WideString const& value) const;
    // Takes over the other's state, constraints and conditions.
    void copyState(ParamBase const& other);

private:
    struct Condition {
        Zq::Ptr<ValServerBase> server;
        std::int64_t value;
    };
    using Conditions = LightweightVector<Condition>;

    [[nodiscard]] static bool hold(Conditions const& conditions);
    [[nodiscard]] ParamBase const* asOther(Zq::Ptr<iParam> const& other) const;
    [[nodiscard]] bool addCondition(Conditions& conditions, Zq::Ptr<iParam> const& other,
                                    WideString const& value);
    template <class Comparison>
    [[nodiscard]] bool addComparison(Zq::Ptr<iParam> const& other);

    WideString legend_;
    NarrowString id_;
    WideString tooltip_;
    bool active_ = true;
    std::uint32_t hints_ = 0;
    LightweightVector<Zq::Ptr<iValueChangeHandler>> handlers_;
    LightweightVector<Zq::Ptr<iValueConstraint>> constraints_;
    Conditions activeIf_;
    Conditions visibleIf_;
};

} // namespace GenericParam
