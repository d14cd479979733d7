#include "host/engine/project/ProjectState.h"

#include <cstring>

#include "host/engine/preferences/setAside.h"
#include "host/engine/project/ProjectLock.h"
#include "host/text/Unicode.h"
#include "host/text/oneLine.h"

namespace engine {

namespace {

using Access = ProjectTables::Access;

constexpr char const* nameless = "a clip";

// With the locks for opening and for writing held.
std::unique_ptr<ProjectTables> openForWriting(std::filesystem::path const& file,
                                              std::filesystem::path& damaged) {
    try {
        return std::make_unique<ProjectTables>(file, Access::write);
    } catch (DatabaseError const& error) {
        std::filesystem::path const kept = error.isDamage() ? setAside(file) : std::filesystem::path();
        if (kept.empty()) {
            throw;
        }
        Log("The project %s is damaged (%s): it is kept as %s, and a new one begins", file.c_str(),
            error.what(), kept.filename().c_str());
        damaged = kept;
    }
    return std::make_unique<ProjectTables>(file, Access::write);
}

} // namespace

std::string plainName(EditRecord const& record) {
    std::string name(toUTF8(Zq::onOneLine(record.name())).view());
    return name.find_first_not_of(' ') == std::string::npos ? nameless : name;
}

std::string quotedName(EditRecord const& record) {
    std::string const name = plainName(record);
    return name == nameless ? name : "\"" + name + "\"";
}

ProjectState::Changing::~Changing() {
    bool const changed = std::exchange(state_.changed_, false);
    lock_.unlock();
    if (changed) {
        state_.listener_.tell();
    }
}

ProjectState::ProjectState(std::filesystem::path file, Project::Inspect inspect)
    : file_(std::move(file)), inspect_(std::move(inspect)) {}

Result<std::shared_ptr<ProjectState>> ProjectState::open(std::filesystem::path const& file,
                                                         Project::Inspect inspect) {
    try {
        std::error_code error;
        // One name for each file: the locks lie beside it.
        std::filesystem::path const real = std::filesystem::weakly_canonical(file, error);
        auto state = std::make_shared<ProjectState>(error ? file : real, std::move(inspect));
        FileDescriptor const opening = lockForOpening(state->file_);
        state->writer_ = tryToLockForWriting(state->file_);
        state->tables_ = state->writer_ ? openForWriting(state->file_, state->damaged_)
                                        : std::make_unique<ProjectTables>(state->file_, Access::read);
        return state;
    } catch (std::exception const& error) {
        return Failure{"the project " + file.native() + " cannot be opened: " + error.what()};
    }
}

std::filesystem::path ProjectState::damagedFile() {
    std::lock_guard const lock(mutex_);
    return damaged_;
}

void ProjectState::close() noexcept {
    try {
        listener_.set({});
        std::lock_guard const lock(mutex_);
        for (auto held = held_.begin(); held != held_.end();) {
            auto const next = std::next(held);
            keepChanges(held);
            held = next;
        }
        tables_.reset();
        writer_ = FileDescriptor();
        held_.clear();
        relinkings_.clear();
    } catch (std::exception const& error) {
        Log("The project %s did not close well: %s", file_.c_str(), error.what());
    }
}

// Becomes the one that writes, where that one has ended. The reason in words where that fails.
std::string ProjectState::takeOver() {
    try {
        // Asked first: who is refused does not wait for one that is just opening the project.
        FileDescriptor writer = tryToLockForWriting(file_);
        if (!writer) {
            return "the project is open in another process";
        }
        FileDescriptor const opening = lockForOpening(file_);
        tables_ = openForWriting(file_, damaged_);
        writer_ = std::move(writer);
        return {};
    } catch (std::exception const& error) {
        return std::string("the project cannot be written: ") + error.what();
    }
}

std::string ProjectState::refusalToWrite() {
    if (tables_ == nullptr) {
        return "the project is closed";
    }
    if (!writer_) {
        return takeOver();
    }
    return tables_->isInPlace() ? std::string() : "the project's file was moved or removed while it was open";
}

bool ProjectState::canWrite() {
    std::lock_guard const lock(mutex_);
    return refusalToWrite().empty();
}

void ProjectState::tell(char const* what, char const* why) const {
    Log("The project %s %s: %s", file_.c_str(), what, why);
}

std::vector<std::string> ProjectState::sequenceNames() {
    std::lock_guard const lock(mutex_);
    return reading(std::vector<std::string>(), [this] { return tables_->sequences.names(); });
}

std::optional<Sequence> ProjectState::sequence(std::string const& name) {
    std::lock_guard const lock(mutex_);
    return reading(std::optional<Sequence>(), [this, &name] { return tables_->sequences.find(name); });
}

std::vector<Project::Use> ProjectState::usesOf(Cookie const& edit) {
    std::lock_guard const lock(mutex_);
    return reading(std::vector<Project::Use>(), [this, &edit] { return tables_->sequences.usesOf(edit); });
}

} // namespace engine
