#include "apps/zq/panel/TaskJson.h"

#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/FetchListing.h"

namespace zq::panel {

namespace {

char const* stateOf(engine::TaskReport const& report) {
    bool const isCancelling = report.status == iBackgroundTask::eCancelling;
    if (report.ended) {
        return isCancelling ? "cancelled" : report.result.succeeded ? "done" : "failed";
    }
    return isCancelling ? "cancelling" : report.status == iBackgroundTask::eWaiting ? "waiting" : "running";
}

char const* kindOf(LoggerBase::eOutputType type) {
    switch (type) {
    case LoggerBase::eTransferStarts:
        return "starts";
    case LoggerBase::eTransferFailed:
        return "failed";
    default:
        return "plain";
    }
}

void addOptional(JSON::Builder& json, char const* key, std::optional<std::uint64_t> const& number) {
    json.add(key, wide(number ? std::to_string(*number) : "null"), false);
}

} // namespace

void addTask(JSON::Builder& json, char const* key, TaskFacts const& facts) {
    engine::TaskReport const& report = facts.report;
    json.startChild(key);
    addNumber(json, "task", report.number);
    addText(json, "kind", facts.repository.empty() ? "other" : "fetch");
    addText(json, "name", report.name);
    addTexts(json, "clips", facts.clips);
    addNumber(json, "clip", facts.clip);
    addNumber(json, "fetched", facts.fetched);
    addText(json, "state", stateOf(report));
    addText(json, "step", report.ended ? std::string() : report.step);
    addDecimal(json, "progress", facts.transfer.progress);
    addOptional(json, "bytes", facts.transfer.bytes);
    addOptional(json, "totalBytes", facts.transfer.totalBytes);
    addOptional(json, "secondsLeft", facts.transfer.secondsLeft);
    addText(json, "text", report.ended ? report.result.text : std::string());
    addUnfetched(json, "failed", facts.failed);
    json.add("canRetry", facts.canRetry);
    addText(json, "repository", facts.repository);
    json.endChild();
}

void addLines(JSON::Builder& json, char const* key, std::span<LogLine const> lines) {
    json.startArray(key);
    for (LogLine const& line : lines) {
        json.startChild(nullptr);
        addNumber(json, "number", line.number);
        addText(json, "text", line.text);
        addText(json, "kind", kindOf(line.type));
        addNumber(json, "indent", line.indent);
        json.endChild();
    }
    json.endArray();
}

} // namespace zq::panel
