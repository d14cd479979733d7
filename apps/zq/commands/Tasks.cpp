// "tasks" and "cancel": what goes on in the background.

#include "apps/zq/Command.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/TaskWait.h"
#include "apps/zq/commands/Commands.h"
#include "apps/zq/terminal/Table.h"

namespace zq {

namespace {

using engine::TaskReport;

char const* stateOf(TaskReport const& report) {
    if (report.ended) {
        return report.status == iBackgroundTask::eCancelling ? "cancelled"
               : report.result.succeeded                     ? "done"
                                                             : "failed";
    }
    switch (report.status) {
    case iBackgroundTask::eWaiting:
        return "waiting";
    case iBackgroundTask::eCancelling:
        return "being cancelled";
    default:
        return "running";
    }
}

class Tasks final : public Command {
public:
    void declare(CLI::App& options) override {
        options.add_flag("--wait", wait_, "first wait until all have ended; Ctrl-C cancels them");
    }

    Reply run(Session& session) override {
        if (wait_) {
            waitForAll(session);
        }
        std::vector<TaskReport> const reports = session.engine().tasks().reports();
        Table table({{"Task", Table::Align::right},
                     {"State"},
                     {"Done", Table::Align::right},
                     {"What"},
                     {"Step or result", Table::Align::left, true}});
        for (TaskReport const& report : reports) {
            table.addRow(
                {std::to_string(report.number), stateOf(report),
                 report.ended ? std::string() : std::to_string(static_cast<int>(report.progress * 100)) + "%",
                 report.name, report.ended ? report.result.text : report.step});
        }
        Reply reply;
        reply.standsInterrupted = true;
        reply.text = reports.empty() ? "no tasks\n" : table.render(session.screen());
        reply.members = [reports](JSON::Builder& json) { addReports(json, reports); };
        return reply;
    }

private:
    static void waitForAll(Session& session) {
        for (TaskReport const& report : session.engine().tasks().reports()) {
            if (!report.ended) {
                static_cast<void>(waitForTask(session, report.number, [&](TaskReport const& now) {
                    session.live().showProgress("task " + std::to_string(now.number) + ": " + now.step,
                                                now.progress);
                }));
            }
        }
    }

    static void addReports(JSON::Builder& json, std::vector<TaskReport> const& reports) {
        json.startArray("tasks");
        for (TaskReport const& report : reports) {
            json.startChild(nullptr);
            addNumber(json, "number", report.number);
            addText(json, "name", report.name);
            addText(json, "state", stateOf(report));
            addDecimal(json, "progress", report.progress);
            addText(json, "step", report.step);
            json.add("ended", report.ended);
            if (report.ended) {
                json.add("succeeded", report.result.succeeded);
                addText(json, "result", report.result.text);
            }
            json.endChild();
        }
        json.endArray();
    }

    bool wait_ = false;
};

// The complaint about a word that is no number of a task.
std::string refuseOthers(std::string const& word) {
    bool const isNumber = !word.empty() && word.find_first_not_of("0123456789") == std::string::npos;
    return isNumber ? std::string() : "\"" + word + "\" is no task's number";
}

class Cancel final : public Command {
public:
    void declare(CLI::App& options) override {
        options.add_option("N", number_, "number of the task, as tasks shows it")
            ->required()
            ->check(CLI::Validator(refuseOthers, "")) // the library would take -1 for the largest number
            ->type_name("NUMBER");
    }

    Reply run(Session& session) override {
        if (!session.engine().tasks().cancel(number_)) {
            throw CommandError("no task " + std::to_string(number_) + " waits or runs");
        }
        TaskReport const report = waitForTask(session, number_, [](TaskReport const&) {});
        Reply reply;
        reply.text = "task " + std::to_string(number_) + ": " + stateOf(report) + "\n";
        reply.members = [number = number_, state = std::string(stateOf(report))](JSON::Builder& json) {
            addNumber(json, "task", number);
            addText(json, "state", state);
        };
        return reply;
    }

private:
    std::uint64_t number_ = 0;
};

} // namespace

std::unique_ptr<Command> makeTasks() {
    return std::make_unique<Tasks>();
}
std::unique_ptr<Command> makeCancel() {
    return std::make_unique<Cancel>();
}

} // namespace zq
