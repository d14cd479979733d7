#include "apps/zq/panel/EntryPage.h"

#include <system_error>

#include "apps/zq/Reply.h"
#include "host/engine/files/WholeFile.h"

namespace zq::panel {

std::string leadTo(std::string_view address) {
    std::string page = "<!DOCTYPE html><html><head><meta charset=\"utf-8\"><title>zq</title>"
                       "<meta name=\"referrer\" content=\"no-referrer\">"
                       "<meta http-equiv=\"refresh\" content=\"0; url=";
    for (char const c : address) {
        page += c == '&' ? "&amp;" : std::string(1, c);
    }
    return page + "\"></head></html>\n";
}

EntryPage::EntryPage(std::filesystem::path file, std::string_view address) : file_(std::move(file)) {
    if (!engine::writeWholeFile(file_, leadTo(address), engine::Durability::cache, engine::Readers::owner)) {
        throw CommandError(file_.native() + " cannot be written");
    }
}

EntryPage::~EntryPage() {
    std::error_code error;
    std::filesystem::remove(file_, error);
}

} // namespace zq::panel
