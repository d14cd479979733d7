// Who wants to know that a parameter has been set.
#pragma once

#include "host/object/iObject.h"
#include "host/text/LightweightString.h"

namespace GenericParam {

class ZQ_API iValueChangeHandler : public virtual iObject {
public:
    ~iValueChangeHandler() override;
    // The value as text, in the form in which its parameter reports it. The parameter may be gone when this
    // returns. Thread: the one that set the parameter.
    virtual void valueChanged(WideString const& value) = 0;
};

} // namespace GenericParam
