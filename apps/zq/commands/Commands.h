// Where the table of commands gets them from: one function a command, each in the file of its family.
#pragma once

#include <memory>

namespace zq {

class Command;

[[nodiscard]] std::unique_ptr<Command> makeInfo();
[[nodiscard]] std::unique_ptr<Command> makeLogin();
[[nodiscard]] std::unique_ptr<Command> makeLogout();
[[nodiscard]] std::unique_ptr<Command> makeForm();
[[nodiscard]] std::unique_ptr<Command> makeOptions();
[[nodiscard]] std::unique_ptr<Command> makeSet();
[[nodiscard]] std::unique_ptr<Command> makeColumns();
[[nodiscard]] std::unique_ptr<Command> makeSearch();
[[nodiscard]] std::unique_ptr<Command> makeThumbnail();
[[nodiscard]] std::unique_ptr<Command> makeStats();
[[nodiscard]] std::unique_ptr<Command> makeShell();
[[nodiscard]] std::unique_ptr<Command> makeHelp();

} // namespace zq
