// "place", "move", "trim", "remove" and "sequence": clips one behind the other.

#include <algorithm>
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

void addTimeOption(CLI::App& options, char const* name, std::optional<double>& value, char const* help) {
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

// Has the option take whole numbers from 1 on; the complaint about another word says that it is no `what`.
void takeCount(CLI::Option& option, std::string const& what) {
    option.type_name("NUMBER")->check(CLI::Validator(
        [what](std::string& text) {
            // The library would read a leading 0 as octal.
            bool const isCount = !text.empty() && text.size() <= 18 && text.front() != '0' &&
                                 text.find_first_not_of("0123456789") == std::string::npos;
            return isCount ? std::string() : "\"" + text + "\" is no " + what;
        },
        ""));
}

constexpr char const* positionInWords = "position: those count from 1";

void addPieceArgument(CLI::App& options, std::int64_t& piece) {
    takeCount(*options.add_option("PIECE", piece, "number of the piece, as sequence shows it")->required(),
              "piece's number");
}

template <class Value>
Value orFail(engine::Result<Value> result) {
    if (!result) {
        throw CommandError(result.error());
    }
    return *std::move(result);
}

// The answer for a piece as it stands in its sequence now.
Reply answerFor(Session& session, std::string const& done, std::string const& name,
                engine::Placement const& placement) {
    engine::Sequence const sequence = session.engine().project().sequence(name).value_or(engine::Sequence());
    auto const found = std::ranges::find(sequence.placements, placement.number, &engine::Placement::number);
    auto const position = found - sequence.placements.begin() + 1;
    SequencePiece const piece = viewPiece(session, sequence, placement);
    Reply reply;
    reply.standsInterrupted = true;
    reply.text = plainText(done + " " + utf8(piece.edit.name()) + " in \"" + name + "\" at " +
                           piece.recordIn + ": " + piece.sourceIn + " to " + piece.sourceOut + ", " +
                           std::to_string(placement.length) + " frames") +
                 "\n";
    reply.members = [piece, name, position](JSON::Builder& json) {
        addText(json, "sequence", name);
        addNumber(json, "position", position);
        addPieceMembers(json, piece);
    };
    return reply;
}

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
        takeCount(*options.add_option("--at", position_,
                                      "position in the sequence, from 1; at its end without this"),
                  positionInWords);
    }

    Reply run(Session& session) override {
        engine::Project& project = session.writableProject();
        EditModifier const edit = openClip(session, id_);
        std::optional<std::int64_t> const index = position_ ? std::optional(*position_ - 1) : std::nullopt;
        engine::Placement const placement =
            orFail(project.place(sequence_, edit->getCookie(), in_, out_, index));
        return answerFor(session, "placed", sequence_, placement);
    }

private:
    std::string id_;
    std::string sequence_;
    std::optional<double> in_;
    std::optional<double> out_;
    std::optional<std::int64_t> position_;
};

class Move final : public Command {
public:
    void declare(CLI::App& options) override {
        addPieceArgument(options, piece_);
        takeCount(*options.add_option("POSITION", position_, "position in the sequence, from 1")->required(),
                  positionInWords);
    }

    Reply run(Session& session) override {
        engine::Project::Use const use = orFail(session.writableProject().move(piece_, position_ - 1));
        return answerFor(session, "moved", use.sequence, use.placement);
    }

private:
    std::int64_t piece_ = 0;
    std::int64_t position_ = 0;
};

class Trim final : public Command {
public:
    void declare(CLI::App& options) override {
        addPieceArgument(options, piece_);
        addTimeOption(options, "--in", in_,
                      "first moment that is shown, in seconds from the clip's beginning; stays without this");
        addTimeOption(options, "--out", out_, "first moment that is not shown any more; stays without this");
    }

    Reply run(Session& session) override {
        engine::Project::Use const use = orFail(session.writableProject().trim(piece_, in_, out_));
        return answerFor(session, "trimmed", use.sequence, use.placement);
    }

private:
    std::int64_t piece_ = 0;
    std::optional<double> in_;
    std::optional<double> out_;
};

class Remove final : public Command {
public:
    void declare(CLI::App& options) override { addPieceArgument(options, piece_); }

    Reply run(Session& session) override {
        engine::Project& project = session.writableProject();
        engine::Project::Use const use = orFail(project.remove(piece_));
        WideString const name = project.edit(use.placement.edit).value_or(engine::EditRecord()).name();
        std::size_t const left =
            project.sequence(use.sequence).value_or(engine::Sequence()).placements.size();
        Reply reply;
        reply.standsInterrupted = true;
        reply.text = plainText("removed " + utf8(name) + " from \"" + use.sequence + "\"") +
                     (left == 0 ? ", which had no other piece" : "") + "\n";
        reply.members = [use, name, left](JSON::Builder& json) {
            addText(json, "sequence", use.sequence);
            addNumber(json, "number", use.placement.number);
            addText(json, "edit", engine::cookieText(use.placement.edit));
            json.add("name", name, true);
            addNumber(json, "piecesLeft", left);
        };
        return reply;
    }

private:
    std::int64_t piece_ = 0;
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
std::unique_ptr<Command> makeMove() {
    return std::make_unique<Move>();
}
std::unique_ptr<Command> makeTrim() {
    return std::make_unique<Trim>();
}
std::unique_ptr<Command> makeRemove() {
    return std::make_unique<Remove>();
}
std::unique_ptr<Command> makeSequence() {
    return std::make_unique<ShowSequence>();
}

} // namespace zq
