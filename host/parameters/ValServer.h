// A parameter's value as an object of its own. Conditions on another parameter hold its value and not the
// parameter, so that two parameters may limit each other without keeping each other alive.
#pragma once

#include <cstdint>

#include "host/object/Ptr.h"

class ZQ_API ValServerBase : public virtual iObject {
public:
    ~ValServerBase() override;
    // The value as a number: 0 or 1 for a boolean.
    [[nodiscard]] virtual std::int64_t getNumber() const noexcept = 0;
};

template <class T>
class ValServer final : public ValServerBase {
public:
    explicit ValServer(T value) noexcept : value_(value) {}

    [[nodiscard]] T getValue() const noexcept { return value_; }
    void setValue(T value) noexcept { value_ = value; }
    [[nodiscard]] std::int64_t getNumber() const noexcept override {
        return static_cast<std::int64_t>(value_);
    }

private:
    T value_;
};
