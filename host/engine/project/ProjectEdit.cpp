#include "host/engine/project/ProjectEdit.h"

#include <cmath>

namespace engine {

namespace {

// Modules call from code that knows no exceptions, so what goes wrong in here ends here.
template <class Work>
auto guarded(Work const& work) noexcept -> decltype(work()) {
    try {
        return work();
    } catch (std::exception const& error) {
        Log("An edit of the project failed: %s", error.what());
        return decltype(work())();
    }
}

} // namespace

// The defaults for an edit whose project is closed.
EditRecord ProjectEdit::record() const {
    return guarded([this] { return project_->edit(cookie_).value_or(EditRecord()); });
}

template <class Change>
void ProjectEdit::change(Change const& change) {
    guarded([&] { project_->change(cookie_, change); });
}

WideString ProjectEdit::getName() const {
    return record().name();
}

bool ProjectEdit::isTemporary() const {
    return record().temporary;
}

void ProjectEdit::setTemporary(bool temporary) {
    guarded([&] { project_->setTemporary(cookie_, temporary); });
}

LogAttributeMap ProjectEdit::getLogAttributes() const {
    return record().logAttributes;
}

void ProjectEdit::setLogAttributes(LogAttributeMap const& attributes) {
    change([&](EditRecord& record) { record.logAttributes = attributes; });
}

void ProjectEdit::setSourceMedium(MediumRollMedium medium) {
    change([&](EditRecord& record) { record.sourceMedium = medium; });
}

void ProjectEdit::setSourceMediumDuration(double duration_s) {
    change([&](EditRecord& record) { record.sourceDuration_s = std::isfinite(duration_s) ? duration_s : 0; });
}

double ProjectEdit::getSourceMediumDuration() const {
    return record().sourceDuration_s;
}

ShotVideoMetadata ProjectEdit::getVideoMetadata() const {
    return record().video;
}

void ProjectEdit::setVideoMetadata(ShotVideoMetadata const& metadata, bool measured) {
    change([&](EditRecord& record) {
        record.video = metadata;
        record.videoMeasured = measured;
    });
}

void ProjectEdit::setFrameBased(bool frameBased) {
    change([&](EditRecord& record) { record.frameBased = frameBased; });
}

void ProjectEdit::setTransfer(transfer_type transfer) {
    change([&](EditRecord& record) { record.transfer = transfer; });
}

void ProjectEdit::setSequence(std::int32_t kind, bool open) {
    change([&](EditRecord& record) {
        record.sequenceKind = kind;
        record.open = open;
    });
}

void ProjectEdit::addLabel(EditLabel const& label, bool first) {
    change([&](EditRecord& record) {
        record.labels.insert(first ? record.labels.begin() : record.labels.end(), label);
    });
}

Zq::FrameRate ProjectEdit::getSourceFrameRate() const {
    return record().rate;
}

std::int64_t ProjectEdit::getBitRate() const {
    return record().bitRate;
}

std::uint8_t ProjectEdit::getAudioChannels() const {
    return record().audioChannels;
}

WideString ProjectEdit::getPreviewLocation() const {
    return record().previewLocation;
}

void ProjectEdit::setPreviewLocation(WideString const& path) {
    change([&](EditRecord& record) { record.previewLocation = path; });
}

WideString ProjectEdit::getMediaLocation() const {
    return record().mediaLocation;
}

void ProjectEdit::handleOpened() noexcept {
    guarded([this] { project_->handleOpened(cookie_); });
}

void ProjectEdit::handleClosed() noexcept {
    guarded([this] { project_->handleClosed(cookie_); });
}

} // namespace engine
