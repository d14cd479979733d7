#include "host/engine/preferences/setAside.h"

#include <array>
#include <ctime>
#include <string>
#include <system_error>

namespace engine {

namespace {

std::filesystem::path freeName(std::filesystem::path const& database) {
    std::time_t const now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    std::array<char, 32> stamp{};
    std::strftime(stamp.data(), stamp.size(), ".damaged-%Y%m%d-%H%M%S", &parts);
    std::string const base = database.native() + stamp.data();
    std::string name = base;
    std::error_code error;
    for (int i = 2; std::filesystem::exists(name, error); ++i) {
        name = base + "-" + std::to_string(i);
    }
    return name;
}

} // namespace

std::filesystem::path setAside(std::filesystem::path const& database) {
    std::filesystem::path const target = freeName(database);
    std::error_code error;
    // The file itself goes last: while it stands, what lies beside it belongs to it.
    for (char const* const suffix : {"-wal", "-shm"}) {
        std::filesystem::rename(database.native() + suffix, target.native() + suffix, error);
    }
    std::filesystem::rename(database, target, error);
    return error ? std::filesystem::path() : target;
}

} // namespace engine
