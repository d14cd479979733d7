#include "host/engine/files/LocalFileManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>

#include "host/engine/files/LocalPath.h"
#include "host/modules/ZqComponentBase.h"
#include "host/text/Unicode.h"
#include "repository/iFileProvider.h"
#include "tests/engine/local/Bytes.h"
#include "tests/engine/local/InstalledLog.h"
#include "tests/engine/local/OtherProcess.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LocalFiles : public testing::Test {
protected:
    [[nodiscard]] WideString at(char const* name) const { return engine::wideText(folder_.path() / name); }
    [[nodiscard]] Zq::Ptr<iFile> open(char const* name) { return files_.openForWrite(at(name), 2, 1, 0, 0); }
    [[nodiscard]] std::size_t notes() const {
        std::size_t count = 0;
        for (auto const& entry : std::filesystem::directory_iterator(journal_)) {
            count += entry.path().extension() == ".path" ? 1U : 0U;
        }
        return count;
    }

    test::TemporaryFolder folder_;
    std::filesystem::path const journal_ = folder_.path() / "journal";
    engine::LocalFileManager files_{L"Zq Host", journal_};
    test::InstalledLog log_;
};

TEST_F(LocalFiles, WhatIsWrittenIsInTheFile) {
    {
        Zq::Ptr<iFile> const file = open("a.mov");
        ASSERT_TRUE(file);
        EXPECT_TRUE(file->write("abc", 3));
        EXPECT_TRUE(file->write("def", 3));
        EXPECT_EQ(file->getPosition(), 6U);
        EXPECT_EQ(file->getSize(), 6U);
    }
    EXPECT_EQ(test::readBytes(folder_.path() / "a.mov"), "abcdef");
}

TEST_F(LocalFiles, OpeningForWritingEmptiesTheFile) {
    test::writeBytes(folder_.path() / "a.mov", "old content");
    open("a.mov").reset();
    EXPECT_EQ(std::filesystem::file_size(folder_.path() / "a.mov"), 0U);
}

TEST_F(LocalFiles, APositionCanBeSetUpToTheEndAndNotBehindIt) {
    Zq::Ptr<iFile> const file = open("a.mov");
    ASSERT_TRUE(file->write("0123456789", 10));
    EXPECT_TRUE(file->setPosition(10));
    EXPECT_FALSE(file->setPosition(11));
    EXPECT_FALSE(file->setPosition(0xffffffffffffffffULL));
    EXPECT_EQ(file->getPosition(), 10U);
    ASSERT_TRUE(file->setPosition(4));
    char bytes[20];
    EXPECT_EQ(file->read(bytes, sizeof bytes), 6);
    EXPECT_EQ(std::string_view(bytes, 6), "456789");
    EXPECT_EQ(file->read(bytes, sizeof bytes), 0);
}

TEST_F(LocalFiles, BytesThatDoNotFitOnTheDiskShowInTheResultOfWrite) {
    Zq::Ptr<iFile> const file = open("a.mov");
    ASSERT_TRUE(file);
    // The system's limit on a file's size stands in for a full disk.
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    rlimit const small{100, before.rlim_max};
    auto const oldHandler = signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    std::string const bytes(101, 'x');
    bool const whole = file->write(bytes.data(), 101);
    setrlimit(RLIMIT_FSIZE, &before);
    signal(SIGXFSZ, oldHandler);
    EXPECT_FALSE(whole);
    EXPECT_EQ(file->getSize(), 100U);
}

TEST_F(LocalFiles, APlaceThatCannotBeWrittenGivesNoFile) {
    std::filesystem::create_directory(folder_.path() / "folder");
    ASSERT_EQ(mkfifo((folder_.path() / "pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink("/dev/full", folder_.path() / "device");
    EXPECT_FALSE(open("folder"));
    EXPECT_FALSE(open("device"));
    EXPECT_FALSE(open("pipe"));
    EXPECT_FALSE(open("gone/a.mov"));
    EXPECT_FALSE(files_.openForWrite(WideString(), 2, 1, 0, 0));
    EXPECT_EQ(notes(), 0U);
}

TEST_F(LocalFiles, APathWithAZeroCharacterReachesNoFile) {
    test::writeBytes(folder_.path() / "a", "kept");
    WideString const path = at("a") + WideString(L"\0.mov", 5);
    EXPECT_FALSE(files_.openForWrite(path, 2, 1, 0, 0));
    EXPECT_FALSE(files_.fileExists(path));
    EXPECT_FALSE(files_.deleteFile(path));
    EXPECT_FALSE(files_.createDirectory(path));
    EXPECT_EQ(test::readBytes(folder_.path() / "a"), "kept");
}

TEST_F(LocalFiles, NamesOfAnyScriptAndWithControlCharactersAreKeptAsTheyAre) {
    for (wchar_t const* const name :
         {L"\u30af\u30ea\u30c3\u30d7.mov", L"a\nb.mov", L"--help", L"$(x) `y` 'z'.mov"}) {
        WideString const path = engine::wideText(folder_.path()) + L"/" + name;
        ASSERT_TRUE(files_.openForWrite(path, 2, 1, 0, 0));
        EXPECT_TRUE(files_.fileExists(path));
        EXPECT_TRUE(files_.deleteFile(path));
        EXPECT_FALSE(files_.fileExists(path));
    }
}

TEST_F(LocalFiles, DeletingEndsInNoFileOrFails) {
    test::writeBytes(folder_.path() / "a", "");
    std::filesystem::create_directory(folder_.path() / "folder");
    EXPECT_TRUE(files_.deleteFile(at("a")));
    EXPECT_TRUE(files_.deleteFile(at("a"))) << "there is none any more";
    EXPECT_TRUE(files_.deleteFile(at("gone/a")));
    EXPECT_FALSE(files_.deleteFile(at("folder")));
    EXPECT_FALSE(files_.deleteFile(WideString()));
}

TEST_F(LocalFiles, AFolderIsNoFile) {
    EXPECT_FALSE(files_.fileExists(engine::wideText(folder_.path())));
    EXPECT_FALSE(files_.fileExists(WideString()));
}

TEST_F(LocalFiles, FoldersAreMadeWithThoseAboveThem) {
    EXPECT_TRUE(files_.createDirectory(at("a/b/c")));
    EXPECT_TRUE(files_.createDirectory(at("a/b/c")));
    EXPECT_TRUE(std::filesystem::is_directory(folder_.path() / "a/b/c"));
    test::writeBytes(folder_.path() / "file", "");
    EXPECT_FALSE(files_.createDirectory(at("file")));
    EXPECT_FALSE(files_.createDirectory(at("file/below")));
    EXPECT_FALSE(files_.createDirectory(WideString()));
}

TEST_F(LocalFiles, TheHostIsCalledByItsName) {
    EXPECT_EQ(files_.getHostName(), WideString(L"Zq Host"));
    EXPECT_EQ(files_.pathSeparator(), L'/');
}

TEST_F(LocalFiles, AFileStandsInTheJournalUntilItIsClosed) {
    Zq::Ptr<iFile> file = open("a.mov");
    EXPECT_EQ(notes(), 1U);
    file.reset();
    EXPECT_EQ(notes(), 0U);
    EXPECT_THAT(files_.journal().removeUnfinished(), IsEmpty());
    EXPECT_TRUE(files_.fileExists(at("a.mov")));
}

TEST_F(LocalFiles, AFileThatIsStillBeingWrittenIsNotUnfinished) {
    Zq::Ptr<iFile> const file = open("a.mov");
    ASSERT_TRUE(file->write("half", 4));
    EXPECT_THAT(engine::WriteJournal(journal_).removeUnfinished(), IsEmpty());
    EXPECT_TRUE(files_.fileExists(at("a.mov")));
    EXPECT_EQ(notes(), 1U);
}

TEST_F(LocalFiles, AFileThatAKilledHostLeftShortIsRemovedWithALogLine) {
    std::filesystem::path const target = folder_.path() / "a.mov";
    test::OtherProcess other({"download", journal_, target});
    ASSERT_EQ(other.readLine(), "open");
    EXPECT_THAT(files_.journal().removeUnfinished(), IsEmpty()) << "its writer lives";
    other.kill();
    (void)other.wait();
    EXPECT_EQ(test::readBytes(target), "half");
    EXPECT_THAT(files_.journal().removeUnfinished(), ElementsAre(target));
    EXPECT_FALSE(std::filesystem::exists(target));
    EXPECT_EQ(log_.count(target.native()), 1);
    EXPECT_EQ(notes(), 0U);
}

TEST_F(LocalFiles, AFileThatIsWrittenAnewAfterItWasCutShortIsWhole) {
    std::filesystem::path const target = folder_.path() / "a.mov";
    std::filesystem::create_directories(journal_);
    test::writeBytes(target, "half");
    test::writeBytes(journal_ / "1.path", target.native());
    test::writeBytes(journal_ / "2.path", (folder_.path() / "b.mov").native());
    ASSERT_TRUE(open("a.mov")->write("whole", 5));
    EXPECT_EQ(notes(), 1U) << "what is noted of another file stays";
    EXPECT_THAT(files_.journal().removeUnfinished(), IsEmpty());
    EXPECT_EQ(test::readBytes(target), "whole");
}

TEST_F(LocalFiles, NotesThatAreDamagedRemoveNothingElse) {
    std::filesystem::create_directories(journal_);
    std::filesystem::create_directory(folder_.path() / "kept");
    test::writeBytes(journal_ / "1.path", "");
    test::writeBytes(journal_ / "2.path", (folder_.path() / "kept").native());
    test::writeBytes(journal_ / "3.path", std::string(200'000, 'x'));
    test::writeBytes(journal_ / "4.path", "gone/nowhere");
    EXPECT_THAT(files_.journal().removeUnfinished(), IsEmpty());
    EXPECT_TRUE(std::filesystem::is_directory(folder_.path() / "kept"));
    EXPECT_EQ(notes(), 0U);
}

TEST_F(LocalFiles, WithoutAJournalNothingIsWritten) {
    test::writeBytes(folder_.path() / "file", "");
    engine::LocalFileManager files(L"Zq Host", folder_.path() / "file" / "journal");
    EXPECT_FALSE(files.openForWrite(at("a.mov"), 2, 1, 0, 0));
    EXPECT_FALSE(std::filesystem::exists(folder_.path() / "a.mov"));
}

class Provider : public iFileProvider, public ZqComponentBase {
public:
    explicit Provider(wchar_t const* name) : name_(name) {}
    Zq::Ptr<iFile> openFile(WideString const&, int, int, int, int) override { return {}; }
    bool handlesFile(WideString const& path) const override { return path.endsWith(L".mov"); }
    iFileManager::eCopyRC copyFile(WideString const&, WideString const&, bool,
                                   iFileManager::ProgressCallback) override {
        return iFileManager::eSourceNotOpened;
    }
    WideString getProviderName() const override { return name_; }
    WideString mapPath(WideString const& path) const override { return path; }
    bool isRemote() const override { return true; }
    WideString mapPathForReading(WideString const& path) const override { return path; }
    WideString mapPathForWriting(WideString const& path) const override { return path; }

private:
    WideString name_;
};

class Providers : public LocalFiles {
protected:
    Zq::Ptr<Provider> const t7_ = Zq::makeShared<Provider>(L"T7");
    Zq::Ptr<Provider> const longer_ = Zq::makeShared<Provider>(L"T7 archive");
};

TEST_F(Providers, AVirtualPathLeadsToTheProviderOfItsName) {
    files_.registerProvider(*t7_);
    EXPECT_EQ(files_.findProvider(t7_->makeVirtualPath(L"https://a.example/1.mov")), t7_.get());
    for (wchar_t const* const other : {L"Virtual:T8 https://a/1.mov", L"Virtual:T7", L"Virtual:T7x a",
                                       L"T7 a", L"virtual:T7 a", L"/Virtual:T7 a", L""}) {
        EXPECT_EQ(files_.findProvider(other), nullptr) << toUTF8(other).c_str();
    }
}

TEST_F(Providers, TheLongestNameThatFitsWins) {
    files_.registerProvider(*t7_);
    files_.registerProvider(*longer_);
    EXPECT_EQ(files_.findProvider(L"Virtual:T7 archive https://a/1.mov"), longer_.get());
    EXPECT_EQ(files_.findProvider(L"Virtual:T7 https://a/1.mov"), t7_.get());
}

TEST_F(Providers, OfEqualNamesTheFirstRegisteredWins) {
    Zq::Ptr<Provider> const second = Zq::makeShared<Provider>(L"T7");
    files_.registerProvider(*t7_);
    files_.registerProvider(*second);
    EXPECT_EQ(files_.findProvider(L"Virtual:T7 a"), t7_.get());
}

TEST_F(Providers, AForgottenComponentsProviderIsGoneAndTheOthersStay) {
    files_.registerProvider(*t7_);
    files_.registerProvider(*t7_);
    files_.registerProvider(*longer_);
    files_.forgetProvidersOf(*t7_);
    EXPECT_EQ(files_.findProvider(L"Virtual:T7 a"), nullptr);
    EXPECT_EQ(files_.findProvider(L"Virtual:T7 archive a"), longer_.get());
}

TEST_F(Providers, AForgottenProviderIsGoneAndTheOthersStay) {
    files_.registerProvider(*t7_);
    files_.registerProvider(*longer_);
    files_.forgetProvider(*longer_);
    files_.forgetProvider(*longer_);
    EXPECT_EQ(files_.findProvider(L"Virtual:T7 archive a"), t7_.get());
    files_.forgetProvider(*t7_);
    EXPECT_EQ(files_.findProvider(L"Virtual:T7 archive a"), nullptr);
}

TEST_F(Providers, AProviderWithoutANameGetsNoPath) {
    Zq::Ptr<Provider> const nameless = Zq::makeShared<Provider>(L"");
    files_.registerProvider(*nameless);
    EXPECT_EQ(files_.findProvider(L"Virtual: a"), nullptr);
}

TEST_F(Providers, AVirtualPathNeverReachesTheDisk) {
    files_.registerProvider(*t7_);
    EXPECT_TRUE(files_.fileExists(L"Virtual:T7 https://a/1.mov"));
    EXPECT_FALSE(files_.fileExists(L"Virtual:T7 https://a/1.txt"));
    EXPECT_FALSE(files_.fileExists(L"Virtual:T8 https://a/1.mov"));
    EXPECT_FALSE(files_.openForWrite(L"Virtual:T7 1.mov", 2, 1, 0, 0));
    EXPECT_FALSE(files_.openForWrite(L"Virtual:T8 1.mov", 2, 1, 0, 0));
    EXPECT_FALSE(files_.deleteFile(L"Virtual:T7 1.mov"));
    EXPECT_FALSE(files_.createDirectory(L"Virtual:T7 folder"));
    EXPECT_FALSE(std::filesystem::exists("Virtual:T7 1.mov"));
}

} // namespace
