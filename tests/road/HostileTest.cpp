// Disks that are full, folders that cannot be written, names that mean harm, files that are no media, and
// lists without end.

#include <gmock/gmock.h>

#include <fstream>

#include "host/resources/resourceStr.h"
#include "tests/road/FullDisk.h"
#include "tests/road/HostileFixture.h"
#include "tests/tarn7d/TestFootage.h"

namespace {

using namespace road_tests;
namespace fs = std::filesystem;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::size_t diskSize_bytes = 4 << 20;

class Hostile : public HostileRoad {
protected:
    Hostile() {
        test::putFootage(test::Footage::plain, folder.path() / "sample.mov");
        movie_ = bytesOf(folder.path() / "sample.mov");
        sends(movie_);
    }
    [[nodiscard]] RemoteAsset only() {
        LightweightVector<RemoteAsset> const all = host().client().getPurchasedAssets();
        EXPECT_THAT(all, SizeIs(1));
        return all.empty() ? RemoteAsset() : all[0];
    }
    // Every path in the test's folder but those of the host's own.
    [[nodiscard]] std::vector<std::string> pathsAround() const {
        std::vector<std::string> paths;
        for (auto entry = fs::recursive_directory_iterator(folder.path());
             entry != fs::recursive_directory_iterator(); ++entry) {
            if (entry->path() == host_home() || entry->path() == folder.path() / "media") {
                entry.disable_recursion_pending();
            }
            paths.push_back(entry->path().string());
        }
        std::ranges::sort(paths);
        return paths;
    }
    [[nodiscard]] fs::path host_home() const { return folder.path() / "home"; }
    void expectFailedTransfer(RoadHost::Fetch const& fetch) {
        EXPECT_TRUE(fetch.result) << "the service has given an address";
        EXPECT_TRUE(fetch.isIndentBack);
        ASSERT_FALSE(fetch.lines.empty());
        EXPECT_EQ(fetch.lines.back().type, LoggerBase::eTransferFailed);
        EXPECT_THAT(fetch.lines.back().text, testing::EndsWith(" (0)"));
    }
    void expectWhole(RemoteAsset const& asset, std::string const& bytes) {
        EXPECT_TRUE(same(bytesOf(host().fullFile(asset)), bytes));
        EXPECT_EQ(host().playedMedia(asset), host().fullFile(asset).string());
    }
    // A film that does not fit on the small disk: what follows its end is skipped by every reader.
    [[nodiscard]] std::string largeMovie() const {
        std::uint32_t const size = 2 * diskSize_bytes;
        std::string box(size, 'x');
        for (std::size_t i = 0; i < 4; ++i) {
            box[i] = static_cast<char>(size >> (24 - 8 * i));
        }
        box.replace(4, 4, "free");
        return movie_ + box;
    }

    std::string movie_;
};

TEST_F(Hostile, NamesFromTheServiceNeverLeadOutOfTheMediaFolder) {
    std::string const out = (folder.path() / "escaped").string();
    LyingItem const names[] = {
        {"../escaped", "mov"},
        {"../../escaped", "mov"},
        {"..", "mov"},
        {".", ""},
        {"", ""},
        {"..\\\\..\\\\escaped", "mov"},
        {"a/b", "mov"},
        {out, "mov"},
        {"7", "../../escaped"},
        {"7", "/../../../escaped"},
        {"7\\u0000", "mov"},
        {"7", "mov\\u0000.exe"},
        {"line\\nbreak\\r", "mo\\tv"},
        {"\\u001b[2J", "mov"},
        {"\\u202e7", "vom"},
        {"CON", "mov"},
        {"nul", ""},
        {"COM1", "mov"},
        {"7", "mov:stream"},
        {"7 ", "mov. "},
        {"C:", "mov"},
        {"~", "mov"},
        {"-rf", "mov"},
        {"$(touch escaped)", "mov"},
        {"%n%s%n", "%s"},
        {std::string(5000, '9'), "mov"},
        {"7", std::string(5000, 'm')},
        {"\\ud800", "mov"},
    };
    std::vector<std::string> const before = [this] {
        fs::create_directories(host().mediaFolder());
        return pathsAround();
    }();
    for (LyingItem const& name : names) {
        SCOPED_TRACE(name.bid.substr(0, 40) + " . " + name.ext.substr(0, 40));
        fs::remove_all(host().mediaFolder() / "Tarn7");
        owns({name});
        RemoteAsset const asset = only();
        RoadHost::Fetch const fetch = host().fetch(asset);
        EXPECT_TRUE(fetch.isIndentBack);
        std::vector<std::string> const files = host().mediaFiles();
        ASSERT_THAT(files, SizeIs(1));
        fs::path const file = files[0];
        EXPECT_EQ(file.parent_path(), "Tarn7");
        EXPECT_LE(file.filename().native().size(), 255u);
        EXPECT_TRUE(same(bytesOf(host().mediaFolder() / file), movie_));
        EXPECT_TRUE(std::ranges::none_of(file.filename().native(), [](char c) {
            return (c >= 0 && c < ' ') || c == '\\' || c == ':' || c == '\x7f';
        })) << file;
        EXPECT_EQ(pathsAround(), before);
        for (FetchLog::Line const& line : fetch.lines) {
            EXPECT_TRUE(std::ranges::none_of(line.text, [](char c) { return c >= 0 && c < ' '; }));
        }
    }
}

TEST_F(Hostile, TwoNamesThatMeanTheSamePathStayTwoFiles) {
    owns({{"a/b", "mov"}, {"a\\\\b", "mov"}});
    LightweightVector<RemoteAsset> const both = host().client().getPurchasedAssets();
    ASSERT_THAT(both, SizeIs(2));
    for (RemoteAsset const& asset : both) {
        EXPECT_TRUE(host().fetch(asset).result);
    }
    EXPECT_THAT(host().mediaFiles(), SizeIs(2));
}

TEST_F(Hostile, AFullDiskEndsTheFetchInWordsAndTheNextOneSucceeds) {
    std::string const large = largeMovie();
    owns({{"7", "mov"}});
    RemoteAsset const asset = only();
    for (bool const tellsLength : {true, false}) {
        SCOPED_TRACE(tellsLength);
        sends(large, tellsLength);
        test::FullDisk const disk(host().mediaFolder(), diskSize_bytes);
        expectFailedTransfer(host().fetch(asset));
        EXPECT_THAT(host().mediaFiles(), IsEmpty());
        EXPECT_EQ(host().playedMedia(asset), "");
    }
    RoadHost::Fetch const next = host().fetch(asset);
    EXPECT_TRUE(next.result);
    expectWhole(asset, large);
}

TEST_F(Hostile, AMediaFolderThatCannotBeWrittenEndsTheFetchInWordsAndTheNextOneSucceeds) {
    owns({{"7", "mov"}});
    RemoteAsset const asset = only();
    // A file where the folder should be: that holds for every user.
    fs::remove_all(host().mediaFolder());
    std::ofstream(host().mediaFolder()) << "in the way";
    expectFailedTransfer(host().fetch(asset));
    EXPECT_EQ(bytesOf(host().mediaFolder()), "in the way");
    EXPECT_EQ(host().playedMedia(asset), "");

    fs::remove(host().mediaFolder());
    fs::create_directories(host().fullFile(asset)); // a folder where the file should be
    EXPECT_TRUE(host().fetch(asset).isIndentBack);
    EXPECT_TRUE(fs::is_directory(host().fullFile(asset)));
    EXPECT_EQ(host().playedMedia(asset), "");

    fs::remove(host().fullFile(asset));
    EXPECT_TRUE(host().fetch(asset).result);
    expectWhole(asset, movie_);
}

TEST_F(Hostile, AFullFileThatIsNoMediaIsRefusedAndAskedForAgain) {
    owns({{"7", "mov"}});
    RemoteAsset const asset = only();
    for (std::string const& bytes :
         {std::string("this is no film"), std::string(100'000, '\0'), std::string(),
          std::string("<!doctype html><title>Hello</title>"), movie_.substr(0, movie_.size() / 2)}) {
        SCOPED_TRACE(bytes.size());
        sends(bytes);
        int const asked = downloadsAsked();
        EXPECT_TRUE(host().fetch(asset).result);
        EXPECT_EQ(downloadsAsked(), asked + 1);
        EXPECT_FALSE(fs::exists(host().fullFile(asset)));
        EXPECT_EQ(host().playedMedia(asset), "") << "the edit keeps its preview";
    }
    EXPECT_THAT(host().logLines(), Contains(HasSubstr(" is not used: ")));
    sends(movie_);
    EXPECT_TRUE(host().fetch(asset).result);
    expectWhole(asset, movie_);
}

TEST_F(Hostile, AnOwnedListOfFiftyThousandItemsIsOwnedAsAWhole) {
    std::vector<LyingItem> items;
    for (int i = 1; i <= 50'000; ++i) {
        items.push_back({std::to_string(i), "mov"});
    }
    owns(items);
    LightweightVector<RemoteAsset> const owned = host().client().getPurchasedAssets();
    ASSERT_THAT(owned, SizeIs(50'000));
    EXPECT_EQ(owned[0].id, L"1");
    EXPECT_EQ(owned[49'999].id, L"50000");
    EXPECT_TRUE(host().client().isPurchased(owned[49'999]));
    EXPECT_TRUE(host().fetch(owned[49'999]).result);
    expectWhole(owned[49'999], movie_);
}

TEST_F(Hostile, AnOwnedListThatIsNoneIsAnEmptyOne) {
    for (std::string const& answer :
         {std::string(), std::string("{"), std::string("[]"), std::string("null"), std::string("\"items\""),
          std::string(100'000, '['), std::string(R"({"e":false,"commands":5})"),
          std::string(R"({"e":false,"commands":[{"e":false,"items":"x"}]})"),
          std::string(R"({"e":false,"commands":[{"e":false,"items":[null,5,"x",[],{}]}]})")}) {
        SCOPED_TRACE(answer.substr(0, 60));
        owns(answer);
        EXPECT_THAT(host().client().getPurchasedAssets(), IsEmpty());
    }
}

} // namespace
