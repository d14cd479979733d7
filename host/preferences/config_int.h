// The host's configuration: integers by key that the person who runs the host sets, not the program.
#pragma once

#include <cstdint>
#include <optional>

#include "host/object/Api.h"

// What stands behind the door. Thread: any.
class ZQ_API iConfiguration {
public:
    virtual ~iConfiguration();
    [[nodiscard]] virtual std::optional<std::int32_t> readInt(char const* key) = 0;
};

// The integer of that key, or the default. Thread: any.
[[nodiscard]] ZQ_API std::int32_t config_int(char const* key, std::int32_t otherwise);
