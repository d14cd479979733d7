// The plug-in modules of this process: found in folders, loaded, asked for their repositories, unloaded.
//
// Loading is a transaction: a module either is loaded, with its repositories, or is gone again and its report
// says why. A module that fails never keeps the others from loading.
#pragma once

#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

class ZqPluginBase;
class iMediaFileRepository;

namespace engine {

// What became of one module, or of a folder that could not be read.
struct ModuleReport {
    std::filesystem::path path;
    bool loaded = false;
    std::string version; // of the plug-in, UTF-8; empty where it was not reached
    std::string name;
    std::vector<iMediaFileRepository*> repositories; // the plug-in's; they end when the module is unloaded
    std::string error;                               // why it is not loaded, one line
};

// Thread: loader, for all of this. Needs an installed host. Nothing of a module may be in use when it is
// unloaded.
class ModuleLoader {
public:
    // How the name of a module's file ends.
    static constexpr char const* extension = ".zqd";

    ModuleLoader();
    ModuleLoader(ModuleLoader const&) = delete;
    ModuleLoader& operator=(ModuleLoader const&) = delete;
    // Unloads.
    ~ModuleLoader();

    // Loads every module of the folders, folder by folder in the order of their names, then tells the loaded
    // ones that all are there. A relative or missing folder is reported like a module that does not load.
    void loadFolders(std::span<std::filesystem::path const> folders);
    // Loads these files in this order, then tells the loaded ones that all are there.
    void loadFiles(std::span<std::filesystem::path const> files);

    // One report for each module in the order of loading, failed ones included. Valid until the next load.
    [[nodiscard]] std::span<ModuleReport const> reports() const noexcept { return reports_; }
    // The repositories of all loaded modules: those of a higher priority first, of one priority in the order
    // of loading.
    [[nodiscard]] std::vector<iMediaFileRepository*> repositories() const;

    // Unloads every module, the last loaded first. The reports are gone afterwards.
    void unload() noexcept;

private:
    struct Module;

    void collect(std::filesystem::path const& folder, std::vector<std::filesystem::path>& files);
    void loadFile(std::filesystem::path const& asked, std::vector<std::size_t>& fresh);
    void enumerationEnds(std::vector<std::size_t> const& fresh);

    std::vector<ModuleReport> reports_;
    std::vector<std::unique_ptr<Module>> modules_; // one a report; null where it is not loaded
};

} // namespace engine
