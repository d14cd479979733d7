// A block of received bytes. Thread: any, as nothing changes it.
#pragma once

#include <cstddef>

#include "host/object/iObject.h"

class ZQ_API iMemHolder : public virtual iObject {
public:
    ~iMemHolder() override;
    [[nodiscard]] virtual char const* getData() const noexcept = 0;
    [[nodiscard]] virtual std::size_t getSize() const noexcept = 0;
    // Bytes behind the data that may be read but mean nothing: a reader of wide steps needs no copy.
    [[nodiscard]] virtual std::size_t getPadding() const noexcept { return 0; }
};
