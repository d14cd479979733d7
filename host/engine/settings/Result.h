// A value, or the reason in words why there is none.
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace engine {

// What made an operation fail, as a person reads it.
struct Failure {
    std::string text;
};

// Thread: one value belongs to one thread at a time.
template <class T>
class [[nodiscard]] Result {
public:
    Result(T value) : value_(std::move(value)) {}
    Result(Failure failure) : error_(std::move(failure.text)) {}

    explicit operator bool() const noexcept { return value_.has_value(); }
    // Only where there is a value.
    [[nodiscard]] T& operator*() noexcept { return *value_; }
    [[nodiscard]] T const& operator*() const noexcept { return *value_; }
    [[nodiscard]] T* operator->() noexcept { return &*value_; }
    [[nodiscard]] T const* operator->() const noexcept { return &*value_; }
    // Empty where there is a value.
    [[nodiscard]] std::string const& error() const noexcept { return error_; }

private:
    std::optional<T> value_;
    std::string error_;
};

} // namespace engine
