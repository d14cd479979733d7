// One command of the Tarn7 service: a command word and named parameters.
#pragma once

#include "host/json/Builder.h"
#include "tarn7/Tarn7Resource.h"

// A value. The parameters live in the lists of JSON::Element, so a command can also be read like an answer.
// Within a kind they keep the order in which they were added, duplicates included.
//
// Thread: one at a time.
class Tarn7Resource::Command : public JSON::Element {
public:
    explicit Command(WideString const& commandWord);
    Command(Command const& other);
    Command(Command&& other);
    Command& operator=(Command const& other) = default;
    ~Command() override;

    void addParam(NarrowString const& key, WideString const& value);
    void addNumber(NarrowString const& key, std::int32_t value);
    void addFlag(NarrowString const& key, bool value);

    // Writes one object: the command word, then the strings, the numbers and the flags. A number goes out as
    // an integer.
    void writeTo(JSON::Builder& builder) const;

private:
    WideString commandWord_;
};
