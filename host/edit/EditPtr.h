// Access to one edit: open as long as the EditPtr lives. Thread: any; one EditPtr belongs to one thread.
#pragma once

#include <utility>

#include "host/edit/Edit.h"

class ZQ_API EditPtr {
public:
    EditPtr() = default;
    explicit EditPtr(Zq::Ptr<Edit> edit) noexcept : edit_(std::move(edit)) { open(); }
    EditPtr(EditPtr const& other) noexcept : edit_(other.edit_) { open(); }
    EditPtr(EditPtr&& other) noexcept { edit_.swap(other.edit_); }
    EditPtr& operator=(EditPtr other) noexcept {
        edit_.swap(other.edit_);
        return *this;
    }
    ~EditPtr() { close(); }

    // Opens the edit of that identity; empty where there is none. Behaviour 0 is the only one.
    [[nodiscard]] static EditPtr i_open(Cookie const& cookie, std::int32_t behaviour);

    [[nodiscard]] explicit operator bool() const noexcept { return static_cast<bool>(edit_); }
    Edit* operator->() const noexcept { return edit_.get(); }
    Edit& operator*() const noexcept { return *edit_; }

private:
    void open() const noexcept {
        if (edit_) {
            edit_->handleOpened();
        }
    }
    void close() const noexcept {
        if (edit_) {
            edit_->handleClosed();
        }
    }

    Zq::Ptr<Edit> edit_;
};
