// "info": the modules of this process and how their repositories present themselves.

#include <vector>

#include "apps/zq/Command.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/RichText.h"
#include "apps/zq/commands/Commands.h"
#include "apps/zq/terminal/PlainText.h"

namespace zq {

namespace {

void addRepository(JSON::Builder& json, iMediaFileRepository& repository) {
    RepositoryDescription const description = repository.getDescription();
    json.startChild(nullptr);
    json.add("name", repository.getName(), true);
    json.add("shortName", repository.getShortName(), true);
    json.add("summary", description.summary, true);
    json.add("legalNotice", description.legalNotice, true);
    json.add("webLink", description.webLink, true);
    json.add("server", description.connection.server, true);
    json.add("user", description.connection.user, true);
    json.add("logo", description.logo, true);
    std::vector<WideString> kinds;
    for (std::int32_t const kind : repository.getMediaKinds()) {
        kinds.push_back(wide(std::to_string(kind)));
    }
    addItems(json, "mediaKinds", kinds);
    std::vector<WideString> paths;
    for (WideString const& path : repository.getRootPaths()) {
        paths.push_back(quoted(path));
    }
    addItems(json, "rootPaths", paths);
    auto const* const base = dynamic_cast<MediaFileRepositoryBase const*>(&repository);
    json.add("fileExtension", base != nullptr ? base->describeFileExtension() : WideString(), true);
    json.endChild();
}

void addModule(JSON::Builder& json, engine::ModuleReport const& module) {
    json.startChild(nullptr);
    addText(json, "path", module.path.string());
    json.add("loaded", module.loaded);
    addText(json, "version", module.version);
    addText(json, "name", module.name);
    json.startArray("repositories");
    for (iMediaFileRepository* const repository : module.repositories) {
        addRepository(json, *repository);
    }
    json.endArray();
    if (!module.error.empty()) {
        addText(json, "error", module.error);
    }
    json.endChild();
}

std::string line(std::string_view label, std::string_view value) {
    return value.empty() ? std::string() : "  " + std::string(label) + plainText(value) + "\n";
}

std::string describe(iMediaFileRepository& repository) {
    RepositoryDescription const description = repository.getDescription();
    std::string const user = utf8(description.connection.user);
    bool const hasAccounts = !repository.getLoginForm().isEmpty();
    return plainText(utf8(repository.getName())) + " (" + plainText(utf8(repository.getShortName())) + ")\n" +
           line("", utf8(description.summary)) + line("", plainFromRich(utf8(description.legalNotice))) +
           line("web:    ", utf8(description.webLink)) +
           line("server: ", utf8(description.connection.server)) +
           line("user:   ", user.empty() && hasAccounts ? "nobody is signed in" : user);
}

class Info final : public Command {
public:
    void declare(CLI::App&) override {}

    Reply run(Session& session) override {
        Reply reply;
        for (engine::ModuleReport const& module : session.modules()) {
            std::string const path = plainText(module.path.string());
            reply.text += module.loaded ? "module " + plainText(module.name) + " " +
                                              plainText(module.version) + ", " + path + "\n"
                                        : "not loaded: " + path + ": " + plainText(module.error) + "\n";
            for (iMediaFileRepository* const repository : module.repositories) {
                reply.text += describe(*repository);
            }
        }
        if (session.modules().empty()) {
            reply.text = "no modules\n";
        }
        engine::Project& project = session.engine().project();
        std::size_t const edits = project.edits().size();
        std::size_t const sequences = project.sequenceNames().size();
        bool const writable = project.canWrite();
        reply.text += "project: edits " + std::to_string(edits) + ", sequences " + std::to_string(sequences) +
                      (writable ? "\n" : "; another zq works on it\n");
        reply.members = [modules = session.modules(), edits, sequences, writable](JSON::Builder& json) {
            json.startArray("modules");
            for (engine::ModuleReport const& module : modules) {
                addModule(json, module);
            }
            json.endArray();
            json.startChild("project");
            addNumber(json, "edits", edits);
            addNumber(json, "sequences", sequences);
            json.add("writable", writable);
            json.endChild();
        };
        return reply;
    }
};

} // namespace

std::unique_ptr<Command> makeInfo() {
    return std::make_unique<Info>();
}

} // namespace zq
