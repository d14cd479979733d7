// "demo": the whole road of a purchase.

#include "apps/zq/Command.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/Commands.h"
#include "apps/zq/demo/DemoWalk.h"

namespace zq {

namespace {

class Demo final : public Command {
public:
    void declare(CLI::App& options) override {
        options
            .add_option(
                "--folder", folder_,
                "where the exported and the rendered sequence go; by default \"demo\" in the home folder")
            ->type_name("DIR");
    }

    Reply run(Session& session) override {
        DemoWalk walk(session, folder_.empty() ? session.engine().home() / "demo"
                                               : std::filesystem::absolute(folder_));
        Reply reply;
        reply.standsInterrupted = true;
        try {
            walk.walk();
        } catch (CommandError const& error) {
            reply.error = error.what();
        }
        reply.members = [steps = walk.steps(), sequence = walk.sequence(), file = walk.rendered().string(),
                         frames = walk.sequenceFrames(),
                         renderedFrames = walk.renderedFrames()](JSON::Builder& json) {
            json.startArray("steps");
            for (DemoStep const& step : steps) {
                json.startChild(nullptr);
                addText(json, "step", step.name);
                addText(json, "text", step.text);
                json.endChild();
            }
            json.endArray();
            addText(json, "sequence", sequence);
            addNumber(json, "frames", frames);
            addText(json, "rendered", file);
            addNumber(json, "renderedFrames", renderedFrames);
        };
        return reply;
    }

private:
    std::string folder_;
};

} // namespace

std::unique_ptr<Command> makeDemo() {
    return std::make_unique<Demo>();
}

} // namespace zq
