#include <gmock/gmock.h>

#include "tests/engine/interchange/Samples.h"

namespace {

using engine::ExportFormat;
using engine::ExportWarning;
using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;

std::string edl(engine::ExportSequence const& sequence) {
    return engine::exportSequence(sequence, ExportFormat::edl)->text;
}

TEST(Edl, TellsEachCutWithItsTimecodesAndItsSource) {
    EXPECT_EQ(edl(test::sampleSequence()), R"(TITLE: First cut
FCM: NON-DROP FRAME

001  T712     AA/V  C        00:00:00:10 00:00:01:15 01:00:00:00 01:00:01:05
* FROM CLIP NAME: Sunset
* SOURCE FILE: /media/Tarn7/12 a.mov
* CLIP ID: T7 12
* SOURCE: Tarn7
* LICENCE: owned

002  T77      V     C        00:00:00:00 00:00:01:00 01:00:01:05 01:00:02:05
* FROM CLIP NAME: Waves <&> "foam"
* SOURCE FILE: https://www.tarn7.example/previews/000000007.mov
* CLIP ID: T7 7
* SOURCE: Tarn7
* LICENCE: preview, not licensed
)");
}

TEST(Edl, AWarningNamesEveryClipThatIsStillAPreview) {
    auto const exported = engine::exportSequence(test::sampleSequence(), ExportFormat::edl);
    ASSERT_EQ(exported->warnings.size(), 1U);
    EXPECT_EQ(exported->warnings[0].kind, ExportWarning::Kind::preview);
    EXPECT_EQ(exported->warnings[0].clip, "Waves <&> \"foam\"");
    EXPECT_EQ(exported->warnings[0].text,
              "\"Waves <&> \"foam\"\" (T7 7) is still a preview and is not licensed");
}

TEST(Edl, APreviewThatIsUsedTwiceIsNamedOnce) {
    engine::ExportSequence sequence = test::sampleSequence();
    sequence.clips.push_back(sequence.clips.back());
    EXPECT_EQ(engine::exportSequence(sequence, ExportFormat::edl)->warnings.size(), 1U);
}

TEST(Edl, ASequenceInDropFrameBeginsAtOneHourAllTheSame) {
    engine::ExportSequence sequence = test::sampleSequence();
    sequence.rate = Zq::FrameRate::f29_97;
    for (engine::ExportClip& clip : sequence.clips) {
        clip.rate = sequence.rate;
    }
    EXPECT_THAT(edl(sequence), HasSubstr("FCM: DROP FRAME\n"));
    EXPECT_THAT(edl(sequence), HasSubstr(" 01:00:00;00 01:00:01;00\n"));
}

TEST(Edl, AtTheDoubleRateDropFrameBeginsAtOneHourToo) {
    engine::ExportSequence sequence = test::sampleSequence();
    sequence.rate = Zq::FrameRate::f59_94;
    for (engine::ExportClip& clip : sequence.clips) {
        clip.rate = sequence.rate;
    }
    EXPECT_THAT(edl(sequence), HasSubstr(" 01:00:00;00 01:00:00;30\n"));
}

TEST(Edl, AnIdThatIsTooLongForAReelStandsInTheNotesOnly) {
    engine::ExportSequence sequence = test::sampleSequence();
    sequence.clips[0].id = "4294967295";
    EXPECT_THAT(edl(sequence), HasSubstr("001  AX       AA/V"));
    EXPECT_THAT(edl(sequence), HasSubstr("* CLIP ID: T7 4294967295\n"));
}

TEST(Edl, AClipOfAnotherRateIsWarnedOf) {
    engine::ExportSequence sequence = test::sampleSequence();
    sequence.clips.resize(1);
    sequence.clips[0].rate = Zq::FrameRate::f50;
    EXPECT_THAT(engine::exportSequence(sequence, ExportFormat::edl)->warnings,
                ElementsAre(AllOf(Field(&ExportWarning::kind, ExportWarning::Kind::otherRate),
                                  Field(&ExportWarning::text, HasSubstr("another rate than the sequence")))));
}

TEST(Edl, MoreThanThousandEventsAreWarnedOf) {
    engine::ExportSequence sequence = test::sampleSequence();
    sequence.clips.assign(1000, test::ownedClip());
    EXPECT_THAT(engine::exportSequence(sequence, ExportFormat::edl)->warnings,
                ElementsAre(AllOf(Field(&ExportWarning::kind, ExportWarning::Kind::tooManyEvents),
                                  Field(&ExportWarning::text, HasSubstr("999 events")))));
    EXPECT_THAT(edl(sequence), HasSubstr("\n1000  T712"));
}

TEST(Export, ASequenceWithoutClipsIsRefused) {
    engine::ExportSequence sequence = test::sampleSequence();
    sequence.clips.clear();
    for (ExportFormat const format :
         {ExportFormat::mlt, ExportFormat::edl, ExportFormat::fcpxml, ExportFormat::otio}) {
        EXPECT_EQ(engine::exportSequence(sequence, format).error(),
                  "the sequence \"First cut\" has no clips");
    }
}

TEST(Export, ASequenceOfOwnedClipsHasNoWarnings) {
    engine::ExportSequence sequence = test::sampleSequence();
    sequence.clips.resize(1);
    for (ExportFormat const format :
         {ExportFormat::mlt, ExportFormat::edl, ExportFormat::fcpxml, ExportFormat::otio}) {
        EXPECT_THAT(engine::exportSequence(sequence, format)->warnings, IsEmpty());
    }
}

TEST(Export, FormatsGoByTheirNamesAlone) {
    EXPECT_EQ(engine::exportFormatFromName("mlt"), ExportFormat::mlt);
    EXPECT_EQ(engine::exportFormatFromName("edl"), ExportFormat::edl);
    EXPECT_EQ(engine::exportFormatFromName("fcpxml"), ExportFormat::fcpxml);
    EXPECT_EQ(engine::exportFormatFromName("otio"), ExportFormat::otio);
    EXPECT_EQ(engine::exportFormatFromName("MLT"), std::nullopt);
    EXPECT_EQ(engine::exportFormatFromName(""), std::nullopt);
}

} // namespace
