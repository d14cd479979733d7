// Having an edit play a file, and looking at what it plays.

#include <algorithm>

#include "host/engine/project/ProjectState.h"
#include "host/engine/project/mediaComparison.h"
#include "host/engine/project/mediaOnDisk.h"
#include "host/tasks/BackgroundTaskQueueBase.h"
#include "host/text/Unicode.h"
#include "host/text/oneLine.h"

namespace engine {

namespace {

Failure noSuchEdit(Cookie const& cookie) {
    return {"the project has no edit " + cookieText(cookie)};
}

RelinkReport reportOf(EditRecord const& record, MediaFacts const& facts,
                      std::vector<Project::Use> const& uses) {
    RelinkReport report{facts, differencesBetween(record, facts), {}};
    std::int64_t const frames = framesOf(record, facts);
    for (Project::Use const& use : uses) {
        if (use.placement.out > frames) {
            report.cutShort.push_back(use.placement.number);
        }
    }
    return report;
}

void measure(ShotVideoMetadata& video, MediaFacts const& facts) {
    video.width = facts.width;
    video.height = facts.height;
    video.hasSize = true;
    video.frameRate = facts.rate;
    video.hasFrameRate = facts.rate != Zq::FrameRate::unknown;
    video.scanMode = facts.scanMode;
}

// Of a clip that nobody has told anything of: its repository knows no more than where it lies.
void describeSource(EditRecord& record, MediaFacts const& facts) {
    record.audioChannels = static_cast<std::uint8_t>(std::clamp(facts.audioChannels, 0, 255));
    record.sourceDuration_s = lengthOf(facts);
    record.sourceMedium = getMediumRollfromInputDetails(facts.scanMode, facts.rate);
    record.frameBased = facts.scanMode == Zq::Image::ScanMode::progressive;
    for (EditLabel& label : record.labels) {
        label.frameRate = facts.rate;
        label.countsIn1001 = Zq::has1001Factor(facts.rate);
    }
}

void logRelinking(std::string const& name, WideString const& path, RelinkReport const& report) {
    for (MediaDifference const& difference : report.differences) {
        Log("%s: the %s of the file is %s, promised was %s", name.c_str(), wordFor(difference.what),
            difference.found.c_str(), difference.promised.c_str());
    }
    Log("%s plays %s", name.c_str(), toUTF8(path).c_str());
}

} // namespace

Result<MediaFacts> ProjectState::look(WideString const& path) const {
    if (path.isEmpty()) {
        return Failure{"no media file is named"};
    }
    if (!inspect_) {
        return Failure{"nothing here can look at media files"};
    }
    std::string problem;
    try {
        Result<MediaFacts> facts = inspect_(path);
        if (facts) {
            return facts;
        }
        problem = facts.error();
    } catch (std::exception const& error) {
        problem = error.what();
    }
    return Failure{std::string(toUTF8(Zq::onOneLine(path)).view()) + ": " + problem};
}

Result<RelinkReport> ProjectState::recordRelinking(Cookie const& edit, WideString const& path,
                                                   MediaFacts const& facts) {
    std::string name;
    Changing const lock(*this);
    std::optional<EditRecord> record = recordOf(edit);
    if (!record) {
        return noSuchEdit(edit);
    }
    Result<RelinkReport> relinked = writing([&] {
        RelinkReport report = reportOf(*record, facts, tables_->sequences.usesOf(edit));
        Step step;
        step.kind = Step::Kind::relinking;
        name = plainName(*record);
        step.words = "relinking " + quotedName(*record);
        step.edit = edit;
        step.media = record->mediaLocation;
        step.bitRate = record->bitRate;
        step.differences = std::move(record->differences);
        if (record->videoMeasured && hasPicture(facts)) {
            measure(record->video, facts);
        }
        record->temporary = false;
        record->mediaLocation = path;
        record->bitRate = facts.bitRate;
        record->differences = report.differences;
        std::int64_t const number = store(*record);
        if (step.media != path) {
            tables_->steps.add(step, number);
        }
        return report;
    });
    if (relinked) {
        settle(edit);
        logRelinking(name, path, *relinked);
    }
    return relinked;
}

ProjectState::Relinking ProjectState::tryToRelink(Cookie const& edit, WideString const& path) {
    {
        std::lock_guard const lock(mutex_);
        if (!recordOf(edit)) {
            return {noSuchEdit(edit)};
        }
        if (std::string refusal = refusalToWrite(); !refusal.empty()) {
            return {Failure{std::move(refusal)}};
        }
    }
    Result<MediaFacts> const facts = look(path);
    if (!facts) {
        bool const cancelled =
            BackgroundTaskQueueBase::getCurrentTaskStatus() == iBackgroundTask::eCancelling;
        return {Failure{facts.error()}, inspect_ != nullptr && !cancelled};
    }
    if (std::string const problem = putOnDisk(path); !problem.empty()) {
        return {Failure{"the media file is not safely on disk: " + problem}};
    }
    return {recordRelinking(edit, path, *facts)};
}

Result<RelinkReport> ProjectState::relink(Cookie const& edit, WideString const& path) {
    Result<RelinkReport> result = tryToRelink(edit, path).result;
    std::lock_guard const lock(mutex_);
    relinkings_.insert_or_assign(edit, result);
    return result;
}

Result<RelinkReport> ProjectState::checkRelink(Cookie const& edit, WideString const& path) {
    Result<MediaFacts> const facts = look(path);
    if (!facts) {
        return Failure{facts.error()};
    }
    std::lock_guard const lock(mutex_);
    std::optional<EditRecord> const record = recordOf(edit);
    if (!record) {
        return noSuchEdit(edit);
    }
    return reportOf(*record, *facts, reading(std::vector<Project::Use>(), [this, &edit] {
        return tables_->sequences.usesOf(edit);
    }));
}

std::optional<Result<RelinkReport>> ProjectState::lastRelink(Cookie const& edit) {
    std::lock_guard const lock(mutex_);
    auto const found = relinkings_.find(edit);
    return found != relinkings_.end() ? std::optional(found->second) : std::nullopt;
}

bool ProjectState::useMedia(Cookie const& edit, WideString const& path) {
    Relinking relinking = tryToRelink(edit, path);
    if (!relinking.result) {
        Log("A media file is not used: %s", relinking.result.error().c_str());
        std::optional<EditRecord> const record = this->edit(edit);
        // What is the edit's preview as well lay there before: nobody fetched it, and nobody would again.
        bool const wasFetched = record && record->previewLocation != path;
        std::filesystem::path const kept =
            relinking.refused && wasFetched ? setRefusedAside(path) : std::filesystem::path();
        if (!kept.empty()) {
            Log("The refused file is kept as %s", kept.c_str());
        }
    }
    bool const used = static_cast<bool>(relinking.result);
    std::lock_guard const lock(mutex_);
    relinkings_.insert_or_assign(edit, std::move(relinking.result));
    return used;
}

bool ProjectState::analyse(Cookie const& edit) {
    std::optional<EditRecord> const before = this->edit(edit);
    if (!before) {
        return false;
    }
    bool const playsMedia = !before->mediaLocation.isEmpty();
    Result<MediaFacts> const facts = look(playsMedia ? before->mediaLocation : before->previewLocation);
    if (!facts) {
        Log("%s: what it plays cannot be looked at: %s", plainName(*before).c_str(), facts.error().c_str());
        return false;
    }
    change(edit, [&](EditRecord& record) {
        record.bitRate = facts->bitRate;
        // A preview is smaller than what it stands for: it does not outweigh what somebody has promised.
        bool const isUnpromised = record.videoMeasured || !record.video.hasSize;
        if (hasPicture(*facts) && (playsMedia || isUnpromised)) {
            measure(record.video, *facts);
            record.videoMeasured = true;
        }
        if (record.rate == Zq::FrameRate::unknown && record.duration_s <= 0) {
            describeSource(record, *facts);
        }
        if (record.rate == Zq::FrameRate::unknown) {
            record.rate = facts->rate;
        }
        if (record.duration_s <= 0 && record.rate != Zq::FrameRate::unknown) {
            record.duration_s =
                static_cast<double>(framesOf(record, *facts)) / Zq::getFramesPerSecond(record.rate);
        }
    });
    return true;
}

} // namespace engine
