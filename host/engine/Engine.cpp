#include "host/engine/Engine.h"

#include <exception>

#include "host/engine/crypto/OpenSSLHash.h"
#include "host/engine/files/DiskCache.h"
#include "host/engine/files/LocalFileManager.h"
#include "host/engine/json/SimdjsonReader.h"
#include "host/engine/log/SpdlogSink.h"
#include "host/engine/media/MediaFacts.h"
#include "host/engine/network/CurlNetwork.h"
#include "host/engine/os/DesktopShell.h"
#include "host/engine/os/SystemClock.h"
#include "host/engine/os/TaskContext.h"
#include "host/engine/pictures/PictureDecoder.h"
#include "host/engine/preferences/SqlitePreferences.h"
#include "host/engine/project/Project.h"
#include "host/engine/resources/TomlStrings.h"
#include "host/engine/settings/HomeFolder.h"
#include "host/engine/settings/TomlConfiguration.h"
#include "host/engine/streaming/StreamingFiles.h"
#include "host/engine/tasks/TaskQueue.h"
#include "host/text/Unicode.h"

namespace engine {

// What the services are built from.
struct Engine::Environment {
    std::filesystem::path home;
    std::filesystem::path programFolder;
    HostSettings settings;
    std::string language;
};

struct Engine::Services {
    Services(Environment const& environment, std::unique_ptr<TomlStrings> texts,
             std::unique_ptr<Project> ownProject)
        : files(fromUTF8(std::string_view(environment.settings.hostName)), environment.home / "unfinished"),
          shell(environment.settings.mediaFolder), network(environment.settings.network),
          preferences(environment.home / "preferences.sqlite"), configuration(environment.settings.config),
          strings(std::move(texts)),
          cache(environment.settings.cacheFolder, cacheLimit_bytes(environment) / 4),
          streams(environment.settings.cacheFolder / "streams.sqlite", cacheLimit_bytes(environment) / 4 * 3),
          project(std::move(ownProject)) {}

    // A quarter is for thumbnails and the like, the rest for what streams.
    [[nodiscard]] static std::uint64_t cacheLimit_bytes(Environment const& environment) {
        return static_cast<std::uint64_t>(environment.settings.cacheLimit_MiB) << 20;
    }

    [[nodiscard]] HostServices record(HostServices const& before, iLogSink& log) {
        HostServices services;
        services.memory = before.memory;
        services.refCounts = before.refCounts;
        services.files = &files;
        services.shell = &shell;
        services.security = &security;
        services.network = &network;
        services.preferences = &preferences;
        services.configuration = &configuration;
        services.strings = strings.get();
        services.log = &log;
        services.json = &json;
        services.clock = &clock;
        services.cache = &cache;
        services.images = &images;
        services.tasks = &tasks;
        services.edits = project.get();
        services.externalIds = project.get();
        services.streams = &streams;
        return services;
    }

    LocalFileManager files;
    DesktopShell shell;
    OpenSSLSecurity security;
    CurlNetwork network;
    SqlitePreferences preferences;
    TomlConfiguration configuration;
    std::unique_ptr<TomlStrings> const strings;
    SimdjsonReader json;
    SystemClock clock;
    DiskCache cache;
    PictureDecoder images;
    StreamingFiles streams;
    TaskContext tasks;
    std::unique_ptr<Project> const project;
    TaskQueue queue; // the last: its tasks use the others
};

namespace {

// The log stands behind its door alone while the other services are built, which write to it.
HostServices installLogOnly(iLogSink& log) {
    HostServices services = installedHost();
    services.log = &log;
    return installHost(services);
}

} // namespace

Engine::Engine(HostServices const& before, std::unique_ptr<Environment> environment,
               std::unique_ptr<SpdlogSink> log, std::unique_ptr<Services> services)
    : before_(before), environment_(std::move(environment)), log_(std::move(log)),
      services_(std::move(services)) {}

Result<std::unique_ptr<Engine>> Engine::start(EngineOptions const& options) {
    auto environment = std::make_unique<Environment>();
    environment->programFolder = options.programFolder.empty() ? findProgramFolder() : options.programFolder;

    Result<std::filesystem::path> home = findHomeFolder(options.home);
    if (!home) {
        return Failure{home.error()};
    }
    environment->home = *home;

    Result<HostSettings> settings = loadHostSettings(*home);
    if (!settings) {
        return Failure{settings.error()};
    }
    environment->settings = std::move(*settings);

    std::filesystem::path const folder =
        options.stringsFolder.empty() ? findStringsFolder(environment->programFolder) : options.stringsFolder;
    if (folder.empty()) {
        return Failure{"no folder with the host's texts beside " + environment->programFolder.native() +
                       ": expected \"strings\" there or \"share/zq/strings\" beside it"};
    }
    environment->language = !options.language.empty() ? options.language
                            : !environment->settings.language.empty()
                                ? environment->settings.language
                                : environmentLanguage(availableLanguages(folder));
    Result<std::unique_ptr<TomlStrings>> texts = TomlStrings::load(folder, environment->language);
    if (!texts) {
        return Failure{texts.error()};
    }

    HostServices const before = installedHost();
    try {
        auto log = std::make_unique<SpdlogSink>(environment->home / "logs");
        (void)installLogOnly(*log);
        Result<std::unique_ptr<Project>> project =
            Project::open(environment->home / "project.sqlite", inspectMedia);
        if (!project) {
            (void)installHost(before);
            return Failure{project.error()};
        }
        auto services = std::make_unique<Services>(*environment, std::move(*texts), std::move(*project));
        for (std::string const& problem : services->network.problems()) {
            Log("%s", problem.c_str());
        }
        (void)services->files.journal().removeUnfinished();
        (void)installHost(services->record(before, *log));
        return std::unique_ptr<Engine>(
            new Engine(before, std::move(environment), std::move(log), std::move(services)));
    } catch (std::exception const& error) {
        (void)installHost(before);
        return Failure{std::string("the host's services cannot be started: ") + error.what()};
    }
}

Engine::~Engine() {
    services_->queue.shutDown();
    services_->streams.end(); // its thread lets go of objects, through the doors
    (void)installHost(before_);
}

std::filesystem::path const& Engine::home() const noexcept {
    return environment_->home;
}

HostSettings const& Engine::settings() const noexcept {
    return environment_->settings;
}

std::string const& Engine::language() const noexcept {
    return environment_->language;
}

std::vector<std::filesystem::path> Engine::moduleFolders() const {
    if (!environment_->settings.modulePath.empty()) {
        return environment_->settings.modulePath;
    }
    std::vector<std::filesystem::path> folders{environment_->programFolder};
    std::filesystem::path installed = (environment_->programFolder / "../lib/zq/modules").lexically_normal();
    std::error_code error;
    if (std::filesystem::is_directory(installed, error)) {
        folders.push_back(std::move(installed));
    }
    return folders;
}

CurlNetwork& Engine::network() noexcept {
    return services_->network;
}

DesktopShell& Engine::shell() noexcept {
    return services_->shell;
}

StreamingFiles& Engine::streams() noexcept {
    return services_->streams;
}

Project& Engine::project() noexcept {
    return *services_->project;
}

TaskQueue& Engine::tasks() noexcept {
    return services_->queue;
}

} // namespace engine
