// The built program without a service: its arguments, answers, exit statuses and modules.

#include <gmock/gmock.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "host/engine/files/WholeFile.h"
#include "tests/zq/ProgramFixture.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;
using zq_tests::Finished;
using zq_tests::RunningProgram;

// The text with every occurrence replaced.
std::string replaced(std::string text, std::string const& what, std::string const& with) {
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size())) {
        text.replace(at, what.size(), with);
    }
    return text;
}

// The lines of a golden file.
std::vector<std::string> golden(char const* name) {
    std::ifstream stream(fs::path(ZQ_GOLDEN) / name);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

// The answer of "stats" before anything was asked of a service.
std::string noRequests() {
    return golden("tarn7_offline.jsonl")[4];
}

using Program = zq_tests::ProgramFixture;

TEST_F(Program, HelpsAndTellsItsVersionWithoutAHome) {
    environment = {"ZQ_HOME=/dev/null/home"};
    Finished const help = run({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.out, HasSubstr("search for clips"));
    EXPECT_EQ(run({"search", "--help"}).status, 0);
    Finished const version = run({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_THAT(version.out, StartsWith("zq "));
    EXPECT_THAT(run({"--json", "--version"}).out,
                testing::MatchesRegex("\\{\"ok\":true,\"version\":\"zq [0-9.]+\"\\}\n"));
    EXPECT_THAT(run({"--json", "--help"}).out, StartsWith("{\"ok\":true,\"help\":\""));
}

TEST_F(Program, RefusesArgumentsThatItDoesNotKnow) {
    Finished const option = run({"--bogus", "info"});
    EXPECT_EQ(option.status, 2);
    EXPECT_THAT(option.err, HasSubstr("--bogus"));
    EXPECT_EQ(run({}).status, 2);
    EXPECT_EQ(run({"--json"}).out, "{\"ok\":false,\"error\":\"no command; \\\"zq --help\\\" lists them\"}\n");
    EXPECT_THAT(run({"--json", "--language"}).out, StartsWith("{\"ok\":false,\"error\":\"--language"));
    Finished const command = run({"serch"});
    EXPECT_EQ(command.status, 1);
    EXPECT_THAT(command.err, HasSubstr("did you mean \"search\"?"));
    EXPECT_EQ(
        run({"--json", "serch"}).out,
        "{\"ok\":false,\"error\":\"there is no command \\\"serch\\\"; did you mean \\\"search\\\"?\"}\n");
}

TEST_F(Program, FailsWhereItsOutputIsClosedAndWritesItIntoNoOtherFile) {
    configure({programFile("tarn7.zqd")});
    std::string const command =
        "'" + programFile("zq").native() + "' --home '" + home().native() + "' info >&- 2>/dev/null";
    int const status = std::system(command.c_str());
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 1);
    for (auto const& entry : fs::recursive_directory_iterator(home())) {
        if (entry.is_regular_file()) {
            std::optional<std::string> const content = engine::readWholeFile(entry.path(), 10 << 20);
            EXPECT_THAT(content.value_or(""), Not(HasSubstr("nobody is signed in"))) << entry.path();
        }
    }
    EXPECT_THAT(run({"info"}).out, HasSubstr("nobody is signed in"));
}

TEST_F(Program, SaysThatADamagedProjectWasSetAside) {
    configure({programFile("tarn7.zqd")});
    EXPECT_EQ(run({"edits"}).err, "");
    std::ofstream(home() / "project.sqlite", std::ios::trunc) << "no project";
    Finished const edits = run({"edits"});
    EXPECT_EQ(edits.status, 0);
    EXPECT_THAT(edits.err, StartsWith("zq: warning: the project was damaged: it is kept as "));
    EXPECT_EQ(run({"edits"}).err, "");
}

TEST_F(Program, HelpsWithEveryCommand) {
    for (char const* const command :
         {"info",      "login", "logout", "form",  "options",  "set",    "columns", "search",
          "thumbnail", "open",  "place",  "edits", "sequence", "undo",   "usage",   "buy",
          "owned",     "fetch", "find",   "play",  "relink",   "export", "tasks",   "cancel",
          "demo",      "stats", "shell",  "help",  "move",     "trim",   "remove",  "redo"}) {
        Finished const help = run({command, "--help"});
        EXPECT_EQ(help.status, 0) << command;
        EXPECT_THAT(help.out, HasSubstr("Usage: zq " + std::string(command))) << command;
    }
    std::string const search = run({"search", "--help"}).out;
    EXPECT_THAT(search, HasSubstr("--page-size N=25"));
    EXPECT_THAT(search, HasSubstr("clips a page, from 1 to 65535"));
}

TEST_F(Program, ShowsTheTagsOfAllOptionsOnANarrowTerminal) {
    configure({programFile("tarn7.zqd")});
    std::string const out = start({"options"}, RunningProgram::Around::terminal)->finish().out;
    EXPECT_THAT(out, HasSubstr("5=60 secs"));
    EXPECT_THAT(out, Not(HasSubstr("…")));
}

TEST_F(Program, NamesTheLineOfAMistakeInItsSettings) {
    std::ofstream(home() / "host.toml") << "[config]\nt7 = 1\n[network]\nconect = {}\n";
    Finished const text = run({"info"});
    EXPECT_EQ(text.status, 2);
    EXPECT_EQ(text.out, "");
    EXPECT_THAT(text.err, testing::AllOf(HasSubstr("host.toml"), HasSubstr("4"), HasSubstr("conect")));
    Finished const json = run({"--json", "info"});
    EXPECT_EQ(json.status, 2);
    EXPECT_THAT(json.out, StartsWith("{\"ok\":false,\"error\":\""));
}

TEST_F(Program, RefusesAHomeThatCannotBeUsed) {
    std::ofstream(folder() / "file") << "";
    Finished const finished = run({"--home", (folder() / "file" / "home").string(), "info"});
    EXPECT_EQ(finished.status, 2);
    EXPECT_THAT(finished.err, testing::AllOf(HasSubstr("home folder"), HasSubstr("--home")));
}

TEST_F(Program, RefusesALanguageThatItHasNoTextsFor) {
    Finished const finished = run({"--language", "../en", "columns"});
    EXPECT_EQ(finished.status, 2);
    EXPECT_THAT(finished.err, HasSubstr("../en"));
}

TEST_F(Program, SpeaksTheLanguageThatItIsAskedFor) {
    configure({programFile("tarn7.zqd")});
    std::string const english = run({"--language", "en", "columns"}).out;
    std::string const german = run({"--language", "de", "columns"}).out;
    EXPECT_THAT(english, HasSubstr("Name"));
    EXPECT_NE(run({"--language", "en", "options"}).out, run({"--language", "de", "options"}).out);
    EXPECT_NE(german, "");
}

TEST_F(Program, FindsTheModuleBesideItself) {
    Finished const finished = run({"info"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_THAT(finished.out, HasSubstr("Tarn7 (T7)"));
}

TEST_F(Program, AnswersInJsonAsTheGoldenFileHasIt) {
    configure({programFile("tarn7.zqd")});
    std::vector<std::string> const lines =
        answers({"info", "form", "options", "columns", "stats", "set 0 1 2", "set 0 1 7", "set 1 0 no",
                 "set 7 0 1", "set 1 1 1", "logout", "quit"});
    std::vector<std::string> const expected = golden("tarn7_offline.jsonl");
    ASSERT_THAT(lines, SizeIs(expected.size()));
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(replaced(lines[i], folder().string(), "FOLDER"), expected[i]);
    }
}

TEST_F(Program, KeepsAnOptionForTheNextRun) {
    configure({programFile("tarn7.zqd")});
    EXPECT_EQ(run({"set", "0", "2", "3"}).status, 0);
    EXPECT_THAT(answers({"options"})[0], HasSubstr(R"("value":3,"position":4)"));
}

TEST_F(Program, ShowsASearchAsTheGoldenFileHasIt) {
    configure({testModule("fixed")});
    EXPECT_THAT(answers({"search --page 2 --page-size 13 red car", "info"}),
                ElementsAre(golden("fixed.jsonl")[0],
                            replaced(golden("fixed.jsonl")[1], "FOLDER", folder().string())));
}

TEST_F(Program, NeverPassesControlCharactersOfAServiceOn) {
    configure({testModule("fixed")});
    Finished const finished = run({"search"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.out, "Id  Name                   Price\n"
                            " 7  ]0;owned red car 東京     $5\n"
                            "page 1 of 2, 26 clips\n");
    EXPECT_THAT(run({"info"}).out, Not(testing::AnyOf(HasSubstr("\033"), HasSubstr("\u202e"))));
}

TEST_F(Program, ColoursOnATerminalAndNotWhereNobodyWantsIt) {
    configure({testModule("fixed")});
    auto const coloured = start({"search"}, RunningProgram::Around::terminal);
    EXPECT_THAT(coloured->finish().out, StartsWith("\033[1mId"));
    environment.push_back("NO_COLOR=1");
    auto const plain = start({"search", "--pictures"}, RunningProgram::Around::terminal);
    std::string const out = plain->finish().out;
    EXPECT_THAT(out, StartsWith("Id"));
    EXPECT_THAT(out, Not(HasSubstr("\033")));
    EXPECT_THAT(out, HasSubstr("no pictures"));
}

TEST_F(Program, WarnsOfModulesThatDoNotLoadAndGoesOn) {
    configure({testModule("throwing"), testModule("no_entry"), testModule("refusing"), testModule("fixed")});
    std::ofstream(folder() / "modules" / "text.zqd") << "text";
    Finished const text = run({"search"});
    EXPECT_EQ(text.status, 0);
    EXPECT_THAT(text.err, HasSubstr("throwing.zqd: postLoadInitialization failed: no licence\n"));
    EXPECT_THAT(text.err, HasSubstr("no_entry.zqd: the module has no entry zqPluginInstance\n"));
    EXPECT_THAT(text.err, HasSubstr("refusing.zqd: the module refused to be attached\n"));
    EXPECT_THAT(text.err, HasSubstr("text.zqd: "));
    Finished const json = run({"--json", "info"});
    EXPECT_EQ(json.err, "");
    EXPECT_THAT(json.out, HasSubstr(R"("loaded":false,"version":"","name":"","repositories":[],)"
                                    R"("error":"the module refused to be attached")"));
}

TEST_F(Program, SaysSoWhereNoRepositoryIsLoaded) {
    configure({});
    EXPECT_THAT(run({"--json", "info"}).out, StartsWith("{\"ok\":true,\"modules\":[],\"project\":"));
    Finished const finished = run({"search", "cat"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_THAT(finished.err, HasSubstr("no repository is loaded"));
}

TEST_F(Program, TakesTheRepositoryOfTheGivenName) {
    configure({programFile("tarn7.zqd"), testModule("fixed")});
    EXPECT_THAT(run({"--repository", "T7", "columns"}).out, HasSubstr("1003"));
    EXPECT_THAT(run({"--repository", "FX", "columns"}).out, Not(HasSubstr("1003")));
    Finished const unknown = run({"--repository", "XX", "columns"});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_THAT(unknown.err, HasSubstr("\"XX\""));
}

TEST_F(Program, WithTheModuleSwitchedOffHasNoRepository) {
    configure({programFile("tarn7.zqd")}, "[config]\nt7 = 0\n");
    EXPECT_THAT(answers({"info"})[0],
                HasSubstr(R"("loaded":true,"version":"14.7.2.0","name":"Tarn7","repositories":[])"));
}

using Shell = Program;

TEST_F(Shell, GoesOnAfterAFailureAndTellsItAtTheEnd) {
    configure({testModule("fixed")});
    Finished const finished = run({"--json", "shell"}, "bogus\n\n# a remark\n'open\nshell\nstats\n");
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.out, "{\"ok\":false,\"error\":\"there is no command \\\"bogus\\\"; \\\"help\\\" lists "
                            "the commands\"}\n"
                            "{\"ok\":false,\"error\":\"a quote is not closed, or nothing follows a "
                            "backslash\"}\n"
                            "{\"ok\":false,\"error\":\"this is the shell already\"}\n" +
                                noRequests() + "\n");
    EXPECT_EQ(run({"shell"}, "stats\n").status, 0);
}

TEST_F(Shell, EndsAtQuitExitAndTheEndOfInput) {
    configure({testModule("fixed")});
    for (char const* const last : {"quit\n", "exit\n", ""}) {
        EXPECT_EQ(run({"shell"}, std::string("stats\n") + last).out, "no requests so far\n") << last;
    }
    EXPECT_EQ(run({"shell"}, "quit\nstats\n").out, "");
}

TEST_F(Shell, SurvivesALineThatIsTooLong) {
    configure({testModule("fixed")});
    Finished const finished = run({"--json", "shell"}, "search " + std::string(100'000, 'x') + "\nstats\n");
    EXPECT_EQ(finished.out,
              "{\"ok\":false,\"error\":\"the line is longer than 65536 bytes\"}\n" + noRequests() + "\n");
}

TEST_F(Shell, PromptsOnATerminalOnly) {
    configure({testModule("fixed")});
    auto const terminal = start({"shell"}, RunningProgram::Around::terminal);
    static_cast<void>(terminal->readThrough("zq> "));
    terminal->write("stats\n");
    EXPECT_THAT(terminal->readThrough("zq> "), HasSubstr("no requests so far"));
    terminal->write("quit\n");
    EXPECT_EQ(terminal->finish().status, 0);
    Finished const pipes = run({"shell"}, "stats\n");
    EXPECT_EQ(pipes.out + pipes.err, "no requests so far\n");
}

TEST_F(Shell, EndsInOrderAtCtrlCOnThePrompt) {
    configure({testModule("fixed")});
    auto const terminal = start({"shell"}, RunningProgram::Around::terminal);
    static_cast<void>(terminal->readThrough("zq> "));
    terminal->write("\x03");
    EXPECT_EQ(terminal->finish().status, 130);
}

TEST_F(Shell, EndsInOrderWhenItIsTerminated) {
    configure({testModule("fixed")});
    auto const program = start({"--json", "shell"});
    program->write("stats\n");
    EXPECT_EQ(program->readLine(), noRequests());
    program->sendSignal(SIGTERM);
    Finished const finished = program->finish();
    EXPECT_EQ(finished.status, 143);
    EXPECT_EQ(finished.out + finished.err, "");
}

TEST_F(Shell, EndsQuietlyWhenNobodyReadsItsOutput) {
    configure({testModule("fixed")});
    auto const program = start({"--json", "shell"});
    program->write("stats\n");
    static_cast<void>(program->readLine());
    program->closeOutput();
    program->write("stats\n");
    Finished const finished = program->finish();
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.err, "");
}

TEST_F(Shell, HidesThePasswordThatIsTyped) {
    configure({testModule("fixed")});
    auto const terminal = start({"shell"}, RunningProgram::Around::terminal);
    static_cast<void>(terminal->readThrough("zq> "));
    terminal->write("login anna\n");
    static_cast<void>(terminal->readThrough("password: "));
    terminal->write("open sesame\n");
    EXPECT_THAT(terminal->readThrough("zq> "), Not(HasSubstr("sesame")));
    terminal->write("stats\n");
    EXPECT_THAT(terminal->readThrough("no requests"), HasSubstr("stats")) << "what is typed shows again";
    terminal->write("quit\n");
    EXPECT_EQ(terminal->finish().status, 1) << "this repository signs nobody in";
}

TEST_F(Shell, GivesUpASignInAtCtrlCOnThePassword) {
    configure({testModule("fixed")});
    auto const terminal = start({"shell"}, RunningProgram::Around::terminal);
    static_cast<void>(terminal->readThrough("zq> "));
    terminal->write("login anna\n");
    static_cast<void>(terminal->readThrough("password: "));
    terminal->write("\x03");
    EXPECT_THAT(terminal->readThrough("zq> "), HasSubstr("interrupted"));
    terminal->write("quit\n");
    EXPECT_EQ(terminal->finish().status, 1);
}

TEST_F(Shell, FailsASignInWithoutAPassword) {
    configure({testModule("fixed")});
    EXPECT_THAT(run({"--json", "login", "anna"}).out, HasSubstr("should be the password"));
    EXPECT_EQ(run({"login", "anna", "secret"}, "x\n").status, 1) << "a password is no argument";
}

} // namespace
