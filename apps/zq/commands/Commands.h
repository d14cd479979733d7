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
[[nodiscard]] std::unique_ptr<Command> makePlay();
[[nodiscard]] std::unique_ptr<Command> makeOpen();
[[nodiscard]] std::unique_ptr<Command> makePlace();
[[nodiscard]] std::unique_ptr<Command> makeEdits();
[[nodiscard]] std::unique_ptr<Command> makeSequence();
[[nodiscard]] std::unique_ptr<Command> makeMove();
[[nodiscard]] std::unique_ptr<Command> makeTrim();
[[nodiscard]] std::unique_ptr<Command> makeRemove();
[[nodiscard]] std::unique_ptr<Command> makeUndo();
[[nodiscard]] std::unique_ptr<Command> makeRedo();
[[nodiscard]] std::unique_ptr<Command> makeUsage();
[[nodiscard]] std::unique_ptr<Command> makeBuy();
[[nodiscard]] std::unique_ptr<Command> makeOwned();
[[nodiscard]] std::unique_ptr<Command> makeFetch();
[[nodiscard]] std::unique_ptr<Command> makeFind();
[[nodiscard]] std::unique_ptr<Command> makeRelink();
[[nodiscard]] std::unique_ptr<Command> makeExport();
[[nodiscard]] std::unique_ptr<Command> makeTasks();
[[nodiscard]] std::unique_ptr<Command> makeCancel();
[[nodiscard]] std::unique_ptr<Command> makePanel();
[[nodiscard]] std::unique_ptr<Command> makeDemo();
[[nodiscard]] std::unique_ptr<Command> makeStats();
[[nodiscard]] std::unique_ptr<Command> makeShell();
[[nodiscard]] std::unique_ptr<Command> makeHelp();

} // namespace zq
