// Files that stream from servers, in memory.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/files/StreamingFile.h"

namespace fake {

// A server knows what was put on it; every other name opens as a file of size 0. Thread: any.
class StreamingFiles final : public iStreamingFiles {
public:
    // What a file was asked for with.
    struct Open {
        std::string server;
        std::string remoteName;
        std::string source;
        std::string cachePath;
        [[nodiscard]] bool operator==(Open const&) const = default;
    };

    [[nodiscard]] Zq::Ptr<StreamingFile> create(Zq::Ptr<iHTTPServer> const& server,
                                                WideString const& remoteName, WideString source,
                                                WideString const& cachePath) override;

    // The server has a file of that name from now on.
    void put(std::string const& server, std::string const& name, std::string content);
    // No file can be made for that name, on whichever server.
    void refuse(std::string const& name);

    // Every file that was asked for, in order.
    [[nodiscard]] std::vector<Open> opened() const;
    // Files that somebody still has open.
    [[nodiscard]] long openCount() const { return alive_.use_count() - 1; }

private:
    mutable std::mutex mutex_;
    std::map<std::pair<std::string, std::string>, std::string> contents_;
    std::set<std::string> refused_;
    std::vector<Open> opened_;
    std::shared_ptr<int> alive_ = std::make_shared<int>(); // shared by the files that are open
};

} // namespace fake
