#include "host/object/iObject.h"

iVirtual::~iVirtual() = default;
Zq::InternalRefCount::~InternalRefCount() = default;
iObject::~iObject() = default;
