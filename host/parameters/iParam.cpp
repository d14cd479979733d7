#include "host/parameters/iParam.h"

namespace GenericParam {

iValueChangeHandler::~iValueChangeHandler() = default;
iValueConstraint::~iValueConstraint() = default;
iParam::~iParam() = default;

} // namespace GenericParam
