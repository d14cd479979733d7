// The folder that one running service owns: its database, accounts, certificates and renditions.
#pragma once

#include <filesystem>

namespace tarn7d {

// Makes the folder if it is missing, for its owner alone. Throws std::runtime_error saying why not.
void makePrivateFolder(std::filesystem::path const& folder);

// Holds the folder for this process, by a lock that ends with the process however it ends.
class DataFolder {
public:
    // Makes the folder if it is missing, for its owner alone, and locks it. Throws std::runtime_error saying
    // why not: it cannot be made or written, or another service runs on it.
    explicit DataFolder(std::filesystem::path const& folder);
    ~DataFolder();
    DataFolder(DataFolder const&) = delete;
    DataFolder& operator=(DataFolder const&) = delete;

    [[nodiscard]] std::filesystem::path const& path() const noexcept { return path_; }

private:
    std::filesystem::path path_;
    int lock_ = -1;
};

} // namespace tarn7d
