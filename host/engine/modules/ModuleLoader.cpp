#include "host/engine/modules/ModuleLoader.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "host/engine/modules/SharedObject.h"
#include "host/log/Log.h"
#include "host/modules/ModuleThreads.h"
#include "host/modules/PluginEntry.h"
#include "host/modules/ZqComponentBase.h"
#include "host/modules/ZqPluginBase.h"
#include "repository/iMediaFileRepository.h"

namespace engine {

namespace {

namespace fs = std::filesystem;

// Runs a step of the plug-in and says what it threw. The exception's code may lie in the module, so no part
// of it outlives this function.
template <class Step>
std::optional<std::string> failureOf(char const* step, Step&& run) noexcept {
    try {
        try {
            run();
            return std::nullopt;
        } catch (std::exception const& exception) {
            return std::string(step) + " failed: " + exception.what();
        } catch (...) {
            return std::string(step) + " failed with an exception of an unknown type";
        }
    } catch (...) {
        return std::string(); // no memory to say more
    }
}

std::string text(NarrowString const& narrow) {
    return std::string(narrow.view());
}

SharedObject attach(fs::path const& file) {
    static_cast<void>(Zq::takeRefusal()); // of an earlier module
    SharedObject object(file);
    if (Zq::takeRefusal()) {
        throw std::runtime_error("the module refused to be attached");
    }
    return object;
}

int priorityOf(iMediaFileRepository* repository) {
    auto const* const resource = dynamic_cast<ZqResourceTypeBase const*>(repository);
    return resource != nullptr ? resource->priority() : 0;
}

ModuleReport failure(fs::path path, std::string error) {
    ModuleReport report;
    report.path = std::move(path);
    report.error = std::move(error);
    return report;
}

} // namespace

// A mapped module and its plug-in object.
struct ModuleLoader::Module {
    explicit Module(fs::path const& file) : object(attach(file)) {
        auto* const entry = reinterpret_cast<PluginEntry>(object.symbol(pluginEntryName));
        if (entry == nullptr) {
            throw std::runtime_error(std::string("the module has no entry ") + pluginEntryName);
        }
        if (auto const failed = failureOf(pluginEntryName, [&] { entry(&plugin); })) {
            throw std::runtime_error(*failed);
        }
        if (plugin == nullptr) {
            throw std::runtime_error(std::string(pluginEntryName) + " gave no plug-in");
        }
    }
    Module(Module const&) = delete;
    Module& operator=(Module const&) = delete;
    ~Module() {
        if (plugin == nullptr) {
            return;
        }
        if (auto const failed =
                failureOf("preUnloadDeinitialization", [&] { plugin->preUnloadDeinitialization(); })) {
            Log("Modules : %s", failed->c_str());
        }
    }

    SharedObject object;
    ZqPluginBase* plugin = nullptr; // the module's own
};

ModuleLoader::ModuleLoader() = default;

ModuleLoader::~ModuleLoader() {
    unload();
}

void ModuleLoader::collect(fs::path const& folder, std::vector<fs::path>& files) {
    std::error_code error;
    std::vector<fs::path> found;
    if (folder.is_relative()) {
        error = std::make_error_code(std::errc::invalid_argument);
    } else {
        fs::directory_iterator entry(folder, error);
        for (fs::directory_iterator const end; !error && entry != end; entry.increment(error)) {
            if (entry->path().native().ends_with(extension)) {
                found.push_back(entry->path());
            }
        }
    }
    if (error) {
        reports_.push_back(failure(folder, "the folder cannot be searched for modules: " + error.message()));
        modules_.push_back(nullptr);
    }
    std::ranges::sort(found);
    files.insert(files.end(), found.begin(), found.end());
}

void ModuleLoader::loadFolders(std::span<fs::path const> folders) {
    std::vector<fs::path> files;
    for (fs::path const& folder : folders) {
        collect(folder, files);
    }
    loadFiles(files);
}

void ModuleLoader::loadFiles(std::span<fs::path const> files) {
    std::vector<std::size_t> fresh;
    for (fs::path const& file : files) {
        loadFile(file, fresh);
    }
    enumerationEnds(fresh);
}

void ModuleLoader::loadFile(fs::path const& asked, std::vector<std::size_t>& fresh) {
    std::error_code error;
    fs::path const file = fs::absolute(asked, error).lexically_normal();
    // Only a plain file: opening a pipe would wait for its writer.
    if (!fs::is_regular_file(file, error)) {
        reports_.push_back(failure(file, error ? error.message() : "not a file"));
        modules_.push_back(nullptr);
        return;
    }
    for (ModuleReport const& other : reports_) {
        // A file that was replaced has its old path, and the system would give the old module again.
        if (other.loaded && (other.path == file || fs::equivalent(other.path, file, error))) {
            reports_.push_back(failure(file, "the module is loaded already, as " + other.path.string()));
            modules_.push_back(nullptr);
            return;
        }
    }
    try {
        auto module = std::make_unique<Module>(file);
        if (auto failed =
                failureOf("postLoadInitialization", [&] { module->plugin->postLoadInitialization(); })) {
            throw std::runtime_error(*failed);
        }
        ModuleReport report;
        report.path = file;
        report.loaded = true;
        report.version = text(module->plugin->getVersion());
        report.name = text(module->plugin->getName());
        for (ZqComponentBase* const component : module->plugin->getComponents()) {
            if (auto* const repository = dynamic_cast<iMediaFileRepository*>(component)) {
                report.repositories.push_back(repository);
            }
        }
        fresh.push_back(reports_.size());
        reports_.push_back(std::move(report));
        modules_.push_back(std::move(module));
    } catch (std::exception const& exception) {
        Log("Modules : %s : %s", file.c_str(), exception.what());
        reports_.push_back(failure(file, exception.what()));
        modules_.push_back(nullptr);
    }
}

void ModuleLoader::enumerationEnds(std::vector<std::size_t> const& fresh) {
    for (std::size_t const index : fresh) {
        ZqPluginBase* const plugin = modules_[index]->plugin;
        if (auto failed = failureOf("postEnumerationInitialization",
                                    [&] { plugin->postEnumerationInitialization(); })) {
            ModuleReport& report = reports_[index];
            Log("Modules : %s : %s", report.path.c_str(), failed->c_str());
            report.repositories.clear();
            report.loaded = false;
            report.error = std::move(*failed);
            modules_[index].reset();
        }
    }
}

std::vector<iMediaFileRepository*> ModuleLoader::repositories() const {
    std::vector<iMediaFileRepository*> all;
    for (ModuleReport const& report : reports_) {
        all.insert(all.end(), report.repositories.begin(), report.repositories.end());
    }
    std::ranges::stable_sort(all, std::ranges::greater(), priorityOf);
    return all;
}

void ModuleLoader::unload() noexcept {
    reports_.clear();
    while (!modules_.empty()) {
        modules_.pop_back();
    }
}

} // namespace engine
