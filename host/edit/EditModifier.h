// Edits and documents as a repository hands them out. Thread: repository.
#pragma once

#include "host/object/Ptr.h"

class Edit;
class Document;

// Access to one thing for changing it; empty where there is none.
template <class Content>
class ContainerModifier {
public:
    ContainerModifier() = default;
    explicit ContainerModifier(Zq::Ptr<Content> content) : content_(std::move(content)) {}
    [[nodiscard]] bool isEmpty() const noexcept { return content_ == nullptr; }
    explicit operator bool() const noexcept { return !isEmpty(); }

private:
    Zq::Ptr<Content> content_;
};

using EditModifier = ContainerModifier<Edit>;
