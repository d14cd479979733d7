#include "apps/zq/Program.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>

#include "apps/zq/Interpreter.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/Text.h"
#include "apps/zq/Version.h"
#include "apps/zq/signIn.h"
#include "host/engine/Engine.h"
#include "host/engine/network/CurlNetwork.h"
#include "host/engine/project/Project.h"
#include "host/engine/tasks/TaskQueue.h"
#include "host/modules/ModuleThreads.h"

namespace zq {

namespace {

constexpr int succeeded = 0;
constexpr int failed = 1;
constexpr int unusable = 2;
constexpr int endedBySignal = 128;

struct Arguments {
    engine::EngineOptions engine;
    std::string repository; // short name; empty: the first
    std::string user;       // who is signed in before the command; empty: nobody
    Output::Format format = Output::Format::text;
    std::vector<std::string> words; // of the command
};

// The failure of the whole program: for a person always, for a program as the one line that it waits for.
int reportUnusable(Output& output, std::string const& error, Output::Format format) {
    output.fail(error);
    if (format == Output::Format::json) {
        Reply reply;
        reply.error = error;
        output.print(reply, format);
    }
    return unusable;
}

// The arguments, or the exit status where there is nothing to run.
class ArgumentReader {
public:
    ArgumentReader() {
        options_.add_option("--home", home_, "folder of everything that is kept")->type_name("DIR");
        options_.add_option("--language", arguments_.engine.language, "language of the texts, as \"de\"")
            ->type_name("xx");
        options_.add_flag("--json", json_, "answer each command with one line of JSON");
        options_.add_option("--repository", arguments_.repository, "repository to use, by its short name")
            ->type_name("SHORTNAME");
        options_
            .add_option("--login", arguments_.user,
                        "sign in as this user before the command; the password is asked for or read from the "
                        "next line of input")
            ->type_name("NAME");
        options_.set_version_flag("--version", std::string("zq ") + version);
        options_.prefix_command();
        options_.footer(commandList());
    }

    [[nodiscard]] std::optional<int> read(std::vector<std::string> const& arguments, Output& output) {
        try {
            std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
            options_.parse(reversed);
        } catch (CLI::CallForHelp const&) {
            return answer(output, formatIn(arguments), "help", options_.help());
        } catch (CLI::CallForVersion const&) {
            return answer(output, formatIn(arguments), "version", std::string("zq ") + version);
        } catch (CLI::ParseError const& error) {
            return reportUnusable(output, error.what(), formatIn(arguments));
        }
        arguments_.words = options_.remaining();
        arguments_.engine.home = home_;
        arguments_.format = json_ ? Output::Format::json : Output::Format::text;
        if (arguments_.words.empty()) {
            return reportUnusable(output, "no command; \"zq --help\" lists them", arguments_.format);
        }
        if (arguments_.words.front().starts_with('-')) {
            return reportUnusable(
                output, "there is no option " + arguments_.words.front() + "; \"zq --help\" lists them",
                arguments_.format);
        }
        return std::nullopt;
    }

    [[nodiscard]] Arguments const& arguments() const noexcept { return arguments_; }

private:
    // Where the arguments were not read to their end.
    static Output::Format formatIn(std::vector<std::string> const& arguments) {
        bool const wantsJson = std::ranges::find(arguments, "--json") != arguments.end();
        return wantsJson ? Output::Format::json : Output::Format::text;
    }

    static int answer(Output& output, Output::Format format, char const* member, std::string const& text) {
        Reply reply;
        reply.text = text.ends_with('\n') ? text : text + "\n";
        reply.members = [member, text](JSON::Builder& json) { addText(json, member, text); };
        output.print(reply, format);
        return output.isBroken() ? failed : succeeded;
    }

    CLI::App options_{
        "Searches stock media through the modules of an editor: zq [OPTIONS] COMMAND [ARGUMENTS]", "zq"};
    Arguments arguments_;
    std::string home_;
    bool json_ = false;
};

void warnOfProblems(Output const& output, engine::Engine& engine, engine::ModuleLoader const& modules) {
    for (std::string const& problem : engine.network().problems()) {
        output.warn(problem);
    }
    if (std::filesystem::path const damaged = engine.project().damagedFile(); !damaged.empty()) {
        output.warn("the project was damaged: it is kept as " + damaged.string() +
                    ", and a new one has begun");
    }
    for (engine::ModuleReport const& module : modules.reports()) {
        if (!module.loaded) {
            output.warn("module " + module.path.string() + ": " + module.error);
        }
    }
}

// The repository of that short name, or the first; null where there is none.
iMediaFileRepository* choose(std::vector<iMediaFileRepository*> const& all, std::string const& shortName) {
    auto const found = std::ranges::find_if(all, [&](iMediaFileRepository* repository) {
        return shortName.empty() || utf8(repository->getShortName()) == shortName;
    });
    return found != all.end() ? *found : nullptr;
}

// Ends the tasks, which may run code of the modules, before the modules go.
class TasksEnd {
public:
    explicit TasksEnd(engine::TaskQueue& tasks) : tasks_(tasks) {}
    TasksEnd(TasksEnd const&) = delete;
    TasksEnd& operator=(TasksEnd const&) = delete;
    ~TasksEnd() { tasks_.shutDown(); }

private:
    engine::TaskQueue& tasks_;
};

// Signs in as the arguments say. The failure as the reply of a command that did not come to run.
Reply signInFirst(Session& session, std::string const& user) {
    Interrupts::Command const running;
    Reply reply;
    try {
        reply.error = signIn(session, user).error;
    } catch (std::exception const& exception) {
        reply.error = exception.what();
    }
    if (running.isCancelled()) {
        reply.error = "interrupted";
    }
    return reply;
}

// Runs the prepared command, or the shell, on an engine that stands.
int runOn(engine::Engine& engine, Arguments const& arguments, PreparedCommand& prepared, Output& output) {
    Interrupts const interrupts;
    Zq::ThreadAttachment const thread;
    AnswerWatch answers;
    LineReader input(STDIN_FILENO, interrupts);
    LiveOutput live(output);
    bool const isShell = std::string_view(prepared.entry->name) == "shell";
    engine::ModuleLoader modules;
    modules.loadFolders(engine.moduleFolders());
    if (prepared.format == Output::Format::text) {
        warnOfProblems(output, engine, modules);
    }
    Session::Surroundings surroundings;
    surroundings.modules = modules.reports();
    surroundings.repository = choose(modules.repositories(), arguments.repository);
    surroundings.statistics = [&engine] { return engine.network().statistics(); };
    surroundings.answers = &answers;
    surroundings.input = &input;
    surroundings.live = &live;
    surroundings.engine = &engine;
    surroundings.isShell = isShell;
    surroundings.screen = output.screen();
    if (surroundings.repository == nullptr && !arguments.repository.empty()) {
        return reportUnusable(output, "no repository has the short name \"" + arguments.repository + "\"",
                              prepared.format);
    }
    // What the tasks, the session and the prepared command hold of the modules ends before the modules do.
    TasksEnd const tasksEnd(engine.tasks());
    Session session(surroundings);
    bool success = false;
    Reply const signedIn = arguments.user.empty() ? Reply() : signInFirst(session, arguments.user);
    if (!signedIn.ok()) {
        output.print(signedIn, prepared.format);
    } else if (isShell) {
        success = runShell(session, interrupts, output, prepared.format);
    } else {
        Reply const reply = runCommand(prepared, session);
        output.print(reply, prepared.format);
        success = reply.ok();
    }
    if (interrupts.endingSignal() != 0) {
        return endedBySignal + interrupts.endingSignal();
    }
    return success && !output.isBroken() ? succeeded : failed;
}

} // namespace

int runProgram(std::vector<std::string> const& arguments) {
    Output output(Screen::ofStandardOutput());
    try {
        ArgumentReader reader;
        if (std::optional<int> const status = reader.read(arguments, output)) {
            return *status;
        }
        PreparedCommand prepared = prepareCommand(reader.arguments().words, reader.arguments().format);
        if (!prepared.command) {
            output.print(prepared.reply, prepared.format);
            return prepared.reply.ok() && !output.isBroken() ? succeeded : failed;
        }
        engine::Result<std::unique_ptr<engine::Engine>> engine =
            engine::Engine::start(reader.arguments().engine);
        if (!engine) {
            return reportUnusable(output, engine.error(), prepared.format);
        }
        return runOn(**engine, reader.arguments(), prepared, output);
    } catch (std::exception const& exception) {
        output.fail(exception.what());
        return failed;
    }
}

} // namespace zq
