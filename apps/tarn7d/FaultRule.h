// A fault that the service is asked to show, for trying how a client copes: which requests it meets, what
// goes wrong, and how often. Read from JSON and written as JSON.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "host/json/Builder.h"

namespace tarn7d {

enum class FaultKind {
    delay,            // the answer waits first
    cut,              // the connection ends behind so many bytes of the body
    stall,            // nothing comes behind so many bytes of the body, and then the connection ends
    wrongLength,      // the announced length is larger or smaller than the body
    noRanges,         // a range is not served: the whole body comes
    changedValidator, // the file seems to be another one than before
    status,           // the request is answered with an error and not carried out
    notJson,          // the request is carried out, and a page of HTML is the answer
    expiredAddress,   // a download's address has expired, when it is used or already when it is given
    lostAnswer,       // the request is carried out, and the connection ends without an answer
};

// All kinds with their names, as "wrong-length".
struct FaultKindRow {
    FaultKind kind;
    std::string_view name;
};
[[nodiscard]] std::span<FaultKindRow const> faultKinds();

struct FaultRule {
    // One of the two is set: the beginning of the path, without the query, or a command word of the request,
    // where "*" is any.
    std::string path{};
    std::string command{};

    FaultKind kind = FaultKind::status;
    int count = 1; // requests that it meets

    std::int64_t bytes = 0;            // cut and stall: of the body that come; wrong length: the difference
    std::chrono::milliseconds time{0}; // delay and stall
    int status = 503;                  // status
    int retryAfter_s = -1;             // status: the header of that name; none below 0
};

struct FaultRules {
    std::vector<FaultRule> rules;
    std::string problem; // says what is wrong; then there are no rules
};

// One rule, or an array of them:
//   {"match":{"path":"/full/"},"kind":"cut","count":2,"arguments":{"bytes":1000}}
[[nodiscard]] FaultRules parseFaultRules(std::string_view json);

// The members of the rule in the same form, without the braces around them.
void writeFaultRule(FaultRule const& rule, JSON::Builder& builder);

} // namespace tarn7d
