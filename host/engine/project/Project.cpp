#include "host/engine/project/Project.h"

#include <algorithm>
#include <cmath>

#include "host/engine/project/ProjectState.h"

namespace engine {

namespace {

// Some thirty years: no clip is longer, whatever somebody promises.
constexpr double longest_s = 1e9;

// No exception leaves the project: the fallback, and a line in the log.
template <class Value, class Work>
Value guarded(Value fallback, Work const& work) noexcept {
    try {
        return work();
    } catch (std::exception const& error) {
        Log("The project failed: %s", error.what());
        return fallback;
    }
}

template <class Value, class Work>
Result<Value> guardedResult(Work const& work) noexcept {
    try {
        return work();
    } catch (std::exception const& error) {
        return Failure{error.what()};
    }
}

} // namespace

Project::Project(std::shared_ptr<ProjectState> state) : state_(std::move(state)) {}

Project::~Project() {
    state_->close();
}

Result<std::unique_ptr<Project>> Project::open(std::filesystem::path const& file, Inspect inspect) {
    Result<std::shared_ptr<ProjectState>> state = ProjectState::open(file, std::move(inspect));
    if (!state) {
        return Failure{state.error()};
    }
    return std::unique_ptr<Project>(new Project(std::move(*state)));
}

bool Project::canWrite() const noexcept {
    return guarded(false, [this] { return state_->canWrite(); });
}

std::filesystem::path Project::damagedFile() const noexcept {
    return guarded(std::filesystem::path(), [this] { return state_->damagedFile(); });
}

Zq::Ptr<Edit> Project::makeNewClip(std::uint8_t videoChannels, std::uint8_t audioChannels, double duration_s,
                                   Zq::FrameRate rate, Cookie const& cookie) {
    return guarded(Zq::Ptr<Edit>(), [&] {
        EditRecord record;
        record.cookie = cookie;
        record.videoChannels = videoChannels;
        record.audioChannels = audioChannels;
        record.duration_s = std::isfinite(duration_s) ? std::clamp(duration_s, 0.0, longest_s) : 0.0;
        record.rate = rate;
        return state_->makeNewClip(std::move(record));
    });
}

Zq::Ptr<Edit> Project::open(Cookie const& cookie) {
    return guarded(Zq::Ptr<Edit>(), [&] { return state_->openEdit(cookie); });
}

bool Project::useMedia(Edit& edit, WideString const& path) {
    return guarded(false, [&] { return state_->useMedia(edit.getCookie(), path); });
}

bool Project::analyse(Edit& edit) {
    return guarded(false, [&] { return state_->analyse(edit.getCookie()); });
}

WideString Project::find(Cookie const& object, WideString const& kind) {
    return guarded(WideString(), [&] { return state_->findId(object, kind); });
}

Cookie Project::findObject(WideString const& kind, WideString const& id) {
    return guarded(Cookie(), [&] { return state_->findObject(kind, id); });
}

void Project::associate(Cookie const& object, WideString const& kind, WideString const& id) {
    (void)guarded(false, [&] {
        state_->associate(object, kind, id);
        return true;
    });
}

std::vector<EditRecord> Project::edits() {
    return guarded(std::vector<EditRecord>(), [this] { return state_->edits(); });
}

std::optional<EditRecord> Project::edit(Cookie const& cookie) {
    return guarded(std::optional<EditRecord>(), [&] { return state_->edit(cookie); });
}

std::map<Cookie, EditRecord> Project::editsOf(Sequence const& sequence) {
    return guarded(std::map<Cookie, EditRecord>(), [&] { return state_->editsOf(sequence); });
}

Result<Placement> Project::place(std::string const& sequence, Cookie const& edit, std::optional<double> in_s,
                                 std::optional<double> out_s, std::optional<std::int64_t> index) {
    return guardedResult<Placement>([&] { return state_->place(sequence, edit, in_s, out_s, index); });
}

Result<Project::Use> Project::move(std::int64_t placement, std::int64_t index) {
    return guardedResult<Use>([&] { return state_->move(placement, index); });
}

Result<Project::Use> Project::trim(std::int64_t placement, std::optional<double> in_s,
                                   std::optional<double> out_s) {
    return guardedResult<Use>([&] { return state_->trim(placement, in_s, out_s); });
}

Result<Project::Use> Project::remove(std::int64_t placement) {
    return guardedResult<Use>([&] { return state_->remove(placement); });
}

std::vector<std::string> Project::sequenceNames() {
    return guarded(std::vector<std::string>(), [this] { return state_->sequenceNames(); });
}

std::optional<Sequence> Project::sequence(std::string const& name) {
    return guarded(std::optional<Sequence>(), [&] { return state_->sequence(name); });
}

std::vector<Project::Use> Project::usesOf(Cookie const& edit) {
    return guarded(std::vector<Use>(), [&] { return state_->usesOf(edit); });
}

Result<RelinkReport> Project::relink(Cookie const& edit, WideString const& path) {
    return guardedResult<RelinkReport>([&] { return state_->relink(edit, path); });
}

Result<RelinkReport> Project::checkRelink(Cookie const& edit, WideString const& path) {
    return guardedResult<RelinkReport>([&] { return state_->checkRelink(edit, path); });
}

std::optional<Result<RelinkReport>> Project::lastRelink(Cookie const& edit) {
    return guarded(std::optional<Result<RelinkReport>>(), [&] { return state_->lastRelink(edit); });
}

Result<std::string> Project::undo() {
    return guardedResult<std::string>([this] { return state_->undo(); });
}

Result<std::string> Project::redo() {
    return guardedResult<std::string>([this] { return state_->redo(); });
}

Project::History Project::history() {
    return guarded(History(), [this] { return state_->history(); });
}

std::int64_t Project::revision() {
    return guarded(std::int64_t{0}, [this] { return state_->revision(); });
}

void Project::onChange(std::function<void()> listener) {
    state_->onChange(std::move(listener));
}

} // namespace engine
