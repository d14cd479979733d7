// Edits and documents as a repository hands them out. Thread: repository.
#pragma once

#include "host/edit/Document.h"
#include "host/edit/EditPtr.h"

// Access to one thing for changing it; empty where there is none.
template <class Content>
class ContainerModifier {
public:
    ContainerModifier() = default;
    explicit ContainerModifier(Zq::Ptr<Content> content) noexcept : content_(std::move(content)) {}
    [[nodiscard]] bool isEmpty() const noexcept { return content_ == nullptr; }
    explicit operator bool() const noexcept { return !isEmpty(); }
    // Not for an empty one.
    Content* operator->() const noexcept requires(!std::is_same_v<Content, Edit>) { return content_.get(); }

protected:
    Zq::Ptr<Content> content_;
};

// An edit that is open only while somebody speaks to it.
class EditModifier : public ContainerModifier<Edit> {
public:
    using ContainerModifier::ContainerModifier;
    // Opens the edit anew each time.
    [[nodiscard]] EditPtr open() const noexcept { return EditPtr(content_); }
    EditPtr operator->() const noexcept { return open(); }
};
