// One store, several files: what was kept of one is never read for another.

#include "tests/engine/streaming/StreamingFixture.h"

namespace {

using engine::StreamError;
using test::same;

class StreamVariant : public test::StreamingFixture {
protected:
    StreamVariant() : large(test::mediaBytes(2 * mib, 4)), small(test::mediaBytes(2 * mib, 5)) {
        // Equal in length and validator, so that nothing but the name tells them apart.
        media.put("/7_main_xl.mp4", {large});
        media.put("/7_prev_264.mov", {small});
    }

    std::string const large;
    std::string const small;
};

TEST_F(StreamVariant, AnotherRemoteNameDropsWhatTheStoreHeld) {
    for (int round = 0; round < 3; ++round) {
        EXPECT_TRUE(same(readAll(open("7_main_xl.mp4")), large));
        EXPECT_TRUE(same(readAll(open("7_prev_264.mov")), small));
    }
    restart();
    EXPECT_TRUE(same(readAll(open("7_main_xl.mp4")), large));
}

TEST_F(StreamVariant, BothAtOnceAreReadRightAndOneOfThemWithoutTheStore) {
    auto const one = open("7_main_xl.mp4");
    ASSERT_EQ(one->getSize(), large.size());
    auto const two = open("7_prev_264.mov");
    for (std::size_t place = 0; place < 2 * mib; place += 100'000) {
        std::size_t const size = std::min<std::size_t>(100'000, 2 * mib - place);
        EXPECT_TRUE(same(read(one, place, size), large.substr(place, size)));
        EXPECT_TRUE(same(read(two, place, size), small.substr(place, size)));
    }
}

TEST_F(StreamVariant, TheFallBackToTheOtherNameGetsTheStore) {
    media.remove("/7_main_xl.mp4");
    {
        // As the file provider does it: the first attempt is let go once the second is there.
        Zq::Ptr<StreamingFile> file = open("7_main_xl.mp4");
        ASSERT_EQ(file->getSize(), 0u);
        file = open("7_prev_264.mov");
        EXPECT_TRUE(same(readAll(file), small));
    }
    std::uint64_t const before = streams().statistics().requests;
    EXPECT_TRUE(same(readAll(open("7_prev_264.mov")), small));
    EXPECT_EQ(streams().statistics().requests, before);
}

TEST_F(StreamVariant, TheSameNameOnAnotherServerIsAnotherFile) {
    test::MediaServer elsewhere;
    elsewhere.put("/7_main_xl.mp4", {small});
    EXPECT_TRUE(same(readAll(open("7_main_xl.mp4")), large));
    Zq::Ptr<StreamingFile> const file = streams().create(server(elsewhere.name()), L"7_main_xl.mp4", L"",
                                                         fromUTF8(std::string_view(cachePath().native())));
    EXPECT_TRUE(same(readAll(file), small));
}

TEST_F(StreamVariant, AFileThatChangedSinceItWasKeptComesAnew) {
    for (bool const whole : {true, false}) {
        media.put("/7_main_xl.mp4", {large, "\"one\""});
        auto const kept = open("7_main_xl.mp4");
        ASSERT_TRUE(same(whole ? readAll(kept) : read(kept, 0, 100), large.substr(0, whole ? 2 * mib : 100)));
        restart();
    }
    clock_s += 100;
    media.put("/7_main_xl.mp4", {small, "\"two\""});
    auto const file = open("7_main_xl.mp4", "other.partial");
    EXPECT_TRUE(same(readAll(file), small));
}

TEST_F(StreamVariant, AnIncompleteStoreOfAnOlderFileIsDroppedBeforeItIsRead) {
    ASSERT_TRUE(same(read(open("7_main_xl.mp4"), 0, 64 * kib), large.substr(0, 64 * kib)));
    restart();
    clock_s += 100;
    media.put("/7_main_xl.mp4", {small, "\"two\""});
    EXPECT_TRUE(same(readAll(open("7_main_xl.mp4")), small));
}

TEST_F(StreamVariant, ACompleteStoreOfAnOlderFileIsDroppedWhenTheServerTells) {
    ASSERT_TRUE(same(readAll(open("7_main_xl.mp4")), large));
    restart();
    clock_s += 100;
    media.put("/7_main_xl.mp4", {small, "\"two\""});
    {
        // It reads the old file, all of it, until the answer comes.
        auto const old = open("7_main_xl.mp4");
        std::string got;
        while ((got = read(old, mib, 1000)) != "(failed)") {
            ASSERT_TRUE(same(got, large.substr(mib, 1000)));
        }
        EXPECT_EQ(errorOf(old), StreamError::Kind::changed);
    }
    EXPECT_TRUE(same(readAll(open("7_main_xl.mp4")), small));
}

TEST_F(StreamVariant, ALastModifiedDateServesWhereThereIsNoETag) {
    media.put("/7_main_xl.mp4", {large, "", "Wed, 01 Jan 2025 00:00:00 GMT"});
    ASSERT_TRUE(same(readAll(open("7_main_xl.mp4")), large));
    restart();
    clock_s += 100;
    std::size_t const before = media.requests().size();
    ASSERT_TRUE(same(readAll(open("7_main_xl.mp4")), large));
    EXPECT_EQ(media.requests().size(), before + 1);
    restart();
    clock_s += 100;
    media.put("/7_main_xl.mp4", {small, "", "Thu, 02 Jan 2025 00:00:00 GMT"});
    EXPECT_TRUE(same(readAll(open("7_main_xl.mp4")), small));
}

TEST_F(StreamVariant, WithoutAValidatorWhatWasKeptIsNotBelievedForLong) {
    media.put("/7_main_xl.mp4", {large, ""});
    ASSERT_TRUE(same(readAll(open("7_main_xl.mp4")), large));
    restart();
    clock_s += 100;
    media.put("/7_main_xl.mp4", {small, ""});
    EXPECT_TRUE(same(readAll(open("7_main_xl.mp4")), small));
}

TEST_F(StreamVariant, AFileThatChangesBetweenTwoPartsFailsAndTheNextOpenReadsTheNewOne) {
    auto const file = open("7_main_xl.mp4");
    ASSERT_TRUE(same(read(file, 0, 100), large.substr(0, 100)));
    media.put("/7_main_xl.mp4", {small, "\"two\""});
    EXPECT_TRUE(same(read(file, mib, 100), "(failed)"));
    EXPECT_EQ(errorOf(file), StreamError::Kind::changed);
    auto const fresh = open("7_main_xl.mp4");
    EXPECT_TRUE(same(readAll(fresh), small));
    EXPECT_TRUE(same(read(file, 0, 100), "(failed)"));
}

} // namespace
