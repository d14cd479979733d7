#include "host/engine/settings/HomeFolder.h"

#include <cerrno>
#include <cstdlib>

#include <sys/stat.h>
#include <unistd.h>

namespace engine {

namespace {

std::filesystem::path fromEnvironment(char const* name) {
    char const* const value = std::getenv(name);
    return value != nullptr ? std::filesystem::path(value) : std::filesystem::path();
}

std::filesystem::path chooseHome(std::filesystem::path const& given) {
    if (!given.empty()) {
        return given;
    }
    if (std::filesystem::path named = fromEnvironment("ZQ_HOME"); !named.empty()) {
        return named;
    }
    // A relative path in this variable is invalid by its own definition.
    if (std::filesystem::path const data = fromEnvironment("XDG_DATA_HOME"); data.is_absolute()) {
        return data / "zq";
    }
    if (std::filesystem::path const user = fromEnvironment("HOME"); user.is_absolute()) {
        return user / ".local/share/zq";
    }
    return {};
}

} // namespace

Result<std::filesystem::path> findHomeFolder(std::filesystem::path const& given) {
    std::filesystem::path const chosen = chooseHome(given);
    if (chosen.empty()) {
        return Failure{"no home folder: set ZQ_HOME or give --home"};
    }
    std::error_code error;
    std::filesystem::path home = std::filesystem::absolute(chosen, error).lexically_normal();
    if (!error && !std::filesystem::is_directory(home, error)) {
        std::filesystem::create_directories(home.parent_path(), error);
        if (!error && ::mkdir(home.c_str(), 0700) != 0 && errno != EEXIST) {
            error = std::error_code(errno, std::generic_category());
        }
    }
    if (!error && ::access(home.c_str(), W_OK | X_OK) != 0) {
        error = std::error_code(errno, std::generic_category());
    }
    if (!error && !std::filesystem::is_directory(home, error)) {
        error = std::make_error_code(std::errc::not_a_directory);
    }
    if (error) {
        return Failure{"the home folder " + home.native() + " cannot be used (" + error.message() +
                       "): make it writable, or choose another with ZQ_HOME or --home"};
    }
    return home;
}

std::filesystem::path findProgramFolder() {
    std::error_code error;
    std::filesystem::path const program = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::path() : program.parent_path();
}

} // namespace engine
