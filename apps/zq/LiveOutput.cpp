#include "apps/zq/LiveOutput.h"

namespace zq {

void LiveOutput::say(std::string_view line) {
    if (format_ == Output::Format::text) {
        bar_.erase();
        output_.say(line);
    }
}

void LiveOutput::tell(Reply& reply) {
    bar_.erase();
    output_.print(reply, format_);
    reply.told = true;
}

} // namespace zq
