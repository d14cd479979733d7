// The faults of the desk that can meet the answer to a command, as rows for the tests of each command.
#pragma once

#include <chrono>
#include <ostream>
#include <string>
#include <vector>

#include "tests/road/RoadFixture.h"

namespace road_tests {

struct Fault {
    std::string name;
    tarn7d::FaultRule rule; // without what it matches
    bool carriedOut = true; // the service has done what was asked
    bool answered = false;  // and the client has heard of it
};

inline void PrintTo(Fault const& fault, std::ostream* out) {
    *out << fault.name;
}

inline std::string nameOf(testing::TestParamInfo<Fault> const& info) {
    return info.param.name;
}

[[nodiscard]] inline tarn7d::FaultRule rule(tarn7d::FaultKind kind, std::int64_t bytes = 0) {
    tarn7d::FaultRule made;
    made.kind = kind;
    made.bytes = bytes;
    return made;
}

[[nodiscard]] inline tarn7d::FaultRule statusRule(int status) {
    tarn7d::FaultRule made = rule(tarn7d::FaultKind::status);
    made.status = status;
    return made;
}

[[nodiscard]] inline tarn7d::FaultRule timeRule(tarn7d::FaultKind kind, std::chrono::milliseconds time) {
    tarn7d::FaultRule made = rule(kind);
    made.time = time;
    return made;
}

[[nodiscard]] inline std::vector<Fault> answerFaults() {
    using enum tarn7d::FaultKind;
    return {
        {"ADelay", timeRule(delay, std::chrono::milliseconds(50)), true, true},
        {"AnAnswerWithoutItsBody", rule(cut, 0)},
        {"AnAnswerThatIsCut", rule(cut, 10)},
        {"AnAnswerThatAnnouncesTooMuch", rule(wrongLength, 10)},
        {"AnAnswerThatAnnouncesTooLittle", rule(wrongLength, -5)},
        {"AStatus403", statusRule(403), false},
        {"AStatus404", statusRule(404), false},
        {"AStatus500", statusRule(500), false},
        {"AStatus503", statusRule(503), false},
        {"AnAnswerThatIsNoJSON", rule(notJson)},
        {"AnAnswerThatIsLost", rule(lostAnswer)},
    };
}

class FaultyRoad : public Road, public testing::WithParamInterface<Fault> {
protected:
    [[nodiscard]] static Fault const& fault() { return GetParam(); }
    // The next request with that command meets the fault.
    void spoil(char const* command) {
        tarn7d::FaultRule met = fault().rule;
        met.command = command;
        (void)desk().add(met);
    }
    void spoilPath(char const* path, int count = 1) {
        tarn7d::FaultRule met = fault().rule;
        met.path = path;
        met.count = count;
        (void)desk().add(met);
    }
    [[nodiscard]] int timesMet() { return desk().list().at(0).met; }
};

} // namespace road_tests
