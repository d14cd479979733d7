#include "apps/zq/fetchClips.h"

#include <algorithm>

#include "apps/zq/EditLookup.h"
#include "apps/zq/Reason.h"
#include "apps/zq/TaskWait.h"
#include "apps/zq/Text.h"

namespace zq {

namespace {

FetchClip prepare(Session& session, RemoteAsset const& asset) {
    FetchClip clip;
    clip.asset = asset;
    clip.id = utf8(asset.id);
    if (std::uint64_t const task = session.fetches().taskOf(clip.id, session.engine().tasks()); task != 0) {
        throw ReasonedError(Reason::beingFetched,
                            "clip " + clip.id + " is being fetched by task " + std::to_string(task));
    }
    clip.edit = openAsset(session, asset);
    clip.cookie = clip.edit->getCookie();
    clip.name = utf8(clip.edit->getName());
    clip.localPath = session.base().describeLocalMediaLocation(asset, MediaFileRepositoryBase::eFullMedia);
    return clip;
}

} // namespace

QueuedFetch queueFetch(Session& session, LightweightVector<RemoteAsset> const& assets,
                       FetchJob::Watcher watcher) {
    engine::Project& project = session.writableProject();
    MediaFileRepositoryBase& repository = session.base();
    std::vector<FetchClip> clips;
    std::set<WideString> seen;
    for (RemoteAsset const& asset : assets) {
        if (seen.insert(asset.id).second) {
            if (isCommandCancelled()) {
                throw ReasonedError(Reason::cancelled, "interrupted");
            }
            clips.push_back(prepare(session, asset));
        }
    }
    std::string const name = clips.size() == 1 ? "fetch clip " + clips.front().id
                                               : "fetch " + std::to_string(clips.size()) + " clips";
    auto const job = std::make_shared<FetchJob>(std::move(clips), std::move(watcher));
    QueuedFetch queued;
    queued.task =
        session.engine().tasks().add(name, [job, &repository, &project](engine::iTaskMonitor& monitor) {
            return job->run(repository, project, monitor);
        });
    queued.job = job;
    session.fetches().add(queued.task, job);
    return queued;
}

std::string eventLine(FetchEvent const& event) {
    std::string const indent(static_cast<std::size_t>(2 * event.indent), ' ');
    if (event.kind == FetchEvent::Kind::progress) {
        return indent + std::to_string(static_cast<int>(event.fraction * 100)) + "%";
    }
    return indent + event.text;
}

engine::TaskReport followFetch(Session& session, QueuedFetch const& fetch) {
    std::size_t told = 0;
    return waitForTask(session, fetch.task, [&](engine::TaskReport const& report) {
        for (FetchEvent const& event : fetch.job->eventsSince(told)) {
            ++told;
            if (event.kind == FetchEvent::Kind::line || !session.live().hasBar()) {
                session.live().say(eventLine(event));
            }
        }
        if (!report.ended) {
            session.live().showProgress(report.step, report.progress);
        }
    });
}

} // namespace zq
