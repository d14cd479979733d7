// "fetch": the full files of owned clips.

#include <algorithm>

#include "apps/zq/Command.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/Commands.h"
#include "apps/zq/commands/EditListing.h"
#include "apps/zq/commands/FetchListing.h"
#include "apps/zq/fetchClips.h"

namespace zq {

namespace {

LightweightVector<RemoteAsset> choose(LightweightVector<RemoteAsset> const& owned,
                                      std::vector<std::string> const& ids, bool isSold) {
    LightweightVector<RemoteAsset> chosen;
    for (std::string const& id : ids) {
        requireClipNumber(id);
        auto const found = std::ranges::find(owned, wide(id), &RemoteAsset::id);
        if (found == owned.end()) {
            throw CommandError(isSold ? "clip " + id + " is not owned: zq buy " + id + " --credits buys it"
                                      : "there is no clip " + id);
        }
        chosen.push_back(*found);
    }
    return chosen;
}

void addEvents(JSON::Builder& json, std::vector<FetchEvent> const& events) {
    json.startArray("events");
    for (FetchEvent const& event : events) {
        json.startChild(nullptr);
        if (event.kind == FetchEvent::Kind::progress) {
            addDecimal(json, "progress", event.fraction);
        } else {
            addNumber(json, "type", static_cast<std::int32_t>(event.type));
            json.add("indent", event.indent);
            addText(json, "text", event.text);
        }
        json.endChild();
    }
    json.endArray();
}

void addOutcome(JSON::Builder& json, FetchOutcome const& outcome) {
    json.add("result", outcome.result);
    json.startArray("relinked");
    for (FetchedClip const& clip : outcome.relinked) {
        json.startChild(nullptr);
        addText(json, "id", clip.id);
        addText(json, "name", clip.name);
        addText(json, "edit", engine::cookieText(clip.cookie));
        addText(json, "file", clip.file);
        addDifferences(json, "differences", clip.differences);
        addIntegers(json, "cutShort", clip.cutShort);
        json.endChild();
    }
    json.endArray();
    addUnfetched(json, "failed", outcome.failed);
}

// Said at once and not as the reply's text, so that a failure does not hide what succeeded.
void tell(LiveOutput& live, FetchOutcome const& outcome) {
    for (FetchedClip const& clip : outcome.relinked) {
        live.say("relinked: " + clip.id + " " + clip.name + " plays " + clip.file);
        for (engine::MediaDifference const& difference : clip.differences) {
            live.say("  " + inWords(difference));
        }
        if (!clip.cutShort.empty()) {
            live.say("  uses that show frames which the file does not have: " +
                     std::to_string(clip.cutShort.size()));
        }
    }
    for (UnfetchedClip const& clip : outcome.failed) {
        live.say("not fetched: " + clip.id + " " + clip.name + ": " + clip.reason);
    }
}

// The clips whose turn did not come: their task was cancelled.
void addUnbegun(FetchOutcome& outcome, FetchJob const& job) {
    for (FetchClip const& clip : job.clips()) {
        bool const isDone =
            std::ranges::find(outcome.relinked, clip.id, &FetchedClip::id) != outcome.relinked.end() ||
            std::ranges::find(outcome.failed, clip.id, &UnfetchedClip::id) != outcome.failed.end();
        if (!isDone) {
            outcome.failed.push_back({clip.id, clip.name, "cancelled", UnfetchedClip::Why::cancelled});
        }
    }
}

class Fetch final : public Command {
public:
    void declare(CLI::App& options) override {
        options.add_option("ID", ids_, "numbers of owned clips");
        options.add_flag("--owned", owned_, "all that the account owns");
        options.add_flag("--background", background_,
                         "go on with further commands meanwhile; \"tasks\" shows how far it is");
    }

    Reply run(Session& session) override {
        if (ids_.empty() != owned_) {
            throw CommandError("fetch takes the numbers of clips, or --owned for all of them");
        }
        if (background_ && !session.isShell()) {
            throw CommandError("a background fetch would end with this command; use it in zq shell");
        }
        static_cast<void>(session.writableProject());
        LightweightVector<RemoteAsset> const all = session.ownedAssets();
        QueuedFetch const queued =
            queueFetch(session, owned_ ? all : choose(all, ids_, session.needsSignIn()));
        return background_ ? goOn(queued) : wait(session, queued);
    }

private:
    static Reply goOn(QueuedFetch const& queued) {
        Reply reply;
        reply.text = "task " + std::to_string(queued.task) + "\n";
        reply.members = [task = queued.task](JSON::Builder& json) { addNumber(json, "task", task); };
        return reply;
    }

    static Reply wait(Session& session, QueuedFetch const& queued) {
        engine::TaskReport const report = followFetch(session, queued);
        FetchOutcome outcome = queued.job->outcome();
        addUnbegun(outcome, *queued.job);
        Reply reply;
        reply.standsInterrupted = true;
        tell(session.live(), outcome);
        if (!outcome.failed.empty()) {
            UnfetchedClip const& first = outcome.failed.front();
            std::string const others = outcome.failed.size() == 1
                                           ? std::string()
                                           : "; " + std::to_string(outcome.failed.size() - 1) + " more";
            reply.error = "clip " + first.id + " was not fetched: " + first.reason + others;
        } else if (!report.result.succeeded) {
            reply.error = report.result.text;
        }
        reply.members = [outcome, events = queued.job->eventsSince(0)](JSON::Builder& json) {
            addOutcome(json, outcome);
            addEvents(json, events);
        };
        return reply;
    }

    std::vector<std::string> ids_;
    bool owned_ = false;
    bool background_ = false;
};

} // namespace

std::unique_ptr<Command> makeFetch() {
    return std::make_unique<Fetch>();
}

} // namespace zq
