#include "tests/tarn7/Tarn7Fixture.h"

namespace tarn7_tests {
namespace {

class Locations : public Tarn7Test {
protected:
    static RemoteAsset asset(std::string_view id, std::string_view extension = "mov") {
        RemoteAsset result;
        result.id = wide(id);
        result.mediaExtension = wide(extension);
        return result;
    }
    std::string remote(std::string_view id, TestResource::eMediaType kind) {
        return utf8(resource.getRemoteLocation(asset(id), kind));
    }
    std::string local(std::string_view id, std::string_view extension = "mov") {
        return utf8(resource.getLocalMediaLocation(asset(id, extension), TestResource::eFullMedia));
    }
    void setBases() {
        resource.iconBase = L"https://cdn.test/i";
        resource.previewBase = L"https://cdn.test/p";
    }
};

TEST_F(Locations, TheExtensionIsMov) {
    EXPECT_EQ(utf8(resource.getFileExtension()), "mov");
}

TEST_F(Locations, BeforeAnyAnswerThereIsNoRemoteLocation) {
    EXPECT_EQ(remote("123", TestResource::eThumbnail), "");
    EXPECT_EQ(remote("123", TestResource::eFullMedia), "");
    EXPECT_EQ(remote("123", TestResource::ePreview), "");
}

TEST_F(Locations, EachKindNeedsItsOwnBaseAlone) {
    resource.iconBase = L"https://cdn.test/i";
    EXPECT_NE(remote("123", TestResource::eThumbnail), "");
    EXPECT_EQ(remote("123", TestResource::ePreview), "");
    resource.iconBase = L"";
    resource.previewBase = L"https://cdn.test/p";
    EXPECT_EQ(remote("123", TestResource::eThumbnail), "");
    EXPECT_NE(remote("123", TestResource::ePreview), "");
}

TEST_F(Locations, AShortIdIsFilledWithZerosToNineDigits) {
    setBases();
    EXPECT_EQ(remote("", TestResource::ePreview), "https://cdn.test/p/000000000.mov");
    EXPECT_EQ(remote("123", TestResource::ePreview), "https://cdn.test/p/000000123.mov");
    EXPECT_EQ(remote("12345678", TestResource::ePreview), "https://cdn.test/p/012345678.mov");
    EXPECT_EQ(remote("-1", TestResource::ePreview), "https://cdn.test/p/0000000-1.mov");
}

TEST_F(Locations, AnIdOfNineDigitsOrMoreStaysAsItIs) {
    setBases();
    EXPECT_EQ(remote("123456789", TestResource::ePreview), "https://cdn.test/p/123456789.mov");
    EXPECT_EQ(remote("123456789012", TestResource::ePreview), "https://cdn.test/p/123456789012.mov");
}

TEST_F(Locations, TheThumbnailLiesUnderItsOwnBase) {
    setBases();
    EXPECT_EQ(remote("", TestResource::eThumbnail), "https://cdn.test/i/000000000_iconm.jpeg");
    EXPECT_EQ(remote("123", TestResource::eThumbnail), "https://cdn.test/i/000000123_iconm.jpeg");
    EXPECT_EQ(remote("123456789", TestResource::eThumbnail), "https://cdn.test/i/123456789_iconm.jpeg");
    EXPECT_EQ(remote("123456789012", TestResource::eThumbnail), "https://cdn.test/i/123456789012_iconm.jpeg");
}

TEST_F(Locations, EveryKindButTheThumbnailIsThePreview) {
    setBases();
    EXPECT_EQ(remote("7", TestResource::eFullMedia), remote("7", TestResource::ePreview));
    EXPECT_EQ(remote("7", static_cast<TestResource::eMediaType>(9)), remote("7", TestResource::ePreview));
}

TEST_F(Locations, ASlashAtTheEndOfTheBaseIsNotDoubled) {
    resource.previewBase = L"https://cdn.test/p/";
    EXPECT_EQ(remote("123", TestResource::ePreview), "https://cdn.test/p/000000123.mov");
}

TEST_F(Locations, TheLocalFileIsNamedByTheIdAsItIs) {
    EXPECT_EQ(local("123"), "/media/Tarn7/123.mov");
    EXPECT_EQ(local("123456789012", "mp4"), "/media/Tarn7/123456789012.mp4");
    EXPECT_EQ(local("-1"), "/media/Tarn7/-1.mov");
}

TEST_F(Locations, HostileNamesStayInTheFolder) {
    std::vector<std::pair<std::string, std::string>> const names = {
        {"../../etc/passwd", "mov"},
        {"..", ""},
        {"", ""},
        {"", "."},
        {"/etc/passwd", "x"},
        {"1", "../../../x"},
        {"1", "/../x"},
        {"..\\..\\x", "mov"},
        {"a/b", "c/d"},
        {std::string("1\0/x", 4), "mov"},
        {"1\n2", "m\rov"},
        {"CON", "mov"},
        {"~", "mov"},
        {std::string(5000, 'x'), std::string(5000, 'y')},
    };
    for (auto const& [id, extension] : names) {
        std::string const path = local(id, extension);
        std::string const folder = "/media/Tarn7/";
        ASSERT_TRUE(path.starts_with(folder)) << path;
        std::string const name = path.substr(folder.size());
        EXPECT_FALSE(name.empty());
        EXPECT_LE(name.size(), 255U);
        EXPECT_NE(name, ".");
        EXPECT_NE(name, "..");
        EXPECT_EQ(name.find_first_of(std::string_view("/\\\0\r\n", 5)), std::string::npos) << path;
        EXPECT_EQ(name.find(".."), std::string::npos) << path;
    }
}

TEST_F(Locations, TwoHostileNamesAreTwoFiles) {
    EXPECT_NE(local("a/b"), local("a\\b"));
    EXPECT_NE(local("a/b"), local("a_b"));
}

TEST_F(Locations, OtherKindsAreTheBasesToPlace) {
    setBases();
    RemoteAsset preview = asset("123");
    preview.proxyLocation =
        resource.makeVirtualPath(resource.getRemoteLocation(preview, TestResource::ePreview));
    EXPECT_EQ(utf8(resource.getLocalMediaLocation(preview, TestResource::ePreview)),
              "/cache/partial/000000123.partial");
    EXPECT_EQ(utf8(resource.getLocalMediaLocation(preview, TestResource::eThumbnail)), "");
    (void)host.cache.store(resource.getRemoteLocation(preview, TestResource::eThumbnail), "picture", 7);
    EXPECT_EQ(utf8(resource.getLocalMediaLocation(preview, TestResource::eThumbnail)),
              "/cache/https://cdn.test/i/000000123_iconm.jpeg");
}

class Provider : public Tarn7Test {
protected:
    bool handles(wchar_t const* path) { return resource.handlesFile(path); }
};

TEST_F(Provider, FilesThatEndInTheTwoExtensionsAreHandled) {
    EXPECT_TRUE(handles(L"Virtual:T7 https://cdn.test/p/000000123.mov"));
    EXPECT_TRUE(handles(L"/a/b.mp4"));
    EXPECT_TRUE(handles(L".mov"));
    EXPECT_TRUE(handles(L".mp4"));
}

TEST_F(Provider, OtherEndingsAreNot) {
    for (wchar_t const* const path : {L"a.MOV", L"a.Mov", L"a.MP4", L"a.mov ", L"a.mov?x", L"a.mpg", L"mov",
                                      L"xmov", L"a.mo", L"a.mp4.part"}) {
        EXPECT_FALSE(handles(path)) << utf8(path);
    }
}

TEST_F(Provider, PathsBelowFourCharactersAreNot) {
    for (wchar_t const* const path : {L"", L"v", L"ov", L"mov", L"mp4", L".mo"}) {
        EXPECT_FALSE(handles(path)) << utf8(path);
    }
}

TEST_F(Provider, ItsNameIsTheShortName) {
    EXPECT_EQ(utf8(resource.getProviderName()), "T7");
}

TEST_F(Provider, AVirtualPathIsThePrefixTheNameOneBlankAndTheLocation) {
    EXPECT_EQ(utf8(resource.makeVirtualPath(L"https://h.test/a b.mov?q")),
              "Virtual:T7 https://h.test/a b.mov?q");
    EXPECT_EQ(utf8(resource.makeVirtualPath(L"")), "Virtual:T7 ");
}

TEST_F(Provider, EveryMappingGivesThePathBack) {
    for (wchar_t const* const path : {L"", L"/a/b.mov", L"Virtual:T7 https://h.test/../x"}) {
        EXPECT_EQ(resource.mapPath(path), path);
        EXPECT_EQ(resource.mapPathForReading(path), path);
        EXPECT_EQ(resource.mapPathForWriting(path), path);
    }
}

TEST_F(Provider, ItsFilesAreRemoteNotWritableAndNotTemporary) {
    EXPECT_TRUE(resource.isRemote());
    EXPECT_FALSE(resource.isWritable());
    EXPECT_FALSE(resource.isTemporary());
}

} // namespace
} // namespace tarn7_tests
