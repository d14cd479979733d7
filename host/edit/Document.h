// What is written about a thing of the project: a title and texts by attribute, as a person reads them.
#pragma once

#include "host/attributes/LogAttributeMap.h"
#include "host/object/Identity.h"
#include "host/object/iObject.h"

// Thread: one at a time.
class ZQ_API Document : public virtual iObject {
public:
    Document(WideString name, LogAttributeMap attributes)
        : title(std::move(name)), texts(std::move(attributes)) {}
    ~Document() override;

    WideString title;
    LogAttributeMap texts;
    Cookie subject; // the edit that it is about; null where there is none
};
