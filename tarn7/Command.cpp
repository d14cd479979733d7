#include "tarn7/Command.h"

#include "host/text/Numbers.h"
#include "host/text/Unicode.h"

Tarn7Resource::Command::Command(WideString const& commandWord) : commandWord_(commandWord) {}

Tarn7Resource::Command::Command(Command const& other)
    : iVirtual(other), Zq::InternalRefCount(other), JSON::Element(other), commandWord_(other.commandWord_) {}

// Both forms copy the command word: a command that was moved from can still be written, without parameters.
Tarn7Resource::Command::Command(Command&& other)
    : JSON::Element(std::move(other)), commandWord_(other.commandWord_) {}

Tarn7Resource::Command::~Command() = default;

void Tarn7Resource::Command::addParam(NarrowString const& key, WideString const& value) {
    appendString(key.view(), toUTF8(value).view());
}

void Tarn7Resource::Command::addNumber(NarrowString const& key, std::int32_t value) {
    appendNumber(key.view(), value);
}

void Tarn7Resource::Command::addFlag(NarrowString const& key, bool value) {
    appendFlag(key.view(), value);
}

void Tarn7Resource::Command::writeTo(JSON::Builder& builder) const {
    // The builder takes keys that end in a terminator; those of the lists do not.
    builder.startChild(nullptr);
    builder.add("command", commandWord_, true);
    for (JSON::StringMember const& member : strings()) {
        builder.add(NarrowString(member.key).c_str(), fromUTF8(member.value), true);
    }
    for (JSON::NumberMember const& member : numbers()) {
        builder.add(NarrowString(member.key).c_str(), Zq::truncatedTo32Bits(member.value));
    }
    for (JSON::FlagMember const& member : flags()) {
        builder.add(NarrowString(member.key).c_str(), member.value);
    }
    builder.endChild();
}
