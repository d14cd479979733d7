// configb: a record of named text values, such as the fields of a filled-in form. A value. Thread: any.
#pragma once

#include <cstdint>
#include <vector>

#include "host/text/LightweightString.h"

class ZQ_API configb {
public:
    configb() = default;
    configb(configb const&) = default;
    configb& operator=(configb const&) = default;

    // Gives the value of the key and returns its index; -1 and an unchanged text if the key is absent.
    std::int32_t in(char const* key, NarrowString& value) const;
    // Sets or adds a value, UTF-8.
    void set(char const* key, NarrowString const& value);

private:
    struct Entry {
        NarrowString key;
        NarrowString value;
    };
    std::vector<Entry> entries_;
};
