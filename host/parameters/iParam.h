// One thing that a person can set, such as a filter of a search, as a screen sees it: value, words and state.
//
// Thread: one at a time for one parameter and those that its conditions name.
#pragma once

#include <cstdint>

#include "host/object/Ptr.h"
#include "host/parameters/iValueChangeHandler.h"
#include "host/parameters/iValueConstraint.h"
#include "host/text/LightweightString.h"

namespace GenericParam {

// Bits of getPresentationHints; the other bits are for whoever makes parameters and screens.
enum PresentationHint : std::uint32_t {
    hintHidden = 1, // not shown at the moment
};

class ZQ_API iParam : public virtual iObject {
public:
    ~iParam() override;

    [[nodiscard]] virtual WideString getValueAsString() const = 0;
    // Sets the value from the form that getValueAsString gives, and calls the change handlers, also when the
    // value is the one already there. False, with nothing changed and nobody called, when the text is no
    // value of this parameter or a constraint forbids it.
    [[nodiscard]] virtual bool setValueFromString(WideString const& text) = 0;
    // "int", "bool" or "text".
    [[nodiscard]] virtual NarrowString getValueType() const = 0;
    // Not unique: two parameters may have one id.
    [[nodiscard]] virtual NarrowString getID() const = 0;
    [[nodiscard]] virtual WideString getLegend() const = 0;
    // Goes back to the value that the parameter was made with. True when that changed the value; then the
    // change handlers have been called.
    virtual bool reset() = 0;
    [[nodiscard]] virtual WideString getTooltip() const = 0;
    // False while the parameter has no meaning: it was set inactive, or a condition of isActiveIf does not
    // hold. A screen then shows it as such. Setting its value stays possible.
    [[nodiscard]] virtual bool isActive() const = 0;
    virtual void setActive(bool active) = 0;
    // The handler is called after each setting of the value, behind those added before; null does nothing. A
    // handler added during a call is first called at the next.
    virtual void addChangeHandler(Zq::Ptr<iValueChangeHandler> handler) = 0;
    // From now on a value must be allowed by this one too. The present value stays. Null does nothing.
    virtual void addValueConstraint(Zq::Ptr<iValueConstraint> constraint) = 0;
    // The bits that were set; with hintHidden also while a condition of isVisibleIf does not hold.
    [[nodiscard]] virtual std::uint32_t getPresentationHints() const = 0;
    virtual void setPresentationHints(std::uint32_t hints) = 0;
    // A parameter of the same kind, words, value, state, constraints and conditions, which is set and reset
    // on its own. It has no change handlers: what one parameter reports is no news of the other. Null when
    // there is no memory.
    [[nodiscard]] virtual Zq::Ptr<iParam> makeCopy() const = 0;
    // From now on this parameter is active only while the other one has that value, given in the form of the
    // other's getValueAsString. These four take a further condition each time; they keep nothing of the other
    // parameter alive but its value. False, with nothing changed, when the other is null, this parameter
    // itself or of another framework, or the text is no value of it.
    [[nodiscard]] virtual bool isActiveIf(Zq::Ptr<iParam> const& other, WideString const& value) = 0;
    // From now on a value must be less, or greater, than the value which the other has at that moment. A
    // choice counts by its position. False also when the other's value type differs.
    [[nodiscard]] virtual bool isLessThan(Zq::Ptr<iParam> const& other) = 0;
    [[nodiscard]] virtual bool isGreaterThan(Zq::Ptr<iParam> const& other) = 0;
    // As isActiveIf, for being shown.
    [[nodiscard]] virtual bool isVisibleIf(Zq::Ptr<iParam> const& other, WideString const& value) = 0;
};

} // namespace GenericParam
