// A folder for one test, gone with everything in it when the test ends.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

#include <stdlib.h>

namespace test {

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "zq-test-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        path_ = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    [[nodiscard]] std::filesystem::path const& path() const noexcept { return path_; }

private:
    std::filesystem::path path_;
};

} // namespace test
