// "relink": has an edit play another file, or tells what that would change.

#include <filesystem>

#include "apps/zq/Command.h"
#include "apps/zq/EditLookup.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/Commands.h"
#include "apps/zq/commands/EditListing.h"
#include "apps/zq/commands/RelinkListing.h"
#include "apps/zq/terminal/PlainText.h"
#include "apps/zq/terminal/Table.h"

namespace zq {

namespace {

namespace fs = std::filesystem;
using engine::RelinkReport;

std::string describeFile(engine::MediaFacts const& facts) {
    std::string const rate = utf8(Zq::getDisplayString(facts.rate));
    std::string text = facts.container;
    if (!facts.videoCodec.empty()) {
        text +=
            ", " + facts.videoCodec + " " + std::to_string(facts.width) + "x" + std::to_string(facts.height) +
            ", " +
            (rate.empty() ? std::to_string(facts.rateNumerator) + "/" + std::to_string(facts.rateDenominator)
                          : rate) +
            " frames a second, " + std::to_string(facts.frames) + " frames";
    }
    if (!facts.audioCodec.empty()) {
        text += ", " + facts.audioCodec + ", " + std::to_string(facts.audioChannels) +
                (facts.audioChannels == 1 ? " channel" : " channels");
    }
    return text;
}

std::string useTable(std::vector<SequenceUse> const& uses, Screen const& screen) {
    if (uses.empty()) {
        return "no sequence uses the clip\n";
    }
    Table table({{"Sequence", Table::Align::left, true},
                 {"Source in", Table::Align::right},
                 {"Source out", Table::Align::right},
                 {"In", Table::Align::right},
                 {"Out", Table::Align::right},
                 {"After relinking"}});
    for (SequenceUse const& use : uses) {
        table.addRow({use.sequence, use.piece.sourceIn, use.piece.sourceOut, use.piece.recordIn,
                      use.piece.recordOut,
                      use.isCutShort ? "the file ends before this use does" : "the same cut"});
    }
    return table.render(screen);
}

class Relink final : public Command {
public:
    void declare(CLI::App& options) override {
        options.add_option("EDIT", edit_, "the edit, or the number of its clip")->required();
        options.add_option("FILE", file_, "the media file that it shall play")->required();
        options.add_flag("--check", check_, "only tell what would change");
    }

    Reply run(Session& session) override {
        std::error_code error;
        fs::path const file = fs::absolute(file_, error);
        if (error || !fs::is_regular_file(file, error)) {
            throw CommandError(fs::is_directory(file, error) ? file_ + " is a folder and no file"
                                                             : "there is no file " + file_);
        }
        engine::EditRecord const record = findEdit(session, edit_);
        engine::Project& project = check_ ? session.engine().project() : session.writableProject();
        WideString const path = wide(file.lexically_normal().string());
        engine::Result<RelinkReport> const report =
            check_ ? project.checkRelink(record.cookie, path) : project.relink(record.cookie, path);
        if (!report) {
            throw CommandError(report.error());
        }
        return answer(session, record, *report, usesOf(session, record.cookie, *report));
    }

private:
    [[nodiscard]] Reply answer(Session& session, engine::EditRecord const& record, RelinkReport const& report,
                               std::vector<SequenceUse> const& uses) const {
        Reply reply;
        reply.standsInterrupted = !check_;
        std::string const name = utf8(record.name());
        reply.text = plainText(check_ ? name + " would play " + file_ : name + " plays " + file_) + "\n";
        reply.text += "  " + plainText(describeFile(report.facts)) + "\n";
        for (engine::MediaDifference const& difference : report.differences) {
            reply.text += "  " + plainText(inWords(difference)) + "\n";
        }
        if (report.differences.empty()) {
            reply.text += "  as the edit promises\n";
        }
        reply.text += useTable(uses, session.screen());
        reply.members = [record, report, uses, check = check_](JSON::Builder& json) {
            addText(json, "cookie", engine::cookieText(record.cookie));
            json.add("name", record.name(), true);
            json.add("changed", !check);
            addRelinkMembers(json, report, uses);
        };
        return reply;
    }

    std::string edit_;
    std::string file_;
    bool check_ = false;
};

} // namespace

std::unique_ptr<Command> makeRelink() {
    return std::make_unique<Relink>();
}

} // namespace zq
