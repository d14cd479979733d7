// A rule that a parameter's value must keep.
#pragma once

#include <cstdint>

#include "host/object/iObject.h"

namespace GenericParam {

class ZQ_API iValueConstraint : public virtual iObject {
public:
    ~iValueConstraint() override;
    // The value as a number: 0 or 1 for a boolean, the position in its list for a choice.
    [[nodiscard]] virtual bool allows(std::int64_t value) const = 0;
};

} // namespace GenericParam
