#include "host/engine/files/FileTransfer.h"

#include <utility>

namespace engine {

namespace {

// No object: what has a destructor would have to run in every thread that ever stood in a scope.
thread_local Zq::Ptr<FileTransfer> const* currentTransfer = nullptr;

} // namespace

FileTransfer::Scope::Scope(Zq::Ptr<FileTransfer> const& transfer) noexcept
    : outer_(std::exchange(currentTransfer, &transfer)) {}

FileTransfer::Scope::~Scope() {
    currentTransfer = outer_;
}

Zq::Ptr<FileTransfer> FileTransfer::current() noexcept {
    return currentTransfer != nullptr ? *currentTransfer : Zq::Ptr<FileTransfer>();
}

bool FileTransfer::end(bool everythingCame) noexcept {
    std::lock_guard const lock(mutex_);
    if (state_ == State::running) {
        state_ = everythingCame ? State::whole : State::failed;
    }
    if (state_ == State::whole) {
        for (WriteJournal::Note& note : closed_) {
            note.finish();
        }
    }
    closed_.clear();
    return state_ == State::whole;
}

void FileTransfer::closed(WriteJournal::Note note, bool onDisk) noexcept {
    std::lock_guard const lock(mutex_);
    if (!onDisk) {
        state_ = state_ == State::running ? State::failed : state_;
    } else if (state_ == State::whole) {
        note.finish();
    } else if (state_ == State::running) {
        try {
            closed_.push_back(std::move(note));
        } catch (std::bad_alloc const&) {
            state_ = State::failed;
        }
    }
}

} // namespace engine
