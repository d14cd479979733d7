// Binds a parameter to a member function of the object that wants to know its value.
#pragma once

#include "host/object/Ptr.h"
#include "host/parameters/DataConvert.h"
#include "host/parameters/iValueChangeHandler.h"

namespace GenericParam {

// Value is std::int32_t, bool or WideString. The owner stays its own: it outlives every parameter that has
// the listener. A text that is no Value calls nobody.
template <class Owner, class Value>
class Listener final : public iValueChangeHandler {
public:
    using Handler = void (Owner::*)(Value);

    Listener(Owner& owner, Handler handler) noexcept : owner_(&owner), handler_(handler) {}

    void valueChanged(WideString const& text) override {
        // The call may end this listener.
        Value value{};
        if (DataConvert::convert(text, value)) {
            (owner_->*handler_)(value);
        }
    }

private:
    Owner* owner_;
    Handler handler_;
};

} // namespace GenericParam
