// "usage": what the clips of a sequence cost.

#include "apps/zq/Command.h"
#include "apps/zq/Text.h"
#include "apps/zq/UsageReport.h"
#include "apps/zq/commands/Commands.h"
#include "apps/zq/terminal/PlainText.h"
#include "apps/zq/terminal/Table.h"

namespace zq {

namespace {

std::vector<std::string> cells(ClipUse const& use) {
    return {use.piece.clipId,   utf8(use.piece.edit.name()), use.piece.sourceIn,     use.piece.sourceOut,
            use.piece.recordIn, use.piece.recordOut,         wordFor(use.ownership), use.priceText};
}

std::string table(UsageReport const& report, Screen const& screen) {
    Table table({{"Clip", Table::Align::right},
                 {"Name", Table::Align::left, true},
                 {"Source in", Table::Align::right},
                 {"Source out", Table::Align::right},
                 {"In", Table::Align::right},
                 {"Out", Table::Align::right},
                 {"Owned"},
                 {"Price", Table::Align::right}});
    for (ClipUse const& use : report.uses) {
        table.addRow(cells(use));
    }
    std::string const rows = report.uses.empty() ? std::string() : table.render(screen);
    return rows + plainText(report.sequence + ": " + totalInWords(report)) + "\n";
}

class Usage final : public Command {
public:
    void declare(CLI::App& options) override {
        options.add_option("NAME", name_, "name of the sequence")->required();
        options.add_flag("--csv", csv_, "comma-separated values, for a spreadsheet");
    }

    Reply run(Session& session) override {
        SequenceUsage const usage = usageOf(session, name_);
        Reply reply;
        reply.text = csv_ ? usageCsv(usage) : table(usage.parts.front().report, session.screen());
        reply.members = [usage](JSON::Builder& json) { addUsageMembers(json, usage); };
        return reply;
    }

private:
    std::string name_;
    bool csv_ = false;
};

} // namespace

std::unique_ptr<Command> makeUsage() {
    return std::make_unique<Usage>();
}

} // namespace zq
