#include "tarn7/Tarn7Resource.h"
#include "tests/framequarry/FrameQuarryFixture.h"

namespace framequarry_tests {
namespace {

// The other repository, for what differs.
class Sibling : public Tarn7Resource {
public:
    using Tarn7Resource::createEdit;
};

class CreateEdit : public FrameQuarryTest {
protected:
    static Cookie cookieNumber(std::uint8_t number) {
        Cookie cookie;
        cookie.uuid.bytes[0] = number;
        cookie.kind = {1, 2, 3};
        return cookie;
    }
    // The edit that createEdit makes; a default state where it makes none.
    template <class Resource>
    fake::EditState madeBy(Resource& maker, RemoteAsset const& asset) {
        EditModifier const edit = maker.createEdit(asset);
        return edit.isEmpty() ? fake::EditState() : host.edits.stateOf(host.edits.cookies().back());
    }
    fake::EditState made(RemoteAsset const& asset) { return madeBy(resource, asset); }

    template <class Resource>
    std::vector<std::string> callsOf(Resource& maker, RemoteAsset const& asset) {
        host.edits.record.forget();
        (void)maker.createEdit(asset);
        return host.edits.record.calls();
    }
    static RemoteAsset withDuration(std::string const& seconds, Zq::FrameRate rate = Zq::FrameRate::f25) {
        return assetWith(R"("duration":)" + seconds, rate);
    }
};

// A clip that both services could know, of 12.48 seconds.
RemoteAsset clipOfBoth(Zq::FrameRate rate) {
    RemoteAsset asset;
    asset.id = L"123";
    asset.payload = parsed(R"({"duration":12.48,"dur":"12480","vs":4,"ox":1920,"oy":1080,"coda":"aac"})");
    asset.frameRate = rate;
    asset.logAttributes.add(LogAttribute(LogAttribute::eName), NarrowString("Sea"));
    return asset;
}

TEST_F(CreateEdit, EachStepOpensTheEditAnewAndLetsItGo) {
    EXPECT_EQ(callsOf(resource, withDuration("12.48")),
              (std::vector<std::string>{
                  "make 1 0 12.48 3", "opened", "setTemporary true",
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

TEST_F(CreateEdit, TheSameClipIsMadeAsByTheOtherRepositoryButForItsSound) {
    Sibling sibling;
    for (Zq::FrameRate const rate : {Zq::FrameRate::f25, Zq::FrameRate::f29_97, Zq::FrameRate::unknown}) {
        std::vector<std::string> expected = callsOf(sibling, clipOfBoth(rate));
        ASSERT_FALSE(expected.empty());
        ASSERT_TRUE(expected.front().starts_with("make 1 2 "));
        expected.front().replace(0, 9, "make 1 0 ");
        EXPECT_EQ(callsOf(resource, clipOfBoth(rate)), expected);
    }
}

TEST_F(CreateEdit, WhatTheItemSaysOfItsPictureIsNotLookedAt) {
    Sibling sibling;
    RemoteAsset asset = clipOfBoth(Zq::FrameRate::f25);
    asset.payload = parsed(R"({"duration":12.48,"dur":"12480","vs":3,"ox":720,"oy":576,"coda":"aac"})");
    fake::EditState const theirs = madeBy(sibling, asset);
    fake::EditState const ours = made(asset);
    EXPECT_FALSE(theirs.frameBased);
    EXPECT_TRUE(ours.frameBased);
    EXPECT_EQ(theirs.sourceMedium, MediumRollMedium::interlaced25);
    EXPECT_EQ(ours.sourceMedium, MediumRollMedium::progressive25);
    EXPECT_EQ(theirs.video.width, 720);
    EXPECT_EQ(ours.video.width, 0);
    EXPECT_DOUBLE_EQ(ours.duration_s, theirs.duration_s);
}

TEST_F(CreateEdit, NothingKeepsTheEditOpen) {
    EditModifier const edit = resource.createEdit(withDuration("1"));
    ASSERT_FALSE(edit.isEmpty());
    EXPECT_EQ(host.edits.stateOf(host.edits.cookies().back()).openings, 0);
}

TEST_F(CreateEdit, WhereTheHostMakesNoClipNothingFurtherIsSet) {
    host.edits.refuseClips();
    EXPECT_TRUE(resource.createEdit(withDuration("2")).isEmpty());
    EXPECT_EQ(host.edits.record.calls(), std::vector<std::string>{"make 1 0 2 3"});
}

TEST_F(CreateEdit, AHostWithoutEditsMakesNone) {
    HostServices services = installedHost();
    services.edits = nullptr;
    HostServices const before = installHost(services);
    EXPECT_TRUE(resource.createEdit(withDuration("2")).isEmpty());
    installHost(before);
}

TEST_F(CreateEdit, AnAssetWithoutAnItemBecomesAClipOfNoKnownLength) {
    RemoteAsset asset = withDuration("2");
    for (Zq::Ptr<iObject> const& payload :
         {Zq::Ptr<iObject>(), Zq::Ptr<iObject>(Zq::makeShared<fake::Image>())}) {
        asset.payload = payload;
        fake::EditState const edit = made(asset);
        EXPECT_FALSE(edit.cookie.isNull());
        EXPECT_DOUBLE_EQ(edit.sourceDuration_s, -1.0);
    }
}

TEST_F(CreateEdit, TheSecondsOfTheItemReachTheSourceUnchanged) {
    for (char const* const seconds : {"12.48", "0", "0.001", "9.999", "-3.5", "1e9"}) {
        EXPECT_DOUBLE_EQ(made(withDuration(seconds)).sourceDuration_s, std::stod(seconds)) << seconds;
    }
    EXPECT_EQ(made(withDuration("12.48", Zq::FrameRate::f29_97)).sourceDuration_s, 12.48);
}

TEST_F(CreateEdit, WithoutANumberTheLengthIsMinusOne) {
    for (char const* const members :
         {"", R"("duration":"12.48")", R"("duration":null)", R"("duration":[12])", R"("Duration":12)"}) {
        EXPECT_EQ(callsOf(resource, assetWith(members)).front(), "make 1 0 -1 3") << members;
        EXPECT_EQ(host.edits.record.calls().at(11), "setSourceMediumDuration -1") << members;
    }
}

TEST_F(CreateEdit, TheMinusOneIsTranslatedToo) {
    fake::EditState const edit = made(assetWith("", Zq::FrameRate::f29_97));
    EXPECT_DOUBLE_EQ(edit.duration_s, -1.001);
    EXPECT_DOUBLE_EQ(edit.sourceDuration_s, -1.0);
    EXPECT_DOUBLE_EQ(made(assetWith("", Zq::FrameRate::unknown)).duration_s, -1.0);
}

TEST_F(CreateEdit, TheClipHasWholeFramesAndTheSourceItsSeconds) {
    fake::EditState const edit = made(withDuration("9.999"));
    EXPECT_DOUBLE_EQ(edit.sourceDuration_s, 9.999);
    EXPECT_DOUBLE_EQ(edit.duration_s, 249 / 25.0);
    fake::EditState const drop = made(withDuration("1", Zq::FrameRate::f29_97));
    EXPECT_DOUBLE_EQ(drop.sourceDuration_s, 1.0);
    EXPECT_DOUBLE_EQ(drop.duration_s, 29 * 1001 / 30000.0);
}

TEST_F(CreateEdit, TheFirstOfTwoLengthsIsTaken) {
    EXPECT_DOUBLE_EQ(made(assetWith(R"("duration":3,"duration":9)")).sourceDuration_s, 3.0);
    EXPECT_DOUBLE_EQ(made(assetWith(R"("duration":"3","duration":9)")).sourceDuration_s, 9.0);
}

TEST_F(CreateEdit, LengthsBeyondEveryClipAreHarmless) {
    for (char const* const seconds : {"1e300", "-1e300", "1e308", "9223372036854775807"}) {
        fake::EditState const edit = made(withDuration(seconds, Zq::FrameRate::f59_94));
        EXPECT_FALSE(edit.cookie.isNull()) << seconds;
        EXPECT_DOUBLE_EQ(edit.sourceDuration_s, std::stod(seconds)) << seconds;
    }
}

TEST_F(CreateEdit, NoClipHasSound) {
    fake::EditState const edit = made(assetWith(R"("coda":"aac","audio":true,"duration":1)"));
    EXPECT_EQ(edit.audioChannels, 0);
    EXPECT_EQ(edit.videoChannels, 1);
}

TEST_F(CreateEdit, TheEditHasAnIdentityOfItsOwn) {
    RemoteAsset asset = withDuration("1");
    asset.cookie = cookieNumber(7);
    EXPECT_NE(made(asset).cookie, cookieNumber(7));
    EXPECT_NE(made(asset).cookie, cookieNumber(7));
    EXPECT_EQ(host.edits.cookies().size(), 2U);
    EXPECT_NE(host.edits.cookies()[0], host.edits.cookies()[1]);
    Sibling sibling;
    EXPECT_EQ(madeBy(sibling, asset).cookie, cookieNumber(7));
}

TEST_F(CreateEdit, TheLogAttributesGoWithTheEditAndTheColumnsDoNot) {
    RemoteAsset asset = withDuration("1");
    LogAttribute const name(LogAttribute::eName);
    LogAttribute const format(LogAttribute::eFormat);
    asset.logAttributes.add(name, WideString(L"Mer \u00e9t\u00e9"));
    asset.displayAttributes.add(format, NarrowString("1080p"));
    LogAttributeMap const kept = made(asset).logAttributes;
    EXPECT_EQ(kept.entries().size(), 1U);
    EXPECT_EQ(kept.find(name), "Mer \xc3\xa9t\xc3\xa9");
}

TEST_F(CreateEdit, OfThePictureOnlyTheRateAndTheWayOfScanningAreSet) {
    fake::EditState const edit = made(withDuration("1", Zq::FrameRate::f29_97));
    EXPECT_FALSE(edit.videoMeasured);
    EXPECT_EQ(edit.rate, Zq::FrameRate::f29_97);
    EXPECT_EQ(edit.video.frameRate, Zq::FrameRate::f29_97);
    EXPECT_EQ(static_cast<int>(edit.video.scanMode), 3);
    ShotVideoMetadata const untouched;
    EXPECT_EQ(edit.video.uid, untouched.uid);
    EXPECT_EQ(edit.video.dataFormat, untouched.dataFormat);
    EXPECT_EQ(edit.video.aspectRatio, untouched.aspectRatio);
    EXPECT_EQ(edit.video.width, 0);
    EXPECT_EQ(edit.video.height, 0);
    EXPECT_EQ(edit.video.bitDepth, 0);
    EXPECT_EQ(edit.video.bitsPerPixel, 0);
    EXPECT_EQ(edit.video.rowBytes, 0);
    EXPECT_FALSE(edit.video.anamorphic);
    EXPECT_FALSE(edit.video.hasSize);
    EXPECT_FALSE(edit.video.hasRowBytes);
}

TEST_F(CreateEdit, TheMediumIsTheProgressiveOneOfTheRate) {
    EXPECT_EQ(made(withDuration("1")).sourceMedium, MediumRollMedium::progressive25);
    EXPECT_EQ(made(withDuration("1", Zq::FrameRate::f23_976)).sourceMedium, MediumRollMedium::film);
    EXPECT_EQ(made(withDuration("1", Zq::FrameRate::f29_97)).sourceMedium, MediumRollMedium::progressive30);
    EXPECT_EQ(made(withDuration("1", Zq::FrameRate::f50)).sourceMedium, MediumRollMedium::progressive50);
    EXPECT_EQ(made(withDuration("1", Zq::FrameRate::unknown)).sourceMedium, MediumRollMedium::unknown);
}

TEST_F(CreateEdit, TheEditIsATemporaryClipThatGoesByFrames) {
    fake::EditState const edit = made(withDuration("1"));
    EXPECT_TRUE(edit.temporary);
    EXPECT_TRUE(edit.frameBased);
    EXPECT_EQ(edit.transfer, transfer_type::frameByFrame);
    EXPECT_EQ(edit.sequenceKind, 0);
    EXPECT_FALSE(edit.recording);
}

TEST_F(CreateEdit, TheOneLabelNeverCountsIn1001) {
    Sibling sibling;
    for (Zq::FrameRate const rate :
         {Zq::FrameRate::f23_976, Zq::FrameRate::f25, Zq::FrameRate::f29_97, Zq::FrameRate::f47_952,
          Zq::FrameRate::f59_94, Zq::FrameRate::f119_88, Zq::FrameRate::unknown}) {
        fake::EditState const edit = made(clipOfBoth(rate));
        ASSERT_EQ(edit.labels.size(), 1U);
        EditLabel const expected{.position = 0,
                                 .scanMode = static_cast<Zq::Image::ScanMode>(1),
                                 .frameRate = rate,
                                 .countsIn1001 = false,
                                 .sourceOffset = 0};
        EXPECT_EQ(edit.labels[0], expected);
        fake::EditState const theirs = madeBy(sibling, clipOfBoth(rate));
        ASSERT_EQ(theirs.labels.size(), 1U);
        EXPECT_EQ(theirs.labels[0].countsIn1001, Zq::has1001Factor(rate));
    }
}

TEST_F(CreateEdit, TheServiceIsNotAsked) {
    connect();
    (void)resource.createEdit(withDuration("1"));
    EXPECT_EQ(host.network.requestCount(), 0U);
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(CreateEdit, ASearchResultBecomesAnEditWithItsPreview) {
    RemoteAsset const asset =
        assetOf(R"({"id":123,"title":"Sea","duration":12.48,"preview_url":"https://m.test/p/1.mp4",)"
                R"("download_format_details":[{"frame_rate":29.97}]})");
    EditModifier const edit = resource.openEdit(asset, iMediaFileRepository::eOpenNormally);
    ASSERT_FALSE(edit.isEmpty());
    fake::EditState const state = host.edits.stateOf(edit->getCookie());
    EXPECT_EQ(utf8(edit->getName()), "Sea");
    EXPECT_EQ(state.rate, Zq::FrameRate::f29_97);
    EXPECT_EQ(state.sourceDuration_s, 12.48);
    EXPECT_EQ(utf8(state.previewLocation), "Virtual:FQ https://m.test/p/1.mp4");
    EXPECT_EQ(resource.findLocalItem(asset), state.cookie);
}

TEST_F(CreateEdit, OpeningAnAssetTwiceGivesTheSameEdit) {
    RemoteAsset const asset = withDuration("5");
    EditModifier const first = resource.openEdit(asset, iMediaFileRepository::eOpenNormally);
    EditModifier const second = resource.openEdit(asset, iMediaFileRepository::eOpenNormally);
    ASSERT_FALSE(first.isEmpty());
    ASSERT_FALSE(second.isEmpty());
    EXPECT_EQ(first->getCookie(), second->getCookie());
    EXPECT_EQ(host.edits.cookies().size(), 1U);
    EXPECT_EQ(host.externalIds.record.calls(),
              (std::vector<std::string>{"findObject FQ 123", "associate FQ 123", "findObject FQ 123"}));
}

TEST_F(CreateEdit, TwoClipsWithoutAnIdAreOneEdit) {
    SearchResults const page =
        pageOf(answerOf("[" + itemWith(R"("title":"A")") + "," + itemWith(R"("title":"B")") + "]"));
    ASSERT_EQ(page.assets.size(), 2U);
    EditModifier const first = resource.openEdit(page.assets[0], iMediaFileRepository::eOpenNormally);
    EditModifier const second = resource.openEdit(page.assets[1], iMediaFileRepository::eOpenNormally);
    EXPECT_EQ(first->getCookie(), second->getCookie());
    EXPECT_EQ(utf8(second->getName()), "A");
}

TEST_F(CreateEdit, AClipOfTheOtherRepositoryWithTheSameIdIsAnotherEdit) {
    Sibling sibling;
    RemoteAsset const asset = clipOfBoth(Zq::FrameRate::f25);
    EditModifier const theirs = sibling.openEdit(asset, iMediaFileRepository::eOpenNormally);
    EditModifier const ours = resource.openEdit(asset, iMediaFileRepository::eOpenNormally);
    EXPECT_NE(theirs->getCookie(), ours->getCookie());
}

} // namespace
} // namespace framequarry_tests
