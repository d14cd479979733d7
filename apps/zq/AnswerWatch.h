// Listens at the host's JSON reader for answers in which a service says no: the repositories drop such an
// answer and report nothing, but a person who sees an empty list wants to know.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>

#include "host/HostServices.h"
#include "host/json/parse.h"

namespace zq {

class AnswerWatch final : public iJSONReader {
public:
    // What was heard so far.
    struct Heard {
        std::uint64_t refusals = 0; // answers that say no, and answers that are not JSON
        std::string lastReason;     // of the service itself, not made plain; may be empty
    };

    // Stands before the installed reader while this lives. Thread: as installHost.
    AnswerWatch();
    ~AnswerWatch() override;
    AnswerWatch(AnswerWatch const&) = delete;
    AnswerWatch& operator=(AnswerWatch const&) = delete;

    [[nodiscard]] Zq::Ptr<JSON::Element> parse(iMemHolder const& bytes) override;
    // Thread: any.
    [[nodiscard]] Heard heard() const;

private:
    iJSONReader& reader_;
    mutable std::mutex mutex_;
    Heard heard_;
};

} // namespace zq
