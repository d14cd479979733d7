// "open", "edits", "undo" and "redo": the edits of the project, and the steps that it has taken.

#include "apps/zq/Command.h"
#include "apps/zq/EditLookup.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/Commands.h"
#include "apps/zq/commands/EditListing.h"
#include "apps/zq/terminal/PlainText.h"
#include "apps/zq/terminal/Table.h"

namespace zq {

namespace {

using engine::EditRecord;

class Open final : public Command {
public:
    void declare(CLI::App& options) override {
        options.add_option("ID", id_, "number of the clip, as search shows it")->required();
    }

    Reply run(Session& session) override {
        EditModifier const edit = openClip(session, id_);
        EditRecord const record = recordOf(session, edit);
        Reply reply;
        reply.text = describeEdit(record);
        reply.members = [record](JSON::Builder& json) { addEditMembers(json, record); };
        return reply;
    }

private:
    std::string id_;
};

class Edits final : public Command {
public:
    void declare(CLI::App&) override {}

    Reply run(Session& session) override {
        engine::Project& project = session.engine().project();
        std::vector<EditRecord> const edits = project.edits();
        std::vector<std::size_t> uses;
        Table table({{"Edit"},
                     {"Clip"},
                     {"Name", Table::Align::left, true},
                     {"Length", Table::Align::right},
                     {"Rate", Table::Align::right},
                     {"Uses", Table::Align::right},
                     {"Plays"}});
        for (EditRecord const& edit : edits) {
            uses.push_back(project.usesOf(edit.cookie).size());
            table.addRow({engine::cookieText(edit.cookie), clipNames(edit), utf8(edit.name()),
                          engine::timecode(edit.durationInFrames(), edit.rate),
                          utf8(Zq::getDisplayString(edit.rate)), std::to_string(uses.back()),
                          edit.mediaLocation.isEmpty() ? "preview" : "full file"});
        }
        Reply reply;
        reply.text = edits.empty() ? "no edits\n" : table.render(session.screen());
        reply.members = [edits, uses](JSON::Builder& json) {
            json.startArray("edits");
            for (std::size_t i = 0; i < edits.size(); ++i) {
                json.startChild(nullptr);
                addEditMembers(json, edits[i]);
                addNumber(json, "uses", uses[i]);
                json.endChild();
            }
            json.endArray();
        };
        return reply;
    }

private:
    static std::string clipNames(EditRecord const& edit) {
        std::string names;
        for (EditRecord::ExternalId const& id : edit.externalIds) {
            names += (names.empty() ? "" : ", ") + utf8(id.kind) + " " + utf8(id.id);
        }
        return names;
    }
};

class Undo final : public Command {
public:
    void declare(CLI::App&) override {}

    Reply run(Session& session) override {
        return answer(session.writableProject().undo(), "taken back", "undone");
    }

    // For a step that was gone through, in words.
    static Reply answer(engine::Result<std::string> const& step, char const* done, char const* member) {
        if (!step) {
            throw CommandError(step.error());
        }
        Reply reply;
        reply.standsInterrupted = true;
        reply.text = std::string(done) + ": " + plainText(*step) + "\n";
        reply.members = [step = *step, member](JSON::Builder& json) { addText(json, member, step); };
        return reply;
    }
};

class Redo final : public Command {
public:
    void declare(CLI::App&) override {}

    Reply run(Session& session) override {
        return Undo::answer(session.writableProject().redo(), "done again", "redone");
    }
};

} // namespace

std::unique_ptr<Command> makeOpen() {
    return std::make_unique<Open>();
}
std::unique_ptr<Command> makeEdits() {
    return std::make_unique<Edits>();
}
std::unique_ptr<Command> makeUndo() {
    return std::make_unique<Undo>();
}
std::unique_ptr<Command> makeRedo() {
    return std::make_unique<Redo>();
}

} // namespace zq
