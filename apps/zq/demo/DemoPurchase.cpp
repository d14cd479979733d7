// The walk from the price of a sequence to its relinked clips.

#include <algorithm>
#include <atomic>
#include <functional>
#include <iterator>
#include <set>
#include <tuple>

#include "apps/zq/EditLookup.h"
#include "apps/zq/TaskWait.h"
#include "apps/zq/Text.h"
#include "apps/zq/UsageReport.h"
#include "apps/zq/commands/EditListing.h"
#include "apps/zq/demo/DemoWalk.h"
#include "apps/zq/demo/demoTools.h"
#include "apps/zq/fetchClips.h"
#include "apps/zq/orderClips.h"
#include "host/files/iFileManager.h"
#include "host/os/OS.h"

namespace zq {

namespace {

namespace fs = std::filesystem;

constexpr double cancelAt = 0.5; // of the transfer

bool hasFile(Session& session, RemoteAsset const& asset) {
    return OS().fileManager().fileExists(
        session.base().describeLocalMediaLocation(asset, MediaFileRepositoryBase::eFullMedia));
}

// A measure of how large the clip's file may be.
double picturePixels(Session& session, RemoteAsset const& asset) {
    engine::EditRecord const edit = recordOf(session, openAsset(session, asset));
    return edit.sourceDuration_s * edit.video.width * edit.video.height;
}

} // namespace

std::string DemoWalk::costStep() {
    return totalInWords(reportUsage(session_, sequence_));
}

std::string DemoWalk::buyStep() {
    if (toBuy_.empty()) {
        return "nothing to buy: all of them are owned";
    }
    Purchase const purchase = orderClips(session_, toBuy_, Payment::credits).purchase;
    if (purchase.code == Purchase::refused) {
        return purchase.words + "; these clips stay previews";
    }
    if (purchase.code != Purchase::done) {
        throw CommandError(purchase.words);
    }
    return purchase.words;
}

std::string DemoWalk::ownedStep() {
    owned_ = session_.ownedAssets();
    std::set<WideString> const ids = [&] {
        std::set<WideString> all;
        for (RemoteAsset const& asset : owned_) {
            all.insert(asset.id);
        }
        return all;
    }();
    std::size_t const here = chosenAndOwned().size();
    return counted(ids.size(), "clip") + ", " + std::to_string(here) + " of them in the sequence";
}

LightweightVector<RemoteAsset> DemoWalk::chosenAndOwned() const {
    LightweightVector<RemoteAsset> both;
    for (RemoteAsset const& wanted : chosen_) {
        auto const found = std::ranges::find(owned_, wanted.id, &RemoteAsset::id);
        if (found != owned_.end()) {
            both.push_back(*found);
        }
    }
    return both;
}

std::string DemoWalk::cancelledFetchStep() {
    LightweightVector<RemoteAsset> const all = chosenAndOwned();
    LightweightVector<RemoteAsset> one;
    std::ranges::copy_if(all, std::back_inserter(one),
                         [&](RemoteAsset const& asset) { return !hasFile(session_, asset); });
    if (one.empty()) {
        return "left out: the files are on this disk already";
    }
    // The largest, as far as one can tell: the others may come faster than they can be cancelled.
    std::ranges::stable_sort(one, std::greater(),
                             [&](RemoteAsset const& asset) { return picturePixels(session_, asset); });
    one.resize(1);
    // Its task is cancelled as soon as half of the file has come, from the task's own thread.
    auto const task = std::make_shared<std::atomic<std::uint64_t>>(0);
    engine::TaskQueue& tasks = session_.engine().tasks();
    QueuedFetch const fetch = queueFetch(session_, one, [task, &tasks](FetchEvent const& event) {
        bool const isHalfWay = event.kind == FetchEvent::Kind::progress && event.fraction >= cancelAt &&
                               event.fraction < 1; // behind its end a transfer cannot be cancelled
        if (isHalfWay && task->load() != 0) {
            tasks.cancel(task->load());
        }
    });
    task->store(fetch.task);
    engine::TaskReport const report =
        waitForTask(session_, fetch.task, [&](engine::TaskReport const& now) { showProgress(now.progress); });
    std::string const name = fetch.job->clips().front().name;
    FetchOutcome const outcome = fetch.job->outcome();
    if (report.status != iBackgroundTask::eCancelling && !outcome.failed.empty()) {
        throw CommandError(name + ": " + outcome.failed.front().reason);
    }
    if (outcome.relinked.empty() && !hasFile(session_, one.front())) {
        return name + ": cancelled; nothing of it is left on the disk, and the edit plays its preview";
    }
    return name + " came too fast: it was done before it could be cancelled";
}

std::string DemoWalk::fetchStep() {
    LightweightVector<RemoteAsset> const all = chosenAndOwned();
    if (all.empty()) {
        return "nothing to fetch: no clip of the sequence is owned";
    }
    QueuedFetch const fetch = queueFetch(session_, all);
    static_cast<void>(waitForTask(session_, fetch.task, [&](engine::TaskReport const& now) {
        double const done = static_cast<double>(fetch.job->outcome().relinked.size());
        showProgress(now.ended ? 1 : (done + now.progress) / static_cast<double>(all.size()));
    }));
    FetchOutcome const outcome = fetch.job->outcome();
    if (!outcome.failed.empty()) {
        throw CommandError(outcome.failed.front().name + ": " + outcome.failed.front().reason);
    }
    if (outcome.relinked.size() < all.size()) {
        throw CommandError("cancelled");
    }
    return counted(outcome.relinked.size(), "file") + " in " +
           fs::path(outcome.relinked.front().file).parent_path().string();
}

std::string DemoWalk::compareStep() {
    SequenceView const now = viewSequence(session_, sequence_);
    auto const cut = [](SequencePiece const& piece) {
        engine::Placement const& at = piece.placement;
        return std::tuple(at.number, at.edit, at.in, at.out, at.start, at.length);
    };
    if (!std::ranges::equal(placed_->pieces, now.pieces, {}, cut, cut)) {
        throw CommandError("a cut of \"" + sequence_ + "\" has changed");
    }
    std::size_t relinked = 0;
    std::string differences;
    for (SequencePiece const& piece : now.pieces) {
        relinked += piece.edit.mediaLocation.isEmpty() ? 0U : 1U;
        for (engine::MediaDifference const& difference : piece.edit.differences) {
            differences += "; " + utf8(piece.edit.name()) + ": " + inWords(difference);
        }
    }
    return std::to_string(relinked) + " of " + counted(now.pieces.size(), "clip") +
           " play the full file, every cut is where it was" + differences;
}

} // namespace zq
