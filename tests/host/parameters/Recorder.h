// A change handler that keeps what it was told.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "host/parameters/iValueChangeHandler.h"

class Recorder final : public GenericParam::iValueChangeHandler {
public:
    explicit Recorder(std::function<void()> then = {}) : then_(std::move(then)) {}

    void valueChanged(WideString const& value) override {
        values.emplace_back(value.view());
        if (then_) {
            then_();
        }
    }

    std::vector<std::wstring> values;

private:
    std::function<void()> then_;
};
