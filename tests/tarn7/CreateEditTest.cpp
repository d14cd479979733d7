#include "tests/tarn7/Tarn7Fixture.h"

namespace tarn7_tests {
namespace {

class CreateEdit : public Tarn7Test {
protected:
    // An asset with these members in its item, at that rate.
    static RemoteAsset assetOf(std::string const& members, Zq::FrameRate rate = Zq::FrameRate::f25) {
        RemoteAsset asset;
        asset.id = L"123";
        asset.payload = parsed("{" + members + "}");
        asset.frameRate = rate;
        return asset;
    }
    static Cookie cookieNumber(std::uint8_t number) {
        Cookie cookie;
        cookie.uuid.bytes[0] = number;
        cookie.kind = {1, 2, 3};
        return cookie;
    }
    // The edit that createEdit makes; a default state where it makes none.
    fake::EditState made(RemoteAsset const& asset) {
        EditModifier const edit = resource.createEdit(asset);
        if (edit.isEmpty()) {
            return {};
        }
        return host.edits.stateOf(host.edits.cookies().back());
    }
    std::vector<std::string> callsOf(RemoteAsset const& asset) {
        (void)resource.createEdit(asset);
        return host.edits.record.calls();
    }
};

TEST_F(CreateEdit, EachStepOpensTheEditAnewAndLetsItGo) {
    RemoteAsset const asset = assetOf(R"("dur":"12480","ox":1920,"oy":1080,"vs":4)");
    EXPECT_EQ(callsOf(asset), (std::vector<std::string>{
                                  "make 1 2 12.48 3", "opened", "setTemporary true",
                                  "closed",           "opened", "setLogAttributes",
                                  "closed",           "opened", "setSourceMedium 2",
                                  "closed",           "opened", "setSourceMediumDuration 12.48",
                                  "closed",           "opened", "setVideoMetadata false",
                                  "closed",           "opened", "setFrameBased true",
                                  "closed",           "opened", "setTransfer 0",
                                  "closed",           "opened", "setSequence 0 false",
                                  "closed",           "opened", "addLabel true",
                                  "closed",
                              }));
}

TEST_F(CreateEdit, NothingKeepsTheEditOpen) {
    EditModifier const edit = resource.createEdit(assetOf(""));
    ASSERT_FALSE(edit.isEmpty());
    EXPECT_EQ(host.edits.stateOf(host.edits.cookies().back()).openings, 0);
}

TEST_F(CreateEdit, APayloadThatIsNoElementOfAnAnswerMakesNoEdit) {
    RemoteAsset asset = assetOf("");
    asset.payload = {};
    EXPECT_TRUE(resource.createEdit(asset).isEmpty());
    asset.payload = Zq::makeShared<fake::Image>();
    EXPECT_TRUE(resource.createEdit(asset).isEmpty());
    EXPECT_TRUE(host.edits.record.calls().empty());
    EXPECT_TRUE(host.externalIds.record.calls().empty());
    EXPECT_EQ(host.network.requestCount(), 0U);
}

TEST_F(CreateEdit, WhereTheHostMakesNoClipNothingFurtherIsSet) {
    host.edits.refuseClips();
    EXPECT_TRUE(resource.createEdit(assetOf("")).isEmpty());
    EXPECT_EQ(host.edits.record.calls(), std::vector<std::string>{"make 1 2 0 3"});
}

TEST_F(CreateEdit, AHostWithoutEditsMakesNone) {
    HostServices services = installedHost();
    services.edits = nullptr;
    HostServices const before = installHost(services);
    EXPECT_TRUE(resource.createEdit(assetOf("")).isEmpty());
    installHost(before);
}

TEST_F(CreateEdit, TheCachedLengthComesBeforeTheItems) {
    resource.clipCache[123] = {Zq::FrameRate::f25, 12.5};
    EXPECT_DOUBLE_EQ(made(assetOf(R"("dur":"9000")")).sourceDuration_s, 12.5);
    resource.clipCache.clear();
    EXPECT_DOUBLE_EQ(made(assetOf(R"("dur":"9000")")).sourceDuration_s, 9.0);
}

TEST_F(CreateEdit, ACachedLengthOfNothingIsTakenToo) {
    resource.clipCache[123] = {Zq::FrameRate::f25, 0.0};
    EXPECT_DOUBLE_EQ(made(assetOf(R"("dur":"9000")")).sourceDuration_s, 0.0);
}

TEST_F(CreateEdit, AnIdThatIsNoNumberLooksUpKeyZero) {
    resource.clipCache[0] = {Zq::FrameRate::f25, 4.0};
    RemoteAsset asset = assetOf(R"("dur":"9000")");
    asset.id = L"12a";
    EXPECT_DOUBLE_EQ(made(asset).sourceDuration_s, 4.0);
}

TEST_F(CreateEdit, AnIdBelowZeroIsLookedUpAsAnUnsignedNumber) {
    resource.clipCache[0xffffffffU] = {Zq::FrameRate::f25, 5.0};
    RemoteAsset asset = assetOf("");
    asset.id = L"-1";
    EXPECT_DOUBLE_EQ(made(asset).sourceDuration_s, 5.0);
}

TEST_F(CreateEdit, ALengthThatCannotBeReadGivesAClipOfNoLength) {
    for (char const* const members :
         {"", R"("dur":"long")", R"("dur":9000)", R"("dur":"")", R"("dur":"99999999999999999999")"}) {
        fake::EditState const edit = made(assetOf(members));
        EXPECT_FALSE(edit.cookie.isNull()) << members;
        EXPECT_DOUBLE_EQ(edit.sourceDuration_s, 0.0) << members;
        EXPECT_DOUBLE_EQ(edit.duration_s, 0.0) << members;
    }
}

TEST_F(CreateEdit, TheClipHasWholeFramesAndTheSourceItsSeconds) {
    fake::EditState const edit = made(assetOf(R"("dur":"9999")"));
    EXPECT_DOUBLE_EQ(edit.sourceDuration_s, 9.999);
    EXPECT_DOUBLE_EQ(edit.duration_s, 249 / 25.0);
    fake::EditState const drop = made(assetOf(R"("dur":"1000")", Zq::FrameRate::f29_97));
    EXPECT_DOUBLE_EQ(drop.sourceDuration_s, 1.0);
    EXPECT_DOUBLE_EQ(drop.duration_s, 29 * 1001 / 30000.0);
}

TEST_F(CreateEdit, WithAnUnknownRateTheLengthIsNotTranslated) {
    fake::EditState const edit = made(assetOf(R"("dur":"9999")", Zq::FrameRate::unknown));
    EXPECT_DOUBLE_EQ(edit.sourceDuration_s, 9.999);
    EXPECT_DOUBLE_EQ(edit.duration_s, 9.999);
    EXPECT_EQ(edit.rate, Zq::FrameRate::unknown);
    EXPECT_EQ(edit.sourceMedium, MediumRollMedium::unknown);
}

TEST_F(CreateEdit, OnlyTheExactTextForNoSoundMeansNoSound) {
    EXPECT_EQ(made(assetOf(R"("coda":"no snd")")).audioChannels, 0);
    for (char const* const members : {R"("coda":"No snd")", R"("coda":"NO SND")", R"("coda":"no snd ")",
                                      R"("coda":"")", R"("coda":"stereo")", R"("coda":0)", ""}) {
        EXPECT_EQ(made(assetOf(members)).audioChannels, 2) << members;
    }
    EXPECT_EQ(made(assetOf("")).videoChannels, 1);
}

TEST_F(CreateEdit, TheEditTakesTheAssetsIdentity) {
    RemoteAsset asset = assetOf("");
    asset.cookie = cookieNumber(7);
    EXPECT_EQ(made(asset).cookie, cookieNumber(7));
}

TEST_F(CreateEdit, AnIdentityThatIsTakenMakesNoSecondEdit) {
    RemoteAsset asset = assetOf("");
    asset.cookie = cookieNumber(7);
    ASSERT_FALSE(resource.createEdit(asset).isEmpty());
    EXPECT_TRUE(resource.createEdit(asset).isEmpty());
    EXPECT_EQ(host.edits.cookies().size(), 1U);
}

TEST_F(CreateEdit, WithoutAnIdentityTheHostChoosesOne) {
    EXPECT_FALSE(made(assetOf("")).cookie.isNull());
    EXPECT_FALSE(made(assetOf("")).cookie.isNull());
    EXPECT_EQ(host.edits.cookies().size(), 2U);
}

TEST_F(CreateEdit, TheLogAttributesGoWithTheEditAndTheColumnsDoNot) {
    RemoteAsset asset = assetOf("");
    LogAttribute const name(LogAttribute::eName);
    LogAttribute const format(LogAttribute::eFormat);
    asset.logAttributes.add(name, WideString(L"Mer \u00e9t\u00e9"));
    asset.logAttributes.add(LogAttribute(LogAttribute::ePrice), NarrowString("$79"));
    asset.displayAttributes.add(format, NarrowString("1080p"));
    LogAttributeMap const kept = made(asset).logAttributes;
    EXPECT_EQ(kept.entries().size(), 2U);
    EXPECT_EQ(kept.find(name), "Mer \xc3\xa9t\xc3\xa9");
    EXPECT_TRUE(kept.find(format).isEmpty());
}

TEST_F(CreateEdit, ThePictureIsWhatTheItemSaysAndNotMeasured) {
    fake::EditState const edit =
        made(assetOf(R"("ox":1920,"oy":1080,"vs":8,"codg":"H.264","ar":"16:9")", Zq::FrameRate::f29_97));
    EXPECT_EQ(edit.video.width, 1920);
    EXPECT_EQ(edit.video.height, 1080);
    EXPECT_EQ(edit.video.dataFormat, Zq::Image::formatFromCode("H264"));
    EXPECT_EQ(edit.video.frameRate, Zq::FrameRate::f29_97);
    EXPECT_EQ(edit.video.scanMode, Zq::Image::ScanMode::interlacedUpperFirst);
    EXPECT_FALSE(edit.videoMeasured);
    EXPECT_EQ(edit.rate, Zq::FrameRate::f29_97);
}

TEST_F(CreateEdit, TheMediumIsThatOfTheScanMode) {
    EXPECT_EQ(made(assetOf(R"("vs":4)")).sourceMedium, MediumRollMedium::progressive25);
    EXPECT_EQ(made(assetOf(R"("vs":3)")).sourceMedium, MediumRollMedium::interlaced25);
    EXPECT_EQ(made(assetOf(R"("vs":8)", Zq::FrameRate::f29_97)).sourceMedium, MediumRollMedium::interlaced30);
    EXPECT_EQ(made(assetOf(R"("vs":8)", Zq::FrameRate::f23_976)).sourceMedium, MediumRollMedium::film);
}

TEST_F(CreateEdit, OnlyAProgressiveClipGoesByFrames) {
    EXPECT_TRUE(made(assetOf(R"("vs":4)")).frameBased);
    EXPECT_TRUE(made(assetOf("")).frameBased);
    for (char const* const interlaced : {R"("vs":1)", R"("vs":2)", R"("vs":3)", R"("vs":8)"}) {
        EXPECT_FALSE(made(assetOf(interlaced)).frameBased) << interlaced;
    }
}

TEST_F(CreateEdit, TheEditIsATemporaryClip) {
    fake::EditState const edit = made(assetOf(""));
    EXPECT_TRUE(edit.temporary);
    EXPECT_EQ(edit.transfer, transfer_type::frameByFrame);
    EXPECT_EQ(static_cast<int>(edit.transfer), 0);
    EXPECT_EQ(edit.sequenceKind, 0);
    EXPECT_FALSE(edit.recording);
}

TEST_F(CreateEdit, TheOneLabelHasTheSameScanModeForEveryClip) {
    for (char const* const standard : {R"("vs":4)", R"("vs":1)", R"("vs":3)"}) {
        fake::EditState const edit = made(assetOf(standard));
        ASSERT_EQ(edit.labels.size(), 1U) << standard;
        EXPECT_EQ(edit.labels[0], (EditLabel{.position = 0,
                                             .scanMode = static_cast<Zq::Image::ScanMode>(1),
                                             .frameRate = Zq::FrameRate::f25,
                                             .countsIn1001 = false,
                                             .sourceOffset = 0}))
            << standard;
    }
}

TEST_F(CreateEdit, TheLabelSaysWhetherTheRateCountsIn1001) {
    EXPECT_TRUE(made(assetOf("", Zq::FrameRate::f23_976)).labels.at(0).countsIn1001);
    EXPECT_TRUE(made(assetOf("", Zq::FrameRate::f59_94)).labels.at(0).countsIn1001);
    EXPECT_FALSE(made(assetOf("", Zq::FrameRate::f60)).labels.at(0).countsIn1001);
    EXPECT_FALSE(made(assetOf("", Zq::FrameRate::unknown)).labels.at(0).countsIn1001);
}

TEST_F(CreateEdit, TheServiceIsNotAskedAndTheCacheIsNotChanged) {
    connect();
    (void)resource.createEdit(assetOf(R"("dur":"9000")"));
    EXPECT_EQ(host.network.requestCount(), 0U);
    EXPECT_TRUE(resource.clipCache.empty());
}

TEST_F(CreateEdit, ASearchResultBecomesAnEditWithItsPreview) {
    SearchResults const page = pageOf(foundItems(
        R"([{"id":123,"n":"Sea","pr":"79","coda":"no snd","dur":"12480","fps_real":"29.97","ox":1920,"oy":1080}])"));
    ASSERT_EQ(page.assets.size(), 1U);
    EditModifier const edit = resource.openEdit(page.assets[0], iMediaFileRepository::eOpenNormally);
    ASSERT_FALSE(edit.isEmpty());
    fake::EditState const state = host.edits.stateOf(edit->getCookie());
    EXPECT_EQ(utf8(edit->getName()), "Sea");
    EXPECT_EQ(state.audioChannels, 0);
    EXPECT_EQ(state.rate, Zq::FrameRate::f29_97);
    EXPECT_DOUBLE_EQ(state.sourceDuration_s, 12.48);
    EXPECT_EQ(utf8(state.previewLocation), "Virtual:T7 https://cdn.test/p/000000123.mov");
    EXPECT_EQ(resource.findLocalItem(page.assets[0]), state.cookie);
}

} // namespace
} // namespace tarn7_tests
