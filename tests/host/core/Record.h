// An element that a test fills, the way a command of a service fills itself.
#pragma once

#include "host/json/Element.h"

class Record : public JSON::Element {
public:
    using JSON::Element::appendFlag;
    using JSON::Element::appendNumber;
    using JSON::Element::appendString;
};
