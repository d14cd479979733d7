// The page by which the machine's browser enters: its command line, which others can read, names a file and
// not the token.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace zq::panel {

// An HTML page that leads on to the address at once.
[[nodiscard]] std::string leadTo(std::string_view address);

// A file with such a page for as long as it lives. Thread: one at a time.
class EntryPage {
public:
    // Makes the file, for its user alone. Throws CommandError where it cannot be written.
    EntryPage(std::filesystem::path file, std::string_view address);
    // Removes it.
    ~EntryPage();
    EntryPage(EntryPage const&) = delete;
    EntryPage& operator=(EntryPage const&) = delete;

    [[nodiscard]] std::filesystem::path const& file() const noexcept { return file_; }

private:
    std::filesystem::path const file_;
};

} // namespace zq::panel
