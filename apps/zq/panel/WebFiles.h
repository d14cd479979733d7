// The built files of the panel's page, held in memory: no name in a request ever reaches the disk.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "apps/zq/panel/Route.h"

namespace zq::panel {

// Thread: any; nothing in it changes.
class WebFiles {
public:
    // Reads index.html and the files of assets/, those of a known kind. Where they cannot be read the page
    // says that it was not built.
    explicit WebFiles(std::filesystem::path const& folder);

    [[nodiscard]] bool isBuilt() const noexcept { return built_; }
    [[nodiscard]] Response page() const;
    // Throws ApiError(notFound).
    [[nodiscard]] Response asset(std::string_view name) const;

private:
    struct File {
        std::string type;
        std::string bytes;
    };
    std::string page_;
    bool built_ = false;
    std::map<std::string, File, std::less<>> assets_;
};

// The folder of the page's files for a program in that folder: that of its build, or the installed one. Empty
// where there is none. Thread: any.
[[nodiscard]] std::filesystem::path findWebFolder(std::filesystem::path const& programFolder);

} // namespace zq::panel
