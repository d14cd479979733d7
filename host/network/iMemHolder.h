// A block of received bytes.
#pragma once

#include <cstddef>

#include "host/object/iObject.h"

class ZQ_API iMemHolder : public virtual iObject {
public:
    ~iMemHolder() override;
    [[nodiscard]] virtual char const* getData() const noexcept = 0;
    [[nodiscard]] virtual std::size_t getSize() const noexcept = 0;
    // Bytes behind the data that may be read without meaning: a reader that works in wide steps needs no copy.
    [[nodiscard]] virtual std::size_t getPadding() const noexcept { return 0; }
};
