#include "tests/tarn7/Tarn7Fixture.h"

namespace tarn7_tests {
namespace {

class ItemReaders : public Tarn7Test {
protected:
    static std::string durationOf(std::string const& members) {
        return utf8(Tarn7Resource::getDurationText(*parsed("{" + members + "}")));
    }
    static std::string lasting(std::string const& text) { return durationOf(R"("dur":")" + text + R"(")"); }
    static RemoteAsset assetWith(wchar_t const* id, std::string const& members) {
        RemoteAsset asset;
        asset.id = id;
        asset.payload = parsed("{" + members + "}");
        return asset;
    }
    static int rateOf(std::string_view text) {
        return static_cast<int>(Tarn7Resource::frameRateFromText(wide(text)));
    }
};

TEST_F(ItemReaders, MinutesAreNeverPadded) {
    EXPECT_EQ(lasting("65000"), "1:05");
    EXPECT_EQ(lasting("3725000"), "1:2:05");
    EXPECT_EQ(lasting("3600000"), "1:0:00");
    EXPECT_EQ(lasting("36000000"), "10:0:00");
    EXPECT_EQ(lasting("754000"), "12:34");
}

TEST_F(ItemReaders, SecondsBelowTenGetAZero) {
    EXPECT_EQ(lasting("9000"), "0:09");
    EXPECT_EQ(lasting("10000"), "0:10");
    EXPECT_EQ(lasting("59999"), "0:59");
    EXPECT_EQ(lasting("60000"), "1:00");
    EXPECT_EQ(lasting("3599999"), "59:59");
}

TEST_F(ItemReaders, LessThanASecondIsShownAsNoneAndNothingAsEmpty) {
    EXPECT_EQ(lasting("1"), "0:00");
    EXPECT_EQ(lasting("999"), "0:00");
    EXPECT_EQ(lasting("0"), "");
    EXPECT_EQ(lasting("-1"), "");
    EXPECT_EQ(lasting("-65000"), "");
}

TEST_F(ItemReaders, ALengthThatIsNoWholeNumberInATextIsNone) {
    EXPECT_EQ(durationOf(""), "");
    EXPECT_EQ(lasting(""), "");
    EXPECT_EQ(lasting("abc"), "");
    EXPECT_EQ(lasting("65000.5"), "");
    EXPECT_EQ(lasting("65000 ms"), "");
    EXPECT_EQ(durationOf(R"("dur":65000)"), "");
    EXPECT_EQ(durationOf(R"("dur":{"a":1})"), "");
}

TEST_F(ItemReaders, ALengthUpTo64BitsIsShownAndALongerOneIsNone) {
    EXPECT_EQ(lasting("9223372036854775807"), "2562047788015:12:55");
    EXPECT_EQ(lasting("9223372036854775808"), "");
    EXPECT_EQ(lasting("99999999999999999999999"), "");
}

TEST_F(ItemReaders, TheSoundDecidesTheAudioChannels) {
    EXPECT_EQ(Tarn7Resource::getAudioChannels(*parsed(R"({"coda":"no snd"})")), 0);
    EXPECT_EQ(Tarn7Resource::getAudioChannels(*parsed(R"({"coda":"pcm"})")), 2);
    EXPECT_EQ(Tarn7Resource::getAudioChannels(*parsed(R"({"coda":"NO SND"})")), 2);
    EXPECT_EQ(Tarn7Resource::getAudioChannels(*parsed(R"({"coda":5})")), 2);
    EXPECT_EQ(Tarn7Resource::getAudioChannels(*parsed("{}")), 2);
}

TEST_F(ItemReaders, ATextOfARateIsReadAsADecimalNumber) {
    EXPECT_EQ(rateOf("23.976"), 1);
    EXPECT_EQ(rateOf("23.98"), 1);
    EXPECT_EQ(rateOf("24"), 2);
    EXPECT_EQ(rateOf("25.000"), 3);
    EXPECT_EQ(rateOf("29.97"), 4);
    EXPECT_EQ(rateOf("30"), 5);
    EXPECT_EQ(rateOf("50"), 8);
    EXPECT_EQ(rateOf("59.94"), 9);
    EXPECT_EQ(rateOf("100"), 43);
}

TEST_F(ItemReaders, ATextThatIsNoRateIsUnknown) {
    for (std::string_view const text : {"", "abc", "0", "-25", "inf", "nan", "1e999", "26.5", "25,5x"}) {
        EXPECT_EQ(rateOf(text), text == "25,5x" ? 3 : 0) << text;
    }
}

TEST_F(ItemReaders, TheRateIsShownAsTheHostWritesIt) {
    RemoteAsset asset;
    EXPECT_EQ(utf8(Tarn7Resource::getFrameRateText(asset)), "");
    asset.frameRate = Zq::FrameRate::f23_976;
    EXPECT_EQ(utf8(Tarn7Resource::getFrameRateText(asset)), "23.976");
    asset.frameRate = Zq::FrameRate::f59_94;
    EXPECT_EQ(utf8(Tarn7Resource::getFrameRateText(asset)), "59.94");
}

TEST_F(ItemReaders, TheLengthOfAKnownClipComesFromTheCache) {
    resource.clipCache[7] = {Zq::FrameRate::f25, 1.5};
    EXPECT_EQ(resource.getClipDuration(assetWith(L"7", R"("dur":"9000")")), 1.5);
}

TEST_F(ItemReaders, TheLengthOfAnUnknownClipComesFromItsItem) {
    EXPECT_EQ(resource.getClipDuration(assetWith(L"7", R"("dur":"9250")")), 9.25);
    EXPECT_EQ(resource.getClipDuration(assetWith(L"7", "")), 0.0);
    EXPECT_EQ(resource.getClipDuration(RemoteAsset()), 0.0);
}

TEST_F(ItemReaders, AnIdThatIsNoNumberIsLookedUpAsZero) {
    resource.clipCache[0] = {Zq::FrameRate::f25, 2.5};
    EXPECT_EQ(resource.getClipDuration(assetWith(L"abc", R"("dur":"9000")")), 2.5);
    EXPECT_EQ(resource.getClipDuration(assetWith(L"", "")), 2.5);
}

TEST_F(ItemReaders, ANegativeIdIsFoundUnderItsUnsignedNumber) {
    resource.clipCache[0xffffffffU] = {Zq::FrameRate::f25, 3.5};
    EXPECT_EQ(resource.getClipDuration(assetWith(L"-1", "")), 3.5);
}

} // namespace
} // namespace tarn7_tests
