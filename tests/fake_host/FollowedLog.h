// The log of a download or an import, as lines of text and with somebody looking on.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/log/LoggerHandle.h"
#include "tests/fake_host/Texts.h"

namespace fake {

// What a person reads of a download. A line is its text behind its output type, two blanks in front for each
// step of indentation.
class FollowedLog final : public LoggerBase {
public:
    void write(WideString const& text, eOutputType type) override {
        lines.push_back(std::string(2 * static_cast<std::size_t>(indent), ' ') + std::to_string(type) + " " +
                        utf8(text));
        onLine(lines.back());
    }
    void incIndent() override { ++indent; }
    void decIndent() override { --indent; }
    void reportProgress(double fraction, WideString const& text) override {
        EXPECT_TRUE(text.isEmpty());
        progress.push_back(fraction);
        onProgress();
    }

    std::vector<std::string> lines;
    std::vector<double> progress;
    int indent = 0;
    std::function<void(std::string const&)> onLine = [](std::string const&) {};
    std::function<void()> onProgress = [] {};
};

} // namespace fake
