// "stats": what was exchanged with each service since the start of the program.

#include "apps/zq/Command.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/Commands.h"
#include "apps/zq/terminal/PlainText.h"
#include "apps/zq/terminal/Table.h"
#include "host/engine/streaming/StreamingFiles.h"

namespace zq {

namespace {

using engine::ServerStatistics;

std::string milliseconds(std::chrono::microseconds time) {
    return std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(time).count());
}

class Stats final : public Command {
public:
    void declare(CLI::App&) override {}

    Reply run(Session& session) override {
        std::vector<ServerStatistics> const services = session.statistics()();
        Table table({{"Service", Table::Align::left, true},
                     {"Requests", Table::Align::right},
                     {"Failed", Table::Align::right},
                     {"Sent", Table::Align::right},
                     {"Received", Table::Align::right},
                     {"Time", Table::Align::right}});
        std::string errors;
        for (ServerStatistics const& service : services) {
            table.addRow({service.server, std::to_string(service.requests),
                          std::to_string(service.failures + service.refusals),
                          std::to_string(service.bytesSent) + " B",
                          std::to_string(service.bytesReceived) + " B",
                          milliseconds(service.totalTime) + " ms"});
            errors += service.lastError.empty() ? "" : "last failure: " + plainText(service.lastError) + "\n";
        }
        Reply reply;
        engine::StreamingStatistics const streams = session.engine().streams().statistics();
        reply.text = services.empty() ? "no requests so far\n" : table.render(session.screen()) + errors;
        if (streams.opens > 0) {
            reply.text += "streams: " + std::to_string(streams.opens) + " opened, " +
                          std::to_string(streams.requests) + " requests, " +
                          std::to_string(streams.bytesReceived) + " B received, " +
                          std::to_string(streams.bytesRead) + " B read, " +
                          std::to_string(streams.bytesFromStore) + " B of them from the store\n";
        }
        reply.members = [services, streams](JSON::Builder& json) {
            json.startArray("services");
            for (ServerStatistics const& service : services) {
                json.startChild(nullptr);
                addText(json, "server", service.server);
                addNumber(json, "requests", service.requests);
                addNumber(json, "failures", service.failures);
                addNumber(json, "refusals", service.refusals);
                addNumber(json, "bytesSent", service.bytesSent);
                addNumber(json, "bytesReceived", service.bytesReceived);
                addNumber(json, "time_us", service.totalTime.count());
                addText(json, "lastError", service.lastError);
                json.endChild();
            }
            json.endArray();
            json.startChild("streams");
            addNumber(json, "opens", streams.opens);
            addNumber(json, "requests", streams.requests);
            addNumber(json, "bytesReceived", streams.bytesReceived);
            addNumber(json, "bytesRead", streams.bytesRead);
            addNumber(json, "bytesFromStore", streams.bytesFromStore);
            json.endChild();
        };
        return reply;
    }
};

} // namespace

std::unique_ptr<Command> makeStats() {
    return std::make_unique<Stats>();
}

} // namespace zq
