#include <atomic>
#include <thread>

#include "tests/engine/media/MediaFixture.h"

namespace {

class MediaInParallel : public test::MediaFixture {};

TEST_F(MediaInParallel, SeveralReadersOfOneFileAndOfOthersDoNotDisturbEachOther) {
    std::vector<std::string> const names{"front.mp4", "end.mov", "jpeg.mov", "front.mp4"};
    std::vector<std::vector<test::ReferenceFrame>> references;
    for (std::string const& name : names) {
        references.push_back(test::referenceFrames(test::mediaFootage(name)));
    }
    std::atomic<int> right{0};
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < names.size(); ++i) {
        threads.emplace_back([&, i] {
            auto opened = engine::MediaReader::open(footage(names[i]));
            bool good =
                static_cast<bool>(opened) && static_cast<bool>(engine::inspectMedia(footage(names[i])));
            for (std::size_t const number : {std::size_t{20}, std::size_t{3}, std::size_t{40}}) {
                if (good) {
                    auto const frame = (*opened)->seek(references[i][number].time_s);
                    good = frame && test::digestOf(frame->picture()) == references[i][number].digest;
                }
            }
            right += good ? 1 : 0;
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(right, static_cast<int>(names.size()));
}

TEST_F(MediaInParallel, ACancelEndsAReaderThatWaitsForItsFile) {
    Zq::Ptr<test::WatchedFile> const file(new test::WatchedFile(files.openForRead(footage("larger.mp4"))));
    std::atomic<bool> waiting{false};
    // As a streaming file on a silent server: it returns only once its task is cancelled.
    file->beforeRead = [&] {
        if (file->reads > 4) {
            waiting = true;
            waiting.notify_all();
            while (BackgroundTaskQueueBase::getCurrentTaskStatus() != iBackgroundTask::eCancelling) {
                std::this_thread::yield();
            }
            file->failing = true;
        }
    };
    std::string error;
    std::thread thread([&] {
        auto opened = engine::MediaReader::open(Zq::Ptr<iFile>(file));
        error = opened ? (*opened)->countFrames().error() : opened.error();
    });
    waiting.wait(false);
    task.cancel();
    thread.join();
    EXPECT_EQ(error, "cancelled");
}

} // namespace
