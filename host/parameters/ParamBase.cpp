#include "host/parameters/ParamBase.h"

#include <algorithm>
#include <functional>

ValServerBase::~ValServerBase() = default;

namespace GenericParam {

namespace {

// The value must compare so to what another parameter's value is at that moment.
template <class Comparison>
class ComparedToOther final : public iValueConstraint {
public:
    explicit ComparedToOther(Zq::Ptr<ValServerBase> other) : other_(std::move(other)) {}
    [[nodiscard]] bool allows(std::int64_t value) const override {
        return Comparison()(value, other_->getNumber());
    }

private:
    Zq::Ptr<ValServerBase> other_;
};

} // namespace

ParamBase::ParamBase(WideString legend, NarrowString id, WideString tooltip)
    : legend_(std::move(legend)), id_(std::move(id)), tooltip_(std::move(tooltip)) {}

ParamBase::~ParamBase() = default;

bool ParamBase::isActive() const {
    return active_ && hold(activeIf_);
}

void ParamBase::addChangeHandler(Zq::Ptr<iValueChangeHandler> handler) {
    if (handler) {
        handlers_.push_back(std::move(handler));
    }
}

void ParamBase::removeChangeHandler(Zq::Ptr<iValueChangeHandler> const& handler) {
    std::erase(handlers_, handler);
}

void ParamBase::addValueConstraint(Zq::Ptr<iValueConstraint> constraint) {
    if (constraint) {
        constraints_.push_back(std::move(constraint));
    }
}

std::uint32_t ParamBase::getPresentationHints() const {
    return hold(visibleIf_) ? hints_ : hints_ | hintHidden;
}

bool ParamBase::isActiveIf(Zq::Ptr<iParam> const& other, WideString const& value) {
    return addCondition(activeIf_, other, value);
}

bool ParamBase::isVisibleIf(Zq::Ptr<iParam> const& other, WideString const& value) {
    return addCondition(visibleIf_, other, value);
}

bool ParamBase::isLessThan(Zq::Ptr<iParam> const& other) {
    return addComparison<std::less<>>(other);
}

bool ParamBase::isGreaterThan(Zq::Ptr<iParam> const& other) {
    return addComparison<std::greater<>>(other);
}

bool ParamBase::isAllowed(std::int64_t value) const {
    return std::ranges::all_of(constraints_, [value](auto const& rule) { return rule->allows(value); });
}

void ParamBase::callChangeHandlers(WideString const& value) const {
    auto const called = handlers_;
    WideString const text = value;
    for (auto const& handler : called) {
        handler->valueChanged(text);
    }
}

void ParamBase::copyState(ParamBase const& other) {
    active_ = other.active_;
    hints_ = other.hints_;
    constraints_ = other.constraints_;
    activeIf_ = other.activeIf_;
    visibleIf_ = other.visibleIf_;
}

bool ParamBase::hold(Conditions const& conditions) {
    return std::ranges::all_of(conditions, [](Condition const& condition) {
        return condition.server->getNumber() == condition.value;
    });
}

ParamBase const* ParamBase::asOther(Zq::Ptr<iParam> const& other) const {
    auto const* const base = dynamic_cast<ParamBase const*>(other.get());
    return base != this ? base : nullptr;
}

bool ParamBase::addCondition(Conditions& conditions, Zq::Ptr<iParam> const& other, WideString const& value) {
    ParamBase const* const base = asOther(other);
    if (base == nullptr) {
        return false;
    }
    auto const server = base->getValueServer();
    auto const number = base->numberFromString(value);
    if (!server || !number) {
        return false;
    }
    conditions.push_back({server, *number});
    return true;
}

template <class Comparison>
bool ParamBase::addComparison(Zq::Ptr<iParam> const& other) {
    ParamBase const* const base = asOther(other);
    if (base == nullptr || base->getValueType() != getValueType()) {
        return false;
    }
    auto server = base->getValueServer();
    if (!server) {
        return false;
    }
    auto rule = Zq::makeShared<ComparedToOther<Comparison>>(std::move(server));
    if (!rule) {
        return false;
    }
    constraints_.push_back(std::move(rule));
    return true;
}

} // namespace GenericParam
