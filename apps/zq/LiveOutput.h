// What a command says while it runs: lines on the standard output, and a progress bar.
#pragma once

#include <optional>
#include <string_view>

#include "apps/zq/Output.h"
#include "apps/zq/terminal/ProgressBar.h"

namespace zq {

// Thread: the main thread.
class LiveOutput {
public:
    explicit LiveOutput(Output& output) : output_(output) {}

    // A command begins that answers in this format.
    void begin(Output::Format format) noexcept { format_ = format; }
    // A line, made plain. Nothing in JSON, where a command has one line only.
    void say(std::string_view line);
    // The answer of a command that runs on: it is printed now, and counts as told from then on.
    void tell(Reply& reply);
    void showProgress(std::string_view label, std::optional<double> fraction) { bar_.show(label, fraction); }
    void clearProgress() { bar_.erase(); }
    // True where progress is seen as a bar: it needs no lines then.
    [[nodiscard]] bool hasBar() const noexcept { return bar_.isVisible(); }

private:
    Output& output_;
    Output::Format format_ = Output::Format::text;
    ProgressBar bar_;
};

} // namespace zq
