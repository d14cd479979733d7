// Texts by attribute. A value. Thread: any.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "host/attributes/LogAttribute.h"

// Holds at most one text an attribute; attributes are told apart by type, custom ones by type and key.
class ZQ_API LogAttributeMap {
public:
    struct Entry {
        LogAttribute::eType type;
        NarrowString key; // of a custom attribute
        NarrowString value;
    };

    // Sets the value, UTF-8.
    void add(LogAttribute const& attribute, NarrowString value);
    void add(LogAttribute const& attribute, WideString const& value);
    // Empty text if the attribute is absent.
    [[nodiscard]] NarrowString find(LogAttribute const& attribute) const;
    [[nodiscard]] bool isEmpty() const noexcept { return entries_.empty(); }
    // In the order in which the attributes were first added.
    [[nodiscard]] std::span<Entry const> entries() const noexcept { return entries_; }
    // Room for that many entries, so that adding them allocates once.
    void reserve(std::size_t count) { entries_.reserve(count); }

private:
    std::vector<Entry> entries_;
};
