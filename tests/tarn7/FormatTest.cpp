#include "tests/tarn7/Tarn7Fixture.h"

namespace tarn7_tests {
namespace {

class Format : public Tarn7Test {
protected:
    static std::uint32_t codeOf(std::string const& codec) {
        return static_cast<std::uint32_t>(
            Tarn7Resource::getImageFormat(*parsed(R"({"codg":")" + codec + R"("})")));
    }
    static std::string described(std::string const& members) {
        return utf8(Tarn7Resource::getFormatDescription(*parsed("{" + members + "}")));
    }
};

constexpr std::uint32_t none = 0xffffffff;

struct Codec {
    char const* text;
    std::uint32_t code;
    bool prefix = false;
};

constexpr Codec codecs[] = {
    {"dvc", 0x20637664},
    {"MotionJPEG A", 0x61706A6D},
    {"MotionJPEG B", 0x62706A6D},
    {"mjpegb", 0x62706A6D},
    {"PhotoJPEG", 0x6765706A},
    {"Photo JPEG", 0x6765706A},
    {"H.264", 0x34363248},
    {"H.264 (high, avc1)", 0x31637661},
    {"H.264 (main, avc1)", 0x31637661},
    {"H.264 (high, hdmv)", 0x3436324B},
    {"h264 (high) (hdpr)", 0x3436324B},
    {"H.264 (constrained baseline)", 0x34363249},
    {"Apple ProRes 422 (hq)", 0x68637061},
    {"Apple ProRes 422", 0x68637061},
    {"prores", 0x68637061},
    {"Apple ProRes (apcn)", 0x6E637061},
    {"Apple ProRes (apcs)", 0x73637061},
    {"Apple ProRes 444", 0x68347061, true},
    {"ProRes 444", 0x68347061, true},
    {"Apple ProRes 422", 0x68637061, true},
    {"ProRes 422", 0x68637061, true},
    {"png", 0x20676E70},
    {"MPEG2", 0x3247504D},
    {"mpeg2video (main)", 0x3247504D},
    {"mpeg4", 0x3467706D},
    {"DV", 0x30357664},
    {"Avid DNxHD", 0x6E645641},
};
static_assert(std::size(codecs) == 27);

std::string inCase(std::string_view text, int (*change)(int)) {
    std::string changed;
    for (char const character : text) {
        changed += static_cast<char>(change(static_cast<unsigned char>(character)));
    }
    return changed;
}

TEST_F(Format, EveryNameOfTheTableHasItsNumber) {
    for (Codec const& codec : codecs) {
        EXPECT_EQ(codeOf(codec.text), codec.code) << codec.text;
    }
}

TEST_F(Format, WholeNamesAreFoundInAnyLetterCase) {
    for (Codec const& codec : codecs) {
        if (!codec.prefix) {
            EXPECT_EQ(codeOf(inCase(codec.text, std::tolower)), codec.code) << codec.text;
            EXPECT_EQ(codeOf(inCase(codec.text, std::toupper)), codec.code) << codec.text;
        }
    }
}

TEST_F(Format, BeginningsAreFoundWithWhateverFollows) {
    for (Codec const& codec : codecs) {
        if (codec.prefix) {
            EXPECT_EQ(codeOf(std::string(codec.text) + " LT"), codec.code) << codec.text;
            EXPECT_EQ(codeOf(std::string(codec.text) + "x"), codec.code) << codec.text;
        }
    }
}

TEST_F(Format, BeginningsCountInTheirOwnLetterCaseOnly) {
    EXPECT_EQ(codeOf("apple prores 444"), none);
    EXPECT_EQ(codeOf("prores 444"), none);
    EXPECT_EQ(codeOf("PRORES 422"), none);
    EXPECT_EQ(codeOf("apple prores 422 lt"), none);
}

TEST_F(Format, AShorterTextThanABeginningFails) {
    EXPECT_EQ(codeOf("Apple ProRes 44"), none);
    EXPECT_EQ(codeOf("ProRes 42"), none);
    EXPECT_EQ(codeOf("ProRes"), 0x68637061U); // the whole name "prores"
}

TEST_F(Format, WholeNamesAreNoBeginnings) {
    EXPECT_EQ(codeOf("H.264 (something)"), none);
    EXPECT_EQ(codeOf("dvc "), 0x20637664U); // four characters, which are the code themselves
    EXPECT_EQ(codeOf("pngx"), 0x78676E70U);
    EXPECT_EQ(codeOf("DV50 plus"), none);
}

TEST_F(Format, FourUnknownCharactersAreTheCodeThemselves) {
    EXPECT_EQ(codeOf("abcd"), 0x64636261U);
    EXPECT_EQ(codeOf("ap4h"), 0x68347061U);
    EXPECT_EQ(codeOf("    "), 0x20202020U);
}

TEST_F(Format, FourCharactersAreReadAsSignedBytes) {
    // Two characters of two bytes each: c3 a9 c3 a9, each byte filling the bits above it.
    EXPECT_EQ(codeOf("\u00e9\u00e9"), 0xffffffc3U);
    EXPECT_EQ(codeOf("ab\u00e9"), 0xffc36261U);
}

TEST_F(Format, AnyOtherTextIsNoKnownFormat) {
    for (char const* const codec : {"", "a", "abc", "abcde", "VP9 profile 0", "\u00e9\u00e9\u00e9\u00e9"}) {
        EXPECT_EQ(codeOf(codec), none) << codec;
    }
    EXPECT_EQ(static_cast<std::uint32_t>(Tarn7Resource::getImageFormat(*parsed("{}"))), none);
    EXPECT_EQ(static_cast<std::uint32_t>(Tarn7Resource::getImageFormat(*parsed(R"({"codg":5})"))), none);
}

TEST_F(Format, AZeroCharacterEndsNoName) {
    EXPECT_EQ(codeOf(R"(png\u0000)"), 0x00676E70U);
    EXPECT_EQ(codeOf(R"(H.264\u0000)"), none);
}

TEST_F(Format, TheInterlacedStandardsNameTheirAspect) {
    EXPECT_EQ(described(R"("vs":1,"ar":"4:3")"), "486i 4:3");
    EXPECT_EQ(described(R"("vs":2,"ar":"16:9")"), "486i 16:9");
    EXPECT_EQ(described(R"("vs":2)"), "486i 16:9");
    EXPECT_EQ(described(R"("vs":3,"ar":"4:3","codg":"DV")"), "576i 4:3, DV");
    EXPECT_EQ(described(R"("vs":3,"ar":"4:3 ")"), "576i 16:9");
    EXPECT_EQ(described(R"("vs":3,"ar":"")"), "576i 16:9");
}

TEST_F(Format, TheOtherStandardsNameNoAspect) {
    EXPECT_EQ(described(R"("vs":4,"ar":"4:3")"), "1080p");
    EXPECT_EQ(described(R"("vs":5,"ar":"4:3")"), "720p");
    EXPECT_EQ(described(R"("vs":8,"ar":"4:3")"), "1080i");
    EXPECT_EQ(described(R"("vs":9,"ar":"4:3")"), "720p");
}

TEST_F(Format, EveryOtherStandardGoesBySize) {
    for (char const* const standard : {"6", "7", "0", "-1", "10", "32767", "1e99"}) {
        EXPECT_EQ(described(std::string(R"("ox":1920,"oy":1080,"ar":"4:3","vs":)") + standard), "1920x1080")
            << standard;
    }
    EXPECT_EQ(described(R"("ox":1920,"oy":1080)"), "1920x1080");
    EXPECT_EQ(described(R"("ox":1920,"oy":1080,"vs":"4")"), "1920x1080");
}

TEST_F(Format, OnlyTheTwoSizesAre4k) {
    EXPECT_EQ(described(R"("ox":4096,"oy":2160)"), "4k");
    EXPECT_EQ(described(R"("ox":3840,"oy":2160,"codg":"H.264")"), "4k, H.264");
    EXPECT_EQ(described(R"("ox":4096,"oy":2304)"), "4096x2304");
    EXPECT_EQ(described(R"("ox":3996,"oy":2160)"), "3996x2160");
    EXPECT_EQ(described(R"("ox":8192,"oy":2160)"), "8192x2160");
    EXPECT_EQ(described(R"("ox":3840,"oy":2161)"), "3840x2161");
    EXPECT_EQ(described(R"("ox":2160,"oy":3840)"), "2160x3840");
    EXPECT_EQ(described(R"("vs":4,"ox":3840,"oy":2160)"), "1080p");
}

TEST_F(Format, AMissingSizeIsShownAsMinusOne) {
    EXPECT_EQ(described(""), "-1x-1");
    EXPECT_EQ(described(R"("ox":640)"), "640x-1");
    EXPECT_EQ(described(R"("oy":"480")"), "-1x-1");
}

TEST_F(Format, AStandardIsCutTo16Bits) {
    EXPECT_EQ(described(R"("vs":65537)"), "486i 16:9");
    EXPECT_EQ(described(R"("vs":4294967300)"), "1080p");
    EXPECT_EQ(described(R"("vs":3.99)"), "576i 16:9");
    EXPECT_EQ(described(R"("vs":-65533,"ar":"4:3")"), "576i 4:3");
}

TEST_F(Format, SizesAreCutTo32Bits) {
    EXPECT_EQ(described(R"("ox":4294967297,"oy":2.9)"), "1x2");
    EXPECT_EQ(described(R"("ox":2147483648,"oy":-5)"), "-2147483648x-5");
}

TEST_F(Format, TheFirstOfTwoMembersOfOneNameCounts) {
    EXPECT_EQ(described(R"("vs":4,"vs":5,"codg":"a","codg":"b")"), "1080p, a");
}

TEST_F(Format, TheCodecIsShownAsTheServiceSentIt) {
    EXPECT_EQ(described(R"("vs":4,"codg":"apple prores 422")"), "1080p, apple prores 422");
    EXPECT_EQ(described(R"("vs":4,"codg":"caf\u00e9, <b>%s\ud83c\udfac")"),
              "1080p, caf\u00e9, <b>%s\U0001f3ac");
    EXPECT_EQ(described(R"("vs":4,"codg":"")"), "1080p");
    EXPECT_EQ(described(R"("vs":4,"codg":7)"), "1080p");
    EXPECT_EQ(described(R"("ox":1920,"oy":1080,"vs":6)"), "1920x1080");
}

} // namespace
} // namespace tarn7_tests
