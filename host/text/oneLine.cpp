#include "host/text/oneLine.h"

#include <algorithm>

WideString Zq::onOneLine(WideString const& text) {
    if (std::ranges::none_of(text, breaksLine)) {
        return text;
    }
    WideString line;
    line.reserve(text.length());
    for (wchar_t const unit : text) {
        line.append(breaksLine(unit) ? L' ' : unit);
    }
    return line;
}
