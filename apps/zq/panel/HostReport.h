// What a person attaches to a report of a bug.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/engine/Engine.h"
#include "host/engine/modules/ModuleLoader.h"

namespace zq::panel {

struct ReportFacts {
    std::vector<std::string> modules;  // a line each
    std::vector<std::string> accounts; // names of users: they are left out of the report wherever they stand
};

// Text with line ends: the program, the system, the modules, the settings, the end of the log. Without
// passwords, tokens, and names of users, on this machine and of the services. Thread: any.
[[nodiscard]] std::string hostReport(engine::Engine const& engine, ReportFacts const& facts);

// Lines about the modules, for the report.
[[nodiscard]] std::vector<std::string> moduleLines(std::span<engine::ModuleReport const> modules);

// The text with "***" for each of the names where it stands as a word of its own. Thread: any.
[[nodiscard]] std::string withoutWords(std::string_view text, std::span<std::string const> words);
// An address without the user and the password in it. Thread: any.
[[nodiscard]] std::string withoutUser(std::string const& address);

} // namespace zq::panel
