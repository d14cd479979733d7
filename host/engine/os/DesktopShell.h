// The desktop of this system: its web browser and its folders.
#pragma once

#include <filesystem>
#include <mutex>
#include <string>

#include "host/os/iShell.h"

namespace engine {

// Thread: any.
class DesktopShell final : public iShell {
public:
    explicit DesktopShell(std::filesystem::path media) : media_(std::move(media)) {}

    // Starts ZQ_BROWSER where the environment names one, else xdg-open, else the first program of BROWSER: in
    // a session of its own, without a shell, with the address as its only argument.
    bool openInBrowser(WideString const& url) override;
    // The same with an HTML file of this machine; it is no page of takeLastPage.
    bool openFileInBrowser(std::filesystem::path const& file);
    // Makes the media folder where it is not there yet.
    WideString getStandardFolder(int number) override;

    // What openInBrowser was last asked for, so that its user can open it elsewhere: a browser that was
    // started may show nothing, as where there is no desktop. Empty where there is none, and after it was
    // asked for.
    struct Page {
        std::string address;
        bool started = false; // a browser
    };
    [[nodiscard]] Page takeLastPage();

private:
    void remember(Page page);

    std::filesystem::path const media_;
    std::mutex mutex_;
    Page lastPage_;
};

} // namespace engine
