// The end of the walk: the sequence as a file of another program, and rendered.

#include <algorithm>

#include "apps/zq/TaskWait.h"
#include "apps/zq/Text.h"
#include "apps/zq/demo/DemoWalk.h"
#include "apps/zq/demo/demoTools.h"
#include "apps/zq/demo/renderWithMelt.h"
#include "apps/zq/exportFile.h"
#include "host/engine/media/MediaReader.h"

namespace zq {

namespace fs = std::filesystem;

namespace {

constexpr char const* unfinishedEnding = ".unfinished.mp4";

// Renderings of an earlier walk that was killed.
void removeUnfinished(fs::path const& folder) {
    std::error_code error;
    for (fs::directory_entry const& entry : fs::directory_iterator(folder, error)) {
        std::string const name = entry.path().filename().string();
        if (name.starts_with("Demo") && name.ends_with(unfinishedEnding)) {
            std::error_code ignored;
            fs::remove(entry.path(), ignored);
        }
    }
}

} // namespace

std::string DemoWalk::exportStep() {
    std::error_code error;
    fs::create_directories(folder_, error);
    removeUnfinished(folder_);
    exported_ = folder_ / (sequence_ + ".mlt");
    std::vector<std::string> const warnings =
        exportFile(session_, sequence_, engine::ExportFormat::mlt, exported_);
    std::string text = exported_.string();
    for (std::string const& warning : warnings) {
        text += "; " + warning;
    }
    return text;
}

std::string DemoWalk::renderStep() {
    SequenceView const now = viewSequence(session_, sequence_);
    if (std::ranges::any_of(now.pieces,
                            [](SequencePiece const& piece) { return piece.edit.mediaLocation.isEmpty(); })) {
        return "left out: a clip is still a preview";
    }
    fs::path const unfinished = folder_ / (sequence_ + unfinishedEnding);
    Rendering const rendering = renderWithMelt(exported_, unfinished, [&](double fraction) {
        showProgress(fraction);
        return !isCommandCancelled();
    });
    std::error_code error;
    if (rendering.outcome == Rendering::Outcome::notInstalled) {
        return "left out: melt is not installed";
    }
    if (rendering.outcome != Rendering::Outcome::done) {
        fs::remove(unfinished, error);
        throw CommandError("melt failed: " + rendering.reason);
    }
    auto const reader = orThrow(engine::MediaReader::open(wide(unfinished.string())));
    renderedFrames_ = orThrow(reader->countFrames());
    if (renderedFrames_ != sequenceFrames_) {
        throw CommandError("the rendered file has " + std::to_string(renderedFrames_) +
                           " frames, the sequence " + std::to_string(sequenceFrames_));
    }
    rendered_ = folder_ / (sequence_ + ".mp4");
    fs::rename(unfinished, rendered_, error);
    if (error) {
        throw CommandError("cannot write " + rendered_.string());
    }
    return rendered_.string() + ", " + std::to_string(renderedFrames_) + " frames, as many as the sequence";
}

} // namespace zq
