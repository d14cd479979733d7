// The transfer of a full file and the streaming of a preview meet every fault that a media answer can have.

#include <gmock/gmock.h>

#include <fstream>

#include "host/edit/EditPtr.h"
#include "host/resources/resourceStr.h"
#include "tests/road/Faults.h"

namespace {

using namespace road_tests;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

// What becomes of the transfer.
enum class Ending {
    whole,   // the file is there and the edit plays it
    failed,  // a line with the status, and no file
    refused, // what came is no media: the edit keeps its preview, and the file makes way
};

struct TransferFault {
    Fault fault;
    Ending ending = Ending::failed;
    int status = 0; // in the line of a failure
};

void PrintTo(TransferFault const& row, std::ostream* out) {
    *out << row.fault.name;
}

std::vector<TransferFault> transferFaults() {
    using enum tarn7d::FaultKind;
    return {
        {{"ADelay", timeRule(delay, std::chrono::milliseconds(50))}, Ending::whole},
        {{"AServerWithoutRanges", rule(noRanges)}, Ending::whole},
        {{"AChangedFile", rule(changedValidator)}, Ending::whole},
        {{"AnAnswerWithoutItsBody", rule(cut, 0)}, Ending::failed, 0},
        {{"AnAnswerThatIsCut", rule(cut, 20'000)}, Ending::failed, 0},
        {{"AnAnswerThatAnnouncesTooMuch", rule(wrongLength, 1000)}, Ending::failed, 0},
        {{"AnAnswerThatIsLost", rule(lostAnswer)}, Ending::failed, 0},
        {{"AStatus403", statusRule(403)}, Ending::failed, 403},
        {{"AStatus404", statusRule(404)}, Ending::failed, 404},
        {{"AStatus500", statusRule(500)}, Ending::failed, 500},
        {{"AStatus503", statusRule(503)}, Ending::failed, 503},
        {{"AnExpiredAddress", rule(expiredAddress)}, Ending::failed, 403},
        {{"AnAnswerThatAnnouncesTooLittle", rule(wrongLength, -10'000)}, Ending::refused},
        {{"APageInPlaceOfTheFile", rule(notJson)}, Ending::refused},
    };
}

FetchLog::Line failureLine(int status) {
    WideString text = resourceStrW(13656);
    text.replaceAll(L"$CLIP$", L"Car");
    return {utf8(text) + " (" + std::to_string(status) + ")", LoggerBase::eTransferFailed, 1};
}

class Transfer : public Road, public testing::WithParamInterface<TransferFault> {
protected:
    Transfer() : car_(bought("car")), file_(host().fullFile(car_)) {}

    void spoilTransfer() {
        tarn7d::FaultRule met = GetParam().fault.rule;
        met.path = "/full/";
        (void)desk().add(met);
    }
    void expectWhole() {
        EXPECT_EQ(host().playedMedia(car_), file_.string());
        EXPECT_TRUE(same(bytesOf(file_), footageBytes("car.mov")));
    }
    // The lines of every transfer that begins, and then these.
    template <class... Lines>
    [[nodiscard]] auto linesAre(Lines... further) {
        return ElementsAre(FetchLog::Line{"Car", LoggerBase::ePlain, 0},
                           FetchLog::Line{file_.string(), LoggerBase::ePlain, 0},
                           FetchLog::Line{utf8(resourceStrW(13365)), LoggerBase::eTransferStarts, 1},
                           further...);
    }

    RemoteAsset const car_;
    std::filesystem::path const file_;
};

TEST_P(Transfer, EndsAsTheFaultDemandsAndTheNextFetchSucceeds) {
    spoilTransfer();
    RoadHost::Fetch const first = host().fetch(car_);
    EXPECT_EQ(desk().list().at(0).met, 1);
    EXPECT_TRUE(first.result) << "the service has given an address";
    EXPECT_TRUE(first.isIndentBack);
    switch (GetParam().ending) {
    case Ending::whole:
        EXPECT_THAT(first.lines, linesAre());
        expectWhole();
        break;
    case Ending::failed:
        EXPECT_THAT(first.lines, linesAre(failureLine(GetParam().status)));
        EXPECT_THAT(host().mediaFiles(), IsEmpty());
        break;
    case Ending::refused:
        EXPECT_THAT(first.lines, linesAre());
        EXPECT_THAT(host().logLines(), Contains(HasSubstr(" is not used: ")));
        EXPECT_FALSE(std::filesystem::exists(file_));
        break;
    }
    if (GetParam().ending != Ending::whole) {
        EXPECT_EQ(host().playedMedia(car_), "");
    }
    RoadHost::Fetch const second = host().fetch(car_);
    EXPECT_TRUE(second.result);
    expectWhole();
    // Nothing of it is taken for unfinished by the next start.
    host().restart();
    EXPECT_TRUE(same(bytesOf(file_), footageBytes("car.mov")));
}
INSTANTIATE_TEST_SUITE_P(Meets, Transfer, testing::ValuesIn(transferFaults()),
                         [](auto const& row) { return row.param.fault.name; });

class TransferTest : public Road {};

TEST_F(TransferTest, OfAnAddressThatHadExpiredWhenItWasGivenFailsAndTheNextFetchAsksForAnother) {
    RemoteAsset const car = bought("car");
    tarn7d::FaultRule expired = rule(tarn7d::FaultKind::expiredAddress);
    expired.command = "download";
    (void)desk().add(expired);
    RoadHost::Fetch const first = host().fetch(car);
    EXPECT_TRUE(first.result);
    EXPECT_EQ(first.lines.back(), failureLine(403));
    EXPECT_THAT(host().mediaFiles(), IsEmpty());
    EXPECT_TRUE(host().fetch(car).result);
    EXPECT_TRUE(same(bytesOf(host().fullFile(car)), footageBytes("car.mov")));
}

TEST_F(TransferTest, ThatFallsSilentIsLeftWithinHalfASecondOfBeingCancelledAndWritesNoFailure) {
    for (std::int64_t const bytes : {0, 20'000}) {
        RemoteAsset const car = bytes == 0 ? bought("car") : host().owned(utf8(clip("car").id));
        EditModifier const edit = host().client().openEdit(car, iMediaFileRepository::eOpenNormally);
        tarn7d::FaultRule silent = timeRule(tarn7d::FaultKind::stall, std::chrono::minutes(5));
        silent.path = "/full/";
        silent.bytes = bytes;
        (void)desk().add(silent);
        auto const log = Zq::makeShared<FetchLog>();
        bool result = false;
        EXPECT_LT(cancelledAtFault([&] {
                      result = host().client().fetchFullMedia(listOf(car), 0,
                                                              LoggerHandle(Zq::Ptr<LoggerBase>(log)));
                  }),
                  std::chrono::milliseconds(500));
        EXPECT_TRUE(result);
        EXPECT_EQ(log->lines().back().type, LoggerBase::eTransferStarts) << "no failure was written";
        EXPECT_EQ(log->indent(), 0);
        EXPECT_THAT(host().mediaFiles(), IsEmpty());
        EXPECT_EQ(host().playedMedia(car), "");
        desk().clear();
    }
    RemoteAsset const car = host().owned(utf8(clip("car").id));
    EXPECT_TRUE(host().fetch(car).result);
    EXPECT_TRUE(same(bytesOf(host().fullFile(car)), footageBytes("car.mov")));
}

TEST_F(TransferTest, OfARefusedFirstClipDoesNotKeepTheSecondFromItsFile) {
    LightweightVector<RemoteAsset> both;
    both.push_back(clip("car"));
    both.push_back(clip("tape"));
    ASSERT_EQ(host().client().requestCreditPurchase(both), 2);
    both[0] = host().owned(utf8(both[0].id));
    both[1] = host().owned(utf8(both[1].id));
    std::vector<EditModifier> edits;
    for (RemoteAsset const& asset : both) {
        edits.push_back(host().client().openEdit(asset, iMediaFileRepository::eOpenNormally));
    }
    tarn7d::FaultRule refusal = statusRule(500);
    refusal.command = "download";
    (void)desk().add(refusal);
    bool result = true;
    host().asTask([&] { result = host().client().fetchFullMedia(both, 0, LoggerHandle()); });
    EXPECT_FALSE(result);
    EXPECT_EQ(host().playedMedia(both[0]), "");
    EXPECT_TRUE(same(bytesOf(host().playedMedia(both[1])), footageBytes("tape.mov")));
}

// Whether a preview's bytes come through while a fault lasts.
enum class Readable {
    no,
    yes,
    byLuck, // where one answer holds all that is asked for: bytes of two generations are never joined
};

// What a preview's reader gets while a fault lasts.
struct PreviewFault {
    Fault fault;
    Readable readable = Readable::no;
};

void PrintTo(PreviewFault const& row, std::ostream* out) {
    *out << row.fault.name;
}

std::vector<PreviewFault> previewFaults() {
    using enum tarn7d::FaultKind;
    return {
        {{"ADelay", timeRule(delay, std::chrono::milliseconds(20))}, Readable::yes},
        {{"AServerWithoutRanges", rule(noRanges)}, Readable::yes},
        {{"AFileThatChangesAllTheTime", rule(changedValidator)}, Readable::byLuck},
        {{"AnswersWithoutTheirBody", rule(cut, 0)}, Readable::no},
        {{"AnswersThatAreCut", rule(cut, 1000)}, Readable::no},
        {{"AnswersThatAnnounceTooMuch", rule(wrongLength, 1000)}, Readable::no},
        {{"AnswersThatAnnounceTooLittle", rule(wrongLength, -1000)}, Readable::no},
        {{"LostAnswers", rule(lostAnswer)}, Readable::no},
        {{"Status403", statusRule(403)}, Readable::no},
        {{"Status404", statusRule(404)}, Readable::no},
        {{"Status500", statusRule(500)}, Readable::no},
        {{"Status503", statusRule(503)}, Readable::no},
        {{"PagesInPlaceOfTheFile", rule(notJson)}, Readable::no},
    };
}

// A clip that is large enough to have a preview in high quality.
class PreviewRoad : public Road {
protected:
    static constexpr char const* highQuality = "/000000003_main_xl.mp4";
    static constexpr char const* standardQuality = "/000000003_prev_264.mov";

    [[nodiscard]] RemoteAsset largeClip() {
        addFootage(test::Footage::large, "sea.mp4");
        RemoteAsset const sea = clip("sea");
        EXPECT_EQ(utf8(sea.id), "3");
        return sea;
    }
};

class Preview : public PreviewRoad, public testing::WithParamInterface<PreviewFault> {
protected:
    Preview() : sea_(largeClip()), high_(sentBytes(highQuality)), standard_(sentBytes(standardQuality)) {
        EXPECT_FALSE(same(high_, standard_));
    }
    void spoilPreviews(int count) {
        tarn7d::FaultRule met = GetParam().fault.rule;
        met.path = "/000000003";
        met.count = count;
        (void)desk().add(met);
    }
    // The whole preview of either quality, and nothing else.
    [[nodiscard]] bool isPreview(std::string const& bytes) const {
        return same(bytes, high_) || same(bytes, standard_);
    }

    RemoteAsset const sea_;
    std::string const high_;
    std::string const standard_;
};

TEST_P(Preview, IsReadRightOrNotAtAllWhileItLastsAndRightAfterwards) {
    spoilPreviews(1000);
    std::string const read = RoadHost::readThroughHost(sea_.proxyLocation);
    EXPECT_GT(desk().list().at(0).met, 0);
    if (GetParam().readable != Readable::no) {
        bool const failedAsItMay = GetParam().readable == Readable::byLuck && read == "(failed)";
        EXPECT_TRUE(isPreview(read) || failedAsItMay) << read.size() << " bytes";
    } else {
        EXPECT_TRUE(same(read, "(failed)")) << read.size() << " bytes";
    }
    desk().clear();
    EXPECT_TRUE(same(RoadHost::readThroughHost(sea_.proxyLocation), high_));
}

TEST_P(Preview, IsReadRightOrNotAtAllWhenItComesOnceAndRightAfterwards) {
    spoilPreviews(1);
    std::string const read = RoadHost::readThroughHost(sea_.proxyLocation);
    EXPECT_EQ(desk().list().at(0).met, 1);
    EXPECT_TRUE(isPreview(read) || read == "(failed)") << read.size() << " bytes";
    EXPECT_TRUE(same(RoadHost::readThroughHost(sea_.proxyLocation), high_));
}

TEST_P(Preview, LeavesTheNextStartARightOne) {
    spoilPreviews(1000);
    (void)RoadHost::readThroughHost(sea_.proxyLocation);
    desk().clear();
    WideString const path = sea_.proxyLocation;
    host().restart();
    EXPECT_TRUE(same(RoadHost::readThroughHost(path), high_));
}
INSTANTIATE_TEST_SUITE_P(Meets, Preview, testing::ValuesIn(previewFaults()),
                         [](auto const& row) { return row.param.fault.name; });

class PreviewTest : public PreviewRoad {};

TEST_F(PreviewTest, OfASilentServerIsLeftWithinHalfASecondOfBeingCancelled) {
    WideString const path = largeClip().proxyLocation;
    std::string const high = sentBytes(highQuality);
    tarn7d::FaultRule silent = timeRule(tarn7d::FaultKind::stall, std::chrono::minutes(5));
    silent.path = "/000000003";
    silent.count = 1000;
    (void)desk().add(silent);
    std::string read;
    EXPECT_LT(cancelledAtFault([&] { read = RoadHost::readThroughHost(path); }),
              std::chrono::milliseconds(500));
    EXPECT_EQ(read, "(failed)");
    desk().clear();
    EXPECT_TRUE(same(RoadHost::readThroughHost(path), high));
}

} // namespace
