// An open file, local or remote.
#pragma once

#include <cstdint>

#include "host/object/iObject.h"

// Closed when the last owner lets go. Thread: one at a time.
class ZQ_API iFile : public virtual iObject {
public:
    ~iFile() override;
    // False when not all bytes could be written.
    [[nodiscard]] virtual bool write(void const* bytes, std::uint32_t size) = 0;
    // Bytes read, fewer than asked for only at the end of the file; -1 on an error.
    [[nodiscard]] virtual std::int64_t read(void* bytes, std::uint32_t size) = 0;
    // False when the position lies behind the end.
    [[nodiscard]] virtual bool setPosition(std::uint64_t position) = 0;
    [[nodiscard]] virtual std::uint64_t getPosition() = 0;
    [[nodiscard]] virtual std::uint64_t getSize() = 0;
};
