// The engine: all services of the host, built from its home folder and put behind the doors of the host
// library.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "host/HostServices.h"
#include "host/engine/settings/HostSettings.h"
#include "host/engine/settings/Result.h"

namespace engine {

class CurlNetwork;
class DesktopShell;
class Project;
class SpdlogSink;
class StreamingFiles;
class TaskQueue;

struct EngineOptions {
    std::filesystem::path home;          // empty: ZQ_HOME, else the user's data folder
    std::string language;                // empty: that of host.toml, else the environment's
    std::filesystem::path programFolder; // empty: the folder of the running program
    std::filesystem::path stringsFolder; // empty: found from the program's folder
};

// Thread: the one that started it, for all of this; the services themselves take any thread.
class Engine {
public:
    // Builds and installs the services, and removes the media files that an earlier run left cut short. One
    // failure text, for a person, where the home folder, host.toml or the texts cannot be used; nothing is
    // installed then. Allocation and the counting of owners stay those of the record before.
    [[nodiscard]] static Result<std::unique_ptr<Engine>> start(EngineOptions const& options);
    // Puts the record before back. No module is loaded any more, and no other thread uses a service.
    ~Engine();
    Engine(Engine const&) = delete;
    Engine& operator=(Engine const&) = delete;

    [[nodiscard]] std::filesystem::path const& home() const noexcept;
    [[nodiscard]] HostSettings const& settings() const noexcept;
    // The language of the texts, as "de".
    [[nodiscard]] std::string const& language() const noexcept;
    // The folders that are searched for modules: those of host.toml, else the program's and, where it is
    // there, lib/zq/modules beside the program's.
    [[nodiscard]] std::vector<std::filesystem::path> moduleFolders() const;
    [[nodiscard]] CurlNetwork& network() noexcept;
    [[nodiscard]] DesktopShell& shell() noexcept;
    [[nodiscard]] StreamingFiles& streams() noexcept;
    [[nodiscard]] Project& project() noexcept;
    // What runs when the engine ends is cancelled and waited for. A program whose tasks use a module ends
    // them with TaskQueue::shutDown before it unloads that.
    [[nodiscard]] TaskQueue& tasks() noexcept;

private:
    struct Environment;
    struct Services;
    Engine(HostServices const& before, std::unique_ptr<Environment> environment,
           std::unique_ptr<SpdlogSink> log, std::unique_ptr<Services> services);

    HostServices const before_;
    std::unique_ptr<Environment> const environment_;
    std::unique_ptr<SpdlogSink> const log_; // outlives the services, which write to it
    std::unique_ptr<Services> const services_;
};

} // namespace engine
