// Values into a statement's parameters and out of its columns, in the order in which they are named.
#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>

#include "host/engine/project/EditRecord.h"
#include "host/engine/storage/Database.h"
#include "host/text/Unicode.h"

namespace engine {

// Binds from the first parameter on.
class RowWriter {
public:
    explicit RowWriter(Statement& statement, int first = 1) : statement_(statement), next_(first) {}

    template <class Value>
    requires std::integral<Value> || std::is_enum_v<Value> RowWriter& operator<<(Value value) {
        statement_.bind(next_++, static_cast<std::int64_t>(value));
        return *this;
    }
    RowWriter& operator<<(double value) {
        statement_.bind(next_++, value);
        return *this;
    }
    RowWriter& operator<<(std::string_view text) {
        statement_.bind(next_++, text);
        return *this;
    }
    RowWriter& operator<<(NarrowString const& text) { return *this << text.view(); }
    RowWriter& operator<<(WideString const& text) { return *this << toUTF8(text); }
    RowWriter& operator<<(Cookie const& cookie) { return *this << std::string_view(cookieText(cookie)); }

private:
    Statement& statement_;
    int next_;
};

// Reads from the first column on. A number that does not fit its type reads as 0.
class RowReader {
public:
    explicit RowReader(Statement const& statement) : statement_(statement) {}

    template <class Value>
    requires std::integral<Value> || std::is_enum_v<Value> RowReader& operator>>(Value& value) {
        value = narrowed<Value>(statement_.integer(next_++));
        return *this;
    }
    RowReader& operator>>(double& value) {
        value = statement_.real(next_++);
        return *this;
    }
    RowReader& operator>>(std::string& text) {
        text = statement_.text(next_++);
        return *this;
    }
    RowReader& operator>>(NarrowString& text) {
        text = NarrowString(statement_.text(next_++));
        return *this;
    }
    RowReader& operator>>(WideString& text) {
        text = fromUTF8(statement_.text(next_++));
        return *this;
    }
    RowReader& operator>>(Cookie& cookie) {
        cookie = cookieFromText(statement_.text(next_++));
        return *this;
    }

private:
    template <class Value>
    [[nodiscard]] static Value narrowed(std::int64_t value) {
        if constexpr (std::is_enum_v<Value>) {
            return static_cast<Value>(narrowed<std::underlying_type_t<Value>>(value));
        } else if constexpr (std::same_as<Value, bool>) {
            return value != 0;
        } else {
            return std::in_range<Value>(value) ? static_cast<Value>(value) : Value{};
        }
    }

    Statement const& statement_;
    int next_ = 0;
};

} // namespace engine
