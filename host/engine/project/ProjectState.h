// What a Project is made of: its file, the lock of the one that writes, and the edits that are in memory.
//
// One mutex orders everything; it is not held while a media file is looked at or put on disk. Edits share the
// ownership: a module may hold one for longer than the project is open.
#pragma once

#include <map>
#include <mutex>

#include "host/engine/files/FileDescriptor.h"
#include "host/engine/project/ChangeListener.h"
#include "host/engine/project/Project.h"
#include "host/engine/project/ProjectTables.h"
#include "host/log/Log.h"

namespace engine {

// Thread: any. What Project.h says of an operation is not repeated here.
class ProjectState final : public std::enable_shared_from_this<ProjectState> {
public:
    [[nodiscard]] static Result<std::shared_ptr<ProjectState>> open(std::filesystem::path const& file,
                                                                    Project::Inspect inspect);
    ProjectState(std::filesystem::path file, Project::Inspect inspect);
    // Keeps what open edits have changed, and lets go of the file. Nothing can be read or changed after it.
    void close() noexcept;
    [[nodiscard]] bool canWrite();
    [[nodiscard]] std::filesystem::path damagedFile();

    [[nodiscard]] Zq::Ptr<Edit> makeNewClip(EditRecord record);
    [[nodiscard]] Zq::Ptr<Edit> openEdit(Cookie const& cookie);
    [[nodiscard]] std::vector<EditRecord> edits();
    [[nodiscard]] std::optional<EditRecord> edit(Cookie const& cookie);
    [[nodiscard]] std::map<Cookie, EditRecord> editsOf(Sequence const& sequence);

    // For the edits themselves.
    void handleOpened(Cookie const& cookie);
    void handleClosed(Cookie const& cookie);
    void change(Cookie const& cookie, std::function<void(EditRecord&)> const& change);
    void setTemporary(Cookie const& cookie, bool temporary);

    [[nodiscard]] WideString findId(Cookie const& object, WideString const& kind);
    [[nodiscard]] Cookie findObject(WideString const& kind, WideString const& id);
    void associate(Cookie const& object, WideString const& kind, WideString const& id);

    [[nodiscard]] Result<Placement> place(std::string const& sequence, Cookie const& edit,
                                          std::optional<double> in_s, std::optional<double> out_s,
                                          std::optional<std::int64_t> index);
    [[nodiscard]] Result<Project::Use> move(std::int64_t placement, std::int64_t index);
    [[nodiscard]] Result<Project::Use> trim(std::int64_t placement, std::optional<double> in_s,
                                            std::optional<double> out_s);
    [[nodiscard]] Result<Project::Use> remove(std::int64_t placement);
    [[nodiscard]] std::vector<std::string> sequenceNames();
    [[nodiscard]] std::optional<Sequence> sequence(std::string const& name);
    [[nodiscard]] std::vector<Project::Use> usesOf(Cookie const& edit);

    [[nodiscard]] Result<RelinkReport> relink(Cookie const& edit, WideString const& path);
    [[nodiscard]] Result<RelinkReport> checkRelink(Cookie const& edit, WideString const& path);
    [[nodiscard]] std::optional<Result<RelinkReport>> lastRelink(Cookie const& edit);
    bool useMedia(Cookie const& edit, WideString const& path);
    bool analyse(Cookie const& edit);

    [[nodiscard]] Result<std::string> undo();
    [[nodiscard]] Result<std::string> redo();
    [[nodiscard]] Project::History history();
    [[nodiscard]] std::int64_t revision();
    void onChange(std::function<void()> listener) { listener_.set(std::move(listener)); }

private:
    // The lock for an operation that may change the project. Once it is let go, the listener is told of what
    // was committed under it.
    class Changing {
    public:
        explicit Changing(ProjectState& state) : state_(state), lock_(state.mutex_) {}
        ~Changing();
        Changing(Changing const&) = delete;
        Changing& operator=(Changing const&) = delete;

    private:
        ProjectState& state_;
        std::unique_lock<std::mutex> lock_;
    };
    // Which way through the steps.
    enum class Way { back, forth };

    // What is in memory of an edit, or of another object that has external ids.
    struct Held {
        std::uint32_t opened = 0; // EditPtrs that lead here
        // A temporary edit, or one that was changed and is not written yet.
        std::optional<EditRecord> record;
        bool stored = false;     // the record is in the file too, as it was before the changes
        std::vector<KeptId> ids; // not in the file
    };
    using HeldEdits = std::map<Cookie, Held>;
    struct Relinking {
        Result<RelinkReport> result;
        bool refused = false; // the file is no media
    };

    // All of these with the lock held.
    [[nodiscard]] std::string takeOver();
    [[nodiscard]] std::string refusalToWrite();
    void tell(char const* what, char const* why) const;
    template <class Value, class Work>
    Value reading(Value fallback, Work const& work);
    template <class Work>
    auto writing(Work const& work) -> Result<decltype(work())>;

    [[nodiscard]] Held* find(Cookie const& cookie);
    [[nodiscard]] std::optional<EditRecord> recordOf(Cookie const& cookie);
    // The same inside of reading() and writing().
    [[nodiscard]] std::optional<EditRecord> lookUp(Cookie const& cookie);
    void forgetIfIdle(HeldEdits::iterator held);
    void keepChanges(HeldEdits::iterator held);
    // Inside of writing(): writes the edit with the ids that are in memory, and gives its number.
    std::int64_t store(EditRecord const& record);
    // After it: what is in memory of the edit is in the file now.
    void settle(Cookie const& cookie);
    [[nodiscard]] std::int64_t nextSerial();

    // Inside of writing(): has the placement stand as the piece says, nowhere for none, and gives how it
    // stood.
    std::optional<PlacedPiece> exchange(std::int64_t placement, std::optional<PlacedPiece> const& piece);
    // Has the placement stand as `change` makes of how it stands, as one step; the same is none. `words` are
    // those around the edit's name.
    using ChangePiece = std::function<std::optional<PlacedPiece>(PlacedPiece const&, Cookie const&)>;
    struct StepWords {
        Step::Kind kind;
        char const* before;
        char const* behind;
    };
    [[nodiscard]] Result<Project::Use> changePlacement(std::int64_t placement, StepWords const& words,
                                                       ChangePiece const& change);
    // Inside of reading().
    [[nodiscard]] std::optional<Project::StepFacts> factsOf(std::optional<Step> const& step);
    // Exchanges the step with what the project has. Gives the edit that it stored, if any.
    [[nodiscard]] Cookie goThrough(Step& step);

    // These without it.
    [[nodiscard]] Result<std::string> go(Way way);
    [[nodiscard]] Result<MediaFacts> look(WideString const& path) const;
    [[nodiscard]] Relinking tryToRelink(Cookie const& edit, WideString const& path);
    [[nodiscard]] Result<RelinkReport> recordRelinking(Cookie const& edit, WideString const& path,
                                                       MediaFacts const& facts);

    std::filesystem::path const file_;
    Project::Inspect const inspect_;

    ChangeListener listener_;
    std::mutex mutex_;
    bool changed_ = false;                  // something was committed and not told yet
    FileDescriptor writer_;                 // the writer's lock; none in a process that reads
    std::unique_ptr<ProjectTables> tables_; // null when closed
    HeldEdits held_;
    std::int64_t lastSerial_ = 0;
    std::filesystem::path damaged_; // what was set aside
    std::map<Cookie, Result<RelinkReport>> relinkings_;
};

// The edit's name as it stands in a sentence, and with quotes around it.
[[nodiscard]] std::string plainName(EditRecord const& record);
[[nodiscard]] std::string quotedName(EditRecord const& record);

// Runs the work on one view of the file; the fallback and a line in the log where it cannot be read.
template <class Value, class Work>
Value ProjectState::reading(Value fallback, Work const& work) {
    if (tables_ == nullptr) {
        return fallback;
    }
    try {
        ReadTransaction const transaction(tables_->database);
        return work();
    } catch (std::exception const& error) {
        tell("cannot be read", error.what());
        return fallback;
    }
}

// Runs the work as one transaction. It throws Failure to say why nothing is to change.
template <class Work>
auto ProjectState::writing(Work const& work) -> Result<decltype(work())> {
    if (std::string refusal = refusalToWrite(); !refusal.empty()) {
        return Failure{std::move(refusal)};
    }
    try {
        Transaction transaction(tables_->database);
        auto value = work();
        tables_->raiseRevision();
        transaction.commit();
        changed_ = true;
        return value;
    } catch (Failure const& failure) {
        return failure;
    } catch (std::exception const& error) {
        return Failure{std::string("the project cannot be written: ") + error.what()};
    }
}

} // namespace engine
