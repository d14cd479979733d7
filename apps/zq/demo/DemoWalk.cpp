#include "apps/zq/demo/DemoWalk.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <set>

#include "apps/zq/EditLookup.h"
#include "apps/zq/Money.h"
#include "apps/zq/Reply.h"
#include "apps/zq/TaskWait.h"
#include "apps/zq/Text.h"
#include "apps/zq/demo/demoTools.h"
#include "apps/zq/signIn.h"
#include "host/engine/media/MediaReader.h"
#include "host/engine/streaming/StreamingFiles.h"

namespace zq {

namespace {

namespace fs = std::filesystem;

// The account that the embedded service makes for demonstrations.
constexpr char const* demoUser = "editor";
constexpr char const* demoPassword = "tarn7";

constexpr std::size_t clipsOfTheWalk = 3;
constexpr std::uint16_t clipsLookedAt = 100;
// The piece of each clip that is placed, as parts of its length.
constexpr double pieceBegins = 0.2;
constexpr double pieceEnds = 0.8;

std::string nameOf(RemoteAsset const& asset) {
    return std::string(asset.logAttributes.find(LogAttribute(LogAttribute::eName)).view());
}

// Clips without a price come last.
std::int64_t priceOf(RemoteAsset const& asset) {
    NarrowString const text = asset.logAttributes.find(LogAttribute(LogAttribute::ePrice));
    std::optional<Price> const price = parsePrice(text.view());
    return price ? price->cents : std::numeric_limits<std::int64_t>::max();
}

std::string freeName(std::vector<std::string> const& taken) {
    std::string name = "Demo";
    for (int number = 2; std::ranges::find(taken, name) != taken.end(); ++number) {
        name = "Demo " + std::to_string(number);
    }
    return name;
}

} // namespace

struct DemoWalk::Step {
    char const* name;
    std::string (DemoWalk::*run)();
};

DemoWalk::Step const DemoWalk::road[] = {
    {"sign in", &DemoWalk::signInStep},
    {"search", &DemoWalk::searchStep},
    {"play the preview", &DemoWalk::playStep},
    {"place", &DemoWalk::placeStep},
    {"cost", &DemoWalk::costStep},
    {"buy", &DemoWalk::buyStep},
    {"owned", &DemoWalk::ownedStep},
    {"fetch, cancelled half way", &DemoWalk::cancelledFetchStep},
    {"fetch", &DemoWalk::fetchStep},
    {"relinked", &DemoWalk::compareStep},
    {"export", &DemoWalk::exportStep},
    {"render", &DemoWalk::renderStep},
};

DemoWalk::DemoWalk(Session& session, fs::path folder) : session_(session), folder_(std::move(folder)) {}

void DemoWalk::walk() {
    static_cast<void>(session_.writableProject());
    for (Step const& step : road) {
        if (isCommandCancelled()) {
            throw CommandError("interrupted");
        }
        running_ = step.name;
        showProgress(0);
        try {
            steps_.push_back({step.name, (this->*step.run)()});
        } catch (CommandError const& error) {
            throw CommandError(isCommandCancelled() ? "interrupted"
                                                    : std::string(step.name) + ": " + error.what());
        }
        session_.live().say(label(step.name) + ": " + steps_.back().text);
    }
}

std::string DemoWalk::label(char const* name) const {
    auto const* const step = std::ranges::find(road, std::string_view(name), &Step::name);
    std::string const number = std::to_string(step - std::begin(road) + 1);
    std::string const count = std::to_string(std::size(road));
    return std::string(count.size() - number.size(), ' ') + number + " of " + count + "  " + name;
}

void DemoWalk::showProgress(double fraction) const {
    session_.live().showProgress(label(running_), fraction);
}

std::string DemoWalk::signInStep() {
    if (!session_.user().empty()) {
        return session_.user() + " is signed in already";
    }
    SignIn const result = signIn(session_, demoUser, demoPassword);
    if (!result.error.empty()) {
        throw CommandError(result.error + " (the walk signs in as the demo account of the embedded service; "
                                          "another account is signed in with --login)");
    }
    return "signed in as " + result.user;
}

std::string DemoWalk::searchStep() {
    SearchQuery query;
    query.pageSize = clipsLookedAt;
    SearchResults const results = session_.search(query);
    std::set<WideString> owned;
    for (RemoteAsset const& asset : session_.ownedAssets()) {
        owned.insert(asset.id);
    }
    LightweightVector<RemoteAsset> candidates = results.assets;
    std::erase_if(candidates, [](RemoteAsset const& asset) {
        return asset.proxyLocation.isEmpty() || asset.frameRate == Zq::FrameRate::unknown;
    });
    // Clips that are still to be bought, the cheapest first; failing those, owned ones.
    std::ranges::stable_sort(candidates, {}, [&](RemoteAsset const& asset) {
        return std::pair(owned.contains(asset.id), priceOf(asset));
    });
    if (candidates.empty()) {
        throw CommandError("the service has no clip with a preview");
    }
    candidates.resize(std::min(candidates.size(), clipsOfTheWalk));
    chosen_ = candidates;
    for (RemoteAsset const& asset : chosen_) {
        if (!owned.contains(asset.id)) {
            toBuy_.push_back(utf8(asset.id));
        }
    }
    std::string names;
    for (RemoteAsset const& asset : chosen_) {
        names += std::string(names.empty() ? "" : ", ") + '"' + nameOf(asset) + '"'; // names may hold commas
    }
    return counted(results.totalCount, "clip") + "; chosen: " + names +
           (toBuy_.empty() ? " (everything is owned already)" : "");
}

std::string DemoWalk::playStep() {
    RemoteAsset const& asset = chosen_.front();
    engine::StreamingFiles& streams = session_.engine().streams();
    engine::StreamingStatistics const before = streams.statistics();
    auto const reader = orThrow(engine::MediaReader::open(asset.proxyLocation));
    engine::MediaFacts const facts = orThrow(reader->facts());
    std::int64_t const rateFrames = std::max<std::int64_t>(1, facts.rateNumerator / facts.rateDenominator);
    std::int64_t shown = 0;
    while (shown < rateFrames && !isCommandCancelled() && orThrow(reader->next())) {
        ++shown;
        showProgress(static_cast<double>(shown) / static_cast<double>(rateFrames + 2));
    }
    engine::MediaFrame const middle = orThrow(reader->seek(facts.duration_s / 2));
    engine::MediaFrame const last = orThrow(reader->last());
    engine::StreamingStatistics const after = streams.statistics();
    char times[64];
    std::snprintf(times, sizeof times, "%.2f s and %.2f s", middle.position_s(), last.position_s());
    return nameOf(asset) + ": " + facts.videoCodec + " " + std::to_string(facts.width) + "x" +
           std::to_string(facts.height) + ", " + counted(static_cast<std::size_t>(shown), "frame") +
           " from the beginning, those at " + times + "; " +
           counted(after.requests - before.requests, "request") + ", " +
           counted(after.bytesReceived - before.bytesReceived, "byte") + " received";
}

std::string DemoWalk::placeStep() {
    engine::Project& project = session_.writableProject();
    sequence_ = freeName(project.sequenceNames());
    for (RemoteAsset const& asset : chosen_) {
        EditModifier const edit = openAsset(session_, asset);
        double const duration = recordOf(session_, edit).duration_s;
        static_cast<void>(orThrow(
            project.place(sequence_, edit->getCookie(), duration * pieceBegins, duration * pieceEnds)));
    }
    placed_ = viewSequence(session_, sequence_);
    sequenceFrames_ = placed_->sequence.length();
    return "\"" + sequence_ + "\": " + counted(placed_->pieces.size(), "clip") + ", " +
           engine::timecode(sequenceFrames_, placed_->sequence.rate);
}

} // namespace zq
