#include "repository/iFileProvider.h"

#include <gtest/gtest.h>

#include "tests/fake_host/FakeHost.h"
#include "tests/repository/TestRepository.h"

namespace repository_tests {
namespace {

class SizedFile final : public iFile {
public:
    explicit SizedFile(std::uint64_t size) : size_(size) {}
    bool write(void const*, std::uint32_t) override { return false; }
    std::int64_t read(void*, std::uint32_t) override { return -1; }
    bool setPosition(std::uint64_t) override { return false; }
    std::uint64_t getPosition() override { return 0; }
    std::uint64_t getSize() override { return size_; }

private:
    std::uint64_t size_;
};

TEST(FileProvider, AVirtualPathIsThePrefixTheNameABlankAndTheLocation) {
    TestProvider const provider;
    EXPECT_EQ(provider.makeVirtualPath(L"https://media.test/a.mov"), L"Virtual:T7 https://media.test/a.mov");
}

TEST(FileProvider, AVirtualPathOfNothingStillEndsInItsBlank) {
    TestProvider const provider;
    EXPECT_EQ(provider.makeVirtualPath(L""), L"Virtual:T7 ");
}

TEST(FileProvider, WithoutANameTheVirtualPathStillHasItsBlank) {
    TestProvider provider;
    provider.name.clear();
    EXPECT_EQ(provider.makeVirtualPath(L"a"), L"Virtual: a");
    iFileProvider const& plain = provider;
    EXPECT_TRUE(plain.iFileProvider::getProviderName().isEmpty());
}

TEST(FileProvider, TheSizeIsThatOfTheOpenedFile) {
    TestProvider provider;
    provider.file = Zq::makeShared<SizedFile>(std::uint64_t{5'000'000'000});
    EXPECT_EQ(provider.getFileSize(L"Virtual:T7 a.mov"), 5'000'000'000U);
    EXPECT_EQ(provider.opened, (std::vector<std::vector<int>>{{1, 0, 4, 0}}));
}

TEST(FileProvider, TheSizeOfWhatDoesNotOpenIsZero) {
    TestProvider provider;
    EXPECT_EQ(provider.getFileSize(L"Virtual:T7 a.mov"), 0U);
}

TEST(FileProvider, TheKindIsOneEvenOfWhatDoesNotOpen) {
    TestProvider provider;
    EXPECT_EQ(provider.getFileKind(L"Virtual:T7 a.mov"), 1);
    provider.file = Zq::makeShared<SizedFile>(std::uint64_t{3});
    EXPECT_EQ(provider.getFileKind(L"Virtual:T7 a.mov"), 1);
}

TEST(FileProvider, TheInfoHoldsThePathTheKindAndTheSize) {
    TestProvider provider;
    FileInfo info = provider.getFileInfo(L"Virtual:T7 a.mov");
    EXPECT_EQ(info.path, L"Virtual:T7 a.mov");
    EXPECT_EQ(info.kind, 1);
    EXPECT_EQ(info.size, 0U);
    EXPECT_EQ(info.created, 0);
    EXPECT_EQ(info.modified, 0);
    provider.file = Zq::makeShared<SizedFile>(std::uint64_t{3});
    info = provider.getFileInfo(L"b");
    EXPECT_EQ(info.path, L"b");
    EXPECT_EQ(info.size, 3U);
}

TEST(FileProvider, TheInfoAsksForTheSizeThroughTheProvidersOwnOperation) {
    class Sized : public TestProvider {
    public:
        std::uint64_t getFileSize(WideString const&) override { return 42; }
    } provider;
    EXPECT_EQ(provider.getFileInfo(L"a").size, 42U);
    EXPECT_TRUE(provider.opened.empty());
}

TEST(FileProvider, TheFileLayerForgetsAProviderThatEnds) {
    fake::Host host;
    TestProvider other;
    host.files.registerProvider(other);
    {
        TestProvider provider;
        host.files.registerProvider(provider);
        ASSERT_EQ(host.files.providers.size(), 2U);
        TestProvider const never;
    }
    EXPECT_EQ(host.files.providers, std::vector<iFileProvider*>{&other});
}

TEST(FileProvider, AProviderMayOutliveTheHost) {
    TestProvider provider;
    {
        fake::Host host;
        host.files.registerProvider(provider);
    }
    EXPECT_EQ(installedHost().files, nullptr);
}

TEST(FileProvider, ItIsNeitherWritableNorTemporaryUnlessItSaysSo) {
    TestProvider provider;
    EXPECT_FALSE(provider.isWritable());
    EXPECT_FALSE(provider.isTemporary());
    provider.handleFolderChange();
    EXPECT_TRUE(provider.opened.empty());
}

} // namespace
} // namespace repository_tests
