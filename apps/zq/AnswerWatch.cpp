#include "apps/zq/AnswerWatch.h"

#include <optional>

namespace zq {

namespace {

constexpr char const* notAnAnswer = "the service's answer cannot be understood; check in host.toml that "
                                    "[network] connect leads to the right server";

std::string refusal(std::string_view reason) {
    return "the service refused the request" + (reason.empty() ? "" : ": " + std::string(reason));
}

// What is wrong with the answer; nothing where it gives what was asked for. A service says no by the flag
// "e", or by a text "s" in the first reply of "commands". Every other answer has replies, or an "info".
std::optional<std::string> failureIn(Zq::Ptr<JSON::Element> const& answer) {
    if (!answer) {
        return notAnAnswer;
    }
    Zq::Ptr<JSON::Element> const commands = answer->getChild("commands");
    Zq::Ptr<JSON::Element> const first = JSON::orEmpty(commands).getChild(std::uint16_t{0});
    std::string_view const reason = JSON::orEmpty(first).getStringView("s");
    if (!reason.empty()) {
        return refusal(reason);
    }
    if (answer->getBool("e", false)) {
        return refusal(answer->getStringView("s"));
    }
    return first || answer->getChild("info") ? std::nullopt : std::optional<std::string>(notAnAnswer);
}

// The credits of the account, where the first reply tells them; a service counts them whole.
std::optional<std::int64_t> creditsIn(Zq::Ptr<JSON::Element> const& answer) {
    Zq::Ptr<JSON::Element> const commands = JSON::orEmpty(answer).getChild("commands");
    Zq::Ptr<JSON::Element> const first = JSON::orEmpty(commands).getChild(std::uint16_t{0});
    return first && first->hasNum("credits") ? std::optional(first->getInt("credits", 0)) : std::nullopt;
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
    std::optional<std::string> failure = failureIn(answer);
    std::optional<std::int64_t> const credits = creditsIn(answer);
    std::lock_guard const lock(mutex_);
    if (credits) {
        heard_.credits = credits;
    }
    if (failure) {
        ++heard_.failures;
        heard_.lastFailure = std::move(*failure);
    }
    return answer;
}

void AnswerWatch::forgetCredits() {
    std::lock_guard const lock(mutex_);
    heard_.credits.reset();
}

AnswerWatch::Heard AnswerWatch::heard() const {
    std::lock_guard const lock(mutex_);
    return heard_;
}

} // namespace zq
