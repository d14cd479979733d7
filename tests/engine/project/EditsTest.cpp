#include <cmath>
#include <limits>
#include <map>
#include <set>

#include "tests/engine/project/ProjectFixture.h"

namespace test {
namespace {

class Edits : public ProjectTest {};

TEST_F(Edits, ANewClipHasWhatItWasMadeWith) {
    EditPtr const edit(project().makeNewClip(1, 6, 12.48, Zq::FrameRate::f25, cookieOf(1)));

    ASSERT_TRUE(edit);
    EXPECT_EQ(edit->getCookie(), cookieOf(1));
    EXPECT_TRUE(edit->isTemporary());
    EXPECT_EQ(edit->getSourceFrameRate(), Zq::FrameRate::f25);
    EXPECT_EQ(edit->getAudioChannels(), 6);
    EXPECT_TRUE(edit->getName().isEmpty());
    EXPECT_TRUE(edit->getMediaLocation().isEmpty());
    engine::EditRecord const record = project().edit(cookieOf(1)).value();
    EXPECT_EQ(record.videoChannels, 1);
    EXPECT_EQ(record.durationInFrames(), 312);
}

TEST_F(Edits, TheNullCookieHasTheProjectChooseOne) {
    std::set<Cookie> seen;
    for (int i = 0; i < 64; ++i) {
        EditPtr const edit(project().makeNewClip(1, 2, 1, Zq::FrameRate::f25, Cookie()));
        ASSERT_TRUE(edit);
        Cookie const cookie = edit->getCookie();
        EXPECT_FALSE(cookie.isNull());
        EXPECT_EQ(cookie.uuid.bytes[6] >> 4, 4);
        EXPECT_EQ(cookie.uuid.bytes[8] >> 6, 2);
        EXPECT_TRUE(seen.insert(cookie).second);
    }
}

TEST_F(Edits, TheCookieOfAnEditThatIsThereMakesNone) {
    makeClip(1, L"temporary");
    makeKeptClip(2, L"kept");

    EXPECT_EQ(project().makeNewClip(1, 2, 1, Zq::FrameRate::f25, cookieOf(1)), nullptr);
    EXPECT_EQ(project().makeNewClip(1, 2, 1, Zq::FrameRate::f25, cookieOf(2)), nullptr);
    EXPECT_EQ(EditPtr(project().open(cookieOf(2)))->getName(), L"kept");
}

TEST_F(Edits, AbsurdLengthsAreNoneOrTheLongest) {
    double const absurd[] = {-1, -1e300, std::nan(""), std::numeric_limits<double>::infinity(),
                             -std::numeric_limits<double>::infinity()};
    std::uint8_t number = 1;
    for (double const duration : absurd) {
        makeKeptClip(number, L"x", Zq::FrameRate::f25, duration);
        EXPECT_EQ(project().edit(cookieOf(number)).value().durationInFrames(), 0) << duration;
        ++number;
    }
    makeKeptClip(number, L"x", Zq::FrameRate::f120, 1e300);
    EXPECT_EQ(project().edit(cookieOf(number)).value().durationInFrames(), 120'000'000'000);
}

TEST_F(Edits, EveryNumberOfChannelsIsKept) {
    EditPtr(project().makeNewClip(0, 255, 1, Zq::FrameRate::f25, cookieOf(1)))->setTemporary(false);
    reopen();
    EXPECT_EQ(project().edit(cookieOf(1)).value().videoChannels, 0);
    EXPECT_EQ(project().edit(cookieOf(1)).value().audioChannels, 255);
}

TEST_F(Edits, ATemporaryEditEndsWithTheHost) {
    makeClip(1, L"passing");
    EXPECT_TRUE(project().edits().empty());
    EXPECT_TRUE(project().edit(cookieOf(1)));

    reopen();

    EXPECT_FALSE(project().edit(cookieOf(1)));
    EXPECT_EQ(project().open(cookieOf(1)), nullptr);
}

TEST_F(Edits, ThoseOfASequenceAreReadTogetherAsEachIsReadAlone) {
    for (std::uint8_t number = 1; number <= 5; ++number) {
        makeKeptClip(number, fromUTF8("clip " + std::to_string(number)));
        project().associate(cookieOf(number), L"T7", fromUTF8(std::to_string(number)));
    }
    EditPtr const open(project().open(cookieOf(2)));
    open->setLogAttributes(named(L"renamed, and not written yet"));
    for (int const number : {3, 1, 2, 3, 1}) {
        ASSERT_TRUE(project().place("Cut", cookieOf(static_cast<std::uint8_t>(number)), 0, 1));
    }
    engine::Sequence sequence = project().sequence("Cut").value();
    sequence.placements.push_back(sequence.placements.front());
    sequence.placements.back().edit = cookieOf(77); // one that is gone

    std::map<Cookie, engine::EditRecord> const edits = project().editsOf(sequence);

    ASSERT_EQ(edits.size(), 3U);
    for (auto const& [cookie, together] : edits) {
        engine::EditRecord const alone = project().edit(cookie).value();
        EXPECT_EQ(together.name(), alone.name());
        EXPECT_EQ(together.durationInFrames(), alone.durationInFrames());
        ASSERT_EQ(together.externalIds.size(), 1U);
        EXPECT_EQ(together.externalIds[0].id, alone.externalIds.at(0).id);
    }
    EXPECT_EQ(edits.at(cookieOf(2)).name(), L"renamed, and not written yet");
    EXPECT_TRUE(project().editsOf(engine::Sequence()).empty());
}

TEST_F(Edits, AnEditThatIsNoLongerTemporaryIsKeptWithAllThatItHas) {
    ShotVideoMetadata video;
    video.uid = static_cast<Zq::Image::FormatUID>(7);
    video.dataFormat = Zq::Image::Format::unknown;
    video.anamorphic = true;
    video.scanMode = Zq::Image::ScanMode::interlacedLowerFirst;
    video.aspectRatio = Zq::Image::AspectRatio::fourByThree;
    video.hasScanAndAspect = true;
    video.frameRate = Zq::FrameRate::f29_97;
    video.hasFrameRate = true;
    video.width = 720;
    video.height = 486;
    video.bitDepth = 10;
    video.bitsPerPixel = 16;
    video.hasSize = true;
    video.rowAlignment = 128;
    video.rowBytes = 1920;
    video.hasRowBytes = true;
    LogAttributeMap attributes = named(L"Élan vital");
    attributes.add(LogAttribute(LogAttribute::ePrice), WideString(L"12 €"));
    attributes.add(LogAttribute(UIString(), "t7_len", DBFieldTypes::duration, 0, 1,
                                static_cast<LogAttribute::eType>(1003)),
                   WideString(L"00:12"));
    EditLabel label = editLabFrom(0, Zq::Image::ScanMode::interlacedUpperFirst, Zq::FrameRate::f29_97, true);
    label.sourceOffset = 0;
    EditLabel const second = editLabFrom(40, Zq::Image::ScanMode::progressive, Zq::FrameRate::f25, false);
    {
        EditPtr const edit(project().makeNewClip(1, 2, 12.5, Zq::FrameRate::f29_97, cookieOf(1)));
        edit->setLogAttributes(attributes);
        edit->setSourceMedium(MediumRollMedium::interlaced30);
        edit->setSourceMediumDuration(12.48);
        edit->setVideoMetadata(video, true);
        edit->setFrameBased(true);
        edit->setTransfer(static_cast<transfer_type>(3));
        edit->setSequence(4, true);
        edit->addLabel(second, false);
        edit->addLabel(label, true);
        edit->setPreviewLocation(L"Virtual:T7 https://host/a.mov");
        project().associate(cookieOf(1), L"T7", L"123");
        edit->setTemporary(false);
    }
    reopen();

    ASSERT_EQ(project().edits().size(), 1U);
    engine::EditRecord const record = project().edits()[0];
    EXPECT_EQ(record.cookie, cookieOf(1));
    EXPECT_FALSE(record.temporary);
    EXPECT_EQ(record.name(), fromUTF8("Élan vital"));
    ASSERT_EQ(record.logAttributes.entries().size(), 3U);
    EXPECT_EQ(record.logAttributes.entries()[1].value, toUTF8(L"12 €"));
    EXPECT_EQ(record.logAttributes.entries()[2].key, "t7_len");
    EXPECT_EQ(record.logAttributes.entries()[2].type, 1003);
    EXPECT_EQ(record.sourceMedium, MediumRollMedium::interlaced30);
    EXPECT_EQ(record.sourceDuration_s, 12.48);
    EXPECT_EQ(record.duration_s, 12.5);
    EXPECT_TRUE(record.videoMeasured);
    EXPECT_EQ(record.video.uid, video.uid);
    EXPECT_EQ(record.video.dataFormat, video.dataFormat);
    EXPECT_EQ(record.video.anamorphic, video.anamorphic);
    EXPECT_EQ(record.video.scanMode, video.scanMode);
    EXPECT_EQ(record.video.aspectRatio, video.aspectRatio);
    EXPECT_EQ(record.video.hasScanAndAspect, video.hasScanAndAspect);
    EXPECT_EQ(record.video.frameRate, video.frameRate);
    EXPECT_EQ(record.video.hasFrameRate, video.hasFrameRate);
    EXPECT_EQ(record.video.width, video.width);
    EXPECT_EQ(record.video.height, video.height);
    EXPECT_EQ(record.video.bitDepth, video.bitDepth);
    EXPECT_EQ(record.video.bitsPerPixel, video.bitsPerPixel);
    EXPECT_EQ(record.video.hasSize, video.hasSize);
    EXPECT_EQ(record.video.rowAlignment, video.rowAlignment);
    EXPECT_EQ(record.video.rowBytes, video.rowBytes);
    EXPECT_EQ(record.video.hasRowBytes, video.hasRowBytes);
    EXPECT_TRUE(record.frameBased);
    EXPECT_EQ(static_cast<int>(record.transfer), 3);
    EXPECT_EQ(record.sequenceKind, 4);
    EXPECT_TRUE(record.open);
    EXPECT_EQ(record.labels, (std::vector{label, second}));
    EXPECT_EQ(record.previewLocation, L"Virtual:T7 https://host/a.mov");
    ASSERT_EQ(record.externalIds.size(), 1U);
    EXPECT_EQ(record.externalIds[0].kind, L"T7");
    EXPECT_EQ(record.externalIds[0].id, L"123");
}

TEST_F(Edits, EditsComeInTheOrderInWhichTheyWereKept) {
    makeClip(1, L"first made");
    makeKeptClip(2, L"second made");
    EditPtr(project().open(cookieOf(1)))->setTemporary(false);

    ASSERT_EQ(project().edits().size(), 2U);
    EXPECT_EQ(project().edits()[0].name(), L"second made");
    EXPECT_EQ(project().edits()[1].name(), L"first made");
    EditPtr(project().open(cookieOf(2)))->setLogAttributes(named(L"changed"));
    EXPECT_EQ(project().edits()[0].name(), L"changed");
}

TEST_F(Edits, NamesBeyondTheBasicPlaneComeBackAsTheyWere) {
    WideString clapper; // U+1F3AC and U+20BB7 as surrogate pairs
    for (wchar_t const unit : {wchar_t{0xd83c}, wchar_t{0xdfac}, wchar_t{0xd842}, wchar_t{0xdfb7}}) {
        clapper.append(unit);
    }
    makeKeptClip(1, clapper);
    WideString const path = makeMedia("\xF0\x9F\x8E\xAC 吉.mov", facts(Zq::FrameRate::f25, 250));
    ASSERT_TRUE(project().place("\xF0\x9F\x8E\xAC Szene Ä", cookieOf(1), {}, {}));
    ASSERT_TRUE(project().relink(cookieOf(1), path));
    reopen();

    EXPECT_EQ(project().edits()[0].name(), clapper);
    EXPECT_EQ(project().edits()[0].mediaLocation, path);
    EXPECT_EQ(project().sequenceNames(), std::vector<std::string>{"\xF0\x9F\x8E\xAC Szene Ä"});
    EXPECT_EQ(project().undo().error(), "");
    engine::Result<std::string> const undone = project().undo();
    EXPECT_EQ(*undone, "placing \"\xF0\x9F\x8E\xAC\xF0\xA0\xAE\xB7\" in \"\xF0\x9F\x8E\xAC Szene Ä\"");
}

TEST_F(Edits, ALoneSurrogateIsReplacedAndHarmsNothing) {
    WideString broken(L"a");
    broken.append(wchar_t{0xd800});
    makeKeptClip(1, broken);
    reopen();
    EXPECT_EQ(project().edits()[0].name(), fromUTF8("a\xEF\xBF\xBD"));
}

TEST_F(Edits, AllThatLeadToOneEditSeeAChangeAtOnce) {
    makeKeptClip(1, L"before");
    EditPtr const one(project().open(cookieOf(1)));
    EditPtr const other(project().open(cookieOf(1)));

    one->setLogAttributes(named(L"after"));

    EXPECT_EQ(other->getName(), L"after");
    EXPECT_EQ(project().edit(cookieOf(1)).value().name(), L"after");
    EXPECT_EQ(project().edits()[0].name(), L"after");
}

TEST_F(Edits, AChangeIsKeptWhenTheLastEditPtrEnds) {
    makeKeptClip(1, L"before");
    auto const reader = openAnother();
    {
        EditPtr const outer(project().open(cookieOf(1)));
        {
            EditPtr const inner(project().open(cookieOf(1)));
            inner->setLogAttributes(named(L"after"));
            inner->setPreviewLocation(L"p");
        }
        EXPECT_EQ(reader->edits()[0].name(), L"before");
    }
    EXPECT_EQ(reader->edits()[0].name(), L"after");
    EXPECT_EQ(reader->edits()[0].previewLocation, L"p");
}

TEST_F(Edits, AModifierKeepsEachOfItsCalls) {
    EditModifier const modifier(project().makeNewClip(1, 2, 10, Zq::FrameRate::f25, cookieOf(1)));
    modifier->setTemporary(true);
    modifier->setLogAttributes(named(L"by calls"));
    modifier->setTemporary(false);
    modifier->setPreviewLocation(L"later");
    reopen();
    EXPECT_EQ(project().edits()[0].name(), L"by calls");
    EXPECT_EQ(project().edits()[0].previewLocation, L"later");
}

TEST_F(Edits, AnEditThatWasKeptDoesNotBecomeTemporaryAgain) {
    makeKeptClip(1, L"kept");
    EditPtr const edit(project().open(cookieOf(1)));
    edit->setTemporary(true);
    EXPECT_FALSE(edit->isTemporary());
    EXPECT_EQ(log.count("kept stays in the project"), 1);
    reopen();
    EXPECT_EQ(project().edits().size(), 1U);
}

TEST_F(Edits, ATemporaryEditMayChangeItsMindBeforeItCloses) {
    makeClip(1, L"x");
    {
        EditPtr const edit(project().open(cookieOf(1)));
        edit->setTemporary(false);
        edit->setTemporary(true);
    }
    EXPECT_TRUE(project().edits().empty());
}

TEST_F(Edits, WhatAnOpenEditHasChangedIsKeptWhenTheProjectCloses) {
    makeKeptClip(1, L"before");
    EditPtr const edit(project().open(cookieOf(1)));
    edit->setLogAttributes(named(L"after"));
    reopen();
    EXPECT_EQ(project().edits()[0].name(), L"after");
}

TEST_F(Edits, AnEditThatOutlivesItsProjectIsEmptyAndHarmless) {
    makeKeptClip(1, L"x");
    EditModifier const modifier(project().open(cookieOf(1)));
    EditPtr const edit = modifier.open();
    closeProject();

    EXPECT_EQ(edit->getCookie(), cookieOf(1));
    EXPECT_TRUE(edit->getName().isEmpty());
    edit->setLogAttributes(named(L"late"));
    modifier->setTemporary(false);

    reopen();
    EXPECT_EQ(project().edits()[0].name(), L"x");
}

TEST_F(Edits, TheDoorsOfTheHostLeadToThem) {
    HostServices services = installedHost();
    services.edits = &project();
    services.externalIds = &project();
    HostServices const before = installHost(services);

    EditModifier const made = EditManager::makeNewClip(1, 2, 10, Zq::FrameRate::f25, cookieOf(1));
    made->setLogAttributes(named(L"through the door"));
    ExtIDMgr::instance().setAssociatedID(cookieOf(1), L"T7", L"99");
    EditPtr const opened = EditPtr::i_open(cookieOf(1), 0);
    WideString const id = ExtIDMgr::instance().getAssociatedID(cookieOf(1), L"T7");
    installHost(before);

    ASSERT_TRUE(opened);
    EXPECT_EQ(opened->getName(), L"through the door");
    EXPECT_EQ(id, L"99");
}

} // namespace
} // namespace test
