#include "apps/zq/AnswerWatch.h"

#include <optional>

namespace zq {

namespace {

// Why the answer says no; nothing where it does not. A service says so by the flag "e", or by a text "s" in
// the first reply of "commands".
std::optional<std::string> refusalIn(Zq::Ptr<JSON::Element> const& answer) {
    if (!answer) {
        return "its answer cannot be read";
    }
    Zq::Ptr<JSON::Element> const commands = answer->getChild("commands");
    Zq::Ptr<JSON::Element> const first = JSON::orEmpty(commands).getChild(std::uint16_t{0});
    std::string_view const reason = JSON::orEmpty(first).getStringView("s");
    if (!reason.empty()) {
        return std::string(reason);
    }
    if (answer->getBool("e", false)) {
        return std::string(answer->getStringView("s"));
    }
    return std::nullopt;
}

} // namespace

AnswerWatch::AnswerWatch() : reader_(*installedHost().json) {
    HostServices services = installedHost();
    services.json = this;
    static_cast<void>(installHost(services));
}

AnswerWatch::~AnswerWatch() {
    HostServices services = installedHost();
    services.json = &reader_;
    static_cast<void>(installHost(services));
}

Zq::Ptr<JSON::Element> AnswerWatch::parse(iMemHolder const& bytes) {
    Zq::Ptr<JSON::Element> answer = reader_.parse(bytes);
    if (std::optional<std::string> reason = refusalIn(answer)) {
        std::lock_guard const lock(mutex_);
        ++heard_.refusals;
        heard_.lastReason = std::move(*reason);
    }
    return answer;
}

AnswerWatch::Heard AnswerWatch::heard() const {
    std::lock_guard const lock(mutex_);
    return heard_;
}

} // namespace zq
