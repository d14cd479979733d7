// What the tests of streaming share: a network, a server of media, and streaming files with a folder of their
// own.
#pragma once

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>

#include "host/engine/streaming/RemoteFile.h"
#include "host/engine/streaming/StreamingFiles.h"
#include "tests/engine/network/NetworkFixture.h"
#include "tests/engine/streaming/MediaServer.h"
#include "tests/support/TemporaryFolder.h"

namespace test {

// Whether bytes are the same, told without writing them all out.
[[nodiscard]] inline testing::AssertionResult same(std::string_view got, std::string_view wanted) {
    if (got == wanted) {
        return testing::AssertionSuccess();
    }
    if (got.size() != wanted.size()) {
        return testing::AssertionFailure() << got.size() << " bytes in place of " << wanted.size();
    }
    auto const place = std::ranges::mismatch(got, wanted).in1 - got.begin();
    return testing::AssertionFailure() << "other bytes from " << place << " on";
}

class StreamingFixture : public NetworkFixture {
protected:
    static constexpr std::size_t kib = 1024;
    static constexpr std::size_t mib = 1024 * kib;

    StreamingFixture() {
        options.now_s = [this] { return clock_s.load(); };
    }

    // Before what a fault of the test uses goes away.
    void TearDown() override {
        streams_.reset();
        media.stop();
    }

    // Made of `options` at the first call.
    engine::StreamingFiles& streams() {
        if (!streams_) {
            streams_ =
                std::make_unique<engine::StreamingFiles>(folder.path() / "catalogue", limit_bytes, options);
        }
        return *streams_;
    }
    // Ends streaming as the end of the program does; the stores stay.
    void restart() { streams_.reset(); }

    Zq::Ptr<StreamingFile> open(std::string_view name, std::string_view cache = "clip.partial") {
        std::string const path = cache.empty() ? std::string() : (folder.path() / cache).string();
        return streams().create(server(media.name()), fromUTF8(name), L"", fromUTF8(std::string_view(path)));
    }
    [[nodiscard]] std::filesystem::path cachePath(std::string_view name = "clip.partial") const {
        return folder.path() / name;
    }
    // The bytes, or "(failed)".
    static std::string read(Zq::Ptr<StreamingFile> const& file, std::uint64_t position, std::size_t size) {
        std::string bytes(size, '\0');
        if (!file->setPosition(position)) {
            return "(failed)";
        }
        std::int64_t const count = file->read(bytes.data(), static_cast<std::uint32_t>(size));
        if (count < 0) {
            return "(failed)";
        }
        bytes.resize(static_cast<std::size_t>(count));
        return bytes;
    }
    static std::string readAll(Zq::Ptr<StreamingFile> const& file, std::size_t step = 64 * kib) {
        std::string all;
        for (;;) {
            std::string const more = read(file, all.size(), step);
            if (more == "(failed)") {
                return more;
            }
            all += more;
            if (more.size() < step) {
                return all;
            }
        }
    }
    static engine::StreamError::Kind errorOf(Zq::Ptr<StreamingFile> const& file) {
        return Zq::dynamicCast<engine::RemoteFile>(file)->lastError().kind;
    }

    TemporaryFolder folder;
    MediaServer media;
    engine::StreamingOptions options;
    std::uint64_t limit_bytes = std::uint64_t{1} << 30;
    std::atomic<std::int64_t> clock_s{1'000'000};

private:
    std::unique_ptr<engine::StreamingFiles> streams_;
};

} // namespace test
