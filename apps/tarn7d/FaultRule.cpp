#include "apps/tarn7d/FaultRule.h"

#include <algorithm>

#include "apps/tarn7d/JsonText.h"
#include "apps/tarn7d/Text.h"

namespace tarn7d {

namespace {

constexpr FaultKindRow kinds[] = {
    {FaultKind::delay, "delay"},
    {FaultKind::cut, "cut"},
    {FaultKind::stall, "stall"},
    {FaultKind::wrongLength, "wrong-length"},
    {FaultKind::noRanges, "no-ranges"},
    {FaultKind::changedValidator, "changed-validator"},
    {FaultKind::status, "status"},
    {FaultKind::notJson, "not-json"},
    {FaultKind::expiredAddress, "expired-address"},
    {FaultKind::lostAnswer, "lost-answer"},
};

constexpr std::int64_t mostCount = 1'000'000;
constexpr std::int64_t longestTime_ms = 600'000;
constexpr std::int64_t usualStall_ms = 60'000;
constexpr std::int64_t mostBytes = std::int64_t{1} << 40;
constexpr std::size_t mostRules = 100;

// True when the member is missing or a number within the bounds, which is then taken.
template <class Number>
bool takeNumber(JSON::Element const& from, char const* key, std::int64_t least, std::int64_t most,
                Number& target) {
    if (!from.hasNum(key)) {
        return from.getStringView(key).empty() && from.getChild(key) == nullptr;
    }
    std::int64_t const value = from.getInt(key, 0);
    if (value < least || value > most) {
        return false;
    }
    target = static_cast<Number>(value);
    return true;
}

std::string readMatch(JSON::Element const& match, FaultRule& rule) {
    rule.path = match.getStringView("path");
    rule.command = match.getStringView("command");
    if (rule.path.empty() == rule.command.empty()) {
        return "match needs either path or command";
    }
    if (!rule.path.empty() && rule.path.front() != '/') {
        return "path begins with /";
    }
    return {};
}

std::string readArguments(JSON::Element const& arguments, FaultRule& rule) {
    std::int64_t time_ms = rule.kind == FaultKind::stall ? usualStall_ms : 0;
    constexpr int leastStatus = 400;
    constexpr int mostStatus = 599;
    if (!takeNumber(arguments, "bytes", rule.kind == FaultKind::wrongLength ? -mostBytes : 0, mostBytes,
                    rule.bytes)) {
        return "bytes is out of its bounds";
    }
    if (!takeNumber(arguments, "ms", 0, longestTime_ms, time_ms)) {
        return "ms is from 0 to 600000";
    }
    if (!takeNumber(arguments, "status", leastStatus, mostStatus, rule.status)) {
        return "status is from 400 to 599";
    }
    if (!takeNumber(arguments, "retry_after", 0, longestTime_ms, rule.retryAfter_s)) {
        return "retry_after is from 0 to 600000";
    }
    rule.time = std::chrono::milliseconds(time_ms);
    if (rule.kind == FaultKind::wrongLength && rule.bytes == 0) {
        return "wrong-length needs bytes, by how many the length is wrong";
    }
    if (rule.kind == FaultKind::delay && time_ms == 0) {
        return "delay needs ms";
    }
    return {};
}

std::string readRule(JSON::Element const& element, FaultRule& rule) {
    if (std::string problem = readMatch(JSON::orEmpty(element.getChild("match")), rule); !problem.empty()) {
        return problem;
    }
    std::string_view const name = element.getStringView("kind");
    auto const row =
        std::find_if(std::begin(kinds), std::end(kinds), [name](auto const& k) { return k.name == name; });
    if (row == std::end(kinds)) {
        constexpr std::size_t longestName = 40;
        return "there is no kind \"" + cleanText(name, longestName) + "\"";
    }
    rule.kind = row->kind;
    if ((rule.kind == FaultKind::noRanges || rule.kind == FaultKind::changedValidator) && rule.path.empty()) {
        return std::string(row->name) + " needs a path: commands have no ranges";
    }
    if (!takeNumber(element, "count", 1, mostCount, rule.count)) {
        return "count is from 1 to 1000000";
    }
    return readArguments(JSON::orEmpty(element.getChild("arguments")), rule);
}

} // namespace

std::span<FaultKindRow const> faultKinds() {
    return kinds;
}

FaultRules parseFaultRules(std::string_view json) {
    Zq::Ptr<JSON::Element> const element = parseJson(json);
    if (element == nullptr) {
        return {{}, "this is not JSON"};
    }
    std::vector<JSON::Element const*> elements;
    std::size_t const first = json.find_first_not_of(" \t\r\n");
    if (first != std::string_view::npos && json[first] == '[') {
        for (JSON::ChildMember const& child : element->children()) {
            elements.push_back(child.element);
        }
    } else {
        elements.push_back(&*element);
    }
    if (elements.empty() || elements.size() > mostRules) {
        return {{}, "1 to 100 rules at a time"};
    }
    FaultRules result;
    for (JSON::Element const* const each : elements) {
        FaultRule rule;
        if (std::string problem = readRule(*each, rule); !problem.empty()) {
            return {{}, std::move(problem)};
        }
        result.rules.push_back(std::move(rule));
    }
    return result;
}

void writeFaultRule(FaultRule const& rule, JSON::Builder& builder) {
    builder.startChild("match");
    addText(builder, rule.path.empty() ? "command" : "path", rule.path.empty() ? rule.command : rule.path);
    builder.endChild();
    auto const row = std::find_if(std::begin(kinds), std::end(kinds),
                                  [&rule](auto const& known) { return known.kind == rule.kind; });
    addText(builder, "kind", row->name);
    addInteger(builder, "count", rule.count);
    builder.startChild("arguments");
    if (rule.bytes != 0) {
        addInteger(builder, "bytes", rule.bytes);
    }
    if (rule.time.count() != 0) {
        addInteger(builder, "ms", rule.time.count());
    }
    if (rule.kind == FaultKind::status) {
        addInteger(builder, "status", rule.status);
        if (rule.retryAfter_s >= 0) {
            addInteger(builder, "retry_after", rule.retryAfter_s);
        }
    }
    builder.endChild();
}

} // namespace tarn7d
