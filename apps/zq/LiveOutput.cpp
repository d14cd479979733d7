#include "apps/zq/LiveOutput.h"

namespace zq {

void LiveOutput::say(std::string_view line) {
    if (format_ == Output::Format::text) {
        bar_.erase();
        output_.say(line);
    }
}

} // namespace zq
