#include <algorithm>
#include <numeric>
#include <vector>

#include "apps/zq/Command.h"
#include "apps/zq/commands/Commands.h"

namespace zq {

namespace {

constexpr CommandEntry table[] = {
    {"info", "modules, and how their repositories present themselves", makeInfo},
    {"login", "sign in; the password is asked for or read from the next line of input", makeLogin},
    {"logout", "sign out", makeLogout},
    {"form", "the fields of the sign-in form", makeForm},
    {"options", "what a search can be narrowed with, and how it is set", makeOptions},
    {"set", "change a search option", makeSet},
    {"columns", "the columns of the results list", makeColumns},
    {"search", "search for clips", makeSearch},
    {"thumbnail", "write the picture of a clip to a PNG file", makeThumbnail},
    {"play", "play the preview of a clip, and write a frame of it", makePlay},
    {"open", "the edit of a clip, with all that is set on it", makeOpen},
    {"place", "place a piece of a clip in a sequence", makePlace},
    {"edits", "the edits of the project", makeEdits},
    {"sequence", "a sequence with its timecodes, or the names of all", makeSequence},
    {"move", "move a piece to another position of its sequence", makeMove},
    {"trim", "have a piece show less or more of its clip", makeTrim},
    {"remove", "remove a piece from its sequence", makeRemove},
    {"undo", "take the last step back", makeUndo},
    {"redo", "do again what was taken back last", makeRedo},
    {"usage", "what the clips of a sequence cost", makeUsage},
    {"buy", "buy clips", makeBuy},
    {"owned", "the clips that the account owns", makeOwned},
    {"fetch", "fetch the full files of owned clips and relink their edits", makeFetch},
    {"find", "the clip that an edit comes from", makeFind},
    {"relink", "have an edit play another file, or check what that would change", makeRelink},
    {"export", "write a sequence for another editor or player", makeExport},
    {"tasks", "what goes on in the background", makeTasks},
    {"cancel", "cancel a task", makeCancel},
    {"panel", "the media browser: a page in the web browser of this machine", makePanel},
    {"demo", "walk the whole road once, on the embedded service", makeDemo},
    {"stats", "what was exchanged with each service since the start", makeStats},
    {"shell", "read commands from standard input, one a line", makeShell},
    {"help", "this list, or more about one command", makeHelp},
};

// Levenshtein's distance.
std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            std::size_t const substituted = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({substituted, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

} // namespace

std::span<CommandEntry const> commandTable() {
    return table;
}

CommandEntry const* findCommand(std::string_view name) {
    auto const* const found = std::ranges::find(table, name, &CommandEntry::name);
    return found != std::end(table) ? found : nullptr;
}

CommandEntry const* nearestCommand(std::string_view name) {
    constexpr std::size_t farthest = 2;
    if (name.size() > 32) {
        return nullptr;
    }
    auto const* const nearest = std::ranges::min_element(
        table, {}, [&](CommandEntry const& entry) { return distance(entry.name, name); });
    return distance(nearest->name, name) <= farthest ? nearest : nullptr;
}

std::string commandList() {
    constexpr std::size_t nameWidth = 12;
    std::string list = "Commands:\n";
    for (CommandEntry const& entry : table) {
        std::string name = entry.name;
        name.resize(nameWidth, ' ');
        list += "  " + name + entry.summary + "\n";
    }
    return list + "COMMAND --help or help COMMAND tells more about one of them.\n";
}

} // namespace zq
