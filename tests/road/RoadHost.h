// A real host in a folder of its own, with the Tarn7 client in it: what a person runs, without a screen. Only
// the browser and the log are the test's.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "host/HostServices.h"
#include "host/engine/Engine.h"
#include "host/os/iShell.h"
#include "tarn7/Tarn7Resource.h"
#include "tests/fake_host/FakeSystem.h"

namespace road_tests {

[[nodiscard]] std::string utf8(WideString const& text);
[[nodiscard]] WideString wide(std::string_view text);
// The bytes of a file; empty where there is none.
[[nodiscard]] std::string bytesOf(std::filesystem::path const& file);
// Whether bytes are the same, told without writing them all out.
[[nodiscard]] bool same(std::string_view some, std::string_view others);

// What a fetch tells the person. Thread: any.
class FetchLog final : public LoggerBase {
public:
    struct Line {
        std::string text;
        eOutputType type = ePlain;
        int indent = 0;
        [[nodiscard]] bool operator==(Line const&) const = default;
    };

    void write(WideString const& text, eOutputType type) override;
    void incIndent() override;
    void decIndent() override;
    void reportProgress(double fraction, WideString const& text) override;

    [[nodiscard]] std::vector<Line> lines() const;
    [[nodiscard]] int indent() const;

private:
    mutable std::mutex mutex_;
    std::vector<Line> lines_;
    int indent_ = 0;
};

// For failure messages.
void PrintTo(FetchLog::Line const& line, std::ostream* out);

// The client with the operations open that a test asks for.
class RoadResource final : public Tarn7Resource {
public:
    using Tarn7Resource::sendCommand;
};

// Thread: the test's own, unless an operation says otherwise.
class RoadHost {
public:
    // The names of the services lead to `server`, and the authority is trusted. The home folder and the media
    // folder lie in `folder`. Throws std::runtime_error where the engine does not start.
    RoadHost(std::filesystem::path const& folder, std::string const& server, std::filesystem::path const& ca);
    ~RoadHost();
    RoadHost(RoadHost const&) = delete;
    RoadHost& operator=(RoadHost const&) = delete;

    [[nodiscard]] engine::Engine& engine() noexcept { return *engine_; }
    [[nodiscard]] RoadResource& client() noexcept { return *client_; }
    // Ends everything and starts it again on the same folder, signed out.
    void restart();

    void connect();
    // The result of the sign-in.
    std::int32_t signIn(std::string_view user, std::string_view password);
    [[nodiscard]] SearchResults search(std::string_view words);
    // What the account owns; one asset of it by its id. A default one where it is not owned.
    [[nodiscard]] RemoteAsset owned(std::string_view id);

    // Runs the work as a task and waits for its end.
    void asTask(std::function<void()> work);
    struct Fetch {
        bool result = false;
        std::vector<FetchLog::Line> lines;
        bool isIndentBack = false;
    };
    // Opens the edit, fetches in a task, waits.
    [[nodiscard]] Fetch fetch(RemoteAsset const& asset);

    // The final path of the asset's full file.
    [[nodiscard]] std::filesystem::path fullFile(RemoteAsset const& asset);
    // What the asset's edit plays: its full media; empty where it plays its preview.
    [[nodiscard]] std::string playedMedia(RemoteAsset const& asset);
    // All of a file of the host, local or virtual: its bytes, or "(failed)". Thread: any.
    [[nodiscard]] static std::string readThroughHost(WideString const& path);

    // Of all files in the media folder, by their place in it.
    [[nodiscard]] std::vector<std::string> mediaFiles() const;
    [[nodiscard]] std::filesystem::path mediaFolder() const { return folder_ / "media"; }
    [[nodiscard]] std::filesystem::path home() const { return folder_ / "home"; }
    // Of the host's log.
    [[nodiscard]] std::vector<std::string> logLines() const { return log_.lines(); }
    [[nodiscard]] std::vector<std::string> openedPages() const;

private:
    // Keeps what a browser would show.
    class Desktop final : public iShell {
    public:
        bool openInBrowser(WideString const& url) override {
            opened.push_back(utf8(url));
            return true;
        }
        [[nodiscard]] WideString getStandardFolder(int number) override {
            return real->getStandardFolder(number);
        }
        std::vector<std::string> opened;
        iShell* real = nullptr;
    };
    void start();
    void end();

    std::filesystem::path const folder_;
    fake::LogSink log_;
    Desktop desktop_;
    std::unique_ptr<engine::Engine> engine_;
    std::unique_ptr<RoadResource> client_;
};

} // namespace road_tests
