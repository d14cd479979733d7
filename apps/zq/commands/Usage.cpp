// "usage": what the clips of a sequence cost.

#include "apps/zq/Command.h"
#include "apps/zq/Csv.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/UsageReport.h"
#include "apps/zq/commands/Commands.h"
#include "apps/zq/commands/SequenceListing.h"
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

std::string csv(UsageReport const& report) {
    std::vector<std::string> const header{"clip",      "name",       "source in", "source out",
                                          "record in", "record out", "owned",     "price"};
    std::string text = csvRecord(header);
    for (ClipUse const& use : report.uses) {
        text += csvRecord(cells(use));
    }
    return text;
}

void addReport(JSON::Builder& json, UsageReport const& report) {
    addText(json, "sequence", report.sequence);
    json.startArray("uses");
    for (ClipUse const& use : report.uses) {
        json.startChild(nullptr);
        addPieceMembers(json, use.piece);
        addText(json, "owned", wordFor(use.ownership));
        addText(json, "priceText", use.priceText);
        json.add("price", wide(use.price ? amountText(use.price->cents) : "null"), false);
        json.endChild();
    }
    json.endArray();
    addNumber(json, "clipsToBuy", report.clipsToBuy);
    addNumber(json, "clipsWithoutPrice", report.clipsWithoutPrice);
    json.add("total", wide(report.total ? amountText(report.total->cents) : "null"), false);
    addText(json, "totalText", report.total ? priceText(*report.total) : std::string());
    json.add("credits", wide(report.credits ? std::to_string(*report.credits) : "null"), false);
}

class Usage final : public Command {
public:
    void declare(CLI::App& options) override {
        options.add_option("NAME", name_, "name of the sequence")->required();
        options.add_flag("--csv", csv_, "comma-separated values, for a spreadsheet");
    }

    Reply run(Session& session) override {
        UsageReport const report = reportUsage(session, name_);
        Reply reply;
        reply.text = csv_ ? csv(report) : table(report, session.screen());
        reply.members = [report](JSON::Builder& json) { addReport(json, report); };
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
