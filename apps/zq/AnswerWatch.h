// Listens at the host's JSON reader for answers in which a service says no, or which are no answers: the
// repositories drop them and report nothing, but a person who sees an empty list wants to know.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "host/HostServices.h"
#include "host/json/parse.h"

namespace zq {

class AnswerWatch final : public iJSONReader {
public:
    // What was heard so far.
    struct Heard {
        std::uint64_t failures = 0; // answers that say no, and texts that are no answer of a service
        std::uint64_t refusals = 0; // of these: answers that say no
        std::string lastFailure;    // with the service's own words, not made plain
        // What is left on the account, as the last answer that told it says.
        std::optional<std::int64_t> credits;
    };

    // Stands before the installed reader while this lives. Thread: as installHost.
    AnswerWatch();
    ~AnswerWatch() override;
    AnswerWatch(AnswerWatch const&) = delete;
    AnswerWatch& operator=(AnswerWatch const&) = delete;

    [[nodiscard]] Zq::Ptr<JSON::Element> parse(iMemHolder const& bytes) override;
    // Of the answers that were read on the calling thread since it first asked: what other threads talk about
    // with their services is no business of this one's. Thread: any, for these.
    [[nodiscard]] Heard heard() const;
    // Another account: its credits are not known yet to the calling thread.
    void forgetCredits();

private:
    iJSONReader& reader_;
    mutable std::mutex mutex_;
    mutable std::map<std::thread::id, Heard> heard_; // of the threads that have asked
};

} // namespace zq
