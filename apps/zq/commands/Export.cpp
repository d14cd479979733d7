// "export": a sequence for other editors and players.

#include "apps/zq/Command.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/Commands.h"
#include "apps/zq/exportFile.h"
#include "apps/zq/terminal/PlainText.h"

namespace zq {

namespace {

class Export final : public Command {
public:
    void declare(CLI::App& options) override {
        options.add_option("NAME", name_, "name of the sequence")->required();
        options.add_option("--format", format_, "mlt, edl, fcpxml or otio")->type_name("FORMAT")->required();
        options.add_option("FILE", file_, "the file to write; one that is there is replaced")->required();
    }

    Reply run(Session& session) override {
        std::optional<engine::ExportFormat> const format = engine::exportFormatFromName(format_);
        if (!format) {
            throw CommandError("there is no format \"" + format_ + "\"; there is mlt, edl, fcpxml and otio");
        }
        Reply reply;
        reply.standsInterrupted = true;
        reply.warnings = exportFile(session, name_, *format, file_);
        reply.text = plainText(file_) + "\n";
        reply.members = [file = file_, warnings = reply.warnings](JSON::Builder& json) {
            addText(json, "file", file);
            addTexts(json, "warnings", warnings);
        };
        return reply;
    }

private:
    std::string name_;
    std::string format_;
    std::string file_;
};

} // namespace

std::unique_ptr<Command> makeExport() {
    return std::make_unique<Export>();
}

} // namespace zq
