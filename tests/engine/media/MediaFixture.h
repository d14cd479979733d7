// What the tests of media files share: the engine's own file layer behind the door, and a task to cancel.
#pragma once

#include <fstream>
#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "host/HostServices.h"
#include "host/engine/files/LocalFileManager.h"
#include "host/engine/files/LocalPath.h"
#include "host/engine/media/MediaReader.h"
#include "host/os/OS.h"
#include "tests/engine/media/MediaFootage.h"
#include "tests/engine/network/NetworkFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace test {

class MediaFixture : public testing::Test {
protected:
    MediaFixture() {
        HostServices services;
        services.files = &files;
        services.tasks = &task;
        before_ = installHost(services);
    }
    ~MediaFixture() override { (void)installHost(before_); }

    [[nodiscard]] static WideString footage(std::string const& name) {
        return engine::wideText(mediaFootage(name));
    }
    [[nodiscard]] static std::unique_ptr<engine::MediaReader> reader(std::string const& name) {
        engine::Result<std::unique_ptr<engine::MediaReader>> opened =
            engine::MediaReader::open(footage(name));
        EXPECT_TRUE(opened) << name << ": " << opened.error();
        return opened ? std::move(*opened) : nullptr;
    }
    // Writes a file of the test's own.
    [[nodiscard]] WideString write(std::string const& name, std::string const& bytes) const {
        std::filesystem::path const path = folder.path() / name;
        std::ofstream(path, std::ios::binary) << bytes;
        return engine::wideText(path);
    }
    [[nodiscard]] static std::string bytesOf(std::filesystem::path const& file) {
        std::ifstream in(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }

    TemporaryFolder folder;
    engine::LocalFileManager files{L"test", folder.path() / "journal"};
    OneTask task;

private:
    HostServices before_;
};

// A file around another one that counts, and that a test can have fail.
class WatchedFile final : public iFile {
public:
    explicit WatchedFile(Zq::Ptr<iFile> inner) : inner_(std::move(inner)) {}

    bool write(void const*, std::uint32_t) override { return false; }
    std::int64_t read(void* bytes, std::uint32_t size) override {
        ++reads;
        if (beforeRead) {
            beforeRead();
        }
        if (failing) {
            return -1;
        }
        std::int64_t const got = inner_->read(bytes, size);
        bytesRead += got > 0 ? static_cast<std::uint64_t>(got) : 0;
        return got;
    }
    bool setPosition(std::uint64_t position) override { return inner_->setPosition(position); }
    std::uint64_t getPosition() override { return inner_->getPosition(); }
    std::uint64_t getSize() override { return inner_->getSize(); }

    int reads = 0;
    std::uint64_t bytesRead = 0;
    bool failing = false;
    std::function<void()> beforeRead;

private:
    Zq::Ptr<iFile> const inner_;
};

} // namespace test
