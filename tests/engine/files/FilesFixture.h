// A file manager with a journal in a folder of the test, behind the host's door.
#pragma once

#include <filesystem>

#include <gtest/gtest.h>

#include "host/HostServices.h"
#include "host/engine/files/FileTransfer.h"
#include "host/engine/files/LocalFileManager.h"
#include "host/engine/files/LocalPath.h"
#include "tests/engine/local/InstalledLog.h"
#include "tests/support/TemporaryFolder.h"

namespace test {

class FilesFixture : public testing::Test {
protected:
    FilesFixture() {
        HostServices services = installedHost();
        services.files = &files_;
        before_ = installHost(services);
    }
    ~FilesFixture() override { installHost(before_); }

    [[nodiscard]] std::filesystem::path at(char const* name) const { return folder_.path() / name; }
    [[nodiscard]] Zq::Ptr<iFile> open(std::filesystem::path const& file) {
        return files_.openForWrite(engine::wideText(file), 2, 1, 0, 0);
    }
    [[nodiscard]] Zq::Ptr<iFile> open(std::filesystem::path const& file,
                                      Zq::Ptr<engine::FileTransfer> const& transfer) {
        engine::FileTransfer::Scope const scope(transfer);
        return open(file);
    }
    bool remove(std::filesystem::path const& file) { return files_.deleteFile(engine::wideText(file)); }
    [[nodiscard]] std::size_t notes() const {
        std::size_t count = 0;
        std::error_code error;
        for (auto const& entry : std::filesystem::directory_iterator(journal_, error)) {
            count += entry.path().extension() == ".path" ? 1U : 0U;
        }
        return count;
    }

    TemporaryFolder folder_;
    std::filesystem::path const journal_ = folder_.path() / "journal";
    engine::LocalFileManager files_{L"Zq Host", journal_};
    InstalledLog log_;

private:
    HostServices before_;
};

} // namespace test
