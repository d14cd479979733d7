#include "apps/zq/Interpreter.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "apps/zq/JsonOutput.h"
#include "apps/zq/Words.h"

namespace zq {

namespace {

Reply mistake(std::string error) {
    Reply reply;
    reply.error = std::move(error);
    return reply;
}

// The command line library takes a word in brackets for a list. A mark behind the word keeps it whole until
// it has become a value.
constexpr char wholeWord = '\x1f';

std::string markWhole(std::string word) {
    return word.starts_with('[') && word.ends_with(']') ? word + wholeWord : word;
}

std::string unmark(std::string& word) {
    if (word.starts_with('[') && word.ends_with(std::string("]") + wholeWord)) {
        word.pop_back();
    }
    return {}; // no complaint
}

std::string unknown(std::string const& name) {
    CommandEntry const* const nearest = nearestCommand(name);
    return "there is no command \"" + name + "\"" +
           (nearest != nullptr ? "; did you mean \"" + std::string(nearest->name) + "\"?"
                               : "; \"help\" lists the commands");
}

// A line of the shell, answered. False when the shell is to end.
bool answerLine(std::vector<std::string> const& words, Session& session, Output& output,
                Output::Format format, bool& allSucceeded) {
    bool const last = words.size() == 1 && (words.front() == "quit" || words.front() == "exit");
    if (last) {
        output.print({}, format);
        return false;
    }
    PreparedCommand prepared = prepareCommand(words, format);
    Reply const reply = runCommand(prepared, session);
    output.print(reply, prepared.format);
    allSucceeded = allSucceeded && reply.ok();
    return true;
}

} // namespace

PreparedCommand prepareCommand(std::vector<std::string> const& words, Output::Format format) {
    bool const asksForOne = words.size() > 1 && words.front() == "help" && !words[1].starts_with('-');
    if (asksForOne) {
        std::vector<std::string> asked{words[1], "--help"};
        asked.insert(asked.end(), words.begin() + 2, words.end());
        return prepareCommand(asked, format);
    }
    PreparedCommand prepared;
    prepared.format = format;
    prepared.entry = findCommand(words.front());
    if (prepared.entry == nullptr) {
        bool const wantsJson = std::ranges::find(words, "--json") != words.end();
        prepared.format = wantsJson ? Output::Format::json : format;
        prepared.reply = mistake(unknown(words.front()));
        return prepared;
    }
    std::unique_ptr<Command> command = prepared.entry->make();
    CLI::App options(prepared.entry->summary, "zq " + std::string(prepared.entry->name));
    // Looked for by hand where the arguments are not read to their end.
    bool const wantsJson = std::ranges::find(words, "--json") != words.end();
    bool json = format == Output::Format::json;
    options.add_flag("--json", json, "answer with one line of JSON");
    command->declare(options);
    for (CLI::Option* const option : options.get_options()) {
        option->transform(CLI::Validator(unmark, ""));
    }
    try {
        std::vector<std::string> reversed;
        std::transform(words.rbegin(), words.rend() - 1, std::back_inserter(reversed), markWhole);
        options.parse(reversed);
        prepared.command = std::move(command);
    } catch (CLI::CallForHelp const&) {
        json = json || wantsJson;
        std::string const text = options.help();
        prepared.reply.text = text;
        prepared.reply.members = [text](JSON::Builder& builder) { addText(builder, "help", text); };
    } catch (CLI::ParseError const& error) {
        json = json || wantsJson;
        prepared.reply = mistake(std::string(prepared.entry->name) + ": " + error.what());
    }
    prepared.format = json ? Output::Format::json : Output::Format::text;
    return prepared;
}

Reply runCommand(PreparedCommand& prepared, Session& session) {
    if (!prepared.command) {
        return prepared.reply;
    }
    session.live().begin(prepared.format);
    Interrupts::Command const running;
    Reply reply;
    try {
        reply = prepared.command->run(session);
    } catch (std::exception const& exception) {
        reply = mistake(exception.what());
    }
    session.live().clearProgress();
    // What a cancelled request left behind looks like an empty or a failed one.
    return running.isCancelled() && !reply.standsInterrupted ? mistake("interrupted") : reply;
}

bool runShell(Session& session, Interrupts const& interrupts, Output& output, Output::Format format) {
    bool allSucceeded = true;
    auto const fail = [&](char const* error) {
        output.print(mistake(error), format);
        allSucceeded = false;
    };
    while (!output.isBroken() && interrupts.endingSignal() == 0) {
        try {
            std::optional<std::string> const line = session.input().readLine("zq> ");
            if (!line) {
                break;
            }
            std::optional<std::vector<std::string>> const words = splitWords(*line);
            if (!words) {
                fail("a quote is not closed, or nothing follows a backslash");
            } else if (!words->empty() && !answerLine(*words, session, output, format, allSucceeded)) {
                break;
            }
        } catch (std::length_error const& error) {
            fail(error.what());
        }
    }
    return allSucceeded;
}

} // namespace zq
