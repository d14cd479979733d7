// The project of the host: its edits, their external ids and its sequences, in one SQLite file.
//
// Every change is one transaction, on disk when the call returns; a crash leaves the state before it or after
// it. One process writes: the first that opens the file holds its lock until it ends. Others read, see what
// was committed last, and are refused changes with a text that says why.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/edit/EditManager.h"
#include "host/engine/media/MediaFacts.h"
#include "host/engine/project/EditRecord.h"
#include "host/engine/project/Sequence.h"
#include "host/engine/project/StepKind.h"
#include "host/engine/settings/Result.h"
#include "host/object/ExtIDMgr.h"

namespace engine {

class ProjectState;

// What a relinking did, or would do.
struct RelinkReport {
    MediaFacts facts;                         // of the new file
    std::vector<MediaDifference> differences; // from what the edit promises; empty where all agrees
    // Placements that show frames which the new file does not have.
    std::vector<std::int64_t> cutShort;
};

// Thread: any.
class Project final : public iEditStore, public iExternalIds {
public:
    // Looks at a media file before an edit uses it.
    using Inspect = std::function<Result<MediaFacts>(WideString const& path)>;

    // Opens the project's file or makes it; brings one of an older version up to date; sets a damaged one
    // aside with a line in the log and begins a new one. One of a newer version is refused.
    [[nodiscard]] static Result<std::unique_ptr<Project>> open(std::filesystem::path const& file,
                                                               Inspect inspect);
    ~Project() override;

    // False where another process holds the project, or this one cannot write it. Where the one that held it
    // has ended, asking makes this one the writer, as the first change does.
    [[nodiscard]] bool canWrite() const noexcept;
    // Where a damaged file was set aside, so that its user can be told; empty where none was.
    [[nodiscard]] std::filesystem::path damagedFile() const noexcept;

    // iEditStore. A new clip is temporary, and a temporary edit is in memory only: it is kept, with all that
    // belongs to it, by setTemporary(false), by placing it or by relinking it, and stays kept from then on. A
    // length that no clip can have counts as none, or as the longest there is.
    [[nodiscard]] Zq::Ptr<Edit> makeNewClip(std::uint8_t videoChannels, std::uint8_t audioChannels,
                                            double duration_s, Zq::FrameRate rate,
                                            Cookie const& cookie) override;
    [[nodiscard]] Zq::Ptr<Edit> open(Cookie const& cookie) override;
    bool useMedia(Edit& edit, WideString const& path) override;
    bool analyse(Edit& edit) override;

    // iExternalIds. Those of a temporary edit are kept together with it.
    [[nodiscard]] WideString find(Cookie const& object, WideString const& kind) override;
    [[nodiscard]] Cookie findObject(WideString const& kind, WideString const& id) override;
    void associate(Cookie const& object, WideString const& kind, WideString const& id) override;

    // The edits that are kept, in the order in which they came to be; and one, temporary ones included.
    [[nodiscard]] std::vector<EditRecord> edits();
    [[nodiscard]] std::optional<EditRecord> edit(Cookie const& cookie);
    // Those that the sequence's placements show, read together, each once however often it is shown.
    [[nodiscard]] std::map<Cookie, EditRecord> editsOf(Sequence const& sequence);

    // What follows changes sequences, each one step of undo(). Indices count the placements of a sequence
    // from 0; those behind a change move, so that no gap is left.
    //
    // Places the piece of the edit between two times in the sequence, which is made where there is none of
    // that name: before the placement at the index, or at the end. The edit is kept from now on. The times
    // snap to frames of the clip: `in` down, `out` up; nothing stands for the clip's own beginning and end.
    [[nodiscard]] Result<Placement> place(std::string const& sequence, Cookie const& edit,
                                          std::optional<double> in_s, std::optional<double> out_s,
                                          std::optional<std::int64_t> index = {});
    struct Use {
        std::string sequence;
        Placement placement;
    };
    // Moves the placement of that number in its sequence, so that it stands at the index. Gives it as it
    // stands then. One that stands there already is no step.
    [[nodiscard]] Result<Use> move(std::int64_t placement, std::int64_t index);
    // Has the placement show another piece of its clip, with times as place() takes them; nothing leaves that
    // end as it is, and one of them is needed. Gives it as it stands then. The same piece is no step.
    [[nodiscard]] Result<Use> trim(std::int64_t placement, std::optional<double> in_s,
                                   std::optional<double> out_s);
    // Removes the placement, and the sequence with its last one. Gives it as it stood.
    [[nodiscard]] Result<Use> remove(std::int64_t placement);

    // By name, letter case and all.
    [[nodiscard]] std::vector<std::string> sequenceNames();
    [[nodiscard]] std::optional<Sequence> sequence(std::string const& name);
    // Every use of the edit.
    [[nodiscard]] std::vector<Use> usesOf(Cookie const& edit);

    // Has the edit play the file: see iEditStore::useMedia. A file that is refused is named in the failure
    // and stays where it is.
    [[nodiscard]] Result<RelinkReport> relink(Cookie const& edit, WideString const& path);
    // What relink would do; changes nothing.
    [[nodiscard]] Result<RelinkReport> checkRelink(Cookie const& edit, WideString const& path);
    // How the last relinking of the edit in this process ended; nothing where there was none.
    [[nodiscard]] std::optional<Result<RelinkReport>> lastRelink(Cookie const& edit);

    // Takes the last step back, that of an earlier run too, and gives it in words. The last 1000 are kept.
    [[nodiscard]] Result<std::string> undo();
    // Does again what undo() took back last, in an earlier run too, and gives it in words. A new step leaves
    // nothing to do again.
    [[nodiscard]] Result<std::string> redo();
    // What a step is about, for a program that has words of its own.
    struct StepFacts {
        StepKind kind = StepKind::placing;
        std::string clip;     // the name that its edit has now, on one line; may be empty or blank
        std::string sequence; // empty of a relinking
        bool operator==(StepFacts const&) const = default;
    };
    struct History {
        std::int64_t revision = 0; // of what the words tell
        std::string undo;          // what undo() would take back, in words; empty where there is nothing
        std::string redo;          // the same for redo()
        // The same as facts.
        std::optional<StepFacts> undoStep;
        std::optional<StepFacts> redoStep;
    };
    [[nodiscard]] History history();
    // A number that rises with every change that is on disk, another process's too; 0 where the project
    // cannot be read. Cheap.
    [[nodiscard]] std::int64_t revision();
    // Has the listener run after each change by this object or an edit that it gave out, on the thread that
    // made the change and with no lock of the project held; one call at a time. Empty for none. When this
    // returns, a former listener runs no more, unless it is the one that calls; so a caller must hold no lock
    // that a listener waits for. None runs from the destructor on.
    void onChange(std::function<void()> listener);

private:
    explicit Project(std::shared_ptr<ProjectState> state);
    // Shared with the edits that it hands out: one that outlives the project is empty, and harmless.
    std::shared_ptr<ProjectState> const state_;
};

} // namespace engine
