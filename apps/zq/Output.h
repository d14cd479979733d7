// Where replies go: the standard output, and the standard error for what a person should not miss.
#pragma once

#include <string_view>

#include "apps/zq/Reply.h"
#include "apps/zq/terminal/Screen.h"

namespace zq {

// Thread: the main thread.
class Output {
public:
    enum class Format { text, json };

    explicit Output(Screen const& screen) : screen_(screen) {}

    // Writes the reply: as one line of JSON, or as its text, its warnings and an error going to the standard
    // error. One that the command has told already is passed over.
    void print(Reply const& reply, Format format);
    // A line on the standard output at once, made plain.
    void say(std::string_view line);
    // A line on the standard error, made plain.
    void warn(std::string_view text) const;
    void fail(std::string_view text) const;

    // True once the standard output has taken no more, such as a pipe whose reader is gone.
    [[nodiscard]] bool isBroken() const noexcept { return broken_; }
    [[nodiscard]] Screen const& screen() const noexcept { return screen_; }

private:
    void write(std::string_view text);

    Screen screen_;
    bool broken_ = false;
};

} // namespace zq
