// A fetch as a task, with a repository that does as it is told, and what is told of it afterwards.

#include <gmock/gmock.h>

#include <fstream>
#include <semaphore>

#include "apps/zq/FetchJob.h"
#include "apps/zq/Text.h"
#include "host/HostServices.h"
#include "host/engine/files/LocalFileManager.h"
#include "host/engine/os/TaskContext.h"
#include "tests/support/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::SizeIs;
using zq::FetchClip;
using zq::FetchEvent;
using zq::FetchJob;
using zq::FetchOutcome;

// A repository whose only real operation is the fetch.
class ToldRepository final : public MediaFileRepositoryBase {
public:
    // What fetchFullMedia does with one clip.
    std::function<bool(RemoteAsset const&, LoggerHandle const&)> fetch;

    bool fetchFullMedia(LightweightVector<RemoteAsset> const& assets, std::int32_t,
                        LoggerHandle log) override {
        bool result = true;
        for (RemoteAsset const& asset : assets) {
            result = fetch(asset, log) && result;
        }
        return result;
    }

    std::int32_t connect(HTTPConnectionInfo const&, LoggerHandle) override { return 0; }
    RepositoryDescription getDescription() const override { return newDescription(); }
    LightweightVector<LogAttribute> getLogAttributes() const override { return {}; }
    WideString getShortName() const override { return L"TO"; }
    LightweightVector<SearchOptionGroup> getSearchOptions() override { return {}; }
    RemoteAsset findRemoteAsset(Cookie const&) override { return {}; }
    std::int32_t login(configb const&) override { return 17; }
    WideString getLoginForm() override { return {}; }
    WideString getLoginLinkForm() override { return {}; }
    void logout() override {}
    LightweightVector<RemoteAsset> getPurchasedAssets() override { return {}; }
    std::int32_t requestExternalPurchase(LightweightVector<RemoteAsset> const&) override { return 0; }
    std::int32_t requestCreditPurchase(LightweightVector<RemoteAsset> const&) override { return 0; }

protected:
    WideString getFileExtension() const override { return L"mov"; }
    WideString getRemoteLocation(RemoteAsset const&, eMediaType) const override { return {}; }
    EditModifier createEdit(RemoteAsset const&) override { return {}; }
    SearchResults searchInternal(SearchQuery const&) override { return {}; }
};

class FetchTask : public testing::Test {
protected:
    FetchTask()
        : files_(L"test", folder_.path() / "unfinished"), before_(installHost(services())),
          project_(openProject()) {}
    ~FetchTask() override {
        queue_.shutDown();
        project_.reset();
        static_cast<void>(installHost(before_));
    }

    // A clip with an edit of its own in the project.
    FetchClip clip(std::string const& id) {
        FetchClip clip;
        clip.id = id;
        clip.name = "clip " + id;
        clip.asset.id = zq::wide(id);
        clip.edit = EditModifier(project_->makeNewClip(1, 0, 1.0, Zq::FrameRate::f25, Cookie()));
        clip.cookie = clip.edit->getCookie();
        clip.localPath = zq::wide((folder_.path() / (id + ".mov")).string());
        return clip;
    }
    // What a repository does with a file that has come.
    bool deliver(FetchClip const& clip) {
        std::ofstream(fs::path(zq::utf8(clip.localPath))) << "media";
        return static_cast<bool>(project_->relink(clip.cookie, clip.localPath));
    }
    std::uint64_t start(std::shared_ptr<FetchJob> const& job) {
        return queue_.add("fetch", [this, job](engine::iTaskMonitor& monitor) {
            return job->run(*repository_, *project_, monitor);
        });
    }
    engine::TaskReport run(std::shared_ptr<FetchJob> const& job) { return end(start(job)); }
    engine::TaskReport end(std::uint64_t task) {
        return queue_.waitFor(task, std::chrono::seconds(30)).value_or(engine::TaskReport());
    }

    Zq::Ptr<ToldRepository> const repository_ = Zq::makeShared<ToldRepository>();
    bool isMedia_ = true; // what the project finds when it looks at a file

private:
    HostServices services() {
        HostServices services = installedHost();
        services.files = &files_;
        services.tasks = &tasks_;
        return services;
    }
    std::unique_ptr<engine::Project> openProject() {
        auto project = engine::Project::open(folder_.path() / "project.sqlite",
                                             [this](WideString const&) -> engine::Result<engine::MediaFacts> {
                                                 if (!isMedia_) {
                                                     return engine::Failure{"no decoder opens it"};
                                                 }
                                                 engine::MediaFacts facts;
                                                 facts.videoCodec = "h264";
                                                 facts.rate = Zq::FrameRate::f25;
                                                 facts.rateNumerator = 25;
                                                 facts.frames = 20;
                                                 facts.duration_s = 0.8;
                                                 return facts;
                                             });
        return project ? std::move(*project) : nullptr;
    }

    test::TemporaryFolder folder_;
    engine::LocalFileManager files_;
    engine::TaskContext tasks_;
    HostServices const before_;

protected:
    std::unique_ptr<engine::Project> project_;
    engine::TaskQueue queue_;
};

std::vector<std::string> texts(std::vector<FetchEvent> const& events) {
    std::vector<std::string> all;
    for (FetchEvent const& event : events) {
        all.push_back(event.kind == FetchEvent::Kind::line
                          ? std::to_string(event.indent) + " " + event.text
                          : std::to_string(static_cast<int>(event.fraction * 100)) + "%");
    }
    return all;
}

TEST_F(FetchTask, TellsWhatTheRepositoryWritesAndEachPercentOnce) {
    FetchClip const only = clip("7");
    repository_->fetch = [&](RemoteAsset const&, LoggerHandle const& log) {
        log.write(L"red car", LoggerBase::ePlain);
        log.incIndent();
        log.write(L"Downloading", LoggerBase::eTransferStarts);
        for (int i = 0; i <= 1000; ++i) {
            log.reportProgress(i / 2000.0, {});
        }
        log.reportProgress(7.0, {});
        log.decIndent();
        return deliver(only);
    };
    auto const job = std::make_shared<FetchJob>(std::vector{only});
    EXPECT_TRUE(run(job).result.succeeded);
    std::vector<std::string> const told = texts(job->eventsSince(0));
    ASSERT_THAT(told, SizeIs(2 + 51 + 1));
    EXPECT_EQ(told[0], "0 red car");
    EXPECT_EQ(told[1], "1 Downloading");
    EXPECT_EQ(told[2], "0%");
    EXPECT_EQ(told[52], "50%");
    EXPECT_EQ(told[53], "100%");
    EXPECT_THAT(texts(job->eventsSince(53)), ElementsAre("100%"));
    EXPECT_THAT(job->eventsSince(1000), SizeIs(0));
}

TEST_F(FetchTask, TellsHowAFileDiffersFromWhatTheEditPromises) {
    FetchClip const only = clip("7");
    repository_->fetch = [&](RemoteAsset const&, LoggerHandle const&) { return deliver(only); };
    auto const job = std::make_shared<FetchJob>(std::vector{only});
    EXPECT_EQ(run(job).result.text, "1 of 1 clip relinked");
    FetchOutcome const outcome = job->outcome();
    ASSERT_THAT(outcome.relinked, SizeIs(1));
    EXPECT_FALSE(outcome.relinked[0].differences.empty()) << "the file is shorter";
}

TEST_F(FetchTask, KeepsTheReasonsOfFailuresApart) {
    std::vector<FetchClip> const clips{clip("1"), clip("2"), clip("3"), clip("4")};
    repository_->fetch = [&](RemoteAsset const& asset, LoggerHandle const& log) {
        if (asset.id == L"1") {
            log.write(L"refused : not owned", LoggerBase::ePlain);
            return false;
        }
        if (asset.id == L"2") {
            log.write(L"Downloading", LoggerBase::eTransferStarts);
            log.write(L"failed (404)", LoggerBase::eTransferFailed);
            return true;
        }
        if (asset.id == L"3") {
            isMedia_ = false;
            static_cast<void>(deliver(clips[2]));
            isMedia_ = true;
            return true;
        }
        return deliver(clips[3]);
    };
    auto const job = std::make_shared<FetchJob>(clips);
    engine::TaskReport const report = run(job);
    EXPECT_FALSE(report.result.succeeded);
    EXPECT_EQ(report.result.text, "1 of 4 clips relinked; clip 1: refused : not owned");
    FetchOutcome const outcome = job->outcome();
    EXPECT_FALSE(outcome.result);
    ASSERT_THAT(outcome.failed, SizeIs(3));
    EXPECT_EQ(outcome.failed[1].reason, "failed (404)");
    EXPECT_THAT(outcome.failed[2].reason, testing::HasSubstr("no decoder opens it"));
    ASSERT_THAT(outcome.relinked, SizeIs(1));
    EXPECT_EQ(outcome.relinked[0].id, "4");
}

TEST_F(FetchTask, StopsBehindTheClipThatWasCancelled) {
    std::vector<FetchClip> const clips{clip("1"), clip("2")};
    std::binary_semaphore begun(0);
    std::binary_semaphore cancelled(0);
    repository_->fetch = [&](RemoteAsset const&, LoggerHandle const&) {
        begun.release();
        cancelled.acquire();
        return true; // a cancelled transfer says nothing
    };
    auto const job = std::make_shared<FetchJob>(clips);
    std::uint64_t const task = start(job);
    begun.acquire();
    EXPECT_TRUE(queue_.cancel(task));
    cancelled.release();
    EXPECT_EQ(end(task).status, iBackgroundTask::eCancelling);
    FetchOutcome const outcome = job->outcome();
    ASSERT_THAT(outcome.failed, SizeIs(1));
    EXPECT_EQ(outcome.failed[0].id, "1");
    EXPECT_EQ(outcome.failed[0].reason, "cancelled");
}

TEST_F(FetchTask, IsListedWhileItRuns) {
    std::binary_semaphore begun(0);
    std::binary_semaphore goOn(0);
    FetchClip const only = clip("7");
    repository_->fetch = [&](RemoteAsset const&, LoggerHandle const&) {
        begun.release();
        goOn.acquire();
        return deliver(only);
    };
    auto const job = std::make_shared<FetchJob>(std::vector{only});
    zq::FetchList list;
    std::uint64_t const task = start(job);
    list.add(task, job);
    begun.acquire();
    EXPECT_EQ(list.taskOf("7", queue_), task);
    EXPECT_EQ(list.taskOf("8", queue_), 0U);
    goOn.release();
    static_cast<void>(end(task));
    EXPECT_EQ(list.taskOf("7", queue_), 0U);
    list.cancelAll(queue_);
}

} // namespace
