// One variable of the environment, set or removed for the scope that it stands in.
#pragma once

#include <optional>
#include <string>

#include <stdlib.h>

namespace test {

class EnvironmentVariable {
public:
    // Null removes it.
    EnvironmentVariable(char const* name, char const* value) : name_(name) {
        if (char const* const old = getenv(name)) {
            before_ = old;
        }
        set(value);
    }
    ~EnvironmentVariable() { set(before_ ? before_->c_str() : nullptr); }
    EnvironmentVariable(EnvironmentVariable const&) = delete;
    EnvironmentVariable& operator=(EnvironmentVariable const&) = delete;

private:
    void set(char const* value) const {
        if (value != nullptr) {
            setenv(name_, value, 1);
        } else {
            unsetenv(name_);
        }
    }

    char const* name_;
    std::optional<std::string> before_;
};

} // namespace test
