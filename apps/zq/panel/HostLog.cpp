#include "apps/zq/panel/HostLog.h"

#include <algorithm>
#include <deque>
#include <string_view>

#include "host/engine/files/WholeFile.h"
#include "host/engine/log/SpdlogSink.h"
#include "host/engine/log/maskSecrets.h"

namespace zq::panel {

namespace {

// The lines of the text in front of those that are there, up to the number.
void addInFront(std::deque<std::string>& lines, std::string_view text, std::size_t most) {
    while (!text.empty() && lines.size() < most) {
        if (text.back() == '\n') {
            text.remove_suffix(1);
        }
        std::size_t const end = text.rfind('\n');
        std::size_t const begin = end == std::string_view::npos ? 0 : end + 1;
        lines.push_front(engine::maskSecrets(text.substr(begin)));
        text = text.substr(0, begin);
    }
}

} // namespace

std::vector<std::string> lastLogLines(std::filesystem::path const& home, std::size_t most) {
    constexpr std::size_t room = std::size_t{1} << 20; // a line can go beyond the size of the file
    std::deque<std::string> lines;
    for (char const* const name : {"host.log", "host.1.log"}) {
        if (lines.size() < most) {
            addInFront(lines,
                       engine::readWholeFile(home / "logs" / name, engine::SpdlogSink::fileSize_bytes + room)
                           .value_or(std::string()),
                       most);
        }
    }
    return {lines.begin(), lines.end()};
}

} // namespace zq::panel
