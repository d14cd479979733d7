// "place" and "sequence": clips one behind the other.

#include <cmath>
#include <optional>

#include "apps/zq/Command.h"
#include "apps/zq/EditLookup.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/SequenceView.h"
#include "apps/zq/commands/Commands.h"
#include "apps/zq/commands/SequenceListing.h"
#include "apps/zq/terminal/PlainText.h"
#include "host/text/Numbers.h"

namespace zq {

namespace {

class Place final : public Command {
public:
    void declare(CLI::App& options) override {
        options.add_option("ID", id_, "number of the clip, as search shows it")->required();
        options.add_option("--sequence", sequence_, "name of the sequence, which is made if it is not there")
            ->type_name("NAME")
            ->required();
        addTimeOption(options, "--in", in_,
                      "first moment that is shown, in seconds from the clip's beginning");
        addTimeOption(options, "--out", out_, "first moment that is not shown any more, in seconds");
    }

    Reply run(Session& session) override {
        engine::Project& project = session.writableProject();
        EditModifier const edit = openClip(session, id_);
        engine::Result<engine::Placement> const placement =
            project.place(sequence_, edit->getCookie(), in_, out_);
        if (!placement) {
            throw CommandError(placement.error());
        }
        engine::Sequence const sequence = project.sequence(sequence_).value_or(engine::Sequence());
        SequencePiece const piece = viewPiece(session, sequence, *placement);
        Reply reply;
        reply.standsInterrupted = true;
        reply.text = plainText("placed " + utf8(piece.edit.name()) + " in \"" + sequence_ + "\" at " +
                               piece.recordIn + ": " + piece.sourceIn + " to " + piece.sourceOut + ", " +
                               std::to_string(placement->length) + " frames") +
                     "\n";
        reply.members = [piece, name = sequence_](JSON::Builder& json) {
            addText(json, "sequence", name);
            addPieceMembers(json, piece);
        };
        return reply;
    }

private:
    static void addTimeOption(CLI::App& options, char const* name, std::optional<double>& value,
                              char const* help) {
        options.add_option(name, value, help)
            ->type_name("S")
            ->check(CLI::Validator(
                [](std::string& text) {
                    double const time = Zq::decimalFromText(text);
                    bool const isPlain = text.find_first_not_of("0123456789.") == std::string::npos;
                    return isPlain && std::isfinite(time) ? std::string()
                                                          : "a time is seconds, as 2.5, and not before 0";
                },
                ""));
    }

    std::string id_;
    std::string sequence_;
    std::optional<double> in_;
    std::optional<double> out_;
};

class ShowSequence final : public Command {
public:
    void declare(CLI::App& options) override {
        options.add_option("NAME", name_, "name of the sequence; nothing lists all names");
    }

    Reply run(Session& session) override { return name_.empty() ? list(session) : show(session); }

private:
    static Reply list(Session& session) {
        std::vector<std::string> const names = session.engine().project().sequenceNames();
        Reply reply;
        for (std::string const& name : names) {
            reply.text += plainText(name) + "\n";
        }
        if (names.empty()) {
            reply.text = "no sequences\n";
        }
        reply.members = [names](JSON::Builder& json) { addTexts(json, "sequences", names); };
        return reply;
    }

    [[nodiscard]] Reply show(Session& session) const {
        SequenceView const view = viewSequence(session, name_);
        Reply reply;
        reply.text = sequenceTable(view, session.screen());
        reply.members = [view](JSON::Builder& json) { addSequenceMembers(json, view); };
        return reply;
    }

    std::string name_;
};

} // namespace

std::unique_ptr<Command> makePlace() {
    return std::make_unique<Place>();
}
std::unique_ptr<Command> makeSequence() {
    return std::make_unique<ShowSequence>();
}

} // namespace zq
