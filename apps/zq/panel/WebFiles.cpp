#include "apps/zq/panel/WebFiles.h"

#include <algorithm>
#include <optional>
#include <system_error>

#include "apps/zq/panel/ApiError.h"
#include "host/engine/files/WholeFile.h"

namespace zq::panel {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t largestFile = std::size_t{8} << 20; // bytes
constexpr char const* pageType = "text/html; charset=utf-8";
constexpr std::uint32_t year_s = 365 * 24 * 60 * 60; // names of assets change with their content

struct Kind {
    std::string_view extension;
    char const* type;
};
constexpr Kind kinds[] = {
    {".css", "text/css; charset=utf-8"},
    {".ico", "image/x-icon"},
    {".js", "text/javascript; charset=utf-8"},
    {".json", "application/json; charset=utf-8"},
    {".png", "image/png"},
    {".svg", "image/svg+xml"},
    {".webp", "image/webp"},
    {".woff2", "font/woff2"},
};

constexpr char const* notBuilt =
    "<!doctype html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>zq panel</title></head>\n"
    "<body><h1>The page was not built</h1>\n"
    "<p>The program runs, but the files of its page are missing. Build the target zq_panel_web, or start "
    "with ./run, then start the panel again.</p></body></html>\n";

} // namespace

WebFiles::WebFiles(fs::path const& folder) : page_(notBuilt) {
    std::optional<std::string> page =
        folder.empty() ? std::nullopt : engine::readWholeFile(folder / "index.html", largestFile);
    if (!page) {
        return;
    }
    page_ = std::move(*page);
    built_ = true;
    std::error_code error;
    for (fs::directory_iterator entry(folder / "assets", error), end; !error && entry != end;
         entry.increment(error)) {
        auto const* const kind =
            std::ranges::find(kinds, std::string_view(entry->path().extension().native()), &Kind::extension);
        if (kind == std::end(kinds)) {
            continue;
        }
        if (std::optional<std::string> bytes = engine::readWholeFile(entry->path(), largestFile)) {
            assets_.emplace(entry->path().filename().native(), File{kind->type, std::move(*bytes)});
        }
    }
}

Response WebFiles::page() const {
    Response response;
    response.type = pageType;
    response.body = page_;
    return response;
}

Response WebFiles::asset(std::string_view name) const {
    auto const found = assets_.find(name);
    if (found == assets_.end()) {
        throw ApiError(ErrorCode::notFound, "the page has no such file");
    }
    Response response;
    response.type = found->second.type;
    response.body = found->second.bytes;
    response.fresh_s = year_s;
    return response;
}

fs::path findWebFolder(fs::path const& programFolder) {
    for (char const* const place : {"../panel", "../share/zq/panel"}) {
        fs::path folder = (programFolder / place).lexically_normal();
        std::error_code error;
        if (fs::is_regular_file(folder / "index.html", error)) {
            return folder;
        }
    }
    return {};
}

} // namespace zq::panel
