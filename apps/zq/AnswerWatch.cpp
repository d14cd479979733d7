#include "apps/zq/AnswerWatch.h"

#include <optional>
#include <utility>

namespace zq {

namespace {

constexpr char const* notAnAnswer = "the service's answer cannot be understood; check in host.toml that "
                                    "[network] connect leads to the right server";

std::string refusal(std::string_view reason) {
    return "the service refused the request" + (reason.empty() ? "" : ": " + std::string(reason));
}

struct Judgement {
    std::string failure; // empty where the answer gives what was asked for
    bool saysNo = false;
};

// A service says no by the flag "e", or by a text "s" in the first reply of "commands". Every other answer
// has replies, or an "info".
Judgement judge(Zq::Ptr<JSON::Element> const& answer) {
    if (!answer) {
        return {notAnAnswer};
    }
    Zq::Ptr<JSON::Element> const commands = answer->getChild("commands");
    Zq::Ptr<JSON::Element> const first = JSON::orEmpty(commands).getChild(std::uint16_t{0});
    std::string_view const reason = JSON::orEmpty(first).getStringView("s");
    if (!reason.empty()) {
        return {refusal(reason), true};
    }
    if (answer->getBool("e", false)) {
        return {refusal(answer->getStringView("s")), true};
    }
    return {first || answer->getChild("info") ? std::string() : std::string(notAnAnswer)};
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
    std::lock_guard const lock(mutex_);
    auto const found = heard_.find(std::this_thread::get_id());
    if (found == heard_.end()) {
        return answer;
    }
    Heard& heard = found->second;
    if (std::optional<std::int64_t> const credits = creditsIn(answer)) {
        heard.credits = credits;
    }
    Judgement judgement = judge(answer);
    if (!judgement.failure.empty()) {
        ++heard.failures;
        heard.refusals += judgement.saysNo ? 1 : 0;
        heard.lastFailure = std::move(judgement.failure);
    }
    return answer;
}

void AnswerWatch::forgetCredits() {
    std::lock_guard const lock(mutex_);
    heard_[std::this_thread::get_id()].credits.reset();
}

AnswerWatch::Heard AnswerWatch::heard() const {
    std::lock_guard const lock(mutex_);
    return heard_[std::this_thread::get_id()];
}

} // namespace zq
